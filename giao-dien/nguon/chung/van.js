import { $, dienChon, khi } from './trang.js';

// The page's texts: loading a language, writing them, and the choice of language at the top. khiDoi is called after
// every change of language; tv is window.tovira or null.
export function taoVan({ kho, tv, khiDoi }) {
  const ngonNgu = TvNgonNgu.tao(async (duong) => {
    const dap = await fetch(duong);
    if (!dap.ok) throw new Error(duong);
    return dap.json();
  });
  const { chu } = ngonNgu;
  let coChu = false; // what stands in the markup stays until texts are loaded

  function ve() {
    coChu = true;
    ngonNgu.apDung(document);
    $('ngon-ngu').value = ngonNgu.ma;
    khiDoi();
  }

  const van = {
    chu,
    get coChu() { return coChu; },
    get ma() { return ngonNgu.ma; },

    // Writes an element's text if it differs: a live region speaks whenever it is written.
    dat(id, khoa, thamSo) {
      if (!coChu) return;
      const moi = chu(khoa, thamSo);
      if ($(id).textContent !== moi) $(id).textContent = moi;
    },

    // The host's people read Vietnamese unless they chose otherwise; a browser's say what they read.
    async khoiDong(baoTin) {
      dienChon($('ngon-ngu'), Object.entries(TvNgonNgu.TEN));
      khi('ngon-ngu', () => van.doi($('ngon-ngu').value, baoTin), 'change');
      const daChon = kho.doc('ngonNgu', null, TvKho.QUA_CONG);
      const macDinh = tv ? TvNgonNgu.MAC_DINH : TvNgonNgu.chonMa(navigator.languages);
      await ngonNgu.nap(TvNgonNgu.coMa(daChon) ? daChon : macDinh);
      ve();
    },

    async doi(ma, baoTin) {
      const duoc = await ngonNgu.nap(ma);
      if (duoc !== ma) baoTin('hong', chu('ngonNgu.hong'));
      else {
        kho.ghi('ngonNgu', ma, TvKho.QUA_CONG);
        tv?.datNgonNgu(ma);
      }
      ve();
    },
  };
  return van;
}
