// Tovira controls Tovira with its packaged copy of the page: the one who controls has no server of its own and names the other's.
// Run by khong-gian.sh inside voi-man-hinh.sh.
import assert from 'node:assert/strict';
import { join } from 'node:path';
import { after, before, test } from 'node:test';
import { MayTovira } from './ho/may-tovira.mjs';
import { San } from './ho/san.mjs';
import { congRanh, diaChi } from './ho/the-gioi.mjs';

const chuongTrinh = process.env.TOVIRA_CHUONG_TRINH;
let san, khach;

before(async () => {
  san = await San.mo({ chuongTrinh, trinhDuyet: null });
  khach = await MayTovira.mo({
    chuongTrinh, ben: 'khach', goc: `http://${diaChi.khach}:${await congRanh()}`, gocTrang: 'http://127.0.0.1:', nha: join(san.tam, 'nha-khach'),
  });
});
after(async () => {
  await khach?.tat();
  await san?.dong();
});

const go = (id, chu) => khach.hoi(`{
  const o = document.getElementById(${JSON.stringify(id)});
  o.value = ${JSON.stringify(chu)};
  o.dispatchEvent(new Event('input', { bubbles: true }));
}`);
const bam = (id) => khach.hoi(`document.getElementById(${JSON.stringify(id)}).click()`);

test('the packaged page controls through a server that it is told of', async () => {
  const { ma, matKhau } = await san.docMa();
  await khach.cho('the packaged page', "document.readyState === 'complete' && location.pathname === '/app' && !!document.getElementById('ve-khach')");
  await bam('ve-khach');
  assert.equal(await khach.hoi("document.getElementById('k-o-dia').hidden"), false, 'asks for the server');
  await go('k-dia', san.goc.replace('http://', ''));
  await go('k-ma', ma);
  await go('k-mat', matKhau);
  await bam('k-noi');
  try {
    await khach.cho('a picture', "(() => { const v = document.getElementById('k-hinh'); return v.videoWidth > 0 && !!v.offsetParent && v.currentTime > 0; })()", 30000);
  } catch (loi) {
    throw new Error(`${loi.message}; the page says: ${await khach.hoi('document.body.innerText.replace(/\\s+/g, " ").slice(0, 900)')}`, { cause: loi });
  }
  await khach.cho('the whole screen', "document.getElementById('k-hinh').videoHeight >= 720", 15000);
  assert.equal(await san.may.hoi('tovira.manHinhDangPhat()'), true);
  await bam('k-het');
  await san.may.cho('the share has ended', '!tovira.manHinhDangPhat()');
});
