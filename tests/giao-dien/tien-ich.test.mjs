import assert from 'node:assert/strict';
import { webcrypto as crypto } from 'node:crypto';
import test from 'node:test';
import { napKichBan } from './trang.mjs';

const { TvMaHoa } = napKichBan({ crypto, TextEncoder, btoa, atob }, 'crypto.js');
const bytes = (...b) => Uint8Array.from(b);

test('codes have their shape and use every character of their alphabet', () => {
  const thay = new Set();
  for (let i = 0; i < 400; i++) {
    assert.match(TvMaHoa.taoMaMay(), /^[1-9][0-9]{8}$/);
    const matKhau = TvMaHoa.taoMatKhau();
    assert.equal(matKhau.length, 10);
    for (const c of matKhau) thay.add(c);
  }
  assert.deepEqual([...thay].sort(), [...TvMaHoa.BANG_CHU].sort());
  assert.doesNotMatch(TvMaHoa.BANG_CHU, /[01ilo]/);
});

test('bytes that would favour some characters are thrown away', () => {
  const gia = { getRandomValues: (o) => crypto.getRandomValues(o) }; // the curve library draws some while it is loaded
  const rieng = napKichBan({ crypto: gia, TextEncoder, btoa, atob }, 'crypto.js').TvMaHoa;
  const cac = [255, 250, 249, 0, 255, 9]; // with ten characters, 250 and above are left over
  gia.getRandomValues = (o) => o.forEach((_, i) => { o[i] = cac.shift() ?? 0; });
  assert.equal(rieng.taoChuoi(3, '0123456789'), '909');
});

test('random bytes beyond what one call may ask for', () => {
  const ra = TvMaHoa.ngauNhien(65536 + 64);
  assert.equal(ra.length, 65600);
  assert.ok(ra.subarray(65536).some((b) => b !== 0));
});

test('comparing: texts and bytes, every difference counts', () => {
  for (const [a, b, cho] of [
    ['', '', true], ['mật khẩu', 'mật khẩu', true], ['abc', 'abd', false], ['xbc', 'abc', false], ['ab', 'abc', false],
    ['ab', bytes(97, 98), true], [bytes(1, 2), bytes(1, 3), false], ['\u00e9', 'e\u0301', false],
  ]) assert.equal(TvMaHoa.soBang(a, b), cho);
});

test('hex and Base64 there and back; what is neither is null', () => {
  const tatCa = Uint8Array.from({ length: 256 }, (_, i) => i);
  for (let dai = 0; dai <= 256; dai++) {
    const b = tatCa.subarray(256 - dai);
    assert.equal(TvMaHoa.sangHex(b), Buffer.from(b).toString('hex'));
    assert.equal(TvMaHoa.sangBase64(b), Buffer.from(b).toString('base64'));
    assert.deepEqual([...TvMaHoa.tuHex(TvMaHoa.sangHex(b))], [...b]);
    assert.deepEqual([...TvMaHoa.tuBase64(TvMaHoa.sangBase64(b))], [...b]);
  }
  const dai = TvMaHoa.ngauNhien(100001);
  assert.equal(TvMaHoa.sangBase64(dai), Buffer.from(dai).toString('base64'));
  assert.equal(TvMaHoa.sangBase64(TvMaHoa.sangUtf8('ảnh/hè 2026.txt')), Buffer.from('ảnh/hè 2026.txt').toString('base64'));
  for (const sai of ['a', 'zz', '0x', ' 00', '00 ']) assert.equal(TvMaHoa.tuHex(sai), null, sai);
  for (const sai of ['A', 'AA', 'AAA', 'AA=A', 'A===', 'AAAA=', 'AA-_', 'AA A']) assert.equal(TvMaHoa.tuBase64(sai), null, sai);
});

