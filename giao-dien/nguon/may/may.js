import { $, khi } from '../chung/trang.js';
import { taoChia } from './chia.js';
import { taoManHinh } from './man-hinh.js';
import { taoMayChu } from './may-chu.js';
import { taoQuyen } from './quyen.js';
import { taoTepNhan } from './tep-nhan.js';
import { taoThietLap } from './thiet-lap.js';

// The host's role: what the person at this machine sees, and the hooks that the host calls. Without a host (tv null)
// everything is there but switched off.
export function taoMay({ tv, van, kho, ve, baoTin }) {
  const chia = taoChia(tv, ve.lai);
  const manHinh = taoManHinh({ tv, van, kho, ve, chia });
  taoQuyen({ tv, van, ve, chia });
  const thietLap = taoThietLap({ tv, van, ve, baoTin });
  const mayChu = taoMayChu({ tv, ve, chia });
  const tepNhan = taoTepNhan({ tv, van, ve, baoTin, mayChu });

  khi('bc-stop', chia.dung);
  ve.them(() => { if (tv) van.dat('phien-ban', 'trang.phienBan', { ban: tv.phienBan }); });

  return {
    // coChuXong: when the page's texts are there.
    batDau(coChuXong) {
      window.__tvTrangThai = ve.lai;
      window.__tvAndroidDoi = ve.lai;
      window.__tvMatKetNoi = (mat) => mayChu.khiMat(!!mat);
      window.__tvMayChuSongLai = mayChu.khiSongLai;
      window.__tvDaTai = (thuMuc, ten) => {
        thietLap.datThuMucLuu(String(thuMuc)); // downloads go where the host was told to save
        tepNhan.them(String(thuMuc), String(ten), coChuXong);
      };
      window.__tvTaiHong = (loi) => coChuXong.then(() => baoTin('hong', van.chu('tin.taiHong', { loi: String(loi) })));
      manHinh.batDauDo();
      mayChu.xem();
    },
    veChu() {
      manHinh.veChu();
      tepNhan.veChu();
    },
    khiHien: (hien) => { $('phan-may').hidden = !hien; },
  };
}
