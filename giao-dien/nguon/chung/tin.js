import { $, taoNut, taoThe } from './trang.js';

const TU_DONG = 8000; // ms that a good message stays
const TOI_DA = 5; // messages on the page

// Messages over the page: baoTin('hong' | 'xong', text, extra button, { giu }). Bad news, and what is to be kept (giu), stays
// until it is dismissed; said again it moves to the end.
export function taoBaoTin(chu) {
  let gan = []; // the latest: { noiDung, tin }
  return (loai, noiDung, nutThem, { giu = false } = {}) => {
    if (!nutThem) gan.filter((t) => t.noiDung === noiDung).forEach((t) => t.tin.remove());
    const tin = taoThe('div', loai);
    if (loai === 'hong') tin.setAttribute('role', 'alert');
    tin.append(taoThe('p', '', noiDung));
    if (nutThem) tin.append(nutThem);
    tin.append(taoNut(chu('nhan.dong'), () => tin.remove()));
    gan = [...gan, { noiDung: nutThem ? '' : noiDung, tin }].slice(-TOI_DA);
    $('noi').append(tin);
    while ($('noi').childElementCount > TOI_DA) $('noi').firstElementChild.remove();
    if (loai !== 'hong' && !giu) setTimeout(() => tin.remove(), TU_DONG);
  };
}
