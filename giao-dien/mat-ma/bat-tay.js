// The two sides of the handshake, one password-authenticated exchange for each password that the host accepts.
// The controller shows its tags first; the host says nothing that depends on a password before one of them is right.
import { layVoHuong, nhanDiem, nhanKiem, noiLv, taoPhanTuSinh, tinhIsk, tinhThe } from './cpace.js';
import { taoKhung } from './khung.js';
import { CACH_DOC, layTrongCanh, tinhPrs } from './mat-khau.js';
import { boKhoangTrang, ngauNhien, noiBytes, sangUtf8, soBang, xoaBytes } from './tien-ich.js';
import { DAI_NGAU } from './thu.js';

const lienKet = (vai, vanTay) => noiLv(sangUtf8(vai), sangUtf8(vanTay));

// What both must see alike before any share: who speaks to whom, which of the salts this is, and all of them, so that a
// server can neither leave one out nor change their order.
const taoKenh = (ma, phien, i, cacMuoi) =>
  noiLv(sangUtf8('tovira-1'), sangUtf8(boKhoangTrang(ma)), sangUtf8(String(phien)), Uint8Array.of(i), ...cacMuoi);

// One share for each password: { y, chung } where y is to be sent.
function taoPhan({ ma, phien, cacMuoi, cacPrs, sid }) {
  return cacPrs.map((prs, i) => {
    const x = layVoHuong();
    return { x, y: nhanDiem(x, taoPhanTuSinh(prs, taoKenh(ma, phien, i, cacMuoi), sid)) };
  });
}

// The session keys with both sides' tags, or null where a share of the other side is not acceptable.
function tinhKhoa({ sid, phan, cuaKia, adTa, adKia, taTruoc }) {
  const ra = [];
  for (let i = 0; i < phan.length; i++) {
    const k = nhanKiem(phan[i].x, cuaKia[i]);
    if (k === null) return null;
    const [a, b] = [[phan[i].y, adTa], [cuaKia[i], adKia]];
    const isk = tinhIsk(sid, k, ...(taTruoc ? [...a, ...b] : [...b, ...a]));
    xoaBytes(k);
    ra.push({ isk, theTa: tinhThe(sid, isk, ...a), theKia: tinhThe(sid, isk, ...b) });
  }
  return ra;
}

// The controller. batDau() sends the first letter. matKhau as it was typed. bamCham(text, salt) gives the promise of its 32
// bytes: the same function run elsewhere, should this page have a better place for it.
export function taoBatTayKhach({
  ma, phien, matKhau, vanTay, gui, khi, dongHo = () => globalThis.performance.now(), bamCham = tinhPrs,
}) {
  const khung = taoKhung({ vai: 'khach', vanTay, gui, khi, dongHo, khiHet: () => { matKhau = null; } });
  const n = ngauNhien(DAI_NGAU);
  let sid, phan;
  let daGuiThe = false;
  const khoa = ['khoa', ({ giay }) => khung.ket('khoa', giay)];

  async function nhanMuoi({ n: nMay, muoi: cacMuoi }) {
    if (soBang(n, nMay)) return khung.ket('hong', 'doi-lai');
    sid = noiBytes(n, nMay);
    const cacPrs = [];
    for (let i = 0; i < cacMuoi.length; i++) {
      cacPrs.push(await bamCham(CACH_DOC[i](matKhau), cacMuoi[i]));
      khung.giu(cacPrs[i]);
      if (khung.daHet()) return xoaBytes(...cacPrs);
    }
    matKhau = null;
    phan = taoPhan({ ma, phien, cacMuoi, cacPrs, sid });
    khung.giu(...phan.map((p) => p.x));
    xoaBytes(...cacPrs);
    khung.doi([4, nhanPhan], khoa);
    khung.guiThu({ b: 3, y: phan.map((p) => p.y), vt: vanTay });
  }
  function nhanPhan({ y, vt }) {
    if (y.length !== phan.length) return khung.ket('hong', 'dang');
    if (y.some((cua, i) => soBang(cua, phan[i].y))) return khung.ket('hong', 'doi-lai');
    const cac = tinhKhoa({
      sid, phan, cuaKia: y, adTa: lienKet('khach', vanTay), adKia: lienKet('may', vt), taTruoc: true,
    });
    if (cac === null) return khung.ket('hong', 'phan-tu');
    khung.giu(...cac.map((c) => c.isk));
    khung.doi([6, ({ i, t }) => {
      if (i >= cac.length || !soBang(t, cac[i].theKia)) return khung.ket('hong', 'the');
      khung.thanhCong(cac[i].isk, i, vt);
    }], ['sai', ({ con }) => khung.ket('sai', con)], khoa);
    daGuiThe = true;
    khung.guiThu({ b: 5, t: cac.map((c) => c.theTa) });
  }

  return Object.freeze(Object.assign(khung.mat, {
    batDau() {
      khung.doi([2, nhanMuoi], khoa);
      khung.guiThu({ b: 1, n });
    },
    // Whether our tags have left: from then on whoever plays the host can try its guess, one for each salt.
    daGuiThe: () => daGuiThe,
  }));
}

