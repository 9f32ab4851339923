// The controller's panels on the page itself: the clipboard, and what is asked before files are sent.
import assert from 'node:assert/strict';
import test from 'node:test';
import { docBang, lang } from './trang.mjs';

const bangVi = docBang('vi');
const chu = (khoa, so = {}) => bangVi[khoa].replace(/\{(\w+)\}/g, (_, k) => so[k]);

// As much of a document as the two panels touch. An element is made when it is first asked for.
class The {
  constructor(ten) { Object.assign(this, { ten, hidden: false, disabled: false, value: '', textContent: '', dataset: {}, con: [], cha: null, nghe: {} }); }
  addEventListener(ten, ham) { (this.nghe[ten] ||= []).push(ham); }
  setAttribute() {}
  append(...con) { for (const c of con) { c.cha = this; this.con.push(c); } }
  replaceChildren(...con) { this.con = con; }
  remove() { if (this.cha) this.cha.con = this.cha.con.filter((c) => c !== this); }
  querySelector() { return null; }
  get firstElementChild() { return this.con[0] ?? null; }
  focus() {}
  select() {}
  show() {}
  showModal() {}
  contains() { return false; }
  kich(ten = 'click', e = {}) { return (this.nghe[ten] ?? []).map((ham) => ham({ preventDefault() {}, ...e })); }
  tim(ten) { return [...(this.ten === ten ? [this] : []), ...this.con.flatMap((c) => c.tim(ten))]; }
}

function datTrang(t, { clipboard, isSecureContext = !!clipboard } = {}) {
  const theoId = new Map();
  const $ = (id) => theoId.get(id) ?? theoId.set(id, new The(id)).get(id);
  const lenh = [];
  const document = {
    getElementById: $, createElement: (ten) => new The(ten), body: new The('body'), activeElement: null,
    execCommand: (ten) => { lenh.push(ten); return true; },
  };
  for (const [ten, gia] of Object.entries({ document, window: { isSecureContext }, navigator: { clipboard } })) {
    const cu = Object.getOwnPropertyDescriptor(globalThis, ten);
    Object.defineProperty(globalThis, ten, { value: gia, configurable: true, writable: true });
    t.after(() => (cu ? Object.defineProperty(globalThis, ten, cu) : delete globalThis[ten]));
  }
  return { $, lenh, hop: () => document.body.tim('dialog')[0] ?? null };
}

async function moTam(t, { clipboard, may = true, go = true } = {}) {
  const trang = datTrang(t, { clipboard });
  const { taoBangTam } = await import('../../giao-dien/nguon/khach/bang-tam.js');
  const nhat = [];
  const tam = taoBangTam({
    chu, baoTin: (loai, van) => nhat.push(`${loai}: ${van}`), guiTin: (tin) => { nhat.push(tin); return true; },
    goChu: (van) => nhat.push(`gõ ${van}`), hen: { dat: (f) => f() },
  });
  tam.datTinh(may, go);
  return { ...trang, tam, lay: () => nhat.splice(0) };
}

const taoKhay = (van = '') => ({ van, async readText() { return this.van; }, async writeText(v) { this.van = v; } });

test('a text from the host is taken only from one that has its clipboard switched on, and not beyond 1 MiB', async (t) => {
  const khay = taoKhay('của tôi');
  const { tam, $ } = await moTam(t, { clipboard: khay, may: false });
  tam.nhan('lạ');
  assert.deepEqual([$('k-tam-chu').value, khay.van], ['', 'của tôi'], 'never announced');
  tam.datTinh(true, true);
  tam.nhan('ê'.repeat(600000));
  assert.deepEqual([$('k-tam-chu').value, khay.van], ['', 'của tôi'], 'too long');
  tam.nhan('từ máy kia');
  assert.deepEqual([$('k-tam-chu').value, khay.van], ['từ máy kia', 'từ máy kia']);
  tam.datTinh(false, true);
  tam.nhan('sau khi tắt');
  assert.equal(khay.van, 'từ máy kia', 'switched off again');
});

test('the panel says how each way works, and offers what this engine and the host allow', async (t) => {
  const { tam, $ } = await moTam(t);
  assert.match($('k-tam-tinh').textContent, new RegExp(bangVi['bang.gui']), 'the host’s text waits for its person');
  assert.deepEqual([$('k-tam-dan').hidden, $('k-tam-gui').disabled, $('k-tam-go').disabled], [true, false, false]);
  tam.datTinh(false, false);
  assert.equal($('k-tam-tinh').textContent, bangVi['bangTam.tat']);
  assert.deepEqual([$('k-tam-gui').disabled, $('k-tam-go').disabled], [true, true]);
});

