// Passwords: how each is read, the slow hash that the exchange runs on, and the host's guard that counts wrong ones.
import { scrypt, scryptAsync } from '@noble/hashes/scrypt.js';
import { ngauNhien, sangBase64Url, sangUtf8, taoMatKhau, tuBase64Url, xoaBytes } from './tien-ich.js';
import { DAI_NGAU } from './thu.js';

const goc = globalThis;
const SCRYPT = { N: 2 ** 15, r: 8, p: 1, dkLen: 32 }; // 32 MiB
const NHIP = 25; // milliseconds of work before the page gets its turn

export const SAI_TOI_DA = 5;
export const KHOA_GIAY = 60;
export const DAI_LAU = { it: 10, nhieu: 128 }; // characters of a lasting password
const KHAC_NHAU = 5; // different ones among them

// A password of one opening is read aloud: case, spaces, any kind of hyphen and full-width forms do not count.
const docNoi = (chu) => String(chu).normalize('NFKC').toLowerCase().replace(/[\s\p{Pd}.]+/gu, '');
const docLau = (chu) => String(chu).normalize('NFC');
// In the order of the salts: this opening's, then the lasting one.
export const CACH_DOC = [docNoi, docLau];

// The password string of the exchange, 32 bytes. In a hidden page timers come once a second or once a minute, so there
// it is computed in one go.
export async function tinhPrs(chu, muoi) {
  const bytes = sangUtf8(chu);
  const an = goc.document?.hidden === true || typeof goc.setTimeout !== 'function';
  try {
    return an ? scrypt(bytes, muoi, SCRYPT) : await scryptAsync(bytes, muoi, { ...SCRYPT, asyncTick: NHIP });
  } finally {
    xoaBytes(bytes);
  }
}

// A lasting password as it may be stored: { muoi, prs } in base64url, or { loi } with 'ngan', 'dai' or 'de' (too short,
// too long, too easy). Whoever reads prs can connect as if they knew the password; the password itself is not in it.
export async function datMatKhauLau(chu) {
  const kyTu = [...docLau(chu)];
  if (kyTu.length < DAI_LAU.it) return { loi: 'ngan' };
  if (kyTu.length > DAI_LAU.nhieu) return { loi: 'dai' };
  if (new Set(kyTu).size < KHAC_NHAU) return { loi: 'de' };
  const muoi = ngauNhien(DAI_NGAU);
  const prs = await tinhPrs(docLau(chu), muoi);
  return { muoi: sangBase64Url(muoi), prs: sangBase64Url(prs) };
}

function docLuu(lau) {
  const muoi = tuBase64Url(lau?.muoi);
  const prs = tuBase64Url(lau?.prs);
  return muoi?.length === DAI_NGAU && prs?.length === SCRYPT.dkLen ? { muoi, prs } : null;
}

// What the handshakes of this bundle may ask of a guard; not reachable from the page.
const trongCanh = new WeakMap();
export const layTrongCanh = (canh) => {
  const trong = trongCanh.get(canh);
  if (trong === undefined) throw new TypeError('canh: from taoCanhMatKhau');
  return trong;
};

// The host's guard of its passwords, one for all callers. dongHo gives milliseconds that never go back; lau is what
// datMatKhauLau gave, or null. khiDoi(matKhau) and khiKhoa(giay) are called after a change, never while being made.
//
// A right password does not clear the count: who was told this opening's could otherwise try lasting ones without end.
export function taoCanhMatKhau({ dongHo = () => goc.performance.now(), lau = null, khiDoi, khiKhoa } = {}) {
  let chu, dangTinh, hanKhoa = null, sai = 0;
  let luu = docLuu(lau);
  const dangChay = new Map(); // handshakes under way -> why they end when the passwords change

  function rut() {
    chu = taoMatKhau();
    const muoi = ngauNhien(DAI_NGAU);
    dangTinh = tinhPrs(docNoi(chu), muoi).then((prs) => ({ muoi, prs }));
    dangTinh.catch(() => {}); // each handshake that waits for it is told
  }
  // Whole seconds; 0 when open.
  function khoaCon() {
    if (hanKhoa === null) return 0;
    const con = hanKhoa - dongHo();
    if (con > 0) return Math.min(KHOA_GIAY, Math.ceil(con / 1000));
    hanKhoa = null;
    return 0;
  }
  // A fault of the page's must not keep a wrong password from being answered.
  function bao(goi, gia) {
    try {
      goi?.(gia);
    } catch (loi) {
      goc.console?.error(loi);
    }
  }
  function cat() {
    const cac = [...dangChay.values()];
    dangChay.clear();
    for (const huy of cac) huy();
  }
  function doi() {
    rut();
    cat();
    bao(khiDoi, chu);
  }
  rut();

  const canh = Object.freeze({
    get matKhau() { return chu; },
    get sanSang() { return dangTinh.then(() => {}); }, // a call before this waits; nothing else has to
    get coLau() { return luu !== null; },
    get conLai() { return SAI_TOI_DA - sai; },
    khoaCon,
    doiMatKhau: doi,
    // This person sent everybody away: nobody comes back by themselves, by whichever password. Tells khiDoi, not khiKhoa.
    khoaNgay() {
      hanKhoa = dongHo() + KHOA_GIAY * 1000;
      doi();
    },
    // Whether there is one now: what is stored may be unreadable.
    datLau(lauMoi) {
      luu = docLuu(lauMoi);
      cat();
      return luu !== null;
    },
  });
  trongCanh.set(canh, {
    dongHo,
    khoaCon,
    vao: (the, huy) => dangChay.set(the, huy),
    ra: (the) => dangChay.delete(the),
    // The passwords' { muoi, prs }, in the order of CACH_DOC.
    lay: async () => {
      const nay = await dangTinh;
      return luu === null ? [nay] : [nay, luu];
    },
    // Counts one; the tries that are left. None left locks, draws a new password and ends every other handshake.
    demSai() {
      sai += 1;
      const con = SAI_TOI_DA - sai;
      if (con > 0) return con;
      sai = 0;
      hanKhoa = dongHo() + KHOA_GIAY * 1000;
      doi();
      bao(khiKhoa, KHOA_GIAY);
      return 0;
    },
  });
  return canh;
}

