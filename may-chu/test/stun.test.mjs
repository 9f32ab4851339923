import assert from 'node:assert/strict';
import { createSocket } from 'node:dgram';
import { once } from 'node:events';
import test from 'node:test';
import { GioiHan } from '../nguon/gioi-han.js';
import { docStun, moStun, traStun } from '../nguon/stun.js';
import { HAN } from './dung.mjs';

const hex = (chu) => Buffer.from(chu.replace(/\s/g, ''), 'hex');
const GIAO_DICH = '2112a442 b7e7a701bc34d686fa87dfae';

// The sample messages of RFC 5769, sections 2.1 to 2.3.
const MAU_HOI = hex(`00010058 ${GIAO_DICH} 80220010 5354554e207465737420636c69656e74 00240004 6e0001ff 80290008 932ff9b151263b36
  00060009 6576746a3a68367659202020 00080014 9aeaa70cbfd8cb56781ef2b5b2d3f249c1b571a2 80280004 e57a3bcf`);
const MAU_DAP_4 = hex(`0101003c ${GIAO_DICH} 8022000b 7465737420766563746f7220 00200008 0001a147e112a643
  00080014 2b91f599fd9e90c38c7489f92af9ba53f06be7d7 80280004 c07d4c96`);
const MAU_DAP_6 = hex(`01010048 ${GIAO_DICH} 8022000b 7465737420766563746f7220 00200014 0002a1470113a9faa5d3f179bc25f4b5bed2b9d9
  00080014 a382954e4be67bf11784c97c8292c275bfe3ed41 80280004 c8fb0b4c`);

const hoi = (than = '', loai = '0001') => {
  const byte = hex(than);
  const dau = hex(`${loai}0000 ${GIAO_DICH}`);
  dau.writeUInt16BE(byte.length, 2);
  return Buffer.concat([dau, byte]);
};
const muc = (tin, loai) => docStun(tin).cacMuc.find(([l]) => l === loai)?.[1];

test('the published messages: fingerprints hold, addresses are masked alike', () => {
  for (const mau of [MAU_HOI, MAU_DAP_4, MAU_DAP_6]) assert.notEqual(docStun(mau), null);
  assert.deepEqual(muc(traStun(hoi(), '192.0.2.1', 32853), 0x20), muc(MAU_DAP_4, 0x20));
  assert.deepEqual(muc(traStun(hoi(), '::ffff:192.0.2.1', 32853), 0x20), muc(MAU_DAP_4, 0x20));
  assert.deepEqual(muc(traStun(hoi(), '2001:db8:1234:5678:11:2233:4455:6677', 32853), 0x20), muc(MAU_DAP_6, 0x20));
});

test('a whole answer, without and with a fingerprint', () => {
  assert.deepEqual(traStun(hoi(), '192.0.2.1', 32853), hex(`0101000c ${GIAO_DICH} 00200008 0001a147e112a643`));
  const dau = hex(`00010008 ${GIAO_DICH}`);
  // The fingerprint of that very head, from zlib's crc32 xor 0x5354554e.
  const coDauVan = Buffer.concat([dau, hex('80280004 fdf6ae02')]);
  assert.equal(docStun(coDauVan)?.cacMuc.length ?? 'sai dấu vân', 1);
  const dap = traStun(coDauVan, '192.0.2.1', 32853);
  assert.equal(dap.length, 40);
  assert.equal(docStun(dap).cacMuc.at(-1)[0], 0x8028);
});

test('what must be understood and is not gets 420 and its names; what follows an integrity, or may be ignored, does not', () => {
  const loi = traStun(MAU_HOI, '192.0.2.1', 1); // PRIORITY (0x0024) belongs to peers, not to this server
  assert.equal(loi.readUInt16BE(0), 0x0111);
  assert.deepEqual([...muc(loi, 9).subarray(0, 4)], [0, 0, 4, 20]);
  assert.deepEqual(muc(loi, 0x0a), hex('0024'));
  assert.deepEqual(loi.subarray(4, 20), MAU_HOI.subarray(4, 20));
  assert.ok(muc(loi, 0x8028));
  assert.deepEqual(muc(traStun(hoi('7fff0000 00030004 00000000 7fff0000'), '192.0.2.1', 1), 0x0a), hex('7fff0003'));
  for (const than of ['80220000', '00080014'.padEnd(48, '0') + '00240004 00000000']) assert.equal(traStun(hoi(than), '192.0.2.1', 1).readUInt16BE(0), 0x0101);
});

