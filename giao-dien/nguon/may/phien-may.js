// One controller's session on the host: handshake, this person's consent, the direct connection, its end.
//
//   bat-tay (proving the password) -> hoi (this person is asked) -> dang-noi -> noi -> het
import { KENH } from '../chung/hop-dong.js';
import { motDong } from '../chung/mot-dong.js';
import { cacMayStun } from '../chung/stun.js';

const CHO_BAT_TAY = 60000; // ms to prove the password
const CHO_TEN = 1500; // ms that the controller has to say its name before this person is asked
const CHO_NOI = 90000; // ms from the consent to a direct connection; the other side's person may be solving something
const MAT_TAM = 12000; // ms that a connection may be interrupted
const CHAO_TU_BIET = 300; // ms for the goodbye to leave before the connection is closed
const TEN_TOI_DA = 64; // characters
const UNG_TOI_DA = 256; // addresses of the other side
const BIT_TOI_DA = 16e6; // bits per second of the picture
const KHUNG_TOI_DA = 20; // frames per second; the host gives 12

// A name as it may be shown.
export const sachTen = (ten) => (typeof ten === 'string' ? [...motDong(ten)].slice(0, TEN_TOI_DA).join('') : '');

// Fits the sender to a screen: full size and few frames rather than the other way round.
async function datNguoiGui(sender) {
  const dat = sender.getParameters();
  if (dat.encodings?.length) Object.assign(dat.encodings[0], { maxBitrate: BIT_TOI_DA, maxFramerate: KHUNG_TOI_DA });
  dat.degradationPreference = 'maintain-resolution';
  await sender.setParameters(dat);
}

