import assert from 'node:assert/strict';
import { request } from 'node:http';
import test from 'node:test';
import { THE, THE_KHAC, cho, choDen, choRoi, goi, mo, moMay, moPhien } from './dung.mjs';

const dem = async (m) => (await fetch(`${m.goc}/suc-khoe`)).json();

test('a host and a controller: registered, called, letters both ways in order, ended', async (t) => {
  const m = await mo(t);
  const may = await m.noi();
  const khach = await m.noi({ transports: ['polling', 'websocket'] });
  const mo1 = await moMay(may);
  assert.match(mo1.ma, /^[1-9]\d{8}$/);
  assert.deepEqual(mo1, { ok: true, ma: mo1.ma, stun: [`stun:127.0.0.1:${m.stunCong}`] });
  const { phien, ...con } = await goi(khach, mo1.ma);
  assert.deepEqual(con, { ok: true, stun: mo1.stun });
  assert.deepEqual(await cho(may, 'may:khach'), { phien });
  assert.deepEqual(await dem(m), { tot: true, pb: 1, ketNoi: 2, may: 1, phien: 1 });

  const thu = Array.from({ length: 50 }, (_, i) => `thư ${i}`);
  for (const [gui, nhan] of [[khach, may], [may, khach]]) {
    const dap = await Promise.all(thu.map((tin) => gui.hoi('phien:tin', { phien, tin })));
    assert.ok(dap.every((d) => d.ok));
    for (const tin of thu) assert.deepEqual(await cho(nhan, 'phien:tin'), { phien, tin });
    assert.ok(!gui.den.some(([su]) => su === 'phien:tin'), 'a letter does not come back to its sender');
  }

  assert.deepEqual(await may.hoi('phien:dong', { phien }), { ok: true });
  assert.deepEqual(await cho(khach, 'phien:dong'), { phien, ly: 'ben-kia' });
  assert.equal((await khach.hoi('phien:tin', { phien, tin: 'x' })).code, 'khong_co_phien');
  assert.deepEqual(await may.hoi('phien:dong', { phien }), { ok: true }, 'gone already');
  assert.deepEqual(may.den, []);
});

test('what an event may hold', async (t) => {
  const m = await mo(t, { DANG_KY_MOI_PHUT: '1000', GOI_MOI_PHUT: '1000' });
  const { may, phien } = await moPhien(m);
  const pb = 1;
  const ma = '123456789';
  const cac = [
    ['may:mo', undefined, 'sai_dang'], ['may:mo', null, 'sai_dang'], ['may:mo', [1], 'sai_dang'], ['may:mo', 'x', 'sai_dang'],
    ['may:mo', { ma, the: THE }, 'sai_dang'], ['may:mo', { pb: '1', ma, the: THE }, 'sai_dang'],
    ['may:mo', { pb: 2, moi: true }, 'phien_ban'], ['may:mo', { pb: 0, ma, the: THE }, 'phien_ban'],
    ['may:mo', { pb, ma: '12345678', the: THE }, 'sai_dang'], ['may:mo', { pb, ma: 123456789, the: THE }, 'sai_dang'],
    ['may:mo', { pb, ma: '１２３４５６７８９', the: THE }, 'sai_dang'], ['may:mo', { pb, the: THE }, 'sai_dang'],
    ['may:mo', { pb, ma: `${ma}\n`, the: THE }, 'sai_dang'], ['may:mo', { pb, ma, the: THE.slice(1) }, 'sai_dang'],
    ['may:mo', { pb, ma, the: THE.toUpperCase() }, 'sai_dang'], ['may:mo', { pb, ma, the: Buffer.from(THE) }, 'sai_dang'],
    ['khach:goi', { pb, ma: '' }, 'sai_dang'], ['khach:goi', { pb, ma: { $ne: 1 } }, 'sai_dang'], ['khach:goi', { pb: 7 }, 'phien_ban'],
    ['khach:goi', { pb, ma }, 'khong_co_may'],
    ['phien:tin', { phien }, 'sai_dang'], ['phien:tin', { phien, tin: { b: 1 } }, 'sai_dang'], ['phien:tin', { phien: 1, tin: '' }, 'sai_dang'],
    ['phien:tin', { phien, tin: 'x'.repeat(65_537) }, 'qua_lon'], ['phien:tin', { phien: 'A'.repeat(22), tin: '' }, 'khong_co_phien'],
    ['phien:dong', {}, 'sai_dang'], ['phien:dong', { phien: may.id }, 'sai_dang'],
    ['la:hoac', {}, 'sai_dang'], ['__proto__', {}, 'sai_dang'], ['toString', {}, 'sai_dang'],
  ];
  const s = await m.noi();
  for (const [su, d, code] of cac) {
    const kq = await s.hoi(su, d);
    assert.equal(kq.ok, false);
    assert.equal(kq.code, code, `${su} ${JSON.stringify(d)?.slice(0, 80)}`);
  }
  s.emit('may:mo'); // without anyone to acknowledge to
  s.emit('phien:tin', { phien, tin: 'x' });
  assert.equal((await s.hoi('may:dong')).ok, true);
  // The longest letter in its longest writing, and text beyond ASCII, arrive whole.
  const [khachA] = [await m.noi()];
  const { ma: maA } = await moMay(may);
  const { phien: p } = await goi(khachA, maA);
  for (const tin of ['\u0000'.repeat(65_536), 'ệ'.repeat(65_536)]) {
    assert.equal((await khachA.hoi('phien:tin', { phien: p, tin })).ok, true);
    assert.equal((await cho(may, 'phien:tin')).tin, tin);
  }
});

