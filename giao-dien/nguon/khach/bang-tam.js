// Text clipboards, both ways: this one's goes there when it is pasted there; the host's comes when its person sends it, since
// its engine lets no page read it. Where this engine withholds its own the panel's field is the way between, and typing the
// text out works even where the host keeps its clipboard to itself.
import { $, khi } from '../chung/trang.js';

const TOI_DA = 1048576; // bytes
const CHO_DAN = 180; // ms that the host gets to store a text before it is told to paste

const coDoc = () => !!(window.isSecureContext && navigator.clipboard?.readText);
const coGhi = () => !!(window.isSecureContext && navigator.clipboard?.writeText);
const quaDai = (chu) => new TextEncoder().encode(chu).length > TOI_DA;

// guiTin(message) on the session; goChu(text) types it; hen: { dat, huy }.
export function taoBangTam({ chu, baoTin, guiTin, goChu, hen }) {
  const o = $('k-tam-chu');
  let coMay = false; // the host has its clipboard switched on
  let duocGo = false;
  let chung = null; // what both sides had last

  function gui(van) {
    if (!coMay || !van) return false;
    if (quaDai(van)) {
      baoTin('hong', chu('bangTam.quaDai'));
      return false;
    }
    if (van !== chung && !guiTin({ l: 'bang', chu: van })) return false;
    chung = van;
    return true;
  }

  async function layTuDay() {
    try {
      o.value = await navigator.clipboard.readText();
      gui(o.value);
    } catch {
      baoTin('hong', chu('bangTam.khongDoc'));
    }
  }

  // The old way too: pages from a plain address have no other.
  async function chepVaoDay() {
    try {
      if (coGhi()) await navigator.clipboard.writeText(o.value);
      else {
        o.select();
        if (!document.execCommand('copy')) throw new Error('copy');
      }
      baoTin('xong', chu('bangTam.daChep'));
    } catch {
      o.select();
      baoTin('hong', chu('bangTam.khongGhi'));
    }
  }

  function ve() {
    $('k-tam-tinh').textContent = chu(coMay ? 'bangTam.bat' : 'bangTam.tat');
    $('k-tam-gui').disabled = !coMay;
    $('k-tam-go').disabled = !duocGo;
    $('k-tam-dan').hidden = !coDoc();
  }

  khi('k-tam-dan', layTuDay);
  khi('k-tam-chep', chepVaoDay);
  khi('k-tam-gui', () => { if (gui(o.value)) baoTin('xong', chu('bangTam.daGui')); });
  khi('k-tam-go', () => { if (o.value) goChu(o.value); });

  return Object.freeze({
    ve,
    get bat() { return coMay; },
    datTinh(may, go) {
      coMay = may;
      duocGo = go;
      ve();
    },
    nhan(van) {
      if (!coMay || quaDai(van)) return; // a host that has not switched it on has no business with this clipboard
      chung = o.value = van;
      if (coGhi()) navigator.clipboard.writeText(van).catch(() => {}); // not while the page is in the background
    },
    // A text pasted over the picture: true when the host may paste it. Without its clipboard the text is typed.
    async dan(van) {
      if (!coMay) {
        goChu(van);
        return false;
      }
      if (van === chung) return true;
      if (!gui(van)) return false;
      await new Promise((f) => { hen.dat(f, CHO_DAN); });
      return true;
    },
    xoa() {
      o.value = '';
      chung = null;
    },
  });
}
