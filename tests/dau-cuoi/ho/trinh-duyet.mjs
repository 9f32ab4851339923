// The controller's browser: Debian's Chromium behind chromedriver, spoken to in the W3C WebDriver protocol.
import { cho, ChuongTrinh, diaChi, rieng } from './the-gioi.mjs';

export class TrinhDuyet {
  static async mo({ rong = 1280, cao = 800, thuMuc, thamSo = [] } = {}) {
    const td = new TrinhDuyet();
    // Only this private network reaches the port.
    const choPhep = rieng ? ['--allowed-ips=', '--allowed-origins=*'] : [];
    td.lai = new ChuongTrinh('khach', 'chromedriver', ['--port=0', ...choPhep], { thuMuc });
    const [, cong] = await td.lai.choDong(/started successfully on port (\d+)/);
    td.goc = `http://${diaChi.khach}:${cong}`;
    const args = ['--headless=new', `--window-size=${rong},${cao}`, '--disable-gpu', '--no-first-run', ...thamSo];
    // Its sandbox cannot start for root or inside other namespaces; only the pages of this test run there.
    if (rieng || process.getuid() === 0) args.push('--no-sandbox');
    const phien = await td.goi('POST', '/session', {
      capabilities: { alwaysMatch: { browserName: 'chrome', 'goog:chromeOptions': { args }, 'goog:loggingPrefs': { browser: 'ALL' } } },
    });
    td.duong = `/session/${phien.sessionId}`;
    await td.goi('POST', `${td.duong}/timeouts`, { script: 20000, pageLoad: 30000 });
    return td;
  }

  async goi(cach, duong, than) {
    const dap = await fetch(this.goc + duong, { method: cach, body: than && JSON.stringify(than), signal: AbortSignal.timeout(60000) });
    const { value } = await dap.json();
    if (!dap.ok) throw new Error(`${duong}: ${value?.error}: ${value?.message?.split('\n')[0]}`);
    return value;
  }

  toi(url) { return this.goi('POST', `${this.duong}/url`, { url }); }

  // The value of a function's source run in the page, with arguments that JSON can carry; promises are waited for.
  chay(ham, ...doiSo) {
    const script = `const tra = arguments[arguments.length - 1];
      Promise.resolve((${ham}).apply(null, Array.prototype.slice.call(arguments, 0, -1))).then((v) => tra({ v }), (e) => tra({ loi: String(e && e.stack || e) }));`;
    return this.goi('POST', `${this.duong}/execute/async`, { script, args: doiSo }).then((dap) => {
      if (dap?.loi) throw new Error(dap.loi);
      return dap?.v;
    });
  }

  async the(chon) {
    const the = await this.goi('POST', `${this.duong}/element`, { using: 'css selector', value: chon });
    return Object.values(the)[0];
  }

  // Waits until the element is there and can be clicked, as a person would.
  bam(chon) {
    return cho(`a click on ${chon}`, async () => {
      await this.goi('POST', `${this.duong}/element/${await this.the(chon)}/click`, {});
      return true;
    });
  }

  async go(chon, chu) {
    const the = await this.the(chon);
    await this.goi('POST', `${this.duong}/element/${the}/clear`, {}).catch(() => {});
    await this.goi('POST', `${this.duong}/element/${the}/value`, { text: chu });
  }

  // Files for an <input type=file>, whatever hides it.
  async chonTep(chon, cacDuong) {
    await this.goi('POST', `${this.duong}/element/${await this.the(chon)}/value`, { text: cacDuong.join('\n') });
  }

  // One sequence of pointer, wheel or key actions, as the protocol writes them.
  lam(loai, cacBuoc, thamSo) {
    return this.goi('POST', `${this.duong}/actions`, { actions: [{ type: loai, id: `tay-${loai}`, actions: cacBuoc, ...(thamSo && { parameters: thamSo }) }] });
  }

  cdp(cmd, params = {}) { return this.goi('POST', `${this.duong}/goog/cdp/execute`, { cmd, params }); }

  nhatKy() { return this.goi('POST', `${this.duong}/se/log`, { type: 'browser' }); }

  async chup() { return Buffer.from(await this.goi('GET', `${this.duong}/screenshot`), 'base64'); }

  async dong() {
    if (this.duong) await this.goi('DELETE', this.duong).catch(() => {});
    await this.lai?.tat();
  }
}