test('a packet beyond every letter cuts the connection, and only that one', async (t) => {
  const m = await mo(t);
  const { may, khach, phien } = await moPhien(m);
  const la = await m.noi();
  la.emit('phien:tin', { phien, tin: 'x'.repeat(600_000) });
  await choRoi(la);
  assert.equal((await khach.hoi('phien:tin', { phien, tin: 'còn' })).ok, true);
  assert.equal((await cho(may, 'phien:tin')).tin, 'còn');
});

test('nobody else can send into a session, end it, or be the host of both ends', async (t) => {
  const m = await mo(t);
  const { may, khach, ma, phien } = await moPhien(m);
  const la = await m.noi();
  const { phien: phienLa } = await goi(la, ma);
  for (const p of [phien, may.id, `p:${phien}`]) {
    assert.equal((await la.hoi('phien:tin', { phien: p, tin: 'giả' })).ok, false);
    await la.hoi('phien:dong', { phien: p });
  }
  await khach.hoi('phien:tin', { phien, tin: 'thật' });
  assert.deepEqual(await cho(may, 'phien:tin'), { phien, tin: 'thật' });
  await la.hoi('phien:tin', { phien: phienLa, tin: 'của tôi' });
  assert.deepEqual(await cho(may, 'phien:tin'), { phien: phienLa, tin: 'của tôi' });
  assert.deepEqual(khach.den, []);
  assert.equal((await goi(may, ma)).code, 'khong_co_may');
});

test('a code belongs to the proof that registered it first', async (t) => {
  const m = await mo(t);
  const [mot, hai, la] = [await m.noi(), await m.noi(), await m.noi()];
  assert.equal((await moMay(mot, '246813579')).ma, '246813579');
  assert.equal((await moMay(mot, '246813579')).ma, '246813579', 'again from the same page: nothing changes');
  const khac = await moMay(la, '246813579', THE_KHAC);
  assert.ok(khac.ok && khac.ma !== '246813579');

  assert.equal((await moMay(hai, '246813579')).ma, '246813579');
  await cho(mot, 'may:thay');
  const khach = await m.noi();
  await goi(khach, '246813579');
  await cho(hai, 'may:khach');
  assert.deepEqual([mot.den, la.den], [[], []], 'the replaced page and the stranger hear of no call');

  // The replaced page leaving does not take the code from its successor; its host saying goodbye does.
  assert.equal((await mot.hoi('may:dong')).ok, true);
  assert.equal((await goi(khach, '246813579')).ok, true);
  assert.equal((await hai.hoi('may:dong')).ok, true);
  assert.equal((await goi(khach, '246813579')).code, 'khong_co_may');
  assert.notEqual((await moMay(la, '246813579', THE_KHAC)).ma, '246813579', 'still its owner’s');
});

test('another code of the same page frees the one before', async (t) => {
  const m = await mo(t);
  const [may, khach] = [await m.noi(), await m.noi()];
  await moMay(may, '111111111');
  await moMay(may, '222222222');
  assert.equal((await goi(khach, '111111111')).code, 'khong_co_may');
  assert.equal((await goi(khach, '222222222')).ok, true);
});

for (const ben of ['may', 'khach']) {
  test(`the ${ben} side’s connection goes: the other is told, its session is gone`, async (t) => {
    const m = await mo(t);
    const p = await moPhien(m);
    const kia = ben === 'may' ? p.khach : p.may;
    p[ben].close();
    assert.deepEqual(await cho(kia, 'phien:dong'), { phien: p.phien, ly: 'mat-lien-lac' });
    assert.equal((await kia.hoi('phien:tin', { phien: p.phien, tin: 'x' })).code, 'khong_co_phien');
    if (ben === 'may') await choDen(async () => (await goi(p.khach, p.ma)).code === 'khong_co_may', 'the code answers no more');
    else assert.equal((await dem(m)).may, 1);
  });
}

