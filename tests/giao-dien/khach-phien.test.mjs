// A call from its code to its end, with a server, a handshake and an engine that do as they are told.
import assert from 'node:assert/strict';
import test from 'node:test';
import { sauKhiHet } from '../../giao-dien/nguon/khach/goi-lai.js';
import { chuHet, docGiay } from '../../giao-dien/nguon/khach/ly-do.js';
import { chiaMa, docMa, taoMayCu } from '../../giao-dien/nguon/khach/may-cu.js';
import { taoPhienKhach } from '../../giao-dien/nguon/khach/phien-khach.js';
import { docSucKhoe, loaiDuong, taoNhip } from '../../giao-dien/nguon/khach/suc-khoe.js';
import { docBang } from './trang.mjs';

const lang = () => new Promise((f) => setImmediate(f));

function goi({ dapGoi = { ok: true, phien: 'p1', stun: ['stun:x:3478'] }, noiHong = false } = {}) {
  const nhat = [];
  const hen = new Map();
  let so = 0;
  const t = { nhat, hen, luc: 0, batTay: null, noi: null, daGuiThe: false };
  const kenh = () => ({ readyState: 'connecting', bufferedAmount: 0, gui: [], send(x) { this.gui.push(JSON.parse(x)); } });
  t.noiGia = {
    kenh: {}, mieng: [], localDescription: null, connectionState: 'new',
    addTransceiver: (loai, cach) => { nhat.push(`${loai} ${cach.direction}`); return { receiver: { jitterBufferTarget: null } }; },
    createDataChannel(ten, cach) { assert.ok(cach.negotiated && cach.ordered); return (this.kenh[cach.id] = kenh()); },
    createOffer: async () => ({ type: 'offer', sdp: 'sdp-khach' }),
    async setLocalDescription(m) { this.localDescription = m; nhat.push('local'); },
    async setRemoteDescription(m) { if (m.sdp === 'xấu') throw new Error('sdp'); nhat.push(`remote ${m.sdp}`); },
    async addIceCandidate(u) { if (u.candidate === 'lạ') throw new Error('candidate'); nhat.push(`ice ${u.candidate}`); },
    close() { nhat.push('close'); },
    getStats: async () => new Map(),
  };
  t.phien = taoPhienKhach({
    ma: '123456789', matKhau: 'bí mật', ten: 'An', luc: () => t.luc,
    kenhHen: { goi: async (ten, du) => { nhat.push(`> ${ten} ${du.tin ?? du.ma ?? du.phien}`); return ten === 'khach:goi' ? dapGoi : t.dapTin ?? { ok: true }; } },
    maHoa: {
      vanTayCuaSdp: (sdp) => `vt(${sdp})`,
      taoBatTayKhach: (canh) => {
        t.canh = canh;
        t.khi = canh.khi;
        return { batDau: () => canh.gui('b1'), nhan: (tin) => nhat.push(`< ${tin}`), niem(v) { canh.gui(JSON.stringify(v)); return true; }, daGuiThe: () => t.daGuiThe, dong: () => nhat.push('quên') };
      },
    },
    taoNoi: (cauHinh) => {
      if (noiHong) throw new Error('RTCPeerConnection');
      nhat.push(JSON.stringify(cauHinh));
      return t.noiGia;
    },
    hen: { dat: (f, ms) => { hen.set(++so, { f, ms }); return so; }, huy: (i) => hen.delete(i) },
    khi: {
      tinh: (v) => nhat.push(`= ${v}`), het: (v) => { t.het = v; }, luong: () => {}, chao: (v) => nhat.push(`chào ${v.dangXem}`),
      kenhTep: () => nhat.push('tệp'), bang: (v) => nhat.push(`bảng ${v}`), dap: (v) => nhat.push(`đáp ${v}`), nghiNgo: () => nhat.push('nghi ngờ'),
    },
  });
  t.lay = () => nhat.splice(0);
  t.tuChoi = (code) => {
    t.dapTin = { ok: false, code };
    t.canh.gui('b5');
  };
  t.hetGio = () => [...hen.values()].forEach((h) => h.f());
  t.mo = async () => {
    await lang();
    t.khi.xong({});
    t.khi.thu({ nhan: true });
    await lang();
    t.khi.thu({ sdp: { type: 'answer', sdp: 'sdp-may' } });
    await lang();
    for (const k of Object.values(t.noiGia.kenh)) k.readyState = 'open';
    for (const k of Object.values(t.noiGia.kenh)) k.onopen();
  };
  t.doiNoi = (v) => {
    t.noiGia.connectionState = v;
    t.noiGia.onconnectionstatechange();
  };
  return t;
}

