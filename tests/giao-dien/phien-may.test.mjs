// The host's sessions: one session's states, all of them together, and its place at the server.
import assert from 'node:assert/strict';
import test from 'node:test';
import { taoKenhHen } from '../../giao-dien/nguon/chung/kenh-hen.js';
import { taoChia } from '../../giao-dien/nguon/may/chia.js';
import { cacMayStun } from '../../giao-dien/nguon/chung/stun.js';
import { taoPhienMay, sachTen } from '../../giao-dien/nguon/may/phien-may.js';
import { taoPhong } from '../../giao-dien/nguon/may/phong.js';
import { taoPhimGiu } from '../../giao-dien/nguon/may/phim-giu.js';
import { taoTraLoi } from '../../giao-dien/nguon/may/tra-loi.js';
import { KetNoiGia, dua, lang, taoCam, taoHen, taoMaHoaGia } from './vai-may.mjs';

function taoPhien({ canHoi = false, chan = '', traLoi = Promise.resolve(true) } = {}) {
  const maHoa = taoMaHoaGia();
  const hen = taoHen();
  const t = { maHoa, hen, het: [], thoi: 0, dong: 0 };
  t.phien = taoPhienMay({
    phien: 'p', ma: '123456789', stun: ['a:1'], canh: {}, track: 'track',
    moi: { taoKetNoi: (c) => { t.pc = new KetNoiGia(c); return t.pc; }, maHoa, hen },
    gui: () => {}, dong: () => { t.dong += 1; },
    hoi: { chan: () => chan, can: () => canHoi, dongY: () => {}, nguoi: (ai) => { t.hoi = ai; return { traLoi, thoi: () => { t.thoi += 1; } }; } },
    khi: { doi: () => {}, mo: () => {}, yeu: () => { t.yeu = (t.yeu ?? 0) + 1; }, nghe: (ten, du) => { t.nghe = [ten, du]; }, het: (ly, truoc) => t.het.push([ly, truoc]) },
  });
  return t;
}

test('a session from the first letter to the goodbye', async () => {
  const t = taoPhien();
  t.phien.nhan('som'); // before the fingerprint is there
  await lang();
  assert.deepEqual(t.maHoa.bt.daNhan, ['som']);
  assert.equal(t.maHoa.bt.dat.vanTay, 'vt-cua-may');
  assert.deepEqual(Object.values(t.pc.kenh).map((k) => [k.ten, k.id, k.negotiated]), [['lenh', 1, true], ['tin', 2, true], ['tep', 3, true]]);
  const { khi } = t.maHoa.bt.dat;
  khi.xong({ viTri: 1 });
  await lang();
  khi.thu({ ung: { candidate: 'som' } }); // an address before the offer
  khi.thu({ sdp: { type: 'offer', sdp: 'moi' } });
  await lang();
  assert.deepEqual(t.maHoa.bt.thu, [{ nhan: true }, { sdp: { type: 'answer', sdp: 'tra-loi' } }]);
  assert.deepEqual([t.pc.track, t.pc.tuyen.direction, t.pc.ung], ['track', 'sendonly', [{ candidate: 'som' }]]);
  assert.equal(t.pc.dat.degradationPreference, 'maintain-resolution');
  t.pc.thanh('connected');
  assert.deepEqual([t.phien.tinh, t.phien.cach], ['noi', 1]);
  t.phien.khiMayChuDong('mat-lien-lac');
  assert.equal(t.phien.tinh, 'noi', 'two that speak directly do not need the server');
  t.pc.kenh.tin.mo();
  t.phien.ket('nguoi');
  assert.deepEqual(t.pc.kenh.tin.cac, [{ l: 'het', ly: 'nguoi' }]);
  assert.deepEqual(t.maHoa.bt.thu.at(-1), { het: 'nguoi' }, 'by the server too: the direct path may be down');
  assert.deepEqual([t.het, t.dong, t.pc.track, t.pc.connectionState], [[['nguoi', 'noi']], 1, null, 'connected']);
  t.hen.chay(1000);
  assert.equal(t.pc.connectionState, 'closed');
  t.phien.ket('mat');
  assert.equal(t.het.length, 1);
  assert.equal(t.hen.con, 0);
});

