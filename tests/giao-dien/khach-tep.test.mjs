// Sending files: the conversation with the host, its windows, and every way in which a file can fail.
import assert from 'node:assert/strict';
import test from 'node:test';
import { taoGuiTep, tuDanhSach, tuMuc } from '../../giao-dien/nguon/khach/gui-tep.js';

const MIB = 1048576;

class TepGia {
  constructor(ten, co, { hongTu = Infinity, catCon = co, duong = '' } = {}) {
    Object.assign(this, { name: ten, size: co, webkitRelativePath: duong, hongTu, catCon });
  }
  slice(tu, den) {
    return {
      arrayBuffer: async () => {
        if (tu >= this.hongTu) throw new Error('NotReadableError');
        return Uint8Array.from({ length: Math.max(0, Math.min(den, this.catCon) - tu) }, (_, i) => (tu + i) % 251).buffer;
      },
    };
  }
}

// A channel with a host at its end; `tuDong` acknowledges as the contract asks.
function moi({ tuDong = true, tra = () => null } = {}) {
  const nghe = {};
  const hen = new Map();
  let so = 0;
  const may = { tin: [], tep: new Map(), goi: 0, chuaNhan: 0, nhieuNhat: 0 };
  const kenh = {
    readyState: 'open', bufferedAmount: 0, bufferedAmountLowThreshold: 0,
    addEventListener: (ten, ham) => { nghe[ten] = ham; },
    send(du) {
      if (typeof du === 'string') {
        const t = JSON.parse(du);
        may.tin.push(t);
        const dap = tra(t);
        if (dap) queueMicrotask(() => noi(dap));
        else if (tuDong && t.l === 'tep') {
          may.tep.set(t.id, { ...t, byte: [] });
          queueMicrotask(() => noi({ l: 'gui', id: t.id }));
        } else if (tuDong && t.l === 'xong') queueMicrotask(() => noi({ l: 'roi', id: t.id, noi: 'thu-muc' }));
        return;
      }
      const id = new DataView(du.buffer).getUint32(0);
      const manh = du.subarray(4);
      assert.ok(manh.length > 0 && manh.length <= 16384);
      may.goi += 1;
      may.chuaNhan += manh.length;
      may.nhieuNhat = Math.max(may.nhieuNhat, may.chuaNhan);
      const tep = may.tep.get(id);
      tep?.byte.push(...manh);
      if (tuDong && tep && may.chuaNhan >= 262144) {
        may.chuaNhan = 0;
        queueMicrotask(() => noi({ l: 'nhan', id, byte: tep.byte.length }));
      }
    },
  };
  const noi = (t) => nghe.message({ data: JSON.stringify(t) });
  const g = taoGuiTep({ khiDoi() {}, hen: { dat: (f) => { hen.set(++so, f); return so; }, huy: (i) => hen.delete(i) } });
  return { g, kenh, may, noi, xa: () => nghe.bufferedamountlow(), hetGio: () => [...hen.values()].forEach((f) => f()), hen };
}
const cho = async (xong) => {
  for (let i = 0; i < 500 && !xong(); i++) await new Promise((f) => setImmediate(f));
};
const tinh = (g) => g.cacTep.map((t) => `${t.duong} ${t.tinh}${t.ly ? ` ${t.ly}` : ''}`);
const gui = (g, ...cac) => g.them(cac.map((tep) => ({ tep, duong: tep.webkitRelativePath || tep.name })));

