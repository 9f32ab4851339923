// Reads the packaged application's files for the tests, and runs app.html's own script against a small document made
// from its markup: elements are flat, by id, and remember what was done to them.
import { createHash } from 'node:crypto';
import { readdirSync, readFileSync } from 'node:fs';
import vm from 'node:vm';

const goc = new URL('../../resources/giao-dien/', import.meta.url);
export const doc = (ten) => readFileSync(new URL(ten, goc), 'utf8');
export const docBang = (ma) => JSON.parse(doc(`i18n/${ma}.json`));

export const html = doc('app.html');
export const kichBanTrang = (van = html) => van.match(/<script>([\s\S]*?)<\/script>/)[1];
const kieuTrang = (van) => van.match(/<style>([\s\S]*?)<\/style>/)[1];
const dau = (van) => `'sha256-${createHash('sha256').update(van, 'utf8').digest('base64')}'`;

// The page's own sources, all in one text.
const nguon = new URL('../../giao-dien/nguon/', import.meta.url);
export const nguonTrang = () => readdirSync(nguon, { withFileTypes: true }).flatMap((muc) => (muc.isDirectory()
  ? readdirSync(new URL(`${muc.name}/`, nguon)).map((ten) => `${muc.name}/${ten}`) : [muc.name]))
  .filter((ten) => ten.endsWith('.js')).map((ten) => readFileSync(new URL(ten, nguon), 'utf8')).join('\n');

// The page's policy with the digests that its inline script and style have now.
export const datDau = (van) => van
  .replace(/(script-src 'self') 'sha256-[^']*'/, `$1 ${dau(kichBanTrang(van))}`)
  .replace(/(style-src) 'sha256-[^']*'/, `$1 ${dau(kieuTrang(van))}`);

// Classic scripts run into one global object, as on the page.
export function napKichBan(trongSo, ...cacTep) {
  vm.createContext(trongSo);
  for (const tep of cacTep) vm.runInContext(doc(tep), trongSo, { filename: tep });
  return trongSo;
}

class PhanTu {
  constructor(the, thuocTinh = {}) {
    Object.assign(this, {
      the, thuocTinh, hidden: 'hidden' in thuocTinh, disabled: false, checked: false, value: '', textContent: '', className: '',
      dataset: {}, style: {}, con: [], cha: null, nghe: {}, lop: new Set(),
    });
    for (const [ten, gia] of Object.entries(thuocTinh)) {
      if (ten.startsWith('data-')) this.dataset[ten.slice(5).replace(/-(\w)/g, (_, c) => c.toUpperCase())] = gia;
    }
    if (the === 'canvas') Object.assign(this, { getContext: () => ({}), captureStream: () => ({ getVideoTracks: () => [{ requestFrame() {} }] }) });
    this.classList = { toggle: (ten, bat) => (bat ? this.lop.add(ten) : this.lop.delete(ten)) };
    if (the === 'iframe') this.contentDocument = { body: new PhanTu('body'), createElement: (t) => new PhanTu(t) };
  }
  setAttribute(ten, gia) { this.thuocTinh[ten] = gia; }
  addEventListener(ten, ham) { (this.nghe[ten] ||= []).push(ham); }
  append(...con) { for (const c of con) { c.cha = this; this.con.push(c); } }
  replaceChildren(...con) { this.con = []; this.append(...con); }
  showModal() { this.mo = true; }
  focus() {}
  select() {}
  querySelector(bo) { return this.con.flatMap((c) => bo.split(', ').flatMap((the) => c.tim(the)))[0] ?? null; }
  remove() { if (this.cha) this.cha.con = this.cha.con.filter((c) => c !== this); this.cha = null; }
  // A browser presses neither a disabled button nor asks whether it is hidden.
  click() { return this.disabled ? [] : this.kich('click'); }
  kich(ten, suKien) { return (this.nghe[ten] || []).map((ham) => ham(suKien)); }
  chon(gia) { this.value = gia; return this.kich('change'); }
  // This element and all below it that have the tag.
  get childElementCount() { return this.con.length; }
  get firstElementChild() { return this.con[0] ?? null; }
  tim(the) { return [...(this.the === the ? [this] : []), ...this.con.flatMap((c) => c.tim(the))]; }
}

