// The controller's pointer: where the picture lies, which point of it is meant, wheel units, merging, fingers.
import assert from 'node:assert/strict';
import test from 'node:test';
import { taoCham } from '../../giao-dien/nguon/khach/cham.js';
import { doiCuon, taoChuot } from '../../giao-dien/nguon/khach/chuot.js';
import { THUC, VUA, caoCan, dayMep, taoKhungNhin } from '../../giao-dien/nguon/khach/khung-nhin.js';

function nhin(rongO, caoO, rongHinh, caoHinh, them = {}) {
  const n = taoKhungNhin();
  n.doi({ rongO, caoO, rongHinh, caoHinh, tiLe: 1, ...them });
  return n;
}

test('the picture in the view', () => {
  for (const [ten, n, x, y, rong, cao] of [
    ['bars above and below', nhin(1280, 800, 1920, 1080), 0, 40, 1280, 720],
    ['bars left and right', nhin(1280, 720, 1280, 1024), 190, 0, 900, 720],
    ['a phone held upright', nhin(390, 700, 1920, 1080, { tiLe: 3 }), 0, 240.3333, 390, 219.3333],
    ['a small picture is enlarged to fit', nhin(3840, 2160, 1280, 720), 0, 0, 3840, 2160],
    ['1:1 in device pixels, in the middle', nhin(1280, 800, 1920, 1080, { che: THUC, tiLe: 2 }), 160, 130, 960, 540],
    ['1:1 larger than the view begins at the corner', nhin(1000, 800, 1920, 1080, { che: THUC }), 0, 0, 1920, 1080],
  ]) {
    const h = n.hinhChuNhat();
    for (const [k, v] of Object.entries({ x, y, rong, cao })) assert.ok(Math.abs(h[k] - v) < 0.001, `${ten}: ${k} ${h[k]}`);
  }
  assert.equal(nhin(100, 100, 0, 0).hinhChuNhat(), null);
  const le = nhin(1001, 801, 1333, 777, { tiLe: 1.25 }).hinhChuNhat();
  for (const v of Object.values(le)) assert.ok(Math.abs(v * 1.25 - Math.round(v * 1.25)) < 1e-9, 'edges lie on device pixels');
});

test('the point under the pointer', () => {
  const n = nhin(1280, 800, 1920, 1080);
  assert.deepEqual(n.phan(640, 400), { x: 0.5, y: 0.5 });
  assert.deepEqual(n.phan(0, 40), { x: 0, y: 0 });
  assert.deepEqual(n.phan(1280, 760), { x: 1, y: 1 });
  assert.equal(n.phan(640, 20), null, 'in the bar');
  assert.deepEqual(n.phan(-50, 900, true), { x: 0, y: 1 }, 'a drag goes on at the edge');
  const t = nhin(1000, 800, 1920, 1080, { che: THUC });
  t.keo(-920, -280);
  assert.deepEqual(t.phan(1000, 800), { x: 1, y: 1 }, 'scrolled to the far corner');
  t.keo(-500, -500);
  assert.deepEqual(t.phan(1000, 800), { x: 1, y: 1 }, 'and no further');
  t.doi({ rongO: 2000, caoO: 1200 });
  assert.deepEqual(t.phan(1000, 600), { x: 0.5, y: 0.5 }, 'a larger window shows all of it in the middle');
});

test('enlarging keeps what is under the fingers under them, between 1 and 6', () => {
  const n = nhin(400, 300, 1600, 1200);
  const truoc = n.phan(300, 100);
  n.phongTai(3, 300, 100);
  const sau = n.phan(300, 100);
  assert.ok(Math.abs(truoc.x - sau.x) < 0.002 && Math.abs(truoc.y - sau.y) < 0.002);
  assert.equal(n.tranRa(), true);
  n.phongTai(99, 0, 0);
  assert.equal(n.phong, 6);
  n.phongTai(0.1, 0, 0);
  assert.deepEqual([n.phong, n.hinhChuNhat().x, n.tranRa()], [1, 0, false]);
});

test('edges push, and how many lines a view can use', () => {
  assert.deepEqual(dayMep(500, 400, 1000, 800), { dx: 0, dy: 0 });
  const goc = dayMep(0, 800, 1000, 800);
  assert.ok(goc.dx > 0 && goc.dy < 0);
  assert.deepEqual(dayMep(-5, 900, 1000, 800), { dx: 0, dy: 0 }, 'outside it is somebody else’s');
  const o = (rongO, caoO, tiLe = 1, phong = 1) => ({ rongO, caoO, rongHinh: 1920, caoHinh: 1080, tiLe, phong });
  for (const [ten, net, che, nhinO, mong] of [
    ['a desktop', 0, VUA, o(2000, 800), 800], ['a phone held upright', 0, VUA, o(390, 760, 3), 659], ['… and enlarged', 0, VUA, o(390, 760, 3, 3), 1975],
    ['more than any host has', 0, VUA, o(3840, 2160, 2), 2880], ['a strip', 0, VUA, o(90, 50), 360], ['1:1', 0, THUC, o(300, 300), 2880],
    ['asked for', 1080, THUC, o(300, 300), 1080], ['no picture yet', 0, VUA, { rongO: 1600, caoO: 1200 }, 900],
  ]) assert.equal(caoCan(net, che, nhinO), mong, ten);
});

