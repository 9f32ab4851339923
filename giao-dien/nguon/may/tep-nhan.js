import { $, khi, taoNut, taoThe } from '../chung/trang.js';
import { dichLoi } from './loi-may.js';

const TOI_DA = 100; // received files kept in the list

// What has been received, and the folder that files may be written into directly.
export function taoTepNhan({ tv, van, ve, baoTin, mayChu }) {
  let thuMuc = null; // { goc, cong, biMat } of the open receiving folder
  let cho = false;
  let tep = []; // { thuMuc, ten }, newest first
  let soTep = 0;
  let veLai = true;

  function taoNutHien(t) {
    const nut = taoNut(van.chu('nhan.hien'), () => tv?.hienTrongFinder(t.thuMuc, t.ten));
    nut.setAttribute('aria-label', van.chu('nhan.hienTep', { ten: t.ten }));
    return nut;
  }

  function veTep() {
    veLai = false;
    $('tep-nhan').replaceChildren(...tep.map((t) => {
      const li = taoThe('li', 'muc');
      const doan = taoThe('div');
      doan.append(taoThe('h3', 'duong', t.ten), taoThe('p', 'phu duong', t.thuMuc));
      li.append(doan, taoNutHien(t));
      return li;
    }));
  }

  khi('mo-nhan', async () => {
    cho = true;
    ve.lai();
    const { goc, cong, biMat, loi } = await tv.moThuMucNhan();
    cho = false;
    if (goc) thuMuc = { goc, cong, biMat };
    else if (loi && loi !== 'huy') baoTin('hong', dichLoi(van.chu, loi));
    ve.lai();
  });
  khi('dong-nhan', () => {
    tv?.dongThuMucNhan();
    thuMuc = null;
    ve.lai();
  });
  khi('hien-nhan', () => tv.hienTrongFinder(thuMuc.goc, ''));

  ve.them(() => {
    $('mo-nhan').disabled = !tv || mayChu.goiKem !== false || cho;
    $('mo-nhan').hidden = !!thuMuc;
    $('hien-nhan').hidden = $('dong-nhan').hidden = !thuMuc;
    if (thuMuc) $('thu-muc-nhan').textContent = thuMuc.goc;
    else van.dat('thu-muc-nhan', tv && mayChu.goiKem ? 'nhan.khongDuoc' : 'nhan.chuaMo');
    van.dat('so-tep', tep.length ? 'nhan.soTep' : 'nhan.chuaCo', { n: soTep });
    if (veLai) veTep();
  });

  return {
    get thuMuc() { return thuMuc; },
    // A file that the host says is written. coChuXong: when texts are there to announce it.
    them(thuMucCua, ten, coChuXong) {
      const t = { thuMuc: thuMucCua, ten };
      soTep += 1;
      tep = [t, ...tep].slice(0, TOI_DA);
      veLai = true;
      ve.lai();
      coChuXong.then(() => baoTin('xong', van.chu('tin.daTai', { ten }), taoNutHien(t)));
    },
    veChu: () => { veLai = true; },
  };
}
