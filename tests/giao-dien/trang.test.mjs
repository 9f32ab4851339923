import assert from 'node:assert/strict';
import test from 'node:test';
import { docBang, lang, moTrang } from './trang.mjs';

const LUONG = 'http://127.0.0.1:5000/man-hinh?k=abc';
const HAI_MAN = [
  { chiSo: 0, ten: 'Trái', rong: 1920, cao: 1080, chinh: false },
  { chiSo: 1, ten: 'Phải', rong: 2560, cao: 1440, chinh: true },
];
const MAY_CHU = { hostname: 'tovira.example' }; // the page as the server gives it

test('a share from the choice of a screen to the host\'s answer, the picture and the stop', async () => {
  const t = await moTrang(MAY_CHU);
  t.tv.dsManHinh = HAI_MAN;
  t.chayHen(); // the list announces itself by no hook
  assert.equal(t.$('chon-man').value, '1', 'the main screen is offered first');
  assert.equal(t.$('bc-stop').hidden, true);
  t.$('chon-man').chon('0');
  t.$('bc-start').click();
  assert.deepEqual(t.nhat, [['caoManHinh', 2160], ['manHinhBat', 0]]);
  assert.equal(t.$('tinh').textContent, 'Đang bật chia sẻ…');
  assert.equal(t.$('bc-stop').hidden, false, 'a start can be taken back');
  t.cuaSo.__tvAndroidDoi(); // an accessibility push is no answer to the start
  assert.equal(t.$('tinh').textContent, 'Đang bật chia sẻ…');
  t.dayManHinh(LUONG, '', true);
  assert.equal(t.$('tinh').textContent, 'Đang chia sẻ: Trái');
  assert.equal(t.anh().src, LUONG);
  assert.equal(t.$('bc-start').hidden, true);
  const anh = t.anh();
  t.nhat.length = 0;
  t.$('bc-stop').click();
  assert.deepEqual(t.nhat, [['manHinhTat']]);
  assert.equal(anh.src, '');
  assert.equal(t.$('san').con.length, 0, 'the frame that held the stream is gone');
  assert.equal(t.$('tinh').textContent, 'Đang dừng…');
  t.dayManHinh('', '', false);
  assert.equal(t.$('tinh').textContent, 'Không chia sẻ màn hình');
  assert.equal(t.$('bc-stop').hidden, true);
});

test('another screen can be chosen while sharing; the picture follows the new address', async () => {
  const t = await moTrang(MAY_CHU);
  t.tv.dsManHinh = HAI_MAN;
  t.cuaSo.__tvAndroidDoi();
  t.$('bc-start').click();
  t.dayManHinh(LUONG, '', true);
  t.$('chon-man').chon('0');
  assert.equal(t.$('bc-start').hidden, false);
  assert.equal(t.$('bc-start').textContent, 'Chuyển sang màn hình này');
  t.$('bc-start').click();
  assert.deepEqual(t.nhat.at(-1), ['manHinhBat', 0]);
  assert.equal(t.anh(), null);
  t.dayManHinh(`${LUONG}2`, '', true);
  assert.equal(t.anh().src, `${LUONG}2`);
  assert.equal(t.$('san').con.length, 1);
});

test('the stop reaches the host whatever the page believes', async () => {
  const t = await moTrang(MAY_CHU);
  for (const lam of [
    () => {}, // nothing known to be shared
    () => t.$('bc-start').click(), // asked for, not answered
    () => t.dayManHinh('', '', true), // the host shares, the address is not known
    () => t.dayManHinh('', 'hỏng', true),
  ]) {
    lam();
    t.nhat.length = 0;
    t.$('bc-stop').click();
    assert.deepEqual(t.nhat, [['manHinhTat']]);
  }
  assert.equal(t.$('bc-stop').hidden, false, 'it stays in reach until the host says that nothing is shared');
});

test('a picture that breaks off is opened again while the host names it, and not after', async () => {
  const t = await moTrang(MAY_CHU);
  t.dayManHinh(LUONG, '', true);
  const dau = t.anh();
  dau.onload();
  assert.equal(t.$('san-chu').hidden, true);
  t.hen.length = 0;
  dau.onerror();
  assert.equal(t.anh(), null);
  assert.equal(t.$('san-chu').textContent, 'Không nhận được hình, đang thử lại…');
  t.chayHen();
  assert.equal(t.anh().src, LUONG);
  assert.notEqual(t.anh(), dau);
  t.anh().onerror();
  t.dayManHinh('', '', false);
  t.chayHen();
  assert.equal(t.anh(), null);
});