// The host. canh from taoCanhMatKhau.
export function taoBatTayMay({ ma, phien, canh, vanTay, gui, khi }) {
  const trong = layTrongCanh(canh);
  const the = {};
  const khung = taoKhung({ vai: 'may', vanTay, gui, khi, dongHo: trong.dongHo, khiHet: () => trong.ra(the) });

  function tuChoi() {
    const giay = trong.khoaCon();
    if (giay === 0) return khung.ket('hong', 'doi-mat-khau');
    khung.guiThu({ b: 'khoa', giay });
    khung.ket('khoa', giay);
  }
  async function nhanChao({ n: nKhach }) {
    if (trong.khoaCon() > 0) return tuChoi();
    trong.vao(the, tuChoi);
    const cac = await trong.lay();
    if (khung.daHet()) return;
    const n = ngauNhien(DAI_NGAU);
    const cacMuoi = cac.map((c) => c.muoi);
    khung.doi([3, (thu) => nhanPhan(thu, { cacMuoi, cacPrs: cac.map((c) => c.prs), sid: noiBytes(nKhach, n) })]);
    khung.guiThu({ b: 2, n, muoi: cacMuoi });
  }
  function nhanPhan({ y, vt }, { cacMuoi, cacPrs, sid }) {
    if (y.length !== cacPrs.length) return khung.ket('hong', 'dang');
    const phan = taoPhan({ ma, phien, cacMuoi, cacPrs, sid });
    khung.giu(...phan.map((p) => p.x));
    const cac = tinhKhoa({
      sid, phan, cuaKia: y, adTa: lienKet('may', vanTay), adKia: lienKet('khach', vt), taTruoc: false,
    });
    if (cac === null) return khung.ket('hong', 'phan-tu');
    khung.giu(...cac.map((c) => c.isk));
    khung.doi([5, (thu) => nhanThe(thu, cac, vt)]);
    khung.guiThu({ b: 4, y: phan.map((p) => p.y), vt: vanTay });
  }
  // Every tag is looked at, and the first password that is right counts: a server that slips a guess of its own in beside
  // a right tag learns nothing of it.
  function nhanThe({ t }, cac, vt) {
    if (t.length !== cac.length) return khung.ket('hong', 'dang');
    let dung = -1;
    for (let i = cac.length - 1; i >= 0; i--) if (soBang(t[i], cac[i].theKia)) dung = i;
    trong.ra(the);
    if (dung < 0) {
      const con = trong.demSai();
      khung.guiThu({ b: 'sai', con });
      return khung.ket('sai', con);
    }
    khung.guiThu({ b: 6, i: dung, t: cac[dung].theTa });
    khung.thanhCong(cac[dung].isk, dung, vt);
  }

  khung.doi([1, nhanChao]);
  return Object.freeze(khung.mat);
}
