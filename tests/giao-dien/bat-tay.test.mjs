import assert from 'node:assert/strict';
import test from 'node:test';
import {
  CHUNG, DOAN, KhachThuHai, PRS, TvMaHoa, VT_KE_GIUA, VT_KHACH, VT_MAY, bamNho, chayBatTay, taoDongHo, taoSdp,
} from './bat-tay.mjs';

const LAU = 'Xin chào, máy bàn';
const lau = await TvMaHoa.datMatKhauLau(LAU);
const taoCanh = (them = {}) => TvMaHoa.taoCanhMatKhau({ dongHo: taoDongHo(), ...them });
const phang = (gia) => JSON.parse(JSON.stringify(gia)); // what the bundle makes has another realm's prototypes

test('either password, as people type it, opens for both; letters then go both ways', async () => {
  const canh = taoCanh({ lau });
  const doc = canh.matKhau;
  for (const [matKhau, viTri] of [
    [doc, 0], [` ${doc.slice(0, 3).toUpperCase()}-${doc.slice(3, 6)} ${doc.slice(6)}\n`, 0], [LAU, 1], [LAU.normalize('NFD'), 1],
  ]) {
    const { khach, may, chay, soKhach, soMay } = await chayBatTay({ canh, matKhau });
    assert.deepEqual(phang(soKhach), [['xong', { viTri, vanTayKia: VT_MAY }]], matKhau);
    assert.deepEqual(phang(soMay), [['xong', { viTri, vanTayKia: VT_KHACH }]], matKhau);
    assert.ok(khach.niem({ ten: 'Điện thoại' }) && khach.niem({ ung: null }) && may.niem({ cho: true }));
    await chay();
    assert.deepEqual(phang(soMay.slice(1)), [['thu', { ten: 'Điện thoại' }], ['thu', { ung: null }]]);
    assert.deepEqual(phang(soKhach.slice(1)), [['thu', { cho: true }]]);
    assert.deepEqual([khach.daXong, may.daXong, khach.daHet], [true, true, false]);
  }
  assert.equal(canh.conLai, 5);
});

test('a controller written from the document alone is understood, and understands', async () => {
  const canh = taoCanh({ lau });
  const { matKhau } = canh;
  for (const [layPrs, i] of [[(m, j) => (j === 0 ? PRS(matKhau)(m) : DOAN()), 0], [(m, j) => (j === 1 ? PRS(LAU)(m) : DOAN()), 1],
    [(m, j) => PRS([matKhau, LAU][j])(m), 0]]) { // of two right ones the first counts
    const k = new KhachThuHai(canh, layPrs);
    assert.deepEqual(phang(await k.batTay()), ['xong', { viTri: i, vanTayKia: VT_KHACH }]);
    const cuoi = k.cuaMay.at(-1);
    assert.deepEqual([cuoi.b, cuoi.i, k.dungThe(cuoi)], [6, i, true]);
    for (const vat of [{ cho: true }, { sdp: { type: 'answer', sdp: taoSdp(VT_MAY) } }]) {
      assert.ok(k.may.niem(vat));
      assert.deepEqual(k.moNiem(k.cuaMay.at(-1), i), vat);
    }
    await k.noiNiem({ ten: 'a' }, i);
    await k.noiNiem({ sdp: { type: 'offer', sdp: taoSdp(VT_KHACH) } }, i);
    assert.deepEqual(phang(k.soMay.slice(1).map(([, vat]) => Object.keys(vat)[0])), ['ten', 'sdp']);
  }
});

test('a wrong password: one said so, one counted; a lasting one is taken as typed', async () => {
  const canh = taoCanh({ lau });
  const thu = [`${canh.matKhau}2`, LAU.toUpperCase(), ''];
  for (const [i, matKhau] of thu.entries()) {
    const { khach, may, soKhach, soMay } = await chayBatTay({ canh, matKhau, bamCham: bamNho });
    assert.deepEqual([soKhach, soMay], [[['sai', 4 - i]], [['sai', 4 - i]]]);
    assert.deepEqual([khach.daHet, may.daHet, khach.niem({ a: 1 }), may.niem({ a: 1 })], [true, true, false, false]);
  }
  assert.equal(canh.conLai, 2);
});

