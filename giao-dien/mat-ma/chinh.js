// The bundle's globals: window.TvMaHoa, and window.TvThuVien with the connection's client library for a page whose server
// is a substitute.
import { io } from 'socket.io-client';
import { taoBatTayKhach, taoBatTayMay } from './bat-tay.js';
import { layVoHuong, nhanDiem, nhanKiem, noiBanGhi, noiLv, taoChuoiSinh, taoPhanTuSinh, tinhIsk, tinhThe } from './cpace.js';
import { DAI_LAU, KHOA_GIAY, SAI_TOI_DA, datMatKhauLau, taoCanhMatKhau } from './mat-khau.js';
import {
  BANG_CHU, boKhoangTrang, chiaNhom, ngauNhien, sangBase64, sangBase64Url, sangHex, sangUtf8, soBang, taoChuoi, taoMaMay,
  taoMatKhau, tuBase64, tuBase64Url, tuHex,
} from './tien-ich.js';
import { sdpHop, vanTayCuaSdp } from './van-tay.js';

globalThis.TvMaHoa = Object.freeze({
  BANG_CHU, ngauNhien, taoChuoi, taoMaMay, taoMatKhau, chiaNhom, boKhoangTrang, soBang,
  sangUtf8, sangHex, tuHex, sangBase64, tuBase64, sangBase64Url, tuBase64Url,
  vanTayCuaSdp, sdpHop, DAI_LAU: Object.freeze({ ...DAI_LAU }), KHOA_GIAY, SAI_TOI_DA,
  datMatKhauLau, taoCanhMatKhau, taoBatTayKhach, taoBatTayMay,
  // The exchange's parts, for its test vectors.
  cpace: Object.freeze({ noiLv, taoChuoiSinh, taoPhanTuSinh, layVoHuong, nhanDiem, nhanKiem, noiBanGhi, tinhIsk, tinhThe }),
});
globalThis.TvThuVien = Object.freeze({ io });
