// Random codes, comparison of secrets and the encodings that the application needs. Of the browser's crypto object only
// getRandomValues is used: a page from a plain http address has no more.
const goc = globalThis;

// Digits and letters that survive being read aloud or copied by hand: no 0/o, no 1/i/l.
export const BANG_CHU = '23456789abcdefghjkmnpqrstuvwxyz';
const MOI_LAN = 65536; // getRandomValues refuses more bytes than this at once

export function ngauNhien(soByte) {
  const ra = new Uint8Array(soByte);
  for (let i = 0; i < soByte; i += MOI_LAN) goc.crypto.getRandomValues(ra.subarray(i, i + MOI_LAN));
  return ra;
}

// Characters of bangChu, each equally likely: bytes beyond the last whole multiple of its length are thrown away.
export function taoChuoi(dai, bangChu) {
  const tran = 256 - (256 % bangChu.length);
  let ra = '';
  while (ra.length < dai) {
    for (const b of ngauNhien(dai - ra.length)) if (b < tran) ra += bangChu[b % bangChu.length];
  }
  return ra;
}

// Nine digits, the first not 0, so that the code keeps its length wherever it is taken for a number.
export const taoMaMay = () => taoChuoi(1, '123456789') + taoChuoi(8, '0123456789');

// Ten of 31 characters: 49 bits.
export const taoMatKhau = () => taoChuoi(10, BANG_CHU);

// "123456789" -> "123 456 789", for reading; boKhoangTrang takes back what people type.
export const chiaNhom = (ma) => String(ma).replace(/(.{3})(?=.)/gu, '$1 ');
export const boKhoangTrang = (chu) => String(chu).replace(/[\s.-]+/gu, '');

export const sangUtf8 = (chu) => new TextEncoder().encode(chu);

// Whether two texts or byte arrays are equal; the time taken depends on their lengths only.
export function soBang(a, b) {
  const x = typeof a === 'string' ? sangUtf8(a) : a;
  const y = typeof b === 'string' ? sangUtf8(b) : b;
  if (x.length !== y.length) return false;
  let khac = 0;
  for (let i = 0; i < x.length; i++) khac |= x[i] ^ y[i];
  return khac === 0;
}

export const sangHex = (bytes) => Array.from(bytes, (b) => b.toString(16).padStart(2, '0')).join('');

// The bytes, or null for anything that is not pairs of hexadecimal digits.
export function tuHex(chu) {
  if (!/^(?:[0-9a-fA-F]{2})*$/.test(chu)) return null;
  const ra = new Uint8Array(chu.length / 2);
  for (let i = 0; i < ra.length; i++) ra[i] = parseInt(chu.slice(2 * i, 2 * i + 2), 16);
  return ra;
}

export function sangBase64(bytes) {
  const phan = []; // pieces, because String.fromCharCode takes its bytes as arguments
  for (let i = 0; i < bytes.length; i += 8192) phan.push(String.fromCharCode(...bytes.subarray(i, i + 8192)));
  return goc.btoa(phan.join(''));
}

// The bytes, or null for anything that is not padded standard Base64.
export function tuBase64(chu) {
  if (!/^(?:[A-Za-z0-9+/]{4})*(?:[A-Za-z0-9+/]{2}==|[A-Za-z0-9+/]{3}=)?$/.test(chu)) return null;
  return Uint8Array.from(goc.atob(chu), (c) => c.charCodeAt(0));
}

// The same without padding and with the alphabet that URLs take, as the handshake's letters have it.
export const sangBase64Url = (bytes) =>
  sangBase64(bytes).replace(/[+/=]/g, (c) => ({ '+': '-', '/': '_', '=': '' })[c]);

// The bytes, or null: only the one text that sangBase64Url makes of them is taken.
export function tuBase64Url(chu) {
  if (typeof chu !== 'string' || !/^[A-Za-z0-9_-]*$/.test(chu)) return null;
  const dem = '='.repeat((4 - (chu.length % 4)) % 4);
  const ra = tuBase64(chu.replace(/[-_]/g, (c) => ({ '-': '+', _: '/' })[c]) + dem);
  return ra !== null && sangBase64Url(ra) === chu ? ra : null;
}

export function noiBytes(...cac) {
  const ra = new Uint8Array(cac.reduce((tong, b) => tong + b.length, 0));
  let cho = 0;
  for (const b of cac) {
    ra.set(b, cho);
    cho += b.length;
  }
  return ra;
}

// Overwrites what is no longer needed. Texts and the numbers of the curve library cannot be overwritten in JavaScript,
// and the engine may have copied even these bytes: this shortens a secret's life and promises no more.
export function xoaBytes(...cac) {
  for (const b of cac) if (b) b.fill(0);
}