test('nothing is connected before this person has said yes, and no answer is a no', async () => {
  let noi;
  const t = taoPhien({ canHoi: true, traLoi: new Promise((x) => { noi = x; }) });
  await lang();
  const { khi } = t.maHoa.bt.dat;
  khi.xong({ viTri: 0 });
  khi.thu({ ten: ' Lan\u202e\nAnh ' });
  await lang();
  assert.deepEqual([t.maHoa.bt.thu, t.hoi], [[{ cho: true }], { ten: 'Lan Anh', cach: 0 }]);
  noi(false);
  await lang();
  assert.deepEqual(t.maHoa.bt.thu.slice(1), [{ tuChoi: true }, { het: 'tu-choi' }]);
  assert.equal(t.phien.tinh, 'het');

  const som = taoPhien({ canHoi: true });
  await lang();
  som.maHoa.bt.dat.khi.xong({ viTri: 0 });
  som.maHoa.bt.dat.khi.thu({ sdp: { type: 'offer', sdp: 'moi' } });
  await lang();
  assert.deepEqual([som.phien.tinh, som.pc.remoteDescription], ['het', undefined]);
});

test('an address that this engine cannot read is no reason to refuse a caller', async () => {
  const cac = [];
  const maHoa = taoMaHoaGia();
  const taoKetNoi = (c) => {
    cac.push(c.iceServers);
    if (c.iceServers.length) throw new SyntaxError('ICE server');
    return new KetNoiGia(c);
  };
  taoPhienMay({ phien: 'p', ma: '1', stun: ['[:1'], canh: {}, track: 't', moi: { taoKetNoi, maHoa, hen: taoHen() }, gui() {}, dong() {}, hoi: {}, khi: { doi() {} } });
  await lang();
  assert.deepEqual([cac, !!maHoa.bt], [[[{ urls: 'stun:[:1' }], []], true]);
});

test('who may not come in is told so and sees nothing, though the password was right', async () => {
  for (const [chan, thu] of [['tu-choi', [{ tuChoi: true }, { het: 'tu-choi' }]], ['ban', [{ het: 'ban' }]]]) {
    const t = taoPhien({ chan });
    await lang();
    t.maHoa.bt.dat.khi.xong({ viTri: 1 });
    await lang();
    assert.deepEqual([t.maHoa.bt.thu, t.het], [thu, [[chan, 'bat-tay']]]);
  }
});

test('every way a session ends by itself', async () => {
  const cac = [
    ['het-gio', async (t) => t.hen.chay(60000)],
    ['sai', async (t) => t.maHoa.bt.dat.khi.sai(3)],
    ['loi', async (t) => t.maHoa.bt.dat.khi.hong('niem')],
    ['loi', async (t) => { t.maHoa.bt.dat.khi.xong({ viTri: 0 }); await lang(); t.maHoa.bt.dat.khi.thu({ sdp: { type: 'offer', sdp: 'hong' } }); }],
    ['loi', async (t) => { t.maHoa.bt.dat.khi.xong({ viTri: 0 }); await lang(); t.maHoa.bt.dat.khi.thu({ sdp: { type: 'answer', sdp: 'moi' } }); }],
    ['khong-noi-duoc', async (t) => { t.maHoa.bt.dat.khi.xong({ viTri: 0 }); await lang(); t.hen.chay(90000); }],
    ['ben-kia', async (t) => t.phien.khiMayChuDong('mat-lien-lac')],
    ['mat', async (t) => { await dua(t.maHoa, t.pc); t.pc.thanh('disconnected'); t.hen.chay(12000); }],
    ['mat', async (t) => { await dua(t.maHoa, t.pc); t.pc.thanh('failed'); }],
    ['ben-kia', async (t) => { await dua(t.maHoa, t.pc); t.maHoa.bt.dat.khi.thu({ het: 'x' }); }],
  ];
  for (const [ly, viec] of cac) {
    const t = taoPhien();
    await lang();
    await viec(t);
    await lang();
    assert.equal(t.het[0]?.[0], ly);
    assert.equal(t.maHoa.bt.daDong, true);
  }
  const t = taoPhien();
  await dua(t.maHoa, t.pc);
  t.pc.thanh('disconnected');
  assert.equal(t.yeu, 1, 'told at once: what it holds down is let go');
  t.hen.chay(11000);
  t.pc.thanh('connected');
  t.hen.chay(60000);
  assert.equal(t.phien.tinh, 'noi', 'an interruption that passes');
});

