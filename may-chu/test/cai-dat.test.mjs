import assert from 'node:assert/strict';
import { execFile, spawn } from 'node:child_process';
import { once } from 'node:events';
import { createServer } from 'node:net';
import { createInterface } from 'node:readline';
import test from 'node:test';
import { fileURLToPath } from 'node:url';
import { docCaiDat } from '../nguon/cai-dat.js';
import { cheDiaChi, diaChiThat, docDanhSach, docDiaChi, khoaDiaChi } from '../nguon/dia-chi.js';
import { GioiHan } from '../nguon/gioi-han.js';
import { HAN_CHU, HAN_CO_MAT, SoMaBoNho } from '../nguon/so-ma.js';
import { HAN, mo } from './dung.mjs';

const KHAM = fileURLToPath(new URL('../nguon/kham.js', import.meta.url));
const CHINH = fileURLToPath(new URL('../nguon/chinh.js', import.meta.url));

test('settings: flag before environment before default; a wrong one is named', () => {
  assert.deepEqual(docCaiDat([], {}).cong, { so: 3000, duPhong: false });
  const c = docCaiDat(['--cong', '80+', '--stun-cong=tat'], { CONG: '90', STUN_CONG: '1', REDIS_URL: 'redis://x' });
  assert.deepEqual([c.cong, c.stunCong, c.redisUrl], [{ so: 80, duPhong: true }, null, 'redis://x']);
  assert.equal(docCaiDat(['--giup'], {}), null);
  const cac = [
    [['--cong', '65536'], {}, /^--cong /], [['--cong', '-1'], {}, /cong/], [[], { CONG: '3000x' }, /^CONG /], [[], { DIA_CHI: 'localhost' }, /^DIA_CHI /],
    [[], { PROXY_TIN: '10.0.0.0/33' }, /^PROXY_TIN "10.0.0.0\/33"/], [[], { PROXY_TIN: 'proxy' }, /^PROXY_TIN /], [[], { REDIS_URL: 'http://x' }, /^REDIS_URL /],
    [[], { STUN_CONG_KHAI: 'stun.example.org' }, /^STUN_CONG_KHAI /], [[], { TEN: 'a b' }, /^TEN /], [[], { GOI_MOI_PHUT: '0' }, /^GOI_MOI_PHUT /], [[], { KHOA: 'k.pem' }, /belong together/],
    [['--la'], {}, /--la/], [['thua'], {}, /thua/],
  ];
  for (const [thamSo, moiTruong, loi] of cac) assert.throws(() => docCaiDat(thamSo, moiTruong), { message: loi });
});

test('addresses: bytes, the key of limits, what the log may hold', () => {
  const cac = [
    ['192.0.2.1', 'c0000201', '192.0.2.1', '192.0.2.0/24'], ['::ffff:192.0.2.1', 'c0000201', '192.0.2.1', '192.0.2.0/24'],
    ['2001:db8:1:2:3::4', '20010db8000100020003000000000004', '20010db800010002', '20010db80001/48'],
    ['::', '0'.repeat(32), '0'.repeat(16), `${'0'.repeat(12)}/48`], ['::1', `${'0'.repeat(31)}1`, '0'.repeat(16), `${'0'.repeat(12)}/48`],
    ['1::', `0001${'0'.repeat(28)}`, '0001000000000000', '000100000000/48'], ['fe80::1%eth0', `fe80${'0'.repeat(27)}1`, 'fe80000000000000', 'fe8000000000/48'],
    ['64:ff9b::192.0.2.1', '0064ff9b0000000000000000c0000201', '0064ff9b00000000', '0064ff9b0000/48'],
  ];
  for (const [chu, byte, khoa, che] of cac) assert.deepEqual([docDiaChi(chu).toString('hex'), khoaDiaChi(chu), cheDiaChi(chu)], [byte, khoa, che], chu);
  for (const chu of ['', 'x', '1.2.3', '1::2::3', undefined]) assert.deepEqual([docDiaChi(chu), khoaDiaChi(chu)], [null, 'khong-ro']);
});

test('who asks: only a trusted proxy’s word counts, and only its own part of it', () => {
  const tin = docDanhSach('127.0.0.1, 10.0.0.0/8, fd00::/8');
  const cac = [
    ['192.0.2.9', '198.51.100.1', '192.0.2.9'], ['127.0.0.1', '198.51.100.1', '198.51.100.1'], ['::ffff:127.0.0.1', '198.51.100.1', '198.51.100.1'],
    ['127.0.0.1', '203.0.113.5, 198.51.100.1', '198.51.100.1'], ['fd00::5', '198.51.100.1, 10.1.1.1', '198.51.100.1'],
    ['127.0.0.1', undefined, '127.0.0.1'], ['127.0.0.1', '198.51.100.1, rác', '127.0.0.1'], ['127.0.0.1', '10.0.0.1', '10.0.0.1'],
  ];
  for (const [remoteAddress, qua, ra] of cac) assert.equal(diaChiThat({ socket: { remoteAddress }, headers: { 'x-forwarded-for': qua } }, tin), ra, qua);
  assert.equal(diaChiThat({ socket: { remoteAddress: '127.0.0.1' }, headers: { 'x-forwarded-for': '1.1.1.1' } }, docDanhSach('')), '127.0.0.1');
});