test('from here to there: by the field, from the clipboard, by pasting, typed where the host keeps its own; never twice', async (t) => {
  const { tam, $, lay } = await moTam(t, { clipboard: taoKhay('chép') });
  $('k-tam-chu').value = 'một';
  $('k-tam-gui').kich();
  $('k-tam-gui').kich();
  assert.deepEqual(lay(), [{ l: 'bang', chu: 'một' }, `xong: ${bangVi['bangTam.daGui']}`, `xong: ${bangVi['bangTam.daGui']}`]);
  $('k-tam-dan').kich();
  await lang();
  assert.deepEqual([lay(), $('k-tam-chu').value], [[{ l: 'bang', chu: 'chép' }], 'chép']);
  assert.deepEqual([await tam.dan('dán'), await tam.dan('dán')], [true, true]);
  assert.deepEqual(lay(), [{ l: 'bang', chu: 'dán' }]);
  assert.equal(await tam.dan('x'.repeat(1048577)), false);
  assert.deepEqual(lay(), [`hong: ${bangVi['bangTam.quaDai']}`]);
  tam.datTinh(false, true);
  assert.equal(await tam.dan('gõ thay'), false, 'nothing to paste there');
  assert.deepEqual(lay(), ['gõ gõ thay']);
});

test('a plain address has only the old way to copy, and an engine that refuses is told about', async (t) => {
  const { $, lenh, lay } = await moTam(t);
  $('k-tam-chep').kich();
  await lang();
  assert.deepEqual([lenh, lay()], [['copy'], [`xong: ${bangVi['bangTam.daChep']}`]]);
  const cam = { readText: async () => { throw new Error('NotAllowed'); }, writeText: async () => { throw new Error('NotAllowed'); } };
  const hai = await moTam(t, { clipboard: cam });
  hai.$('k-tam-chep').kich();
  hai.$('k-tam-dan').kich();
  hai.tam.nhan('vẫn vào ô');
  await lang();
  assert.deepEqual(new Set(hai.lay()), new Set(['bangTam.khongDoc', 'bangTam.khongGhi'].map((k) => `hong: ${bangVi[k]}`)));
  assert.equal(hai.$('k-tam-chu').value, 'vẫn vào ô');
});

async function moTep(t) {
  const trang = datTrang(t);
  const { taoBangTep } = await import('../../giao-dien/nguon/khach/bang-tep.js');
  const daGui = [];
  const guiTep = { them: (cac) => daGui.push(...cac.map((c) => c.duong)), cacTep: [], tong: { so: 0, roi: 0, hong: 0, con: 0, co: 0, daNhan: 0 } };
  const bang = taoBangTep({ chu, ngonNgu: () => 'vi', guiTep, baoTin() {}, khiMo() {}, hen: { dat: () => 1, huy() {} } });
  return {
    ...trang, bang, daGui,
    chon(...cac) {
      trang.$('k-tep-vao').files = cac.map(([duong, size = 1]) => ({ name: duong, webkitRelativePath: duong.includes('/') ? duong : '', size }));
      trang.$('k-tep-vao').kich('change');
      return lang();
    },
    tra: (so) => { trang.hop().tim('button')[so].kich(); return lang(); },
  };
}

test('a folder that will not arrive as one is said so before anything is sent', async (t) => {
  const { bang, chon, tra, daGui, hop } = await moTep(t);
  bang.datTinh({ duoc: true, noi: 'tai' });
  await chon(['lẻ']);
  assert.deepEqual([daGui.splice(0), hop()], [['lẻ'], null], 'a single file keeps its name');
  await chon(['a/1'], ['a/2']);
  assert.deepEqual(daGui, [], 'waits for the answer');
  assert.equal(hop().tim('p')[0].textContent, chu('guiTep.phang', { n: 2 }));
  await tra(1);
  assert.deepEqual([daGui, hop()], [[], null], 'no');
  await chon(['a/1'], ['a/2']);
  await tra(0);
  assert.deepEqual(daGui.splice(0), ['a/1', 'a/2'], 'yes');
  for (const noi of ['thu-muc', undefined]) {
    bang.datTinh({ duoc: true, noi });
    await chon(['a/1'], ['a/2']);
    assert.deepEqual([daGui.splice(0), hop()], [['a/1', 'a/2'], null], 'folders are kept, or the host does not say');
  }
  await chon(['a/1'], ['a/to', 64 * 1024 * 1024 + 1]);
  assert.equal(hop().tim('p')[0].textContent, chu('guiTep.phang', { n: 1 }), 'too large for the folder');
  bang.thoiHoi();
  await lang();
  assert.deepEqual([daGui, hop()], [[], null], 'the call is over: nothing is sent');
});