test('hiding the picture keeps its connection: without a viewer the host would stop', async () => {
  const t = await moTrang(MAY_CHU);
  t.dayManHinh(LUONG, '', true);
  t.$('hien-hinh').checked = false;
  t.$('hien-hinh').kich('change');
  assert.equal(t.anh().src, LUONG);
  assert.ok(t.$('san').lop.has('an'));
  assert.equal(t.$('san-chu').textContent, 'Hình đang ẩn, màn hình vẫn được chia sẻ');
  const sau = await moTrang({ ...MAY_CHU, luu: Object.fromEntries(t.luuTru) });
  assert.equal(sau.$('hien-hinh').checked, false);
});

test('permissions are what the host last said', async () => {
  const t = await moTrang(MAY_CHU);
  const thay = () => [t.$('quyen-ghi').dataset.co, t.$('quyen-tro-nang').dataset.co, t.$('mo-tro-nang').hidden];
  assert.deepEqual(thay(), ['chuaRo', 'khong', false]);
  t.$('mo-tro-nang').click();
  assert.deepEqual(t.nhat, [['moTroNang']]);
  t.tv.troNang = true;
  t.dayManHinh('', 'Chưa được cấp quyền Ghi màn hình', false);
  assert.deepEqual(thay(), ['khong', 'co', true]);
  assert.equal(t.$('loi-chia').textContent, 'Không chia sẻ được: Chưa được cấp quyền Ghi màn hình');
  t.dayManHinh('', 'Hãy mở lại Tovira để quyền Ghi màn hình có hiệu lực', false);
  assert.deepEqual(thay(), ['moLai', 'co', true]);
  t.tv.dsManHinh = HAI_MAN;
  t.dayManHinh('', '<b>lạ</b>', false);
  assert.deepEqual(thay(), ['co', 'co', true]);
  assert.equal(t.$('loi-chia').textContent, 'Không chia sẻ được: <b>lạ</b>');
  t.dayManHinh(LUONG, '', true);
  assert.equal(t.$('loi-chia').hidden, true);
});

test('the looks for a display list grow rarer and end', async () => {
  const t = await moTrang(MAY_CHU);
  const cho = [];
  while (t.hen.length > 0) {
    cho.push(...t.hen.map((h) => h.ms));
    t.chayHen();
    assert.ok(cho.length < 20);
  }
  assert.deepEqual(cho, [250, 500, 1000, 2000, 4000, 8000]);
  assert.equal(t.$('chon-man').con[0].textContent, 'Màn hình mặc định');
  t.$('doc-lai').click();
  assert.deepEqual(t.nhat, [['reload']]);
});

test('sharpness goes to the host at once, with every start, and is kept; nonsense in the store is not', async () => {
  const t = await moTrang(MAY_CHU);
  t.$('chon-net').chon('1080');
  t.$('bc-start').click();
  assert.deepEqual(t.nhat, [['caoManHinh', 1080], ['caoManHinh', 1080], ['manHinhBat', 0]]);
  const sau = await moTrang({ ...MAY_CHU, luu: Object.fromEntries(t.luuTru) });
  assert.equal(sau.$('chon-net').value, '1080');
  assert.equal((await moTrang({ luu: { 'tv.doNet': '9e9' } })).$('chon-net').value, '2160');
});

test('the login switch shows the host\'s truth, not the wish', async () => {
  const t = await moTrang(MAY_CHU);
  t.$('tu-khoi-dong').checked = true;
  t.$('tu-khoi-dong').kich('change');
  assert.deepEqual(t.nhat, [['dat', 'autostart', true]]);
  t.cuaSo.__tvTrangThai(t.tv.trangThai);
  assert.equal(t.$('tu-khoi-dong').checked, false);
  t.tv.trangThai = { autostart: true, service: false };
  t.cuaSo.__tvTrangThai(t.tv.trangThai);
  assert.equal(t.$('tu-khoi-dong').checked, true);
});

