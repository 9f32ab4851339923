// The controller's role: one call at a time, from the form to the end, called again by itself where that makes sense.
import { $, khi, taoThe } from '../chung/trang.js';
import { taoKenhHen } from '../chung/kenh-hen.js';
import { taoBangTam } from './bang-tam.js';
import { taoBangTep } from './bang-tep.js';
import { sauKhiHet } from './goi-lai.js';
import { taoGuiTep } from './gui-tep.js';
import { CHU_TINH, chuHet, docGiay } from './ly-do.js';
import { chiaMa } from './may-cu.js';
import { taoPhienKhach } from './phien-khach.js';
import { docSucKhoe, taoNhip } from './suc-khoe.js';
import { chuThoat, coCham, taoThanh } from './thanh.js';
import { taoVao } from './vao.js';
import { laMac, taoXem } from './xem.js';

const NHIP = 2000; // ms between beats
const IM_NGHI_NGO = 4000; // ms without an answer that end a session whose server has said that it is gone
const DO_SUC_KHOE = 1000; // ms
const CHO_LOI_NHAC = 6000; // ms that the hint about the keyboard stays
const HEN = Object.freeze({ dat: (f, ms) => setTimeout(f, ms), huy: (id) => clearTimeout(id) });

// The packaged interface puts a substitute in the client's place, which knows no server.
const laThay = (io) => typeof io !== 'function' || !io.Manager;

