import { moHopThoai } from '../chung/hop-thoai.js';
import { taoKenhHen } from '../chung/kenh-hen.js';
import { $, khi } from '../chung/trang.js';
import { taoBang } from './bang.js';
import { taoChia } from './chia.js';
import { taoDsNguoi } from './ds-nguoi.js';
import { taoLichSu } from './lich-su.js';
import { LOI_CUA_MAY } from './loi-may.js';
import { taoLuongHinh } from './luong-hinh.js';
import { taoLuuTep } from './luu-tep.js';
import { taoManHinh } from './man-hinh.js';
import { docLau, taoMatKhauLau } from './mat-khau-lau.js';
import { taoMayChu } from './may-chu.js';
import { CHAN_LAU, taoPhong } from './phong.js';
import { taoQuyen } from './quyen.js';
import { taoTepNhan } from './tep-nhan.js';
import { taoThietLap } from './thiet-lap.js';
import { taoTraLoi } from './tra-loi.js';
import { taoTruyCap } from './truy-cap.js';
import { taoTuyChon } from './tuy-chon.js';

const HOI_GIAY = 30; // seconds to answer before a caller is refused

// The host's role: what the person at this machine sees, and the hooks that the host calls. Without a host (tv null)
// everything is there but switched off. ban() says whether the other role is in a call.
export function taoMay({ tv, van, kho, ve, baoTin, io, ban }) {
  const hen = { dat: (ham, ms) => setTimeout(ham, ms), huy: (so) => clearTimeout(so) };
  const noiDuoc = !!tv && typeof RTCPeerConnection === 'function' && typeof io === 'function';
  const canh = noiDuoc ? TvMaHoa.taoCanhMatKhau({
    lau: docLau(kho),
    khiDoi: ve.lai,
    khiKhoa: (giay) => baoTin('hong', van.chu('nguoi.khoa', { n: giay })),
  }) : null;
  let phong = null;
  let traLoi = null;

  const chia = taoChia(tv, ve.lai);
  const soNguoi = () => phong?.soNguoi ?? 0;
  const manHinh = taoManHinh({ tv, van, kho, ve, chia, soNguoi });
  taoQuyen({ tv, van, ve, chia });
  const thietLap = taoThietLap({ tv, van, ve, baoTin });
  const mayChu = taoMayChu({ tv, ve, chia, ban: () => soNguoi() > 0 || ban() });
  const tepNhan = taoTepNhan({ tv, van, kho, ve, baoTin, mayChu });
  const tuyChon = taoTuyChon({ tv, kho, ve });
  const luuTep = taoLuuTep({ thuMuc: () => tepNhan.thuMuc, khiGhi: (thuMuc, ten) => tepNhan.them(thuMuc, ten) });
  const bang = taoBang({ van, baoTin, phong: () => phong });

  function hoiNguoi({ ten, cach }) {
    window.ipc?.postMessage('hien-cua-so'); // nobody sees a question in a hidden window
    const dangMo = chia.tinh() !== 'nghi' || soNguoi() > 0; // the stop button lies under the question
    const { traLoi: gia, thoi } = moHopThoai({
      tieuDe: van.chu('hoi.tieuDe', { ten: ten || van.chu('nguoi.voDanh') }),
      noiDung: van.chu(cach === 0 ? 'hoi.lanNay' : 'hoi.lauDai'),
      nut: [[false, van.chu('hoi.tuChoi')], [true, van.chu('hoi.choVao'), 'chinh'], ...(dangMo ? [['dung', van.chu('man.dung'), 'do']] : [])],
      macDinh: false, giay: HOI_GIAY, khiGiay: (n) => van.chu('hoi.con', { n }),
    });
    return {
      thoi,
      traLoi: gia.then((dap) => {
        if (dap === 'dung') dungHet();
        return dap === true;
      }),
    };
  }

  function loiHinh() {
    const tinh = chia.tinh();
    if (tinh === 'nghi' && tv.manHinh.loi) return LOI_CUA_MAY.get(tv.manHinh.loi) ?? tv.manHinh.loi;
    return tinh === 'chia' && luong.hong ? 'loi.khongDocHinh' : '';
  }

  const luong = noiDuoc ? taoLuongHinh({ khiDoi: ve.lai }) : null;
  const lichSu = taoLichSu(kho);
  const kenh = noiDuoc ? taoKenhHen({ io }) : null;
  if (noiDuoc) {
    phong = taoPhong({
      tv, chia, luong, tuyChon, canh, kenh, hoiNguoi, loiHinh,
      traLoi: () => traLoi,
      caoToiDa: manHinh.net, soMan: manHinh.so,
      luuTep: {
        duoc: () => (tuyChon.doc('nhanTep') ? '' : 'nhanTep.tat'), thuMuc: () => !!tepNhan.thuMuc, ghi: luuTep.ghi, tai: luuTep.tai,
      },
      moi: { taoKetNoi: (cauHinh) => new RTCPeerConnection(cauHinh), maHoa: TvMaHoa, hen },
      khi: {
        doi: ve.lai,
        vao: (phien) => dsNguoi.khiVao(phien),
        ra: (phien, ly, truoc) => dsNguoi.khiRa(phien, ly, truoc),
        bang: (chu, phien) => bang.nhan(chu, dsNguoi.ten(phien)),
      },
    });
    phong.dungBang = () => tuyChon.doc('bang');
  }
  const dsNguoi = taoDsNguoi({ tv, van, ve, baoTin, phong, lichSu, guiBang: bang.gui });
  taoTruyCap({ tv, van, ve, baoTin, canh, traLoi: () => traLoi });
  taoMatKhauLau({ tv, van, kho, ve, baoTin, canh });

  function dungHet() {
    phong?.dung();
    chia.dung();
    if (phong) baoTin('xong', van.chu('roi.khoa', { n: TvMaHoa.KHOA_GIAY, phut: CHAN_LAU / 60000 }));
  }
  khi('bc-stop', dungHet);
  ve.them(() => {
    if (tv) van.dat('phien-ban', 'trang.phienBan', { ban: tv.phienBan });
    phong?.theo();
  });

  function moTraLoi() {
    traLoi = taoTraLoi({
      kenh, kho, hen, sinhThe: () => TvMaHoa.sangHex(TvMaHoa.ngauNhien(32)),
      khi: {
        doi() {
          if (traLoi && traLoi.tinh !== 'san-sang') phong.matMayChu();
          ve.lai();
        },
        khach: phong.them, tin: phong.nhan, dong: phong.mayChuDong,
      },
    });
    window.addEventListener('pagehide', () => phong.ketHet('dong-trang'));
  }

  return {
    // coChuXong: when the page's texts are there.
    batDau(coChuXong) {
      window.__tvTrangThai = ve.lai;
      window.__tvAndroidDoi = ve.lai;
      window.__tvMatKetNoi = (mat) => mayChu.khiMat(!!mat);
      window.__tvMayChuSongLai = mayChu.khiSongLai;
      window.__tvDaTai = (thuMuc, ten) => {
        luuTep.khiDaTai(String(ten));
        thietLap.datThuMucLuu(String(thuMuc)); // downloads go where the host was told to save
        tepNhan.them(String(thuMuc), String(ten), coChuXong);
      };
      window.__tvTaiHong = (loi) => {
        luuTep.khiTaiHong();
        coChuXong.then(() => baoTin('hong', van.chu('tin.taiHong', { loi: String(loi) })));
      };
      manHinh.batDauDo();
      mayChu.xem().then(tepNhan.moLai);
      if (noiDuoc) moTraLoi();
    },
    veChu() {
      manHinh.veChu();
      tepNhan.veChu();
    },
    khiHien: (hien) => { $('phan-may').hidden = !hien; },
  };
}