test('a bucket refills with time, and memory stays bounded', () => {
  let luc = 0;
  const g = new GioiHan({ dung: 2, moiGiay: 0.5, dongHo: () => luc, toiDa: 100 });
  assert.deepEqual([g.lay('a'), g.lay('a'), g.lay('a'), g.lay('b')], [0, 0, 2, 0]);
  luc = 2000;
  assert.deepEqual([g.lay('a'), g.lay('a')], [0, 2]);
  for (let i = 0; i < 1000; i++) g.lay(`x${i}`);
  assert.equal(g.soKhoa, 100);
  luc = 1e6;
  for (let i = 0; i < 100; i++) g.lay('a');
  assert.equal(g.soKhoa, 1, 'those that have filled up again are forgotten');
});

test('the registry in memory: a code is free again after a month away; the absent give way, the present never', async () => {
  let luc = 0;
  const s = new SoMaBoNho({ dongHo: () => luc, toiDa: 2 });
  await s.dangKy('1', 'x', 's1');
  luc = HAN_CO_MAT;
  assert.equal(await s.tim('1'), '', 'not confirmed');
  assert.equal(await s.giuCho('1', 'x', 's1'), true);
  assert.equal(await s.tim('1'), 's1');
  assert.equal(await s.giuCho('1', 'x', 's2'), false);
  await s.nha('1', 's2');
  assert.equal(await s.tim('1'), 's1', 'another connection cannot give it back');
  await s.nha('1', 's1');
  luc += HAN_CHU - 1;
  assert.deepEqual(await s.dangKy('1', 'y', 's3'), { duoc: false, cu: '' });
  luc += 1;
  assert.deepEqual(await s.dangKy('1', 'y', 's3'), { duoc: true, cu: '' });

  await s.dangKy('2', 'x', 's4');
  assert.equal((await s.dangKy('3', 'x', 's5')).duoc, false);
  await s.nha('1', 's3');
  assert.equal((await s.dangKy('3', 'x', 's5')).duoc, true);
  assert.deepEqual([s.soMa, await s.tim('2'), await s.tim('3')], [2, 's4', 's5']);
});

for (const tinHieu of ['SIGTERM', 'SIGINT']) {
  test(`the program: says where it listens, ends in order at ${tinHieu}`, async (t) => {
    const con = spawn(process.execPath, [CHINH, '--cong', '0', '--stun-cong', '0', '--dia-chi', '127.0.0.1'], { stdio: ['ignore', 'pipe', 'inherit'] });
    t.after(() => con.kill('SIGKILL'));
    const ketThuc = once(con, 'exit', { signal: AbortSignal.timeout(HAN) });
    const [dong] = await once(createInterface(con.stdout), 'line', { signal: AbortSignal.timeout(HAN) });
    const { su, cong } = JSON.parse(dong);
    assert.equal(su, 'nghe');
    assert.equal((await fetch(`http://127.0.0.1:${cong}/suc-khoe`)).status, 200);
    con.kill('SIGHUP'); // nothing to read again; nothing ends
    assert.equal((await fetch(`http://127.0.0.1:${cong}/suc-khoe`)).status, 200);
    con.kill(tinHieu);
    assert.deepEqual(await ketThuc, [0, null]);
  });
}

test('the program: a taken port and a wrong setting are said in one line; "+" takes another port', async (t) => {
  const chan = createServer();
  await new Promise((xong) => { chan.listen(0, '127.0.0.1', xong); });
  t.after(() => chan.close());
  const { port } = chan.address();
  const chay = (...thamSo) => new Promise((xong) => {
    const con = execFile(process.execPath, [CHINH, '--dia-chi', '127.0.0.1', '--stun-cong', '0', ...thamSo], { timeout: HAN, killSignal: 'SIGTERM' }, (loi, ra, vanLoi) => {
      xong({ ma: loi?.code ?? 0, ra, vanLoi });
    });
    con.stdout.once('data', () => con.kill('SIGTERM'));
  });
  const ban = await chay('--cong', `${port}`);
  assert.deepEqual([ban.ma, ban.vanLoi], [1, `tovira-may-chu: listen port ${port}: the port is taken\n`]);
  assert.match((await chay('--cong', 'x')).vanLoi, /^tovira-may-chu: --cong must be .*\n$/);
  const { cong } = JSON.parse((await chay('--cong', `${port}+`)).ra.split('\n')[0]);
  assert.ok(cong > 0 && cong !== port);
});

test('the health check: well, nobody there, and a port that it cannot know', async (t) => {
  const m = await mo(t);
  const kham = (CONG) => new Promise((xong) => {
    execFile(process.execPath, [KHAM], { env: { ...process.env, CONG, DIA_CHI: '127.0.0.1' }, timeout: HAN }, (loi, _, noi) => xong([loi?.code ?? 0, noi.split(' ')[0]]));
  });
  assert.deepEqual(await kham(String(m.cong)), [0, '']);
  assert.deepEqual([await kham(`${m.cong}+`), await kham('0')], [[2, 'CONG'], [2, 'CONG']]);
  const trong = createServer().listen(0, '127.0.0.1');
  await once(trong, 'listening');
  const { port } = trong.address();
  await new Promise((xong) => { trong.close(xong); });
  assert.deepEqual(await kham(String(port)), [1, '']);
});
