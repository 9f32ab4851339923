// The server's list of STUN addresses, for either role.

// "example.org:3478", "stun:example.org:3478" -> what a peer connection takes.
export const cacMayStun = (stun) => (Array.isArray(stun) ? stun : []).filter((s) => typeof s === 'string' && s !== '').slice(0, 4)
  .map((s) => ({ urls: /^stuns?:/.test(s) ? s : `stun:${s}` }));
