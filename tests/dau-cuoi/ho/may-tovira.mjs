// Tovira itself on the virtual display, its page reachable through the web engine's own debugging port.
import { mkdir } from 'node:fs/promises';
import { join } from 'node:path';
import { fileURLToPath } from 'node:url';
import { can, cho, ChuongTrinh, congRanh, diaChi } from './the-gioi.mjs';

const WebSocket = can('ws');
const VOI_MAN_HINH = fileURLToPath(new URL('../../voi-man-hinh.sh', import.meta.url));

export class MayTovira {
  // `ben` is the machine that it runs on: the host has this test's display, another one its own. `gocTrang` is where its page
  // is to come from: not the server where nothing answers.
  static async mo({ chuongTrinh, goc, gocTrang = goc, nha, ben = 'may', doiSo = [] }) {
    const may = new MayTovira();
    await mkdir(nha, { recursive: true, mode: 0o700 });
    const cong = await congRanh();
    const moiTruong = { QTWEBENGINE_REMOTE_DEBUGGING: `${diaChi[ben]}:${cong}`, XDG_DOWNLOAD_DIR: join(nha, 'tai') };
    for (const bien of ['HOME', 'XDG_CONFIG_HOME', 'XDG_DATA_HOME', 'XDG_CACHE_HOME', 'XDG_RUNTIME_DIR']) moiTruong[bien] = nha;
    const [lenh, ...dau] = ben === 'may' ? [chuongTrinh] : [VOI_MAN_HINH, chuongTrinh];
    may.ct = new ChuongTrinh(ben, lenh, [...dau, '--server', goc, ...doiSo], { moiTruong });
    try {
      const trang = await cho('Tovira opens its page', async () => {
        const cac = await (await fetch(`http://${diaChi[ben]}:${cong}/json`)).json();
        return cac.find((t) => t.type === 'page' && t.url.startsWith(gocTrang));
      }, 40000);
      may.day = new WebSocket(trang.webSocketDebuggerUrl.replace(/\/\/[^/]*/, `//${diaChi[ben]}:${cong}`));
      await new Promise((duoc, hong) => may.day.once('open', duoc).once('error', hong));
    } catch (e) {
      await may.tat();
      throw new Error(`${e.message}\n${may.ct.daNoi}`, { cause: e });
    }
    may.soGoi = 0;
    may.choDap = new Map();
    may.day.on('message', (tin) => {
      const dap = JSON.parse(tin);
      may.choDap.get(dap.id)?.(dap);
      may.choDap.delete(dap.id);
    });
    return may;
  }

  goi(method, params = {}) {
    const id = ++this.soGoi;
    return new Promise((duoc, hong) => {
      this.choDap.set(id, (dap) => (dap.error ? hong(new Error(`${method}: ${dap.error.message}`)) : duoc(dap.result)));
      this.day.send(JSON.stringify({ id, method, params }));
    });
  }

  // The value of an expression in the host's page; promises are waited for.
  async hoi(bieuThuc) {
    const { result, exceptionDetails } = await this.goi('Runtime.evaluate', { expression: bieuThuc, awaitPromise: true, returnByValue: true, userGesture: true });
    if (exceptionDetails) throw new Error(exceptionDetails.exception?.description ?? exceptionDetails.text);
    return result.value;
  }

  cho(viec, bieuThuc, han) { return cho(`the host's page: ${viec}`, () => this.hoi(bieuThuc), han); }

  async chupTrang() { return Buffer.from((await this.goi('Page.captureScreenshot')).data, 'base64'); }

  async tat(tinHieu) {
    this.day?.close();
    return this.ct.tat(tinHieu);
  }
}
