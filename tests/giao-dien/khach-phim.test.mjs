// The controller's keyboard: what each key event becomes, sequences with modifiers, and what the text field sends.
import assert from 'node:assert/strict';
import { readFileSync } from 'node:fs';
import test from 'node:test';
import { MA_MAY_BIET, TO_HOP } from '../../giao-dien/nguon/khach/bang-phim.js';
import { chiaChu, phanLoai, taoBanPhim } from '../../giao-dien/nguon/khach/ban-phim.js';
import { DEM, soSanh, taoOGo } from '../../giao-dien/nguon/khach/o-go.js';

const THUOC = { c: 'ctrlKey', a: 'altKey', s: 'shiftKey', m: 'metaKey' };
// phim('KeyA', 'a', 'cs'): with Ctrl and Shift held; g: AltGr.
function phim(code, key, kem = '', them = {}) {
  const e = { code, key, ctrlKey: false, altKey: false, shiftKey: false, metaKey: false, isComposing: false, keyCode: 0, ...them };
  for (const [chu, ten] of Object.entries(THUOC)) if (kem.includes(chu)) e[ten] = true;
  e.getModifierState = (ten) => ten === 'AltGraph' && kem.includes('g');
  return e;
}

test('the names that go out are exactly those that the host has keys for', () => {
  const nguon = readFileSync(new URL('../../macos/Sources/Tovira/PhimMac.hpp', import.meta.url), 'utf8');
  const cuaMay = [...nguon.matchAll(/\{"([A-Z]\w+)", *(?:0x)?\w+\}/g)].map((m) => m[1]);
  assert.equal(cuaMay.length, 101);
  assert.deepEqual([...MA_MAY_BIET].sort(), cuaMay.sort());
  for (const { ten, cacMa } of TO_HOP) assert.ok(cacMa.every((ma) => MA_MAY_BIET.has(ma)), ten);
});

test('what a key is', () => {
  const khoa = (ma) => ({ loai: 'phim', ma });
  const chu = (van) => ({ loai: 'chu', chu: van });
  const loai = (l) => ({ loai: l });
  for (const [ten, e, mong, mac = false] of [
    ['a letter that a US keyboard makes there', phim('KeyA', 'a'), khoa('KeyA')],
    ['its capital', phim('KeyA', 'A', 's'), khoa('KeyA')],
    ['Caps Lock: the host does not know of it', phim('KeyA', 'A'), chu('A')],
    ['Caps Lock and Shift', phim('KeyA', 'a', 's'), chu('a')],
    ['French: the key right of Tab', phim('KeyQ', 'a'), chu('a')],
    ['French shortcut: the place, not the letter', phim('KeyQ', 'a', 'c'), khoa('KeyQ')],
    ['Russian text', phim('KeyF', 'а'), chu('а')],
    ['Russian shortcut', phim('KeyC', 'с', 'c'), khoa('KeyC')],
    ['an input method that types by itself', phim('', 'ế'), chu('ế')],
    ['… and takes back', phim('', 'Backspace'), khoa('Backspace')],
    ['German AltGr on Windows reports Ctrl and Alt', phim('KeyQ', '@', 'cag'), chu('@')],
    ['the AltGr key itself', phim('AltRight', 'AltGraph'), loai('altgr')],
    ['a key that the host has not', phim('IntlBackslash', '<'), chu('<')],
    ['a shortcut on such a key', phim('IntlBackslash', 'ñ', 'c'), loai('bo')],
    ['a shortcut without a place', phim('', 'c', 'c'), khoa('KeyC')],
    ['keypad digits', phim('Numpad7', '7'), chu('7')],
    ['keypad without Num Lock', phim('Numpad7', 'Home'), khoa('Home')],
    ['keypad decimal without Num Lock', phim('NumpadDecimal', 'Delete'), khoa('Delete')],
    ['keypad operators', phim('NumpadAdd', '+'), khoa('NumpadAdd')],
    ['keypad Enter', phim('NumpadEnter', 'Enter'), khoa('NumpadEnter')],
    ['a function key', phim('F12', 'F12'), khoa('F12')],
    ['one beyond the table', phim('F13', 'F13'), loai('trang')],
    ['a media key', phim('AudioVolumeUp', 'AudioVolumeUp'), loai('trang')],
    ['locks stay here', phim('CapsLock', 'CapsLock'), loai('bo')],
    ['composing', phim('KeyA', 'a', '', { isComposing: true }), loai('o-go')],
    ['a phone', phim('', 'Unidentified', '', { keyCode: 229 }), loai('o-go')],
    ['a dead key', phim('BracketLeft', 'Dead'), loai('o-go')],
    ['a dead key of AltGr', phim('BracketLeft', 'Dead', 'cag'), loai('o-go')],
    ['a shortcut on a dead key', phim('BracketLeft', 'Dead', 'c'), khoa('BracketLeft')],
    ['Option and a letter on a Mac', phim('KeyO', 'ø', 'a'), khoa('KeyO'), true],
    ['a dead Option on a Mac', phim('KeyE', 'Dead', 'a'), khoa('KeyE'), true],
    ['Option for a sign of a German Mac', phim('KeyL', '@', 'a'), chu('@'), true],
    ['Alt and a letter elsewhere', phim('KeyF', 'f', 'a'), khoa('KeyF')],
  ]) assert.deepEqual(phanLoai(e, mac), mong, ten);
});

