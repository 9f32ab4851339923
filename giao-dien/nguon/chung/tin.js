import { $, taoNut, taoThe } from './trang.js';

const TU_DONG = 8000; // ms that a good message stays
const TOI_DA = 5; // messages on the page

// Messages over the page: baoTin('hong' | 'xong', text, extra button). Bad news stays until it is dismissed.
export function taoBaoTin(chu) {
  return (loai, noiDung, nutThem) => {
    const tin = taoThe('div', loai);
    if (loai === 'hong') tin.setAttribute('role', 'alert');
    tin.append(taoThe('p', '', noiDung));
    if (nutThem) tin.append(nutThem);
    tin.append(taoNut(chu('nhan.dong'), () => tin.remove()));
    $('noi').append(tin);
    while ($('noi').childElementCount > TOI_DA) $('noi').firstElementChild.remove();
    if (loai !== 'hong') setTimeout(() => tin.remove(), TU_DONG);
  };
}
