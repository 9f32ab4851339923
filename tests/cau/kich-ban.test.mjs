// The bridge script and the host's pushes, run in a page made of nothing but what they touch.

import assert from 'node:assert/strict';
import { execFileSync } from 'node:child_process';
import { test } from 'node:test';
import vm from 'node:vm';

const lay = (...thamSo) => execFileSync(process.env.TOVIRA_IN_KICH_BAN, thamSo, { encoding: 'utf8' });

const MAY_CHU = 'https://vi.du';
const KEM = 'http://127.0.0.1:4321';

// A page at `origin`; `gui` is what it posted.
function trang(origin, { readyState = 'complete', kenh = true } = {}) {
  const gui = [];
  const nghe = [];
  const window = {};
  if (kenh) window.webkit = { messageHandlers: { tv: { postMessage: (o) => gui.push(JSON.parse(JSON.stringify(o))) } } };
  const document = {
    readyState,
    addEventListener: (ten, ham) => nghe.push([ten, ham]),
    getElementById: () => null,
  };
  const ngu = vm.createContext({ window, document, location: { origin } });
  return { gui, nghe, window, document, chay: (...thamSo) => vm.runInContext(lay(...thamSo), ngu), ngu };
}

function trangTin(tuyChon) {
  const t = trang(MAY_CHU, tuyChon);
  t.chay('kichBan', MAY_CHU, '');
  t.gui.length = 0;
  return t;
}

test('only whole origins are trusted', () => {
  const bang = [
    [MAY_CHU, '', MAY_CHU, true],
    [`${MAY_CHU}.xau.vn`, '', MAY_CHU, false],
    ['https://xau.vn', '', MAY_CHU, false],
    ['http://vi.du', '', MAY_CHU, false],
    ['https://vi.du:444', '', MAY_CHU, false],
    [KEM, KEM, MAY_CHU, true],
    ['http://127.0.0.1:4322', KEM, MAY_CHU, false],
    [KEM, '', MAY_CHU, false],
    ['', '', '', false],
    ['null', '', MAY_CHU, false],
  ];
  for (const [origin, kem, mayChu, tin] of bang) {
    const t = trang(origin);
    t.chay('kichBan', mayChu, kem);
    assert.equal('tovira' in t.window, tin, origin);
    assert.equal('ipc' in t.window, tin, origin);
    assert.deepEqual(t.gui, tin ? [{ k: 'napXong' }] : [], origin);
  }
});

test('the load is reported once, when the document is there', () => {
  const t = trang(MAY_CHU, { readyState: 'loading' });
  t.chay('kichBan', MAY_CHU, '');
  assert.deepEqual(t.gui, []);
  assert.deepEqual(t.nghe.map(([ten]) => ten), ['DOMContentLoaded']);
  t.nghe[0][1]();
  assert.deepEqual(t.gui, [{ k: 'napXong' }]);
});

test('the members, their order and first values', () => {
  const { tovira } = trangTin().window;
  assert.deepEqual(Object.keys(tovira), [
    'native', 'phienBan', 'nenTang', 'trangThai', 'manHinh', 'dsManHinh', 'troNang', 'xinManHinh', 'datCaoManHinh',
    'dungManHinh', 'dat', 'datNgonNgu', 'guiLenh', 'troNangDaBat', 'moCaiDatTroNang', 'manHinhDangPhat', 'moThuMucNhan',
    'dongThuMucNhan', 'chonThuMucLuu', 'moThuMucTai', 'hienTrongFinder',
  ]);
  assert.deepEqual(JSON.parse(JSON.stringify(tovira)), {
    native: true, phienBan: '1.0.3', nenTang: 'macos', trangThai: { autostart: false, service: false },
    manHinh: { duongDan: '', loi: '' }, dsManHinh: [], troNang: false,
  });
  assert.equal(tovira.manHinhDangPhat(), false);
});

test('what each member posts', () => {
  const t = trangTin();
  const v = t.window.tovira;
  const bang = [
    [() => v.xinManHinh(1.7), { k: 'manHinhBat', n: 1 }],
    [() => v.xinManHinh('hai'), { k: 'manHinhBat', n: 0 }],
    [() => v.xinManHinh(NaN), { k: 'manHinhBat', n: 0 }],
    [() => v.datCaoManHinh(719.9), { k: 'caoManHinh', cao: 719 }],
    [() => v.datCaoManHinh(Infinity), { k: 'caoManHinh', cao: 0 }],
    [() => v.dungManHinh(), { k: 'manHinhTat' }],
    [() => v.dat('autostart', 1), { k: 'dat', ten: 'autostart', bat: true }],
    [() => v.dat(5), { k: 'dat', ten: '5', bat: false }],
    [() => v.datNgonNgu('vi'), { k: 'ngonNgu', ma: 'vi' }],
    [() => v.guiLenh('{"t":1}'), { k: 'lenh', json: '{"t":1}' }],
    [() => v.moCaiDatTroNang(), { k: 'moTroNang' }],
    [() => v.moThuMucNhan(), { k: 'moThuMucNhan' }],
    [() => v.dongThuMucNhan(), { k: 'dongThuMucNhan' }],
    [() => v.chonThuMucLuu(), { k: 'chonThuMucLuu' }],
    [() => v.moThuMucTai(), { k: 'moThuMucTai', duong: '' }],
    [() => v.moThuMucTai('/a'), { k: 'moThuMucTai', duong: '/a' }],
    [() => v.hienTrongFinder('/a', null), { k: 'hienTrongFinder', duong: '/a', ten: '' }],
    [() => t.window.ipc.postMessage('thu-lai'), { k: 'ipc', s: 'thu-lai' }],
  ];
  for (const [lam, mong] of bang) {
    lam();
    assert.deepEqual(t.gui.pop(), mong);
  }
  assert.equal(t.gui.length, 0);
});

