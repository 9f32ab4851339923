// Two instances on one Redis, a real one, where there is a redis-server to start.
import assert from 'node:assert/strict';
import { execFileSync, spawn } from 'node:child_process';
import { mkdtempSync, rmSync } from 'node:fs';
import { once } from 'node:events';
import { connect } from 'node:net';
import { tmpdir } from 'node:os';
import { join } from 'node:path';
import test from 'node:test';
import { createClient } from '@redis/client';
import { THE, THE_KHAC, cho, choDen, goi, mo, moMay, moPhien } from './dung.mjs';

const co = (() => { try { execFileSync('redis-server', ['--version']); return true; } catch { return false; } })();
const skip = !co && 'no redis-server here';

// On a socket in a folder of its own: { url, tat(), chay() }.
async function moRedis(t) {
  const thuMuc = mkdtempSync(join(tmpdir(), 'redis-'));
  const o = join(thuMuc, 'o');
  let con = null;
  const chay = async () => {
    con = spawn('redis-server', ['--port', '0', '--unixsocket', o, '--save', '', '--dir', thuMuc], { stdio: 'ignore' });
    await choDen(() => new Promise((xong) => { const s = connect(o, () => { s.destroy(); xong(true); }).on('error', () => xong(false)); }), 'redis answers');
  };
  const tat = async () => {
    if (con.exitCode !== null || con.signalCode !== null) return;
    const het = once(con, 'exit');
    con.kill('SIGKILL');
    await het;
  };
  await chay();
  t.after(async () => { await tat(); rmSync(thuMuc, { recursive: true }); });
  return { url: `unix:${o}`, o, chay, tat };
}

test('host and controller on different instances', { skip }, async (t) => {
  const redis = await moRedis(t);
  const [a, b] = [await mo(t, { REDIS_URL: redis.url }), await mo(t, { REDIS_URL: redis.url })];
  const { may, khach, ma, phien } = await moPhien(a, b);
  const thu = Array.from({ length: 100 }, (_, i) => `thư ${i}`);
  for (const [gui, nhan] of [[khach, may], [may, khach]]) {
    for (const tin of thu) gui.emit('phien:tin', { phien, tin });
    for (const tin of thu) assert.deepEqual(await cho(nhan, 'phien:tin'), { phien, tin });
  }
  const la = await b.noi();
  assert.equal((await la.hoi('phien:tin', { phien, tin: 'giả' })).code, 'khong_co_phien');

  await may.hoi('phien:dong', { phien });
  assert.deepEqual(await cho(khach, 'phien:dong'), { phien, ly: 'ben-kia' });
  await choDen(async () => (await khach.hoi('phien:tin', { phien, tin: 'x' })).code === 'khong_co_phien', 'the room is empty there as well');

  const { phien: hai } = await goi(khach, ma);
  await cho(may, 'may:khach');
  khach.close();
  assert.deepEqual(await cho(may, 'phien:dong'), { phien: hai, ly: 'mat-lien-lac' });
  may.close();
  await choDen(async () => (await goi(la, ma)).code === 'khong_co_may', 'the host has gone');
});

test('one proof, one code, one host over all instances; limits of a host hold from afar', { skip }, async (t) => {
  const redis = await moRedis(t);
  const [a, b] = [await mo(t, { REDIS_URL: redis.url }), await mo(t, { REDIS_URL: redis.url })];
  const [mot, hai, la, khach] = [await a.noi(), await b.noi(), await b.noi(), await a.noi()];
  assert.equal((await moMay(mot, '246813579')).ma, '246813579');
  assert.notEqual((await moMay(la, '246813579', THE_KHAC)).ma, '246813579');
  assert.equal((await moMay(hai, '246813579')).ma, '246813579');
  await cho(mot, 'may:thay');
  for (let i = 0; i < 4; i++) assert.equal((await goi(khach, '246813579')).ok, true);
  assert.deepEqual(await goi(khach, '246813579'), { ok: false, code: 'qua_nhieu', error: 'too many, try later', cho: 30 });
  assert.equal(hai.den.filter(([su]) => su === 'may:khach').length, 4);
  assert.deepEqual(mot.den, []);
});

test('a host whose instance died is nobody; Redis holds only hashes, with an end', { skip }, async (t) => {
  const redis = await moRedis(t);
  const m = await mo(t, { REDIS_URL: redis.url }, { choTra: 50 });
  const { ma } = await moMay(await m.noi());
  const k = await createClient({ socket: { path: redis.o } }).on('error', () => {}).connect();
  t.after(() => k.close());
  const khoa = (await k.keys('*')).sort();
  assert.deepEqual(khoa, [`tovira:{${ma}}:bam`, `tovira:{${ma}}:sid`]);
  assert.ok(!(await k.get(khoa[0])).includes(THE));
  for (const ten of khoa) assert.ok((await k.pTTL(ten)) > 0);
  await k.set(`tovira:{${ma}}:sid`, 'nobody');
  assert.equal((await goi(await m.noi(), ma)).code, 'khong_co_may');
});

test('Redis goes and returns: refused meanwhile, hosts are callable again without doing anything', { skip }, async (t) => {
  const redis = await moRedis(t);
  const m = await mo(t, { REDIS_URL: redis.url });
  const [may, khach] = [await m.noi(), await m.noi()];
  const { ma } = await moMay(may);
  const khoe = async () => (await fetch(`${m.goc}/suc-khoe`)).status;
  await redis.tat();
  await choDen(async () => (await khoe()) === 503, 'the health report says so');
  assert.equal((await goi(khach, ma)).code, 'qua_nhieu');
  await m.quet();
  await redis.chay(); // empty
  await choDen(async () => (await khoe()) === 200, 'connected again');
  await m.quet();
  assert.equal((await goi(khach, ma)).ok, true);
  await cho(may, 'may:khach');
});

test('no Redis at the start: nothing is served instead of half a service', async (t) => {
  await assert.rejects(mo(t, { REDIS_URL: 'unix:/khong/co' }), /REDIS_URL cannot be reached/);
});
