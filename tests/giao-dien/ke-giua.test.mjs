// A server between the two sides that alters, swaps, repeats, withholds and sends back what it carries. Whatever it does,
// a side that believes to have succeeded has the other's true fingerprint, and both share that one password.
import assert from 'node:assert/strict';
import test from 'node:test';
import {
  CHUNG, DOAN, KhachThuHai, PRS, TvMaHoa, VT_KE_GIUA, VT_KHACH, VT_MAY, bamNho, chayBatTay as chay, taoDongHo, taoSdp,
} from './bat-tay.mjs';

const chayBatTay = (ts) => chay({ ...ts, bamCham: bamNho });
const LAU = 'Xin chào, máy bàn';
const lau = await TvMaHoa.datMatKhauLau(LAU);
const dongHo = taoDongHo();
const lat = (chu, i = 0) => {
  const b = Buffer.from(chu, 'base64url');
  b[(i + b.length) % b.length] ^= 1;
  return b.toString('base64url');
};
const sua = (mang, i, ham) => mang.map((v, j) => (i === j ? ham(v) : v));
const phanTu = () => { // a valid element that nobody made for this session
  const { cpace } = TvMaHoa;
  const g = cpace.taoPhanTuSinh(DOAN(), DOAN(), DOAN());
  return Buffer.from(cpace.nhanDiem(cpace.layVoHuong(), g)).toString('base64url');
};

// Locked guards draw another password, whose hash costs time: a new guard only when its tries are used up.
let canhChung = null;
function layCanh(cauHinh) {
  if (canhChung === null || canhChung.conLai < 2 || canhChung.coLau !== (cauHinh.lau !== null)) {
    canhChung = TvMaHoa.taoCanhMatKhau({ dongHo, ...cauHinh });
  }
  return canhChung;
}

// Both results, by their first word; checks what must hold for every one of them.
async function chayQua(doi, { cauHinh = { lau }, matKhau = null } = {}) {
  const canh = layCanh(cauHinh);
  const kq = await chayBatTay({ canh, matKhau: matKhau ?? canh.matKhau, doi });
  const { khach, may, soKhach, soMay } = kq;
  const [k, m] = [soKhach, soMay].map((so) => so.find(([ten]) => ten !== 'thu') ?? ['-']);
  if (k[0] === 'xong') assert.deepEqual([m[0], k[1].vanTayKia, k[1].viTri], ['xong', VT_MAY, m[1].viTri]);
  if (m[0] === 'xong') assert.equal(m[1].vanTayKia, VT_KHACH);
  if (k[0] === 'xong') {
    khach.niem({ so: 1 });
    may.niem({ so: 2 });
    await kq.chay();
    assert.deepEqual([soKhach.at(-1)[1].so, soMay.at(-1)[1].so], [2, 1]);
  }
  return `${[k[0], ...(k[0] === 'hong' ? [k[1]] : [])].join(' ')}, ${[m[0], ...(m[0] === 'hong' ? [m[1]] : [])].join(' ')}`;
}

