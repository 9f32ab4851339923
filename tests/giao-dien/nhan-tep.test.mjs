// The host's end of the file channel.
import assert from 'node:assert/strict';
import test from 'node:test';
import { cungTen, tenTai } from '../../giao-dien/nguon/may/luu-tep.js';
import { duongHop, taoNhanTep } from '../../giao-dien/nguon/may/nhan-tep.js';
import { lang, taoHen } from './vai-may.mjs';

function manh(id, byte) {
  const ra = new Uint8Array(4 + byte.length);
  new DataView(ra.buffer).setUint32(0, id);
  ra.set(byte, 4);
  return ra.buffer;
}

function tao(luu = {}) {
  const t = { ra: [], kho: [], hen: taoHen() };
  t.nhan = taoNhanTep({
    gui: (chu) => t.ra.push(JSON.parse(chu)), hen: t.hen,
    luu: {
      duoc: () => '', thuMuc: () => true,
      ghi: async (duong, blob) => { t.kho.push(['ghi', duong, new Uint8Array(await blob.arrayBuffer())]); return ''; },
      tai: async (duong, blob) => { t.kho.push(['tai', duong, blob.size]); return ''; }, ...luu,
    },
  });
  t.noi = (vat) => t.nhan.nhan(JSON.stringify(vat));
  t.lay = () => t.ra.splice(0);
  t.xong = async (id) => { t.noi({ l: 'xong', id }); for (let i = 0; i < 8; i++) await lang(); };
  return t;
}

test('one file after the other, acknowledged as they come, written whole', async () => {
  const t = tao();
  const noiDung = Uint8Array.from({ length: 600000 }, (_, i) => i * 7);
  t.noi({ l: 'tep', id: 1, duong: 'ảnh/bãi biển.txt', co: noiDung.length });
  t.noi({ l: 'tep', id: 2, duong: 'rỗng', co: 0 });
  assert.deepEqual(t.lay(), [{ l: 'gui', id: 1 }]);
  for (let i = 0; i < noiDung.length; i += 16384) t.nhan.nhan(manh(1, noiDung.subarray(i, i + 16384)));
  const xacNhan = t.lay();
  assert.deepEqual(xacNhan.map((x) => x.l), ['nhan', 'nhan', 'nhan']);
  assert.equal(xacNhan.at(-1).byte, noiDung.length);
  assert.ok(xacNhan[0].byte <= 262144 + 16384);
  await t.xong(1);
  assert.deepEqual(t.lay(), [{ l: 'roi', id: 1, noi: 'thu-muc' }, { l: 'gui', id: 2 }]);
  assert.deepEqual([t.kho[0][1], Buffer.compare(t.kho[0][2], noiDung)], ['ảnh/bãi biển.txt', 0]);
  await t.xong(2);
  assert.deepEqual(t.lay(), [{ l: 'roi', id: 2, noi: 'thu-muc' }]);
});

test('what goes wrong is said, keeps nothing, and the next file follows', async () => {
  const cac = [
    ['nhanTep.thieu', {}, async (t) => { t.nhan.nhan(manh(1, [1, 2])); await t.xong(1); }],
    ['nhanTep.thua', {}, async (t) => t.nhan.nhan(manh(1, new Uint8Array(11)))],
    ['nhanTep.duong', { ghi: async () => 'nhanTep.duong' }, async (t) => { t.nhan.nhan(manh(1, new Uint8Array(10))); await t.xong(1); }],
    ['nhanTep.khongLuu', { thuMuc: () => false, tai: async () => { throw new Error('full'); } }, async (t) => { t.nhan.nhan(manh(1, new Uint8Array(10))); await t.xong(1); }],
  ];
  for (const [ly, luu, viec] of cac) {
    const t = tao(luu);
    t.noi({ l: 'tep', id: 1, duong: 'a', co: 10 });
    t.noi({ l: 'tep', id: 2, duong: 'b', co: 0 });
    await viec(t);
    assert.deepEqual(t.lay().filter((x) => x.l !== 'nhan'), [{ l: 'gui', id: 1 }, { l: 'hong', id: 1, ly }, { l: 'gui', id: 2 }], ly);
    assert.deepEqual(t.kho, []);
  }
});

test('too large for the endpoint, no folder, or one that cannot be reached: saved as a download', async () => {
  const lon = tao();
  lon.noi({ l: 'tep', id: 1, duong: 'phim', co: 64 * 1024 * 1024 + 1 });
  const khoi = new Uint8Array(1024 * 1024);
  for (let i = 0; i < 64; i++) lon.nhan.nhan(manh(1, khoi));
  lon.nhan.nhan(manh(1, [1]));
  await lon.xong(1);
  assert.deepEqual([lon.lay().at(-1), lon.kho], [{ l: 'roi', id: 1, noi: 'tai' }, [['tai', 'phim', 64 * 1024 * 1024 + 1]]]);
  for (const luu of [{ thuMuc: () => false }, { ghi: async () => { throw new TypeError('closed'); } }]) {
    const t = tao(luu);
    t.noi({ l: 'tep', id: 1, duong: 'a/b', co: 1 });
    t.nhan.nhan(manh(1, [9]));
    await t.xong(1);
    assert.deepEqual([t.lay().at(-1).noi, t.kho], ['tai', [['tai', 'a/b', 1]]]);
  }
  assert.equal(tenTai('a//b c/d.txt'), 'a_b c_d.txt');
});

