import { motDong } from '../chung/mot-dong.js';
import { $, khi, taoNut, taoThe } from '../chung/trang.js';

const KHI_ROI = {
  'ben-kia': 'roi.benKia', nguoi: 'roi.nguoi', dung: 'roi.dung', mat: 'roi.mat',
};

// Who is connected, each with an end; and who was.
export function taoDsNguoi({ tv, van, ve, baoTin, phong, lichSu, guiBang }) {
  let daVe = ''; // what the lists show, so that a button does not lose the focus at every drawing

  const ten = (phien) => phien.ten || van.chu('nguoi.voDanh');
  const gio = (luc) => new Date(luc).toLocaleTimeString(van.ma, { hour: '2-digit', minute: '2-digit' });
  const ngayGio = (luc) => new Date(luc).toLocaleString(van.ma, { dateStyle: 'short', timeStyle: 'short' });
  const tenCach = (cach) => van.chu(cach === 0 ? 'nguoi.lanNay' : 'nguoi.lauDai');

  function veMot({ phien, tep }) {
    const li = taoThe('li', 'muc');
    const doan = taoThe('div');
    doan.append(
      taoThe('h3', 'duong', ten(phien)),
      taoThe('p', 'phu', phien.tinh === 'noi' ? `${van.chu('nguoi.tu', { gio: gio(phien.tuLuc) })} · ${tenCach(phien.cach)}`
        : van.chu('nguoi.dangVao')),
    );
    const dang = tep.dangNhan;
    if (dang) doan.append(taoThe('p', 'phu duong', van.chu('nguoi.dangNhan', { ten: motDong(dang.duong), con: dang.con })));
    const hang = taoThe('div', 'nut-hang');
    if (dang) hang.append(taoNut(van.chu('nguoi.thoiNhan'), () => tep.huy()));
    const nut = taoNut(van.chu('nguoi.ketThuc'), () => phong.duoi(phien.phien), 'do');
    nut.setAttribute('aria-label', van.chu('nguoi.ketThucVoi', { ten: ten(phien) }));
    hang.append(nut);
    li.append(doan, hang);
    return li;
  }

  function veMuc(m) {
    const li = taoThe('li', 'muc');
    const doan = taoThe('div');
    doan.append(taoThe('h3', 'duong', m.ten || van.chu('nguoi.voDanh')),
      taoThe('p', 'phu', `${ngayGio(m.tu)} – ${gio(m.den)} · ${tenCach(m.cach)}`));
    li.append(doan);
    return li;
  }

  khi('xoa-lich-su', () => {
    lichSu.xoa();
    ve.lai();
  });
  khi('gui-bang', () => guiBang());

  ve.them(() => {
    const cac = phong ? phong.cac.filter(({ phien }) => ['hoi', 'dang-noi', 'noi'].includes(phien.tinh)) : [];
    $('chua-ai').hidden = cac.length > 0;
    $('gui-bang').hidden = !phong || phong.soNguoi === 0 || !phong.dungBang();
    const dau = JSON.stringify([van.ma, van.coChu, lichSu.cac.length, lichSu.cac[0]?.den,
      cac.map(({ phien, tep }) => [phien.phien, phien.ten, phien.tinh, tep.dangNhan?.duong, tep.dangNhan?.con])]);
    if (dau === daVe) return;
    daVe = dau;
    $('ds-nguoi').replaceChildren(...cac.map(veMot));
    $('ds-lich-su').replaceChildren(...lichSu.cac.map(veMuc));
    $('xoa-lich-su').hidden = lichSu.cac.length === 0;
    van.dat('lich-su-trong', lichSu.cac.length ? 'lichSu.moTa' : 'lichSu.trong');
  });

  return {
    khiVao: (phien) => baoTin('xong', van.chu('nguoi.daVao', { ten: ten(phien) })),
    khiRa(phien, ly, truoc) {
      if (truoc === 'noi') {
        lichSu.them({ ten: phien.ten, cach: phien.cach, tu: phien.tuLuc, den: Date.now(), ly });
        baoTin('xong', van.chu(KHI_ROI[ly] ?? 'roi.mat', { ten: ten(phien) }), null, { giu: true });
      } else if (ly === 'sai') baoTin('hong', van.chu('nguoi.sai'));
      else if (ly === 'khong-noi-duoc') baoTin('hong', van.chu('nguoi.khongNoi', { ten: ten(phien) }));
    },
    // This person's word before somebody is let in. thoi() takes the question back.
    ten,
  };
}
