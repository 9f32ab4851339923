// The host's place at the rendezvous server: announces the machine code, again after every loss, and hands calls over.
import { PB } from '../chung/hop-dong.js';

const LAI = 5000; // ms before an announcement that got no answer is made again

// `tinh`: cho (no connection yet), san-sang (can be called), mat (connection lost), khong-may-chu, phien-ban (the server
// speaks another version), qua-nhieu, thay (this code is in use elsewhere), hong.
// kho keeps `ma` and `the`; khi: doi() after every change, khach(phien), tin(phien, text), dong(phien, why).
export function taoTraLoi({ kenh, kho, sinhThe, khi, hen }) {
  let tinh = 'cho';
  let dongHo = 0;
  let stun = [];
  let dangHoi = false;

  // The proof that a code is this machine's; whoever has it can take the code over, so it stays in this origin's store.
  function the() {
    const co = kho.doc('the', '');
    if (/^[0-9a-f]{64}$/.test(co)) return co;
    const moi = sinhThe();
    kho.ghi('the', moi);
    return moi;
  }
  const ma = () => (/^\d{9}$/.test(kho.doc('ma', '')) ? kho.doc('ma') : '');

  function doiTinh(moi) {
    tinh = moi;
    khi.doi();
  }
  function lai(ms) {
    hen.huy(dongHo);
    dongHo = hen.dat(dangKy, ms);
  }

  // One at a time: two without a code would be given two, and the one shown first would be nobody's. A question that
  // the connection loses is answered, so this never waits for ever.
  async function dangKy() {
    hen.huy(dongHo);
    if (dangHoi) return;
    dangHoi = true;
    const dap = await kenh.goi('may:mo', { pb: PB, ma: ma(), the: the() });
    dangHoi = false;
    if (dap.ok && /^\d{9}$/.test(dap.ma)) {
      kho.ghi('ma', dap.ma);
      stun = Array.isArray(dap.stun) ? dap.stun : [];
      return doiTinh('san-sang');
    }
    if (dap.code === 'khong_may_chu') return doiTinh('khong-may-chu');
    if (dap.code === 'phien_ban') return doiTinh('phien-ban');
    if (dap.code === 'qua_nhieu') {
      lai(Math.min(Math.max(Number(dap.cho) || 0, 1), 3600) * 1000);
      return doiTinh('qua-nhieu');
    }
    if (dap.code === 'khong_tra_loi') {
      if (kenh.dangNoi) lai(LAI);
      return doiTinh('mat');
    }
    doiTinh('hong');
  }

  const cua = (du) => (typeof du.phien === 'string' && du.phien.length <= 128 ? du.phien : null);
  kenh.nghe('may:khach', (du) => { if (tinh === 'san-sang' && cua(du)) khi.khach(du.phien); });
  kenh.nghe('phien:tin', (du) => { if (cua(du) && typeof du.tin === 'string') khi.tin(du.phien, du.tin); });
  kenh.nghe('phien:dong', (du) => { if (cua(du)) khi.dong(du.phien, du.ly); });
  kenh.nghe('may:thay', () => {
    hen.huy(dongHo);
    doiTinh('thay');
  });
  kenh.khi.noi = () => { if (tinh !== 'thay') dangKy(); };
  kenh.khi.mat = () => {
    hen.huy(dongHo);
    if (tinh !== 'thay' && tinh !== 'khong-may-chu') doiTinh('mat');
  };
  if (kenh.dangNoi || kenh.laThay) dangKy(); // else at the first connection

  return {
    dangKy,
    get tinh() { return tinh; },
    get ma() { return ma(); },
    get stun() { return stun; },
  };
}