// What the server does to the letter of step b, and how it ends: controller, host ("-": still waiting).
const TRAO = [
  [1, 'nonce', (t) => ({ ...t, n: lat(t.n) }), 'sai, sai'],
  [2, 'nonce', (t) => ({ ...t, n: lat(t.n, -1) }), 'sai, sai'],
  [2, 'salt of this opening', (t) => ({ ...t, muoi: sua(t.muoi, 0, lat) }), 'sai, sai'],
  [2, 'salt of the password that was not typed', (t) => ({ ...t, muoi: sua(t.muoi, 1, lat) }), 'sai, sai'],
  [2, 'salts in another order', (t) => ({ ...t, muoi: [...t.muoi].reverse() }), 'sai, sai'],
  [2, 'one salt withheld', (t) => ({ ...t, muoi: t.muoi.slice(0, 1) }), '-, hong dang'],
  [2, 'one salt twice', (t) => ({ ...t, muoi: [t.muoi[0], t.muoi[0]] }), 'sai, sai'],
  [3, 'share', (t) => ({ ...t, y: sua(t.y, 0, phanTu) }), 'sai, sai'],
  [3, 'shares in another order', (t) => ({ ...t, y: [...t.y].reverse() }), 'sai, sai'],
  [3, 'neutral share', (t) => ({ ...t, y: sua(t.y, 1, () => 'A'.repeat(43)) }), '-, hong phan-tu'],
  [3, 'fingerprint', (t) => ({ ...t, vt: VT_KE_GIUA }), 'sai, sai'],
  [3, "the host's own fingerprint", (t) => ({ ...t, vt: VT_MAY }), 'sai, sai'],
  [3, 'share of the password that was not typed', (t) => ({ ...t, y: sua(t.y, 1, phanTu) }), 'xong, xong'],
  [4, 'share', (t) => ({ ...t, y: sua(t.y, 0, phanTu) }), 'sai, sai'],
  [4, 'shares in another order', (t) => ({ ...t, y: [...t.y].reverse() }), 'sai, sai'],
  [4, 'neutral share', (t) => ({ ...t, y: sua(t.y, 0, () => 'A'.repeat(43)) }), 'hong phan-tu, -'],
  [4, 'one share withheld', (t) => ({ ...t, y: t.y.slice(1) }), 'hong dang, -'],
  [4, 'fingerprint', (t) => ({ ...t, vt: VT_KE_GIUA }), 'sai, sai'],
  [4, "the controller's own fingerprint", (t) => ({ ...t, vt: VT_KHACH }), 'sai, sai'],
  [5, 'tag', (t) => ({ t: sua(t.t, 0, (v) => lat(v, -1)), b: 5 }), 'sai, sai'],
  [5, 'tags in another order', (t) => ({ ...t, t: [...t.t].reverse() }), 'sai, sai'],
  [5, 'one tag withheld', (t) => ({ ...t, t: t.t.slice(0, 1) }), '-, hong dang'],
  [5, 'tag of the password that was not typed', (t) => ({ ...t, t: sua(t.t, 1, lat) }), 'xong, xong'],
  [6, 'which password', (t) => ({ ...t, i: 1 - t.i }), 'hong the, xong'],
  [6, 'tag', (t) => ({ ...t, t: lat(t.t) }), 'hong the, xong'],
  [6, 'a refusal in its place', () => ({ b: 'sai', con: 3 }), 'sai, xong'],
  [6, 'a lock in its place', () => ({ b: 'khoa', giay: 9 }), 'khoa, xong'],
];
test('one value of one letter', async (t) => {
  for (const [b, ten, doi, cho] of TRAO) {
    await t.test(`${b}: ${ten}`, async () => {
      const den = b % 2 === 1 ? 'may' : 'khach';
      assert.equal(await chayQua((ben, thu) => (thu.b === b ? [[den, doi(thu)]] : undefined)), cho);
    });
  }
});

test('letters sent back, twice, not at all, or another in their place', async (t) => {
  const nho = {};
  await chayQua((ben, thu) => { nho[thu.b] = thu; });
  let cuaKhach;
  for (const [ten, doi, cho] of [
    ['the first to its sender', (ben, thu) => (thu.b === 1 ? [['khach', thu]] : undefined), 'hong thu-tu, -'],
    ['the nonce to its sender', (ben, thu) => {
      if (thu.b === 1) cuaKhach = thu.n;
      return thu.b === 2 ? [['khach', { ...thu, n: cuaKhach }]] : undefined;
    }, 'hong doi-lai, -'],
    ['the shares to their sender', (ben, thu) => (thu.b === 3 ? [['khach', { ...thu, b: 4 }]] : undefined), 'hong doi-lai, -'],
    ["the host's shares to it", (ben, thu) => (thu.b === 4 ? [['may', { ...thu, b: 3 }]] : undefined), '-, hong thu-tu'],
    ["the controller's tag to it", (ben, thu) => (thu.b === 5 ? [['khach', { b: 6, i: 0, t: thu.t[0] }]] : undefined), 'hong the, -'],
    ['twice: 1', (ben, thu) => (thu.b === 1 ? [['may', thu], ['may', thu]] : undefined), '-, hong thu-tu'],
    ['twice: 2', (ben, thu) => (thu.b === 2 ? [['khach', thu], ['khach', thu]] : undefined), 'hong thu-tu, -'],
    ['withheld: 4', (ben, thu) => (thu.b === 4 ? [] : undefined), '-, -'],
    ['withheld: 6', (ben, thu) => (thu.b === 6 ? [] : undefined), '-, xong'],
    ['tags before shares', (ben, thu) => (thu.b === 3 ? [['may', nho[5]], ['may', thu]] : undefined), '-, hong thu-tu'],
    ['sealed before its time', (ben, thu) => (thu.b === 4 ? [['khach', { b: 7, d: 'AAAA' }]] : undefined), 'hong thu-tu, -'],
    ["an earlier session's letters to the host", (ben, thu) => (ben === 'khach' ? [['may', nho[thu.b]]] : undefined), 'sai, sai'],
    ["an earlier session's letters to the controller", (ben, thu) => (ben === 'may' ? [['khach', nho[thu.b] ?? nho[6]]] : undefined), 'hong the, sai'],
    ['a host that knows no password', (ben, thu) => (thu.b === 'sai' ? [['khach', { b: 6, i: 0, t: lat(nho[6].t) }]] : undefined), 'hong the, sai'],
  ]) {
    await t.test(ten, async () => {
      const matKhau = ten.includes('no password') ? 'khong biet' : null;
      assert.equal(await chayQua(doi, { matKhau }), cho);
    });
  }
});