test('a whole call: our fingerprint goes into the handshake, the offer waits for the host’s yes, candidates for the answer', async () => {
  const t = goi();
  await lang();
  assert.deepEqual(t.lay(), ['> khach:goi 123456789', '= bat-tay', '{"iceServers":[{"urls":"stun:x:3478"}],"bundlePolicy":"max-bundle"}', 'video recvonly', '> phien:tin b1']);
  assert.deepEqual([t.canh.vanTay, t.canh.matKhau, t.canh.ma, t.canh.phien], ['vt(sdp-khach)', 'bí mật', '123456789', 'p1']);
  t.phien.nhanTin({ phien: 'khác', tin: 'x' });
  t.phien.nhanTin({ phien: 'p1', tin: 'b2' });
  t.khi.xong({});
  t.khi.thu({ cho: true });
  assert.deepEqual(t.lay(), ['< b2', '> phien:tin {"ten":"An"}', '= cho']);
  t.khi.thu({ nhan: true });
  t.khi.thu({ nhan: true });
  await lang();
  assert.deepEqual(t.lay(), ['= noi', 'local', '> phien:tin {"sdp":{"type":"offer","sdp":"sdp-khach"}}']);
  t.khi.thu({ ung: { candidate: 'sớm' } });
  t.khi.thu({ sdp: { type: 'answer', sdp: 'sdp-may' } });
  await lang();
  t.khi.thu({ ung: { candidate: 'lạ' } });
  t.khi.thu({ ung: null });
  t.khi.thu({ ung: { candidate: 'muộn' } });
  await lang();
  assert.deepEqual(t.lay(), ['remote sdp-may', 'ice sớm', 'ice muộn']);
  t.noiGia.onicecandidate({ candidate: { toJSON: () => ({ candidate: 'ta' }) } });
  assert.deepEqual(t.lay(), ['> phien:tin {"ung":{"candidate":"ta"}}']);
  const { kenh } = t.noiGia;
  assert.equal(t.phien.guiLenh({ t: 'x' }), false);
  assert.equal(t.phien.lenhCham(), true);
  for (const k of Object.values(kenh)) { k.readyState = 'open'; k.onopen(); }
  assert.deepEqual(t.lay(), ['= mo', 'tệp']);
  for (const tin of [{ l: 'chao', dangXem: 1 }, { l: 'nhip', s: 7 }, { l: 'dap', s: 3 }, { l: 'bang', chu: 'ê' }, { l: 'mới' }, null]) kenh[2].onmessage({ data: JSON.stringify(tin) });
  kenh[2].onmessage({ data: '{' });
  assert.deepEqual(t.lay(), ['chào 1', 'đáp 3', 'bảng ê']);
  assert.deepEqual(kenh[2].gui, [{ l: 'dap', s: 7 }]);
  assert.equal(t.phien.guiLenh({ t: 'x' }), true);
  kenh[1].bufferedAmount = 50000;
  assert.equal(t.phien.lenhCham(), true);
  assert.equal(t.hen.size, 0, 'nothing ends a live call by the clock');
});

