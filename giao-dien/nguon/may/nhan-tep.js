// The host's end of the file channel: one file at a time, gathered as blobs that the engine may keep on disk, then written
// by the receiving endpoint or saved through a download. A file that does not arrive whole leaves nothing behind.
import { GHI_TOI_DA } from '../chung/hop-dong.js';

const XAC_NHAN = 262144; // bytes between acknowledgements
const GOM = 4 * 1024 * 1024; // bytes held as pieces before they become a blob
const CHO_TOI_DA = 10000; // files announced and not yet asked for
const CO_TOI_DA = 4 * 1024 ** 3; // bytes of one file: what is gathered has to lie somewhere until it is whole
const NHAC = 30000; // ms between words to a controller that waits for a file to be stored
const DUONG_TOI_DA = 1023; // characters of a path, the endpoint's measure

// What the endpoint would refuse is refused before a byte is sent.
export function duongHop(duong) {
  if (typeof duong !== 'string' || duong === '' || duong.length > 8 * DUONG_TOI_DA) return false;
  if (duong.startsWith('/') || duong.startsWith('~') || duong.includes('\0')) return false;
  const manh = duong.split('/').filter(Boolean);
  if (manh.length === 0 || manh.some((m) => m === '.' || m === '..')) return false;
  return soKyTu(duong) <= DUONG_TOI_DA;
}
const soKyTu = (chu) => (Intl.Segmenter ? [...new Intl.Segmenter().segment(chu)].length : [...chu].length);

const soNguyen = (n, tu) => Number.isSafeInteger(n) && n >= tu;

// gui(text) writes into the channel; hen: { dat, huy }. Reasons are keys of the page's texts.
// luu: { duoc() -> '' or why not, thuMuc() -> null or whether files go into a folder,
// ghi(path, blob) -> promise of '' or what went wrong, tai(path, blob) -> the same }.
export function taoNhanTep({ gui, luu, hen, khiDoi = () => {} }) {
  let hang = []; // { id, duong, co }, announced
  let nay = null; // the one that is being received
  let dong = false;

  const noi = (vat) => { if (!dong) gui(JSON.stringify(vat)); };
  const tuChoi = (id, ly) => noi({ l: 'hong', id, ly });

  function tiep() {
    if (nay !== null || dong) return;
    const ly = luu.duoc(); // may have been switched off since the announcement
    if (ly) for (const { id } of hang.splice(0)) tuChoi(id, ly);
    nay = hang.shift() ?? null;
    khiDoi();
    if (nay === null) return;
    Object.assign(nay, { day: 0, daNoi: 0, manh: [], coManh: 0, blob: [], dangLuu: false });
    noi({ l: 'gui', id: nay.id });
  }

  function bo(ly) {
    const { id } = nay;
    nay = null;
    if (ly) tuChoi(id, ly);
    tiep();
  }

  function nhanTen({ id, duong, co }) {
    if (!soNguyen(id, 1) || id > 0xffffffff || !soNguyen(co, 0)) return;
    if (nay?.id === id || hang.some((t) => t.id === id)) return;
    const ly = luu.duoc() || (duongHop(duong) ? '' : 'nhanTep.duong') || (hang.length >= CHO_TOI_DA ? 'nhanTep.nhieu' : '')
      || (co > CO_TOI_DA ? 'nhanTep.lon' : '');
    if (ly) return tuChoi(id, ly);
    hang.push({ id, duong, co });
    tiep();
  }

  function gom() {
    nay.blob.push(new Blob(nay.manh));
    nay.manh = [];
    nay.coManh = 0;
  }

  // Four bytes of number, then bytes of the file. Pieces of a file that was given up may still be under way.
  function nhanManh(dem) {
    if (dem.byteLength < 4 || nay === null || new DataView(dem).getUint32(0) !== nay.id || nay.dangLuu) return;
    const dai = dem.byteLength - 4;
    if (nay.day + dai > nay.co) return bo('nhanTep.thua');
    nay.manh.push(new Uint8Array(dem, 4));
    nay.day += dai;
    nay.coManh += dai;
    if (nay.coManh >= GOM) gom();
    if (nay.day - nay.daNoi >= XAC_NHAN || nay.day === nay.co) {
      nay.daNoi = nay.day;
      noi({ l: 'nhan', id: nay.id, byte: nay.day });
    }
  }

  // Storing may take minutes; without a word the other side takes it for failed.
  function nhac(tep) {
    tep.henNhac = hen.dat(() => {
      noi({ l: 'nhan', id: tep.id, byte: tep.co });
      nhac(tep);
    }, NHAC);
  }

  async function nhanXong({ id }) {
    if (nay?.id !== id || nay.dangLuu) return;
    if (nay.day !== nay.co) return bo('nhanTep.thieu');
    const tep = nay;
    gom();
    tep.dangLuu = true;
    nhac(tep);
    const blob = new Blob(tep.blob, { type: 'application/octet-stream' });
    tep.blob = [];
    let thuMuc = luu.thuMuc() && tep.co <= GHI_TOI_DA;
    let ly = '';
    try {
      if (thuMuc) ly = await luu.ghi(tep.duong, blob).catch(() => { thuMuc = false; }); // unreachable, not refused
      if (!thuMuc) ly = await luu.tai(tep.duong, blob);
    } catch {
      ly = 'nhanTep.khongLuu';
    }
    hen.huy(tep.henNhac);
    if (nay !== tep) return;
    nay = null;
    if (ly) tuChoi(tep.id, ly);
    else noi({ l: 'roi', id: tep.id, noi: thuMuc ? 'thu-muc' : 'tai' });
    tiep();
  }

  function nhanHuy({ id }) {
    hang = hang.filter((t) => t.id !== id);
    if (nay?.id === id && !nay.dangLuu) bo('');
  }

  const VIEC = { tep: nhanTen, xong: nhanXong, huy: nhanHuy };

  return {
    get dangNhan() { return nay && { duong: nay.duong, co: nay.co, day: nay.day, con: hang.length }; },
    nhan(tin) {
      if (dong) return;
      if (typeof tin !== 'string') return nhanManh(tin);
      let vat = null;
      try {
        vat = JSON.parse(tin);
      } catch { /* not ours */ }
      if (vat && typeof vat === 'object' && Object.prototype.hasOwnProperty.call(VIEC, vat.l)) return VIEC[vat.l](vat);
    },
    // After a switch: none is taken any more where none may be. What is all here and being written stays.
    theo() {
      const ly = dong ? '' : luu.duoc();
      if (!ly) return;
      if (nay && !nay.dangLuu) bo(ly);
      else if (hang.length) for (const { id } of hang.splice(0)) tuChoi(id, ly);
    },
    // This person stops it: the file under way and all that are announced.
    huy() {
      const cac = hang.splice(0);
      if (nay && !nay.dangLuu) {
        noi({ l: 'huy', id: nay.id });
        nay = null;
      }
      cac.forEach((t) => noi({ l: 'huy', id: t.id }));
      khiDoi();
    },
    dong() {
      dong = true;
      if (nay?.dangLuu) hen.huy(nay.henNhac);
      hang = [];
      nay = null;
    },
  };
}
