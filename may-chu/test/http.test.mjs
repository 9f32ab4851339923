import assert from 'node:assert/strict';
import { execFileSync } from 'node:child_process';
import { once } from 'node:events';
import { mkdtempSync, readFileSync, rmSync, writeFileSync } from 'node:fs';
import { request } from 'node:http';
import { createConnection } from 'node:net';
import { connect } from 'node:tls';
import { tmpdir } from 'node:os';
import { join } from 'node:path';
import test from 'node:test';
import { gunzipSync } from 'node:zlib';
import { HAN, cho, choDen, goi, mo, moMay } from './dung.mjs';

const GIAO_DIEN = new URL('../../resources/giao-dien/', import.meta.url);
const JS = 'text/javascript; charset=utf-8';
const HTML = 'text/html; charset=utf-8';

// One request exactly as written: no client that tidies the path.
const xin = (m, path, { method = 'GET', headers = {} } = {}) => new Promise((xong, hong) => {
  request({ host: '127.0.0.1', port: m.cong, path, method, headers, agent: false }, (tra) => {
    const cac = [];
    tra.on('data', (d) => cac.push(d)).on('end', () => xong({ ma: tra.statusCode, dau: tra.headers, than: Buffer.concat(cac) }));
  }).on('error', hong).end();
});

test('every route has its file and type; asked again with the tag it is not sent again; packed when that is taken', async (t) => {
  const m = await mo(t);
  const cac = [['/', HTML, 'app.html'], ['/app', HTML, 'app.html'], ['/app?x=1', HTML, 'app.html'], ['/app.html', HTML, 'app.html']];
  for (const tep of ['crypto.js', 'i18n.js', 'local-store.js']) cac.push([`/${tep}`, JS, tep]);
  for (const ma of 'vi en zh ja ko th lo ru id es pt tr pl ro fil'.split(' ')) cac.push([`/i18n/${ma}.json`, 'application/json; charset=utf-8', `i18n/${ma}.json`]);
  for (const [duong, kieu, tep] of cac) {
    const that = readFileSync(new URL(tep, GIAO_DIEN));
    const kq = await xin(m, duong);
    assert.deepEqual([kq.ma, kq.dau['content-type'], kq.dau['cache-control']], [200, kieu, 'no-cache'], duong);
    assert.ok(kq.than.equals(that), duong);
    const nen = await xin(m, duong, { headers: { 'accept-encoding': 'br, gzip' } });
    assert.ok(nen.dau['content-encoding'] === 'gzip' && gunzipSync(nen.than).equals(that), duong);
    assert.equal((await xin(m, duong, { headers: { 'accept-encoding': 'gzip;q=0' } })).dau['content-encoding'], undefined);
    for (const d of [kq, nen]) {
      const lai = await xin(m, duong, { headers: { 'if-none-match': `"x", W/${d.dau.etag}`, ...(d === nen && { 'accept-encoding': 'gzip' }) } });
      assert.deepEqual([lai.ma, lai.than.length], [304, 0], duong);
    }
    const dau = await xin(m, duong, { method: 'HEAD' });
    assert.deepEqual([dau.ma, dau.than.length, dau.dau['content-length']], [200, 0, String(that.length)]);
  }
  const thuVien = await xin(m, '/vendor/socket.io.min.js');
  assert.equal(thuVien.dau['content-type'], JS);
  assert.match(thuVien.than.toString(), /^\/\*!\s+\* Socket\.IO v4/);
});

test('nothing else is served, whatever the path looks like; other methods are refused', async (t) => {
  const m = await mo(t);
  const cac = ['/bat-ky', '//app', '/app/', '/APP', '/app%00', '/%61pp', '/crypto.js.map', '/package.json', '/nguon/chinh.js', '/../may-chu/package.json',
    '/i18n/', '/i18n/xx.json', '/i18n/../app.html', '/i18n/%2e%2e/vi.json', '/i18n/../../../etc/passwd.json', '/i18n/vi.json/..', '/vendor/socket.io.js',
    '/vendor/../app', '/..\\app.html', '/__proto__', '/constructor', 'http://example.org/app'];
  for (const duong of cac) {
    const kq = await xin(m, duong);
    assert.deepEqual([kq.ma, kq.than.length], [404, 0], duong);
  }
  for (const method of ['POST', 'PUT', 'DELETE', 'OPTIONS', 'TRACE']) assert.equal((await xin(m, '/app', { method })).ma, 405, method);
});

test('the head says what the page’s markup cannot, and nothing that contradicts it', async (t) => {
  const m = await mo(t);
  for (const duong of ['/app', '/crypto.js', '/suc-khoe', '/khong-co']) {
    const { dau } = await xin(m, duong);
    assert.equal(dau['content-security-policy'], "frame-ancestors 'none'");
    assert.deepEqual([dau['x-content-type-options'], dau['referrer-policy'], dau['x-powered-by']], ['nosniff', 'no-referrer', undefined]);
  }
});

test('files are asked for so often by one address, and not more', async (t) => {
  const m = await mo(t, { YEU_CAU_MOI_PHUT: '3', PROXY_TIN: '127.0.0.1' });
  const tu = (dc, duong = '/app') => xin(m, duong, { headers: { 'X-Forwarded-For': dc } });
  for (const duong of ['/app', '/suc-khoe', '/khong-co']) assert.notEqual((await tu('192.0.2.1', duong)).ma, 429);
  const kq = await tu('192.0.2.1');
  assert.deepEqual([kq.ma, kq.dau['retry-after'], kq.than.length], [429, '20', 0]);
  assert.equal((await tu('192.0.2.2')).ma, 200);
  m.dongHo.luc += 20_000;
  assert.equal((await tu('192.0.2.1')).ma, 200);
});