function banPhim(them = {}) {
  const nhat = [];
  const bp = taoBanPhim({
    gui: (l) => nhat.push(l.t === 'text' ? `"${l.value}"` : `${l.t === 'key_down' ? '+' : '-'}${l.code}${l.modifiers.length ? `[${[...l.modifiers].sort()}]` : ''}`),
    ...them,
  });
  const lay = () => nhat.splice(0).join(' ');
  return { bp, lay };
}

test('modifiers, repeats and releases', () => {
  const { bp, lay } = banPhim();
  assert.equal(bp.xuong(phim('ControlLeft', 'Control', 'c')), true);
  bp.xuong(phim('KeyC', 'c', 'c'));
  bp.xuong(phim('KeyC', 'c', 'c', { repeat: true }));
  bp.len(phim('KeyC', 'c', 'c'));
  bp.len(phim('ControlLeft', 'Control'));
  assert.equal(lay(), '+ControlLeft[ctrl] +KeyC[ctrl] +KeyC[ctrl] -KeyC[ctrl] -ControlLeft');
  assert.equal(bp.len(phim('KeyC', 'c')), false, 'nothing of ours is down');
  assert.equal(bp.xuong(phim('AudioVolumeUp', 'AudioVolumeUp')), false);
  assert.equal(lay(), '');
});

test('a release that went elsewhere is caught up with, and losing focus releases everything', () => {
  const { bp, lay } = banPhim();
  bp.xuong(phim('AltLeft', 'Alt', 'a'));
  bp.xuong(phim('KeyB', 'b'));
  assert.equal(lay(), '+AltLeft[alt] -AltLeft +KeyB');
  bp.xuong(phim('ShiftRight', 'Shift', 's'));
  bp.nhaHet();
  assert.equal(lay(), '+ShiftRight[shift] -ShiftRight -KeyB');
  assert.equal(bp.dangGiu, false);
});

test('AltGr of Windows takes the Ctrl back that it came with', () => {
  const { bp, lay } = banPhim();
  bp.xuong(phim('ControlLeft', 'Control', 'c'));
  bp.xuong(phim('AltRight', 'AltGraph', 'cag'));
  bp.xuong(phim('KeyQ', '@', 'cag'));
  assert.equal(lay(), '+ControlLeft[ctrl] -ControlLeft "@"');
});

test('a Mac reports no release under ⌘; ⌘ and Ctrl change places on demand', () => {
  const mac = banPhim({ laMac: true });
  mac.bp.xuong(phim('MetaLeft', 'Meta', 'm'));
  mac.bp.xuong(phim('KeyC', 'c', 'm'));
  mac.bp.len(phim('MetaLeft', 'Meta'));
  assert.equal(mac.lay(), '+MetaLeft[meta] +KeyC[meta] -KeyC[meta] -MetaLeft');
  const dao = banPhim({ laMac: true, daoCmd: () => true });
  dao.bp.xuong(phim('MetaLeft', 'Meta', 'm'));
  dao.bp.xuong(phim('KeyV', 'v', 'm'));
  dao.bp.len(phim('MetaLeft', 'Meta'));
  assert.equal(dao.lay(), '+ControlLeft[ctrl] +KeyV[ctrl] -KeyV[ctrl] -ControlLeft');
});

test('the chord that gives the keyboard back is not sent, and lets go of what led to it', () => {
  let ra = 0;
  const { bp, lay } = banPhim({ khiThoat: () => { ra += 1; } });
  bp.xuong(phim('ControlLeft', 'Control', 'c'));
  assert.equal(bp.xuong(phim('KeyX', 'X', 'cas')), true);
  assert.deepEqual([lay(), ra, bp.dangGiu], ['+ControlLeft[ctrl] -ControlLeft', 1, false]);
});

