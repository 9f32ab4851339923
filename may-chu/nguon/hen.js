// The signalling: hosts register a code, controllers call it, sealed letters pass between the two connections of a session.
import { createHash, randomBytes, randomInt } from 'node:crypto';
import { cheDiaChi, khoaDiaChi } from './dia-chi.js';
import { GioiHanDiaChi } from './gioi-han.js';
import { CAC_SU_KIEN, TIN_DAI_NHAT, kiemTin, tuChoi } from './kiem-tin.js';
import { PHIEN_MOI_BEN, SoPhien, phienCua, phong } from './phien.js';

const TU_CHOI_LIEN_TIEP = 100; // refusals in a row after which a connection is cut
const CHO_GUI_TOI_DA = 256; // packets waiting for a connection that does not read
const KY_TU_MOI_XU = 2048; // characters of a letter for each token
const TEN_NOI_BO = /^(localhost|127\.[\d.]+|\[::1\])$/i;
const GIA_DAT_NHAT = 1 + TIN_DAI_NHAT / KY_TU_MOI_XU; // tokens

export class Hen {
  #cac = new Map(); // connection id → { socket, khoa, may: { ma, bam } or null, hang: its running step, tuChoi }

  // `cum` is null for a single instance; it asks through `khiHoi`. `sanSang()`: whether the registry can be reached.
  constructor({ io, soMa, caiDat, stunCong, dongHo, nhatKy, sanSang }) {
    Object.assign(this, { io, soMa, caiDat, stunCong, nhatKy, sanSang, cum: null });
    this.phien = new SoPhien(dongHo);
    const xo = (dung, moiGiay) => new GioiHanDiaChi({ dung, moiGiay, dongHo });
    const { dangKyMoiPhut, goiMoiPhut, tinMoiGiay } = caiDat;
    this.gioiHan = { may: xo(dangKyMoiPhut, dangKyMoiPhut / 60), goi: xo(goiMoiPhut, goiMoiPhut / 60), tin: xo(Math.max(tinMoiGiay * 10, GIA_DAT_NHAT), tinMoiGiay) };
    this.xuLy = {
      'may:mo': (ben, d, dap) => this.#noi(ben, () => this.#mo(ben, d, dap), dap),
      'may:dong': (ben, _, dap) => this.#noi(ben, () => this.#nghi(ben, dap), dap),
      'khach:goi': (ben, d, dap) => this.#goi(ben, d, dap).catch(() => dap(tuChoi('qua_nhieu', 5))),
      'phien:tin': (ben, d, dap) => this.#chuyen(ben, d, dap),
      'phien:dong': (ben, d, dap) => this.#dongPhien(ben, d, dap),
    };
  }

  // A new connection, from `diaChi`.
  nhan(socket, diaChi) {
    const ben = { socket, diaChi, khoa: khoaDiaChi(diaChi), may: null, hang: Promise.resolve(), tuChoi: 0 };
    this.#cac.set(socket.id, ben);
    socket.onAny((su, ...doi) => this.#nhanSuKien(ben, su, doi));
    socket.on('disconnecting', () => {
      this.#cac.delete(socket.id);
      for (const phien of phienCua(socket)) this.#ketThuc(phien, 'mat-lien-lac', socket);
      this.#noi(ben, () => this.#nghi(ben, () => {}), () => {});
    });
  }

  // Opens a session with a host of this instance; undefined when `sid` is not one. Otherwise the refusal, or empty.
  khiHoi = ({ sid, phien, khoa }) => {
    const chu = this.#cac.get(sid);
    if (!chu) return undefined;
    if (chu.may === null) return 'khong_co_may';
    const { duoc, bo } = this.phien.choThem(chu.socket, khoa);
    if (!duoc) return 'qua_nhieu';
    if (bo) this.#ketThuc(bo, 'mat-lien-lac');
    this.phien.them(phien, chu.socket, khoa);
    chu.socket.join(phong(phien));
    chu.socket.emit('may:khach', { phien });
    return '';
  };

  // What is due now and then: confirms the hosts of this instance, ends what never came to anything, cuts who does not read.
  async quet() {
    for (const phien of this.phien.quet()) this.#ketThuc(phien, 'mat-lien-lac');
    for (const { socket } of this.#cac.values()) {
      if (socket.conn.writeBuffer?.length > CHO_GUI_TOI_DA) socket.disconnect(true);
    }
    if (!this.sanSang()) return;
    await Promise.all([...this.#cac.values()].map((ben) => this.#noi(ben, () => this.#giuCho(ben), () => {})));
  }

  get so() {
    return { may: [...this.#cac.values()].filter((ben) => ben.may !== null).length, phien: this.phien.soPhien };
  }

  #nhanSuKien(ben, su, doi) {
    const cuoi = doi.at(-1);
    const tra = typeof cuoi === 'function' ? cuoi : () => {};
    const dap = (kq) => {
      if (kq.ok) ben.tuChoi = 0;
      else if (kq.code !== 'khong_co_phien') ben.tuChoi += 1; // that one is the other side's doing: it went first
      tra(kq);
      if (ben.tuChoi >= TU_CHOI_LIEN_TIEP) ben.socket.disconnect(true);
    };
    const cho = this.#layXu(ben, su, doi[0]);
    if (cho > 0) {
      this.nhatKy.demTuChoi(CAC_SU_KIEN.includes(su) ? su : 'la', cheDiaChi(ben.diaChi));
      return dap(tuChoi('qua_nhieu', cho));
    }
    const ma = CAC_SU_KIEN.includes(su) ? kiemTin(su, doi[0]) : 'sai_dang';
    if (ma !== '') return dap(tuChoi(ma));
    if (!this.sanSang()) return dap(tuChoi('qua_nhieu', 5));
    return this.xuLy[su](ben, doi[0], dap);
  }

  #layXu(ben, su, d) {
    if (su === 'may:mo') return this.gioiHan.may.lay(ben.khoa);
    if (su === 'khach:goi') return this.gioiHan.goi.lay(ben.khoa);
    const dai = typeof d?.tin === 'string' ? d.tin.length : 0;
    return this.gioiHan.tin.lay(ben.khoa, 1 + Math.floor(dai / KY_TU_MOI_XU));
  }

  // One step after another for each connection: registering waits for the registry, and the connection may end meanwhile.
  #noi(ben, viec, dap) {
    ben.hang = ben.hang.then(viec).catch(() => dap(tuChoi('qua_nhieu', 5)));
    return ben.hang;
  }

  async #mo(ben, { ma, the }, dap) {
    if (!ben.socket.connected) return;
    const bam = createHash('sha256').update(the).digest('hex');
    const { maDuoc, cu } = await this.#timMa(ma, bam, ben.socket.id);
    if (maDuoc === '') return dap(tuChoi('qua_nhieu', 60));
    if (ben.may !== null && ben.may.ma !== maDuoc) await this.soMa.nha(ben.may.ma, ben.socket.id);
    ben.may = { ma: maDuoc, bam };
    if (cu !== '' && cu !== ben.socket.id) {
      const truoc = this.#cac.get(cu);
      if (truoc) truoc.may = null;
      this.io.to(cu).emit('may:thay');
    }
    dap({ ok: true, ma: maDuoc, stun: this.#stun(ben) });
  }

  // The code asked for, else a new one. A few tries: nearly every draw of nine digits is free.
  async #timMa(ma, bam, sid) {
    for (let lan = 0; lan < 8; lan++) {
      const thu = lan === 0 && ma !== '' ? ma : String(randomInt(100_000_000, 1_000_000_000));
      const { duoc, cu } = await this.soMa.dangKy(thu, bam, sid);
      if (duoc) return { maDuoc: thu, cu };
    }
    return { maDuoc: '', cu: '' };
  }

  async #nghi(ben, dap) {
    const may = ben.may;
    ben.may = null;
    if (may !== null) await this.soMa.nha(may.ma, ben.socket.id);
    dap({ ok: true });
  }

  async #giuCho(ben) {
    if (ben.may === null || !ben.socket.connected) return;
    if (!(await this.soMa.giuCho(ben.may.ma, ben.may.bam, ben.socket.id))) {
      ben.may = null;
      ben.socket.emit('may:thay');
    }
  }

