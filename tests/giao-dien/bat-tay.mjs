// For the handshake's tests: both sides in one process with a server between them that the test plays, and a controller
// written a second time from docs/ket-noi.md on Node's own functions, to whose letters the shipped host must answer.
import {
  createCipheriv, createDecipheriv, createHash, createHmac, hkdfSync, randomBytes, scryptSync, webcrypto as crypto,
} from 'node:crypto';
import { napKichBan } from './trang.mjs';

export const { TvMaHoa } = napKichBan(
  { crypto, TextEncoder, TextDecoder, btoa, atob, performance, setTimeout, scheduler: undefined }, 'crypto.js');

export const taoVanTay = (chu) => `sha-256 ${Array(32).fill(chu).join(':')}`;
export const VT_MAY = taoVanTay('AA');
export const VT_KHACH = taoVanTay('BB');
export const VT_KE_GIUA = taoVanTay('CC');
export const taoSdp = (vanTay) => `v=0\r\na=fingerprint:${vanTay}\r\n`;
export const CHUNG = { ma: '123456789', phien: 'phien-1' };
const [GUI, NHAN] = [0, 1];

// One side's callbacks as a list: ['xong', …], ['hong', …] and so on.
function taoSo() {
  const so = [];
  const khi = Object.fromEntries(['xong', 'sai', 'khoa', 'hong', 'thu'].map((ten) => [ten, (gia) => so.push([ten, gia])]));
  return { so, khi };
}

export const taoDongHo = () => {
  const dongHo = () => dongHo.nay;
  dongHo.nay = 1000;
  return dongHo;
};

// doi(ben, thu, so) gives what the server delivers instead of that side's letter number so: letters [to, thu], where thu
// is an object or raw text. Letters are delivered one at a time, in order, until nobody says anything more.
export async function chayBatTay({ canh, matKhau, chung = CHUNG, chungKhach = chung, doi = null, dongHo, bamCham }) {
  const hop = [];
  const dem = { khach: 0, may: 0 };
  const kia = { khach: 'may', may: 'khach' };
  const gui = (ben) => (chu) => {
    const ra = doi?.(ben, JSON.parse(chu), dem[ben]++) ?? [[kia[ben], chu]];
    hop.push(...ra.map(([den, thu]) => [den, typeof thu === 'string' ? thu : JSON.stringify(thu)]));
  };
  const so = { khach: taoSo(), may: taoSo() };
  const may = TvMaHoa.taoBatTayMay({ ...chung, canh, vanTay: VT_MAY, gui: gui('may'), khi: so.may.khi });
  const khach = TvMaHoa.taoBatTayKhach({
    ...chungKhach, matKhau, vanTay: VT_KHACH, gui: gui('khach'), khi: so.khach.khi, dongHo, bamCham,
  });
  const ben = { khach, may };
  const chay = async () => {
    for (let lan = 0; hop.length > 0; lan++) {
      if (lan > 100) throw new Error('the two sides do not stop');
      const [den, chu] = hop.shift();
      await ben[den].nhan(chu);
    }
  };
  khach.batDau();
  await chay();
  return { khach, may, chay, soKhach: so.khach.so, soMay: so.may.so };
}

const b64 = (b) => Buffer.from(b).toString('base64url');
const tuB64 = (chu) => new Uint8Array(Buffer.from(chu, 'base64url'));
const utf8 = (chu) => new Uint8Array(Buffer.from(chu, 'utf8'));
const lv = (...cac) => Buffer.concat(cac.flatMap((c) => [Buffer.from([c.length]), c])); // all of them shorter than 128

// HChaCha20's subkey: the 20 rounds without the last addition, words 0-3 and 12-15.
function hchacha(khoa, nonce) {
  const s = new Uint32Array(16);
  const doc = (b, cho, i, n) => { for (let j = 0; j < n; j++) s[cho + j] = Buffer.from(b).readUInt32LE(4 * (i + j)); };
  s.set([0x61707865, 0x3320646e, 0x79622d32, 0x6b206574]);
  doc(khoa, 4, 0, 8);
  doc(nonce, 12, 0, 4);
  const quay = (x, n) => (x << n) | (x >>> (32 - n));
  const phanTu = (a, b, c, d) => {
    for (const [x, y, z, n] of [[a, b, d, 16], [c, d, b, 12], [a, b, d, 8], [c, d, b, 7]]) {
      s[x] += s[y];
      s[z] = quay(s[z] ^ s[x], n);
    }
  };
  for (let i = 0; i < 10; i++) {
    for (let j = 0; j < 4; j++) phanTu(j, 4 + j, 8 + j, 12 + j);
    for (let j = 0; j < 4; j++) phanTu(j, 4 + (j + 1) % 4, 8 + (j + 2) % 4, 12 + (j + 3) % 4);
  }
  const ra = Buffer.alloc(32);
  [0, 1, 2, 3, 12, 13, 14, 15].forEach((tu, i) => ra.writeUInt32LE(s[tu], 4 * i));
  return ra;
}
const taoNonce = (so) => { const n = Buffer.alloc(24); n.writeBigUInt64LE(BigInt(so)); return n; };
function xchacha(chieu, khoa, so, d) {
  const n = taoNonce(so);
  const [k, iv, ts] = [hchacha(khoa, n), Buffer.concat([Buffer.alloc(4), n.subarray(16)]), { authTagLength: 16 }];
  if (chieu === GUI) {
    const c = createCipheriv('chacha20-poly1305', k, iv, ts);
    return Buffer.concat([c.update(d), c.final(), c.getAuthTag()]);
  }
  const c = createDecipheriv('chacha20-poly1305', k, iv, ts).setAuthTag(d.subarray(-16));
  return Buffer.concat([c.update(d.subarray(0, -16)), c.final()]);
}

