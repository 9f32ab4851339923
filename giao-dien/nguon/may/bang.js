import { chep } from '../chung/chep.js';
import { moHopThoai } from '../chung/hop-thoai.js';
import { taoNut, taoThe } from '../chung/trang.js';

const TOI_DA = 1024 * 1024; // bytes

// Text clipboards between this machine and its controllers, as far as the engine lets the page at this machine's.
export function taoBang({ van, baoTin, phong }) {
  // A text from a controller. What may not be written by itself is written when this person says so.
  async function nhan(chu, ten) {
    if (await chep(chu)) return;
    const tin = van.chu('bang.nhan', { ten });
    baoTin('xong', tin, taoNut(van.chu('truyCap.chep'), async () => {
      const duoc = await chep(chu);
      baoTin(duoc ? 'xong' : 'hong', van.chu(duoc ? 'truyCap.daChep' : 'truyCap.khongChep'));
    }));
  }

  async function doc() {
    try {
      if (window.isSecureContext && navigator.clipboard?.readText) return await navigator.clipboard.readText();
    } catch { /* the engine keeps it to itself: it can be pasted by hand */ }
    return '';
  }

  // To all controllers, after this person has seen what it is.
  async function gui() {
    const o = taoThe('textarea', 'hop-chu');
    o.value = await doc();
    o.setAttribute('aria-label', van.chu('bang.chu'));
    const { traLoi } = moHopThoai({
      tieuDe: van.chu('bang.gui'), noiDung: van.chu('bang.guiMoTa'), them: o, macDinh: false,
      nut: [[true, van.chu('bang.guiDi'), 'chinh'], [false, van.chu('bang.thoi')]],
    });
    if (!await traLoi || !o.value) return;
    if (new Blob([o.value]).size > TOI_DA) return baoTin('hong', van.chu('bang.quaDai'));
    phong().guiBang(o.value);
    baoTin('xong', van.chu('bang.daGui'));
  }

  return { nhan, gui };
}
