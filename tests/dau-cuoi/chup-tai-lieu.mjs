// Takes the pictures that docs/ shows, of a real session:
//   TOVIRA_THU_MAN_HINH=1600x1000x24 TOVIRA_CHUONG_TRINH=build/release/tovira \
//       tests/voi-man-hinh.sh --quan-ly-cua-so tests/dau-cuoi/khong-gian.sh node tests/dau-cuoi/chup-tai-lieu.mjs docs/hinh
import { writeFile } from 'node:fs/promises';
import { join } from 'node:path';
import { OGo, toNen } from './ho/man-x.mjs';
import { NguoiDieuKhien } from './ho/nguoi-dieu-khien.mjs';
import { San } from './ho/san.mjs';
import { chayXong, cho } from './ho/the-gioi.mjs';

const noi = process.argv[2];
const MAN = { rong: 1600, cao: 1000 };
const san = await San.mo({ chuongTrinh: process.env.TOVIRA_CHUONG_TRINH, trinhDuyet: { rong: 1280, cao: 880, thamSo: ['--lang=vi', '--accept-lang=vi'] } });
try {
  const nguoi = new NguoiDieuKhien(san.khach, MAN);
  await toNen('#2b4a6f');
  const ma = await san.docMa();
  await san.khach.toi(`${san.goc}/app`);
  await san.khach.go('#k-ma', ma.ma);
  await san.khach.go('#k-mat', ma.matKhau);
  await san.khach.go('#k-ten', 'Lan');
  await writeFile(join(noi, 'khach-goi.png'), await san.khach.chup());
  await san.khach.bam('#k-noi');
  await nguoi.choHinh();
  const o = await OGo.mo({ ten: 'Terminal', tep: join(san.tam, 'chu'), viTri: '+1040+700' });
  const giua = [o.hinh.x + o.hinh.rong / 2, o.hinh.y + o.hinh.cao / 2];
  await nguoi.choKhacMau(giua, [43, 74, 111]);
  await nguoi.bam(...giua);
  await nguoi.go('Xin chào từ máy bên kia!');
  await nguoi.phim('\uE007');
  await o.choChu(/chào từ máy bên kia/);
  await san.khach.bam('#k-mo-sk');
  await cho('the connection is measured', () => san.khach.chay(`() => /\\d/.test(document.getElementById('k-sk').textContent)`));
  await cho('the notices have gone', () => san.khach.chay(`() => document.getElementById('k-ngo').hidden`), 30000);
  await writeFile(join(noi, 'khach-dieu-khien.png'), await san.khach.chup());
  await chayXong('may', 'import', '-window', 'root', join(noi, 'may.png'));
  await o.tat();
} finally {
  await san.dong();
}
