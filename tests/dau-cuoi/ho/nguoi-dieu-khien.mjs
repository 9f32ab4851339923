// The person at the controller: sees pixels, points at places of the host's display, types.
import { cho } from './the-gioi.mjs';

const GAN = 24; // how far a colour may be off after JPEG, the video codec and scaling, for each of its three parts

export class NguoiDieuKhien {
  constructor(trinhDuyet, man) {
    this.td = trinhDuyet;
    this.man = man;
  }

  coHinh() {
    return this.td.chay(`() => { const v = document.getElementById('k-hinh'); return !!v.offsetParent && v.videoWidth > 0 && v.srcObject !== null; }`);
  }

  async choHinh() {
    try {
      return await cho('a picture at the controller', () => this.coHinh(), 30000);
    } catch (loi) {
      const chu = await this.td.chay('() => document.body.innerText.replace(/\\s+/g, " ").slice(0, 600)');
      throw new Error(`${loi.message}; the page says: ${chu}`, { cause: loi });
    }
  }

  // The notice that a session has ended.
  choTinHet(han) {
    return cho('a notice of the end at the controller', () => this.td.chay(`() => document.querySelector('#noi [role=alert] p')?.textContent || null`), han);
  }

  // The reason shown when a call has failed.
  choLoi() {
    return cho('a reason at the controller', () => this.td.chay(`() => {
      const [loi, phu] = ['k-loi', 'k-phu'].map((id) => document.getElementById(id)).map((t) => (t.offsetParent ? t : null));
      return loi?.textContent || (phu?.dataset.doi === 'khong' && document.getElementById('k-phu-chu').textContent) || null;
    }`), 30000);
  }

  // The colour at a place of the host's display, as the video shows it.
  mauTai([x, y]) {
    return this.td.chay(`(x, y) => {
      const v = document.getElementById('k-hinh');
      const c = new OffscreenCanvas(1, 1).getContext('2d');
      c.drawImage(v, x * v.videoWidth, y * v.videoHeight, 1, 1, 0, 0, 1, 1);
      return Array.from(c.getImageData(0, 0, 1, 1).data.slice(0, 3));
    }`, x / this.man.rong, y / this.man.cao);
  }

  async #gan(diem, mau) {
    const thay = await this.mauTai(diem);
    return thay.every((v, i) => Math.abs(v - mau[i]) <= GAN);
  }

  choMau(diem, mau) { return cho(`colour ${mau} at ${diem}`, () => this.#gan(diem, mau)); }

  choKhacMau(diem, mau) { return cho(`another colour than ${mau} at ${diem}`, async () => !(await this.#gan(diem, mau))); }

  // Where a place of the host's display is in the browser's window.
  async #tai(x, y) {
    return this.td.chay(`(x, y) => {
      const v = document.getElementById('k-hinh');
      const o = v.getBoundingClientRect();
      const ti = Math.min(o.width / v.videoWidth, o.height / v.videoHeight);
      const [w, h] = [v.videoWidth * ti, v.videoHeight * ti];
      return { x: Math.round(o.left + (o.width - w) / 2 + x * w), y: Math.round(o.top + (o.height - h) / 2 + y * h) };
    }`, x / this.man.rong, y / this.man.cao);
  }

  async bam(x, y, nut = 0) {
    const diem = await this.#tai(x, y);
    await this.td.lam('pointer', [{ type: 'pointerMove', duration: 0, ...diem }, { type: 'pointerDown', button: nut }, { type: 'pointerUp', button: nut }]);
  }

  async keo(tu, den) {
    const [a, b] = [await this.#tai(...tu), await this.#tai(...den)];
    await this.td.lam('pointer', [
      { type: 'pointerMove', duration: 0, ...a }, { type: 'pointerDown', button: 0 },
      { type: 'pointerMove', duration: 200, ...b }, { type: 'pointerUp', button: 0 },
    ]);
  }

  async lan(x, y, deltaY) {
    await this.td.lam('wheel', [{ type: 'scroll', duration: 0, ...(await this.#tai(x, y)), deltaX: 0, deltaY }]);
  }

  phim(...cac) {
    return this.td.lam('key', cac.flatMap((value) => [{ type: 'keyDown', value }, { type: 'keyUp', value }]));
  }

  go(chu) { return this.phim(...chu); }

  // An input method at work: the text as it grows while it is composed, then as it is committed.
  async soanChu(cacBuoc, xong) {
    for (const text of cacBuoc) await this.td.cdp('Input.imeSetComposition', { text, selectionStart: text.length, selectionEnd: text.length });
    await this.td.cdp('Input.insertText', { text: xong });
  }
}
