// Network addresses: their bytes, the key under which limits count them, the client behind trusted proxies.
import { BlockList, isIP } from 'node:net';

// The bytes of an address, 4 or 16 of them; an IPv4 address written as IPv6 counts as IPv4. Null when it is none.
export function docDiaChi(chu) {
  const sach = String(chu).split('%')[0];
  const loai = isIP(sach);
  if (loai === 4) return Buffer.from(sach.split('.').map(Number));
  if (loai !== 6) return null;
  const byte = docIpv6(sach);
  const laIpv4 = byte.subarray(0, 10).every((b) => b === 0) && byte.readUInt16BE(10) === 0xffff;
  return laIpv4 ? byte.subarray(12) : byte;
}

// `sach` is valid already.
function docIpv6(sach) {
  const duoi = sach.match(/[\d.]+$/)?.[0] ?? '';
  if (duoi.includes('.')) {
    const [a, b, c, d] = duoi.split('.').map(Number);
    sach = sach.slice(0, -duoi.length) + `${(a * 256 + b).toString(16)}:${(c * 256 + d).toString(16)}`;
  }
  const [dau, cuoi] = sach.split('::').map((nua) => (nua === '' ? [] : nua.split(':')));
  const nhom = cuoi === undefined ? dau : [...dau, ...Array(8 - dau.length - cuoi.length).fill('0'), ...cuoi];
  const byte = Buffer.alloc(16);
  nhom.forEach((n, i) => byte.writeUInt16BE(parseInt(n, 16), 2 * i));
  return byte;
}

// What limits count: an IPv4 address, or the /64 that one household or machine is given.
export function khoaDiaChi(chu) {
  const byte = docDiaChi(chu);
  if (byte === null) return 'khong-ro';
  return byte.length === 4 ? byte.join('.') : byte.subarray(0, 8).toString('hex');
}

// The /48 around the key of an IPv6 client, null for any other: one site or tunnel is given 65 536 networks of /64.
export const khoaMang = (khoa) => (/^[0-9a-f]{16}$/.test(khoa) ? `${khoa.slice(0, 12)}/48` : null);

// What the log may hold: the network, not the machine.
export function cheDiaChi(chu) {
  const byte = docDiaChi(chu);
  if (byte === null) return 'khong-ro';
  return byte.length === 4 ? `${byte.subarray(0, 3).join('.')}.0/24` : `${byte.subarray(0, 6).toString('hex')}/48`;
}

// A list of addresses and networks ("127.0.0.1, 10.0.0.0/8, fd00::/8") as a question about one address. Throws on anything else.
export function docDanhSach(chu) {
  const danhSach = new BlockList();
  for (const muc of chu.split(',').map((m) => m.trim()).filter(Boolean)) {
    const [dau, dai, thua] = muc.split('/');
    const loai = isIP(dau);
    if (loai === 0 || thua !== undefined) throw new Error(`"${muc}" is not an address or a network`);
    const ho = loai === 4 ? 'ipv4' : 'ipv6';
    if (dai === undefined) danhSach.addAddress(dau, ho);
    else if (/^\d{1,3}$/.test(dai) && Number(dai) <= (loai === 4 ? 32 : 128)) danhSach.addSubnet(dau, Number(dai), ho);
    else throw new Error(`"${muc}" is not an address or a network`);
  }
  return (diaChi) => {
    const byte = docDiaChi(diaChi);
    if (byte === null) return false;
    return byte.length === 4 ? danhSach.check(byte.join('.'), 'ipv4') : danhSach.check(String(diaChi).split('%')[0], 'ipv6');
  };
}

// Who asks: the peer, or, when the peer is a trusted proxy, the last address of X-Forwarded-For that is not one itself.
// Everything before that is the client's own claim.
export function diaChiThat(yeuCau, laProxyTin) {
  let diaChi = yeuCau.socket.remoteAddress ?? '';
  const qua = String(yeuCau.headers['x-forwarded-for'] ?? '').split(',').map((m) => m.trim()).filter(Boolean);
  while (qua.length > 0 && laProxyTin(diaChi)) {
    const truoc = qua.pop();
    if (docDiaChi(truoc) === null) break;
    diaChi = truoc;
  }
  return diaChi;
}