// moi: { taoKetNoi(configuration), maHoa (TvMaHoa), hen: { dat, huy } }; canh is the guard of the passwords, track the picture.
// gui(letter) and dong() speak to the server.
// hoi: chan(which password) -> why a caller is turned away unasked, or ''; can(the controller's fingerprint) -> whether this
// person is to be asked; nguoi({ ten, cach }) -> { traLoi: promise of yes or no, thoi() to withdraw it }; dongY(fingerprint)
// after a yes. khi: doi() after every change, yeu() at an interruption, nghe(channel name, data), mo(channel name), het(reason).
export function taoPhienMay({ phien, ma, stun, canh, track, moi, gui, dong, hoi, khi }) {
  const { hen, maHoa } = moi;
  const taoKetNoi = (iceServers) => moi.taoKetNoi({ iceServers, bundlePolicy: 'max-bundle' });
  let pc;
  try {
    pc = taoKetNoi(cacMayStun(stun));
  } catch {
    pc = taoKetNoi([]); // an address that this engine cannot read
  }
  const kenh = {};
  const choThu = []; // letters that came before the handshake could begin
  const choUng = []; // addresses that came before the description
  let batTay = null;
  let tinh = 'bat-tay';
  let ten = '';
  let cach = 0; // which password it was
  let tuLuc = 0;
  let dongHo = 0;
  let thoiHoi = () => {};
  let coTen = () => {};

  function doiTinh(moiTinh) {
    tinh = moiTinh;
    khi.doi();
  }

  function henGio(ms, viec) {
    hen.huy(dongHo);
    dongHo = ms ? hen.dat(viec, ms) : 0;
  }

  function ket(ly) {
    if (tinh === 'het') return;
    const truoc = tinh;
    tinh = 'het';
    henGio(0);
    thoiHoi();
    coTen();
    for (const { sender } of pc.getTransceivers()) sender.replaceTrack(null).catch(() => {});
    const chao = kenh.tin.readyState === 'open';
    if (chao) kenh.tin.send(JSON.stringify({ l: 'het', ly }));
    batTay?.niem({ het: ly }); // by the server too: the direct path may be the one that is down
    batTay?.dong();
    dong();
    hen.dat(() => pc.close(), chao ? CHAO_TU_BIET : 0);
    khi.het(ly, truoc);
  }

  // Faults in what the other side sent end the session; they are never this page's.
  const thu = (viec) => async (...doiSo) => {
    try {
      await viec(...doiSo);
    } catch {
      ket('loi');
    }
  };

  async function xinPhep({ viTri, vanTayKia }) {
    cach = viTri;
    henGio(0);
    const chan = hoi.chan(cach);
    if (chan) {
      if (chan === 'tu-choi') batTay.niem({ tuChoi: true });
      return ket(chan);
    }
    doiTinh('hoi');
    if (hoi.can(vanTayKia)) {
      batTay.niem({ cho: true });
      if (!ten) await new Promise((xong) => { coTen = xong; henGio(CHO_TEN, xong); });
      henGio(0);
      if (tinh !== 'hoi') return;
      const { traLoi, thoi } = hoi.nguoi({ ten, cach });
      thoiHoi = thoi;
      const duoc = await traLoi;
      if (tinh !== 'hoi') return;
      if (!duoc) {
        batTay.niem({ tuChoi: true });
        return ket('tu-choi');
      }
      hoi.dongY(vanTayKia);
    }
    doiTinh('dang-noi');
    henGio(CHO_NOI, () => ket('khong-noi-duoc'));
    batTay.niem({ nhan: true });
  }

  async function nhanLoiMoi(sdp) {
    if (tinh !== 'dang-noi' && tinh !== 'noi') return ket('thu-tu');
    if (sdp.type !== 'offer') return ket('loi');
    await pc.setRemoteDescription(sdp);
    const tuyen = pc.getTransceivers().find((t) => t.receiver.track.kind === 'video');
    if (!tuyen) return ket('loi');
    tuyen.direction = 'sendonly';
    await tuyen.sender.replaceTrack(track);
    for (const ung of choUng.splice(0)) await themUng(ung);
    await pc.setLocalDescription(await pc.createAnswer());
    if (tinh === 'het') return;
    if (!batTay.niem({ sdp: { type: pc.localDescription.type, sdp: pc.localDescription.sdp } })) return ket('loi');
    datNguoiGui(tuyen.sender).catch(() => {}); // an engine that takes less sends as it sees fit
  }

  // An address that this engine cannot read is no reason to give up the others.
  const themUng = (ung) => pc.addIceCandidate(ung ?? undefined).catch(() => {});

  function nhanUng(ung) {
    if (pc.remoteDescription) return themUng(ung);
    if (choUng.length < UNG_TOI_DA) choUng.push(ung);
  }

  const nhanVat = thu(async (vat) => {
    if ('ten' in vat) {
      ten = sachTen(vat.ten);
      coTen();
      khi.doi();
    }
    if ('sdp' in vat) await nhanLoiMoi(vat.sdp);
    if ('ung' in vat) await nhanUng(vat.ung);
    if ('het' in vat) ket('ben-kia');
  });

  function theoKetNoi() {
    const noi = pc.connectionState;
    if (tinh === 'het') return;
    if (noi === 'failed' || noi === 'closed') return ket(tinh === 'noi' ? 'mat' : 'khong-noi-duoc');
    if (noi === 'disconnected') {
      henGio(MAT_TAM, () => ket('mat'));
      khi.yeu();
    }
    if (noi !== 'connected') return;
    henGio(0);
    if (tinh === 'noi') return;
    tuLuc = Date.now();
    doiTinh('noi');
  }

  for (const [tenKenh, id] of Object.entries(KENH)) {
    const k = pc.createDataChannel(tenKenh, { negotiated: true, id });
    k.binaryType = 'arraybuffer';
    k.onopen = () => khi.mo(tenKenh);
    k.onmessage = (e) => { if (tinh === 'noi' || tinh === 'dang-noi') khi.nghe(tenKenh, e.data); };
    k.onclose = () => { if (tenKenh === 'tin') ket('ben-kia'); };
    kenh[tenKenh] = k;
  }
  pc.onconnectionstatechange = theoKetNoi;
  pc.onicecandidate = ({ candidate }) => batTay?.niem({ ung: candidate ? candidate.toJSON() : null });

  // The fingerprint is the connection's own; it stands in any description of it.
  const chuanBi = thu(async () => {
    const vanTay = maHoa.vanTayCuaSdp((await pc.createOffer()).sdp);
    if (tinh === 'het') return;
    batTay = maHoa.taoBatTayMay({
      ma, phien, canh, vanTay, gui,
      khi: {
        xong: thu(xinPhep), sai: () => ket('sai'), khoa: () => ket('khoa'), hong: () => ket('loi'), thu: nhanVat,
      },
    });
    choThu.splice(0).forEach((chu) => batTay.nhan(chu));
  });
  chuanBi();
  henGio(CHO_BAT_TAY, () => ket('het-gio'));

  return {
    phien, ket, kenh, pc,
    get tinh() { return tinh; },
    get ten() { return ten; },
    get cach() { return cach; },
    get tuLuc() { return tuLuc; },
    nhan(chu) {
      if (batTay) batTay.nhan(chu);
      else if (choThu.length < 16) choThu.push(chu);
      else ket('loi');
    },
    // The server says that the other side is gone. Two that speak directly do not need the server.
    khiMayChuDong(ly) {
      if (ly === 'mat-lien-lac' && tinh === 'noi') return;
      ket('ben-kia');
    },
    // False when it is not written: closed, or too much is waiting.
    gui(tenKenh, chu) {
      if (tinh === 'het' || kenh[tenKenh].readyState !== 'open') return false;
      try {
        kenh[tenKenh].send(chu);
        return true;
      } catch {
        return false;
      }
    },
  };
}