test('names are one plain line; server addresses become what a connection takes', () => {
  assert.equal(sachTen(7), '');
  assert.equal([...sachTen('🙂'.repeat(100))].length, 64);
  assert.deepEqual(cacMayStun(['a:1', 'stun:b:2', 7, '']), [{ urls: 'stun:a:1' }, { urls: 'stun:b:2' }]);
  assert.deepEqual(cacMayStun('x'), []);
  const xau = ['a b', 'turn:a:1', 'turns:a', 'stun:', 'stun:a:1?transport=udp', 'http://a', 'x'.repeat(300)];
  assert.deepEqual(cacMayStun([...xau, '[::1]:3478', 'stuns:c']), [{ urls: 'stun:[::1]:3478' }, { urls: 'stuns:c' }]);
});

test('what a session holds down is let go when it ends, unless another holds it too', () => {
  const ra = [];
  const phim = taoPhimGiu((json) => ra.push(json));
  const lenh = (p, vat) => phim.nhan(p, JSON.stringify(vat));
  lenh('a', { t: 'key_down', code: 'ShiftLeft' });
  lenh('b', { t: 'key_down', code: 'ShiftLeft' });
  lenh('a', { t: 'key_down', code: 'KeyA' });
  lenh('a', { t: 'key_up', code: 'KeyA' });
  lenh('a', { t: 'mouse_down', x: 0.1, y: 0.1, button: 'lạ' });
  lenh('a', { t: 'mouse_move', x: 0.5, y: 0.6 });
  ra.length = 0;
  phim.nha('a');
  assert.deepEqual(ra.map(JSON.parse), [{ t: 'mouse_up', x: 0.5, y: 0.6, button: 'left' }]);
  phim.nha('b');
  assert.deepEqual(JSON.parse(ra[1]), { t: 'key_up', code: 'ShiftLeft' });
  phim.nhaHet();
  assert.equal(ra.length, 2);
  for (const xau of ['{', '[]', '{"x":1}', 7, `{"t":"text","value":"${'x'.repeat(40000)}"}`, 'null']) assert.equal(phim.nhan('a', xau), false);
  for (let i = 0; i < 100; i++) lenh('c', { t: 'key_down', code: `K${i}` });
  ra.length = 0;
  phim.nha('c');
  assert.equal(ra.length, 64);
});

