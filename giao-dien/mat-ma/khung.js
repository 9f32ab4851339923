// What both sides of a handshake share: letters one after the other, one end, and sealed letters once it has succeeded.
// A letter that is not the awaited one ends the session; nothing that arrives can throw.
import { sangUtf8, xoaBytes } from './tien-ich.js';
import { taoNiem } from './niem.js';
import { DAI_TOI_DA, docThu, vietThu } from './thu.js';
import { laVanTay, sdpHop } from './van-tay.js';

const HAN = 60000; // milliseconds that a handshake may take
const CHO_TOI_DA = 64; // letters that may wait while one is being worked on

const laBang = (v) => v !== null && typeof v === 'object' && !Array.isArray(v);

// khi: xong({ viTri, vanTayKia }), sai(con), khoa(giay), hong(ly), thu(obj). After sai, khoa and hong the session is over.
export function taoKhung({ vai, vanTay, gui, khi, dongHo, khiHet }) {
  if (!laVanTay(vanTay)) throw new TypeError('vanTay: "sha-256 AB:CD:…"');
  const batDauLuc = dongHo();
  const biMat = []; // bytes to overwrite at the end
  let cho = new Map(); // step -> what is done with it; empty while none may come
  let hang = Promise.resolve();
  let dangCho = 0;
  let het = false;
  let niem = null;
  let kia = null;

  // The page's own faults must not look like the other side's, nor keep a session open.
  function bao(ten, ...doiSo) {
    try {
      khi[ten]?.(...doiSo);
    } catch (loi) {
      globalThis.console?.error(loi);
      ket('hong', 'noi-bo');
    }
  }
  function ket(ten, ...doiSo) {
    if (het) return;
    het = true;
    cho = new Map();
    niem?.xoa();
    xoaBytes(...biMat.splice(0));
    khiHet?.();
    if (ten) bao(ten, ...doiSo);
  }
  function guiThu(thu) {
    if (het) return;
    try {
      gui(vietThu(thu));
    } catch (loi) {
      globalThis.console?.error(loi);
      ket('hong', 'noi-bo');
    }
  }
  function thanhCong(isk, viTri, vanTayKia) {
    if (het) return;
    niem = taoNiem(isk, vai);
    kia = vanTayKia;
    xoaBytes(...biMat.splice(0));
    cho = new Map([[7, moNiem]]);
    bao('xong', { viTri, vanTayKia });
  }
  function moNiem({ d }) {
    const ro = niem.mo(d);
    if (ro === null) return ket('hong', 'niem');
    let vat;
    try {
      vat = JSON.parse(new TextDecoder('utf-8', { fatal: true }).decode(ro));
    } catch {
      return ket('hong', 'dang');
    }
    if (!laBang(vat)) return ket('hong', 'dang');
    if ('sdp' in vat) {
      if (!laBang(vat.sdp) || typeof vat.sdp.type !== 'string') return ket('hong', 'dang');
      if (!sdpHop(vat.sdp.sdp, kia)) return ket('hong', 'van-tay');
    }
    bao('thu', vat);
  }
  async function xuLy(chu) {
    dangCho -= 1;
    if (het) return;
    if (typeof chu !== 'string') return ket('hong', 'dang');
    if (chu.length > DAI_TOI_DA) return ket('hong', 'qua-lon');
    if (niem === null && dongHo() - batDauLuc > HAN) return ket('hong', 'het-gio');
    const thu = docThu(chu);
    if (thu === null) return ket('hong', 'dang');
    const lam = cho.get(thu.b);
    if (lam === undefined) return ket('hong', 'thu-tu');
    if (niem === null) cho = new Map();
    try {
      await lam(thu);
    } catch (loi) {
      globalThis.console?.error(loi);
      ket('hong', 'noi-bo');
    }
  }

  return {
    giu: (...cac) => biMat.push(...cac),
    doi: (...cac) => { if (!het) cho = new Map(cac); },
    daHet: () => het,
    ket, guiThu, thanhCong,
    // What the page gets.
    mat: {
      // A letter from the other side. The promise is kept when it has been dealt with; it never fails.
      nhan(chu) {
        if (het) return hang;
        if (dangCho >= CHO_TOI_DA) ket('hong', 'qua-nhieu');
        dangCho += 1;
        hang = hang.then(() => xuLy(chu));
        return hang;
      },
      // Sends an object sealed. False, and nothing sent: no handshake yet, over, too long, or a description that does not
      // have the fingerprint this side vouched for.
      niem(vat) {
        if (het || niem === null || !laBang(vat)) return false;
        if ('sdp' in vat && !sdpHop(vat.sdp?.sdp, vanTay)) return false;
        const bytes = sangUtf8(JSON.stringify(vat));
        if (Math.ceil((bytes.length + 16) * 4 / 3) + 32 > DAI_TOI_DA) return false;
        guiThu({ b: 7, d: niem.niem(bytes) });
        return !het;
      },
      // Ends the session without a word to anybody.
      dong: () => ket(),
      get daHet() { return het; },
      get daXong() { return niem !== null && !het; },
    },
  };
}
