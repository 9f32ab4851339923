// The server's list of STUN addresses, for either role.
const DANG = /^stuns?:[\w.:[\]-]{1,255}$/; // what a server of ours may tell; a peer connection throws at what it cannot read

// "example.org:3478", "stun:example.org:3478" -> what a peer connection takes.
export const cacMayStun = (stun) => (Array.isArray(stun) ? stun : []).filter((s) => typeof s === 'string')
  .map((s) => (/^(stun|turn)s?:/.test(s) ? s : `stun:${s}`)).filter((s) => DANG.test(s)).slice(0, 4).map((urls) => ({ urls }));
