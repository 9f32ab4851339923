// The settings: each from its flag, else from the environment, else the default. A wrong one is told by name, and nothing starts.
import { fileURLToPath } from 'node:url';
import { parseArgs } from 'node:util';
import { isIP } from 'node:net';
import { docDanhSach } from './dia-chi.js';

export class LoiCaiDat extends Error {}

const hong = (can) => { throw new Error(`must be ${can}`); };

// "3000", "0" (the system's choice) or "3000+" (3000, or the system's choice when that one is taken).
function docCong(chu) {
  const [, so, duPhong] = chu.match(/^(\d{1,5})(\+?)$/) ?? hong('a port (0 to 65535, 0 lets the system choose; "3000+" takes another one when 3000 is taken)');
  if (Number(so) > 65535) hong('a port, at most 65535');
  return { so: Number(so), duPhong: duPhong === '+' };
}

const docCongStun = (chu) => (chu === 'tat' ? null : docCong(chu));
const docDiaChiNghe = (chu) => (chu === '' || isIP(chu) ? chu : hong('an IP address of this machine'));
const docChu = (chu) => chu;

function docSo(chu) {
  const so = /^\d{1,7}$/.test(chu) ? Number(chu) : 0;
  return so > 0 ? so : hong('a whole number of at least 1');
}

function docTen(chu) {
  return /^([A-Za-z0-9.-]{0,253}|\[[0-9a-fA-F:.]{2,45}\])$/.test(chu) ? chu : hong('a name or an address (IPv6 in brackets), without a port');
}

function docDsStun(chu) {
  const cac = chu.split(',').map((m) => m.trim()).filter(Boolean);
  for (const m of cac) if (!/^stuns?:[\w.:[\]-]{1,255}$/.test(m)) hong('a list of addresses such as stun:stun.example.org:3478');
  return cac;
}

function docRedis(chu) {
  if (chu === '' || /^redis(s|\+unix)?:\/\//.test(chu) || chu.startsWith('unix:')) return chu;
  return hong('an address such as redis://host:6379');
}

const macDinhGiaoDien = fileURLToPath(new URL('../../resources/giao-dien', import.meta.url));

// name in the program, flag and environment, default, reader, what it is for
const BANG = [
  ['cong', 'CONG', '3000', docCong, 'TCP port of the web application and of the signalling'],
  ['diaChi', 'DIA_CHI', '', docDiaChiNghe, 'address to listen on, HTTP and STUN; all when empty'],
  ['stunCong', 'STUN_CONG', '3478', docCongStun, 'UDP port that answers STUN; "tat" for none'],
  ['stunCongKhai', 'STUN_CONG_KHAI', '', docDsStun, 'STUN addresses told to the pages; when empty, this server under the name that the page used'],
  ['ten', 'TEN', '', docTen, 'name of this machine for others: told in STUN addresses to pages that came over loopback'],
  ['chungChi', 'CHUNG_CHI', '', docChu, 'PEM file of the certificate chain: serves https; read again at SIGHUP'],
  ['khoa', 'KHOA', '', docChu, 'PEM file of its private key'],
  ['proxyTin', 'PROXY_TIN', '', docDanhSach, 'proxies whose X-Forwarded-For is believed: addresses and networks'],
  ['redisUrl', 'REDIS_URL', '', docRedis, 'Redis shared by several instances; in memory when empty'],
  ['giaoDien', 'GIAO_DIEN', macDinhGiaoDien, docChu, 'folder of the web application'],
  ['dangKyMoiPhut', 'DANG_KY_MOI_PHUT', '30', docSo, 'registrations of one address in a minute'],
  ['goiMoiPhut', 'GOI_MOI_PHUT', '30', docSo, 'calls of one address in a minute'],
  ['tinMoiGiay', 'TIN_MOI_GIAY', '40', docSo, 'letters of one address in a second, ten times as many at once'],
  ['yeuCauMoiPhut', 'YEU_CAU_MOI_PHUT', '300', docSo, 'HTTP requests of one address in a minute'],
  ['ketNoiMoiDiaChi', 'KET_NOI_MOI_DIA_CHI', '100', docSo, 'connections that one address may hold'],
  ['ketNoiToiDa', 'KET_NOI_TOI_DA', '10000', docSo, 'connections in all'],
];

const coCua = (bien) => bien.toLowerCase().replaceAll('_', '-');

// The settings as an object, or null when help was asked for. `thamSo` are the arguments after the program's name.
export function docCaiDat(thamSo, moiTruong) {
  const options = { giup: { type: 'boolean' } };
  for (const [, bien] of BANG) options[coCua(bien)] = { type: 'string' };
  let values;
  try {
    ({ values } = parseArgs({ args: thamSo, options, strict: true, allowPositionals: false }));
  } catch (loi) {
    throw new LoiCaiDat(loi.message);
  }
  if (values.giup) return null;
  const ra = {};
  for (const [ten, bien, macDinh, doc] of BANG) {
    const co = coCua(bien);
    const noi = co in values ? `--${co}` : bien;
    try {
      ra[ten] = doc((values[co] ?? (moiTruong[bien] || macDinh)).trim());
    } catch (loi) {
      throw new LoiCaiDat(`${noi} ${loi.message}`);
    }
  }
  if ((ra.chungChi === '') !== (ra.khoa === '')) throw new LoiCaiDat('CHUNG_CHI and KHOA belong together: set both or neither');
  return ra;
}

export function loiGiup() {
  const dong = BANG.map(([, bien, macDinh, , nghia]) =>
    `  --${coCua(bien)}, ${bien}\n      ${nghia}${macDinh && macDinh !== macDinhGiaoDien ? ` (${macDinh})` : ''}`);
  return `Tovira's rendezvous server. Settings, by flag or environment:\n\n${dong.join('\n')}\n  --giup\n      this text\n`;
}