function taoPhongThu() {
  const t = { nhat: [], bat: { choDieuKhien: true, hoiTruoc: false, bang: false }, pcs: [], ra: [], mo: [], hen: taoHen(), maHoas: [], canh: [] };
  t.tv = {
    manHinh: { duongDan: '', loi: '' }, dsManHinh: [{ chiSo: 0, ten: 'A', rong: 10, cao: 10, chinh: true }, { chiSo: 1, ten: 'B', rong: 10, cao: 10, chinh: false }],
    troNangDaBat: () => true, manHinhDangPhat: () => !!t.tv.dangPhat, guiLenh: (j) => t.nhat.push(['lenh', j]),
    xinManHinh(n) { t.tv.manHinh = { duongDan: '', loi: '' }; t.nhat.push(['bat', n]); },
    dungManHinh() { t.tv.manHinh = { duongDan: '', loi: '' }; t.nhat.push(['tat']); }, datCaoManHinh: (c) => t.nhat.push(['cao', c]),
  };
  t.day = (duongDan, loi, dangPhat) => { Object.assign(t.tv, { manHinh: { duongDan, loi }, dangPhat }); t.phong.theo(); };
  t.chia = taoChia(t.tv, () => t.phong?.theo());
  const maHoa = { vanTayCuaSdp: (s) => s, taoBatTayMay(dat) { const m = taoMaHoaGia(); t.maHoas.push(m); return m.taoBatTayMay(dat); } };
  t.phong = taoPhong({
    tv: t.tv, chia: t.chia, luong: { layTrack: () => 'track', mo: (d) => t.mo.push(d), nguoiMoi() {} }, tuyChon: { doc: (ten) => t.bat[ten] },
    canh: { coLau: true, khoaNgay: () => t.canh.push('khoa'), doiMatKhau: () => t.canh.push('doi') },
    luuTep: { duoc: () => (t.bat.nhanTep === false ? 'nhanTep.tat' : ''), thuMuc: () => !!t.bat.thuMuc }, moi: { taoKetNoi: (c) => { t.pcs.push(new KetNoiGia(c)); return t.pcs.at(-1); }, maHoa, hen: t.hen },
    kenh: { goi: async (ten, du) => { t.nhat.push([ten, du.phien, du.tin]); return { ok: true }; } }, traLoi: () => ({ ma: '1', stun: [] }), hoiNguoi: (ai) => t.hoiNguoi(ai),
    caoToiDa: () => 1440, soMan: () => 0, loiHinh: () => t.tv.manHinh.loi, khi: { doi: () => t.phong?.theo(), vao() {}, ra: (p, ly) => t.ra.push(ly), bang() {} },
  });
  t.vao = async (so, ai) => {
    t.phong.them(so);
    await lang();
    await dua(t.maHoas.at(-1), t.pcs.at(-1), ai);
    return t.pcs.at(-1);
  };
  return t;
}

test('the share begins with the first controller, follows the most that anyone wants, and ends with the last', async () => {
  const t = taoPhongThu();
  const mot = await t.vao('p1');
  assert.deepEqual(t.nhat, [['cao', 1080], ['bat', 0]]);
  assert.equal(mot.kenh.tin.cac[0].l, 'chao');
  assert.equal(mot.kenh.tin.cac[0].tep.noi, 'tai', 'folders will arrive flat');
  t.bat.thuMuc = true;
  t.phong.theo();
  assert.equal(mot.kenh.tin.cac.at(-1).tep.noi, 'thu-muc');
  t.day('http://x', '', true);
  assert.equal(t.mo.at(-1), 'http://x');
  const hai = await t.vao('p2');
  t.nhat.length = 0;
  hai.kenh.tin.vao('{"l":"cao","cao":2160}');
  assert.deepEqual(t.nhat, [['cao', 1440]], 'no more than this person allows');
  mot.kenh.tin.vao('{"l":"chon","chiSo":1}');
  mot.kenh.tin.vao('{"l":"chon","chiSo":7}');
  assert.deepEqual(t.nhat.slice(1), [['cao', 1440], ['bat', 1]]);
  t.day('', '', false); // the change of display begins with an end
  t.hen.chay(1000);
  t.day('http://y', '', true);
  t.hen.chay(10000);
  assert.deepEqual(t.ra, []);
  assert.equal(hai.kenh.tin.cac.at(-1).dangXem, 1, 'everybody is told');
  t.nhat.length = 0;
  mot.thanh('failed');
  assert.deepEqual(t.nhat.filter(([k]) => k === 'tat'), []);
  hai.kenh.tin.vao('{"l":"het","ly":"x"}');
  assert.deepEqual(t.nhat.filter(([k]) => k === 'tat'), [['tat']]);
});

test('a share that this person began goes on without controllers; one that was stopped elsewhere lets nobody look on', async () => {
  const t = taoPhongThu();
  t.chia.batDau(0, 720);
  t.day('http://x', '', true);
  const mot = await t.vao('p1');
  t.nhat.length = 0;
  mot.thanh('failed');
  assert.deepEqual(t.nhat.filter(([k]) => k === 'tat'), []);
  await t.vao('p2');
  t.day('', 'Chưa được cấp quyền Ghi màn hình', false);
  t.hen.chay(10000);
  assert.equal(t.pcs[1].kenh.tin.cac.at(-1).loi, 'Chưa được cấp quyền Ghi màn hình');
  assert.deepEqual(t.ra, ['mat'], 'a failure is told, not an end');
  t.day('', '', false);
  t.hen.chay(4000);
  assert.deepEqual([t.ra, t.canh], [['mat', 'dung'], ['khoa']]);
});

