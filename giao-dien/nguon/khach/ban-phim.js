// From keyboard events to input commands. No document here: the caller hands events over and obeys the answer.
//
// The rule, for every key that goes down:
//  1. While an input method is composing, and for dead keys, the key belongs to the text field (see o-go.js), which
//     reports the finished text.
//  2. Shortcuts (Ctrl, Alt or Meta held) and keys that make no text go as the key in that place of the keyboard: the two
//     machines most often have the same layout, and an ⌘A that arrived as ⌘Q would be worse than one that does nothing.
//  3. Text goes as a key where a US keyboard makes the same text in the same place, so that holding a key works;
//     all other text (other layouts, AltGr, Caps Lock, the keypad's digits) goes as "text", which no layout of the host can alter.
// Caps Lock and Num Lock stay here: their effect is already in the text.

import { BANG_US, MA_MAY_BIET, PHIM_CUA_CHU, TU_BO_TRO } from './bang-phim.js';

const THUOC_BO_TRO = [['shift', 'shiftKey'], ['ctrl', 'ctrlKey'], ['alt', 'altKey'], ['meta', 'metaKey']];
const TEN_BO_TRO = { Shift: 'ShiftLeft', Control: 'ControlLeft', Alt: 'AltLeft', Meta: 'MetaLeft', OS: 'MetaLeft' };
const CUA_O_GO = new Set(['Process', 'Compose', 'Unidentified', 'Convert', 'NonConvert', 'KanaMode', 'HangulMode', 'HanjaMode']);
const DAO_CMD = { ControlLeft: 'MetaLeft', ControlRight: 'MetaRight', MetaLeft: 'ControlLeft', MetaRight: 'ControlRight' };
const DAO_TU = { ctrl: 'meta', meta: 'ctrl' };
const TOI_DA_CHU = 1000; // code points in one "text": at most 4000 of the 4096 bytes that the host takes

// Event keys are either text or an ASCII name such as "Enter".
const laChu = (key) => typeof key === 'string' && key !== '' && (!/^[A-Z][A-Za-z0-9]+$/.test(key) || key.length === 1);

// Text in pieces that the host takes, none beginning with a mark that belongs to the character before it.
export function chiaChu(chu) {
  const diem = [...chu];
  const ra = [];
  for (let dau = 0; dau < diem.length;) {
    let cuoi = Math.min(dau + TOI_DA_CHU, diem.length);
    while (cuoi < diem.length && cuoi > dau + 1 && (/^[\p{M}\u200d]$/u.test(diem[cuoi]) || diem[cuoi - 1] === '\u200d')) cuoi--;
    ra.push(diem.slice(dau, cuoi).join(''));
    dau = cuoi;
  }
  return ra;
}

// What a key event is: { loai: 'phim', ma } a key of the host, { loai: 'chu', chu } text, { loai: 'o-go' } the text field's,
// { loai: 'bo' } nobody's (kept from the page), { loai: 'trang' } the page's own, { loai: 'altgr' }.
export function phanLoai(e, laMac) {
  const { key, code = '' } = e;
  if (e.isComposing || e.keyCode === 229 || CUA_O_GO.has(key)) return { loai: 'o-go' };
  if (key === 'AltGraph') return { loai: 'altgr' };
  if (key === 'CapsLock' || key === 'NumLock' || code === 'CapsLock' || code === 'NumLock') return { loai: 'bo' };
  const altGr = !!e.getModifierState?.('AltGraph');
  const lenh = (e.ctrlKey || e.metaKey) && !altGr;
  if (key === 'Dead') return (lenh || (e.altKey && !altGr)) && MA_MAY_BIET.has(code) ? { loai: 'phim', ma: code } : { loai: 'o-go' };
  if (!laChu(key)) return phanLoaiTen(key, code);
  if (lenh || (e.altKey && !altGr && !(laMac && laChuOption(e)))) return phanLoaiTat(key, code);
  if (/^Numpad([0-9]|Decimal|Comma)$/.test(code)) return { loai: 'chu', chu: key };
  const us = BANG_US[code];
  if (us ? us[e.shiftKey ? 1 : 0] === key : MA_MAY_BIET.has(code)) return { loai: 'phim', ma: code };
  return { loai: 'chu', chu: key };
}

// On a Mac, Option types: "@" on a German keyboard. Characters that only such a keyboard needs it for are text; the rest
// (å, ∫ …) is left to the host, whose Option makes the same of it and whose menus may mean the key.
const laChuOption = (e) => /^[!-~]$/.test(e.key) && !BANG_US[e.code]?.includes(e.key);

function phanLoaiTen(key, code) {
  // A keypad without Num Lock says what it does, which the host's own Num Lock must not turn into digits.
  if (/^Numpad[0-9D]/.test(code) && key !== code && MA_MAY_BIET.has(key)) return { loai: 'phim', ma: key };
  if (MA_MAY_BIET.has(code)) return { loai: 'phim', ma: code };
  if (MA_MAY_BIET.has(key)) return { loai: 'phim', ma: key };
  if (TEN_BO_TRO[key]) return { loai: 'phim', ma: TEN_BO_TRO[key] };
  return { loai: 'trang' };
}

function phanLoaiTat(key, code) {
  if (MA_MAY_BIET.has(code)) return { loai: 'phim', ma: code };
  const theoChu = PHIM_CUA_CHU.get(key);
  return theoChu ? { loai: 'phim', ma: theoChu[0] } : { loai: 'bo' };
}

