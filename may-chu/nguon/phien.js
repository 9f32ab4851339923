// The sessions whose host hangs on this instance: how many a host may have, and which ones never came to anything.
import { khoaMang } from './dia-chi.js';

export const PHIEN_MOI_BEN = 16; // sessions of one connection
export const PHIEN_MOI_NGUOI_GOI = 4; // sessions of one host with callers of one address
export const PHIEN_MOI_MANG = 8; // of one host with callers of one IPv6 /48
export const HAN_DO_DANG = 5 * 60_000; // ms for a session to get past the handshake: a person types a password meanwhile
const HAN_NHUONG = 30_000; // ms after which an unfinished one makes room for another caller
const THU_BAT_TAY = 4; // the host's letters up to its first sealed one

export const phong = (phien) => `p:${phien}`;
export const phienCua = (socket) => [...socket.rooms].filter((ten) => ten.startsWith('p:')).map((ten) => ten.slice(2));

export class SoPhien {
  #cac = new Map(); // session → { socket (the host's), khoa (the caller's address), luc, thu (letters of the host) }

  constructor(dongHo) {
    this.dongHo = dongHo;
  }

  get soPhien() {
    return this.#cac.size;
  }

  // Whether `socket` can take one more caller from the address `khoa`; `bo` is the session that has to give way to it, if any.
  choThem(socket, khoa) {
    const cac = [...this.#cac].filter(([, p]) => p.socket === socket);
    if (cac.filter(([, p]) => p.khoa === khoa).length >= PHIEN_MOI_NGUOI_GOI) return { duoc: false };
    const mang = khoaMang(khoa);
    if (mang !== null && cac.filter(([, p]) => khoaMang(p.khoa) === mang).length >= PHIEN_MOI_MANG) return { duoc: false };
    if (phienCua(socket).length < PHIEN_MOI_BEN) return { duoc: true };
    const cu = cac.find(([, p]) => doDang(p) && this.dongHo() - p.luc >= HAN_NHUONG);
    return cu ? { duoc: true, bo: cu[0] } : { duoc: false };
  }

  them(phien, socket, khoa) {
    this.#cac.set(phien, { socket, khoa, luc: this.dongHo(), thu: 0 });
  }

  demThu(phien, socket) {
    const p = this.#cac.get(phien);
    if (p?.socket === socket) p.thu += 1;
  }

  bo(phien) {
    this.#cac.delete(phien);
  }

  // Forgets what has ended elsewhere and names the sessions whose time is up.
  quet() {
    const hetHan = [];
    for (const [phien, p] of this.#cac) {
      if (!p.socket.rooms.has(phong(phien))) this.#cac.delete(phien);
      else if (doDang(p) && this.dongHo() - p.luc >= HAN_DO_DANG) hetHan.push(phien);
    }
    return hetHan;
  }
}

const doDang = (p) => p.thu < THU_BAT_TAY;