test('a session that comes to nothing is ended after five minutes, one past the handshake is not', async (t) => {
  const m = await mo(t);
  const { may, khach, ma, phien } = await moPhien(m);
  const { phien: song } = await goi(khach, ma);
  for (let i = 0; i < 4; i++) await may.hoi('phien:tin', { phien: song, tin: `${i}` });
  m.dongHo.luc = 4.9 * 60_000;
  await m.quet();
  assert.ok(![...may.den, ...khach.den].some(([su]) => su === 'phien:dong'));
  m.dongHo.luc = 5 * 60_000;
  await m.quet();
  for (const s of [may, khach]) assert.deepEqual(await cho(s, 'phien:dong'), { phien, ly: 'mat-lien-lac' });
  assert.equal((await khach.hoi('phien:tin', { phien: song, tin: 'x' })).ok, true);
});

test('limits: calls, registrations and letters of one address, and where they end', async (t) => {
  const m = await mo(t, { GOI_MOI_PHUT: '3', DANG_KY_MOI_PHUT: '2', TIN_MOI_GIAY: '1', PROXY_TIN: '127.0.0.1' });
  const tu = (dc) => m.noi({ extraHeaders: { 'X-Forwarded-For': dc } });
  const [a, cungMang, b] = [await tu('2001:db8:0:1::1'), await tu('2001:db8:0:1:ffff::2'), await tu('192.0.2.7')];
  for (let i = 0; i < 3; i++) assert.equal((await goi(i % 2 ? a : cungMang, '123456789')).code, 'khong_co_may');
  assert.deepEqual(await goi(a, '123456789'), { ok: false, code: 'qua_nhieu', error: 'too many, try later', cho: 20 });
  assert.equal((await goi(b, '123456789')).code, 'khong_co_may');
  m.dongHo.luc += 20_000;
  assert.equal((await goi(a, '123456789')).code, 'khong_co_may');
  for (let i = 0; i < 2; i++) assert.equal((await moMay(a)).ok, true);
  assert.equal((await moMay(a)).code, 'qua_nhieu');

  const { ma } = await moMay(b);
  m.dongHo.luc += 30_000;
  const { phien } = await goi(a, ma);
  const dap = await Promise.all(Array.from({ length: 35 }, () => a.hoi('phien:tin', { phien, tin: '' })));
  assert.deepEqual(dap.map((d) => d.ok), [...Array(33).fill(true), false, false]);
  m.dongHo.luc += 20_000;
  assert.equal((await a.hoi('phien:tin', { phien, tin: 'x'.repeat(50_000) })).code, 'qua_nhieu', 'a long letter costs more');

  // Whoever goes on after a hundred refusals is cut.
  for (let i = 0; i < 110; i++) a.emit('phien:dong', { phien: 'sai' });
  await choRoi(a);
  assert.equal(b.connected, true);
  await m.quet();
  const nhatKy = m.nhatKy.join('');
  assert.match(nhatKy, /"su":"tu-choi","vi":"khach:goi","mang":"20010db80000\/48","lan":\d/);
  assert.ok(!nhatKy.includes(ma) && !nhatKy.includes('192.0.2.7') && !nhatKy.includes(phien));
});

test('a /48 has limits of its own, so that its 65 536 networks are not as many callers', async (t) => {
  const m = await mo(t, { GOI_MOI_PHUT: '2', KET_NOI_MOI_DIA_CHI: '2', PROXY_TIN: '127.0.0.1' });
  const tu = (mang, so) => m.noi({ extraHeaders: { 'X-Forwarded-For': `2001:db8:${mang}:${so}::1` } });
  const may = await m.noi();
  const { ma } = await moMay(may);
  const cac = [];
  for (let so = 1; so <= 16; so++) cac.push(await tu(1, so));
  await assert.rejects(tu(1, 17), 'connections');
  const la = await tu(2, 1);
  const nhan = [];
  for (const s of cac) nhan.push((await goi(s, ma)).ok);
  assert.deepEqual(nhan, [...Array(8).fill(true), ...Array(8).fill(false)], 'sessions of one host');
  assert.equal((await goi(cac[0], ma)).cho, 4, 'calls: sixteen of this network so far, and one each 3.75 s');
  assert.equal((await goi(la, ma)).ok, true, 'its neighbour is not touched');
});

