// Where the picture lies in the view, and which point of it is under the pointer. Lengths are CSS pixels of the view
// unless they say otherwise.
//
// The picture's own pixels are the host's; at 1:1 one of them is one pixel of this device, so text is exactly as sharp as it
// was sent. `phong` (1 … 6) enlarges either way of showing, for fingers.

export const VUA = 'vua'; // fitted
export const THUC = 'thuc'; // 1:1
export const PHONG_MAX = 6;

const kep = (v, thap, cao) => Math.min(Math.max(v, thap), cao);

export function taoKhungNhin() {
  const nhin = { che: VUA, phong: 1, rongO: 1, caoO: 1, rongHinh: 0, caoHinh: 0, tiLe: 1, lechX: 0, lechY: 0 };

  // Whole device pixels: an edge between two of them would blur every line of text.
  const tron = (v) => Math.round(v * nhin.tiLe) / nhin.tiLe;

  function co() {
    const { rongHinh, caoHinh, rongO, caoO, tiLe, phong } = nhin;
    const muc = (nhin.che === THUC ? 1 / tiLe : Math.min(rongO / rongHinh, caoO / caoHinh)) * phong;
    return { rong: tron(rongHinh * muc), cao: tron(caoHinh * muc) };
  }

  const canh = (lech, hinh, o) => (hinh <= o ? (o - hinh) / 2 : kep(lech, o - hinh, 0));

  // The picture's rectangle in the view, or null while there is no picture.
  function hinhChuNhat() {
    if (!(nhin.rongHinh > 0 && nhin.caoHinh > 0)) return null;
    const { rong, cao } = co();
    return { x: tron(canh(nhin.lechX, rong, nhin.rongO)), y: tron(canh(nhin.lechY, cao, nhin.caoO)), rong, cao };
  }

  // The point of the picture at (x, y), as fractions 0 … 1. Outside the picture it is the nearest point of its edge
  // where `ra` is set (a drag), else null.
  function phan(x, y, ra = false) {
    const h = hinhChuNhat();
    if (!h) return null;
    const px = (x - h.x) / h.rong;
    const py = (y - h.y) / h.cao;
    if (!ra && (px < 0 || px > 1 || py < 0 || py > 1)) return null;
    return { x: kep(px, 0, 1), y: kep(py, 0, 1) };
  }

  function doi(moi) {
    Object.assign(nhin, moi);
    giuTrong();
  }

  function giuTrong() {
    const h = hinhChuNhat();
    if (h) Object.assign(nhin, { lechX: h.x, lechY: h.y });
  }

  function keo(dx, dy) {
    nhin.lechX += dx;
    nhin.lechY += dy;
    giuTrong();
  }

  // Enlarges around (x, y): what is under the fingers stays under them.
  function phongTai(phong, x, y) {
    const h = hinhChuNhat();
    if (!h) return;
    const [px, py] = [(x - h.x) / h.rong, (y - h.y) / h.cao];
    nhin.phong = kep(phong, 1, PHONG_MAX);
    const sau = co();
    nhin.lechX = x - px * sau.rong;
    nhin.lechY = y - py * sau.cao;
    giuTrong();
  }

  function traLai() {
    const h = hinhChuNhat();
    return !!h && (h.rong > nhin.rongO + 0.5 || h.cao > nhin.caoO + 0.5);
  }

  return Object.freeze({
    doi, keo, phongTai, phan, hinhChuNhat, tranRa: traLai,
    get che() { return nhin.che; },
    get phong() { return nhin.phong; },
  });
}

const MEP = 32; // of the view's edge, where the pointer pushes a picture that is larger than the view
const BUOC = 28; // at the very edge, each frame

// How far the view moves in one frame for a pointer at (x, y).
export function dayMep(x, y, rong, cao) {
  const motChieu = (v, dai) => {
    if (v < 0 || v > dai) return 0;
    if (v < MEP) return Math.ceil(((MEP - v) / MEP) * BUOC);
    return v > dai - MEP ? -Math.ceil(((v - (dai - MEP)) / MEP) * BUOC) : 0;
  };
  return { dx: motChieu(x, rong), dy: motChieu(y, cao) };
}

const TI_LE_THUONG = 9 / 16; // of a picture that is not there yet
const CAO_MIN = 360;
const CAO_MAX = 2880;

// Lines that the view can use: what `net` asks for, or as many device pixels as the fitted picture is high, enlarged as
// it is. At 1:1 all that there are.
export function caoCan(net, che, { rongO, caoO, rongHinh = 0, caoHinh = 0, tiLe = 1, phong = 1 }) {
  if (net > 0) return net;
  if (che === THUC) return CAO_MAX;
  const vua = Math.min(caoO, rongO * (rongHinh > 0 ? caoHinh / rongHinh : TI_LE_THUONG));
  return kep(Math.ceil(vua * tiLe * phong), CAO_MIN, CAO_MAX);
}