// goc: this role's element; io: the page's socket client; tv: window.tovira or null.
export function taoKhach({ chu, kho, io, baoTin, tv, ngonNgu = () => document.documentElement.lang || 'vi', luc = () => performance.now() }) {
  const canDiaChi = laThay(io) && !!window.TvThuVien;
  const mac = laMac();
  let goi = null; // the call: { ma, matKhau, ten, diaChi, daMo, lan }
  let kenhHen = null;
  let phien = null;
  let dangSong = false; // the session is live
  let nghiNgo = false; // the server says that the other side is gone; believed only when no beat is answered
  let may = null; // what the host last told about itself
  let nhip = null;
  let henNhip = 0;
  let henGoi = 0;
  let henLoiNhac = 0;
  let henSucKhoe = 0;
  let sucKhoe = null;
  let daNhac = false;
  let khoaManHinh = null;
  let veLaiChu = () => {}; // writes the message over the picture again, in another language

  const guiTin = (tin) => !!phien?.guiTin(tin);
  const guiTep = taoGuiTep({ khiDoi: () => bangTep.veSau(), hen: HEN });
  const bangTep = taoBangTep({ chu, ngonNgu, guiTep, baoTin, hen: HEN, khiMo: () => thanh.moBang('k-tep') });
  const xem = taoXem({
    guiLenh: (lenh) => phien?.guiLenh(lenh),
    cham: () => phien?.lenhCham() ?? true,
    guiCao: (cao) => guiTin({ l: 'cao', cao }),
    khiThoat: () => ($('k-thanh').hidden ? $('k-mo-thanh') : $('k-vua')).focus(),
    khiDan: (van) => bangTam.dan(van),
    duocDan: () => bangTam.bat,
    daoCmd: () => thanh.daoCmd(),
    hen: HEN,
  });
  const bangTam = taoBangTam({ chu, baoTin, guiTin, goChu: (van) => xem.banPhim.goChu(van), hen: HEN });
  const thanh = taoThanh({
    chu, kho, xem, mac, hen: HEN,
    khiChonMan: (chiSo) => guiTin({ l: 'chon', chiSo }),
    khiNet: xem.datNet,
    khiHet: () => (phien ? phien.dong() : thoi()),
    khiSucKhoe: (hien) => (hien ? doSucKhoe() : HEN.huy(henSucKhoe)),
  });
  const vao = taoVao({ chu, kho, canDiaChi, khiGoi: batDau });

  // ---- What stands over the picture
  function hienPhu(khoa, thamSo, { doi = false, nut = false, them = () => '' } = {}) {
    veLaiChu = () => {
      $('k-phu-chu').textContent = chu(khoa, thamSo);
      $('k-phu-them').textContent = them();
    };
    veLaiChu();
    $('k-phu').hidden = false;
    $('k-phu').dataset.doi = doi ? 'co' : 'khong';
    $('k-ngay').hidden = !nut;
  }

  function anPhu() {
    veLaiChu = () => {};
    $('k-phu').hidden = true;
  }

  function veNgo() {
    const loi = may?.loi ? chu('xem.loiHinh', { loi: chu(String(may.loi)) }) : '';
    const khong = may && may.choDieuKhien && !may.troNang ? chu('xem.khongTroNang') : '';
    const nhac = daNhac === 'dang' ? chu('phim.thoat', { phim: chuThoat(mac) }) : '';
    const van = loi || khong || nhac;
    $('k-ngo').hidden = !van;
    if ($('k-ngo').textContent !== van) $('k-ngo').textContent = van;
  }

  function veMay() {
    const dieuKhien = !!may?.choDieuKhien;
    const duoc = dieuKhien && !!may?.troNang;
    xem.datDuocGui(duoc);
    $('k-chi-xem').hidden = !may || duoc;
    for (const id of ['k-mo-phim', 'k-ban-phim']) $(id).disabled = !duoc;
    bangTam.datTinh(!!may?.bang, duoc);
    bangTep.datTinh(may?.tep);
    thanh.veManHinh(may);
    veNgo();
  }

  function nhacThoat() {
    if (daNhac || coCham() || !may?.choDieuKhien || !may.troNang) return;
    daNhac = 'dang';
    veNgo();
    henLoiNhac = HEN.dat(() => {
      daNhac = 'roi';
      veNgo();
    }, CHO_LOI_NHAC);
  }

  // ---- A call
  function moKenh() {
    kenhHen = taoKenhHen({ io: goi.diaChi || laThay(io) ? window.TvThuVien?.io ?? io : io, diaChi: goi.diaChi, hen: HEN });
    kenhHen.nghe('phien:tin', (du) => phien?.nhanTin(du));
    kenhHen.nghe('phien:dong', (du) => phien?.nhanDong(du));
  }

  function batDau(moi) {
    if (goi) return;
    goi = { ...moi, daMo: false, lan: 0 };
    $('k-ten-may').textContent = chiaMa(goi.ma);
    $('k-phien').hidden = false;
    $('k-thanh').hidden = true;
    $('k-mo-thanh').hidden = true;
    window.addEventListener('pagehide', khiDi);
    window.addEventListener('resize', xem.doKhung);
    window.addEventListener('blur', xem.nhaHet);
    phuTrang(true);
    $('k-thoi').focus();
    moKenh();
    goiMay();
  }

  // A session covers the page: what lies under it is not for the keyboard either.
  function phuTrang(phu) {
    document.documentElement.classList.toggle('k-dang', phu);
    $('k-vao').hidden = phu;
    document.querySelector('.dau').inert = phu;
  }

  function goiMay() {
    HEN.huy(henGoi);
    const { ma, matKhau, ten } = goi;
    hienPhu('goi.dangGoi', {}, { doi: true });
    const cua = taoPhienKhach({
      kenhHen, maHoa: window.TvMaHoa, taoNoi, hen: HEN, luc, ma, matKhau, ten,
      khi: {
        tinh: (tinh) => { if (cua === phien) khiTinh(tinh); },
        het: (het) => { if (cua === phien) khiHet(het); },
        luong: (luong) => { if (cua === phien) xem.datLuong(luong); },
        chao: (tin) => { if (cua === phien) khiChao(tin); },
        kenhTep: (kenh) => { if (cua === phien) guiTep.datKenh(kenh); },
        bang: (van) => { if (cua === phien) bangTam.nhan(van); },
        dap: (s) => nhip?.dap(s),
        nghiNgo: () => { nghiNgo = true; },
      },
    });
    phien = cua;
  }

  // One certificate for all that a call tries: a host whose person has said yes knows it again by its fingerprint.
  async function taoNoi(cauHinh) {
    if (!window.RTCPeerConnection) throw new Error('RTCPeerConnection');
    const cua = goi;
    try {
      cua.chungThu ??= await RTCPeerConnection.generateCertificate({ name: 'ECDSA', namedCurve: 'P-256' });
    } catch { /* each connection then makes its own */ }
    return new RTCPeerConnection(cua.chungThu ? { ...cauHinh, certificates: [cua.chungThu] } : cauHinh);
  }

  function khiTinh(tinh) {
    if (tinh === 'mo') return khiMo();
    if (CHU_TINH[tinh]) hienPhu(CHU_TINH[tinh], {}, { doi: true });
  }

  function khiMo() {
    anPhu();
    if (dangSong) return; // back after a moment's weakness
    dangSong = true;
    const lanDau = !goi.daMo;
    Object.assign(goi, { daMo: true, lan: 0 });
    if (lanDau) {
      vao.nho(goi.ma);
      vao.xoaMatKhau();
      thanh.batDau();
      document.title = `${chiaMa(goi.ma)} – Tovira`;
    }
    xem.datNet(thanh.net());
    xem.batDau();
    nhip = taoNhip({ gui: guiTin, luc });
    batNhip();
    giuSang();
    doSucKhoe();
    if (!coCham()) xem.batPhim();
  }

  function batNhip() {
    HEN.huy(henNhip);
    if (nghiNgo && nhip.im > IM_NGHI_NGO) return phien.matMay();
    nhip.danh();
    henNhip = HEN.dat(batNhip, NHIP);
  }

  function khiChao(tin) {
    may = tin;
    veMay();
    if (xem.coPhim) nhacThoat();
  }

  function dungMay() {
    for (const id of [henNhip, henSucKhoe, henLoiNhac]) HEN.huy(id);
    if (daNhac) daNhac = 'roi';
    sucKhoe = phien = may = null;
    dangSong = nghiNgo = false;
    xem.dung();
    veMay();
    thanh.dongBang();
    guiTep.datKenh(null);
    khoaManHinh?.release?.().catch(() => {});
    khoaManHinh = null;
  }

  function khiHet(het) {
    dungMay();
    const ms = sauKhiHet(het, goi.daMo, goi.lan);
    if (ms === null) return ketThuc(het);
    goi.lan += 1;
    choGoiLai(het, luc() + ms);
  }

  // Says why, counts down, calls again.
  function choGoiLai(het, den) {
    hienPhu(...chuHet(het), { nut: true, them: () => chu('goi.thuLaiSau', { n: Math.ceil((den - luc()) / 1000) }) });
    const dem = () => {
      if (luc() >= den) return goiMay();
      veLaiChu();
      henGoi = HEN.dat(dem, 1000);
    };
    henGoi = HEN.dat(dem, Math.min(1000, den - luc()));
  }

  // Back to the form, with the reason; a clear notice where there was a session.
  function ketThuc(het) {
    const { daMo, ma } = goi;
    HEN.huy(henGoi);
    thanh.dung();
    bangTep.thoiHoi();
    guiTep.hongHet();
    bangTam.xoa();
    xem.datLuong(null);
    kenhHen.dong();
    kenhHen = goi = null;
    $('k-phien').hidden = true;
    phuTrang(false);
    document.title = 'Tovira';
    window.removeEventListener('pagehide', khiDi);
    window.removeEventListener('resize', xem.doKhung);
    window.removeEventListener('blur', xem.nhaHet);
    const van = chu(...chuHet(het));
    if (daMo) baoTin(het.ly === 'toi' ? 'xong' : 'hong', chu('goi.daHet', { ma: chiaMa(ma), ly: van, lau: docGiay(het.lau ?? 0) }));
    else vao.baoLoi(het.ly === 'toi' ? '' : van);
    vao.veLai(het.ly !== 'khong-co-may');
  }

  // The person gives up: a call under way ends by itself, one that waits has nobody to tell.
  function thoi() {
    if (phien) phien.dong();
    else if (goi) ketThuc({ ly: 'toi' });
  }

  const khiDi = () => phien?.dong('dong-trang');

  // ---- Small things of a live session
  async function doSucKhoe() {
    if (!phien || $('k-sk').hidden) return;
    try {
      sucKhoe = docSucKhoe(await phien.thongKe(), sucKhoe);
      veSucKhoe();
    } catch { /* closed meanwhile */ }
    HEN.huy(henSucKhoe);
    henSucKhoe = HEN.dat(doSucKhoe, DO_SUC_KHOE);
  }

  function veSucKhoe() {
    const s = sucKhoe;
    if (!s || !nhip) return;
    const so = (v, le = 0) => (v === null ? '–' : v.toFixed(le));
    const duong = { thang: 'sk.thang', nat: 'sk.nat', chuyen: 'sk.chuyen' }[s.duong];
    const muc = [
      [chu('sk.tre'), `${so(nhip.ms)} ms`], [chu('sk.mang'), `${so(s.rtt)} ms`], [chu('sk.dem'), `${so(s.dem)} ms`],
      [chu('sk.khung'), so(s.khungMoiGiay, 1)], [chu('sk.hinh'), s.rong ? `${s.rong} × ${s.cao}` : '–'],
      [chu('sk.maHoa'), s.maHoa || '–'], [chu('sk.bang'), s.bitMoiGiay === null ? '–' : `${(s.bitMoiGiay / 1e6).toFixed(2)} Mbit/s`],
      [chu('sk.duong'), duong ? chu(duong) : '–'],
    ];
    $('k-sk').replaceChildren(...muc.flatMap(([ten, gia]) => [taoThe('dt', '', ten), taoThe('dd', '', gia)]));
  }

  async function giuSang() {
    try {
      khoaManHinh = await navigator.wakeLock?.request('screen');
    } catch { /* a wish */ }
  }

  khi('k-ngay', () => { if (goi && !phien) goiMay(); });
  khi('k-thoi', thoi);
  khi('k-go', nhacThoat, 'focus');

  return {
    get dangDung() { return !!phien; }, // a call is under way: the page must not be left
    veChu() {
      vao.ve();
      thanh.veChu();
      bangTam.ve();
      bangTep.ve();
      veMay();
      veLaiChu();
    },
    khiHien(hien) {
      if (hien) vao.ve();
    },
  };
}
