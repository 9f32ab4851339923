// What both sides of a session must agree on; docs/ket-noi.md has the whole of it.
export const PB = 1; // version of the letters
export const KENH = { lenh: 1, tin: 2, tep: 3 }; // data channels and their numbers
export const GHI_TOI_DA = 64 * 1024 * 1024; // bytes that the host's receiving endpoint takes; a larger file is a download there
