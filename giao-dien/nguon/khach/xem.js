// The view: the picture, and what pointer, wheel, fingers and keyboard do on it.
import { $ } from '../chung/trang.js';
import { taoBanPhim } from './ban-phim.js';
import { taoCham } from './cham.js';
import { doiCuon, taoChuot } from './chuot.js';
import { THUC, caoCan, dayMep, taoKhungNhin } from './khung-nhin.js';
import { taoOGo } from './o-go.js';

const BAC_NET = [720, 1080, 1440, 2160, 2880]; // lines; steps far enough apart that the host follows each
const CHO_CAO = 400; // ms that the view's size must rest before the host is told
const PHONG_CUON = 0.01; // enlargement for each pixel of a touchpad's pinch

export const laMac = () => /^(Mac|iP)/.test(navigator.userAgentData?.platform || navigator.platform || '');

// guiLenh(command), cham() (the channel is behind), guiCao(lines), khiThoat() (the keyboard was given back),
// khiDan(text) (something was pasted; a promise of whether the host is to paste as well, kept when it may),
// duocDan() (whether pasting goes that way).
export function taoXem({ guiLenh, cham, guiCao, khiThoat, khiDan, duocDan, daoCmd, hen }) {
  const o = $('k-o');
  const hinh = $('k-hinh');
  const go = $('k-go');
  const nhin = taoKhungNhin();
  let duocGui = false; // the host takes input
  let dangXem = false; // a session is live
  let net = 0; // lines asked for; 0: automatic
  let caoDaGui = 0;
  let henCao = 0;
  let chuotO = null; // where the mouse is, in the view
  let dangDay = false;

  const gui = (lenh) => { if (duocGui) guiLenh(lenh); };
  const chuot = taoChuot({ gui, cham, moiKhung: (viec) => requestAnimationFrame(viec) });
  const banPhim = taoBanPhim({ gui, laMac: laMac(), daoCmd, khiThoat: () => { go.blur(); khiThoat(); } });
  const oGo = taoOGo({
    o: go, go: banPhim.goChu, xoa: () => banPhim.bam('Backspace'), khiGhep: (ghep) => go.classList.toggle('k-ghep', ghep),
  });
  const phan = (x, y, ra) => nhin.phan(x, y, ra);
  const ngon = taoCham({
    chuot, nhin: Object.freeze({ phan, keo: nhin.keo, phongTai: nhin.phongTai, tranRa: nhin.tranRa, get phong() { return nhin.phong; } }),
    hen, luc: () => performance.now(), khiDoi: veSau, duocGui: () => duocGui,
  });

  // ---- Where the picture lies
  function ve() {
    const h = nhin.hinhChuNhat();
    if (!h) return;
    // The view itself may begin between two device pixels, below a bar whose height is no whole number of them.
    const r = o.getBoundingClientRect();
    const tiLe = window.devicePixelRatio || 1;
    const dich = (v, goc) => Math.round((goc + v) * tiLe) / tiLe - goc;
    Object.assign(hinh.style, { width: `${h.rong}px`, height: `${h.cao}px`, transform: `translate(${dich(h.x, r.left)}px, ${dich(h.y, r.top)}px)` });
    o.classList.toggle('k-net', nhin.che === THUC && nhin.phong === 1);
  }

  function doKhung() {
    const { clientWidth: rongO, clientHeight: caoO } = o;
    if (!rongO || !caoO) return;
    nhin.doi({ rongO, caoO, rongHinh: hinh.videoWidth, caoHinh: hinh.videoHeight, tiLe: window.devicePixelRatio || 1 });
    ve();
    hoiCao();
  }

  // After the view was moved or enlarged, which may call for more lines.
  function veSau() {
    ve();
    hoiCao();
  }

  function hoiCao() {
    hen.huy(henCao);
    henCao = hen.dat(baoCao, CHO_CAO);
  }

  function baoCao() {
    const can = caoCan(net, nhin.che, {
      rongO: o.clientWidth, caoO: o.clientHeight, rongHinh: hinh.videoWidth, caoHinh: hinh.videoHeight, tiLe: window.devicePixelRatio || 1, phong: nhin.phong,
    });
    const cao = net || (BAC_NET.find((b) => b >= can) ?? BAC_NET[BAC_NET.length - 1]);
    if (!dangXem || cao === caoDaGui) return;
    if (guiCao(cao)) caoDaGui = cao;
  }

  function dayTheoChuot() {
    if (dangDay) return;
    dangDay = true;
    requestAnimationFrame(() => {
      dangDay = false;
      if (!chuotO || !nhin.tranRa()) return;
      const { dx, dy } = dayMep(chuotO.x, chuotO.y, o.clientWidth, o.clientHeight);
      if (!dx && !dy) return;
      nhin.keo(dx, dy);
      ve();
      chuot.diDen(phan(chuotO.x, chuotO.y, chuot.dangKeo));
      dayTheoChuot();
    });
  }

  // ---- Pointer
  function cho(e) {
    const r = o.getBoundingClientRect();
    return { x: e.clientX - r.left, y: e.clientY - r.top };
  }

  const trenHinh = (e) => e.target === o || e.target === hinh || e.target === go;

  function chuotDen(e) {
    const p = cho(e);
    chuotO = e.type === 'pointerleave' ? null : p;
    if (banPhim.dangGiu) banPhim.dongBo(e);
    chuot.diDen(phan(p.x, p.y, chuot.dangKeo));
    chuot.theoNut(e.buttons, phan(p.x, p.y), phan(p.x, p.y, true));
    dayTheoChuot();
  }

  function khiXuong(e) {
    if (!dangXem || !trenHinh(e)) return;
    e.preventDefault();
    bamGiu(e.pointerId);
    const p = cho(e);
    if (e.pointerType === 'touch') return ngon.xuong(e.pointerId, p.x, p.y);
    batPhim();
    chuotDen(e);
  }

  // The drag goes on outside the view; engines without capture end it at the edge.
  function bamGiu(id) {
    try {
      o.setPointerCapture(id);
    } catch { /* the pointer is already gone */ }
  }

  function khiDi(e) {
    if (!dangXem) return;
    const p = cho(e);
    if (e.pointerType === 'touch') ngon.di(e.pointerId, p.x, p.y);
    else if (trenHinh(e)) chuotDen(e);
  }

  function khiLen(e) {
    const p = cho(e);
    if (e.pointerType === 'touch') ngon.len(e.pointerId, p.x, p.y);
    else if (dangXem) chuotDen(e);
  }

  function khiHuy(e) {
    if (e.pointerType === 'touch') ngon.huy();
    else chuot.nhaHet();
  }

  function khiCuon(e) {
    if (!dangXem || !trenHinh(e)) return;
    e.preventDefault();
    const p = cho(e);
    // Engines report a touchpad's pinch as a wheel with a Ctrl that nobody holds.
    if (e.ctrlKey && !banPhim.coCtrl) {
      nhin.phongTai(nhin.phong * Math.exp(-e.deltaY * PHONG_CUON), p.x, p.y);
      veSau();
    } else chuot.cuonTai(phan(p.x, p.y), doiCuon(e));
  }

  // ---- Keyboard
  const coPhim = () => document.activeElement === go;

  function batPhim() {
    if (!coPhim()) {
      go.setAttribute('inputmode', 'none'); // only its button opens a phone's keyboard
      go.focus({ preventScroll: true });
    }
  }

  const laDan = (e) => e.code === 'KeyV' && (laMac() ? e.metaKey : e.ctrlKey) && !e.altKey && !e.shiftKey && duocDan();

  function khiPhimXuong(e) {
    if (!dangXem) return;
    // The engine is left to paste, which is the one way to the clipboard that needs no permission; see khiDanVao.
    if (duocGui && !e.repeat && laDan(e)) return;
    if (banPhim.xuong(e)) e.preventDefault();
  }

  async function khiDanVao(e) {
    const chu = e.clipboardData?.getData('text/plain') ?? '';
    e.preventDefault();
    if (!duocGui || (chu && !(await khiDan(chu)))) return;
    const dao = daoCmd();
    banPhim.bamToHop([laMac() !== dao ? 'MetaLeft' : 'ControlLeft', 'KeyV']);
  }

  function moBanPhim(mo) {
    oGo.datSong(mo);
    go.setAttribute('inputmode', mo ? 'text' : 'none');
    go.blur(); // the keyboard follows the mode at the next focus
    if (mo) go.focus({ preventScroll: true });
  }

  function nhaHet() {
    banPhim.nhaHet();
    chuot.nhaHet();
    ngon.huy();
    oGo.huy();
  }

  function noi() {
    const them = (ten, ham, cach) => o.addEventListener(ten, ham, cach);
    them('pointerdown', khiXuong);
    them('pointermove', khiDi);
    them('pointerup', khiLen);
    them('pointercancel', khiHuy);
    them('pointerleave', () => { chuotO = null; });
    them('wheel', khiCuon, { passive: false });
    them('contextmenu', (e) => { if (dangXem) e.preventDefault(); });
    them('dragstart', (e) => e.preventDefault());
    for (const ten of ['mousedown', 'mouseup', 'auxclick']) them(ten, (e) => { if (dangXem && trenHinh(e)) e.preventDefault(); });
    go.addEventListener('keydown', khiPhimXuong);
    go.addEventListener('keyup', (e) => { if (banPhim.len(e)) e.preventDefault(); });
    go.addEventListener('paste', khiDanVao);
    for (const ten of ['compositionstart', 'compositionend', 'input']) go.addEventListener(ten, oGo[ten]);
    go.addEventListener('focus', () => o.classList.toggle('k-bat', duocGui));
    go.addEventListener('blur', () => {
      o.classList.toggle('k-bat', false);
      nhaHet();
    });
    hinh.addEventListener('resize', doKhung);
    hinh.addEventListener('loadedmetadata', doKhung);
  }
  noi();

  return Object.freeze({
    banPhim, doKhung, batPhim, moBanPhim, nhaHet,
    get che() { return nhin.che; },
    get dangCham() { return ngon.dangCham; },
    get coPhim() { return coPhim(); },
    datChe(che) {
      nhin.doi({ che, phong: 1, lechX: 0, lechY: 0 });
      doKhung();
    },
    datNet(moi) {
      net = moi;
      baoCao();
    },
    datDuocGui(duoc) {
      if (duocGui && !duoc) nhaHet();
      duocGui = duoc;
      o.classList.toggle('k-duoc', duoc);
      o.classList.toggle('k-bat', duoc && coPhim());
    },
    // A stream to show, or null when there is none any more.
    datLuong(luong) {
      hinh.srcObject = luong;
      if (!luong) return;
      hinh.muted = true;
      hinh.play?.()?.catch(() => {}); // begins by itself when the page is seen
    },
    batDau() {
      dangXem = true;
      caoDaGui = 0;
      doKhung();
    },
    dung() {
      nhaHet();
      dangXem = false;
      this.datDuocGui(false);
      hen.huy(henCao);
    },
  });
}
