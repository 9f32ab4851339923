// Token buckets, one for each key. Time comes from outside, so that tests move it by hand.

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