test('chords, and modifiers that the key bar holds until the next key', () => {
  const { bp, lay } = banPhim();
  bp.bamToHop(['ControlLeft', 'AltLeft', 'Delete']);
  assert.equal(lay(), '+ControlLeft +AltLeft[ctrl] +Delete[alt,ctrl] -Delete[alt,ctrl] -AltLeft[ctrl] -ControlLeft');
  assert.equal(bp.batDinh('ControlLeft'), true);
  bp.goChu('C'); // a phone's keyboard begins with a capital
  assert.equal(lay(), '+ControlLeft[ctrl] +KeyC[ctrl,shift] -KeyC[ctrl,shift] -ControlLeft');
  bp.batDinh('AltLeft');
  assert.equal(bp.batDinh('AltLeft'), false);
  bp.batDinh('AltLeft');
  bp.bam('Tab');
  assert.equal(lay(), '+AltLeft[alt] -AltLeft +AltLeft[alt] +Tab[alt] -Tab[alt] -AltLeft');
});

test('typed text: composed, cut where the host wants it, lines as Enter', () => {
  const { bp, lay } = banPhim();
  bp.goChu('tie\u0302\u0301ng\r\nViệt\tx');
  assert.equal(lay(), '"tiếng" +Enter -Enter "Việt" +Tab -Tab "x"');
  const dai = '😀'.repeat(2500);
  const phan = chiaChu(dai);
  assert.equal(phan.join(''), dai);
  assert.ok(phan.length === 3 && phan.every((p) => Buffer.byteLength(p) <= 4096));
  const dau = `${'a'.repeat(1000)}\u0323b`;
  assert.deepEqual(chiaChu(dau).map((p) => p.length), [999, 3], 'a mark stays with its letter');
  assert.deepEqual(chiaChu(`${'x'.repeat(999)}👩\u200d👩`).map((p) => [...p].length), [999, 3]);
});

test('how one text becomes another: one Backspace for each character that a person sees', () => {
  for (const [truoc, sau, xoa, them] of [
    ['', 'a', 0, 'a'], ['tieng', 'tiếng', 3, 'ếng'], ['viê', 'việ', 1, 'ệ'], ['abc', 'ab', 1, ''], ['ab', 'ab', 0, ''],
    ['x👩‍👩', 'x', 1, ''], ['e\u0302', 'ê', 0, ''], ['teh ', 'the ', 3, 'he '],
  ]) assert.deepEqual(soSanh(truoc, sau), { xoa, them }, `${truoc} > ${sau}`);
});

function oGo() {
  const nhat = [];
  const o = { value: '', setSelectionRange() {} };
  const g = taoOGo({ o, go: (c) => nhat.push(c), xoa: () => nhat.push('<'), khiGhep: (b) => nhat.push(b ? '[' : ']') });
  const nhap = (van) => {
    o.value = van;
    g.input();
  };
  return { o, g, nhap, lay: () => nhat.splice(0).join(' ') };
}

test('an input method with a preedit: shown while it composes, sent once, in the order of either engine', () => {
  const { o, g, nhap, lay } = oGo();
  g.compositionstart();
  for (const van of ['v', 'vi', 'vie', 'viê', 'việ', 'việt']) nhap(van);
  g.compositionend();
  assert.equal(lay(), '[ việt ]');
  g.compositionstart(); // this engine tells of the input after the end
  o.value = 'năm';
  g.compositionend();
  g.input();
  assert.equal(lay(), '[ năm ]');
  nhap('ê'); // a dead key
  assert.equal(lay(), 'ê');
  g.compositionstart();
  nhap('xx');
  g.huy();
  assert.deepEqual([lay(), o.value], ['[ ]', ''], 'losing the focus leaves nothing half typed');
});

test('a phone: every change at once, corrections taken back, Backspace in an empty field', () => {
  const { o, g, nhap, lay } = oGo();
  g.datSong(true);
  assert.equal(o.value, DEM);
  g.compositionstart();
  for (const van of ['x', 'xi', 'xin']) nhap(DEM + van);
  g.compositionend();
  nhap(`${DEM}xin chao`);
  nhap(`${DEM}xin chào`); // corrected
  assert.equal(lay(), 'x i n  chao < < ào');
  nhap(o.value.slice(0, -1));
  assert.equal(lay(), '<');
  nhap(`${o.value}\n`);
  assert.deepEqual([lay(), o.value], ['\n', DEM]);
  for (let i = 0; i < 40; i++) nhap(o.value.slice(0, -1));
  assert.equal(lay().split(' ').length, 40, 'never runs out of something to delete');
  nhap(DEM + 'a'.repeat(500));
  assert.equal(o.value, DEM);
});
