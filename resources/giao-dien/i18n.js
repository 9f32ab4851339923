// The application's texts. Loaded as a classic script; window.TvNgonNgu.tao(layJson) makes a translator over
// /i18n/<code>.json. Vietnamese is loaded first and stays behind every other language as its fallback.
(function (goc) {
  'use strict';

  // Code -> the language's own name, in the order of the list that the page shows.
  const TEN = Object.freeze({
    vi: 'Tiếng Việt', en: 'English', zh: '中文', ja: '日本語', ko: '한국어', th: 'ไทย', lo: 'ລາວ', ru: 'Русский',
    id: 'Bahasa Indonesia', es: 'Español', pt: 'Português', tr: 'Türkçe', pl: 'Polski', ro: 'Română', fil: 'Filipino',
  });
  const MAC_DINH = 'vi';
  const TEN_KHAC = Object.freeze({ tl: 'fil', in: 'id', mo: 'ro' }); // older codes that browsers still report

  const coMa = (ma) => Object.prototype.hasOwnProperty.call(TEN, ma);

  // The first supported language among BCP 47 tags, "zh-Hant-TW" counting as zh; Vietnamese when there is none.
  function chonMa(cacThe) {
    for (const the of cacThe || []) {
      const chinh = String(the).toLowerCase().split(/[-_]/)[0];
      const ma = TEN_KHAC[chinh] || chinh;
      if (coMa(ma)) return ma;
    }
    return MAC_DINH;
  }

  // Puts values into "{name}"; an unknown name stays as it is, and a value is never expanded again.
  const thay = (mau, thamSo) =>
    mau.replace(/\{(\w+)\}/g, (ca, ten) => (Object.prototype.hasOwnProperty.call(thamSo, ten) ? String(thamSo[ten]) : ca));

  // A plural is an object of CLDR categories, chosen by the parameter n.
  function chonSo(muc, ma, thamSo) {
    if (typeof muc === 'string') return muc;
    return muc[new Intl.PluralRules(ma).select(Number(thamSo.n) || 0)] ?? muc.other;
  }

  // layJson(path) answers a promise of the parsed file.
  function tao(layJson) {
    const daTai = new Map(); // code -> table
    const dangTai = new Map(); // code -> promise; a failure is forgotten, so that it may be tried again
    let ma = MAC_DINH;
    let luot = 0;

    function tai(m) {
      if (!dangTai.has(m)) {
        dangTai.set(m, layJson(`/i18n/${m}.json`).then((bang) => daTai.set(m, bang), (loi) => {
          dangTai.delete(m);
          throw loi;
        }));
      }
      return dangTai.get(m);
    }

    // Switches to a language and answers the code now in effect: the one asked for, or the one before when its file
    // cannot be had. Of several calls under way the last one decides.
    async function nap(moi) {
      const cuaToi = ++luot;
      const dich = coMa(moi) ? moi : MAC_DINH;
      const ketQua = await Promise.allSettled([tai(MAC_DINH), tai(dich)]);
      if (cuaToi === luot && ketQua[1].status === 'fulfilled') ma = dich;
      return ma;
    }

    function chu(khoa, thamSo = {}) {
      for (const m of [ma, MAC_DINH]) {
        const muc = daTai.get(m)?.[khoa];
        if (muc !== undefined) return thay(chonSo(muc, m, thamSo), thamSo);
      }
      return khoa;
    }

    // data-i18n="key" sets an element's text, data-i18n-attr="aria-label:key title:key" its attributes. What stands in
    // the markup (Vietnamese) stays while no table could be loaded.
    function apDung(taiLieu) {
      if (!daTai.has(ma)) return;
      taiLieu.documentElement.lang = ma;
      for (const pt of taiLieu.querySelectorAll('[data-i18n]')) pt.textContent = chu(pt.dataset.i18n);
      for (const pt of taiLieu.querySelectorAll('[data-i18n-attr]')) {
        for (const cap of pt.dataset.i18nAttr.split(' ')) {
          const [ten, khoa] = cap.split(':');
          pt.setAttribute(ten, chu(khoa));
        }
      }
    }

    return Object.freeze({ nap, chu, apDung, get ma() { return ma; } });
  }

  goc.TvNgonNgu = Object.freeze({ TEN, MAC_DINH, coMa, chonMa, thay, tao });
})(globalThis);
