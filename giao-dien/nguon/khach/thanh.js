// The toolbar of a session, its panels (one open at a time), the row of keys for phones, full screen.
import { $, dienChon, khi, taoNut } from '../chung/trang.js';
import { TO_HOP } from './bang-phim.js';
import { THUC, VUA } from './khung-nhin.js';

const CAC_NET = [720, 1080, 1440, 2160, 2880];
const BANG = [['k-mo-phim', 'k-phim'], ['k-mo-tam', 'k-tam'], ['k-mo-tep', 'k-tep']];
const HANG_DINH = [['Ctrl', 'ControlLeft'], ['Alt', 'AltLeft'], ['⇧', 'ShiftLeft'], ['⌘/⊞', 'MetaLeft']];
const HANG_PHIM = [
  ['Esc', 'Escape'], ['Tab', 'Tab'], ['←', 'ArrowLeft'], ['↑', 'ArrowUp'], ['↓', 'ArrowDown'], ['→', 'ArrowRight'], ['⌫', 'Backspace'],
  ['Del', 'Delete'], ['↵', 'Enter'], ['Home', 'Home'], ['End', 'End'], ['PgUp', 'PageUp'], ['PgDn', 'PageDown'],
  ...Array.from({ length: 12 }, (_, i) => [`F${i + 1}`, `F${i + 1}`]),
];
const CHO_THANH = 4500; // ms that a phone shows the bar before it gets out of the way

export const coCham = () => !!window.matchMedia?.('(pointer: coarse)').matches;

// What leaves the captured keyboard, as its caps are called here.
export const chuThoat = (mac) => (mac ? '⌃ ⌥ ⇧ X' : 'Ctrl + Alt + Shift + X');

