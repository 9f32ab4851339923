import { chep } from '../chung/chep.js';
import { $, khi } from '../chung/trang.js';

// The card with what another person needs: machine code, password, and whether the server can bring a call.
const TINH = {
  cho: 'mayChu.cho', 'san-sang': 'mayChu.sanSang', mat: 'mayChu.mat', 'khong-may-chu': 'mayChu.khong',
  'phien-ban': 'mayChu.phienBan', 'qua-nhieu': 'mayChu.quaNhieu', thay: 'mayChu.thay', hong: 'mayChu.hong',
};

export function taoTruyCap({ tv, van, ve, baoTin, canh, traLoi }) {
  let an = false;

  async function chepO(id) {
    const duoc = await chep($(id).dataset.gia);
    baoTin(duoc ? 'xong' : 'hong', van.chu(duoc ? 'truyCap.daChep' : 'truyCap.khongChep'));
  }

  // Neither the server's code nor the password is there when the page opens.
  function veGia(id, gia, hien) {
    $(id).dataset.gia = gia;
    if ($(id).textContent !== hien) $(id).textContent = hien;
  }

  khi('chep-ma', () => chepO('ma-may'));
  khi('chep-mat-khau', () => chepO('mat-khau'));
  khi('doi-mat-khau', () => canh?.doiMatKhau());
  khi('hien-mat-khau', () => {
    an = !an;
    ve.lai();
  });
  khi('dung-o-day', () => traLoi()?.dangKy());

  ve.them(() => {
    const tl = traLoi();
    const tinh = tl?.tinh ?? 'khong-may-chu';
    const [ma, matKhau] = [tl?.ma ?? '', canh?.matKhau ?? ''];
    veGia('ma-may', ma, ma ? TvMaHoa.chiaNhom(ma) : '––– ––– –––');
    veGia('mat-khau', matKhau, an ? '•••••••••' : matKhau.match(/.{1,5}/g)?.join(' ') ?? '–––––');
    van.dat('tinh-may-chu', TINH[tinh]);
    $('tinh-may-chu').dataset.tinh = tinh;
    $('dung-o-day').hidden = tinh !== 'thay';
    $('chep-ma').disabled = !ma;
    $('chep-mat-khau').disabled = $('doi-mat-khau').disabled = $('hien-mat-khau').disabled = !tv || !matKhau;
    van.dat('hien-mat-khau', an ? 'truyCap.hien' : 'truyCap.an');
  });
}
