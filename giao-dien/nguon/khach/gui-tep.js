// Sends files over the file channel, one after the other, no further ahead of the host than it allows.
//
// A channel is replaced when the connection is made anew (datKenh); what was under way then begins again from its first byte.
// Nothing is called sent before the host says that it has the file.

const MANH = 16384; // bytes of file in one message
const DOC = 262144; // bytes read at once
const CHUA_NHAN = 1048576; // bytes that the host has not acknowledged yet
const DAY = 1048576; // bytes waiting inside the channel
const IM = 30000; // ms without a word from the host, while it is its turn, before the file is given up
const GIU_TIN = 120000; // the same for storing a file that has arrived whole

// Files that an input chose; a folder's carry their path.
export const tuDanhSach = (files) => Array.from(files, (tep) => ({ tep, duong: tep.webkitRelativePath || tep.name }));

const doiMuc = (viec) => new Promise((duoc, hong) => { viec(duoc, hong); });

async function docThuMuc(muc) {
  const doc = muc.createReader();
  const ra = [];
  for (;;) { // a folder is handed out in portions; an empty one is the end
    const phan = await doiMuc((duoc, hong) => doc.readEntries(duoc, hong));
    if (phan.length === 0) return ra;
    ra.push(...phan);
  }
}

// All files below entries of a drop, folders before what they hold. Answers { cac, hong: [paths that could not be read],
// trong: number of empty folders, which nobody sends }.
export async function tuMuc(cacMuc) {
  const ra = { cac: [], hong: [], trong: 0 };
  const choDi = cacMuc.filter(Boolean).map((muc) => ({ muc, duong: muc.name })).reverse();
  while (choDi.length) {
    const { muc, duong } = choDi.pop();
    try {
      if (muc.isFile) ra.cac.push({ tep: await doiMuc((duoc, hong) => muc.file(duoc, hong)), duong });
      else {
        const con = await docThuMuc(muc);
        if (con.length === 0) ra.trong += 1;
        choDi.push(...con.map((m) => ({ muc: m, duong: `${duong}/${m.name}` })).reverse());
      }
    } catch {
      ra.hong.push(duong);
    }
  }
  return ra;
}

function dongGoi(id, byte) {
  const goi = new Uint8Array(4 + byte.length);
  new DataView(goi.buffer).setUint32(0, id);
  goi.set(byte, 4);
  return goi;
}