test('both codes and the session are part of it', async () => {
  const canh = taoCanh();
  for (const chungKhach of [{ ...CHUNG, ma: '123456780' }, { ...CHUNG, phien: 'khac' }]) {
    const { soKhach, soMay } = await chayBatTay({ canh, matKhau: canh.matKhau, bamCham: bamNho, chungKhach });
    assert.deepEqual([soKhach[0][0], soMay[0][0]], ['sai', 'sai']);
  }
  const { soMay } = await chayBatTay({ canh, matKhau: canh.matKhau, bamCham: bamNho, chungKhach: { ...CHUNG, ma: '123 456-789' } });
  assert.equal(soMay[0][0], 'xong');
});

test('five wrong ones over all callers, though right ones come between, lock for a minute and change the password', async () => {
  const dongHo = taoDongHo();
  const nghe = [];
  const canh = taoCanh({ dongHo, lau, khiDoi: (m) => nghe.push(m), khiKhoa: (giay) => nghe.push(giay) });
  const cu = canh.matKhau;
  const doan = () => new KhachThuHai(canh, DOAN).batTay();
  const dangDo = [new KhachThuHai(canh, PRS(LAU), 'a'), new KhachThuHai(canh, PRS(LAU), 'b'), new KhachThuHai(canh, PRS(LAU), 'c')];
  await dangDo[0].chao();
  await dangDo[1].chao();
  await dangDo[1].guiPhan();
  for (const con of [4, 3, 2]) assert.deepEqual(await doan(), ['sai', con]);
  const dung = new KhachThuHai(canh, PRS(LAU), 'd');
  assert.equal((await dung.batTay())[0], 'xong');
  assert.deepEqual(await doan(), ['sai', 1]);
  const cuoi = new KhachThuHai(canh, DOAN);
  assert.deepEqual(await cuoi.batTay(), ['sai', 0]);
  assert.deepEqual(cuoi.cuaMay.at(-1), { b: 'sai', con: 0 });

  assert.deepEqual(nghe, [canh.matKhau, 60]);
  assert.notEqual(canh.matKhau, cu);
  for (const k of dangDo.slice(0, 2)) {
    assert.deepEqual([k.soMay, k.cuaMay.at(-1)], [[['khoa', 60]], { b: 'khoa', giay: 60 }]);
    await k.guiThe().catch(() => {}); // the first has no share to answer
    assert.equal(k.soMay.length, 1);
  }
  assert.ok(dung.may.daXong, 'who is in stays in');

  dongHo.nay += 59_001;
  assert.equal(canh.khoaCon(), 1);
  const { soKhach } = await chayBatTay({ canh, matKhau: LAU, bamCham: bamNho });
  assert.deepEqual(soKhach, [['khoa', 1]]);
  await dangDo[2].chao();
  assert.deepEqual(dangDo[2].cuaMay, [{ b: 'khoa', giay: 1 }]);

  dongHo.nay += 999;
  assert.deepEqual([canh.khoaCon(), canh.conLai], [0, 5]);
  assert.deepEqual((await chayBatTay({ canh, matKhau: cu, bamCham: bamNho })).soKhach, [['sai', 4]]);
  assert.equal((await chayBatTay({ canh, matKhau: canh.matKhau, bamCham: bamNho })).soKhach[0][0], 'xong');
});

test('locked by this person: no password lets anybody in for a minute, and this opening\'s is another afterwards', async () => {
  const dongHo = taoDongHo();
  const nghe = [];
  const canh = taoCanh({ dongHo, lau, khiDoi: (m) => nghe.push(m), khiKhoa: (giay) => nghe.push(giay) });
  const cu = canh.matKhau;
  const dangDo = new KhachThuHai(canh, PRS(LAU));
  await dangDo.chao();
  canh.khoaNgay();
  assert.deepEqual([nghe, dangDo.soMay, canh.conLai], [[canh.matKhau], [['khoa', 60]], 5]);
  for (const matKhau of [canh.matKhau, LAU]) {
    assert.deepEqual((await chayBatTay({ canh, matKhau, bamCham: bamNho })).soKhach, [['khoa', 60]]);
  }
  dongHo.nay += 60_000;
  assert.deepEqual((await chayBatTay({ canh, matKhau: cu, bamCham: bamNho })).soKhach, [['sai', 4]]);
  assert.equal((await chayBatTay({ canh, matKhau: LAU, bamCham: bamNho })).soKhach[0][0], 'xong');
});

