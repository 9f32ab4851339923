// Fakes for the host's role: a clock moved by hand, a signalling socket, a peer connection, and a share.
export const lang = () => new Promise((xong) => setImmediate(xong));

export function taoHen() {
  const cac = new Map();
  let so = 0;
  let nay = 0;
  return {
    dat(ham, ms) {
      so += 1;
      cac.set(so, { ham, luc: nay + ms });
      return so;
    },
    huy: (s) => cac.delete(s),
    get con() { return cac.size; },
    // Moves the clock; timers run in order.
    chay(ms) {
      const den = nay + ms;
      for (;;) {
        const [s, muc] = [...cac].sort((a, b) => a[1].luc - b[1].luc)[0] ?? [];
        if (!muc || muc.luc > den) break;
        nay = muc.luc;
        cac.delete(s);
        muc.ham();
      }
      nay = den;
    },
  };
}

// A socket.io socket: `gui` lists [event, data, answer]; vao(event, data) is what the server sends.
export function taoCam({ noi = true } = {}) {
  const nghe = {};
  const cam = {
    connected: noi, gui: [], lanNoi: 0,
    get volatile() { throw new Error('reading it marks the next packet as one that may be lost'); },
    timeout() { throw new Error('not used'); },
    on(ten, ham) { (nghe[ten] ||= []).push(ham); return cam; },
    emit(ten, du, tra) { cam.gui.push([ten, du, tra]); return cam; },
    disconnect() { cam.connected = false; return cam; },
    vao: (ten, du) => (nghe[ten] || []).forEach((ham) => ham(du)),
    noi() { cam.connected = true; cam.vao('connect'); },
    connect() { cam.lanNoi += 1; return cam; },
    mat(ly = 'transport close') { cam.connected = false; cam.vao('disconnect', ly); },
  };
  return cam;
}

export class KenhGia {
  constructor(ten, dat) { Object.assign(this, { ten, ...dat, readyState: 'connecting', gui: [] }); }
  send(tin) { this.gui.push(tin); }
  mo() { this.readyState = 'open'; this.onopen(); }
  vao(du) { this.onmessage({ data: du }); }
  get cac() { return this.gui.map((g) => JSON.parse(g)); }
}

export class KetNoiGia {
  constructor(cauHinh) {
    this.cauHinh = cauHinh;
    this.kenh = {};
    this.ung = [];
    this.connectionState = 'new';
    this.tuyen = { receiver: { track: { kind: 'video' } }, sender: { replaceTrack: async (t) => { this.track = t; }, getParameters: () => ({ encodings: [{}] }), setParameters: async (p) => { this.dat = p; } } };
  }
  createDataChannel(ten, dat) { this.kenh[ten] = new KenhGia(ten, dat); return this.kenh[ten]; }
  getTransceivers() { return this.remoteDescription ? [this.tuyen] : []; }
  async createOffer() { return { type: 'offer', sdp: 'cua-may' }; }
  async createAnswer() { return { type: 'answer', sdp: 'tra-loi' }; }
  async setLocalDescription(m) { this.localDescription = m; }
  async setRemoteDescription(m) {
    if (m.sdp === 'hong') throw new Error('unreadable');
    this.remoteDescription = m;
  }
  async addIceCandidate(u) {
    if (!this.remoteDescription) throw new Error('too early');
    this.ung.push(u);
  }
  close() { this.connectionState = 'closed'; }
  thanh(tt) { this.connectionState = tt; this.onconnectionstatechange(); }
}

// The handshake: `bt` is the last one made; its letters to the other side are in `thu`.
export function taoMaHoaGia() {
  const maHoa = {
    vanTayCuaSdp: (sdp) => `vt-${sdp}`,
    taoBatTayMay(dat) {
      maHoa.bt = { dat, thu: [], nhan: (chu) => maHoa.bt.daNhan.push(chu), daNhan: [], niem: (v) => { maHoa.bt.thu.push(v); return true; }, dong() { this.daDong = true; } };
      return maHoa.bt;
    },
  };
  return maHoa;
}

// Takes a session through the handshake to a live connection.
export async function dua(maHoa, pc, ai) {
  await chungMinh(maHoa, ai);
  await noi(maHoa, pc);
}

export async function chungMinh(maHoa, { viTri = 0, ten = 'Lan', vanTayKia = 'vt' } = {}) {
  await lang();
  const { khi } = maHoa.bt.dat;
  khi.xong({ viTri, vanTayKia });
  khi.thu({ ten });
  await lang();
}

export async function noi(maHoa, pc) {
  const { khi } = maHoa.bt.dat;
  khi.thu({ sdp: { type: 'offer', sdp: 'moi' } });
  await lang();
  pc.thanh('connected');
  Object.values(pc.kenh).forEach((k) => k.mo());
  await lang();
}