test('every way in which a call fails before it is live, told once, everything closed', async () => {
  const daBatTay = async (t) => { await lang(); t.khi.xong({}); };
  for (const [ten, canh, viec, mong] of [
    ['nobody there', { dapGoi: { ok: false, code: 'khong_co_may' } }, null, { ly: 'khong-co-may' }],
    ['the packaged substitute', { dapGoi: { ok: false, code: 'khong_may_chu' } }, null, { ly: 'khong-may-chu' }],
    ['no answer of the server', { dapGoi: { ok: false, code: 'khong_tra_loi' } }, null, { ly: 'khong-may-chu' }],
    ['too many', { dapGoi: { ok: false, code: 'qua_nhieu', cho: 9 } }, null, { ly: 'qua-nhieu', cho: 9 }],
    ['an old page', { dapGoi: { ok: false, code: 'phien_ban' } }, null, { ly: 'phien-ban' }],
    ['something new', { dapGoi: { ok: false, code: 'sai_dang' } }, null, { ly: 'may-chu', ma: 'sai_dang' }],
    ['no such engine', { noiHong: true }, null, { ly: 'khong-webrtc' }],
    ['a silent host', {}, (t) => t.hetGio(), { ly: 'im' }],
    ['a wrong password', {}, (t) => t.khi.sai(3), { ly: 'sai', con: 3 }],
    ['a locked host', {}, (t) => t.khi.khoa(42), { ly: 'khoa', giay: 42 }],
    ['a letter that does not open', {}, (t) => t.khi.hong('niem'), { ly: 'gia', ma: 'niem' }],
    ['a handshake that took too long', {}, (t) => t.khi.hong('het-gio'), { ly: 'im' }],
    ['refused by the person', {}, async (t) => { await daBatTay(t); t.khi.thu({ cho: true }); t.khi.thu({ tuChoi: true }); }, { ly: 'tu-choi' }],
    ['nobody at the machine', {}, async (t) => { await daBatTay(t); t.khi.thu({ cho: true }); t.hetGio(); }, { ly: 'im' }],
    ['ended by the host', {}, async (t) => { await daBatTay(t); t.khi.thu({ het: 'dung' }); }, { ly: 'ben-kia', chu: 'dung' }],
    ['no path, as the host saw it first', {}, async (t) => { await daBatTay(t); t.khi.thu({ het: 'khong-noi-duoc' }); }, { ly: 'khong-duong' }],
    ['an answer before the offer', {}, async (t) => { await daBatTay(t); t.khi.thu({ sdp: { type: 'answer', sdp: 'x' } }); }, { ly: 'gia' }],
    ['an offer in its place', {}, async (t) => { await daBatTay(t); t.khi.thu({ nhan: true }); await lang(); t.khi.thu({ sdp: { type: 'offer', sdp: 'x' } }); }, { ly: 'gia' }],
    ['an answer that is none', {}, async (t) => { await daBatTay(t); t.khi.thu({ nhan: true }); await lang(); t.khi.thu({ sdp: { type: 'answer', sdp: 'xấu' } }); }, { ly: 'gia' }],
    ['no path', {}, async (t) => { await daBatTay(t); t.khi.thu({ nhan: true }); await lang(); t.doiNoi('failed'); }, { ly: 'khong-duong' }],
    ['no path within its time', {}, async (t) => { await daBatTay(t); t.khi.thu({ nhan: true }); await lang(); t.hetGio(); }, { ly: 'khong-duong' }],
    ['the host’s page is gone', {}, (t) => t.phien.nhanDong({ phien: 'p1', ly: 'mat-lien-lac' }), { ly: 'mat' }],
    ['given up', {}, (t) => t.phien.dong(), { ly: 'toi' }],
  ]) {
    const t = goi(canh);
    await lang();
    await viec?.(t);
    await lang();
    for (const [k, v] of Object.entries(mong)) assert.equal(t.het?.[k], v, `${ten}: ${k}`);
    assert.deepEqual([t.het.daMo, t.het.daHoi], [false, ten === 'refused by the person' || ten === 'nobody at the machine'], ten);
    const dau = t.lay();
    assert.equal(dau.filter((n) => n === '= het').length, 1, ten);
    if (t.canh) assert.ok(dau.includes('close') && dau.includes('quên'), ten);
    assert.equal(t.hen.size, 0, ten);
    t.khi?.thu({ nhan: true });
    t.phien.nhanTin({ phien: 'p1', tin: 'x' });
    await lang();
    assert.deepEqual(t.lay(), [], `${ten}: nothing afterwards`);
  }
});

test('a live call: weak and back, lost, ended by either side; the server alone cannot end it', async () => {
  const t = goi();
  await t.mo();
  t.lay();
  t.doiNoi('disconnected');
  t.doiNoi('connected');
  t.phien.nhanDong({ phien: 'p1', ly: 'ben-kia' });
  assert.deepEqual([t.lay(), t.hen.size, t.het], [['= yeu', '= mo', 'nghi ngờ'], 0, undefined]);
  t.luc = 65000;
  t.doiNoi('disconnected');
  t.hetGio();
  assert.deepEqual(t.het, { ly: 'ben-kia', chu: '', daMo: true, daHoi: false, lau: 65 }, 'ended there while nothing could reach us: not to be called again');
  for (const [lyMayChu, mong] of [['mat-lien-lac', 'mat'], [null, 'mat']]) {
    const mat = goi();
    await mat.mo();
    if (lyMayChu) mat.phien.nhanDong({ phien: 'p1', ly: lyMayChu });
    mat.doiNoi('disconnected');
    mat.hetGio();
    assert.equal(mat.het.ly, mong);
  }

  const hong = goi();
  await hong.mo();
  hong.doiNoi('failed');
  assert.equal(hong.het.ly, 'mat', 'a path that breaks is not a path that never was');

  const som = goi();
  await som.mo();
  som.doiNoi('disconnected');
  som.khi.thu({ het: 'mat' }); // by the server: the host has given the path up first
  assert.deepEqual([som.het.ly, sauKhiHet(som.het, true, 0)], ['mat', 1000], 'nobody ended it: it is called again');

  const kia = goi();
  await kia.mo();
  kia.noiGia.kenh[2].onmessage({ data: '{"l":"het","ly":"dung"}' });
  assert.deepEqual([kia.het.ly, kia.het.chu, kia.het.daMo], ['ben-kia', 'dung', true]);

  const ta = goi();
  await ta.mo();
  ta.phien.dong();
  ta.noiGia.kenh[2].readyState = 'closing';
  assert.deepEqual([ta.noiGia.kenh[2].gui, ta.het], [[{ l: 'het', ly: 'khach' }], undefined], 'the goodbye leaves first');
  ta.noiGia.kenh[2].onmessage({ data: '{"l":"het","ly":"ben-kia"}' });
  assert.equal(ta.het.ly, 'toi', 'their answer to our goodbye does not make it theirs');
  const an = goi();
  await an.mo();
  an.phien.dong('dong-trang');
  assert.equal(an.het.ly, 'toi', 'a page that goes has no time to wait');
});