test('wheels: a notch is 120 whatever the engine calls it, a touchpad stays smooth', () => {
  for (const [ten, e, dx, dy] of [
    ['Chromium, one notch down', { deltaMode: 0, deltaX: 0, deltaY: 100, wheelDeltaX: 0, wheelDeltaY: -120 }, 0, 120],
    ['… scaled by the screen', { deltaMode: 0, deltaX: 0, deltaY: 66.6, wheelDeltaX: 0, wheelDeltaY: -120 }, 0, 120],
    ['Chromium, two notches up', { deltaMode: 0, deltaX: 0, deltaY: -200, wheelDeltaX: 0, wheelDeltaY: 240 }, 0, -240],
    ['Firefox, three lines', { deltaMode: 1, deltaX: 0, deltaY: 3 }, 0, 120],
    ['to the right', { deltaMode: 1, deltaX: 3, deltaY: 0 }, 120, 0],
    ['pages', { deltaMode: 2, deltaX: 0, deltaY: -1 }, 0, -800],
    ['a touchpad whose step looks like a notch', { deltaMode: 0, deltaX: 0, deltaY: 40, wheelDeltaX: 0, wheelDeltaY: -120 }, 0, 40],
    ['a touchpad', { deltaMode: 0, deltaX: 1.5, deltaY: -7.25, wheelDeltaX: -4, wheelDeltaY: 21 }, 1.5, -7.25],
  ]) assert.deepEqual(doiCuon(e), { dx, dy }, ten);
});

function chuot() {
  const nhat = [];
  const khung = [];
  let tac = false;
  const c = taoChuot({ gui: (l) => nhat.push(`${l.t.slice(6)} ${l.x},${l.y}${l.button ? ` ${l.button}` : ''}${l.dy === undefined ? '' : ` ${l.dx}/${l.dy}`}`), cham: () => tac, moiKhung: (f) => khung.push(f) });
  return { c, lay: () => nhat.splice(0), veKhung: () => khung.splice(0).forEach((f) => f()), tac: (b) => { tac = b; } };
}
const p = (x, y) => ({ x, y });

test('moves of one frame are one; the place of a button is always right', () => {
  const { c, lay, veKhung } = chuot();
  c.diDen(p(0.1, 0.1));
  c.diDen(p(0.2, 0.2));
  c.diDen(p(0.3, 0.3));
  assert.deepEqual(lay(), ['move 0.1,0.1']);
  veKhung();
  assert.deepEqual(lay(), ['move 0.3,0.3']);
  c.diDen(p(0.4, 0.4));
  c.xuong(0, p(0.123456789, 0.5));
  assert.deepEqual(lay(), ['move 0.12346,0.5', 'down 0.12346,0.5 left']);
  veKhung();
  assert.deepEqual(lay(), [], 'the older place does not come after it');
  c.diDen(null);
  c.len(0, p(0.2, 0.5));
  assert.deepEqual(lay(), ['move 0.2,0.5', 'up 0.2,0.5 left']);
});

test('a channel that is behind gets buttons but no moves, then the last one', () => {
  const { c, lay, veKhung, tac } = chuot();
  tac(true);
  c.diDen(p(0.1, 0.1));
  veKhung();
  c.diDen(p(0.2, 0.2));
  veKhung();
  assert.deepEqual(lay(), []);
  c.xuong(2, p(0.25, 0.2));
  c.len(2, p(0.25, 0.2));
  assert.deepEqual(lay(), ['move 0.25,0.2', 'down 0.25,0.2 right', 'up 0.25,0.2 right']);
  c.diDen(p(0.3, 0.2));
  tac(false);
  veKhung();
  assert.deepEqual(lay(), ['move 0.3,0.2']);
});

test('what is down follows from what the event says: several buttons, a release that was missed, outside presses', () => {
  const { c, lay } = chuot();
  c.theoNut(1, p(0.5, 0.5), p(0.5, 0.5));
  c.theoNut(3, p(0.5, 0.5), p(0.5, 0.5));
  c.theoNut(4, p(0.6, 0.5), p(0.6, 0.5));
  assert.deepEqual(lay().filter((l) => !l.startsWith('move')), ['down 0.5,0.5 left', 'down 0.5,0.5 right', 'up 0.6,0.5 left', 'up 0.6,0.5 right', 'down 0.6,0.5 middle']);
  c.nhaHet();
  assert.deepEqual(lay(), ['up 0.6,0.5 middle']);
  c.theoNut(1, null, p(0, 0.5));
  assert.deepEqual([lay(), c.dangKeo], [[], false], 'a press beside the picture is not one in it');
});

