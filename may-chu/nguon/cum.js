// Several instances, one service: asks the others whether the host's connection hangs on one of them.

export class Cum {
  #cho = new Map(); // session → { xong, hen }

  // `khiHoi({ sid, phien, khoa })` opens the session when that connection is this instance's own and answers the code of its
  // refusal, empty for none; undefined when the connection is not here.
  constructor(nsp, { khiHoi, choTra = 3000 }) {
    Object.assign(this, { nsp, choTra });
    nsp.on('cum:goi', (hoi) => {
      const ma = khiHoi(hoi);
      if (ma !== undefined) nsp.serverSideEmit('cum:tra', { phien: hoi.phien, ma });
    });
    nsp.on('cum:tra', ({ phien, ma }) => this.#tra(phien, ma));
  }

  // Calls `xong` once: with '' (opened), a refusal, or 'khong_co_may' when nobody has answered in time. It runs before anything that
  // the other instance sent after its answer.
  hoi(yeuCau, xong) {
    const hen = setTimeout(() => this.#tra(yeuCau.phien, 'khong_co_may'), this.choTra);
    this.#cho.set(yeuCau.phien, { xong, hen });
    this.nsp.serverSideEmit('cum:goi', yeuCau);
  }

  #tra(phien, ma) {
    const cho = this.#cho.get(phien);
    if (!cho) return;
    this.#cho.delete(phien);
    clearTimeout(cho.hen);
    cho.xong(ma);
  }

  dong() {
    for (const { hen } of this.#cho.values()) clearTimeout(hen);
    this.#cho.clear();
  }
}
