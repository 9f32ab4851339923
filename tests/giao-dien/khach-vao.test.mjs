// What people type into the form, and sizes as they read them.
import assert from 'node:assert/strict';
import test from 'node:test';
import { docCo } from '../../giao-dien/nguon/khach/bang-tep.js';
import { chuThoat } from '../../giao-dien/nguon/khach/thanh.js';
import { docDiaChi } from '../../giao-dien/nguon/khach/vao.js';

test('a server’s address without its scheme: this network speaks http, the rest https', () => {
  for (const [go, mong] of [
    ['', ''], ['  ', ''], ['https://a.example/', 'https://a.example'], ['HTTP://a.example', 'HTTP://a.example'], ['a.example', 'https://a.example'],
    ['a.example:8443', 'https://a.example:8443'], ['localhost', 'http://localhost'], ['localhost:3000/', 'http://localhost:3000'], ['192.168.1.9:3000', 'http://192.168.1.9:3000'],
    ['[fd00::1]:3000', 'http://[fd00::1]:3000'], ['may-nha.local', 'http://may-nha.local'], ['nas:3000', 'http://nas:3000'], ['192.168.1.9.evil.example', 'https://192.168.1.9.evil.example'],
  ]) assert.equal(docDiaChi(go), mong, go);
});

test('sizes in the page’s language', () => {
  for (const [byte, ma, mong] of [[0, 'vi', '0 B'], [999, 'vi', '999 B'], [1000, 'en', '1 kB'], [1550000, 'en', '1.6 MB'], [1550000, 'vi', '1,6 MB'], [3e12, 'en', '3,000 GB']]) {
    assert.equal(docCo(byte, ma), mong);
  }
  assert.notEqual(chuThoat(true), chuThoat(false));
});
