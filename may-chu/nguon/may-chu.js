// The whole server, put together and taken apart again.
import { readFileSync } from 'node:fs';
import { createServer } from 'node:http';
import { createServer as createHttps } from 'node:https';
import { Server } from 'socket.io';
import { LoiCaiDat } from './cai-dat.js';
import { Cua, GOC_NOI_BO } from './cua.js';
import { Cum } from './cum.js';
import { GioiHanDiaChi } from './gioi-han.js';
import { Hen } from './hen.js';
import { PB } from './kiem-tin.js';
import { taoPhucVu } from './phuc-vu.js';
import { noiRedis } from './redis.js';
import { SoMaBoNho, SoMaRedis } from './so-ma.js';
import { moStun } from './stun.js';

const QUET = 20_000; // ms between two sweeps
const HAN_NOT = 1000; // ms for requests under way at the end
const HAN_XIN = { headersTimeout: 10_000, requestTimeout: 60_000, connectionsCheckingInterval: 5_000 }; // ms to say what is wanted
const LON_NHAT = 512 * 1024; // bytes of a packet: a letter of the longest kind, however it is escaped

// `dongHo`: milliseconds that never go back. `quet` is what a timer runs now and then; tests run it themselves.
export async function moMayChu(caiDat, { nhatKy, dongHo = () => performance.now(), choTra } = {}) {
  const redis = caiDat.redisUrl ? await noiRedis(caiDat.redisUrl, nhatKy) : null;
  const cacDong = redis ? [redis.dong] : [];
  try {
    return await dungMayChu({ caiDat, nhatKy, dongHo, choTra, redis, cacDong });
  } catch (loi) {
    for (const dong of cacDong.reverse()) await dong();
    throw loi;
  }
}

async function dungMayChu({ caiDat, nhatKy, dongHo, choTra, redis, cacDong }) {
  const gioiHanStun = new GioiHanDiaChi({ dung: 50, moiGiay: 10, dongHo });
  const stun = caiDat.stunCong && await moThu(caiDat.stunCong, (cong) => moStun({ diaChi: caiDat.diaChi, cong, gioiHan: gioiHanStun }));
  if (stun) cacDong.push(stun.dong);

  let hen = null;
  const sanSang = () => redis === null || redis.sanSang();
  const sucKhoe = () => ({ tot: sanSang(), pb: PB, ketNoi: cua.tong, ...hen.so });
  const cua = new Cua({ caiDat, dongHo, nhatKy });
  const phucVu = taoPhucVu({ giaoDien: caiDat.giaoDien, sucKhoe, choXin: (yeuCau) => cua.choXin(yeuCau), nhatKy });
  const http = caiDat.chungChi
    ? createHttps({ ...docChungChi(caiDat), minVersion: 'TLSv1.2', handshakeTimeout: 10_000, ...HAN_XIN }, phucVu) : createServer(HAN_XIN, phucVu);

  http.maxConnections = 2 * caiDat.ketNoiToiDa; // a page takes more than one until it has its WebSocket
  http.on('connection', cua.nhanO);
  const io = new Server(http, {
    serveClient: false,
    maxHttpBufferSize: LON_NHAT,
    connectTimeout: 10_000,
    allowRequest: cua.xet,
    cors: { origin: GOC_NOI_BO },
    ...(redis && { adapter: redis.adapter }),
  });
  io.engine.on('connection', (ketNoi) => cua.dem(ketNoi));
  const soMa = redis ? new SoMaRedis(redis.lenh) : new SoMaBoNho({ dongHo });
  hen = new Hen({ io, soMa, caiDat, stunCong: stun ? stun.cong : null, dongHo, nhatKy, sanSang });
  if (redis) {
    hen.cum = new Cum(io.of('/'), { khiHoi: hen.khiHoi, choTra });
    cacDong.push(async () => hen.cum.dong());
  }
  io.on('connection', (socket) => hen.nhan(socket, cua.diaChi(socket.conn)));

  const { port } = await moThu(caiDat.cong, (cong) => ngheHttp(http, caiDat.diaChi, cong));
  cacDong.push(async () => {
    // Who has connected and says nothing would hold the end up.
    const cat = setTimeout(() => http.closeAllConnections(), HAN_NOT);
    await io.close();
    clearTimeout(cat);
    http.closeAllConnections();
  });
  const quet = async () => { nhatKy.tomTat(); await hen.quet(); };
  const nhip = setInterval(quet, QUET);
  return {
    cong: port,
    stunCong: stun ? stun.cong : null,
    quet,
    napChungChi: () => { if (caiDat.chungChi) http.setSecureContext({ ...docChungChi(caiDat), minVersion: 'TLSv1.2' }); },
    dong: async () => {
      clearInterval(nhip);
      for (const dong of cacDong.reverse()) await dong();
    },
  };
}

// With the port that is set, or with one of the system's choice where that is allowed.
async function moThu({ so, duPhong }, mo) {
  try {
    return await mo(so);
  } catch (loi) {
    if (duPhong && so !== 0 && loi.code === 'EADDRINUSE') return mo(0);
    throw loi;
  }
}

function ngheHttp(http, diaChi, cong) {
  return new Promise((xong, hong) => {
    http.once('error', hong);
    http.listen({ port: cong, ...(diaChi && { host: diaChi }) }, () => {
      http.off('error', hong);
      xong(http.address());
    });
  });
}

function docChungChi({ chungChi, khoa }) {
  try {
    return { cert: readFileSync(chungChi), key: readFileSync(khoa) };
  } catch (loi) {
    throw new LoiCaiDat(`CHUNG_CHI or KHOA cannot be read: ${loi.message}`);
  }
}
