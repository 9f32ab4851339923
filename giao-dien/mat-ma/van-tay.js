// The DTLS fingerprint of a session description, in the one form that both sides compare: "sha-256 AB:CD:…".
const DUNG = /^sha-256 (?:[0-9A-F]{2}:){31}[0-9A-F]{2}$/;
const DONG = /^a=fingerprint:(sha-256) ((?:[0-9a-f]{2}:){31}[0-9a-f]{2})$/i;

export const laVanTay = (chu) => typeof chu === 'string' && DUNG.test(chu);

// Null when the description has no fingerprint, different ones, or a line that could be read as one in another way than
// here: lines end in CR LF or LF, and a stray CR or NUL makes the whole unreadable.
export function vanTayCuaSdp(sdp) {
  if (typeof sdp !== 'string' || /\r(?!\n)|\0/.test(sdp)) return null;
  const cac = new Set();
  for (const dong of sdp.split(/\r?\n/)) {
    if (!/^\s*a\s*=\s*fingerprint/i.test(dong)) continue;
    const khop = DONG.exec(dong);
    if (khop === null) return null;
    cac.add(`${khop[1].toLowerCase()} ${khop[2].toUpperCase()}`);
  }
  return cac.size === 1 ? [...cac][0] : null;
}

export const sdpHop = (sdp, vanTay) => laVanTay(vanTay) && vanTayCuaSdp(sdp) === vanTay;
