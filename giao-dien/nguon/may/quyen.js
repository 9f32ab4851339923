import { $, khi } from '../chung/trang.js';
import { LOI_CUA_MAY } from './loi-may.js';

// The two permissions that the host needs, as far as its answers tell.
export function taoQuyen({ tv, van, ve, chia }) {
  function veMot(id, co) {
    $(id).dataset.co = co;
    van.dat(id, { co: 'quyen.co', khong: 'quyen.khong', moLai: 'quyen.canMoLai', chuaRo: 'quyen.chuaRo' }[co]);
  }

  khi('mo-tro-nang', () => tv.moCaiDatTroNang());
  ve.them(() => {
    const coTroNang = !!tv && tv.troNangDaBat();
    veMot('quyen-tro-nang', tv ? (coTroNang ? 'co' : 'khong') : 'chuaRo');
    $('mo-tro-nang').hidden = coTroNang;
    $('mo-tro-nang').disabled = !tv;
    const khoa = tv && LOI_CUA_MAY.get(tv.manHinh.loi);
    const daGhiDuoc = chia.tinh() === 'chia' || chia.danhSach().length > 0;
    veMot('quyen-ghi', khoa === 'loi.chuaCapGhi' ? 'khong' : khoa === 'loi.moLai' ? 'moLai' : daGhiDuoc ? 'co' : 'chuaRo');
  });
}