test('one caller cannot take all of a host, nor can many keep others out with unfinished calls', async (t) => {
  const m = await mo(t, { PROXY_TIN: '127.0.0.1' });
  const tu = (dc) => m.noi({ extraHeaders: { 'X-Forwarded-For': dc } });
  const may = await m.noi();
  const { ma } = await moMay(may);
  const ke = await tu('192.0.2.1');
  for (let i = 0; i < 4; i++) assert.equal((await goi(ke, ma)).ok, true);
  assert.equal((await goi(ke, ma)).code, 'qua_nhieu');
  for (let i = 2; i < 5; i++) {
    const s = await tu(`192.0.2.${i}`);
    for (let k = 0; k < 4; k++) assert.equal((await goi(s, ma)).ok, true);
  }
  const nguoi = await tu('192.0.2.99');
  assert.equal((await goi(nguoi, ma)).code, 'qua_nhieu');
  m.dongHo.luc += 31_000;
  assert.equal((await goi(nguoi, ma)).ok, true);
  assert.equal((await cho(ke, 'phien:dong')).ly, 'mat-lien-lac');
});

test('who calls and hangs up at once does not get the host cut off', async (t) => {
  const m = await mo(t, { GOI_MOI_PHUT: '1000' });
  const may = await m.noi();
  const khach = await m.noi();
  const { ma } = await moMay(may);
  for (let i = 0; i < 110; i++) {
    const { phien } = await goi(khach, ma);
    await khach.hoi('phien:dong', { phien });
    await cho(may, 'phien:dong');
    // What a host sends that has not heard of the end yet.
    assert.equal((await may.hoi('phien:tin', { phien, tin: 'x' })).code, 'khong_co_phien');
    if (i % 2) await may.hoi('phien:dong', { phien });
  }
  assert.equal((await goi(khach, ma)).ok, true);
});

test('an address is remembered though its first request’s socket has closed, and no query gets around the count', async (t) => {
  const m = await mo(t, { GOI_MOI_PHUT: '1', KET_NOI_MOI_DIA_CHI: '3', PROXY_TIN: '127.0.0.1' });
  // A connection for each request: the first one's is gone when the signalling begins.
  const xinRieng = (dc, them, than) => new Promise((xong, hong) => {
    const q = request(`${m.goc}/socket.io/?EIO=4&transport=polling${them}`, { agent: false, method: than ? 'POST' : 'GET', headers: { 'X-Forwarded-For': dc } }, (tra) => {
      let chu = '';
      tra.on('data', (d) => { chu += d; });
      tra.on('close', () => xong(chu));
    });
    q.on('error', hong).end(than);
  });
  const goiRieng = async (dc) => {
    const sid = `&sid=${JSON.parse((await xinRieng(dc, '')).slice(1)).sid}`;
    await xinRieng(dc, sid, '40');
    await xinRieng(dc, sid, '420["khach:goi",{"pb":1,"ma":"123456789"}]');
    let chu = '';
    while (!chu.includes('430[')) chu += await xinRieng(dc, sid);
    return JSON.parse(chu.slice(chu.indexOf('430[') + 3))[0].code;
  };
  assert.deepEqual([await goiRieng('192.0.2.1'), await goiRieng('192.0.2.2'), await goiRieng('192.0.2.1')], ['khong_co_may', 'khong_co_may', 'qua_nhieu']);
  const xin = async (them) => (await fetch(`${m.goc}/socket.io/?EIO=4&transport=polling${them}`, { headers: { 'X-Forwarded-For': '192.0.2.3' } })).status;
  assert.deepEqual([await xin(''), await xin('&sid='), await xin('&sid=x'), await xin('&sid='), await xin('&sid=')], [200, 200, 400, 200, 403]);
});

test('who may connect: the own origin, loopback origins, programs; not another page, not the hundred-and-first', async (t) => {
  const m = await mo(t, { KET_NOI_MOI_DIA_CHI: '6' });
  for (const transports of [['websocket'], ['polling']]) {
    for (const Origin of [m.goc, 'http://localhost:8443', 'http://127.0.0.1']) (await m.noi({ transports, extraHeaders: { Origin } })).close();
    for (const Origin of ['https://example.org', 'null', 'http://127.0.0.1.example.org', 'http://localhost.example.org', 'https://127.0.0.1:1', m.goc.replace('127.0.0.1', '127.0.0.2')]) {
      await assert.rejects(m.noi({ transports, extraHeaders: { Origin } }), Origin);
    }
  }
  const cors = async (origin) => (await fetch(`${m.goc}/socket.io/?EIO=4&transport=polling&sid=x`, { headers: { origin } })).headers.get('access-control-allow-origin');
  assert.equal(await cors('http://localhost:5'), 'http://localhost:5');
  assert.equal(await cors('https://example.org'), null);

  m.dongHo.luc += 60_000;
  await choDen(async () => (await dem(m)).ketNoi === 0, 'all have gone');
  for (let i = 0; i < 6; i++) await m.noi();
  await assert.rejects(m.noi());
});
