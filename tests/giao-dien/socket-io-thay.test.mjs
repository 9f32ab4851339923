// The script that the host serves in place of the socket.io client, as it stands in the host's sources.
import assert from 'node:assert/strict';
import { readFileSync } from 'node:fs';
import test from 'node:test';
import vm from 'node:vm';

const nguon = readFileSync(new URL('../../macos/Sources/Tovira/SocketIoThay.hpp', import.meta.url), 'utf8');
const kichBan = nguon.match(/R"js\((.*)\)js"/s)[1];
const THONG_BAO = 'Đang chạy không có máy chủ';

// Runs the script in a page of its own; `hen` collects the timers it sets.
function nap() {
  const hen = [];
  const trang = { setTimeout: (ham, sau) => hen.push({ ham, sau }) };
  trang.window = trang;
  vm.runInNewContext(kichBan, trang);
  return { io: trang.io, hen };
}

test('it has the promised length and says what it is', () => {
  assert.equal(Buffer.byteLength(kichBan), 1296);
  const dong = kichBan.split('\n');
  assert.match(dong[0], /^\/\/ .*socket\.io/);
  assert.match(dong[1], /^\/\/ .*macos\/Sources\/Tovira\/GiaoDienKem/);
});

test('every call gives a fresh socket that is not connected', () => {
  const { io } = nap();
  const [a, b] = [io('https://x'), io()];
  assert.notEqual(a, b);
  assert.equal(a.connected, false);
  assert.equal(a.io.on('reconnect', () => assert.fail()), undefined);
  assert.equal(a.io.off(), undefined);
  for (const kq of [a.on('x', () => {}), a.once('x', () => {}), a.off('x'), a.emit('x'), a.disconnect()]) assert.equal(kq, a);
});

test('an acknowledgement is answered at once, anything else is not', () => {
  const o = nap().io();
  const nhan = [];
  o.on('x', () => assert.fail('nothing is ever sent')).emit('x', { a: 1 }, (tra) => nhan.push({ ...tra }));
  assert.deepEqual(nhan, [{ ok: false, error: THONG_BAO, code: 'khong_may_chu' }]);
  o.emit();
  o.emit('x', () => assert.fail('not the last argument'), 1);
});

test('connect_error reaches every handler one turn later, whatever they throw', () => {
  const { io, hen } = nap();
  const o = io();
  const nhan = [];
  assert.deepEqual(hen.map((h) => h.sau), [0]);
  o.on('connect_error', () => { throw new Error('hỏng'); });
  o.once('connect_error', (loi) => nhan.push(loi));
  o.on('connect', () => assert.fail());
  assert.equal(nhan.length, 0);
  hen[0].ham();
  assert.equal(nhan.length, 1);
  assert.equal(nhan[0].name, 'Error');
  assert.equal(nhan[0].message, THONG_BAO);
  // No handler at all, and event names that objects already know, harm nothing.
  const khong = nap();
  khong.io().on('constructor', () => {}).on('__proto__', () => {});
  khong.hen[0].ham();
});
