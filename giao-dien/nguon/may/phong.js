import { taoKenhTin } from './kenh-tin.js';
import { taoNhanTep } from './nhan-tep.js';
import { taoPhienMay } from './phien-may.js';
import { taoPhimGiu } from './phim-giu.js';

const TOI_DA = 4; // controllers at once
const CHO_TOI_DA = 16; // callers that are still proving themselves
const NHUONG = 5000; // ms until one of those gives its place to a newcomer; an honest one needs about two seconds
const GIU_IM = 4000; // ms without a word (beats come every two seconds) until what a controller holds down is let go
const NHO_DONG_Y = 600000; // ms that a yes holds for the same certificate: a page that finds no path calls again
export const CHAN_LAU = 600000; // ms that the lasting password stays shut after somebody was sent away: longer than a page calls again
const HET_HAN = 3000; // ms without a share before the sessions take it for stopped; a change of display has such a gap
const CAO_DAU = 1080; // lines, for a controller that has not said what it can use

// All controllers of this machine: who is let in, what they may do, and the share that lives as long as one of them.
//
// tuyChon gives doc(name) -> whether it is switched on: choDieuKhien, hoiTruoc, bang, nhanTep. luong is the picture. khi: doi(),
// vao(session), ra(session, reason, state before), bang(text, session).
export function taoPhong({ tv, chia, luong, tuyChon, canh, luuTep, moi, kenh, traLoi, hoiNguoi, caoToiDa, soMan, loiHinh, khi }) {
  const cac = new Map(); // session id -> { phien, tin, tep }
  const phim = taoPhimGiu((json) => tv.guiLenh(json));
  let tuChia = false; // this share began with a controller
  let caoDaXin = 0;
  let henHet = 0;
  let coChia = false; // the share has been seen running since it began
  const dongY = new Map(); // fingerprint -> the timer that forgets this person's yes
  let chanLau = 0; // the timer that opens the lasting password again

  const daVao = () => [...cac.values()].filter(({ phien }) => phien.tinh === 'noi');
  const duocDieuKhien = () => tuyChon.doc('choDieuKhien');
  const duocLenh = () => duocDieuKhien() && chia.tinh() === 'chia'; // no input that no red button stands for

  // ---- The share ----
  const caoCan = () => Math.min(caoToiDa(), Math.max(...daVao().map(({ tin }) => tin.cao || CAO_DAU)));

  function xinCao() {
    if (daVao().length === 0) return;
    const cao = caoCan();
    if (cao === caoDaXin) return;
    caoDaXin = cao;
    tv.datCaoManHinh(cao);
  }

  function moChia() {
    if (chia.tinh() === 'nghi') {
      tuChia = true;
      coChia = false;
      caoDaXin = caoCan();
      chia.batDau(soMan(), caoDaXin);
    } else xinCao();
    luong.nguoiMoi();
  }

  function thoiChia() {
    moi.hen.huy(henHet);
    henHet = 0;
    if (tuChia && chia.tinh() !== 'nghi') chia.dung();
    tuChia = false;
    caoDaXin = 0;
  }

  // The host can end a share by itself or be told to elsewhere; then nobody is let look on.
  function theoChia() {
    const tinh = chia.tinh();
    if (daVao().length === 0) {
      luong.mo('');
      return;
    }
    luong.mo(tinh === 'chia' ? tv.manHinh.duongDan : '');
    if (tinh === 'chia') coChia = true;
    if (tinh !== 'nghi' || tv.manHinh.loi || !coChia) {
      moi.hen.huy(henHet);
      henHet = 0;
    } else if (!henHet) {
      henHet = moi.hen.dat(() => {
        henHet = 0;
        if (chia.tinh() !== 'nghi' || tv.manHinh.loi) return;
        khoaLai();
        ketHet('dung');
      }, HET_HAN);
    }
  }

  // ---- What the controllers are told ----
  const trangThai = () => ({
    manHinh: chia.danhSach().map(({ chiSo, ten, rong, cao, chinh }) => ({ chiSo, ten, rong, cao, chinh: !!chinh })),
    dangXem: chia.so ?? soMan(),
    choDieuKhien: duocDieuKhien(),
    troNang: tv.troNangDaBat(),
    bang: tuyChon.doc('bang'),
    tep: { duoc: luuTep.duoc() === '', ly: luuTep.duoc(), noi: luuTep.thuMuc() ? 'thu-muc' : 'tai' },
    loi: loiHinh(),
  });

  // ---- Who may come ----
  // Room for one more caller: silent ones do not keep the others out.
  function choDuoc() {
    const dangThu = [...cac.values()].filter(({ phien }) => phien.tinh === 'bat-tay');
    if (dangThu.length < CHO_TOI_DA) return true;
    const cu = dangThu.find(({ lau }) => lau);
    cu?.phien.ket('ban');
    return !!cu;
  }

  // Why a caller who has proven a password is turned away all the same, or ''.
  function chan(so, cach) {
    if (cach === 1 && chanLau) return 'tu-choi';
    const khac = [...cac].filter(([s, { phien }]) => s !== so && phien.tinh !== 'bat-tay');
    return khac.length >= TOI_DA ? 'ban' : '';
  }

  function nhoDongY(vanTay) {
    moi.hen.huy(dongY.get(vanTay));
    dongY.set(vanTay, moi.hen.dat(() => dongY.delete(vanTay), NHO_DONG_Y));
  }

  function quenDongY() {
    for (const so of dongY.values()) moi.hen.huy(so);
    dongY.clear();
  }

  function khoaLai() {
    quenDongY();
    canh.khoaNgay();
  }

  function dongLau() {
    moi.hen.huy(chanLau);
    chanLau = moi.hen.dat(() => { chanLau = 0; }, CHAN_LAU);
  }

  // ---- One session ----
  function them(so) {
    if (cac.has(so)) return;
    if (!choDuoc()) {
      kenh.goi('phien:tin', { phien: so, tin: JSON.stringify({ b: 'khoa', giay: NHUONG / 1000 }) });
      return kenh.goi('phien:dong', { phien: so });
    }
    const phien = taoPhienMay({
      phien: so, ma: traLoi().ma, stun: traLoi().stun, canh, track: luong.layTrack(), moi,
      gui: (tin) => kenh.goi('phien:tin', { phien: so, tin }).then((dap) => { if (!dap.ok) khiGuiHong(so); }),
      dong: () => kenh.goi('phien:dong', { phien: so }),
      hoi: { chan: (cach) => chan(so, cach), can: (vanTay) => tuyChon.doc('hoiTruoc') && !dongY.has(vanTay), nguoi: hoiNguoi, dongY: nhoDongY },
      khi: {
        doi: () => khiDoi(so),
        mo: (ten) => { if (ten === 'tin') cac.get(so)?.tin.khiMo(); },
        nghe: (ten, du) => nghe(so, ten, du),
        yeu: () => phim.nha(so),
        het: (ly, truoc) => khiHet(so, ly, truoc),
      },
    });
    const tin = taoKenhTin({
      gui: (chu) => phien.gui('tin', chu),
      trangThai,
      khi: {
        chon: (chiSo) => { if (duocDieuKhien() && chiSo !== chia.so && chia.danhSach().some((m) => m.chiSo === chiSo)) chia.batDau(chiSo, caoCan()); },
        cao: xinCao,
        bang: (chu) => { if (tuyChon.doc('bang')) khi.bang(chu, phien); },
        het: () => phien.ket('ben-kia'),
      },
    });
    const tep = taoNhanTep({ gui: (chu) => phien.gui('tep', chu), luu: luuTep, hen: moi.hen, khiDoi: khi.doi });
    const muc = { phien, tin, tep, daVao: false, lau: false, henIm: 0 };
    muc.henLau = moi.hen.dat(() => { muc.lau = true; }, NHUONG);
    cac.set(so, muc);
    khi.doi();
  }

  // A letter that the server did not take ends a session that still needs it.
  function khiGuiHong(so) {
    const muc = cac.get(so);
    if (muc && muc.phien.tinh !== 'noi') muc.phien.ket('mat');
  }

  function khiDoi(so) {
    const muc = cac.get(so);
    if (muc && !muc.daVao && muc.phien.tinh === 'noi') {
      muc.daVao = true;
      moChia();
      khi.vao(muc.phien);
    }
    khi.doi();
  }

  function nghe(so, ten, du) {
    const muc = cac.get(so);
    if (!muc) return;
    if (ten === 'tin') muc.tin.nhan(du);
    else if (ten === 'tep') muc.tep.nhan(du);
    else if (muc.daVao && duocLenh()) phim.nhan(so, du);
    moi.hen.huy(muc.henIm);
    muc.henIm = phim.dangGiu(so) ? moi.hen.dat(() => phim.nha(so), GIU_IM) : 0;
  }

  function khiHet(so, ly, truoc) {
    const muc = cac.get(so);
    if (!muc) return;
    cac.delete(so);
    phim.nha(so);
    moi.hen.huy(muc.henLau);
    moi.hen.huy(muc.henIm);
    muc.tep.dong();
    if (daVao().length === 0) thoiChia();
    else xinCao();
    khi.ra(muc.phien, ly, truoc);
    khi.doi();
  }

  function ketHet(ly) {
    for (const { phien } of [...cac.values()]) phien.ket(ly);
  }

  // This person's stop: everybody goes, and no page calls itself back in.
  function dung() {
    khoaLai();
    if (canh.coLau) dongLau();
    ketHet('dung');
  }

  // The same for one of them.
  function duoi(so) {
    const muc = cac.get(so);
    if (!muc) return;
    quenDongY();
    canh.doiMatKhau();
    if (muc.phien.cach === 1) dongLau();
    muc.phien.ket('nguoi');
  }

  return {
    them, ketHet, dung, duoi,
    nhan: (so, chu) => cac.get(so)?.phien.nhan(chu),
    mayChuDong: (so, ly) => cac.get(so)?.phien.khiMayChuDong(ly),
    get cac() { return [...cac.values()]; },
    get soNguoi() { return daVao().length; },
    guiBang: (chu) => daVao().forEach(({ tin }) => tin.guiBang(chu)),
    huyTep: () => cac.forEach(({ tep }) => tep.huy()),
    // The server is gone, and with it the calls that still need it.
    matMayChu() {
      for (const { phien } of [...cac.values()]) if (phien.tinh !== 'noi') phien.ket('mat');
    },
    // After anything has changed: the host's state, a switch, a display list.
    theo() {
      theoChia();
      xinCao();
      if (!duocLenh()) phim.nhaHet();
      for (const { tin, tep } of cac.values()) {
        tin.bao();
        tep.theo();
      }
    },
  };
}
