// The panel for sending files: choosing, dropping, progress, cancelling, and what failed and why.
import { GHI_TOI_DA } from '../chung/hop-dong.js';
import { moHopThoai } from '../chung/hop-thoai.js';
import { $, khi, taoNut, taoThe } from '../chung/trang.js';
import { tuDanhSach, tuMuc } from './gui-tep.js';

const TOI_DA_DONG = 60; // rows; what is under way and what failed comes first
const MOI = 200; // ms between drawings
const DON_VI = ['B', 'kB', 'MB', 'GB'];
const LY = { doi: 'guiTep.lyDoi', doc: 'guiTep.lyDoc', im: 'guiTep.lyIm', kenh: 'guiTep.lyKenh' };
const NOI = { 'thu-muc': 'guiTep.vaoThuMuc', tai: 'guiTep.vaoTai' };

export function docCo(byte, ngonNgu) {
  const bac = byte < 1000 ? 0 : Math.min(3, Math.floor(Math.log10(byte) / 3));
  const so = new Intl.NumberFormat(ngonNgu, { maximumFractionDigits: bac ? 1 : 0 }).format(byte / 1000 ** bac);
  return `${so} ${DON_VI[bac]}`;
}

// ngonNgu(): the code of the page's language; khiMo(): the panel should be seen.
export function taoBangTep({ chu, ngonNgu, guiTep, baoTin, khiMo, hen }) {
  let duoc = { duoc: false, ly: '', noi: '' };
  const dangHoi = new Set(); // questions that are open
  let henVe = 0;
  const co = (byte) => docCo(byte, ngonNgu());

  // Downloads have no folders: their person is told before anything is sent that a folder will not arrive as one.
  const matThuMuc = ({ tep, duong }) => duong.includes('/') && (duoc.noi === 'tai' || tep.size > GHI_TOI_DA);

  async function hoiPhang(n) {
    const hop = moHopThoai({
      tieuDe: chu('xem.tep'), noiDung: chu('guiTep.phang', { n }), macDinh: false,
      nut: [[true, chu('bang.guiDi'), 'chinh'], [false, chu('goi.thoi')]],
    });
    dangHoi.add(hop);
    const duocGui = await hop.traLoi;
    dangHoi.delete(hop);
    return duocGui;
  }

  async function them(cac) {
    if (!cac.length) return;
    const n = cac.filter(matThuMuc).length;
    if (n && !(await hoiPhang(n))) return;
    guiTep.them(cac);
    khiMo();
  }

  async function nhanTha(cacMuc) {
    const { cac, hong, trong } = await tuMuc(cacMuc);
    them(cac);
    if (hong.length) baoTin('hong', chu('guiTep.khongDoc', { ten: hong.slice(0, 5).join(', '), n: hong.length }));
    else if (!cac.length && trong) baoTin('hong', chu('guiTep.chiTrong'));
  }

  const chuTinh = {
    cho: () => chu('guiTep.cho'),
    gui: (t) => chu('guiTep.dangGui', { da: co(t.daNhan), ca: co(t.co) }),
    luu: () => chu('guiTep.dangLuu'),
    roi: (t) => chu(NOI[t.noi] ?? 'guiTep.xong', { ca: co(t.co) }),
    huy: () => chu('guiTep.daHuy'),
    hong: (t) => chu('guiTep.hong', { ly: chu(LY[t.ly] ?? (t.ly || 'guiTep.lyMay')) }),
  };

  function taoDong(t) {
    const li = taoThe('li');
    li.dataset.tinh = t.tinh;
    const doan = taoThe('div');
    doan.append(taoThe('p', '', t.duong), taoThe('p', 'phu', chuTinh[t.tinh](t)));
    if (t.tinh === 'gui' && t.co > 0) {
      const thanh = taoThe('progress');
      Object.assign(thanh, { max: t.co, value: t.daNhan });
      thanh.setAttribute('aria-label', t.duong);
      doan.append(thanh);
    }
    li.append(doan);
    if (t.tinh === 'gui' || t.tinh === 'luu' || t.tinh === 'cho') {
      const nut = taoNut(chu('guiTep.huy'), () => guiTep.huy(t));
      nut.setAttribute('aria-label', chu('guiTep.huyTep', { ten: t.duong }));
      li.append(nut);
    }
    return li;
  }

  function ve() {
    henVe = 0;
    const { so, roi, hong, con, co: ca, daNhan } = guiTep.tong;
    const thu = { gui: 0, luu: 0, hong: 1, cho: 2, huy: 3, roi: 4 };
    const dong = [...guiTep.cacTep].sort((a, b) => thu[a.tinh] - thu[b.tinh]).slice(0, TOI_DA_DONG);
    // A list that is being used by keyboard keeps its buttons: only what moves is drawn again.
    if (!$('k-tep-ds').contains?.(document.activeElement) || con === 0) $('k-tep-ds').replaceChildren(...dong.map(taoDong));
    $('k-tep-tong').hidden = guiTep.cacTep.length === 0;
    $('k-tep-chu').textContent = chu(hong ? 'guiTep.tongHong' : 'guiTep.tong', { roi, so, hong, da: co(daNhan), ca: co(ca) });
    Object.assign($('k-tep-thanh'), { max: ca || 1, value: ca ? daNhan : con ? 0 : 1 });
    $('k-tep-huy').hidden = con === 0;
    $('k-tep-lai').hidden = hong === 0;
    $('k-tep-don').hidden = con > 0;
    for (const id of ['k-chon-tep', 'k-chon-thu-muc']) $(id).disabled = !duoc.duoc;
    $('k-tep-loi').hidden = duoc.duoc;
    $('k-tep-loi').textContent = duoc.duoc ? '' : chu('guiTep.khongDuoc', { ly: chu(duoc.ly || 'guiTep.lyMay') });
  }

  const veSau = () => { if (!henVe) henVe = hen.dat(ve, MOI); };

  function noiChon(nut, vao) {
    khi(nut, () => $(vao).click());
    khi(vao, () => {
      them(tuDanhSach($(vao).files));
      $(vao).value = '';
    }, 'change');
  }

  const coTep = (e) => Array.from(e.dataTransfer?.types ?? []).includes('Files');

  function noiTha(phien) {
    phien.addEventListener('dragover', (e) => {
      if (!coTep(e)) return;
      e.preventDefault();
      e.dataTransfer.dropEffect = duoc.duoc ? 'copy' : 'none';
      $('k-tha').hidden = !duoc.duoc;
    });
    phien.addEventListener('dragleave', (e) => { if (!phien.contains(e.relatedTarget)) $('k-tha').hidden = true; });
    phien.addEventListener('drop', (e) => {
      $('k-tha').hidden = true;
      if (!coTep(e)) return;
      e.preventDefault();
      if (!duoc.duoc) return;
      // Entries are only to be had while the event lasts.
      const cacMuc = Array.from(e.dataTransfer.items ?? [], (m) => m.webkitGetAsEntry?.()).filter(Boolean);
      if (cacMuc.length) nhanTha(cacMuc);
      else them(tuDanhSach(e.dataTransfer.files));
    });
  }

  noiChon('k-chon-tep', 'k-tep-vao');
  noiChon('k-chon-thu-muc', 'k-thu-muc-vao');
  $('k-chon-thu-muc').hidden = !('webkitdirectory' in $('k-thu-muc-vao'));
  khi('k-tep-huy', guiTep.huyHet);
  khi('k-tep-lai', guiTep.thuLai);
  khi('k-tep-don', guiTep.don);
  noiTha($('k-phien'));

  return Object.freeze({
    ve, veSau,
    datTinh(tep) {
      duoc = { duoc: !!tep?.duoc, ly: String(tep?.ly ?? ''), noi: String(tep?.noi ?? '') };
      ve();
    },
    // The call is over: nobody is there to send to.
    thoiHoi() {
      for (const hop of dangHoi) hop.thoi();
    },
  });
}