// The last letters twice: the handshake has succeeded, and who gets one again ends the session.
test('a letter that comes again after success', async () => {
  const canh = layCanh({ lau });
  for (const b of [5, 6]) {
    const den = b === 5 ? 'may' : 'khach';
    const kq = await chayBatTay({
      canh, matKhau: canh.matKhau, doi: (ben, thu) => (thu.b === b ? [[den, thu], [den, thu]] : undefined),
    });
    const so = b === 5 ? kq.soMay : kq.soKhach;
    assert.deepEqual([kq[den].daHet, so.map((s) => s[0]), so.at(-1)[1]], [true, ['xong', 'hong'], 'thu-tu']);
  }
});

// Shapes: each field of each letter missing, of another type, of another length or in another spelling, and letters that
// are no letters. The side that gets one ends, whatever follows.
const HONG_BYTES = [(v) => v.slice(0, -2), (v) => `${v}AAAA`, (v) => `${v}=`, () => '', () => null, () => 7, (v) => `+${v.slice(1)}`,
  (v) => v.slice(0, -1) + (v.at(-1) === 'B' ? 'C' : 'B'), (v) => [v], (v) => ({ v })];
const HONG_DS = [() => [], (v) => v[0], (v) => [...v, ...v, ...v], () => null, (v) => ({ ...v })];
const HONG_VT = [() => null, (v) => v.toLowerCase(), (v) => v.slice(8), (v) => `${v} `, (v) => v.replace('256', '512'), (v) => [v]];
const HONG_SO = [() => -1, () => 0.5, () => '0', () => null, () => 2, () => [0]];
const TRUONG = {
  1: { n: HONG_BYTES }, 2: { n: HONG_BYTES, muoi: HONG_DS, 'muoi.0': HONG_BYTES },
  3: { y: HONG_DS, 'y.0': HONG_BYTES, vt: HONG_VT }, 4: { y: HONG_DS, 'y.0': HONG_BYTES, vt: HONG_VT },
  5: { t: HONG_DS, 't.0': HONG_BYTES }, 6: { i: HONG_SO, t: HONG_BYTES },
};
function* cacHong(b) {
  for (const [duong, cac] of Object.entries(TRUONG[b])) {
    const [ten, trong] = duong.split('.');
    for (const ham of cac) yield (t) => ({ ...t, [ten]: trong === undefined ? ham(t[ten]) : sua(t[ten], 0, ham) });
    if (trong === undefined) yield (t) => ({ ...t, [ten]: undefined });
  }
  for (const ham of [(t) => ({ ...t, la: 1 }), (t) => ({ ...t, b: String(b) }), (t) => ({ ...t, b: [b] }), (t) => [t], () => 'null', () => '',
    () => '"x"', (t) => JSON.stringify(t).slice(0, -1), (t) => `${JSON.stringify(t)}x`, () => '{"b":"__proto__"}', () => '{"b":8}',
    (t) => JSON.stringify(t) + ' '.repeat(65536), (t) => `{"__proto__":{"n":"x"},${JSON.stringify(t).slice(1)}`]) yield ham;
}
for (const b of [1, 3, 5]) {
  test(`malformed letters of step ${b} end the host's side`, async () => {
    const canh = TvMaHoa.taoCanhMatKhau({ dongHo });
    const prs = PRS(canh.matKhau)(await layMuoi(canh));
    for (const ham of cacHong(b)) {
      const k = new KhachThuHai(canh, () => prs);
      const noi = k.noi;
      k.noi = function noiHong(thu) {
        if (thu.b !== b) return noi.call(this, thu);
        const doi = ham(thu);
        return this.may.nhan(typeof doi === 'string' ? doi : JSON.stringify(doi));
      };
      await k.chao();
      if (b > 1) await k.guiPhan();
      if (b > 3) await k.guiThe();
      assert.ok(['dang', 'qua-lon'].includes(k.soMay[0][1]), `${ham}: ${k.soMay}`);
      assert.deepEqual([k.soMay.length, k.soMay[0][0], k.cuaMay.length], [1, 'hong', (b - 1) / 2], String(ham));
      assert.equal(canh.conLai, 5);
    }
  });
}
async function layMuoi(canh) {
  const k = new KhachThuHai(canh, DOAN);
  await k.chao();
  k.may.dong();
  return Buffer.from(k.cuaMay[0].muoi[0], 'base64url');
}
for (const b of [2, 4, 6]) {
  test(`malformed letters of step ${b} end the controller's side`, async () => {
    const canh = TvMaHoa.taoCanhMatKhau({ dongHo });
    for (const ham of cacHong(b)) {
      const { khach, soKhach, soMay } = await chayBatTay({
        canh, matKhau: canh.matKhau, doi: (ben, thu) => (thu.b === b ? [['khach', ham(thu)]] : undefined),
      });
      const lyDo = soKhach[0]?.[1];
      assert.ok(['dang', 'qua-lon'].includes(lyDo), `${ham}: ${soKhach}`);
      assert.deepEqual([soKhach.length, soKhach[0][0], khach.daHet, soMay.map((s) => s[0])], [1, 'hong', true, b === 6 ? ['xong'] : []]);
    }
  });
}

