// HTTP: the web application, the socket.io client and the health report, from a fixed table. A request's path is only ever looked up,
// never joined to a folder.
import { createHash } from 'node:crypto';
import { readFile, stat } from 'node:fs/promises';
import { createRequire } from 'node:module';
import { dirname, join } from 'node:path';
import { gzipSync } from 'node:zlib';

const CAC_TIENG_NOI = ['vi', 'en', 'zh', 'ja', 'ko', 'th', 'lo', 'ru', 'id', 'es', 'pt', 'tr', 'pl', 'ro', 'fil'];
const HTML = 'text/html; charset=utf-8';
const JS = 'text/javascript; charset=utf-8';
const JSON_ = 'application/json; charset=utf-8';

const thuVien = join(dirname(createRequire(import.meta.url).resolve('socket.io/package.json')), 'client-dist', 'socket.io.min.js');

function lapBang(giaoDien) {
  const bang = new Map();
  for (const duong of ['/', '/app', '/app.html']) bang.set(duong, [HTML, join(giaoDien, 'app.html')]);
  for (const tep of ['crypto.js', 'i18n.js', 'local-store.js']) bang.set(`/${tep}`, [JS, join(giaoDien, tep)]);
  for (const ma of CAC_TIENG_NOI) bang.set(`/i18n/${ma}.json`, [JSON_, join(giaoDien, 'i18n', `${ma}.json`)]);
  bang.set('/vendor/socket.io.min.js', [JS, thuVien]);
  return bang;
}

// What the page says of itself in its own markup (which scripts, which connections) stays there alone; these only add what markup
// cannot say.
const DAU_CHUNG = {
  'X-Content-Type-Options': 'nosniff',
  'X-Frame-Options': 'DENY',
  'Content-Security-Policy': "frame-ancestors 'none'",
  'Referrer-Policy': 'no-referrer',
};

// A file with its tag and packed form, kept until it changes on disk.
class KhoTep {
  #kho = new Map();

  async lay(tep) {
    const { mtimeMs, size } = await stat(tep);
    const cu = this.#kho.get(tep);
    if (cu && cu.mtimeMs === mtimeMs && cu.size === size) return cu;
    const than = await readFile(tep);
    const moi = { mtimeMs, size, than, nen: gzipSync(than), the: createHash('sha256').update(than).digest('base64url').slice(0, 27) };
    this.#kho.set(tep, moi);
    return moi;
  }
}

// The handler of HTTP requests that socket.io does not take. `sucKhoe` answers the health report: { tot, … }; `choXin` the seconds that
// the sender of a request has to wait, 0 for none.
export function taoPhucVu({ giaoDien, sucKhoe, choXin, nhatKy }) {
  const bang = lapBang(giaoDien);
  const kho = new KhoTep();

  async function xuLy(yeuCau, tra) {
    for (const [ten, triGia] of Object.entries(DAU_CHUNG)) tra.setHeader(ten, triGia);
    const cho = choXin(yeuCau);
    if (cho > 0) return ketThuc(tra, 429, { 'Retry-After': cho });
    const duong = yeuCau.url.split('?', 1)[0];
    if (duong !== '/suc-khoe' && !bang.has(duong)) return ketThuc(tra, 404);
    if (yeuCau.method !== 'GET' && yeuCau.method !== 'HEAD') return ketThuc(tra, 405, { Allow: 'GET, HEAD' });
    if (duong === '/suc-khoe') return traSucKhoe(tra, sucKhoe());
    const [kieu, tep] = bang.get(duong);
    return traTep(yeuCau, tra, kieu, await kho.lay(tep));
  }

  return (yeuCau, tra) => {
    xuLy(yeuCau, tra).catch((loi) => {
      nhatKy.ghi('khong-doc-duoc', { loi: loi.code ?? loi.name });
      if (tra.headersSent) tra.destroy();
      else ketThuc(tra, loi.code === 'ENOENT' ? 404 : 500);
    });
  };
}

function ketThuc(tra, ma, dau = {}) {
  tra.writeHead(ma, { 'Content-Length': 0, 'Cache-Control': 'no-store', ...dau });
  tra.end();
}

function traSucKhoe(tra, bao) {
  const than = Buffer.from(JSON.stringify(bao));
  tra.writeHead(bao.tot ? 200 : 503, { 'Content-Type': JSON_, 'Content-Length': than.length, 'Cache-Control': 'no-store' });
  tra.end(than);
}

function traTep(yeuCau, tra, kieu, tep) {
  const goi = /(^|[\s,])gzip\s*(,|;(?!\s*q=0(\.0*)?\s*(,|$))|$)/.test(yeuCau.headers['accept-encoding'] ?? '');
  const the = `"${tep.the}${goi ? '-gz' : ''}"`;
  // Asked again at every use, so that page, scripts and translations are always of one version.
  const dau = { ETag: the, 'Cache-Control': 'no-cache', Vary: 'Accept-Encoding' };
  const daCo = (yeuCau.headers['if-none-match'] ?? '').split(',').some((t) => t.trim().replace(/^W\//, '') === the);
  if (daCo) {
    tra.writeHead(304, dau);
    return tra.end();
  }
  const than = goi ? tep.nen : tep.than;
  tra.writeHead(200, { ...dau, 'Content-Type': kieu, 'Content-Length': than.length, ...(goi && { 'Content-Encoding': 'gzip' }) });
  return tra.end(than); // without a body for HEAD
}
