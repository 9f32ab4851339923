// One call of a machine, from its code to the end: signalling, handshake, peer connection, channels. Nothing is shown
// here, and nothing is tried a second time (see goi-lai.js).
//
// States, told through khi.tinh(tinh): goi (asking the server), bat-tay (proving the password), cho (the host's person is
// being asked), noi (finding a way), mo (live), yeu (live, but nothing has come through for a while), het.
// The end is told once, khi.het({ ly, daMo: it was live, lau: for so many seconds, daHoi: their person was asked, … }):
//   khong-may-chu, phien-ban, qua-nhieu { cho }, may-chu { ma }   the server is not there, or does not want to
//   khong-co-may                                            nobody has that code
//   sai { con }, khoa { giay }                              wrong password with tries left; the host takes no calls
//   tu-choi, ben-kia { chu }, toi                           their person said no; they ended it; we did
//   gia { ma }                                              a letter or a description that is not from who knows the password;
//                                                           or nothing more once our tags were sent, which one may have guessed at
//   khong-webrtc { ma }                                     this engine cannot make the connection
//   im                                                      the host does not answer
//   khong-duong                                             no direct path between the two networks
//   mat                                                     it was live and is gone

import { KENH, PB } from '../chung/hop-dong.js';
import { cacMayStun } from '../chung/stun.js';

const CHO_TRA_LOI = 25000; // ms for a step of the handshake: a phone's slow hash and a slow host
const CHO_NGUOI = 120000; // ms for a person to accept
const CHO_DUONG = 25000; // ms to find a way
const CHO_YEU = 12000; // ms that a live connection may be silent before it counts as gone
const GUI_CHAM = 32768; // bytes waiting in the input channel: more of it would arrive after the fact

// Ends that could bring the call back by itself. One between our tags and the host's proof must not: a server that plays the
// host would get a guess at the password with each.
const CHUA_RO = new Set(['mat', 'im', 'khong-may-chu', 'may-chu', 'qua-nhieu', 'khong-co-may', 'khong-duong']);

// What a host says when nobody there has ended the session, but the path to us is gone or never was.
const LY_DUONG = { __proto__: null, mat: 'mat', 'khong-noi-duoc': 'khong-duong' };

const MA_MAY_CHU = { khong_co_may: 'khong-co-may', phien_ban: 'phien-ban', qua_nhieu: 'qua-nhieu', khong_may_chu: 'khong-may-chu', khong_tra_loi: 'khong-may-chu' };