test('a missing channel is nobody\'s trouble', () => {
  const t = trangTin({ kenh: false });
  assert.equal(t.window.tovira.guiLenh('{}'), false);
});

test('commands answer with the permission last pushed', () => {
  const t = trangTin();
  let goi = 0;
  t.window.__tvAndroidDoi = () => { goi += 1; };
  assert.equal(t.window.tovira.guiLenh('{}'), false);
  t.chay('troNang', 'true');
  assert.equal(goi, 1);
  assert.equal(t.window.tovira.guiLenh('{}'), true);
  assert.equal(t.window.tovira.troNangDaBat(), true);
});

test('pushes reach the page as they were meant, whatever the text', () => {
  const t = trangTin();
  const thay = [];
  for (const moc of ['__tvTrangThai', '__tvMatKetNoi', '__tvMayChuSongLai', '__tvDaTai', '__tvTaiHong']) {
    t.window[moc] = (...a) => thay.push([moc, ...JSON.parse(JSON.stringify(a))]);
  }
  const hiem = 'a"b\\c\n/d\u0001\u2028</script>ả🇻🇳';
  assert.equal(t.chay('nhayJS', hiem), hiem);
  t.chay('manHinh', 'http://127.0.0.1:1/man-hinh?k=a', hiem, 'true');
  assert.deepEqual({ ...t.window.tovira.manHinh }, { duongDan: 'http://127.0.0.1:1/man-hinh?k=a', loi: hiem });
  assert.equal(t.window.tovira.manHinhDangPhat(), true);
  t.window.tovira.xinManHinh(0);
  assert.deepEqual({ ...t.window.tovira.manHinh }, { duongDan: '', loi: '' });
  t.chay('dsManHinh', hiem, 'B');
  assert.deepEqual(JSON.parse(JSON.stringify(t.window.tovira.dsManHinh)), [
    { chiSo: 0, ten: hiem, rong: 1920, cao: 1080, chinh: true },
    { chiSo: 1, ten: 'B', rong: 800, cao: 600, chinh: false },
  ]);
  t.chay('trangThai', 'true');
  t.chay('matKetNoi', 'true');
  t.chay('matKetNoi', 'false');
  t.chay('mayChuSongLai');
  t.chay('daTai', '/thư mục', hiem);
  t.chay('taiHong', hiem);
  assert.deepEqual(thay, [
    ['__tvTrangThai', { autostart: true, service: false }], ['__tvMatKetNoi', true], ['__tvMatKetNoi', false],
    ['__tvMayChuSongLai'], ['__tvDaTai', '/thư mục', hiem], ['__tvTaiHong', hiem],
  ]);
});

test('a pending promise is answered once, and a newer question replaces it', async () => {
  const t = trangTin();
  let bo = 0;
  t.window.tovira.moThuMucNhan().then(() => { bo += 1; });
  const cho = t.window.tovira.moThuMucTai('/a');
  t.chay('traLoiNhan', '/goc', 'bm', '');
  assert.deepEqual({ ...(await cho) }, { goc: '/goc', cong: 8080, biMat: 'bm', loi: '' });
  assert.equal(t.window.tovira.__nhanCho, null);
  t.chay('traLoiNhan', '/khac', 'bm', '');
  const luu = t.window.tovira.chonThuMucLuu();
  t.chay('traLoiLuu', '', 'huy');
  assert.deepEqual({ ...(await luu) }, { duong: '', loi: 'huy' });
  assert.equal(bo, 0);
});

test('pushes are harmless on a page that is not ours', () => {
  const t = trang('https://xau.vn');
  for (const ten of ['trangThai', 'troNang', 'manHinh', 'dsManHinh', 'traLoiNhan', 'traLoiLuu', 'matKetNoi', 'mayChuSongLai',
    'daTai', 'taiHong', 'bamDung']) {
    t.chay(ten);
  }
  assert.deepEqual(Object.keys(t.window), ['webkit']);
});

test('a secret is told to trusted documents only, even where somebody waits for it', () => {
  const js = lay('manHinh', 'http://127.0.0.1:1/man-hinh?k=bi-mat', '', 'true');
  for (const [origin, biet] of [[MAY_CHU, true], [KEM, true], ['https://xau.vn', false], [`${MAY_CHU}.xau.vn`, false]]) {
    const t = trang(origin);
    t.window.tovira = {};
    t.chay('chiONoiTin', js, MAY_CHU, KEM);
    assert.equal('manHinh' in t.window.tovira, biet, origin);
  }
});

test('the stop button is clicked where there is one', () => {
  const t = trang(MAY_CHU);
  let bam = 0;
  t.document.getElementById = (ma) => (ma === 'bc-stop' ? { click: () => { bam += 1; } } : null);
  t.chay('bamDung');
  assert.equal(bam, 1);
});
