// A small store of settings (text to text). Loaded as a classic script; window.TvKho.tao(window) makes one.
//
// The packaged interface is served from another port at every start, and localStorage belongs to an origin, port
// included: on its own it would forget the chosen language each time. Cookies do not tell ports apart, so a value written with
// QUA_CONG is kept in one as well. Every other port of the same host, and a sibling of its name, can read such a cookie and
// plant one: only harmless preferences go there, never a code, a password, a path or a permission, and only who asks
// with QUA_CONG is given what a cookie says. Without either, values last as long as the page.
(function (goc) {
  'use strict';

  const TIEN_TO = 'tv.';
  const TIEN_TO_COOKIE = 'tv_';
  const MOT_NAM = 365 * 24 * 3600; // seconds
  const CHI_CONG_NAY = 'chi-cong-nay';
  const QUA_CONG = 'qua-cong';

  // Reading the property itself throws where storage is forbidden.
  function layLocalStorage(cuaSo) {
    try {
      return cuaSo.localStorage || null;
    } catch {
      return null;
    }
  }

  function taoCookie(taiLieu) {
    const viet = (ten, gia, tuoi) => {
      try {
        taiLieu.cookie = `${TIEN_TO_COOKIE}${ten}=${encodeURIComponent(gia)}; path=/; max-age=${tuoi}; samesite=strict`;
      } catch { /* a sandboxed document has no cookies */ }
    };
    return {
      doc(ten) {
        try {
          const muc = String(taiLieu.cookie).split('; ').find((m) => m.startsWith(`${TIEN_TO_COOKIE}${ten}=`));
          return muc === undefined ? null : decodeURIComponent(muc.slice(muc.indexOf('=') + 1));
        } catch {
          return null;
        }
      },
      ghi: (ten, gia) => viet(ten, gia, MOT_NAM),
      xoa: (ten) => viet(ten, '', 0),
    };
  }

  function tao(cuaSo) {
    const kho = layLocalStorage(cuaSo);
    const cookie = taoCookie(cuaSo.document);
    const trongTrang = new Map();
    const thu = (viec) => {
      try {
        return kho === null ? null : viec();
      } catch {
        return null; // full, or forbidden since the page was opened
      }
    };

    return Object.freeze({
      // The value, or macDinh; this page's own last word comes first, a cookie's last.
      doc(ten, macDinh = null, pham = CHI_CONG_NAY) {
        if (trongTrang.has(ten)) return trongTrang.get(ten) ?? macDinh;
        return thu(() => kho.getItem(TIEN_TO + ten)) ?? (pham === QUA_CONG ? cookie.doc(ten) : null) ?? macDinh;
      },
      ghi(ten, gia, pham = CHI_CONG_NAY) {
        trongTrang.set(ten, String(gia));
        thu(() => kho.setItem(TIEN_TO + ten, String(gia)));
        if (pham === QUA_CONG) cookie.ghi(ten, String(gia));
      },
      xoa(ten) {
        trongTrang.set(ten, null);
        thu(() => kho.removeItem(TIEN_TO + ten));
        cookie.xoa(ten);
      },
    });
  }

  goc.TvKho = Object.freeze({ tao, CHI_CONG_NAY, QUA_CONG });
})(globalThis);
