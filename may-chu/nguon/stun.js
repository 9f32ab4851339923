// STUN (RFC 8489): tells whoever asks the address that its datagram came from. Binding requests only, no credentials.
import { createSocket } from 'node:dgram';
import { crc32 } from './crc32.js';
import { docDiaChi, khoaDiaChi } from './dia-chi.js';

const DAU = 20; // bytes of a header
const LON_NHAT = 548; // bytes: what fits every IPv4 path; a larger question is nobody's honest one
const COOKIE = 0x2112a442;
const HOI = 0x0001;
const DAP = 0x0101;
const DAP_LOI = 0x0111;
const XOR_MAPPED_ADDRESS = 0x0020;
const ERROR_CODE = 0x0009;
const UNKNOWN_ATTRIBUTES = 0x000a;
const FINGERPRINT = 0x8028;
const XOR_DAU_VAN = 0x5354554e;
// Attributes below 0x8000 that a server without credentials knows and may pass over: MAPPED-ADDRESS, USERNAME,
// MESSAGE-INTEGRITY, ERROR-CODE, UNKNOWN-ATTRIBUTES, REALM, NONCE, MESSAGE-INTEGRITY-SHA256, PASSWORD-ALGORITHM, USERHASH,
// XOR-MAPPED-ADDRESS.
const DA_BIET = new Set([0x0001, 0x0006, 0x0008, 0x0009, 0x000a, 0x0014, 0x0015, 0x001c, 0x001d, 0x001e, 0x0020]);
const TOAN_VEN = new Set([0x0008, 0x001c]); // what follows a message integrity is not covered by it and not read

// The attributes of a STUN message as [kind, value] pairs, or null when it is malformed: wrong lengths, no magic cookie, a
// fingerprint that is wrong or not the last attribute.
export function docStun(tin) {
  if (tin.length < DAU || tin.length > LON_NHAT || (tin[0] & 0xc0) !== 0) return null;
  if (tin.readUInt32BE(4) !== COOKIE || tin.readUInt16BE(2) !== tin.length - DAU || tin.length % 4 !== 0) return null;
  const cacMuc = [];
  for (let o = DAU; o < tin.length;) {
    const loai = tin.readUInt16BE(o);
    const cuoi = o + 4 + tin.readUInt16BE(o + 2);
    if (cuoi > tin.length) return null;
    const triGia = tin.subarray(o + 4, cuoi);
    if (loai === FINGERPRINT && (triGia.length !== 4 || cuoi !== tin.length || triGia.readUInt32BE(0) !== tinhDauVan(tin.subarray(0, o)))) {
      return null;
    }
    cacMuc.push([loai, triGia]);
    o = cuoi + ((4 - (cuoi % 4)) % 4);
  }
  return { loai: tin.readUInt16BE(0), giaoDich: tin.subarray(4, DAU), cacMuc };
}

const tinhDauVan = (truoc) => (crc32(truoc) ^ XOR_DAU_VAN) >>> 0;

// The answer to the datagram `tin` from `diaChi` and `cong`, or null: no answer.
export function traStun(tin, diaChi, cong) {
  const hoi = docStun(tin);
  if (hoi === null || hoi.loai !== HOI) return null;
  const la = tenLa(hoi.cacMuc);
  const than = la.length > 0 ? [mucLoi420(), mucLa(la)] : [mucDiaChi(diaChi, cong, hoi.giaoDich)];
  const coDauVan = hoi.cacMuc.some(([loai]) => loai === FINGERPRINT);
  return dongGoi(la.length > 0 ? DAP_LOI : DAP, hoi.giaoDich, than, coDauVan);
}

// Kinds that must be understood and are not, each once.
function tenLa(cacMuc) {
  const la = new Set();
  for (const [loai] of cacMuc) {
    if (TOAN_VEN.has(loai)) break;
    if (loai < 0x8000 && !DA_BIET.has(loai)) la.add(loai);
  }
  return [...la];
}

function muc(loai, triGia) {
  const ra = Buffer.alloc(4 + Math.ceil(triGia.length / 4) * 4);
  ra.writeUInt16BE(loai, 0);
  ra.writeUInt16BE(triGia.length, 2);
  triGia.copy(ra, 4);
  return ra;
}

function mucDiaChi(diaChi, cong, giaoDich) {
  const byte = docDiaChi(diaChi);
  const triGia = Buffer.alloc(4 + byte.length);
  triGia[1] = byte.length === 4 ? 1 : 2;
  triGia.writeUInt16BE(cong ^ (COOKIE >>> 16), 2);
  // `giaoDich` begins with the cookie, as the mask does.
  byte.forEach((b, i) => { triGia[4 + i] = b ^ giaoDich[i]; });
  return muc(XOR_MAPPED_ADDRESS, triGia);
}

const mucLoi420 = () => muc(ERROR_CODE, Buffer.concat([Buffer.from([0, 0, 4, 20]), Buffer.from('Unknown Attribute')]));

function mucLa(la) {
  const triGia = Buffer.alloc(2 * la.length);
  la.forEach((loai, i) => triGia.writeUInt16BE(loai, 2 * i));
  return muc(UNKNOWN_ATTRIBUTES, triGia);
}

function dongGoi(loai, giaoDich, than, coDauVan) {
  const dau = Buffer.alloc(DAU);
  const dai = than.reduce((tong, m) => tong + m.length, 0) + (coDauVan ? 8 : 0);
  dau.writeUInt16BE(loai, 0);
  dau.writeUInt16BE(dai, 2);
  giaoDich.copy(dau, 4);
  const tin = Buffer.concat([dau, ...than]);
  if (!coDauVan) return tin;
  const triGia = Buffer.alloc(4);
  triGia.writeUInt32BE(tinhDauVan(tin), 0);
  return Buffer.concat([tin, muc(FINGERPRINT, triGia)]);
}

// Listens on UDP port `cong` (0: the system's choice) and answers until `dong`. `gioiHan` holds datagrams of one address down.
export async function moStun({ diaChi, cong, gioiHan }) {
  const o = await moO(diaChi, cong);
  o.on('message', (tin, { address, port }) => {
    if (port === 0 || gioiHan.lay(khoaDiaChi(address)) > 0) return;
    const dap = traStun(tin, address, port);
    // An answer that cannot be sent is lost like any datagram; its sender asks again.
    if (dap !== null) o.send(dap, port, address, () => {});
  });
  o.on('error', () => {});
  return { cong: o.address().port, dong: () => new Promise((xong) => { o.close(xong); }) };
}

// On every address unless one is named: IPv6 and IPv4 with one socket, IPv4 alone where there is no IPv6.
async function moO(diaChi, cong) {
  if (diaChi) return ganO(diaChi.includes(':') ? 'udp6' : 'udp4', cong, diaChi);
  return ganO('udp6', cong, '::').catch((loi) => {
    if (loi.code === 'EAFNOSUPPORT' || loi.code === 'EADDRNOTAVAIL') return ganO('udp4', cong, '0.0.0.0');
    throw loi;
  });
}

function ganO(loai, cong, diaChi) {
  return new Promise((xong, hong) => {
    const o = createSocket(loai);
    o.once('error', (loi) => { o.close(); hong(loi); });
    o.bind(cong, diaChi, () => { o.removeAllListeners('error'); xong(o); });
  });
}
