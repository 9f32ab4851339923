// The host's page with people on it: the switches, the lasting password, the question before somebody is let in, the history.
import assert from 'node:assert/strict';
import test from 'node:test';
import { docBang, lang, moTrang } from './trang.mjs';
import { KetNoiGia, chungMinh, noi, taoCam, taoMaHoaGia } from './vai-may.mjs';

const vi = docBang('vi');
const LUONG = 'http://127.0.0.1:5000/man-hinh?k=abc';
const chu = (khoa, thamSo = {}) => vi[khoa].replace(/\{(\w+)\}/g, (_, ten) => thamSo[ten]);

// The page with a server, real guards and passwords, and a handshake that a test decides.
async function moCoMang({ luu = {} } = {}) {
  const cam = taoCam();
  const [maHoas, pcs] = [[], []];
  const t = await moTrang({
    hostname: 'tovira.example', kem: '/* the real client */', luu,
    sua(cuaSo) {
      cuaSo.io = () => cam;
      cuaSo.RTCPeerConnection = function taoKetNoi(cauHinh) { pcs.push(new KetNoiGia(cauHinh)); return pcs.at(-1); };
      cuaSo.TvMaHoa = {
        ...cuaSo.TvMaHoa, vanTayCuaSdp: (s) => s,
        datMatKhauLau: async (mk) => (mk.length < 10 ? { loi: 'ngan' } : { muoi: 'AAAAAAAAAAAAAAAAAAAAAA', prs: 'A'.repeat(43) }),
        taoBatTayMay(dat) { maHoas.push(taoMaHoaGia()); return maHoas.at(-1).taoBatTayMay(dat); },
      };
    },
  });
  cam.gui.findLast(([ten]) => ten === 'may:mo')[2]({ ok: true, ma: '123456789', stun: [] });
  await lang();
  // Somebody who knows a password; answers their end of the connection and what was sealed for them.
  t.goi = async (so, ai) => {
    cam.vao('may:khach', { phien: so });
    await lang();
    const [maHoa, pc] = [maHoas.at(-1), pcs.at(-1)];
    await chungMinh(maHoa, ai);
    return { pc, get thu() { return JSON.parse(JSON.stringify(maHoa.bt.thu)); }, noi: () => noi(maHoa, pc) };
  };
  t.vao = async (so, ai) => {
    const k = await t.goi(so, ai);
    await k.noi();
    return k;
  };
  t.hop = () => t.document.body.con.find((c) => c.the === 'dialog');
  t.bam = async (nut, trong = t.hop()) => {
    trong.tim('button').find((n) => n.textContent === nut).click();
    await lang();
    await lang();
  };
  t.doi = (id, bat) => { t.$(id).checked = bat; t.$(id).kich('change'); };
  t.tin = () => t.$('noi').con.map((c) => c.tim('p')[0].textContent);
  t.trangThai = (pc) => pc.kenh.tin.cac.filter(({ l }) => l === 'chao' || l === 'doi').at(-1);
  return t;
}

test('each switch reaches the controller at once, is kept, and begins as harmless as it can', async () => {
  const t = await moCoMang();
  const { pc } = await t.vao('p');
  const thay = () => { const s = t.trangThai(pc); return [s.choDieuKhien, s.tep.duoc, s.bang]; };
  assert.deepEqual(thay(), [true, true, false]);
  for (const [id, ten, sau] of [['cho-dieu-khien', 'choDieuKhien', [false, true, false]], ['cho-tep', 'nhanTep', [false, false, false]], ['chung-bang', 'bang', [false, false, true]]]) {
    t.doi(id, id === 'chung-bang');
    assert.deepEqual(thay(), sau, id);
    assert.equal(t.luuTru.get(`tv.${ten}`), id === 'chung-bang' ? '1' : '0');
  }
  assert.equal(t.trangThai(pc).tep.ly, 'nhanTep.tat');
  assert.equal(t.$('gui-bang').hidden, false);
  const sau = await moCoMang({ luu: Object.fromEntries(t.luuTru) });
  assert.deepEqual(['cho-dieu-khien', 'cho-tep', 'chung-bang', 'hoi-truoc'].map((id) => sau.$(id).checked), [false, false, true, false]);
});

test('clipboard text crosses only while its switch is on', async () => {
  const t = await moCoMang();
  const { pc } = await t.vao('p');
  pc.kenh.tin.vao('{"l":"bang","chu":"trước"}');
  await lang();
  assert.ok(!t.tin().includes(chu('bang.nhan', { ten: 'Lan' })));
  t.doi('chung-bang', true);
  pc.kenh.tin.vao('{"l":"bang","chu":"sau"}');
  await lang();
  assert.ok(t.tin().includes(chu('bang.nhan', { ten: 'Lan' })), 'the engine keeps its clipboard, so the page offers a button');
  t.$('gui-bang').click();
  await lang();
  t.hop().tim('textarea')[0].value = 'gửi đi';
  await t.bam(vi['bang.guiDi']);
  assert.deepEqual(pc.kenh.tin.cac.at(-1), { l: 'bang', chu: 'gửi đi' });
});