test('language: shown, told to the host, kept; a file that cannot be had changes nothing', async () => {
  const t = await moTrang({ ...MAY_CHU, tep: (ma) => (ma === 'ko' ? null : docBang(ma)) });
  assert.equal(t.document.documentElement.lang, 'vi', 'inside the host the browser\'s language does not count');
  t.$('ngon-ngu').chon('ru');
  await lang();
  assert.equal(t.$('bc-start').textContent, docBang('ru')['man.batDau']);
  assert.equal(t.document.documentElement.lang, 'ru');
  t.$('ngon-ngu').chon('ko');
  await lang();
  assert.equal(t.$('ngon-ngu').value, 'ru');
  assert.deepEqual(t.nhat, [['ngonNgu', 'ru']]);
  const sau = await moTrang({ ...MAY_CHU, luu: Object.fromEntries(t.luuTru) });
  assert.equal(sau.$('ngon-ngu').value, 'ru');
});

test('without any text file the page works on in the markup\'s Vietnamese', async () => {
  const t = await moTrang({ ...MAY_CHU, tep: () => null });
  t.dayManHinh(LUONG, '', true);
  assert.equal(t.$('bc-stop').textContent, 'Dừng chia sẻ');
  assert.equal(t.$('bc-stop').hidden, false);
});

test('the save folder: chosen, cancelled, failed', async () => {
  const t = await moTrang(MAY_CHU);
  for (const [dap, thay, tin] of [
    [{ duong: '', loi: 'huy' }, 'Thư mục Tải về, hoặc thư mục đã chọn trước đây', 0],
    [{ duong: '/nhà/tệp', loi: '' }, '/nhà/tệp', 0],
    [{ duong: '', loi: 'đĩa hỏng' }, '/nhà/tệp', 1],
  ]) {
    t.$('chon-luu').click();
    assert.equal(t.$('chon-luu').disabled, true, 'a second question would leave the first without an answer');
    t.tv.__luuCho(dap);
    await lang();
    assert.equal(t.$('chon-luu').disabled, false);
    assert.equal(t.$('thu-muc-luu').textContent, thay);
    assert.equal(t.$('noi').con.length, tin);
  }
});

test('receiving: only on the server\'s page, opened, shown, closed', async () => {
  const t = await moTrang(MAY_CHU);
  t.$('mo-nhan').click();
  t.tv.__nhanCho({ goc: '', cong: 0, biMat: '', loi: 'huy' });
  await lang();
  assert.equal(t.$('thu-muc-nhan').textContent, 'Chưa mở thư mục nào');
  t.$('mo-nhan').click();
  t.tv.__nhanCho({ goc: '/nhận', cong: 7, biMat: 'k', loi: '' });
  await lang();
  assert.equal(t.$('thu-muc-nhan').textContent, '/nhận');
  assert.equal(t.$('mo-nhan').hidden, true);
  t.$('hien-nhan').click();
  t.$('dong-nhan').click();
  assert.deepEqual(t.nhat.slice(-2), [['hienTrongFinder', '/nhận', ''], ['dongThuMucNhan']]);
  assert.equal(t.$('mo-nhan').hidden, false);
});

test('the receiving folder of last time is opened again; an origin that may not post has it greyed out with the reason', async () => {
  const luu = { 'tv.thuMucNhan': '/nhận' };
  const t = await moTrang({ ...MAY_CHU, luu });
  assert.deepEqual(t.nhat, [['moThuMucTai', '/nhận']]);
  t.tv.__nhanCho({ goc: '', cong: 0, biMat: '', loi: 'khong-con' });
  await lang();
  assert.equal(t.luuTru.has('tv.thuMucNhan'), false);
  const dong = await moTrang({ ...MAY_CHU, luu, guiTep: () => { throw new TypeError('blocked'); } });
  dong.tv.__nhanCho({ goc: '/nhận', cong: 7, biMat: 'k', loi: '' });
  await lang();
  assert.deepEqual(dong.nhat.at(-1), ['dongThuMucNhan']);
  assert.equal(dong.$('mo-nhan').disabled, true);
  assert.equal(dong.$('thu-muc-nhan').textContent, docBang('vi')['nhan.khongGui']);
});

test('the packaged page is known by its substitute, not by its host name', async () => {
  const kem = await moTrang();
  assert.equal(kem.$('mo-nhan').disabled, true);
  assert.match(kem.$('thu-muc-nhan').textContent, /không có máy chủ/);
  assert.equal(kem.$('mat-ket-noi').hidden, false);
  const mayChuTaiCho = await moTrang({ kem: '/* the real client */' });
  assert.equal(mayChuTaiCho.$('mo-nhan').disabled, false);
  assert.equal(mayChuTaiCho.$('mat-ket-noi').hidden, true);
});

