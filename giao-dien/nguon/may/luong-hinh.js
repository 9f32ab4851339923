import { docBangAnh, docBangFetch } from './doc-luong.js';

const MO_LAI = 1000; // ms before a stream that broke off is read again
const NHIP = 100; // ms between looks whether the picture should be sent again
const GUI_LAI = [150, 300, 600]; // ms after the last change or newcomer; then every:
const GUI_LAI_SAU = 1000;

// The screen as a video track: reads the host's picture stream while it has an address and shows it on one canvas.
//
// The canvas takes pictures over as they are. Drawn into a 2D context they cost this page's thread 75 ms each at 1920 x 1080
// in the web engine of Debian 12, which reads the drawing back; taken over, 3.5 ms.
//
// A screen that does not change gives no new pictures, but encoders need some to become sharp and newcomers one to begin
// with: the last one is sent again, ever more seldom. Nothing here waits for a page that is being painted.
export function taoLuongHinh({
  khiDoi, docCach = [docBangFetch, docBangAnh], canvas = document.createElement('canvas'), chup = (nguon) => createImageBitmap(nguon),
}) {
  let duong = '';
  let ngung = null; // ends what is being read
  let hen = 0;
  let cach = 0; // which way works
  let coHinh = false;
  let soHong = 0; // failed attempts in a row
  let track = null;
  let nhip = 0;
  let lanGui = 0; // sends since the last change
  let guiLuc = 0; // when, as performance.now()
  let soHinh = 0;
  const noiHien = canvas.getContext('bitmaprenderer');

  function gui(hinh) {
    noiHien.transferFromImageBitmap(hinh);
    guiLuc = performance.now();
    track?.requestFrame?.();
  }

  function nhanHinh(hinh, rong, cao) {
    if (canvas.width !== rong || canvas.height !== cao) {
      canvas.width = rong;
      canvas.height = cao;
      coHinh = false;
    }
    soHinh += 1;
    lanGui = 0;
    gui(hinh);
    if (!coHinh) {
      coHinh = true;
      soHong = 0;
      khiDoi();
    }
  }

  // A canvas that was given nothing new is not sent: it is given a copy of what it shows.
  async function guiLai() {
    if (!coHinh || performance.now() - guiLuc < (GUI_LAI[lanGui] ?? GUI_LAI_SAU)) return;
    lanGui += 1;
    guiLuc = performance.now();
    const so = soHinh;
    try {
      const hinh = await chup(canvas);
      if (coHinh && so === soHinh) gui(hinh);
      else hinh.close();
    } catch { /* the next one will do */ }
  }

  function doc() {
    const thuCach = cach;
    ngung = docCach[thuCach](duong, {
      hinh: nhanHinh,
      het(ly) {
        ngung = null;
        soHong += 1;
        const doiCach = ly === 'khong-hinh' || (ly !== 'het' && !coHinh);
        if (doiCach) cach = (thuCach + 1) % docCach.length;
        coHinh = false;
        // The other way is tried at once, the first one again only after a while.
        hen = setTimeout(() => { if (duong) doc(); }, doiCach && cach > 0 ? 0 : MO_LAI);
        khiDoi(); // may lead to another address at once
      },
    });
  }

  function dongDoc() {
    clearTimeout(hen);
    ngung?.();
    ngung = null;
    coHinh = false;
    soHong = 0;
  }

  return {
    canvas,
    get coHinh() { return coHinh; },
    get hong() { return soHong > docCach.length; },
    get soHinh() { return soHinh; },
    // An empty address stops reading. The track stays what it is: the sessions keep it through a change of address.
    mo(moi) {
      if (moi === duong) return;
      dongDoc();
      duong = moi;
      if (duong) doc();
      clearInterval(nhip);
      if (duong) nhip = setInterval(guiLai, NHIP);
      khiDoi();
    },
    // The video track, made when it is first asked for.
    layTrack() {
      if (track === null) {
        canvas.width ||= 16;
        track = canvas.captureStream(0).getVideoTracks()[0];
        if (!track.requestFrame) track = canvas.captureStream().getVideoTracks()[0]; // the engine decides by itself
        track.contentHint = 'detail';
      }
      return track;
    },
    nguoiMoi: () => { lanGui = 0; },
  };
}