test('codes as people read and type them', () => {
  assert.equal(TvMaHoa.chiaNhom('123456789'), '123 456 789');
  assert.equal(TvMaHoa.chiaNhom('1234'), '123 4');
  assert.equal(TvMaHoa.boKhoangTrang(' 123-456.789\u00a0'), '123456789');
});

// A browser's cookies: one jar for every port of a host.
function taoHop() {
  const muc = new Map();
  return {
    get cookie() { return [...muc].map(([k, v]) => `${k}=${v}`).join('; '); },
    set cookie(dong) {
      const [, ten, gia, tuoi] = dong.match(/^([^=]+)=([^;]*); path=\/; max-age=(\d+); samesite=strict$/);
      if (tuoi === '0') muc.delete(ten);
      else muc.set(ten, gia);
    },
  };
}

const taoNho = () => {
  const muc = new Map();
  return { getItem: (k) => muc.get(k) ?? null, setItem: (k, v) => muc.set(k, v), removeItem: (k) => muc.delete(k) };
};

const { TvKho } = napKichBan({}, 'local-store.js');

test('settings outlive the page; those marked so outlive a change of port, and no others', () => {
  const hop = taoHop();
  const cong1 = { localStorage: taoNho(), document: hop };
  const kho = TvKho.tao(cong1);
  kho.ghi('ngonNgu', 'ja', TvKho.QUA_CONG);
  kho.ghi('bi.mat', 'a; b=c');
  const lai = TvKho.tao(cong1);
  assert.deepEqual([lai.doc('ngonNgu'), lai.doc('bi.mat'), lai.doc('khong', 'x')], ['ja', 'a; b=c', 'x']);
  const congKhac = TvKho.tao({ localStorage: taoNho(), document: hop });
  assert.deepEqual([congKhac.doc('ngonNgu', null, TvKho.QUA_CONG), congKhac.doc('bi.mat', null, TvKho.QUA_CONG)], ['ja', null]);
  lai.xoa('ngonNgu');
  assert.equal(lai.doc('ngonNgu', 'vi'), 'vi');
  assert.equal(TvKho.tao(cong1).doc('ngonNgu', null, TvKho.QUA_CONG), null);
});

test('a cookie that another port planted is believed for the marked names only, and never over a value of this origin', () => {
  const hop = taoHop();
  for (const ten of ['choDieuKhien', 'hoiTruoc', 'the', 'matKhauLau', 'ngonNgu']) hop.cookie = `tv_${ten}=gai; path=/; max-age=9; samesite=strict`;
  const kho = TvKho.tao({ localStorage: taoNho(), document: hop });
  for (const ten of ['choDieuKhien', 'hoiTruoc', 'the', 'matKhauLau', 'ngonNgu']) assert.equal(kho.doc(ten, 'rieng'), 'rieng', ten);
  assert.equal(kho.doc('ngonNgu', 'rieng', TvKho.QUA_CONG), 'gai');
  kho.ghi('ngonNgu', 'vi', TvKho.QUA_CONG);
  assert.equal(TvKho.tao({ localStorage: taoNho(), document: hop }).doc('ngonNgu', null, TvKho.QUA_CONG), 'vi');
});

test('without storage, with a full one and without cookies values last as long as the page', () => {
  const cam = () => { throw new Error('forbidden'); };
  const cacCuaSo = [
    { get localStorage() { return cam(); }, document: { get cookie() { return cam(); }, set cookie(v) { cam(); } } },
    { localStorage: { getItem: () => null, setItem: cam, removeItem: cam }, document: { cookie: 'tv_a=%E0%A4%A' } },
    { document: { cookie: '' } },
  ];
  for (const cuaSo of cacCuaSo) {
    const kho = TvKho.tao(cuaSo);
    assert.equal(kho.doc('a', 'macDinh'), 'macDinh');
    kho.ghi('a', 'ệ=;', TvKho.QUA_CONG);
    assert.equal(kho.doc('a'), 'ệ=;');
    kho.xoa('a');
    assert.equal(kho.doc('a'), null);
  }
});
