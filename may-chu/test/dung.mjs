// What the tests share: a server on ports of the system's choice, clients, a clock moved by hand, waits with a bound.
import { once } from 'node:events';
import { io } from 'socket.io-client';
import { docCaiDat } from '../nguon/cai-dat.js';
import { moMayChu } from '../nguon/may-chu.js';
import { NhatKy } from '../nguon/nhat-ky.js';

export const HAN = 30_000; // ms
export const THE = 'a'.repeat(64);
export const THE_KHAC = 'b'.repeat(64);

// Ends with the test `t`. `moiTruong` are settings; `dongHo.luc` is the server's clock.
export async function mo(t, moiTruong = {}, them = {}) {
  const dong = [];
  const dongHo = { luc: 0 };
  const caiDat = docCaiDat([], { CONG: '0', STUN_CONG: '0', DIA_CHI: '127.0.0.1', YEU_CAU_MOI_PHUT: '100000', ...moiTruong });
  const mayChu = await moMayChu(caiDat, { nhatKy: new NhatKy((d) => dong.push(d)), dongHo: () => dongHo.luc, ...them });
  const goc = `${caiDat.chungChi ? 'https' : 'http'}://127.0.0.1:${mayChu.cong}`;
  const cac = [];
  t.after(async () => { for (const s of cac) s.close(); await mayChu.dong(); });
  return { ...mayChu, goc, dongHo, nhatKy: dong, noi: (tuyChon) => noi(goc, cac, tuyChon) };
}

async function noi(goc, cac, tuyChon = {}) {
  const s = io(goc, { transports: ['websocket'], reconnection: false, forceNew: true, ...tuyChon });
  cac.push(s);
  s.den = [];
  s.onAny((su, d) => s.den.push([su, d]));
  s.hoi = (su, ...d) => s.timeout(HAN).emitWithAck(su, ...d);
  await new Promise((xong, hong) => { s.once('connect', xong); s.once('connect_error', hong); });
  return s;
}

// The next event `su` of a client that has not been waited for; those that came before the question count.
export async function cho(s, su) {
  const han = AbortSignal.timeout(HAN);
  for (;;) {
    const i = s.den.findIndex(([ten]) => ten === su);
    if (i >= 0) return s.den.splice(i, 1)[0][1];
    await new Promise((xong, hong) => {
      const bo = () => { s.offAny(nghe); hong(new Error(`no ${su}`)); };
      const nghe = () => { s.offAny(nghe); han.removeEventListener('abort', bo); xong(); };
      han.addEventListener('abort', bo, { once: true });
      s.onAny(nghe);
    });
  }
}

export async function choRoi(s) {
  if (s.connected) await once(s, 'disconnect', { signal: AbortSignal.timeout(HAN) });
}

// Asks `dung` again at each turn until it holds.
export async function choDen(dung, ten) {
  const han = Date.now() + HAN;
  while (!(await dung())) {
    if (Date.now() > han) throw new Error(`never: ${ten}`);
    await new Promise((xong) => { setImmediate(xong); });
  }
}

export const moMay = (s, ma = '', the = THE) => s.hoi('may:mo', { pb: 1, ma, the });
export const goi = (s, ma) => s.hoi('khach:goi', { pb: 1, ma });

// A host, a controller and the session between them.
export async function moPhien(mayA, mayB = mayA) {
  const may = await mayA.noi();
  const khach = await mayB.noi();
  const { ma } = await moMay(may);
  const { phien } = await goi(khach, ma);
  await cho(may, 'may:khach');
  return { may, khach, ma, phien };
}
