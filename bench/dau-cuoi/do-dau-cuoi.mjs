// From one person's hand to the other's screen and back, in three networks on this machine:
//   TOVIRA_THU_MAN_HINH=1920x1080x24 TOVIRA_CHUONG_TRINH=build/bench/tovira \
//       tests/voi-man-hinh.sh --quan-ly-cua-so tests/dau-cuoi/khong-gian.sh node bench/dau-cuoi/do-dau-cuoi.mjs
// All clocks are this machine's one clock. Terminals at both ends count as part of the road, so the figures are upper bounds.
import { createReadStream } from 'node:fs';
import { open } from 'node:fs/promises';
import { join } from 'node:path';
import { setTimeout as nghi } from 'node:timers/promises';
import { timCuaSo } from '../../tests/dau-cuoi/ho/man-x.mjs';
import { NguoiDieuKhien } from '../../tests/dau-cuoi/ho/nguoi-dieu-khien.mjs';
import { San } from '../../tests/dau-cuoi/ho/san.mjs';
import { cho, ChuongTrinh, chayXong } from '../../tests/dau-cuoi/ho/the-gioi.mjs';

const MAN = { rong: 1920, cao: 1080 };
const [SO_BAM, SO_DOI, GIAY] = [100, 60, 10];
const phanVi = (cac, p) => cac.sort((a, b) => a - b)[Math.min(cac.length - 1, Math.floor(cac.length * p))];
const in2 = (ten, cac) => console.log(`${ten}: p50 ${phanVi(cac, 0.5).toFixed(1)} ms, p99 ${phanVi(cac, 0.99).toFixed(1)} ms (${cac.length})`);

// A terminal over the whole display whose program is ours: what we write it shows, what it sends we read.
async function moTerminal(tam) {
  const [vao, ra] = [join(tam, 'vao'), join(tam, 'ra')];
  await chayXong('may', 'mkfifo', vao, ra);
  const ct = new ChuongTrinh('may', 'xterm', ['-u8', '-T', 'do-toc', '-b', '0', '-fullscreen', '-fa', 'DejaVu Sans Mono', '-fs', '10',
    '-e', 'sh', '-c', 'stty raw -echo; cat "$0" & exec cat >"$1"', vao, ra]);
  const doc = createReadStream(ra);
  const viet = await open(vao, 'w');
  await cho('the terminal', () => timCuaSo('^do-toc$'));
  return { doc, viet: (chu) => viet.write(chu), tat: async () => { await viet.close(); await ct.tat(); doc.destroy(); } };
}

