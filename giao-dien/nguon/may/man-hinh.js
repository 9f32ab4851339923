import { $, dienChon, khi } from '../chung/trang.js';
import { taoHinh } from './hinh.js';
import { dichLoi } from './loi-may.js';

const CAC_NET = [720, 1080, 1440, 2160, 2880]; // lines; steps far enough apart that the host follows each
const NET_MAC_DINH = 2160; // what the host starts with
const DO_LAI_DAU = 250, DO_LAI_CUOI = 8000; // ms between looks at a display list that is still empty

// The card of the screen: which display, how sharp, the picture, start. And the state line and stop button at the top.
// soNguoi() says how many controllers look on; the picture is not shown here meanwhile, it would show itself in itself.
export function taoManHinh({ tv, van, kho, ve, chia, soNguoi }) {
  const hinh = taoHinh($('san'), ve.lai);
  let daVe = ''; // what the display choice shows, so that it is rebuilt only when that changes
  let trong = true;

  const net = () => Number($('chon-net').value);
  const so = () => Number($('chon-man').value) || 0;

  function veDanhSach() {
    if (!van.coChu) return;
    const ds = chia.danhSach();
    const dau = JSON.stringify([van.ma, ds]);
    if (dau === daVe) return;
    const muc = ds.map((m) => [m.chiSo, van.chu(m.chinh ? 'man.mucChinh' : 'man.muc', m)]);
    const chinh = ds.find((m) => m.chinh)?.chiSo ?? 0;
    const truoc = daVe && $('chon-man').value;
    dienChon($('chon-man'), muc.length ? muc : [[0, van.chu('man.macDinh')]]);
    const con = truoc && ds.some((m) => String(m.chiSo) === truoc) && !trong;
    $('chon-man').value = con ? truoc : String(chinh);
    trong = ds.length === 0;
    daVe = dau;
  }

  function veTinh(tinh) {
    const khoa = { nghi: 'tinh.nghi', mo: 'tinh.mo', chia: 'tinh.chia', dung: 'tinh.dung' };
    van.dat('tinh', khoa[tinh], { ten: chia.tenManHinh(chia.so) || van.chu('man.macDinh') });
    $('tinh').dataset.tinh = tinh === 'mo' || tinh === 'dung' ? 'cho' : tinh;
    $('tinh').hidden = !tv;
    $('bc-stop').hidden = tinh === 'nghi' && soNguoi() === 0;
  }

  function veHinh() {
    const an = !$('hien-hinh').checked;
    $('san').classList.toggle('an', an);
    $('san').dataset.trong = hinh.duong ? 'khong' : 'co';
    $('san-chu').hidden = !an && hinh.tinh === 'coHinh';
    hinh.datTen(van.chu('man.hinh'));
    const nguoi = soNguoi();
    if (nguoi > 0) return van.dat('san-chu', 'man.dangXem', { n: nguoi });
    const chu = hinh.duong ? (an ? 'man.dangAn' : hinh.tinh === 'matHinh' ? 'man.matHinh' : 'man.dangMo') : 'man.chuaChia';
    van.dat('san-chu', chu);
  }

  function veNut(tinh) {
    const doi = tinh === 'chia' && chia.so !== null && Number($('chon-man').value) !== chia.so && chia.danhSach().length > 1;
    $('bc-start').hidden = tinh !== 'nghi' && !doi;
    $('bc-start').disabled = !tv;
    van.dat('bc-start', doi ? 'man.doi' : 'man.batDau');
    for (const id of ['chon-man', 'chon-net']) $(id).disabled = !tv || tinh === 'mo';
    $('doc-lai').hidden = !tv || tinh !== 'nghi';
    const loi = tv && tinh === 'nghi' ? tv.manHinh.loi : '';
    $('loi-chia').hidden = !loi;
    if (loi) van.dat('loi-chia', 'man.loi', { loi: dichLoi(van.chu, loi) });
  }

  function dienNet(nhan) {
    const truoc = $('chon-net').value;
    dienChon($('chon-net'), CAC_NET.map((cao) => [cao, nhan(cao)]));
    $('chon-net').value = truoc;
  }

  // A display list that arrives announces itself by no hook: look for it a few times, ever more seldom.
  function doDanhSach(cho) {
    setTimeout(() => {
      ve.lai();
      if (trong && cho < DO_LAI_CUOI) doDanhSach(cho * 2);
    }, cho);
  }

  function docThietLap() {
    dienNet(String);
    const cao = Number(kho.doc('doNet', null, TvKho.QUA_CONG));
    $('chon-net').value = String(CAC_NET.includes(cao) ? cao : NET_MAC_DINH);
    $('hien-hinh').checked = kho.doc('hienHinh', '1', TvKho.QUA_CONG) !== '0';
  }

  function noiNut() {
    khi('bc-start', () => chia.batDau(so(), net()));
    khi('doc-lai', () => location.reload()); // the host sends the list once for every page that loads
    khi('chon-man', ve.lai, 'change');
    khi('chon-net', () => {
      kho.ghi('doNet', $('chon-net').value, TvKho.QUA_CONG);
      if (soNguoi() === 0) tv?.datCaoManHinh(net());
      ve.lai();
    }, 'change');
    khi('hien-hinh', () => {
      kho.ghi('hienHinh', $('hien-hinh').checked ? '1' : '0', TvKho.QUA_CONG);
      ve.lai();
    }, 'change');
  }

  docThietLap();
  noiNut();
  ve.them(() => {
    const tinh = chia.tinh();
    veDanhSach();
    veTinh(tinh);
    hinh.mo(tinh === 'chia' && soNguoi() === 0 ? tv.manHinh.duongDan : '');
    veHinh();
    veNut(tinh);
  });

  return {
    net, so,
    batDauDo: () => { if (tv) doDanhSach(DO_LAI_DAU); },
    veChu: () => dienNet((cao) => van.chu('man.netMuc', { cao })),
  };
}