test('malformed, foreign and oversized datagrams get no answer', () => {
  const hong = {
    'empty': hex(''), 'short': hoi().subarray(0, 19), 'not STUN': hex('80'.repeat(20)), 'no cookie': hex(`00010000 ${'00'.repeat(16)}`),
    'length beyond': Buffer.concat([hex(`00010004 ${GIAO_DICH}`)]), 'bytes beyond': Buffer.concat([hoi(), hex('00000000')]),
    'odd length': Buffer.concat([hex(`00010002 ${GIAO_DICH}`), hex('0000')]), 'attribute beyond': hoi('80220008 00000000'),
    'indication': hoi('', '0011'), 'answer': hoi('', '0101'), 'error answer': hoi('', '0111'), 'other method': hoi('', '0003'),
    'wrong fingerprint': hoi('80280004 00000000'), 'fingerprint not last': hoi('80280004 fdf6ae02 80220000'), 'short fingerprint': hoi('80280000'),
    'oversized': hoi(`802203e8 ${'00'.repeat(1000)}`),
  };
  for (const [ten, tin] of Object.entries(hong)) assert.equal(traStun(tin, '192.0.2.1', 1), null, ten);
  const chuoi = Buffer.from(MAU_HOI);
  for (let i = 0; i < chuoi.length; i++) { // any changed byte breaks the message or its fingerprint, save the name of the latter
    if (i >= chuoi.length - 8 && i < chuoi.length - 6) continue;
    chuoi[i] ^= 0x10;
    assert.equal(traStun(chuoi, '192.0.2.1', 1), null, `byte ${i}`);
    chuoi[i] ^= 0x10;
  }
});

for (const [ho, diaChi] of [['udp4', '127.0.0.1'], ['udp6', '::1']]) {
  test(`over ${ho}: the own port comes back, a flood is answered no further than the limit`, async (t) => {
    const stun = await moStun({ diaChi: '', cong: 0, gioiHan: new GioiHan({ dung: 3, moiGiay: 1, dongHo: () => 0 }) });
    t.after(stun.dong);
    const o = createSocket(ho);
    t.after(() => o.close());
    const [loi] = await new Promise((xong) => { o.once('error', (l) => xong([l])); o.bind(0, diaChi, () => xong([])); });
    if (loi) return t.skip(`no ${diaChi} here: ${loi.code}`);
    const nhan = [];
    o.on('message', (tin) => nhan.push(tin));
    for (let i = 0; i < 3; i++) {
      const den = once(o, 'message', { signal: AbortSignal.timeout(HAN) });
      o.send(hoi(), stun.cong, diaChi);
      await den;
    }
    const triGia = muc(nhan[0], 0x20);
    assert.equal(triGia.readUInt16BE(2) ^ 0x2112, o.address().port);
    assert.equal(triGia.length, ho === 'udp4' ? 8 : 20);
    // One more is not answered: what is sent after it from another address would overtake it otherwise.
    o.send(hoi(), stun.cong, diaChi);
    const khac = createSocket(ho === 'udp4' ? 'udp4' : 'udp6');
    t.after(() => khac.close());
    if (ho === 'udp4') {
      await new Promise((xong) => { khac.bind(0, '127.0.0.2', xong); });
      const den = once(khac, 'message', { signal: AbortSignal.timeout(HAN) });
      khac.send(hoi(), stun.cong, '127.0.0.1');
      await den;
      assert.equal(nhan.length, 3);
    }
    return undefined;
  });
}
