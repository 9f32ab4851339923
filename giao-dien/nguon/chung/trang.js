// Small pieces of page, for every part. Nothing here knows a role.

export const $ = (id) => document.getElementById(id);

export function taoThe(loai, lop = '', noiDung = '') {
  const the = document.createElement(loai);
  the.className = lop;
  the.textContent = noiDung;
  return the;
}

export function taoNut(noiDung, khiBam, lop = '') {
  const nut = taoThe('button', lop, noiDung);
  nut.type = 'button';
  nut.addEventListener('click', khiBam);
  return nut;
}

// Fills a choice with [value, label] pairs.
export function dienChon(o, muc) {
  o.replaceChildren(...muc.map(([gia, nhan]) => {
    const chon = taoThe('option', '', nhan);
    chon.value = String(gia);
    return chon;
  }));
}

export const khi = (id, viec, suKien = 'click') => $(id).addEventListener(suKien, viec);