test('TCP connections that say nothing: so many of one address, except of a trusted proxy', async (t) => {
  const song = async (m) => {
    const cac = Array.from({ length: 7 }, () => createConnection({ host: '127.0.0.1', port: m.cong }));
    t.after(() => cac.forEach((o) => o.destroy()));
    let dut = 0;
    cac.forEach((o) => o.on('error', () => {}).on('close', () => { dut += 1; }).resume());
    await Promise.all(cac.map((o) => once(o, 'connect', { signal: AbortSignal.timeout(HAN) })));
    return { cac, dut: () => dut };
  };
  const m = await mo(t, { KET_NOI_MOI_DIA_CHI: '3' });
  const { cac, dut } = await song(m);
  await choDen(() => dut() === 1, 'the seventh is closed');
  await assert.rejects(xin(m, '/app'), 'there is no room');
  cac[0].destroy();
  await choDen(async () => (await xin(m, '/app').catch(() => ({}))).ma === 200, 'one has gone, the next is taken');
  assert.equal(dut(), 2, 'the others stay');
  const qua = await mo(t, { KET_NOI_MOI_DIA_CHI: '3', PROXY_TIN: '127.0.0.1' });
  const { dut: dutQua } = await song(qua);
  assert.equal((await xin(qua, '/app')).ma, 200);
  assert.equal(dutQua(), 0);
});

test('a folder without the application: said as 404, and the signalling still works', async (t) => {
  const m = await mo(t, { GIAO_DIEN: '/khong/co' });
  assert.equal((await xin(m, '/app')).ma, 404);
  assert.equal((await moMay(await m.noi())).ok, true);
});

test('the STUN addresses that pages are told', async (t) => {
  const cua = async (m, Host) => (await moMay(await m.noi({ extraHeaders: { Host } }))).stun;
  const m = await mo(t);
  assert.deepEqual(await cua(m, 'hen.example.org:8443'), [`stun:hen.example.org:${m.stunCong}`]);
  assert.deepEqual(await cua(m, '[fd00::1]:3000'), [`stun:[fd00::1]:${m.stunCong}`]);
  assert.deepEqual(await cua(m, 'a b'), []);
  assert.deepEqual(await cua(await mo(t, { STUN_CONG: 'tat' }), 'x.org'), []);
  const coTen = await mo(t, { TEN: '192.0.2.9' });
  for (const [noi, ra] of [['127.0.0.1:3000', '192.0.2.9'], ['localhost', '192.0.2.9'], ['[::1]:3000', '192.0.2.9'], ['hen.example.org', 'hen.example.org']]) {
    assert.deepEqual(await cua(coTen, noi), [`stun:${ra}:${coTen.stunCong}`], noi);
  }
  const khai = 'stun:a.example.org:3478, stun:[2001:db8::1]:3478';
  assert.deepEqual(await cua(await mo(t, { STUN_CONG: 'tat', STUN_CONG_KHAI: khai }), 'x.org'), khai.split(', '));
});

const coOpenssl = (() => { try { execFileSync('openssl', ['version']); return true; } catch { return false; } })();

test('https with an own certificate, which can be renewed without a stop', { skip: !coOpenssl && 'no openssl here' }, async (t) => {
  const thuMuc = mkdtempSync(join(tmpdir(), 'may-chu-'));
  t.after(() => rmSync(thuMuc, { recursive: true }));
  const [CHUNG_CHI, KHOA] = ['c.pem', 'k.pem'].map((ten) => join(thuMuc, ten));
  const lam = (ten) => execFileSync('openssl', ['req', '-x509', '-newkey', 'ec', '-pkeyopt', 'ec_paramgen_curve:P-256', '-nodes', '-days', '2', '-subj', `/CN=${ten}`,
    '-addext', 'subjectAltName=IP:127.0.0.1', '-keyout', KHOA, '-out', CHUNG_CHI], { stdio: 'ignore' });
  lam('mot');
  const m = await mo(t, { CHUNG_CHI, KHOA });
  const ten = () => new Promise((xong, hong) => {
    const s = connect({ port: m.cong, host: '127.0.0.1', ca: readFileSync(CHUNG_CHI) }, () => { xong(s.getPeerCertificate().subject.CN); s.destroy(); });
    s.on('error', hong);
  });
  assert.equal(await ten(), 'mot');
  const [may, khach] = [await m.noi({ ca: readFileSync(CHUNG_CHI) }), await m.noi({ ca: readFileSync(CHUNG_CHI), transports: ['polling'] })];
  const { ma } = await moMay(may);
  assert.equal((await goi(khach, ma)).ok, true);
  await cho(may, 'may:khach');
  await assert.rejects(m.noi(), 'an unknown certificate is not taken');

  lam('hai');
  m.napChungChi();
  assert.equal(await ten(), 'hai');
  writeFileSync(KHOA, 'hỏng');
  assert.throws(() => m.napChungChi());
  assert.equal(await ten(), 'hai', 'a broken one leaves the last good one');
  rmSync(KHOA);
  await assert.rejects(mo(t, { CHUNG_CHI, KHOA }), /CHUNG_CHI or KHOA cannot be read/);
});