test('letters of chance never throw and never succeed', async () => {
  let canh, prs;
  let hat = 12345;
  const bc = (n) => { hat = (hat * 1103515245 + 12345) % 2147483648; return Math.floor(hat / 2147483648 * n); };
  for (let lan = 0; lan < 120; lan++) {
    if (canh === undefined || canh.conLai < 2) { // altered but well formed ones count as wrong passwords
      canh = TvMaHoa.taoCanhMatKhau({ dongHo });
      prs = PRS(canh.matKhau)(await layMuoi(canh));
    }
    const k = new KhachThuHai(canh, () => prs);
    const noi = k.noi;
    let goc, lech;
    k.noi = function noiLech(thu) {
      if (thu.b !== [1, 3, 5][lan % 3]) return noi.call(this, thu);
      goc = JSON.stringify(thu);
      do {
        const cho = bc(goc.length);
        lech = goc.slice(0, cho) + String.fromCharCode(32 + bc(95)) + goc.slice(cho + bc(3));
      } while (cungNghia(goc, lech));
      return this.may.nhan(lech);
    };
    try {
      await k.chao();
      await k.guiPhan();
      await k.guiThe();
    } catch { /* the second controller misses an answer */ }
    assert.notEqual(k.soMay[0]?.[0], 'xong', `${goc} -> ${lech}`);
  }
});
function cungNghia(a, b) {
  try {
    assert.deepEqual(JSON.parse(b), JSON.parse(a));
    return true;
  } catch {
    return false;
  }
}