test('commands pass only while control is allowed; switching it off lets go of what is held; the red button ends all', async () => {
  const t = taoPhongThu();
  t.phong.them('cho');
  await lang();
  t.pcs[0].kenh.lenh.vao('{"t":"mouse_move","x":0,"y":0}'); // not yet proven
  const mot = await t.vao('p1');
  t.day('http://x', '', true);
  t.nhat.length = 0;
  mot.kenh.lenh.vao('{"t":"key_down","code":"KeyA"}');
  t.bat.choDieuKhien = false;
  t.phong.theo();
  mot.kenh.lenh.vao('{"t":"key_down","code":"KeyB"}');
  assert.deepEqual(t.nhat, [['lenh', '{"t":"key_down","code":"KeyA"}'], ['lenh', '{"t":"key_up","code":"KeyA"}']]);
  assert.equal(mot.kenh.tin.cac.at(-1).choDieuKhien, false);
  t.phong.ketHet('dung');
  assert.deepEqual(t.ra, ['dung', 'dung']);
  assert.deepEqual(mot.kenh.tin.cac.at(-1), { l: 'het', ly: 'dung' });
  mot.kenh.lenh.vao('{"t":"key_down","code":"KeyC"}');
  assert.ok(!t.nhat.some(([, j]) => String(j).includes('KeyC')));
});

test('sent away means away: the passwords change, and the lasting one lets nobody in while pages may still call', async () => {
  const vaoBang = async (t, viTri) => {
    await t.vao('lai', { viTri });
    return t.phong.soNguoi;
  };
  const t = taoPhongThu();
  await t.vao('p1');
  t.phong.dung();
  assert.deepEqual([t.canh, t.ra], [['khoa'], ['dung']]);
  assert.equal(await vaoBang(t, 1), 0);
  t.hen.chay(600000);
  assert.equal(await vaoBang(t, 1), 1);
  t.phong.duoi('lai');
  assert.deepEqual([t.canh, t.ra.at(-1)], [['khoa', 'doi'], 'nguoi']);
  assert.equal(await vaoBang(t, 1), 0);
  const k = taoPhongThu();
  await k.vao('p1');
  k.phong.duoi('p1');
  assert.deepEqual([k.canh, await vaoBang(k, 1)], [['doi'], 1], 'who came by the other password closes only that');
});

test('a yes holds for the same certificate for a while, so that a page that finds no path does not ask again and again', async () => {
  const t = taoPhongThu();
  t.bat.hoiTruoc = true;
  let hoi = 0;
  t.dap = true;
  t.hoiNguoi = () => { hoi += 1; return { traLoi: Promise.resolve(t.dap), thoi() {} }; };
  const goi = async (so, vanTayKia) => {
    t.phong.them(so);
    await lang();
    await dua(t.maHoas.at(-1), t.pcs.at(-1), { vanTayKia });
    t.pcs.at(-1).thanh('failed');
    return hoi;
  };
  assert.deepEqual([await goi('1', 'A'), await goi('2', 'A'), await goi('3', 'B')], [1, 1, 2]);
  t.hen.chay(600000);
  assert.equal(await goi('4', 'A'), 3);
  t.phong.dung();
  assert.equal(await goi('5', 'A'), 4, 'not past the red button');
  t.dap = false;
  await goi('6', 'C');
  assert.equal(await goi('7', 'C'), 6, 'a no is no yes');
});