// kenhHen: see chung/kenh-hen.js; maHoa: TvMaHoa; taoNoi(config): a promise of an RTCPeerConnection; hen: { dat, huy }; luc(): ms.
// khi: tinh, het, luong(stream), chao(state), kenhTep(channel), bang(text), dap(s).
export function taoPhienKhach({ kenhHen, maHoa, taoNoi, hen, luc, khi, ma, matKhau, ten = '' }) {
  let tinh = 'goi';
  let phien = null;
  let batTay = null;
  let noi = null;
  let mieng = []; // candidates that came before the description they belong to
  let coMoTa = false;
  let daGuiMoi = false;
  let dangDong = false; // we have said goodbye: whatever ends it now, it was us
  let henHet = 0;
  let mo = null; // when it went live
  let daTin = false; // the host has proved that it knows the password
  let daHoi = false; // the host's person was asked
  let daKetThuc = false; // the server says that the other side ended it; believed once the connection is gone as well
  const kenh = {};

  function doiTinh(moi) {
    if (tinh === moi || tinh === 'het') return;
    tinh = moi;
    khi.tinh(moi);
  }

  function henGio(ms, ly) {
    hen.huy(henHet);
    henHet = hen.dat(() => het({ ly }), ms);
  }

  function dongNoi() {
    if (!noi) return;
    for (const k of Object.values(kenh)) k.onmessage = k.onopen = k.onclose = null;
    noi.ontrack = noi.onicecandidate = noi.onconnectionstatechange = noi.oniceconnectionstatechange = null;
    noi.close();
  }

  function het(ketQua) {
    if (tinh === 'het') return;
    const daMo = mo !== null;
    doiTinh('het');
    hen.huy(henHet);
    batTay?.dong();
    dongNoi();
    if (phien !== null) kenhHen.goi('phien:dong', { phien });
    if (dangDong) ketQua = { ly: 'toi' };
    else if (batTay?.daGuiThe() && !daTin && CHUA_RO.has(ketQua.ly)) ketQua = { ly: 'gia', ma: ketQua.ly };
    else if (ketQua.ly === 'khong-duong' && daMo) ketQua = { ly: 'mat' };
    if (ketQua.ly === 'mat' && daKetThuc) ketQua = { ly: 'ben-kia', chu: '' };
    khi.het({ ...ketQua, daMo, daHoi, lau: daMo ? Math.round((luc() - mo) / 1000) : 0 });
  }

  async function guiTin(tin) {
    if (phien === null) return;
    const dap = await kenhHen.goi('phien:tin', { phien, tin });
    // Without the server a live connection goes on; one that is still being made cannot.
    if (!dap.ok && mo === null) het({ ly: dap.code === 'khong_co_phien' ? 'ben-kia' : MA_MAY_CHU[dap.code] ?? 'may-chu', ma: dap.code });
  }

  const niem = (thu) => !!batTay?.niem(thu);

  async function goi() {
    const dap = await kenhHen.goi('khach:goi', { pb: PB, ma });
    if (tinh !== 'goi') {
      if (dap.ok) kenhHen.goi('phien:dong', { phien: dap.phien });
      return;
    }
    if (!dap.ok) return het({ ly: MA_MAY_CHU[dap.code] ?? 'may-chu', ma: dap.code, cho: dap.cho });
    phien = dap.phien;
    doiTinh('bat-tay');
    henGio(CHO_TRA_LOI, 'im');
    await moNoi(cacMayStun(dap.stun));
  }

  // Any description carries the fingerprint of our certificate; it is not made the local one before the host has
  // accepted, so that until then nobody is told our addresses.
  async function moNoi(iceServers) {
    try {
      noi = await taoNoi({ iceServers, bundlePolicy: 'max-bundle' });
      if (tinh !== 'bat-tay') return noi.close();
      khiNoi();
      const moTa = await noi.createOffer();
      const vanTay = maHoa.vanTayCuaSdp(moTa.sdp);
      if (tinh !== 'bat-tay') return;
      if (!vanTay) throw new Error('no fingerprint');
      batTay = maHoa.taoBatTayKhach({
        ma, phien, matKhau, vanTay, gui: guiTin,
        khi: {
          xong: batTayXong,
          sai: (con) => het({ ly: 'sai', con }),
          khoa: (giay) => het({ ly: 'khoa', giay }),
          hong: (ma) => het({ ly: ma === 'het-gio' ? 'im' : 'gia', ma }),
          thu: nhanThu,
        },
      });
      batTay.batDau();
    } catch (loi) {
      het({ ly: 'khong-webrtc', ma: String(loi?.message ?? loi) });
    }
  }

  function khiNoi() {
    const hinh = noi.addTransceiver('video', { direction: 'recvonly' });
    giamTre(hinh.receiver);
    for (const [nhan, so] of Object.entries(KENH)) {
      kenh[nhan] = noi.createDataChannel(nhan, { negotiated: true, id: so, ordered: true });
      kenh[nhan].binaryType = 'arraybuffer';
    }
    kenh.tin.onmessage = (e) => nhanKenhTin(e.data);
    kenh.tin.onopen = kenh.lenh.onopen = khiKenhMo;
    kenh.tep.onopen = () => khi.kenhTep(kenh.tep);
    kenh.tin.onclose = () => { if (mo !== null) het({ ly: 'mat' }); };
    noi.ontrack = (e) => khi.luong(e.streams[0] ?? new MediaStream([e.track]));
    noi.onicecandidate = (e) => { if (tinh !== 'het') niem({ ung: e.candidate ? e.candidate.toJSON() : null }); };
    noi.onconnectionstatechange = noi.oniceconnectionstatechange = khiDoiNoi;
  }

  // Of a screen that is being worked on the newest frame counts, not the smoothest motion.
  function giamTre(nhan) {
    try {
      if ('jitterBufferTarget' in nhan) nhan.jitterBufferTarget = 0;
      else if ('playoutDelayHint' in nhan) nhan.playoutDelayHint = 0;
    } catch { /* a hint */ }
  }

  function batTayXong() {
    daTin = true;
    if (ten) niem({ ten });
    henGio(CHO_TRA_LOI, 'im');
  }

  function nhanTin({ phien: cua, tin }) {
    if (cua !== phien || tinh === 'het') return;
    if (batTay) batTay.nhan(tin);
    else het({ ly: 'gia' }); // the controller speaks first
  }

  // The server's word alone does not end a live connection, which it is no part of; it is a reason to look, and where the
  // connection is gone too, a reason not to call again: their person may have ended it while nothing could reach us.
  function nhanDong({ phien: cua, ly }) {
    if (cua !== phien || tinh === 'het') return;
    phien = null;
    if (mo !== null) {
      daKetThuc = ly === 'ben-kia';
      khi.nghiNgo?.();
    } else het({ ly: ly === 'ben-kia' ? 'ben-kia' : 'mat', chu: '' });
  }

  // A letter from who has proved to know the password.
  function nhanThu(thu) {
    if (tinh === 'het' || !thu || typeof thu !== 'object') return;
    if (thu.cho) {
      daHoi = true;
      doiTinh('cho');
      henGio(CHO_NGUOI, 'im');
    } else if (thu.nhan) guiMoi();
    else if (thu.tuChoi) het({ ly: 'tu-choi' });
    else if ('het' in thu) mayHet(thu.het);
    else if (thu.sdp) nhanMoTa(thu.sdp);
    else if ('ung' in thu) nhanMieng(thu.ung);
  }

  function mayHet(lyMay) {
    const chu = String(lyMay ?? '');
    het(chu in LY_DUONG ? { ly: LY_DUONG[chu] } : { ly: 'ben-kia', chu });
  }

  async function guiMoi() {
    if (daGuiMoi) return;
    daGuiMoi = true;
    doiTinh('noi');
    henGio(CHO_DUONG, 'khong-duong');
    try {
      await noi.setLocalDescription(await noi.createOffer());
      if (tinh === 'het') return;
      const { type, sdp } = noi.localDescription;
      if (!niem({ sdp: { type, sdp } })) throw new Error('offer');
    } catch (loi) {
      het({ ly: 'khong-webrtc', ma: String(loi?.message ?? loi) });
    }
  }

  async function nhanMoTa(moTa) {
    if (moTa.type !== 'answer' || !daGuiMoi) return het({ ly: 'gia' }); // its fingerprint has been compared already
    try {
      await noi.setRemoteDescription({ type: 'answer', sdp: moTa.sdp });
      coMoTa = true;
      for (const ung of mieng.splice(0)) await themMieng(ung);
    } catch {
      het({ ly: 'gia' });
    }
  }

  async function nhanMieng(ung) {
    if (!coMoTa) mieng.push(ung);
    else await themMieng(ung);
  }

  async function themMieng(ung) {
    try {
      if (ung) await noi.addIceCandidate(ung);
    } catch { /* one candidate less, of a kind that this engine does not know */ }
  }

  function khiDoiNoi() {
    if (tinh === 'het') return;
    const t = noi.connectionState ?? noi.iceConnectionState;
    if (t === 'failed') het({ ly: 'khong-duong' });
    else if (t === 'disconnected' && mo !== null) {
      doiTinh('yeu');
      henGio(CHO_YEU, 'mat');
    } else if ((t === 'connected' || t === 'completed') && tinh === 'yeu') {
      hen.huy(henHet);
      doiTinh('mo');
    }
  }

  function khiKenhMo() {
    if (mo !== null || kenh.tin.readyState !== 'open' || kenh.lenh.readyState !== 'open') return;
    mo = luc();
    hen.huy(henHet);
    doiTinh('mo');
  }

  function nhanKenhTin(chu) {
    let tin;
    try {
      tin = JSON.parse(chu);
    } catch {
      return;
    }
    if (!tin || typeof tin !== 'object') return;
    if (tin.l === 'chao' || tin.l === 'doi') khi.chao(tin);
    else if (tin.l === 'nhip') guiKenh({ l: 'dap', s: tin.s });
    else if (tin.l === 'dap') khi.dap(tin.s);
    else if (tin.l === 'bang') khi.bang(String(tin.chu ?? ''));
    else if (tin.l === 'het') mayHet(tin.ly);
  }

  function guiKenh(tin) {
    if (kenh.tin?.readyState !== 'open') return false;
    kenh.tin.send(JSON.stringify(tin));
    return true;
  }

  goi();

  return Object.freeze({
    // What the server brings: { phien, tin } and { phien, ly }.
    nhanTin,
    nhanDong,
    // One input command. False while there is no way for it.
    guiLenh(lenh) {
      if (kenh.lenh?.readyState !== 'open') return false;
      kenh.lenh.send(JSON.stringify(lenh));
      return true;
    },
    lenhCham: () => kenh.lenh?.readyState !== 'open' || kenh.lenh.bufferedAmount > GUI_CHAM,
    guiTin: guiKenh,
    matMay: () => het({ ly: 'mat' }), // nobody answers any more
    dong(ly = 'khach') {
      dangDong = true;
      guiKenh({ l: 'het', ly });
      if (mo === null && tinh !== 'het') niem({ het: ly });
      // What was just written leaves before the connection is closed under it.
      if (mo !== null && ly !== 'dong-trang') hen.dat(() => het({ ly: 'toi' }), 120);
      else het({ ly: 'toi' });
    },
    thongKe: () => noi?.getStats() ?? Promise.resolve(new Map()),
    get tinh() { return tinh; },
  });
}