test('sealed letters: altered, repeated, moved, lost, cut, sent back', async () => {
  const canh = TvMaHoa.taoCanhMatKhau({ dongHo });
  for (const [ten, doi, cho] of [
    ['as they are', (a, b, c) => [a, b, c], ['thu 1', 'thu 2', 'thu 3']],
    ['one bit at the front', (a) => [{ ...a, d: lat(a.d) }, a], ['hong niem']],
    ['one bit of the tag', (a) => [{ ...a, d: lat(a.d, -1) }, a], ['hong niem']],
    ['twice', (a, b) => [a, a, b], ['thu 1', 'hong niem']],
    ['another order', (a, b) => [b, a], ['hong niem']],
    ['one lost', (a, b, c) => [a, c], ['thu 1', 'hong niem']],
    ['cut', (a) => [{ ...a, d: a.d.slice(0, -4) }], ['hong niem']],
    ['cut to nothing', (a) => [{ ...a, d: '' }], ['hong niem']],
    ['of the other direction', (a, b, c, ra) => [ra], ['hong niem']],
    ['a handshake letter', (a) => [a, { b: 'sai', con: 1 }], ['thu 1', 'hong thu-tu']],
    ['not a letter', (a) => [a, 'x', a], ['thu 1', 'hong dang']],
  ]) {
    const hop = [];
    const k = await chayBatTay({
      canh, matKhau: canh.matKhau, doi: (ben, thu) => (thu.b === 7 ? (hop.push(thu), []) : undefined),
    });
    for (const so of [1, 2, 3]) k.khach.niem({ so });
    k.may.niem({ so: 4 });
    for (const thu of doi(...hop)) await k.may.nhan(typeof thu === 'string' ? thu : JSON.stringify(thu));
    assert.deepEqual(k.soMay.slice(1).map(([loai, v]) => `${loai} ${v.so ?? v}`), cho, ten);
  }
});

test('what is inside: objects only, and descriptions with the fingerprint that was vouched for', async () => {
  const canh = TvMaHoa.taoCanhMatKhau({ dongHo });
  const prs = PRS(canh.matKhau)(await layMuoi(canh));
  for (const [vat, ly] of [
    [[], 'dang'], [null, 'dang'], ['x', 'dang'], [7, 'dang'], [{ sdp: null }, 'dang'], [{ sdp: { type: 1, sdp: taoSdp(VT_KHACH) } }, 'dang'],
    [{ sdp: { type: 'offer', sdp: taoSdp(VT_KE_GIUA) } }, 'van-tay'], [{ sdp: { type: 'offer', sdp: 'v=0\r\n' } }, 'van-tay'],
    [{ sdp: { type: 'offer', sdp: taoSdp(VT_KHACH) + taoSdp(VT_KE_GIUA) } }, 'van-tay'], [{ sdp: { type: 'offer' } }, 'van-tay'],
  ]) {
    const k = new KhachThuHai(canh, () => prs);
    await k.batTay();
    await k.noiNiem(vat);
    assert.deepEqual(k.soMay.slice(1), [['hong', ly]], JSON.stringify(vat));
    assert.equal(k.may.niem({ a: 1 }), false);
  }
  const k = new KhachThuHai(canh, () => prs);
  await k.batTay();
  const truoc = k.cuaMay.length;
  for (const vat of [{ sdp: { type: 'answer', sdp: taoSdp(VT_KE_GIUA) } }, { sdp: null }, { ten: 'ế'.repeat(20000) }, null, [], 'x']) {
    assert.equal(k.may.niem(vat), false, JSON.stringify(vat)?.slice(0, 60));
  }
  assert.deepEqual([k.cuaMay.length, k.may.daXong], [truoc, true], 'refused, nothing sent, the session goes on');
  assert.ok(k.may.niem({ ten: 'a'.repeat(49000) }));
  assert.ok(JSON.stringify(k.cuaMay.at(-1)).length <= 65536);
});

test('a flood while one letter is worked on', async () => {
  const canh = TvMaHoa.taoCanhMatKhau({ dongHo });
  const k = new KhachThuHai(canh, DOAN, CHUNG.phien);
  const chao = k.chao();
  const dot = Array.from({ length: 64 }, () => k.may.nhan('{"b":1}'));
  assert.deepEqual(k.soMay, [['hong', 'qua-nhieu']]);
  await Promise.all([chao, ...dot]);
  assert.deepEqual([k.soMay.length, k.cuaMay.length], [1, 0]);
});