test('no input without a share, and nothing stays held down by a controller that is silent or gone', async () => {
  const t = taoPhongThu();
  const mot = await t.vao('p1');
  const nhan = () => t.nhat.filter(([k]) => k === 'lenh').map(([, j]) => JSON.parse(j).t);
  const giu = '{"t":"key_down","code":"ShiftLeft"}';
  t.day('', 'Chưa được cấp quyền Ghi màn hình', false); // the session goes on, no red button stands for it
  mot.kenh.lenh.vao(giu);
  assert.deepEqual(nhan(), []);
  t.day('http://x', '', true);
  mot.kenh.lenh.vao(giu);
  for (let i = 0; i < 5; i++) {
    t.hen.chay(3000);
    mot.kenh.tin.vao('{"l":"nhip","s":1}');
  }
  assert.deepEqual(nhan(), ['key_down'], 'beats say that it is still held');
  t.hen.chay(4000);
  assert.deepEqual(nhan(), ['key_down', 'key_up']);
  mot.kenh.lenh.vao(giu);
  mot.thanh('disconnected');
  assert.deepEqual(nhan().slice(2), ['key_down', 'key_up'], 'at once');
  mot.thanh('connected');
  mot.kenh.lenh.vao(giu);
  t.day('', 'hỏng', false);
  assert.deepEqual(nhan().slice(4), ['key_down', 'key_up'], 'the share is over');
});

test('who may only look may not change the display, and files end with their switch', async () => {
  const t = taoPhongThu();
  const mot = await t.vao('p1');
  t.day('http://x', '', true);
  mot.kenh.tep.vao('{"l":"tep","id":1,"duong":"a","co":9}');
  mot.kenh.tep.vao('{"l":"tep","id":2,"duong":".bashrc","co":9}');
  Object.assign(t.bat, { choDieuKhien: false, nhanTep: false });
  t.nhat.length = 0;
  t.phong.theo();
  mot.kenh.tin.vao('{"l":"chon","chiSo":1}');
  assert.ok(!t.nhat.some(([k]) => k === 'bat'));
  assert.deepEqual(mot.kenh.tep.cac.slice(1).sort((a, b) => a.id - b.id), [1, 2].map((id) => ({ l: 'hong', id, ly: 'nhanTep.tat' })));
});

test('callers beyond what this machine takes are turned away; without the server only live sessions stay', async () => {
  const t = taoPhongThu();
  await t.vao('noi');
  for (let i = 0; i < 18; i++) t.phong.them(`c${i}`);
  assert.equal(t.phong.cac.length, 17);
  const dong = () => t.nhat.filter(([k]) => k === 'phien:dong').map(([, p]) => p);
  assert.deepEqual([dong(), t.nhat.find(([k]) => k === 'phien:tin')], [['c16', 'c17'], ['phien:tin', 'c16', '{"b":"khoa","giay":5}']]);
  t.hen.chay(5000);
  t.phong.them('moi');
  assert.deepEqual(dong().slice(2), ['c0'], 'a silent caller gives its place to a newcomer');
  await lang();
  await dua(t.maHoas.at(-1), t.pcs.at(-1));
  for (const so of ['h', 'b']) await t.vao(so);
  assert.equal(t.phong.soNguoi, 4);
  await t.vao('nam');
  assert.deepEqual([t.phong.soNguoi, t.ra.at(-1)], [4, 'ban']);
  t.phong.matMayChu();
  assert.deepEqual(t.phong.cac.map(({ phien }) => phien.phien), ['noi', 'moi', 'h', 'b']);
});

test('answers of the server, and none', async () => {
  const hen = taoHen();
  const cam = taoCam({ noi: false });
  const kenh = taoKenhHen({ io: () => cam, hen });
  const mat = [];
  kenh.khi.mat = (ly) => mat.push(ly);
  const cho = kenh.goi('x', { a: 1 });
  assert.deepEqual(cam.gui, [], 'it waits for a connection');
  cam.noi();
  assert.equal(cam.gui[0][0], 'x');
  cam.gui[0][2]({ ok: true, v: 1 });
  assert.deepEqual(await cho, { ok: true, v: 1 });
  const im = kenh.goi('y', {}, 500);
  hen.chay(500);
  assert.equal((await im).code, 'khong_tra_loi');
  const dut = kenh.goi('z', {});
  cam.mat();
  assert.equal((await dut).code, 'khong_tra_loi');
  const tre = kenh.goi('w', {}, 100);
  hen.chay(100);
  await tre;
  cam.noi();
  assert.ok(!cam.gui.some(([ten]) => ten === 'w'), 'what was answered so is never sent');
  assert.deepEqual(mat, ['transport close']);
});