test('a lost server: the card comes and goes, and tries again when asked', async () => {
  const t = await moTrang(MAY_CHU);
  t.cuaSo.__tvMatKetNoi(true);
  assert.equal(t.$('mat-ket-noi').hidden, false);
  t.$('thu-lai').click();
  assert.deepEqual(t.nhat, [['ipc', 'thu-lai']]);
  t.cuaSo.__tvMatKetNoi(false);
  assert.equal(t.$('mat-ket-noi').hidden, true);
});

test('the server is back: at once when idle, else with a notice, by its button or when the share ends', async () => {
  const ranh = await moTrang();
  ranh.cuaSo.__tvMayChuSongLai();
  assert.deepEqual(ranh.nhat, [['ipc', 'thu-lai']]);

  const dangChia = async () => {
    const t = await moTrang();
    t.dayManHinh(LUONG, '', true);
    t.cuaSo.__tvMayChuSongLai();
    assert.deepEqual(t.nhat, []);
    assert.deepEqual([t.$('song-lai').hidden, t.$('mat-ket-noi').hidden], [false, true]);
    t.hen.length = 0;
    return t;
  };
  const bam = await dangChia();
  bam.$('ve-may-chu').click();
  assert.deepEqual(bam.nhat, [['manHinhTat'], ['ipc', 'thu-lai']], 'a share is not left behind');

  const het = await dangChia();
  het.dayManHinh('', '', false);
  assert.deepEqual(het.nhat, []);
  het.chayHen();
  het.chayHen();
  assert.deepEqual(het.nhat, [['ipc', 'thu-lai']]);

  const doi = await dangChia(); // the host ends one share to begin the next
  doi.dayManHinh('', '', false);
  doi.dayManHinh(`${LUONG}2`, '', true);
  doi.chayHen();
  assert.deepEqual(doi.nhat, []);
});

test('downloads: listed newest first with their way to the folder; failures stay until dismissed', async () => {
  const t = await moTrang(MAY_CHU);
  t.cuaSo.__tvDaTai('/tải', 'một.txt');
  t.cuaSo.__tvDaTai('/tải', '<img>.txt');
  assert.equal(t.$('so-tep').textContent, '2 tệp đã nhận');
  const muc = t.$('tep-nhan').con;
  assert.deepEqual(muc.map((m) => m.tim('h3')[0].textContent), ['<img>.txt', 'một.txt']);
  muc[1].tim('button')[0].click();
  assert.deepEqual(t.nhat, [['hienTrongFinder', '/tải', 'một.txt']]);
  assert.equal(t.$('thu-muc-luu').textContent, '/tải');
  t.cuaSo.__tvTaiHong('mạng đứt');
  await lang();
  t.chayHen();
  const con = t.$('noi').con;
  assert.deepEqual(con.map((c) => c.tim('p')[0].textContent), ['Tải về không thành công: mạng đứt']);
  con[0].tim('button').at(-1).click();
  assert.equal(t.$('noi').con.length, 0);
  for (let i = 0; i < 150; i++) t.cuaSo.__tvDaTai('/tải', `${i}`);
  await lang();
  assert.equal(t.$('noi').con.length, 5);
  assert.equal(t.$('so-tep').textContent, '152 tệp đã nhận');
  assert.equal(t.$('tep-nhan').con.length, 100);
  t.$('ngon-ngu').chon('en');
  await lang();
  assert.equal(t.$('tep-nhan').con[0].tim('button')[0].textContent, 'Show in folder');
});

test('in a plain browser the page opens in its language, says what is missing and offers nothing that cannot work', async () => {
  const t = await moTrang({ ...MAY_CHU, coMay: false });
  assert.equal(t.document.documentElement.lang, 'en');
  assert.equal(t.$('thieu-may').hidden, false);
  for (const id of ['bc-start', 'chon-man', 'chon-net', 'mo-tro-nang', 'tu-khoi-dong', 'chon-luu', 'mo-nhan']) {
    assert.equal(t.$(id).disabled, true, id);
  }
  t.$('bc-stop').click();
  t.cuaSo.__tvAndroidDoi();
  t.$('ngon-ngu').chon('th');
  await lang();
  assert.equal(t.document.documentElement.lang, 'th');
});
