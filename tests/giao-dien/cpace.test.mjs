// The exchange against the published test vectors of draft-irtf-cfrg-cpace, revision 21:
// appendix "Test vector for CPace using group ristretto255 and hash SHA-512", and the string functions.
import assert from 'node:assert/strict';
import { createHash, createHmac, webcrypto as crypto } from 'node:crypto';
import test from 'node:test';
import { napKichBan } from './trang.mjs';

const { TvMaHoa } = napKichBan({ crypto, TextEncoder, btoa, atob }, 'crypto.js');
const { cpace } = TvMaHoa;
const hex = (b) => Buffer.from(b).toString('hex');
const tu = (...dong) => Uint8Array.from(Buffer.from(dong.join(''), 'hex'));
const chu = (van) => Uint8Array.from(Buffer.from(van, 'latin1'));
const day = (n) => Uint8Array.from({ length: n }, (_, i) => i);

const V = {
  prs: chu('Password'),
  ci: chu('\x0bA_initiator\x0bB_responder'),
  sid: tu('7e4b4791d6a8ef019b936c79fb7f2c57'),
  g: '222b6b195fe84b1652badb6f6a3ae3d24341e7306967f0b8115b40d5698c7e56',
  ya: tu('da3d23700a9e5699258aef94dc060dfda5ebb61f02a5ea77fad53f4ff0976d08'),
  Ya: tu('d6bac480f2c386c394efc7c47adb9925dcd2630b64f240c50f8d0eec482b9157'),
  ada: chu('ADa'),
  yb: tu('d2316b454718c35362d83d69df6320f38578ed5984651435e2949762d900b80d'),
  Yb: tu('3ea7e0b19560d7c0b0f5734f63b955286dfa8232b5ebe63324e2d9e7433f7258'),
  adb: chu('ADb'),
  k: '80b69a8a76457ab6a4d7f887a4bf6b55a2f80ac19c333f917a05fc9887c8b40f',
  isk: 'b69effbf61b51d56401c0f65601abe428de8206feaaf0e32198896dcae7b35cd'
    + '2b38950a39dfd5d4a79164614c2984f7daa460b588c1e80c3fa2068af7900447',
};

test('lengths before values', () => {
  assert.equal(hex(cpace.noiLv(chu(''))), '00');
  assert.equal(hex(cpace.noiLv(chu('1234'))), '0431323334');
  assert.equal(hex(cpace.noiLv(day(127))), `7f${hex(day(127))}`);
  assert.equal(hex(cpace.noiLv(day(128))), `8001${hex(day(128))}`);
  assert.equal(hex(cpace.noiLv(new Uint8Array(16384))).slice(0, 8), '80800100');
  assert.equal(hex(cpace.noiLv(chu('1234'), chu('5'), chu(''), chu('678'))), '043132333401350003363738');
  for (const [doi, cho] of [
    [['123', 'PartyA', '234', 'PartyB'], '03313233065061727479410332333406506172747942'],
    [['3456', 'PartyA', '2345', 'PartyB'], '043334353606506172747941043233343506506172747942'],
  ]) assert.equal(hex(cpace.noiBanGhi(...doi.map(chu))), cho);
});

test('the generator, with the padding that fills one block', () => {
  const sinh = cpace.taoChuoiSinh(V.prs, V.ci, V.sid);
  assert.equal(hex(sinh), `11${hex(chu('CPaceRistretto255'))}08${hex(V.prs)}64${'00'.repeat(100)}18${hex(V.ci)}10${hex(V.sid)}`);
  assert.equal(hex(createHash('sha512').update(sinh).digest()),
    'da6d3ddc8802fca9058755ffd3ebde08a9c2c74945901a258482a288b6663af0'
    + '6bf645c93cd1c51512307199c80e84908916d983b34af77205f90851a657ee27');
  assert.equal(hex(cpace.taoPhanTuSinh(V.prs, V.ci, V.sid).toBytes()), V.g);
  // A password too long for the block needs none.
  assert.equal(hex(cpace.taoChuoiSinh(day(200), chu(''), chu(''))), `11${hex(chu('CPaceRistretto255'))}c801${hex(day(200))}000000`);
});

test('shares, the common secret and the session key', () => {
  const g = cpace.taoPhanTuSinh(V.prs, V.ci, V.sid);
  assert.equal(hex(cpace.nhanDiem(V.ya, g)), hex(V.Ya));
  assert.equal(hex(cpace.nhanDiem(V.yb, g)), hex(V.Yb));
  assert.equal(hex(cpace.nhanKiem(V.ya, V.Yb)), V.k);
  assert.equal(hex(cpace.nhanKiem(V.yb, V.Ya)), V.k);
  assert.equal(hex(cpace.tinhIsk(V.sid, tu(V.k), V.Ya, V.ada, V.Yb, V.adb)), V.isk);
});

test('the product of a valid element; invalid encodings and the neutral element have none', () => {
  const s = tu('7cd0e075fa7955ba52c02759a6c90dbbfc10e6d40aea8d283e407d88cf538a05');
  assert.equal(hex(cpace.nhanKiem(s, tu('2c3c6b8c4f3800e7aef6864025b4ed79bd599117e427c41bd47d93d654b4a51c'))),
    '7c13645fe790a468f62c39beb7388e541d8405d1ade69d1778c5fe3e7f6b600e');
  const p = 2n ** 255n - 19n;
  const le = (so) => Uint8Array.from({ length: 32 }, (_, i) => Number((so >> BigInt(8 * i)) & 255n));
  for (const [ten, x] of Object.entries({
    'published, not an element': tu('2b3c6b8c4f3800e7aef6864025b4ed79bd599117e427c41bd47d93d654b4a51c'),
    'published, neutral': new Uint8Array(32),
    'neutral, encoded beyond the field': le(p),
    negative: le(1n),
    'top bit set': V.Ya.map((b, i) => (i === 31 ? b | 128 : b)),
    'beyond the field': le(p + 2n),
    short: V.Ya.subarray(1),
    long: Uint8Array.of(...V.Ya, 0),
  })) assert.equal(cpace.nhanKiem(s, x), null, ten);
});

// The draft recommends this confirmation without giving values for it: computed a second time, by Node.
test('key confirmation', () => {
  const khoa = createHash('sha512').update('CPaceMac').update(V.sid).update(tu(V.isk)).digest();
  const cho = createHmac('sha512', khoa).update(cpace.noiLv(V.Ya, V.ada)).digest('hex');
  assert.equal(hex(cpace.tinhThe(V.sid, tu(V.isk), V.Ya, V.ada)), cho);
});

test('secret scalars have 252 bits and are never zero', () => {
  const bit = new Uint8Array(32);
  for (let i = 0; i < 64; i++) cpace.layVoHuong().forEach((b, j) => { bit[j] |= b; });
  assert.deepEqual([...bit], [...new Uint8Array(31).fill(255), 15]);
  const gia = { getRandomValues: (o) => crypto.getRandomValues(o) };
  const rieng = napKichBan({ crypto: gia, TextEncoder, btoa, atob }, 'crypto.js').TvMaHoa;
  let lan = 0;
  gia.getRandomValues = (o) => { o.fill(0); o[31] = [0, 240, 16, 1][lan++]; return o; };
  assert.equal(hex(rieng.cpace.layVoHuong()), `${'00'.repeat(31)}01`);
});