test('cut by the server, the page connects again; closed by itself or lost it leaves that to the library', () => {
  const hen = taoHen();
  const thu = (viec) => {
    const cam = taoCam();
    viec(cam, taoKenhHen({ io: () => cam, hen }));
    hen.chay(5000);
    return cam.lanNoi;
  };
  assert.equal(thu((cam) => cam.mat('io server disconnect')), 1);
  assert.equal(thu((cam) => cam.mat('transport close')), 0);
  assert.equal(thu((cam) => cam.mat('io client disconnect')), 0);
  assert.equal(thu((cam, kenh) => { cam.mat('io server disconnect'); kenh.dong(); }), 0);
});

function taoTraLoiThu({ kho = new Map(), cam = taoCam() } = {}) {
  const t = { kho, cam, hen: taoHen(), khach: [] };
  const kenh = taoKenhHen({ io: () => cam, hen: t.hen });
  t.tl = taoTraLoi({
    kenh, hen: t.hen, sinhThe: () => 'ab'.repeat(32),
    kho: { doc: (k, m) => kho.get(k) ?? m, ghi: (k, v) => kho.set(k, v) },
    khi: { doi() {}, khach: (p) => t.khach.push(p), tin() {}, dong() {} },
  });
  t.tra = async (dap) => { cam.gui.at(-1)[2](dap); await lang(); };
  return t;
}

test('the host announces itself, keeps its code, comes back after a loss and stands back for another window', async () => {
  const t = taoTraLoiThu({ cam: taoCam({ noi: false }) });
  t.cam.noi();
  assert.equal(t.cam.gui.length, 1, 'once, not once more for having waited');
  assert.deepEqual(t.cam.gui[0].slice(0, 2), ['may:mo', { pb: 1, ma: '', the: 'ab'.repeat(32) }]);
  t.cam.vao('may:khach', { phien: 'som' });
  await t.tra({ ok: true, ma: '123456789', stun: ['s'] });
  assert.deepEqual([t.tl.tinh, t.tl.ma, t.tl.stun], ['san-sang', '123456789', ['s']]);
  t.cam.vao('may:khach', { phien: 'p' });
  t.cam.vao('may:khach', undefined);
  assert.deepEqual(t.khach, ['p']);
  t.cam.mat();
  assert.equal(t.tl.tinh, 'mat');
  t.cam.noi();
  assert.equal(t.cam.gui.at(-1)[1].ma, '123456789');
  await t.tra({ ok: true, ma: '123456789', stun: [] });
  t.cam.vao('may:thay');
  t.cam.mat();
  const soGui = t.cam.gui.length;
  t.cam.noi();
  assert.deepEqual([t.tl.tinh, t.cam.gui.length], ['thay', soGui]);
  t.tl.dangKy();
  assert.equal(t.cam.gui.length, soGui + 1);
});

test('a page that opens before its connection asks for one code, not two', async () => {
  const t = taoTraLoiThu({ cam: taoCam({ noi: false }) });
  t.cam.noi();
  assert.equal(t.cam.gui.length, 1);
  await t.tra({ ok: true, ma: '123456789', stun: [] });
  t.cam.mat();
  t.cam.noi();
  t.cam.mat(); // the question goes unanswered with its connection
  await lang();
  t.cam.noi();
  assert.equal(t.cam.gui.length, 3);
});

test('a server that refuses, is too busy, or is not there', async () => {
  for (const [dap, tinh] of [[{ ok: false, code: 'khong_may_chu' }, 'khong-may-chu'], [{ ok: false, code: 'phien_ban' }, 'phien-ban'], [{ ok: true, ma: 'x' }, 'hong'], [{ ok: false, code: 'sai_dang' }, 'hong']]) {
    const t = taoTraLoiThu();
    await t.tra(dap);
    assert.equal(t.tl.tinh, tinh);
    t.hen.chay(3600000);
    assert.equal(t.cam.gui.length, 1);
  }
  const t = taoTraLoiThu();
  await t.tra({ ok: false, code: 'qua_nhieu', cho: 7 });
  t.hen.chay(6999);
  assert.equal(t.cam.gui.length, 1);
  t.hen.chay(1);
  assert.equal(t.cam.gui.length, 2);
});
