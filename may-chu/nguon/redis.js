// The Redis that several instances share: one connection for the registry, two for socket.io's adapter.
import { createAdapter } from '@socket.io/redis-adapter';
import { createClient } from '@redis/client';

const HAN_NOI = 5000; // ms for the first connection

// Throws when Redis cannot be reached at the start. Later losses are told in the log; meanwhile `sanSang()` is false and commands
// fail at once instead of waiting for its return.
export async function noiRedis(url, nhatKy) {
  const socket = url.startsWith('unix:') ? { path: url.slice('unix:'.length) } : {};
  const tuyChon = { ...(socket.path ? {} : { url }), socket: { ...socket, connectTimeout: HAN_NOI, reconnectStrategy: lui }, disableOfflineQueue: true };
  let daNoi = false;
  function lui(lan) {
    return daNoi ? Math.min(100 * 2 ** Math.min(lan, 6), 5000) : false;
  }
  const lenh = createClient(tuyChon);
  const phat = lenh.duplicate();
  const nghe = lenh.duplicate();
  const cac = [lenh, phat, nghe];
  for (const k of cac) k.on('error', (loi) => { if (daNoi && k === lenh) nhatKy.ghi('redis-mat', { loi: loi.code ?? loi.name }); });
  const dong = () => { for (const k of cac) if (k.isOpen) k.destroy(); };
  const hong = (await Promise.allSettled(cac.map((k) => k.connect()))).find((kq) => kq.status === 'rejected');
  if (hong) {
    dong();
    throw new Error(`REDIS_URL cannot be reached: ${hong.reason.code ?? hong.reason.message}`);
  }
  daNoi = true;
  lenh.on('ready', () => nhatKy.ghi('redis-lai'));
  // The adapter waits for nothing that it asks: what is lost with the connection shows in `sanSang`, and a subscription that was
  // never made leaves this instance unready for good.
  let dangKyDu = true;
  boQuaHong(phat, ['publish'], () => {});
  boQuaHong(nghe, ['unsubscribe', 'pUnsubscribe'], () => {});
  boQuaHong(nghe, ['subscribe', 'pSubscribe'], () => { dangKyDu = false; });
  return {
    lenh,
    adapter: createAdapter(phat, nghe),
    sanSang: () => dangKyDu && cac.every((k) => k.isReady),
    dong,
  };
}

function boQuaHong(k, cacTen, khiHong) {
  for (const ten of cacTen) {
    const goc = k[ten].bind(k);
    k[ten] = (...doi) => goc(...doi).catch(khiHong);
  }
}