// The second controller. layPrs(salt, index) gives its password strings: real ones by PRS, guesses by random bytes.
const daBam = new Map(); // once for each password and salt: some tests shake hands a hundred times
export const PRS = (matKhau) => (muoi) => {
  const khoa = `${matKhau} ${Buffer.from(muoi).toString('hex')}`;
  if (!daBam.has(khoa)) daBam.set(khoa, scryptSync(matKhau, muoi, 32, { N: 32768, r: 8, p: 1, maxmem: 2 ** 26 }));
  return Buffer.from(daBam.get(khoa)); // a copy: whoever gets it overwrites it
};
export const bamNho = async (chu, muoi) => new Uint8Array(PRS(chu)(muoi));
export const DOAN = () => new Uint8Array(randomBytes(32));

export class KhachThuHai {
  constructor(canh, layPrs, phien = CHUNG.phien) {
    Object.assign(this, { layPrs, phien, cuaMay: [], so: taoSo(), dem: [0, 0] });
    this.may = TvMaHoa.taoBatTayMay({
      ...CHUNG, phien, canh, vanTay: VT_MAY, gui: (chu) => this.cuaMay.push(JSON.parse(chu)), khi: this.so.khi,
    });
    this.soMay = this.so.so;
  }
  noi(thu) { return this.may.nhan(JSON.stringify(thu)); }
  async chao() {
    this.n = randomBytes(16);
    await this.noi({ b: 1, n: b64(this.n) });
  }
  async guiPhan() {
    const { n, muoi } = this.cuaMay.at(-1);
    const { cpace } = TvMaHoa;
    const cacMuoi = muoi.map(tuB64);
    this.sid = Buffer.concat([this.n, tuB64(n)]);
    this.phan = cacMuoi.map((m, i) => {
      const kenh = lv(utf8('tovira-1'), utf8(CHUNG.ma), utf8(this.phien), Uint8Array.of(i), ...cacMuoi);
      const x = cpace.layVoHuong();
      return { x, y: cpace.nhanDiem(x, cpace.taoPhanTuSinh(this.layPrs(m, i), kenh, this.sid)) };
    });
    await this.noi({ b: 3, y: this.phan.map((p) => b64(p.y)), vt: VT_KHACH });
  }
  async guiThe() {
    const { y, vt } = this.cuaMay.at(-1);
    const adKhach = lv(utf8('khach'), utf8(VT_KHACH));
    const adMay = lv(utf8('may'), utf8(vt));
    this.khoa = this.phan.map((p, i) => {
      const yMay = tuB64(y[i]);
      const k = TvMaHoa.cpace.nhanKiem(p.x, yMay);
      const isk = createHash('sha512').update(lv(utf8('CPaceRistretto255_ISK'), this.sid, k))
        .update(lv(p.y, adKhach)).update(lv(yMay, adMay)).digest();
      const khoaThe = createHash('sha512').update('CPaceMac').update(this.sid).update(isk).digest();
      const the = (phan, ad) => createHmac('sha512', khoaThe).update(lv(phan, ad)).digest();
      return { isk, the: the(p.y, adKhach), theMay: the(yMay, adMay) };
    });
    await this.noi({ b: 5, t: this.khoa.map((k) => b64(k.the)) });
  }
  async batTay() {
    await this.chao();
    await this.guiPhan();
    await this.guiThe();
    return this.soMay.at(-1);
  }
  dungThe({ i, t }) { return this.khoa[i].theMay.equals(tuB64(t)); }
  // Sealed letters with the key of password i.
  khoaChieu(vai, i) { return Buffer.from(hkdfSync('sha512', this.khoa[i].isk, '', `tovira-1 ${vai}`, 32)); }
  noiNiem(vat, i = 0) {
    return this.noi({ b: 7, d: b64(xchacha(GUI, this.khoaChieu('khach', i), this.dem[GUI]++, utf8(JSON.stringify(vat)))) });
  }
  moNiem({ d }, i = 0) {
    return JSON.parse(xchacha(NHAN, this.khoaChieu('may', i), this.dem[NHAN]++, tuB64(d)).toString('utf8'));
  }
}