test('another password, a lasting one set or removed: handshakes under way end, sessions stay', async () => {
  const canh = taoCanh();
  const cu = canh.matKhau;
  const xong = new KhachThuHai(canh, PRS(cu));
  await xong.batTay();
  for (const doi of [() => canh.doiMatKhau(), () => canh.datLau(lau), () => canh.datLau(null)]) {
    const k = new KhachThuHai(canh, PRS(canh.matKhau));
    await k.chao();
    doi();
    assert.deepEqual(k.soMay, [['hong', 'doi-mat-khau']]);
    assert.equal(k.cuaMay.length, 1, 'nothing more is said');
  }
  assert.notEqual(canh.matKhau, cu);
  assert.ok(xong.may.daXong);
});

test('what is stored of a lasting password; what cannot be read is none', async () => {
  assert.deepEqual(Object.keys(lau), ['muoi', 'prs']);
  assert.equal(lau.prs, PRS(LAU)(Buffer.from(lau.muoi, 'base64url')).toString('base64url'));
  assert.notEqual((await TvMaHoa.datMatKhauLau(LAU)).muoi, lau.muoi);
  for (const [chu, loi] of [['123456789', 'ngan'], ['', 'ngan'], ['a'.repeat(129), 'dai'], ['abababababab', 'de'], ['e\u0301'.repeat(9), 'ngan']]) {
    assert.deepEqual(phang(await TvMaHoa.datMatKhauLau(chu)), { loi });
  }
  const canh = taoCanh({ lau });
  for (const hong of [null, {}, 'x', { ...lau, prs: 'ngan' }, { muoi: lau.muoi }, { ...lau, muoi: `${lau.muoi}=` }, { ...lau, prs: 7 }]) {
    assert.equal(canh.datLau(hong), false);
    assert.equal(canh.coLau, false);
  }
  assert.equal(canh.datLau(lau), true);
});

test('a minute for a handshake, for either side; a session has no such end', async () => {
  for (const [phut, cho] of [[60_000, 'xong'], [60_001, 'hong']]) {
    const [dongHo, cuaKhach] = [taoDongHo(), taoDongHo()];
    const canh = taoCanh({ dongHo });
    const may = new KhachThuHai(canh, PRS(canh.matKhau));
    await may.chao();
    await may.guiPhan();
    dongHo.nay += phut;
    await may.guiThe();
    assert.equal(may.soMay[0][0], cho);
    const doi = (ben, thu) => { if (thu.b === 6) cuaKhach.nay += phut; };
    const { soKhach, may: benMay, chay } = await chayBatTay({ canh, matKhau: canh.matKhau, dongHo: cuaKhach, doi, bamCham: bamNho });
    assert.deepEqual(soKhach[0].slice(0, 1), [cho]);
    cuaKhach.nay += 3_600_000;
    benMay.niem({ a: 1 });
    await chay();
    assert.equal(soKhach.length, cho === 'xong' ? 2 : 1);
  }
});

test('ended while the slow hash runs: stays ended and says nothing', async () => {
  const canh = taoCanh();
  const gui = [];
  const so = [];
  const khi = new Proxy({}, { get: (_, ten) => (gia) => so.push([ten, gia]) });
  const may = new KhachThuHai(canh, DOAN);
  const khach = TvMaHoa.taoBatTayKhach({ ...CHUNG, matKhau: 'x', vanTay: VT_KHACH, gui: (c) => gui.push(c), khi });
  khach.batDau();
  await may.noi(JSON.parse(gui[0]));
  const dangNghe = khach.nhan(JSON.stringify(may.cuaMay[0]));
  const sau = khach.nhan('{"b":"khoa","giay":5}');
  await null;
  khach.dong();
  await Promise.all([dangNghe, sau]);
  assert.deepEqual([gui.length, so, khach.daHet], [1, [], true]);
});

test('while the slow hash runs the page gets its turn, and a refusal that arrives meanwhile counts afterwards', async () => {
  const canh = taoCanh();
  let luot = 0;
  const dem = setInterval(() => { luot += 1; }, 1);
  const { soKhach } = await chayBatTay({
    canh, matKhau: canh.matKhau, doi: (ben, thu) => (thu.b === 2 ? [['khach', thu], ['khach', { b: 'khoa', giay: 5 }]] : undefined),
  });
  clearInterval(dem);
  assert.deepEqual(soKhach, [['khoa', 5]]);
  assert.ok(luot > 1, `${luot} turns`);
});

