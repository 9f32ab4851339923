// Fingers on the picture. One finger: a tap clicks, a long press is the right button, moving drags with the left
// button, or moves the view where the picture is larger than it; a tap and at once a move drags in any case. Two
// fingers: apart or together enlarges the view, moving them alike scrolls the host.

const XE = 9; // CSS pixels that a finger may tremble
const BAM_LAU = 550; // ms
const NHAP_DOI = 500; // ms between a tap and what belongs to it: the second tap, or the move that makes a drag of it
const GAN = 24; // CSS pixels within which a second tap is meant for the same place as the first
const CHON_PHONG = 14; // CSS pixels of change in distance that make two fingers a pinch

// chuot: see chuot.js; phan(x, y, ra): see khung-nhin.js; nhin: { keo, phongTai, phong, tranRa }, hen: { dat(f, ms), huy(id) };
// khiDoi(): the view was moved or enlarged; luc(): ms. Positions are CSS pixels of the view.
export function taoCham({ chuot, nhin, hen, luc, khiDoi, duocGui = () => true }) {
  const ngon = new Map(); // id -> { x, y }
  let viec = 'nghi'; // nghi, cho, keo, day, hai, phong, cuon, het
  let dau = null; // where the first finger came down
  let hai = null; // { cach, x, y, phong } where two fingers began or last were
  let henLau = 0;
  let bamTruoc = { luc: -Infinity, x: 0, y: 0 };

  const cachNhau = (a, b) => Math.hypot(a.x - b.x, a.y - b.y);
  const bo = () => hen.huy(henLau);

  function haiNgon() {
    const [a, b] = [...ngon.values()];
    return { cach: cachNhau(a, b), x: (a.x + b.x) / 2, y: (a.y + b.y) / 2 };
  }

  function xuong(id, x, y) {
    ngon.set(id, { x, y });
    bo();
    if (ngon.size === 1) {
      dau = { x, y };
      viec = 'cho';
      henLau = hen.dat(bamLau, BAM_LAU);
    } else if (ngon.size === 2 && viec !== 'keo') {
      viec = 'hai';
      hai = { ...haiNgon(), phong: nhin.phong };
    }
  }

  function bamLau() {
    if (viec !== 'cho') return;
    viec = 'het';
    if (duocGui()) chuot.bam(2, nhin.phan(dau.x, dau.y));
  }

  function batDauKeo() {
    const nhapDoi = luc() - bamTruoc.luc < NHAP_DOI && cachNhau(bamTruoc, dau) < GAN;
    bo();
    if (nhin.tranRa() && !nhapDoi) viec = 'day';
    else viec = duocGui() && chuot.xuong(0, nhin.phan(dau.x, dau.y)) ? 'keo' : 'het';
  }

  function diMotNgon(truoc, x, y) {
    if (viec === 'cho' && cachNhau(dau, { x, y }) > XE) {
      batDauKeo();
      truoc = dau;
    }
    if (viec === 'keo') chuot.diDen(nhin.phan(x, y, true));
    if (viec === 'day') {
      nhin.keo(x - truoc.x, y - truoc.y);
      khiDoi();
    }
  }

  function diHaiNgon() {
    const gio = haiNgon();
    if (viec === 'hai') {
      if (Math.abs(gio.cach - hai.cach) > CHON_PHONG) viec = 'phong';
      else if (cachNhau(gio, hai) > XE) viec = 'cuon';
      else return;
    }
    if (viec === 'phong') {
      nhin.phongTai((hai.phong * gio.cach) / hai.cach, hai.x, hai.y);
      nhin.keo(gio.x - hai.x, gio.y - hai.y);
      khiDoi();
      hai = { ...hai, x: gio.x, y: gio.y };
    } else if (viec === 'cuon') {
      // The picture follows the fingers: moving up scrolls down.
      if (duocGui()) chuot.cuonTai(nhin.phan(gio.x, gio.y, true), { dx: (hai.x - gio.x) * 3, dy: (hai.y - gio.y) * 3 });
      hai = { ...hai, x: gio.x, y: gio.y };
    }
  }

  function di(id, x, y) {
    const truoc = ngon.get(id);
    if (!truoc) return;
    ngon.set(id, { x, y });
    if (ngon.size === 1) diMotNgon(truoc, x, y);
    else if (ngon.size === 2) diHaiNgon();
  }

  function len(id, x, y) {
    if (!ngon.delete(id)) return;
    bo();
    if (viec === 'cho') {
      // Fingers are coarser than the distance that the host allows between the clicks of a double click.
      const noi = luc() - bamTruoc.luc < NHAP_DOI && cachNhau(bamTruoc, dau) < GAN ? bamTruoc : dau;
      bamTruoc = { luc: luc(), x: noi.x, y: noi.y };
      if (duocGui()) chuot.bam(0, nhin.phan(noi.x, noi.y));
    } else if (viec === 'keo') chuot.len(0, nhin.phan(x, y, true));
    viec = ngon.size === 0 ? 'nghi' : 'het'; // a finger that stays does nothing more
  }

  function huy() {
    bo();
    ngon.clear();
    if (viec === 'keo') chuot.len(0, null);
    viec = 'nghi';
  }

  return Object.freeze({ xuong, di, len, huy, get dangCham() { return ngon.size > 0; } });
}
