// A rendezvous server that cheats: it serves the real one's page, and alters letters of the handshake as they pass.
import { createServer } from 'node:http';
import { once } from 'node:events';
import { can } from './the-gioi.mjs';

const { Server } = can('socket.io');
const { io } = can('socket.io-client');

// `doi(tin, chieu)` gives the letter to pass on; chieu is 'len' (to the host) or 'xuong' (to the controller).
export async function moMayChuXau(gocThat, diaChi, doi) {
  const http = createServer(async (hoi, dap) => {
    const that = await fetch(gocThat + hoi.url);
    dap.writeHead(that.status, { 'content-type': that.headers.get('content-type') });
    dap.end(Buffer.from(await that.arrayBuffer()));
  });
  const cua = new Server(http, { serveClient: false });
  const cacNoi = [];
  cua.on('connection', (khach) => {
    const len = io(gocThat, { transports: ['websocket'], forceNew: true });
    cacNoi.push(len);
    const thay = (d, chieu) => (typeof d?.tin === 'string' ? { ...d, tin: doi(d.tin, chieu) } : d);
    khach.onAny((ten, d, dap) => len.emit(ten, thay(d, 'len'), dap));
    len.onAny((ten, d) => khach.emit(ten, thay(d, 'xuong')));
    khach.on('disconnect', () => len.close());
  });
  http.listen(0, diaChi);
  await once(http, 'listening');
  return {
    goc: `http://${diaChi}:${http.address().port}`,
    dong: async () => {
      for (const len of cacNoi) len.close();
      await cua.close();
    },
  };
}