// Button presses: from the event in the controller's page to the terminal's program on the host.
async function doBam(san, nguoi, may) {
  const den = [];
  may.doc.on('data', (manh) => {
    const luc = performance.timeOrigin + performance.now();
    for (const dau of manh.toString().matchAll(/\x1b\[<0;\d+;\d+M/g)) if (dau) den.push(luc);
  });
  await may.viet('\x1b[?1000h\x1b[?1006h');
  await san.khach.chay(`() => {
    window.doBam = [];
    addEventListener('pointerdown', () => window.doBam.push(performance.timeOrigin + performance.now()), true);
  }`);
  for (let i = 0; i < SO_BAM; i++) {
    await nguoi.bam(500 + (i % 10) * 50, 500);
    await cho('the press', () => den.length > i);
  }
  await may.viet('\x1b[?1000l');
  const di = await san.khach.chay('() => window.doBam');
  return den.map((luc, i) => luc - di[i]);
}

// Watches one pixel of a video for its two colours; `doiMau` makes the next change and says when.
const THEO_DOI = `(chon) => new Promise((xong) => {
  const v = document.querySelector(chon);
  const but = new OffscreenCanvas(1, 1).getContext('2d', { willReadFrequently: true });
  window.doDoi = [];
  let truoc = null;
  const nhin = () => {
    but.drawImage(v, v.videoWidth / 2, v.videoHeight / 2, 1, 1, 0, 0, 1, 1);
    const sang = but.getImageData(0, 0, 1, 1).data[0] > 128;
    if (truoc !== null && sang !== truoc) window.doDoi.push(performance.timeOrigin + performance.now());
    truoc = sang;
    window.soKhung = (window.soKhung ?? 0) + 1;
    v.requestVideoFrameCallback(nhin);
  };
  nhin();
  xong();
})`;

async function doDoi(khach, doiMau) {
  const di = [];
  for (let i = 0; i < SO_DOI; i++) {
    di.push(await doiMau(i % 2 === 0));
    await cho('the change', () => khach.chay('(n) => window.doDoi.length >= n', i + 1));
    await nghi(80 + (i * 37) % 120); // no beat with any clock on the way
  }
  const den = await khach.chay('() => window.doDoi');
  return di.map((luc, i) => den[i] - luc);
}

// What the engine alone takes: a canvas to a video over a connection within one page.
const VONG = `async () => {
  const c = Object.assign(document.createElement('canvas'), { width: 1920, height: 1080 });
  const but = c.getContext('2d');
  const v = Object.assign(document.createElement('video'), { id: 'vong', muted: true, autoplay: true });
  document.body.append(v);
  const [a, b] = [new RTCPeerConnection(), new RTCPeerConnection()];
  a.onicecandidate = (e) => b.addIceCandidate(e.candidate);
  b.onicecandidate = (e) => a.addIceCandidate(e.candidate);
  b.ontrack = (e) => { v.srcObject = new MediaStream([e.track]); };
  const [t] = c.captureStream().getTracks();
  t.contentHint = 'detail';
  a.addTrack(t);
  await a.setLocalDescription(); await b.setRemoteDescription(a.localDescription);
  await b.setLocalDescription(); await a.setRemoteDescription(b.localDescription);
  let sang = false;
  const ve = () => { but.fillStyle = sang ? '#fff' : '#000'; but.fillRect(0, 0, 1920, 1080); };
  setInterval(ve, 30);
  window.doiMau = (moi) => { sang = moi; ve(); return performance.timeOrigin + performance.now(); };
  await new Promise((r) => { v.onplaying = r; });
}`;

const san = await San.mo({ chuongTrinh: process.env.TOVIRA_CHUONG_TRINH, trinhDuyet: { rong: 1960, cao: 1280 } });
try {
  const nguoi = new NguoiDieuKhien(san.khach, MAN);
  await san.goi(await san.docMa());
  await nguoi.choHinh();
  const may = await moTerminal(san.tam);
  await nghi(1500); // the first frames find their bit rate
  in2('Input: press in the controller to the terminal on the host', await doBam(san, nguoi, may));

  await may.viet('\x1b]11;#000000\x07\x1b[2J\x1b[?25l');
  await nghi(1000);
  await san.khach.chay(THEO_DOI, '#k-hinh');
  in2('Glass to glass: colour written on the host to pixels in the controller', await doDoi(san.khach, async (sang) => {
    const luc = performance.timeOrigin + performance.now();
    await may.viet(`\x1b]11;${sang ? '#ffffff' : '#000000'}\x07`);
    return luc;
  }));

  // Every line scrolls the whole display.
  const dong = 'Tovira 0123456789 abcdefghijklmnopqrstuvwxyz '.repeat(5).slice(0, 220);
  const cuoi = Date.now() + (GIAY + 2) * 1000;
  const cuon = (async () => { for (let i = 0; Date.now() < cuoi; i++) { await may.viet(`${i} ${dong}\r\n`); await nghi(16); } })();
  await nghi(1500);
  const dem = () => san.khach.chay(`() => [window.soKhung, performance.now(), document.getElementById('k-hinh').videoWidth, document.getElementById('k-hinh').videoHeight]`);
  const [truoc, sau] = [await dem(), await nghi(GIAY * 1000).then(dem)];
  await cuon;
  console.log(`Frames in the controller, scrolling text: ${((sau[0] - truoc[0]) * 1000 / (sau[1] - truoc[1])).toFixed(1)} a second at ${sau[2]} x ${sau[3]}`);
  await may.tat();

  await san.may.tat();
  await san.khach.toi(`${san.goc}/suc-khoe`);
  await san.khach.chay(VONG);
  await san.khach.chay(THEO_DOI, '#vong');
  in2('Limit: the same change within one page over a connection to itself', await doDoi(san.khach, (sang) => san.khach.chay('(sang) => window.doiMau(sang)', sang)));
} finally {
  await san.dong();
}
