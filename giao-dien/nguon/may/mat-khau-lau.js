import { $, khi } from '../chung/trang.js';

// The lasting password, for coming in while nobody is here. Only the slow hash that the exchange runs on is stored.
const LOI = { ngan: 'lau.ngan', dai: 'lau.dai', de: 'lau.de' };

// The stored one, or null.
export function docLau(kho) {
  try {
    return JSON.parse(kho.doc('matKhauLau', 'null'));
  } catch {
    return null;
  }
}

export function taoMatKhauLau({ tv, van, kho, ve, baoTin, canh }) {
  let dangTinh = false;

  async function dat() {
    if (dangTinh || !tv) return;
    dangTinh = true;
    ve.lai();
    const kq = await TvMaHoa.datMatKhauLau($('mk-lau').value);
    dangTinh = false;
    if (kq.loi) baoTin('hong', van.chu(LOI[kq.loi] ?? 'lau.de', { it: TvMaHoa.DAI_LAU.it, nhieu: TvMaHoa.DAI_LAU.nhieu }));
    else {
      $('mk-lau').value = '';
      kho.ghi('matKhauLau', JSON.stringify(kq));
      canh.datLau(kq);
      baoTin('xong', van.chu('lau.daDat'));
    }
    ve.lai();
  }

  khi('dat-mk-lau', dat);
  khi('mk-lau', (e) => { if (e?.key === 'Enter') dat(); }, 'keydown');
  khi('bo-mk-lau', () => {
    kho.xoa('matKhauLau');
    canh.datLau(null);
    ve.lai();
  });
  ve.them(() => {
    const co = !!canh?.coLau;
    van.dat('mk-lau-tinh', dangTinh ? 'lau.dangTinh' : co ? 'lau.dangCo' : 'lau.chuaCo');
    $('bo-mk-lau').hidden = !co;
    $('dat-mk-lau').disabled = $('mk-lau').disabled = !tv || !canh || dangTinh;
  });
}