// gui(command) sends one; laMac: this machine is a Mac; daoCmd(): Ctrl and ⌘ change places (a Mac controls something
// else, or the other way round); khiThoat(): the chord that gives the keyboard back was pressed.
export function taoBanPhim({ gui, laMac = false, daoCmd = () => false, khiThoat = () => {} }) {
  const giu = new Map(); // event code -> code that the host was told is down
  const dinh = new Set(); // modifier codes that the key bar holds down

  const maGui = (ma) => (daoCmd() && DAO_CMD[ma]) || ma;

  function cacTu(e) {
    const tu = new Set([...giu.values(), ...dinh].map((ma) => TU_BO_TRO[ma]).filter(Boolean));
    const altGr = !!e?.getModifierState?.('AltGraph');
    for (const [ten, thuoc] of THUOC_BO_TRO) {
      if (e?.[thuoc] && !(altGr && (ten === 'ctrl' || ten === 'alt'))) tu.add((daoCmd() && DAO_TU[ten]) || ten);
    }
    return [...tu];
  }

  const guiPhim = (t, ma, tu) => gui({ t, code: ma, modifiers: tu });

  function nha(maSuKien, e) {
    const ma = giu.get(maSuKien);
    giu.delete(maSuKien);
    guiPhim('key_up', ma, cacTu(e));
  }

  // A release that went to another window is caught up with at the next event.
  function dongBo(e) {
    for (const [ten, thuoc] of THUOC_BO_TRO) {
      if (e[thuoc] !== false) continue;
      for (const maSuKien of [...giu.keys()]) {
        if (TU_BO_TRO[maSuKien] === ten && maSuKien !== e.code) nha(maSuKien, e);
      }
    }
  }

  function goPhim(ma, tu = cacTu()) {
    guiPhim('key_down', ma, tu);
    guiPhim('key_up', ma, tu);
  }

  function goChu(chu) {
    for (const phan of String(chu).normalize('NFC').split(/(\r\n|\n|\r|\t)/)) {
      if (phan === '\t') goPhim('Tab');
      else if (/^[\r\n]/.test(phan)) goPhim('Enter');
      else if (dinh.size && PHIM_CUA_CHU.has(phan)) goTat(phan);
      else for (const value of chiaChu(phan)) gui({ t: 'text', value });
    }
    nhaDinh();
  }

  function goTat(chu) {
    const [ma, shift] = PHIM_CUA_CHU.get(chu);
    goPhim(ma, [...new Set([...cacTu(), ...(shift ? ['shift'] : [])])]);
  }

  function nhaDinh() {
    for (const ma of [...dinh]) {
      dinh.delete(ma);
      guiPhim('key_up', ma, cacTu());
    }
  }

  function laThoat(e) {
    return e.ctrlKey && e.altKey && e.shiftKey && (e.code === 'KeyX' || String(e.key).toLowerCase() === 'x');
  }

  function nhanPhim(e, ma) {
    const maSuKien = e.code || ma;
    guiPhim('key_down', ma, cacTu(e));
    // A Mac reports no release of a key while ⌘ is held.
    if (laMac && e.metaKey && !TU_BO_TRO[maSuKien]) guiPhim('key_up', ma, cacTu(e));
    else giu.set(maSuKien, ma);
    if (!TU_BO_TRO[maSuKien]) nhaDinh();
  }

  // True: the event is used up here and must not reach the page.
  function xuong(e) {
    if (laThoat(e)) {
      nhaHet();
      khiThoat();
      return true;
    }
    const viec = phanLoai(e, laMac);
    if (viec.loai === 'o-go' || viec.loai === 'trang') return false;
    dongBo(e);
    if (viec.loai === 'altgr') {
      if (giu.has('ControlLeft')) nha('ControlLeft', e); // Windows makes AltGr of Ctrl and Alt
    } else if (viec.loai === 'chu') goChu(viec.chu);
    else if (viec.loai === 'phim') nhanPhim(e, maGui(viec.ma));
    return true;
  }

  function len(e) {
    const co = giu.has(e.code);
    if (co) nha(e.code, e);
    if (laMac && e.key === 'Meta') for (const ma of [...giu.keys()]) if (!TU_BO_TRO[ma]) nha(ma, e);
    return co;
  }

  // One chord, pressed and let go again in reverse.
  function bamToHop(cacMa) {
    const tu = [];
    for (const ma of cacMa) {
      guiPhim('key_down', ma, [...tu]);
      if (TU_BO_TRO[ma]) tu.push(TU_BO_TRO[ma]);
    }
    for (const ma of [...cacMa].reverse()) {
      if (TU_BO_TRO[ma]) tu.pop();
      guiPhim('key_up', ma, [...tu]);
    }
  }

  // The key bar's modifiers stay down until the next key or until they are touched again. Answers the new state.
  function batDinh(ma) {
    if (dinh.delete(ma)) {
      guiPhim('key_up', ma, cacTu());
      return false;
    }
    dinh.add(ma);
    guiPhim('key_down', ma, cacTu());
    return true;
  }

  function bam(ma) {
    goPhim(ma);
    nhaDinh();
  }

  function nhaHet() {
    for (const maSuKien of [...giu.keys()].reverse()) nha(maSuKien);
    nhaDinh();
  }

  return Object.freeze({
    xuong, len, goChu, bam, bamToHop, batDinh, nhaHet, dongBo,
    get dinh() { return [...dinh]; },
    get dangGiu() { return giu.size + dinh.size > 0; },
    get coCtrl() { return [...giu.values()].some((ma) => TU_BO_TRO[ma] === 'ctrl' || TU_BO_TRO[ma] === 'meta'); },
  });
}