test('files go one after the other, whole, in order, an empty one too; nothing is sent before it is asked for', async () => {
  const { g, kenh, may } = moi();
  gui(g, new TepGia('a.bin', 700000), new TepGia('rỗng', 0, { duong: 'thư mục/rỗng' }), new TepGia('b', 5));
  assert.deepEqual(may.tin, [], 'no channel yet');
  g.datKenh(kenh);
  await cho(() => g.tong.con === 0);
  assert.deepEqual(tinh(g), ['a.bin roi', 'thư mục/rỗng roi', 'b roi']);
  assert.deepEqual(may.tin.map((t) => `${t.l} ${t.id}`), ['tep 1', 'xong 1', 'tep 2', 'xong 2', 'tep 3', 'xong 3']);
  const a = may.tep.get(1).byte;
  assert.deepEqual([a.length, a.every((b, i) => b === i % 251)], [700000, true]);
  assert.deepEqual(may.tep.get(3).byte, [0, 1, 2, 3, 4]);
  assert.deepEqual(g.tong, { so: 3, roi: 3, hong: 0, con: 0, co: 700005, daNhan: 700005 });
  assert.equal(g.cacTep[0].noi, 'thu-muc');
});

test('at most 1 MiB is under way, and a full channel is waited for', async () => {
  const { g, kenh, may, noi, xa } = moi({ tuDong: false });
  g.datKenh(kenh);
  gui(g, new TepGia('to', 3 * MIB));
  noi({ l: 'gui', id: 1 });
  await cho(() => may.chuaNhan >= MIB);
  await cho(() => false);
  assert.equal(may.chuaNhan, MIB);
  noi({ l: 'nhan', id: 1, byte: 9 * MIB }); // more than was sent counts as all that was
  await cho(() => may.chuaNhan >= 2 * MIB);
  await cho(() => false);
  assert.equal(may.chuaNhan, 2 * MIB);
  kenh.bufferedAmount = 2 * MIB;
  noi({ l: 'nhan', id: 1, byte: 2 * MIB });
  await cho(() => false);
  assert.equal(may.chuaNhan, 2 * MIB);
  kenh.bufferedAmount = 0;
  xa();
  await cho(() => may.tin.some((t) => t.l === 'xong'));
  assert.equal(may.chuaNhan, 3 * MIB);
  assert.equal(g.cacTep[0].tinh, 'luu', 'sent is not stored');
  noi({ l: 'roi', id: 1, noi: 'tai' });
  assert.equal(g.cacTep[0].tinh, 'roi');
});

test('what fails says why, tells the host, and does not hold up the next', async () => {
  for (const [ten, tep, mong, baoMay, tra] of [
    ['the host refuses', new TepGia('x', 10), 'Đĩa đầy', false, (t) => (t.l === 'tep' && t.id === 1 ? { l: 'hong', id: 1, ly: 'Đĩa đầy' } : null)],
    ['the host cannot store it', new TepGia('x', 10), 'Không ghi được', false, (t) => (t.l === 'xong' && t.id === 1 ? { l: 'hong', id: 1, ly: 'Không ghi được' } : null)],
    ['unreadable half-way', new TepGia('x', MIB, { hongTu: 262144 }), 'doc', true],
    ['shorter than it was', new TepGia('x', MIB, { catCon: 300000 }), 'doi', true],
  ]) {
    const { g, kenh, may } = moi({ tra });
    g.datKenh(kenh);
    gui(g, tep, new TepGia('sau', 3));
    await cho(() => g.tong.con === 0);
    assert.deepEqual(tinh(g), [`x hong ${mong}`, 'sau roi'], ten);
    assert.equal(may.tin.some((t) => t.l === 'huy' && t.id === 1), baoMay, ten);
    assert.deepEqual(may.tep.get(2).byte, [0, 1, 2]);
  }
});

test('a host that says nothing more; failed files can be sent again', async () => {
  let im = true;
  const { g, kenh, may, hetGio } = moi({ tra: (t) => (im && t.l === 'tep' ? { l: 'la', id: 9 } : null) });
  g.datKenh(kenh);
  gui(g, new TepGia('x', 3));
  await cho(() => false);
  hetGio();
  assert.deepEqual([tinh(g), may.tin.at(-1)], [['x hong im'], { l: 'huy', id: 1 }]);
  im = false;
  g.thuLai();
  await cho(() => g.tong.con === 0);
  assert.deepEqual(tinh(g), ['x roi']);
});