test('scrolling adds up within a frame, keeps fractions, and nothing is lost while the channel is behind', () => {
  const { c, lay, veKhung, tac } = chuot();
  c.cuonTai(p(0.5, 0.5), { dx: 0, dy: 0.6 });
  c.cuonTai(p(0.5, 0.5), { dx: 0, dy: 0.6 });
  veKhung();
  assert.deepEqual(lay(), ['wheel 0.5,0.5 0/1']);
  tac(true);
  c.cuonTai(p(0.5, 0.5), { dx: -3, dy: 120 });
  c.cuonTai(p(0.5, 0.5), { dx: 0, dy: 120 });
  veKhung();
  assert.deepEqual(lay(), []);
  tac(false);
  veKhung();
  assert.deepEqual(lay(), ['wheel 0.5,0.5 -3/240']);
  c.cuonTai(null, { dx: 0, dy: 9 });
  assert.deepEqual(lay(), []);
});

function cham(them = {}) {
  const t = chuot();
  const n = nhin(400, 300, 1600, 1200);
  const hen = [];
  let gio = 0;
  const c = taoCham({
    chuot: t.c, nhin: { phan: n.phan, keo: n.keo, phongTai: n.phongTai, tranRa: n.tranRa, get phong() { return n.phong; } }, khiDoi() {}, luc: () => gio,
    hen: { dat: (f) => hen.push(f) - 1, huy: (i) => { hen[i] = null; } }, ...them,
  });
  return { c, n, lay: () => t.lay().filter((l) => !l.startsWith('move')), veKhung: t.veKhung, lau: () => hen.splice(0).forEach((f) => f?.()), qua: (ms) => { gio += ms; } };
}

test('fingers: tap, double tap in one place, long press, drag', () => {
  const { c, lay, lau, qua } = cham();
  c.xuong(1, 200, 150);
  c.di(1, 204, 152);
  c.len(1, 204, 152);
  assert.deepEqual(lay(), ['down 0.5,0.5 left', 'up 0.5,0.5 left']);
  qua(200);
  c.xuong(2, 212, 158);
  c.len(2, 212, 158);
  assert.deepEqual(lay(), ['down 0.5,0.5 left', 'up 0.5,0.5 left'], 'the second tap lands where the first did');
  qua(2000);
  c.xuong(1, 100, 75);
  lau();
  c.di(1, 200, 75);
  c.len(1, 200, 75);
  assert.deepEqual(lay(), ['down 0.25,0.25 right', 'up 0.25,0.25 right'], 'and then nothing more');
  c.xuong(1, 100, 75);
  c.di(1, 200, 75);
  c.di(1, 500, 75);
  c.len(1, 500, 75);
  lau();
  assert.deepEqual(lay(), ['down 0.25,0.25 left', 'up 1,0.25 left']);
  c.xuong(1, 100, 75);
  c.di(1, 200, 75);
  c.huy();
  assert.deepEqual(lay(), ['down 0.25,0.25 left', 'up 0.5,0.25 left'], 'the system took the finger away');
});

test('two fingers: together they scroll the host, apart they enlarge the view, and one finger then moves it', () => {
  const { c, n, lay, veKhung, qua } = cham();
  const hai = (y1, y2) => {
    c.di(1, 150, y1);
    c.di(2, 250, y2);
  };
  c.xuong(1, 150, 150);
  c.xuong(2, 250, 150);
  hai(130, 130);
  hai(110, 110);
  veKhung();
  c.len(1, 150, 110);
  c.len(2, 250, 110);
  const cuon = lay().map((l) => Number(l.split('/')[1]));
  assert.equal(cuon.reduce((a, b) => a + b, 0) > 60, true, 'fingers up, page down');
  assert.equal(n.phong, 1);
  c.xuong(1, 190, 150);
  c.xuong(2, 210, 150);
  c.di(1, 150, 150);
  c.di(2, 250, 150);
  c.len(2, 250, 150);
  c.di(1, 100, 150);
  c.len(1, 100, 150);
  assert.deepEqual(lay(), []);
  assert.ok(n.phong > 2);
  const truoc = n.hinhChuNhat().x;
  qua(5000);
  c.xuong(1, 200, 150);
  c.di(1, 240, 150);
  c.len(1, 240, 150);
  assert.deepEqual([lay(), n.hinhChuNhat().x], [[], truoc + 40]);
  c.xuong(1, 200, 150); // tap, and at once a drag
  c.len(1, 200, 150);
  c.xuong(1, 200, 150);
  c.di(1, 260, 150);
  c.len(1, 260, 150);
  assert.deepEqual(lay().map((l) => l.split(' ')[0]), ['down', 'up', 'down', 'up']);
});

test('view only: fingers still enlarge, and press nothing', () => {
  const { c, n, lay, lau } = cham({ duocGui: () => false });
  c.xuong(1, 200, 150);
  c.len(1, 200, 150);
  c.xuong(1, 200, 150);
  lau();
  c.xuong(2, 220, 150);
  c.di(2, 380, 150);
  assert.deepEqual(lay(), []);
  assert.ok(n.phong > 1);
});
