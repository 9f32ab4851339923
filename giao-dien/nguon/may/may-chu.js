import { $, khi } from '../chung/trang.js';

const BAN_LAI = 5000; // ms between looks whether a call that keeps the page here has ended
const VE_SAU = 1500; // ms without a share before the page leaves it for the server

// The server as the host sees it: lost, back, or never there because this is the packaged copy of the page.
export function taoMayChu({ tv, ve, chia, ban }) {
  let dangChia = false; // as of the last look
  let goiKem = null; // served by the packaged interface; null until known
  let matKetNoi = false;
  let choVe = false; // the server is back, the page waits for the share to end

  // Leaves this page for the server's. A share goes on for nobody if its page is gone, so it ends first.
  function veMayChu() {
    choVe = false;
    if (chia.tinh() !== 'nghi') chia.dung();
    window.ipc?.postMessage('thu-lai');
  }

  function veKhiRanh() {
    if (!choVe || chia.tinh() !== 'nghi') return;
    if (ban()) setTimeout(veKhiRanh, BAN_LAI);
    else veMayChu();
  }

  // The packaged interface puts a substitute without a server in the socket client's place and names it by this code.
  // A server started on this machine has the same host name, so the name alone does not tell.
  async function laGoiKem() {
    if (location.hostname !== '127.0.0.1') return false;
    try {
      const dap = await fetch('/vendor/socket.io.min.js');
      return !dap.ok || (await dap.text()).includes('khong_may_chu');
    } catch {
      return true;
    }
  }

  khi('thu-lai', veMayChu);
  khi('ve-may-chu', veMayChu);
  ve.them(() => {
    $('thieu-may').hidden = !!tv;
    $('mat-ket-noi').hidden = !tv || !matKetNoi;
    $('song-lai').hidden = !choVe;
    const tinh = chia.tinh();
    const vuaHet = dangChia && tinh === 'nghi';
    dangChia = tinh !== 'nghi';
    if (vuaHet && choVe) setTimeout(veKhiRanh, VE_SAU); // a change of screen may begin with an end
  });

  return {
    get goiKem() { return goiKem; },
    async xem() {
      goiKem = await laGoiKem();
      if (goiKem && !choVe) matKetNoi = true;
      ve.lai();
    },
    khiMat(mat) {
      matKetNoi = mat;
      ve.lai();
    },
    khiSongLai() {
      matKetNoi = false;
      choVe = true;
      veKhiRanh();
      ve.lai();
    },
  };
}