test('a host that falls silent between our tags and its own has had its guess: no end of such a call brings it back', async () => {
  const cach = {
    'no letter': (t) => t.hetGio(),
    'gone from the server': (t) => t.phien.nhanDong({ phien: 'p1', ly: 'mat-lien-lac' }),
    'a minute': (t) => t.khi.hong('het-gio'),
    'our letter refused': (t) => t.tuChoi('qua_nhieu'),
    'the server lost': (t) => t.tuChoi('khong_tra_loi'),
  };
  for (const [ten, viec] of Object.entries(cach)) {
    for (const daGuiThe of [false, true]) {
      const t = goi();
      await lang();
      Object.assign(t, { daGuiThe });
      await viec(t);
      await lang();
      assert.equal(t.het.ly === 'gia', daGuiThe, `${ten}: ${t.het.ly}`);
      assert.equal(sauKhiHet(t.het, true, 0) === null, daGuiThe, ten);
    }
  }
  const dung = goi();
  await lang();
  dung.daGuiThe = true;
  dung.khi.xong({});
  dung.hetGio();
  assert.equal(dung.het.ly, 'im', 'the host has proved itself: nothing to guess');
});

test('their person is not asked over and over', () => {
  for (const [ly, daMo, lan, mong] of [
    ['khong-duong', false, 0, 10000], ['khong-duong', false, 1, null], ['khong-duong', true, 1, null],
    ['im', true, 0, null], ['mat', true, 0, 1000], ['mat', true, 1, null],
  ]) assert.equal(sauKhiHet({ ly, daHoi: true }, daMo, lan), mong, `${ly} ${daMo} ${lan}`);
});

test('what is tried again by itself, and when', () => {
  for (const [ly, daMo, lan, mong] of [
    ['khong-duong', false, 0, 10000], ['khong-duong', false, 30, null], ['khong-duong', true, 0, 1000],
    ['mat', true, 0, 1000], ['mat', true, 3, 8000], ['mat', true, 9, 15000], ['mat', true, 20, null], ['mat', false, 0, null],
    ['khong-co-may', true, 1, 2000], ['khong-co-may', false, 0, null], ['khong-may-chu', true, 0, 1000],
    ['sai', true, 0, null], ['gia', true, 0, null], ['tu-choi', true, 0, null], ['ben-kia', true, 0, null], ['toi', true, 0, null], ['khoa', true, 0, null],
  ]) assert.equal(sauKhiHet({ ly }, daMo, lan), mong, `${ly} ${daMo} ${lan}`);
  assert.equal(sauKhiHet({ ly: 'qua-nhieu', cho: 7 }, true, 0), 7000);
});

test('every end has its text, with its numbers', () => {
  const bang = docBang('vi');
  const van = (het) => {
    const [khoa, so] = chuHet(het);
    assert.ok(bang[khoa], khoa);
    return bang[khoa].replace(/\{(\w+)\}/g, (_, k) => so[k]);
  };
  assert.match(van({ ly: 'sai', con: 2 }), /còn lại: 2\./);
  assert.match(van({ ly: 'sai', con: 0 }), /mật khẩu mới/);
  assert.match(van({ ly: 'khoa', giay: 41.2 }), / 42 giây/);
  assert.match(van({ ly: 'qua-nhieu', cho: 9 }), / 9 giây/);
  assert.match(van({ ly: 'may-chu', ma: 'sai_dang' }), /sai_dang/);
  const cac = ['khong-may-chu', 'khong-co-may', 'phien-ban', 'tu-choi', 'gia', 'im', 'khong-duong', 'mat', 'khong-webrtc', 'toi', 'ben-kia'].map((ly) => van({ ly }));
  assert.equal(new Set(cac).size, cac.length);
  assert.notEqual(van({ ly: 'ben-kia', chu: 'ban' }), van({ ly: 'ben-kia' }));
  assert.notEqual(van({ ly: 'ben-kia', chu: 'dung' }), van({ ly: 'ben-kia', chu: '<b>' }));
  assert.deepEqual([docGiay(5), docGiay(65), docGiay(3723)], ['0:05', '1:05', '1:02:03']);
});

