// CPACE-RISTR255-SHA512, initiator-responder, as draft-irtf-cfrg-cpace describes it. Bytes in, bytes out; no state.
import { ristretto255, ristretto255_hasher } from '@noble/curves/ed25519.js';
import { hmac } from '@noble/hashes/hmac.js';
import { sha512 } from '@noble/hashes/sha2.js';
import { ngauNhien, noiBytes, sangUtf8 } from './tien-ich.js';

const DSI = sangUtf8('CPaceRistretto255');
const DSI_ISK = sangUtf8('CPaceRistretto255_ISK');
const THE = sangUtf8('CPaceMac');
const KHOI = 128; // SHA-512's input block in bytes
export const DAI_PHAN_TU = 32;
export const DAI_THE = 64;

// A length as LEB128, then the bytes; several of them one after the other.
function datDoDai(bytes) {
  const dau = [];
  let n = bytes.length;
  for (; n > 127; n >>>= 7) dau.push((n & 127) | 128);
  dau.push(n);
  return noiBytes(Uint8Array.from(dau), bytes);
}
export const noiLv = (...cac) => noiBytes(...cac.map(datDoDai));

// The padding lets what identifies the password fill the hash's first block, whatever the password's length.
export function taoChuoiSinh(prs, ci, sid) {
  const dem = Math.max(0, KHOI - 1 - datDoDai(prs).length - datDoDai(DSI).length);
  return noiLv(DSI, prs, new Uint8Array(dem), ci, sid);
}

// The generator, in the curve library's own form; ristretto255's element derivation maps 64 bytes to it.
export const taoPhanTuSinh = (prs, ci, sid) => ristretto255_hasher.deriveToCurve(sha512(taoChuoiSinh(prs, ci, sid)));

function docVoHuong(bytes) {
  let so = 0n;
  for (let i = bytes.length - 1; i >= 0; i--) so = (so << 8n) | BigInt(bytes[i]);
  return so;
}

// 252 random bits, little-endian, as the draft recommends; all of them below the group's order.
export function layVoHuong() {
  for (;;) {
    const ra = ngauNhien(32);
    ra[31] &= 15;
    if (ra.some((b) => b !== 0)) return ra;
  }
}

export const nhanDiem = (y, diem) => diem.multiply(docVoHuong(y)).toBytes();

// y times the element that x encodes, or null where x encodes none or the neutral one (in a group of prime
// order only that one has a neutral product).
export function nhanKiem(y, x) {
  let diem;
  try {
    diem = ristretto255.Point.fromBytes(x);
  } catch {
    return null;
  }
  const tich = diem.multiply(docVoHuong(y));
  return tich.is0() ? null : tich.toBytes();
}

export const noiBanGhi = (ya, ada, yb, adb) => noiBytes(noiLv(ya, ada), noiLv(yb, adb));

// The intermediate session key. k must not leave the caller: it would allow guesses to be tried.
export const tinhIsk = (sid, k, ya, ada, yb, adb) => sha512(noiBytes(noiLv(DSI_ISK, sid, k), noiBanGhi(ya, ada, yb, adb)));

// Key confirmation: the tag of the side that sent y and ad.
export const tinhThe = (sid, isk, y, ad) => hmac(sha512, sha512(noiBytes(THE, sid, isk)), noiLv(y, ad));