// A file's `tinh`: cho (waiting), gui (being sent), luu (arrived, being stored), roi (done), hong, huy. `ly` says why it
// failed: a word of ours (doi: changed meanwhile, doc: unreadable, im: no answer, kenh: connection lost) or the host's text.
// khiDoi() after every change; hen: { dat(f, ms), huy(id) }.
export function taoGuiTep({ khiDoi, hen }) {
  const cacTep = [];
  let kenh = null;
  let luot = 0; // counts channels and cancellations: work of an earlier one stops by itself
  let soDaDung = 0;
  let dang = null; // the file whose turn it is
  let danhThuc = null; // the sending loop waits here for the window or the channel
  let henIm = 0;

  const kenhMo = () => kenh !== null && kenh.readyState === 'open';
  const gui = (tin) => kenh.send(JSON.stringify(tin));

  function thuc() {
    const f = danhThuc;
    danhThuc = null;
    f?.();
  }

  function choTraLoi(ms = IM) {
    hen.huy(henIm);
    henIm = hen.dat(() => ketThuc('hong', 'im', true), ms);
  }

  function them(cac) {
    for (const { tep, duong } of cac) cacTep.push({ tep, duong, co: tep.size, daGui: 0, daNhan: 0, tinh: 'cho', ly: '', noi: '', id: 0 });
    tiep();
    khiDoi();
  }

  function tiep() {
    if (dang || !kenhMo()) return;
    dang = cacTep.find((t) => t.tinh === 'cho') ?? null;
    if (!dang) return;
    Object.assign(dang, { id: ++soDaDung, tinh: 'gui', daGui: 0, daNhan: 0, ly: '' });
    gui({ l: 'tep', id: dang.id, duong: dang.duong, co: dang.co });
    choTraLoi();
  }

  // The end of the current file, whatever it is; `baoMay` tells the host to forget what it has.
  function ketThuc(tinh, ly = '', baoMay = false) {
    if (!dang) return;
    hen.huy(henIm);
    const het = dang;
    Object.assign(het, { tinh, ly });
    dang = null;
    luot += 1;
    thuc();
    if (baoMay && kenhMo()) gui({ l: 'huy', id: het.id });
    tiep();
    khiDoi();
  }

  const duocGuiThem = () => dang.daGui - dang.daNhan < CHUA_NHAN && kenh.bufferedAmount < DAY;

  async function guiManh(byte, cua) {
    for (let i = 0; i < byte.length; i += MANH) {
      while (luot === cua && !duocGuiThem()) await new Promise((f) => { danhThuc = f; });
      if (luot !== cua || !kenhMo()) return false;
      const manh = byte.subarray(i, i + MANH);
      kenh.send(dongGoi(dang.id, manh));
      dang.daGui += manh.length;
      choTraLoi();
    }
    khiDoi();
    return true;
  }

  async function doc(tep, tu) {
    try {
      return new Uint8Array(await tep.slice(tu, tu + DOC).arrayBuffer());
    } catch {
      return null; // engines refuse a file that was changed, moved or taken away since it was chosen
    }
  }

  async function guiNoiDung() {
    const cua = luot;
    const { tep, co, id } = dang;
    for (let tu = 0; tu < co; tu += DOC) {
      const byte = await doc(tep, tu);
      if (luot !== cua) return;
      if (byte === null) return ketThuc('hong', 'doc', true);
      if (byte.length !== Math.min(DOC, co - tu)) return ketThuc('hong', 'doi', true);
      if (!(await guiManh(byte, cua))) return;
    }
    if (!kenhMo()) return;
    dang.tinh = 'luu';
    gui({ l: 'xong', id });
    choTraLoi(GIU_TIN);
    khiDoi();
  }

  function nhan(tin) {
    if (!dang || tin.id !== dang.id) return; // about a file that we have given up
    if (tin.l === 'gui' && dang.tinh === 'gui' && dang.daGui === 0) guiNoiDung();
    else if (tin.l === 'nhan' && Number.isFinite(tin.byte)) {
      dang.daNhan = Math.max(dang.daNhan, Math.min(tin.byte, dang.daGui));
      choTraLoi(dang.tinh === 'luu' ? GIU_TIN : IM);
      thuc();
      khiDoi();
    } else if (tin.l === 'roi' && dang.tinh === 'luu') {
      Object.assign(dang, { daNhan: dang.co, noi: String(tin.noi ?? '') });
      ketThuc('roi');
    } else if (tin.l === 'hong') ketThuc('hong', String(tin.ly ?? ''));
    else if (tin.l === 'huy') ketThuc('huy');
  }

  function doiKenh(moi) {
    luot += 1;
    hen.huy(henIm);
    kenh = moi;
    if (dang) Object.assign(dang, { tinh: 'cho', daGui: 0, daNhan: 0 });
    dang = null;
    thuc();
    khiDoi();
  }

  return Object.freeze({
    them,
    // A channel that opens, or null when the connection is gone (files wait for the next one).
    datKenh(moi) {
      doiKenh(moi);
      if (!moi) return;
      moi.bufferedAmountLowThreshold = DAY / 2;
      moi.addEventListener('bufferedamountlow', thuc);
      moi.addEventListener('message', (e) => {
        if (moi !== kenh || typeof e.data !== 'string') return;
        try {
          nhan(JSON.parse(e.data));
        } catch { /* not a message of this version */ }
      });
      tiep();
    },
    huy(muc) {
      if (muc === dang) ketThuc('huy', '', true);
      else if (muc.tinh === 'cho') {
        muc.tinh = 'huy';
        khiDoi();
      }
    },
    huyHet() {
      for (const t of cacTep) if (t.tinh === 'cho') t.tinh = 'huy';
      if (dang) ketThuc('huy', '', true);
      khiDoi();
    },
    // The connection has ended for good: nothing waits for a next one.
    hongHet() {
      doiKenh(null);
      for (const t of cacTep) if (t.tinh === 'cho') Object.assign(t, { tinh: 'hong', ly: 'kenh' });
      khiDoi();
    },
    thuLai() {
      for (const t of cacTep) if (t.tinh === 'hong') t.tinh = 'cho';
      tiep();
      khiDoi();
    },
    // Takes what is finished off the list.
    don() {
      for (let i = cacTep.length - 1; i >= 0; i--) if (['roi', 'hong', 'huy'].includes(cacTep[i].tinh)) cacTep.splice(i, 1);
      khiDoi();
    },
    get cacTep() { return cacTep; },
    // Files that were cancelled no longer count.
    get tong() {
      const ra = { so: 0, roi: 0, hong: 0, con: 0, co: 0, daNhan: 0 };
      for (const t of cacTep) {
        if (t.tinh === 'huy') continue;
        ra.so += 1;
        if (t.tinh === 'roi') ra.roi += 1;
        else if (t.tinh === 'hong') ra.hong += 1;
        else ra.con += 1;
        if (t.tinh === 'hong') continue;
        ra.co += t.co;
        ra.daNhan += t.daNhan;
      }
      return ra;
    },
  });
}