function taiLieuTu(van) {
  const than = van.slice(van.indexOf('<body>'), van.indexOf('<script'));
  const tatCa = [...than.matchAll(/<(\w+)((?:\s+[\w-]+(?:="[^"]*")?)*)\s*>([^<]*)/g)].map(([, the, thuoc, chu]) => {
    const tt = Object.fromEntries([...thuoc.matchAll(/([\w-]+)(?:="([^"]*)")?/g)].map(([, ten, gia]) => [ten, gia ?? '']));
    const pt = new PhanTu(the, tt);
    pt.textContent = chu.trim();
    return pt;
  });
  const theoId = new Map(tatCa.filter((p) => p.thuocTinh.id).map((p) => [p.thuocTinh.id, p]));
  return {
    cookie: '', body: new PhanTu('body'), execCommand: () => false, documentElement: new PhanTu('html'), tatCa,
    getElementById: (id) => theoId.get(id) ?? null,
    createElement: (the) => new PhanTu(the),
    querySelectorAll: (bo) => tatCa.filter((p) => bo.slice(1, -1) in p.thuocTinh),
  };
}

// The host as the bridge shows it to the page: `nhat` lists what was asked of it, in order.
export function taoMay(nhat) {
  const tv = {
    phienBan: '1.0.3', trangThai: { autostart: false, service: false }, manHinh: { duongDan: '', loi: '' }, dsManHinh: [], troNang: false,
    xinManHinh(n) { tv.manHinh = { duongDan: '', loi: '' }; nhat.push(['manHinhBat', n]); },
    dungManHinh() { tv.manHinh = { duongDan: '', loi: '' }; nhat.push(['manHinhTat']); },
    datCaoManHinh: (cao) => nhat.push(['caoManHinh', cao]),
    dat: (ten, bat) => nhat.push(['dat', ten, bat]),
    datNgonNgu: (ma) => nhat.push(['ngonNgu', ma]),
    troNangDaBat: () => !!tv.troNang,
    manHinhDangPhat: () => !!tv.dangPhat,
    moCaiDatTroNang: () => nhat.push(['moTroNang']),
    moThuMucNhan: () => new Promise((xong) => { nhat.push(['moThuMucNhan']); tv.__nhanCho = xong; }),
    moThuMucTai: (duong) => new Promise((xong) => { nhat.push(['moThuMucTai', duong]); tv.__nhanCho = xong; }),
    dongThuMucNhan: () => nhat.push(['dongThuMucNhan']),
    chonThuMucLuu: () => new Promise((xong) => { nhat.push(['chonThuMucLuu']); tv.__luuCho = xong; }),
    hienTrongFinder: (duong, ten) => nhat.push(['hienTrongFinder', duong, ten]),
  };
  return tv;
}

// Lets every promise that is ready run.
export const lang = () => new Promise((xong) => setImmediate(xong));

// Opens the page. coMay: inside the host; mayChu: where it came from; kem: what the socket client's path answers;
// guiTep: what the receiving endpoint answers. sua(window) alters what the page's script finds.
export async function moTrang({ coMay = true, hostname = '127.0.0.1', kem = 'khong_may_chu', luu = {}, tep = docBang, guiTep = () => ({ ok: false, status: 403 }), sua = () => {} } = {}) {
  const nhat = [];
  const hen = []; // timers, run by hand: [ham, ms]
  const luuTru = new Map(Object.entries(luu));
  const trang = {
    nhat, hen, luuTru, tv: coMay ? taoMay(nhat) : undefined, document: taiLieuTu(html),
    $: (id) => trang.document.getElementById(id),
    // What the host pushes: the stream's address, an error, and whether it is sharing.
    dayManHinh(duongDan, loi, dangPhat) {
      trang.tv.manHinh = { duongDan, loi };
      trang.tv.dangPhat = dangPhat;
      trang.cuaSo.__tvAndroidDoi();
    },
    anh: () => trang.$('san').con[0]?.contentDocument.body.con[0] ?? null,
    chayHen: () => hen.splice(0).forEach((h) => h.ham()),
  };
  trang.cuaSo = {
    document: trang.document, navigator: { languages: ['en-GB'] }, tovira: trang.tv,
    ipc: coMay ? { postMessage: (s) => nhat.push(['ipc', s]) } : undefined,
    location: { hostname, reload: () => nhat.push(['reload']) },
    localStorage: { getItem: (k) => luuTru.get(k) ?? null, setItem: (k, v) => luuTru.set(k, v), removeItem: (k) => luuTru.delete(k) },
    setTimeout: (ham, ms) => { hen.push({ ham, ms }); return hen.length; },
    clearTimeout: () => {}, setInterval: () => 0, clearInterval: () => {}, addEventListener: () => {}, AbortController, Blob, performance,
    crypto: globalThis.crypto, TextEncoder, btoa, atob,
    async fetch(duong) {
      const ma = duong.match(/^\/i18n\/(\w+)\.json$/)?.[1];
      if (ma) {
        const bang = tep(ma);
        return { ok: bang !== null, json: async () => bang };
      }
      if (/^http:\/\/127\.0\.0\.1:\d+\/ghi\?k=/.test(duong)) return guiTep(duong);
      if (duong !== '/vendor/socket.io.min.js') throw new Error(`unexpected address ${duong}`);
      return { ok: true, text: async () => kem };
    },
  };
  trang.cuaSo.window = trang.cuaSo;
  napKichBan(trang.cuaSo, 'crypto.js', 'i18n.js', 'local-store.js');
  sua(trang.cuaSo);
  vm.runInContext(kichBanTrang(), trang.cuaSo, { filename: 'app.html' });
  await lang();
  return trang;
}
