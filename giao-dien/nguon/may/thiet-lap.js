import { $, khi } from '../chung/trang.js';
import { dichLoi } from './loi-may.js';

// Start at login and the folder that downloads go to.
export function taoThietLap({ tv, van, ve, baoTin }) {
  let thuMucLuu = '';
  let choLuu = false; // a second question would leave the first without an answer

  khi('tu-khoi-dong', () => tv.dat('autostart', $('tu-khoi-dong').checked), 'change');
  khi('chon-luu', async () => {
    choLuu = true;
    ve.lai();
    const { duong, loi } = await tv.chonThuMucLuu();
    choLuu = false;
    if (duong) thuMucLuu = duong;
    else if (loi && loi !== 'huy') baoTin('hong', dichLoi(van.chu, loi));
    ve.lai();
  });

  ve.them(() => {
    $('tu-khoi-dong').disabled = !tv;
    $('chon-luu').disabled = !tv || choLuu;
    $('tu-khoi-dong').checked = !!tv && !!tv.trangThai.autostart;
    if (thuMucLuu) $('thu-muc-luu').textContent = thuMucLuu;
    else van.dat('thu-muc-luu', 'dat.thuMucMacDinh');
  });

  return { datThuMucLuu: (duong) => { thuMucLuu = duong; } };
}