test('codes as people paste them, machines remembered newest first and never twice', () => {
  assert.deepEqual([docMa(' 123-456 789\n'), docMa('1234567890123'), chiaMa('1234'), chiaMa('123456789'), chiaMa('abc')], ['123456789', '123456789', '123 4', '123 456 789', '']);
  const luu = new Map();
  const kho = { doc: (k, m) => luu.get(k) ?? m, ghi: (k, v) => luu.set(k, v) };
  const mc = taoMayCu(kho);
  for (let i = 0; i < 15; i++) mc.nho(String(100000000 + i), i);
  mc.nho('100000010', 99);
  assert.deepEqual(mc.doc().slice(0, 3).map((m) => m.ma), ['100000010', '100000014', '100000013']);
  assert.equal(mc.doc().length, 12);
  mc.quen('100000010');
  assert.equal(mc.doc()[0].ma, '100000014');
  for (const hong of ['{', '7', '[{"ma":"<img>","luc":1}]']) {
    luu.set('mayCu', hong);
    assert.deepEqual(mc.doc(), []);
  }
});

test('health: rates between two looks, the path’s kind, the round trip', () => {
  const bang = (them) => new Map(Object.entries({
    t: { type: 'transport', selectedCandidatePairId: 'c' },
    c: { type: 'candidate-pair', localCandidateId: 'l', remoteCandidateId: 'r', currentRoundTripTime: 0.004 },
    l: { candidateType: 'prflx' }, r: { candidateType: 'host', address: '192.168.1.5' }, k: { mimeType: 'video/VP8' },
    v: { type: 'inbound-rtp', kind: 'video', codecId: 'k', frameWidth: 1920, frameHeight: 1080, ...them },
  }));
  const dau = docSucKhoe(bang({ timestamp: 1000, framesDecoded: 10, bytesReceived: 1000, jitterBufferDelay: 1, jitterBufferEmittedCount: 10 }));
  assert.deepEqual([dau.khungMoiGiay, dau.bitMoiGiay, dau.dem], [null, null, null]);
  const sau = docSucKhoe(bang({ timestamp: 3000, framesDecoded: 34, bytesReceived: 251000, jitterBufferDelay: 1.48, jitterBufferEmittedCount: 34 }), dau);
  assert.deepEqual([sau.khungMoiGiay, sau.bitMoiGiay, Math.round(sau.dem), sau.rtt, sau.maHoa, sau.rong, sau.duong], [12, 1e6, 20, 4, 'VP8', 1920, 'thang']);
  assert.equal(docSucKhoe(new Map()).duong, '');
  for (const [gan, xa, mong] of [
    [{ candidateType: 'host' }, { candidateType: 'srflx', address: '203.0.113.9' }, 'nat'], [{ candidateType: 'host' }, { candidateType: 'host', address: '203.0.113.9' }, 'thang'],
    [{ candidateType: 'srflx' }, { candidateType: 'prflx', address: '172.15.0.1' }, 'nat'], [{ candidateType: 'prflx' }, { candidateType: 'prflx', address: 'fd00::1' }, 'thang'],
    [{ candidateType: 'relay' }, { candidateType: 'host' }, 'chuyen'], [{ candidateType: 'host' }, { candidateType: 'prflx', address: '' }, ''], [{ candidateType: 'srflx' }, { candidateType: 'prflx' }, 'nat'], [undefined, {}, ''],
  ]) assert.equal(loaiDuong(gan, xa), mong);
  let gio = 0;
  const gui = [];
  const nhip = taoNhip({ gui: (t) => gui.push(t.s), luc: () => gio });
  for (const ms of [10, 30, 20]) {
    nhip.danh();
    gio += ms;
    nhip.dap(gui.at(-1));
  }
  nhip.dap(99);
  assert.deepEqual([nhip.ms, nhip.im], [20, 0]);
  nhip.danh();
  gio += 5000;
  assert.equal(nhip.im, 5000);
});