test('nobody comes in before this person has said so; the question can be answered with the stop button too', async () => {
  const t = await moCoMang();
  t.doi('hoi-truoc', true);
  const mot = await t.goi('1', { ten: 'Lan', vanTayKia: '1' });
  await mot.noi();
  assert.deepEqual([t.hop(), mot.thu[0], mot.pc.remoteDescription], [undefined, { cho: true }, undefined], 'an offer before the answer ends the call');

  const goi = (so, ten) => t.goi(so, { ten, vanTayKia: so });
  const hai = await goi('2', 'Bình');
  assert.equal(t.hop().tim('h2')[0].textContent, chu('hoi.tieuDe', { ten: 'Bình' }));
  assert.deepEqual(t.hop().tim('button').map((n) => n.textContent), [vi['hoi.tuChoi'], vi['hoi.choVao']]);
  assert.ok(t.nhat.some(([ten, s]) => ten === 'ipc' && s === 'hien-cua-so'), 'nobody sees a question in a hidden window');
  await t.bam(vi['hoi.tuChoi']);
  assert.deepEqual(hai.thu.slice(1), [{ tuChoi: true }, { het: 'tu-choi' }]);

  const ba = await goi('3', 'Chi');
  await t.bam(vi['hoi.choVao']);
  assert.deepEqual(ba.thu.at(-1), { nhan: true });
  await ba.noi();
  t.dayManHinh(LUONG, '', true);
  assert.match(t.$('ds-nguoi').con[0].tim('h3')[0].textContent, /Chi/);

  const cu = t.$('mat-khau').dataset.gia;
  await goi('4', 'Dũng');
  await t.bam(vi['man.dung']);
  assert.deepEqual(ba.pc.kenh.tin.cac.at(-1), { l: 'het', ly: 'dung' });
  assert.deepEqual([t.nhat.at(-1), t.$('ds-nguoi').con.length, t.hop()], [['manHinhTat'], 0, undefined]);
  assert.notEqual(t.$('mat-khau').dataset.gia, cu, 'the password that let them in is no longer one');
});

test('a page that finds no path and calls again leaves one message, and who is asked for is asked for once', async () => {
  const t = await moCoMang();
  t.doi('hoi-truoc', true);
  for (const so of ['1', '2', '3']) {
    const k = await t.goi(so, { ten: 'Lan', vanTayKia: 'A' });
    if (so === '1') await t.bam(vi['hoi.choVao']);
    assert.equal(t.hop(), undefined);
    k.pc.thanh('failed');
  }
  assert.deepEqual(t.tin(), [chu('nguoi.khongNoi', { ten: 'Lan' })]);
});

test('the stop button stays while anybody is in, shared or not', async () => {
  const t = await moCoMang();
  await t.vao('p');
  t.dayManHinh('', 'Chưa được cấp quyền Ghi màn hình', false);
  assert.equal(t.$('bc-stop').hidden, false);
  t.$('bc-stop').click();
  assert.deepEqual([t.$('ds-nguoi').con.length, t.tin().at(-1)], [0, chu('roi.khoa', { n: 60, phut: 10 })]);
});

test('who was here stays written down, and the notice of the end stays until it is put away', async () => {
  const t = await moCoMang();
  await t.vao('p', { ten: 'Lan', viTri: 1 });
  const cu = t.$('mat-khau').dataset.gia;
  t.$('ds-nguoi').tim('button').find((n) => n.textContent === vi['nguoi.ketThuc']).click();
  assert.notEqual(t.$('mat-khau').dataset.gia, cu);
  t.chayHen();
  assert.deepEqual(t.tin(), [chu('roi.nguoi', { ten: 'Lan' })], 'that they came has gone, that they went has not');
  const muc = () => t.$('ds-lich-su').con.map((m) => [m.tim('h3')[0].textContent, m.tim('p')[0].textContent.includes(vi['nguoi.lauDai'])]);
  assert.deepEqual(muc(), [['Lan', true]]);
  const sau = await moCoMang({ luu: Object.fromEntries(t.luuTru) });
  assert.equal(sau.$('ds-lich-su').con.length, 1);
  sau.$('xoa-lich-su').click();
  assert.deepEqual([sau.$('ds-lich-su').con.length, sau.$('xoa-lich-su').hidden, sau.luuTru.has('tv.lichSu')], [0, true, false]);
});

test('the lasting password: refused with the reason, stored as its hash only, removed', async () => {
  const t = await moCoMang();
  const dat = async (mk) => {
    t.$('mk-lau').value = mk;
    t.$('mk-lau').kich('keydown', { key: 'Enter' });
    assert.equal(t.$('dat-mk-lau').disabled, mk.length > 0);
    await lang();
  };
  assert.deepEqual([t.$('bo-mk-lau').hidden, t.$('mk-lau-tinh').textContent], [true, vi['lau.chuaCo']]);
  await dat('ngắn');
  assert.equal(t.tin().at(-1), chu('lau.ngan', { it: 10, nhieu: 128 }));
  assert.equal(t.luuTru.has('tv.matKhauLau'), false);
  await dat('một câu thật là dài');
  assert.deepEqual([t.$('mk-lau').value, t.$('mk-lau-tinh').textContent, t.$('bo-mk-lau').hidden], ['', vi['lau.dangCo'], false]);
  assert.ok(![...t.luuTru.values()].join().includes('một câu'));
  const sau = await moCoMang({ luu: Object.fromEntries(t.luuTru) });
  assert.equal(sau.$('mk-lau-tinh').textContent, vi['lau.dangCo']);
  sau.$('bo-mk-lau').click();
  assert.deepEqual([sau.luuTru.has('tv.matKhauLau'), sau.$('mk-lau-tinh').textContent], [false, vi['lau.chuaCo']]);
});

test('a name made to look like another, in what was received', async () => {
  const t = await moCoMang();
  t.cuaSo.__tvDaTai('/tải', 'ảnh\u202egpj.exe');
  await lang();
  const li = t.$('tep-nhan').con[0];
  assert.equal(li.tim('h3')[0].textContent, 'ảnh gpj.exe');
  assert.ok(t.tin().at(-1).includes('ảnh gpj.exe'));
  li.tim('button')[0].click();
  assert.deepEqual(t.nhat.at(-1), ['hienTrongFinder', '/tải', 'ảnh\u202egpj.exe'], 'the host gets the real one');
});
