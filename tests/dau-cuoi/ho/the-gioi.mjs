// The two machines and the server between them, as khong-gian.sh made them: in network namespaces, or all on this machine.
import { spawn } from 'node:child_process';
import { once } from 'node:events';
import { createRequire } from 'node:module';
import { createServer } from 'node:net';
import { setTimeout as nghi } from 'node:timers/promises';

export const rieng = process.env.TOVIRA_DC_MANG === 'rieng';
export const diaChi = rieng
  ? { mayChu: '10.77.0.1', may: '10.77.0.2', khach: '10.77.0.3' }
  : { mayChu: '127.0.0.1', may: '127.0.0.1', khach: '127.0.0.1' };

// Libraries that the rendezvous server has installed.
export const can = createRequire(new URL('../../../may-chu/package.json', import.meta.url));

// Asks until the answer is not undefined, false or null; an error that says what was waited for after `han` milliseconds.
export async function cho(viec, hoi, han = 20000) {
  const het = Date.now() + han;
  let loi;
  do {
    try {
      const dap = await hoi();
      if (dap !== undefined && dap !== false && dap !== null) return dap;
      loi = undefined;
    } catch (e) {
      loi = e;
    }
    await nghi(40);
  } while (Date.now() < het);
  throw new Error(`not within ${han / 1000} s: ${viec}${loi ? ` (${loi.message})` : ''}`, { cause: loi });
}

// A port that is free now on this machine's loopback and in the namespaces, where nothing else listens.
export async function congRanh() {
  const cua = createServer().listen(0);
  await once(cua, 'listening');
  const { port } = cua.address();
  await new Promise((xong) => cua.close(xong));
  return port;
}

// A program on one of the machines; `ben` is 'may', 'khach' or 'mayChu'. What it writes is kept for the error message.
export class ChuongTrinh {
  constructor(ben, lenh, doiSo = [], { moiTruong = {}, thuMuc } = {}) {
    const vao = rieng && ben !== 'mayChu' ? ['nsenter', `--net=/run/netns/${ben}`, lenh, ...doiSo] : [lenh, ...doiSo];
    this.ten = lenh;
    this.daNoi = '';
    this.con = spawn(vao[0], vao.slice(1), { env: { ...process.env, ...moiTruong }, cwd: thuMuc, stdio: ['ignore', 'pipe', 'pipe'] });
    this.het = once(this.con, 'exit').then(([ma, tinHieu]) => tinHieu ?? ma);
    for (const ong of [this.con.stdout, this.con.stderr]) {
      ong.setEncoding('utf8');
      ong.on('data', (chu) => { this.daNoi = (this.daNoi + chu).slice(-100000); });
    }
  }

  async choDong(mau, han) {
    return cho(`${this.ten} says ${mau}: ${this.daNoi.slice(-2000)}`, () => {
      if (this.con.exitCode !== null) throw new Error(`${this.ten} ended with ${this.con.exitCode}: ${this.daNoi.slice(-2000)}`);
      return mau.exec(this.daNoi);
    }, han);
  }

  async tat(tinHieu = 'SIGTERM') {
    if (this.con.exitCode === null && this.con.signalCode === null) this.con.kill(tinHieu);
    const ai = await Promise.race([this.het, nghi(10000, 'qua-lau')]);
    if (ai === 'qua-lau') {
      this.con.kill('SIGKILL');
      await this.het;
    }
    return ai;
  }
}

export async function chayXong(ben, lenh, ...doiSo) {
  const ct = new ChuongTrinh(ben, lenh, doiSo);
  const ma = await ct.het;
  if (ma !== 0) throw new Error(`${lenh} ${doiSo.join(' ')}: ${ma} ${ct.daNoi}`);
  return ct.daNoi;
}
