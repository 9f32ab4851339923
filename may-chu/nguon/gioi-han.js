// Token buckets, one for each key, and counts. Time comes from outside, so that tests move it by hand.
import { khoaMang } from './dia-chi.js';

export const GAP_MANG = 8; // a /48 may do so many times what one address may

export class GioiHan {
  #xo = new Map(); // key → { con, luc }, the least recently used first

  // `dung` tokens at most, `moiGiay` come back each second. `dongHo` gives milliseconds that never go back.
  // At most `toiDa` keys are remembered: an attacker with many addresses costs memory once, not for ever.
  constructor({ dung, moiGiay, dongHo, toiDa = 50_000 }) {
    Object.assign(this, { dung, moiGiay, dongHo, toiDa });
  }

  // Takes `gia` tokens and answers 0, or takes none and answers the seconds until they are there (1 or more).
  lay(khoa, gia = 1) {
    const luc = this.dongHo();
    const xo = this.#xo.get(khoa) ?? { con: this.dung, luc };
    xo.con = Math.min(this.dung, xo.con + ((luc - xo.luc) / 1000) * this.moiGiay);
    xo.luc = luc;
    this.#xo.delete(khoa);
    this.#xo.set(khoa, xo);
    this.#don(luc);
    if (xo.con < gia) return Math.max(1, Math.ceil((gia - xo.con) / this.moiGiay));
    xo.con -= gia;
    return 0;
  }

  get soKhoa() {
    return this.#xo.size;
  }

  // Full buckets say nothing any more; they leave from the old end, a few at each call.
  #don(luc) {
    const daDay = (this.dung / this.moiGiay) * 1000;
    let conLai = 4;
    for (const [khoa, xo] of this.#xo) {
      const thua = this.#xo.size > this.toiDa;
      if (!thua && (conLai-- === 0 || luc - xo.luc < daDay)) return;
      this.#xo.delete(khoa);
    }
  }
}

// The same for clients, by `khoaDiaChi`: a bucket for each and a larger one for the /48 around it.
export class GioiHanDiaChi {
  constructor({ dung, moiGiay, dongHo }) {
    this.rieng = new GioiHan({ dung, moiGiay, dongHo });
    this.mang = new GioiHan({ dung: dung * GAP_MANG, moiGiay: moiGiay * GAP_MANG, dongHo });
  }

  lay(khoa, gia = 1) {
    const cho = this.rieng.lay(khoa, gia);
    const mang = khoaMang(khoa);
    return cho > 0 || mang === null ? cho : this.mang.lay(mang, gia);
  }
}

// How many of something each key holds at this moment.
export class SoDem {
  #so = new Map();

  dem(khoa) {
    return this.#so.get(khoa) ?? 0;
  }

  doi(khoa, them) {
    const so = this.dem(khoa) + them;
    if (so > 0) this.#so.set(khoa, so);
    else this.#so.delete(khoa);
  }
}

// The same for clients: at most `moi` each, and so many times that for the /48 around them.
export class SoDemDiaChi {
  #so = new SoDem();

  constructor(moi) {
    this.moi = moi;
  }

  day(khoa) {
    const mang = khoaMang(khoa);
    return this.#so.dem(khoa) >= this.moi || (mang !== null && this.#so.dem(mang) >= this.moi * GAP_MANG);
  }

  doi(khoa, them) {
    const mang = khoaMang(khoa);
    this.#so.doi(khoa, them);
    if (mang !== null) this.#so.doi(mang, them);
  }
}
