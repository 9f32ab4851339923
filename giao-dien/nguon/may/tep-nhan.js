import { motDong } from '../chung/mot-dong.js';
import { $, khi, taoNut, taoThe } from '../chung/trang.js';
import { dichLoi } from './loi-may.js';

const TOI_DA = 100; // received files kept in the list

// What has been received, and the folder that files may be written into directly.
export function taoTepNhan({ tv, van, kho, ve, baoTin, mayChu }) {
  let thuMuc = null; // { goc, cong, biMat } of the open receiving folder
  let cho = false;
  let khongGui = false; // this page's origin cannot post to the folder
  let tep = []; // { thuMuc, ten }, newest first
  let soTep = 0;
  let veLai = true;

  function taoNutHien(t) {
    const nut = taoNut(van.chu('nhan.hien'), () => tv?.hienTrongFinder(t.thuMuc, t.ten));
    nut.setAttribute('aria-label', van.chu('nhan.hienTep', { ten: motDong(t.ten) }));
    return nut;
  }

  function veTep() {
    veLai = false;
    $('tep-nhan').replaceChildren(...tep.map((t) => {
      const li = taoThe('li', 'muc');
      const doan = taoThe('div');
      doan.append(taoThe('h3', 'duong', motDong(t.ten)), taoThe('p', 'phu duong', motDong(t.thuMuc)));
      li.append(doan, taoNutHien(t));
      return li;
    }));
  }

  // Whether this page's origin may post there: an answer of any kind to a request that stores nothing says so.
  async function guiDuoc(cong) {
    try {
      await fetch(`http://127.0.0.1:${cong}/ghi?k=`, { method: 'POST', headers: { 'X-Duong': 'eA==' }, body: '' });
      return true;
    } catch {
      return false;
    }
  }

  // hoi(): the host's promise of an opened folder.
  async function mo(hoi) {
    cho = true;
    ve.lai();
    const { goc, cong, biMat, loi } = await hoi();
    if (goc && await guiDuoc(cong)) {
      thuMuc = { goc, cong, biMat };
      kho.ghi('thuMucNhan', goc);
    } else if (goc) {
      khongGui = true;
      tv.dongThuMucNhan();
    } else if (loi && loi !== 'huy') {
      kho.xoa('thuMucNhan');
      baoTin('hong', dichLoi(van.chu, loi));
    }
    cho = false;
    ve.lai();
  }

  khi('mo-nhan', () => mo(() => tv.moThuMucNhan()));
  khi('dong-nhan', () => {
    tv?.dongThuMucNhan();
    kho.xoa('thuMucNhan');
    thuMuc = null;
    ve.lai();
  });
  khi('hien-nhan', () => tv.hienTrongFinder(thuMuc.goc, ''));

  ve.them(() => {
    $('mo-nhan').disabled = !tv || mayChu.goiKem !== false || cho || khongGui;
    $('mo-nhan').hidden = !!thuMuc;
    $('hien-nhan').hidden = $('dong-nhan').hidden = !thuMuc;
    if (thuMuc) $('thu-muc-nhan').textContent = thuMuc.goc;
    else van.dat('thu-muc-nhan', tv && mayChu.goiKem ? 'nhan.khongDuoc' : khongGui ? 'nhan.khongGui' : 'nhan.chuaMo');
    van.dat('so-tep', tep.length ? 'nhan.soTep' : 'nhan.chuaCo', { n: soTep });
    if (veLai) veTep();
  });

  return {
    get thuMuc() { return thuMuc; },
    // The folder of last time is opened again without a question.
    moLai() {
      const duong = kho.doc('thuMucNhan');
      if (tv && duong && mayChu.goiKem === false) mo(() => tv.moThuMucTai(duong));
    },
    // A file that the host says is written. coChuXong: when texts are there to announce it.
    them(thuMucCua, ten, coChuXong = Promise.resolve()) {
      const t = { thuMuc: thuMucCua, ten };
      soTep += 1;
      tep = [t, ...tep].slice(0, TOI_DA);
      veLai = true;
      ve.lai();
      coChuXong.then(() => baoTin('xong', van.chu('tin.daTai', { ten: motDong(ten) }), taoNutHien(t)));
    },
    veChu: () => { veLai = true; },
  };
}
