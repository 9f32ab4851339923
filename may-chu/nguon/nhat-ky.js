// The log: one JSON object a line, about the server and never about what it carries. No codes, no letters, no client's full address.

export class NhatKy {
  #bo = new Map(); // what was refused since the last summary, and how often

  constructor(viet = (dong) => process.stdout.write(dong)) {
    this.viet = viet;
  }

  ghi(su, chiTiet = {}) {
    this.viet(`${JSON.stringify({ luc: new Date().toISOString(), su, ...chiTiet })}\n`);
  }

  // Refusals are counted, and told together by `tomTat`: whoever floods the server must not flood the log.
  demTuChoi(vi, mang) {
    const khoa = `${vi} ${mang}`;
    if (this.#bo.size < 100 || this.#bo.has(khoa)) this.#bo.set(khoa, (this.#bo.get(khoa) ?? 0) + 1);
  }

  tomTat() {
    for (const [khoa, lan] of this.#bo) {
      const [vi, mang] = khoa.split(' ');
      this.ghi('tu-choi', { vi, mang, lan });
    }
    this.#bo.clear();
  }
}