test('a fault of the page ends the session and is not thrown at who delivers', async () => {
  const canh = taoCanh();
  const hong = [];
  for (const dat of [{ gui: () => { throw new Error('closed'); } }, { gui: () => {}, khi: { hong: (ly) => { hong.push(ly); throw new Error(); } } }]) {
    const may = TvMaHoa.taoBatTayMay({ ...CHUNG, canh, vanTay: VT_MAY, khi: { hong: (ly) => hong.push(ly) }, ...dat });
    await may.nhan(JSON.stringify({ b: 1, n: Buffer.alloc(16).toString('base64url') }));
    await may.nhan('{}');
    assert.ok(may.daHet);
  }
  assert.deepEqual(hong, ['noi-bo', 'dang']);
  for (const b of [6, 7]) { // the connection is gone just when the password was right, or afterwards
    const k = new KhachThuHai(canh, PRS(canh.matKhau));
    const dong = k.cuaMay.push;
    k.cuaMay.push = function day(thu) {
      if (thu.b === b) throw new Error('closed');
      return dong.call(this, thu);
    };
    await k.batTay();
    if (b === 7) assert.equal(k.may.niem({ a: 1 }), false);
    assert.deepEqual(k.soMay.map((s) => s[0]), b === 6 ? ['hong'] : ['xong', 'hong']);
  }
  assert.throws(() => TvMaHoa.taoBatTayMay({ ...CHUNG, canh, vanTay: 'sha-1 AA', gui() {}, khi: {} }), { name: 'TypeError' });
  assert.throws(() => TvMaHoa.taoBatTayMay({ ...CHUNG, canh: {}, vanTay: VT_MAY, gui() {}, khi: {} }), { name: 'TypeError' });
});

test('fingerprints of descriptions', () => {
  const [a, c] = [VT_MAY, VT_KE_GIUA].map((v) => `a=fingerprint:${v}`);
  const { vanTayCuaSdp, sdpHop } = TvMaHoa;
  for (const [dong, cho] of [
    [[a], VT_MAY], [[a, 'm=video 9', a.replaceAll('A:A', 'a:a')], VT_MAY], [[a.replace('sha', 'SHA').toLowerCase()], VT_MAY],
    [[], null], [['m=video 9'], null], [[a, c], null], [[c, a], null], [[a, 'a=fingerprint:sha-1 AA:BB'], null], [[`${a}:AA`], null],
    [[a.slice(0, -3)], null], [[`${a} `], null], [[a, ` ${c}`], null], [[a, `A=Fingerprint:${VT_KE_GIUA}`], null], [[`x${a}`], null],
    [[a, `a=fingerprint :${VT_KE_GIUA}`], null], [[`a=x\r${c}`, a], null], [[`${a}\0`], null],
  ]) {
    for (const noi of ['\r\n', '\n']) {
      const sdp = ['v=0', ...dong, ''].join(noi);
      assert.equal(vanTayCuaSdp(sdp), cho, sdp);
      assert.equal(sdpHop(sdp, VT_MAY), cho === VT_MAY, sdp);
    }
  }
  for (const lung of [undefined, null, 5, {}, [a]]) assert.equal(vanTayCuaSdp(lung), null);
  assert.equal(sdpHop('v=0', null), false);
  assert.equal(sdpHop(`${a}\n`, VT_MAY.toLowerCase()), false);
});

test('a controller knows when its tags have left, which is what a guess could be tried against', async () => {
  for (const [b, mong] of [[2, false], [4, false], [6, true]]) {
    const giu = (ben, thu) => (thu.b === b ? [] : [[ben === 'may' ? 'khach' : 'may', thu]]);
    const canh = taoCanh();
    const { khach, soKhach } = await chayBatTay({ canh, matKhau: canh.matKhau, doi: giu, bamCham: bamNho });
    assert.deepEqual([khach.daGuiThe(), soKhach], [mong, []], `letter ${b} withheld`);
  }
});

test('the calls that the page relies on', () => {
  const canh = taoCanh();
  assert.deepEqual(Object.keys(canh).sort(), ['coLau', 'conLai', 'datLau', 'doiMatKhau', 'khoaCon', 'khoaNgay', 'matKhau', 'sanSang']);
  const may = TvMaHoa.taoBatTayMay({ ...CHUNG, canh, vanTay: VT_MAY, gui() {}, khi: {} });
  const khach = TvMaHoa.taoBatTayKhach({ ...CHUNG, matKhau: '', vanTay: VT_MAY, gui() {}, khi: {} });
  assert.deepEqual(Object.keys(may).sort(), ['daHet', 'daXong', 'dong', 'nhan', 'niem']);
  assert.deepEqual(Object.keys(khach).sort(), ['batDau', 'daGuiThe', 'daHet', 'daXong', 'dong', 'nhan', 'niem']);
  assert.match(canh.matKhau, /^[2-9a-z]{10}$/);
});