test('while a file is being stored the other side is told that it is not forgotten', async () => {
  let xong;
  const t = tao({ ghi: () => new Promise((x) => { xong = x; }) });
  t.noi({ l: 'tep', id: 1, duong: 'a', co: 0 });
  await t.xong(1);
  t.lay();
  t.hen.chay(65000);
  assert.deepEqual(t.lay(), [{ l: 'nhan', id: 1, byte: 0 }, { l: 'nhan', id: 1, byte: 0 }]);
  xong('');
  await lang();
  assert.deepEqual([t.lay(), t.hen.con], [[{ l: 'roi', id: 1, noi: 'thu-muc' }], 0]);
});

test('another download that ends meanwhile is not taken for ours', () => {
  for (const [xin, den] of [['a_b.txt', 'a_b.txt'], ['a_b.txt', 'a_b 2.txt'], ['.bashrc', '_bashrc'], ['x'.repeat(300), 'x'.repeat(250)], ['🙂.png', '🙂.png'], ['ảnh.jpg', 'ảnh.jpg']]) assert.equal(cungTen(xin, den), true, xin);
  for (const [xin, den] of [['a_b.txt', 'hoá đơn.pdf'], ['phim.mkv', 'nhạc.mp3']]) assert.equal(cungTen(xin, den), false, den);
});

test('taken back by either side, at any moment', async () => {
  const t = tao();
  t.noi({ l: 'tep', id: 1, duong: 'a', co: 10 });
  t.noi({ l: 'tep', id: 2, duong: 'b', co: 10 });
  t.noi({ l: 'tep', id: 3, duong: 'c', co: 10 });
  t.noi({ l: 'huy', id: 2 });
  t.noi({ l: 'huy', id: 1 });
  t.nhan.nhan(manh(1, new Uint8Array(10))); // still under way
  assert.deepEqual(t.lay(), [{ l: 'gui', id: 1 }, { l: 'gui', id: 3 }]);
  t.noi({ l: 'tep', id: 4, duong: 'd', co: 10 });
  t.nhan.huy();
  assert.deepEqual(t.lay(), [{ l: 'huy', id: 3 }, { l: 'huy', id: 4 }]);
  assert.equal(t.nhan.dangNhan, null);
  t.noi({ l: 'tep', id: 5, duong: 'e', co: 0 });
  assert.deepEqual(t.lay(), [{ l: 'gui', id: 5 }]);
  t.nhan.dong();
  await t.xong(5);
  assert.deepEqual([t.lay(), t.kho], [[], []]);
});

test('switched off: what was announced before is not taken either, what is being written stays', async () => {
  let ly = '';
  let ghiXong;
  const t = tao({ duoc: () => ly, ghi: () => new Promise((xong) => { ghiXong = () => xong(''); }) });
  for (const id of [1, 2, 3]) t.noi({ l: 'tep', id, duong: `t${id}`, co: 0 });
  await t.xong(1);
  ly = 'nhanTep.tat';
  t.nhan.theo();
  ghiXong();
  await lang();
  assert.deepEqual(t.lay(), [{ l: 'gui', id: 1 }, { l: 'hong', id: 2, ly }, { l: 'hong', id: 3, ly }, { l: 'roi', id: 1, noi: 'thu-muc' }]);
  assert.equal(t.nhan.dangNhan, null);
  ly = '';
  t.noi({ l: 'tep', id: 4, duong: 'a', co: 0 });
  t.noi({ l: 'tep', id: 5, duong: 'b', co: 0 });
  ly = 'nhanTep.tat';
  t.noi({ l: 'huy', id: 4 }); // without a word of the page
  assert.deepEqual(t.lay(), [{ l: 'gui', id: 4 }, { l: 'hong', id: 5, ly }]);
});

test('paths that the endpoint would refuse, and messages that are none', () => {
  const t = tao();
  for (const duong of ['', '/a', '~a', 'a/../b', '.', 'a/./b', '//', 'x'.repeat(1024), 'a\0b', 7]) {
    assert.equal(duongHop(duong), false, JSON.stringify(duong).slice(0, 20));
  }
  for (const duong of ['a', 'a//b', '..a/b..', 'é'.repeat(1023), 'ô tô\\x:y']) assert.equal(duongHop(duong), true);
  t.noi({ l: 'tep', id: 1, duong: '../a', co: 1 });
  assert.deepEqual(t.lay(), [{ l: 'hong', id: 1, ly: 'nhanTep.duong' }]);
  for (const tin of ['{', 'null', '[]', '{"l":"constructor"}', '{"l":"tep","id":-1,"duong":"a","co":1}', '{"l":"tep","id":1,"duong":"a","co":1.5}', new ArrayBuffer(2)]) t.nhan.nhan(tin);
  assert.deepEqual(t.lay(), []);
  t.noi({ l: 'tep', id: 1, duong: 'a', co: 4 * 1024 ** 3 + 1 });
  assert.deepEqual(t.lay(), [{ l: 'hong', id: 1, ly: 'nhanTep.lon' }]);
  const tat = tao({ duoc: () => 'nhanTep.tat' });
  tat.noi({ l: 'tep', id: 1, duong: 'a', co: 1 });
  assert.deepEqual(tat.lay(), [{ l: 'hong', id: 1, ly: 'nhanTep.tat' }]);
});