test('a host that says that it is still storing is waited for; one that falls silent is not', async () => {
  const { g, kenh, noi, hen, hetGio } = moi({ tra: (t) => (t.l === 'xong' ? { l: 'nhan', id: 1, byte: 3 } : null) });
  g.datKenh(kenh);
  gui(g, new TepGia('x', 3));
  await cho(() => g.cacTep[0].daNhan === 3);
  const [truoc] = hen.keys();
  noi({ l: 'nhan', id: 1, byte: 3 });
  assert.deepEqual([tinh(g), hen.size, hen.has(truoc)], [['x luu'], 1, false], 'its time begins anew');
  hetGio();
  assert.deepEqual(tinh(g), ['x hong im']);
});

test('cancelling one, the rest, from the other side; the list is cleared of what is finished', async () => {
  const { g, kenh, may, noi } = moi({ tuDong: false });
  g.datKenh(kenh);
  gui(g, ...['a', 'b', 'c', 'd'].map((t) => new TepGia(t, 4 * MIB)));
  noi({ l: 'gui', id: 1 });
  await cho(() => may.goi > 0);
  g.huy(g.cacTep[2]);
  g.huy(g.cacTep[0]);
  await cho(() => false);
  const daGui = may.goi;
  noi({ l: 'nhan', id: 1, byte: MIB });
  noi({ l: 'roi', id: 1, noi: 'tai' });
  await cho(() => false);
  assert.equal(may.goi, daGui, 'nothing more of a cancelled file');
  assert.deepEqual(tinh(g), ['a huy', 'b gui', 'c huy', 'd cho']);
  noi({ l: 'huy', id: 2 });
  g.huyHet();
  assert.deepEqual(tinh(g), ['a huy', 'b huy', 'c huy', 'd huy']);
  assert.deepEqual(may.tin.filter((t) => t.l === 'huy').map((t) => t.id), [1, 3]);
  g.don();
  assert.equal(g.cacTep.length, 0);
});

test('a connection that breaks: the file begins again on the next one, or fails with it', async () => {
  const dau = moi({ tuDong: false });
  const { g } = dau;
  g.datKenh(dau.kenh);
  gui(g, new TepGia('x', 2 * MIB));
  dau.noi({ l: 'gui', id: 1 });
  await cho(() => dau.may.goi > 0);
  g.datKenh(null);
  assert.deepEqual(tinh(g), ['x cho']);
  const sau = moi();
  g.datKenh(sau.kenh);
  dau.noi({ l: 'hong', id: 2, ly: 'cũ' });
  await cho(() => g.tong.con === 0);
  assert.deepEqual(tinh(g), ['x roi']);
  assert.equal(sau.may.tep.get(2).byte.length, 2 * MIB);
  gui(g, new TepGia('y', 1));
  g.hongHet();
  assert.deepEqual(tinh(g), ['x roi', 'y hong kenh']);
});

const tepMuc = (ten) => ({ isFile: true, name: ten, file: (f) => f(new TepGia(ten, 1)) });
const thuMuc = (ten, phan) => ({ isFile: false, name: ten, createReader: () => ({ readEntries: (f) => f(phan.shift() ?? []) }) });

test('dropped folders: every portion, paths with slashes, empty and unreadable ones named', async () => {
  const hong = { isFile: true, name: 'khoá', file: (f, loi) => loi(new Error('NotAllowed')) };
  const kq = await tuMuc([
    thuMuc('gốc', [[tepMuc('1'), thuMuc('con', [[tepMuc('2')]])], [tepMuc('3'), thuMuc('trống', []), hong]]), tepMuc('lẻ'), null,
  ]);
  assert.deepEqual(kq.cac.map((c) => c.duong), ['gốc/1', 'gốc/con/2', 'gốc/3', 'lẻ']);
  assert.deepEqual([kq.hong, kq.trong], [['gốc/khoá'], 1]);
  assert.deepEqual(tuDanhSach([new TepGia('a', 1, { duong: 'x/a' }), new TepGia('b', 1)]).map((c) => c.duong), ['x/a', 'b']);
});
