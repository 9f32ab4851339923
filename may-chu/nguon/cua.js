// The door: which pages may connect, how many connections one address may hold and how often it may ask.
import { diaChiThat, cheDiaChi, khoaDiaChi } from './dia-chi.js';
import { GioiHanDiaChi, SoDemDiaChi } from './gioi-han.js';

// Packaged copies of the web application live on the loopback interface, at any port.
export const GOC_NOI_BO = /^http:\/\/(127\.0\.0\.1|localhost)(:\d{1,5})?$/;

const O_MOI_KET_NOI = 2; // a page takes more than one TCP connection until it has its WebSocket

export class Cua {
  #giu; // pages' connections
  #tho; // TCP connections, whatever comes over them
  #diaChi = new WeakMap(); // connection → its client's address

  constructor({ caiDat, dongHo, nhatKy }) {
    Object.assign(this, { caiDat, nhatKy });
    const moi = caiDat.ketNoiMoiDiaChi;
    this.#giu = new SoDemDiaChi(moi);
    this.#tho = new SoDemDiaChi(moi * O_MOI_KET_NOI);
    this.gioiHan = new GioiHanDiaChi({ dung: moi, moiGiay: moi / 60, dongHo });
    this.xin = new GioiHanDiaChi({ dung: caiDat.yeuCauMoiPhut, moiGiay: caiDat.yeuCauMoiPhut / 60, dongHo });
    this.tong = 0;
  }

  // engine.io's question for every new connection and every change of its transport.
  xet = (yeuCau, tra) => {
    const { origin, host } = yeuCau.headers;
    if (origin !== undefined && !GOC_NOI_BO.test(origin) && !cungGoc(origin, host)) return tra('origin', false);
    if (new URL(yeuCau.url, 'http://x').searchParams.get('sid')) return tra(null, true); // an empty one opens a new connection
    const diaChi = diaChiThat(yeuCau, this.caiDat.proxyTin);
    const khoa = khoaDiaChi(diaChi);
    const day = this.tong >= this.caiDat.ketNoiToiDa || this.#giu.day(khoa);
    if (day || this.gioiHan.lay(khoa) > 0) {
      this.nhatKy.demTuChoi('ket-noi', cheDiaChi(diaChi));
      return tra('too many', false);
    }
    return tra(null, true);
  };

  // A TCP connection that has said nothing yet. A proxy's own ones stand for many clients.
  nhanO = (o) => {
    const diaChi = o.remoteAddress;
    if (diaChi === undefined || this.caiDat.proxyTin(diaChi)) return;
    const khoa = khoaDiaChi(diaChi);
    if (this.#tho.day(khoa)) {
      this.nhatKy.demTuChoi('tcp', cheDiaChi(diaChi));
      o.destroy();
      return;
    }
    this.#tho.doi(khoa, 1);
    o.once('close', () => this.#tho.doi(khoa, -1));
  };

  // Seconds that who asks for a file has to wait, 0 for none.
  choXin(yeuCau) {
    const diaChi = diaChiThat(yeuCau, this.caiDat.proxyTin);
    const cho = this.xin.lay(khoaDiaChi(diaChi));
    if (cho > 0) this.nhatKy.demTuChoi('http', cheDiaChi(diaChi));
    return cho;
  }

  // Counts a connection for as long as it lasts. Its address is kept from its first request, whose socket may be closed soon after.
  dem(ketNoi) {
    const diaChi = diaChiThat(ketNoi.request, this.caiDat.proxyTin);
    const khoa = khoaDiaChi(diaChi);
    this.#diaChi.set(ketNoi, diaChi);
    this.#giu.doi(khoa, 1);
    this.tong += 1;
    ketNoi.once('close', () => {
      this.#giu.doi(khoa, -1);
      this.tong -= 1;
    });
  }

  diaChi(ketNoi) {
    return this.#diaChi.get(ketNoi) ?? '';
  }
}

// The page was served under the very name and port that it connects to. The scheme is the proxy's business.
function cungGoc(goc, host) {
  try {
    return host !== undefined && new URL(goc).host === new URL(`${new URL(goc).protocol}//${host}`).host;
  } catch {
    return false;
  }
}