// khi…: khiChonMan(number), khiNet(lines, 0: automatic), khiHet(), khiSucKhoe(shown).
export function taoThanh({ chu, kho, xem, mac, hen, khiChonMan, khiNet, khiHet, khiSucKhoe }) {
  const { banPhim } = xem;
  let henCat = 0;
  let veMan = '';

  // ---- Panels and the bar itself
  function moBang(id) {
    for (const [nut, bang] of BANG) {
      $(bang).hidden = bang !== id;
      $(nut).setAttribute('aria-expanded', String(bang === id));
    }
    if (id) hienThanh(true);
  }

  const bangMo = () => BANG.find(([, bang]) => !$(bang).hidden);

  function dongBang() {
    const mo = bangMo();
    moBang('');
    return mo;
  }

  function hienThanh(hien) {
    hen.huy(henCat);
    $('k-thanh').hidden = !hien;
    $('k-mo-thanh').hidden = hien;
    xem.doKhung();
  }

  // Not under a finger: what it points at would move away from it.
  function tuCat() {
    henCat = hen.dat(() => {
      if (xem.dangCham) tuCat();
      else if (!bangMo()) hienThanh(false);
    }, CHO_THANH);
  }

  function catThanh() {
    dongBang();
    hienThanh(false);
  }

  // ---- Keys
  function bamToHop({ cacMa }) {
    banPhim.bamToHop(cacMa);
    if (!coCham()) xem.batPhim();
  }

  function taoHang() {
    const dinh = HANG_DINH.map(([ten, ma]) => {
      const nut = taoNut(ten, () => {
        banPhim.batDinh(ma);
        veDinh();
      });
      nut.dataset.ma = ma;
      return nut;
    });
    const phim = HANG_PHIM.map(([ten, ma]) => taoNut(ten, () => {
      banPhim.bam(ma);
      veDinh();
    }));
    const hang = $('k-hang');
    hang.replaceChildren(...dinh, ...phim);
    hang.addEventListener('pointerdown', (e) => e.preventDefault()); // the keyboard below it stays open
  }

  function veDinh() {
    const giu = new Set(banPhim.dinh);
    for (const nut of $('k-hang').children) if (nut.dataset.ma) nut.setAttribute('aria-pressed', String(giu.has(nut.dataset.ma)));
  }

  function hienHang(hien) {
    $('k-hang').hidden = !hien;
    $('k-hien-hang').checked = hien;
    xem.doKhung();
  }

  let banPhimMo = false;
  function moBanPhim(mo) {
    banPhimMo = mo;
    $('k-ban-phim').setAttribute('aria-pressed', String(mo));
    hienHang(mo || kho.doc('hienHang', null, TvKho.QUA_CONG) === '1');
    xem.moBanPhim(mo);
  }

  // ---- Full screen. The whole page goes, so that messages are seen; a phone that cannot is left alone.
  const toan = () => document.fullscreenElement || document.webkitFullscreenElement || null;
  const goc = document.documentElement;

  async function doiToan() {
    try {
      if (toan()) await (document.exitFullscreen?.() ?? document.webkitExitFullscreen());
      else {
        await (goc.requestFullscreen?.({ navigationUI: 'hide' }) ?? goc.webkitRequestFullscreen());
        await navigator.keyboard?.lock?.(); // Alt+Tab and the like, too, where the engine has it
      }
    } catch { /* refused */ }
  }

  function khiToan() {
    $('k-day').setAttribute('aria-pressed', String(!!toan()));
    if (!toan()) navigator.keyboard?.unlock?.();
    if (toan()) catThanh();
    else if (!coCham()) hienThanh(true);
    xem.doKhung();
  }

  // A phone's keyboard covers the page without making it smaller.
  function theoKhungNhin() {
    const { scale, offsetTop, height } = window.visualViewport;
    const che = scale === 1 ? window.innerHeight - offsetTop - height : 0;
    Object.assign($('k-phien').style, { top: scale === 1 ? `${offsetTop}px` : '', bottom: che > 1 ? `${che}px` : '' });
    xem.doKhung();
  }

  // ---- Drawing
  function veChe() {
    $('k-vua').setAttribute('aria-pressed', String(xem.che === VUA));
    $('k-thuc').setAttribute('aria-pressed', String(xem.che === THUC));
  }

  function veManHinh(may) {
    const ds = Array.isArray(may?.manHinh) ? may.manHinh.filter((m) => m && typeof m === 'object') : [];
    const dau = JSON.stringify(ds);
    $('k-o-man').hidden = ds.length < 2;
    if (dau !== veMan) {
      dienChon($('k-man'), ds.map((m) => [m.chiSo, chu(m.chinh ? 'man.mucChinh' : 'man.muc', m)]));
      veMan = dau;
    }
    $('k-man').value = String(may?.dangXem ?? '');
  }

  function veChu() {
    const net = $('k-net').value || kho.doc('netXem', null, TvKho.QUA_CONG) || '0';
    dienChon($('k-net'), [[0, chu('xem.netTuDong')], ...CAC_NET.map((cao) => [cao, chu('man.netMuc', { cao })])]);
    $('k-net').value = net;
    veMan = '';
    for (const nut of $('k-thanh').querySelectorAll?.('button') ?? []) if (nut.lastElementChild?.matches('span')) nut.title = nut.lastElementChild.textContent;
    $('k-ra').textContent = $('k-cach-ra').textContent = chu('phim.thoat', { phim: chuThoat(mac) });
  }

  function noi() {
    for (const [nut, bang] of BANG) khi(nut, () => ($(bang).hidden ? moBang(bang) : moBang('')));
    for (const [nut, che] of [['k-vua', VUA], ['k-thuc', THUC]]) {
      khi(nut, () => {
        xem.datChe(che);
        veChe();
      });
    }
    khi('k-day', doiToan);
    khi('k-ban-phim', () => moBanPhim(!banPhimMo));
    khi('k-mo-sk', () => {
      const hien = $('k-sk').hidden;
      $('k-sk').hidden = !hien;
      $('k-mo-sk').setAttribute('aria-pressed', String(hien));
      khiSucKhoe(hien);
    });
    khi('k-cat', catThanh);
    khi('k-mo-thanh', () => {
      hienThanh(true);
      $('k-cat').focus();
    });
    khi('k-het', khiHet);
    khi('k-man', () => khiChonMan(Number($('k-man').value)), 'change');
    khi('k-net', () => {
      kho.ghi('netXem', $('k-net').value, TvKho.QUA_CONG);
      khiNet(Number($('k-net').value));
    }, 'change');
    khi('k-hien-hang', () => {
      kho.ghi('hienHang', $('k-hien-hang').checked ? '1' : '0', TvKho.QUA_CONG);
      hienHang($('k-hien-hang').checked);
    }, 'change');
    khi('k-dao', () => {
      banPhim.nhaHet();
      kho.ghi('daoCmd', $('k-dao').checked ? '1' : '0', TvKho.QUA_CONG);
    }, 'change');
    khi('k-phien', (e) => {
      if (e?.key !== 'Escape' || e.target === $('k-go')) return;
      const mo = dongBang();
      if (mo) $(mo[0]).focus();
    }, 'keydown');
    // A tool that was clicked gives the keyboard back to the picture; one that was pressed by key keeps its place.
    khi('k-thanh', (e) => {
      if (e?.detail > 0 && e.target.closest('button') && !coCham() && !bangMo()) xem.batPhim();
    });
    khi('k-o', (e) => { if (e.target === $('k-o') || e.target === $('k-hinh')) dongBang(); }, 'pointerdown');
    khi('k-go', veDinh, 'input');
    $('k-dao').checked = kho.doc('daoCmd', null, TvKho.QUA_CONG) === '1';
    $('k-to-hop').replaceChildren(...TO_HOP.map((th) => taoNut(th.ten, () => bamToHop(th))));
    taoHang();
  }
  noi();

  return Object.freeze({
    veChu, veManHinh, moBang, dongBang,
    daoCmd: () => $('k-dao').checked,
    net: () => Number($('k-net').value) || 0,
    // A session has come up: what this device can do, and the bar that leaves by itself where room is short.
    batDau() {
      $('k-ban-phim').hidden = !coCham();
      $('k-day').hidden = !(goc.requestFullscreen || goc.webkitRequestFullscreen) || !(document.fullscreenEnabled ?? document.webkitFullscreenEnabled);
      hienHang(kho.doc('hienHang', null, TvKho.QUA_CONG) === '1');
      hienThanh(true);
      veChe();
      if (coCham()) tuCat();
      for (const ten of ['fullscreenchange', 'webkitfullscreenchange']) document.addEventListener(ten, khiToan);
      for (const ten of ['resize', 'scroll']) window.visualViewport?.addEventListener(ten, theoKhungNhin);
    },
    dung() {
      dongBang();
      hen.huy(henCat);
      if (banPhimMo) moBanPhim(false);
      $('k-sk').hidden = true;
      $('k-mo-sk').setAttribute('aria-pressed', 'false');
      if (toan()) doiToan();
      for (const ten of ['fullscreenchange', 'webkitfullscreenchange']) document.removeEventListener(ten, khiToan);
      for (const ten of ['resize', 'scroll']) window.visualViewport?.removeEventListener(ten, theoKhungNhin);
      Object.assign($('k-phien').style, { top: '', bottom: '' });
    },
  });
}
