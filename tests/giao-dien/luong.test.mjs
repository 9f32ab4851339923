// The host's picture: taking the stream apart, drawing, sending again.
import assert from 'node:assert/strict';
import test from 'node:test';
import { taoLuongHinh } from '../../giao-dien/nguon/may/luong-hinh.js';
import { taoTachMjpeg } from '../../giao-dien/nguon/may/tach-mjpeg.js';

const byte = (chu) => new TextEncoder().encode(chu);
const phan = (anh) => Buffer.concat([byte(`--khungcuatoi\r\nContent-Type: image/jpeg\r\nContent-Length: ${anh.length}\r\n\r\n`), anh, byte('\r\n')]);

test('pictures come out whole wherever the stream is cut', () => {
  const cac = [byte('\r\n\r\n--khungcuatoi'), Uint8Array.of(255, 216, 13, 10, 13, 10), new Uint8Array(70000).fill(7)];
  const het = Buffer.concat(cac.map(phan));
  const dau = phan(cac[0]).length + phan(cac[1]).length + 80; // the cuts that matter fall before the third one's body
  for (let cat = 0; cat <= dau; cat++) {
    const ra = [];
    const tach = taoTachMjpeg((anh) => ra.push(anh));
    tach.nhan(het.subarray(0, cat));
    tach.nhan(het.subarray(cat));
    assert.deepEqual(ra.map((a) => Buffer.compare(a, cac[ra.indexOf(a)])), [0, 0, 0], `cut at ${cat}`);
  }
  const tungByte = [];
  const tach = taoTachMjpeg((anh) => tungByte.push(anh.length));
  for (const b of het) tach.nhan(Uint8Array.of(b));
  assert.deepEqual(tungByte, cac.map((a) => a.length));
});

test('a stream that is not one is refused: no length, zero, too much, a head without end', () => {
  for (const dau of ['--x\r\n\r\n', '--x\r\nContent-Length: 0\r\n\r\n', '--x\r\nContent-Length: 999999999\r\n\r\n', 'x'.repeat(5000)]) {
    assert.throws(() => taoTachMjpeg(() => {}).nhan(byte(dau)), /mjpeg/);
  }
});

function taoLuong(t, soCach = 2) {
  t.mock.timers.enable({ apis: ['setTimeout', 'setInterval'] });
  let gio = 0;
  t.mock.method(performance, 'now', () => gio);
  const mo = []; // [way, address, khi]
  const track = { khung: 0, requestFrame() { this.khung += 1; } };
  const canvas = { width: 1, height: 1, getContext: () => ({ transferFromImageBitmap: () => {} }), captureStream: () => ({ getVideoTracks: () => [track] }) };
  const docCach = Array.from({ length: soCach }, (_, i) => (duong, khi) => {
    const muc = { cach: i, duong, khi, dong: false };
    mo.push(muc);
    return () => { muc.dong = true; };
  });
  const luong = taoLuongHinh({ khiDoi: () => {}, canvas, docCach, chup: async () => ({ close() {} }) });
  const qua = async (ms) => {
    for (let i = 0; i < ms; i += 50) {
      gio += 50;
      t.mock.timers.tick(50);
      await null; // a picture that is sent again has been copied
    }
  };
  return { luong, mo, track, canvas, qua };
}

test('a still screen is sent again, ever more seldom, and often again for a newcomer', async (t) => {
  const { luong, mo, track, canvas, qua } = taoLuong(t);
  assert.equal(luong.layTrack(), track);
  luong.mo('a');
  await qua(2000);
  assert.equal(track.khung, 0, 'nothing to send before the first picture');
  mo[0].khi.hinh({}, 640, 480);
  assert.deepEqual([canvas.width, canvas.height, track.khung], [640, 480, 1]);
  await qua(1500);
  const dau = track.khung;
  assert.ok(dau >= 4, `${dau}`);
  await qua(5000);
  assert.ok(track.khung - dau >= 4 && track.khung - dau <= 6, `${track.khung - dau}`);
  const truoc = track.khung;
  luong.nguoiMoi();
  await qua(1100);
  assert.ok(track.khung - truoc >= 3, `${track.khung - truoc}`);
  luong.mo('');
  assert.equal(mo[0].dong, true);
  const cuoi = track.khung;
  await qua(3000);
  assert.equal(track.khung, cuoi);
});

test('the other way is tried at once when one gives no picture; a picture that breaks off is read again the same way', async (t) => {
  const { luong, mo, qua } = taoLuong(t);
  luong.mo('a');
  mo[0].khi.het('loi');
  await qua(50);
  assert.deepEqual(mo.map((m) => m.cach), [0, 1]);
  mo[1].khi.hinh({}, 10, 10);
  assert.equal(luong.coHinh, true);
  mo[1].khi.het('het');
  assert.equal(luong.coHinh, false);
  await qua(1100);
  assert.deepEqual(mo.map((m) => m.cach), [0, 1, 1]);
  for (let i = 0; i < 4; i++) {
    mo.at(-1).khi.het('loi');
    await qua(1100);
  }
  assert.equal(luong.hong, true, 'no way works: the controllers are told');
  luong.mo('b');
  assert.equal(luong.hong, false);
});