  async #goi(ben, { ma }, dap) {
    const { socket, khoa } = ben;
    const sid = await this.soMa.tim(ma);
    if (!socket.connected) return;
    if (sid === '' || sid === socket.id) return dap(tuChoi('khong_co_may'));
    if (phienCua(socket).length >= PHIEN_MOI_BEN) return dap(tuChoi('qua_nhieu', 60));
    const phien = randomBytes(16).toString('base64url');
    // Before the host hears of it, so that nothing of its answer is missed.
    socket.join(phong(phien));
    const xong = (loi) => {
      if (loi !== '') {
        this.#ketThuc(phien, 'mat-lien-lac', socket);
        dap(tuChoi(loi, loi === 'qua_nhieu' ? 30 : 0));
      } else if (!socket.connected) {
        this.#ketThuc(phien, 'mat-lien-lac');
      } else {
        dap({ ok: true, phien, stun: this.#stun(ben) });
      }
    };
    const loi = this.khiHoi({ sid, phien, khoa });
    if (loi === undefined && this.cum !== null) this.cum.hoi({ sid, phien, khoa }, xong);
    else xong(loi ?? 'khong_co_may');
  }

  #chuyen({ socket }, { phien, tin }, dap) {
    if (!socket.rooms.has(phong(phien))) return dap(tuChoi('khong_co_phien'));
    this.phien.demThu(phien, socket);
    socket.to(phong(phien)).emit('phien:tin', { phien, tin });
    return dap({ ok: true });
  }

  #dongPhien({ socket }, { phien }, dap) {
    // Both may end it at the same time: that it is gone already is what was asked for.
    if (socket.rooms.has(phong(phien))) this.#ketThuc(phien, 'ben-kia', socket);
    return dap({ ok: true });
  }

  // Tells everyone in the session, except the one who ended it, and empties its room, here at once and on the other instances.
  #ketThuc(phien, ly, tru) {
    const ten = phong(phien);
    (tru ? tru.to(ten) : this.io.to(ten)).emit('phien:dong', { phien, ly });
    this.phien.bo(phien);
    this.io.local.in(ten).socketsLeave(ten);
    if (this.cum !== null) this.io.in(ten).socketsLeave(ten);
  }

  #stun({ socket }) {
    if (this.caiDat.stunCongKhai.length > 0) return this.caiDat.stunCongKhai;
    if (this.stunCong === null) return [];
    const noi = tenMayChu(socket.handshake.headers.host);
    // A page on this machine: its loopback address is of no use to a connection with another one.
    const ten = this.caiDat.ten !== '' && TEN_NOI_BO.test(noi) ? this.caiDat.ten : noi;
    return ten === '' ? [] : [`stun:${ten}:${this.stunCong}`];
  }
}

// The name under which the page reached this server, without its port; empty when it says none that is one.
function tenMayChu(host) {
  const [, ten] = String(host ?? '').match(/^(\[[0-9a-fA-F:.]{2,45}\]|[A-Za-z0-9.-]{1,253})(:\d{1,5})?$/) ?? [];
  return ten ?? '';
}
