import { taoNut, taoThe } from './trang.js';

let soHop = 0;

// A question over the page; the page asks nothing through the host's own windows. nut: [[value, label, class], …], the
// first one has the focus. Answers { traLoi: promise of a value, thoi(value) }; Escape, thoi and the end of `giay` seconds
// give `macDinh`. khiGiay(seconds left) -> text that is shown while time runs; them: an element between text and buttons.
export function moHopThoai({ tieuDe, noiDung, nut, macDinh, giay = 0, khiGiay, them }) {
  const hop = taoThe('dialog', 'hop');
  const [dau, than] = [taoThe('h2', '', tieuDe), taoThe('p', '', noiDung)];
  soHop += 1;
  dau.id = `hop-${soHop}-dau`;
  than.id = `hop-${soHop}-than`;
  hop.setAttribute('role', 'alertdialog');
  hop.setAttribute('aria-labelledby', dau.id);
  hop.setAttribute('aria-describedby', than.id);
  const conLai = taoThe('p', 'phu');
  const hang = taoThe('div', 'hop-nut');
  hop.append(dau, than, ...(them ? [them] : []), conLai, hang);
  let dongHo = 0;
  let ket;
  const traLoi = new Promise((xong) => {
    ket = (gia) => {
      clearInterval(dongHo);
      hop.remove();
      xong(gia);
    };
  });
  hang.append(...nut.map(([gia, nhan, lop]) => taoNut(nhan, () => ket(gia), lop)));
  hop.addEventListener('cancel', () => ket(macDinh));
  hop.addEventListener('close', () => ket(macDinh));
  document.body.append(hop);
  hop.showModal();
  (them?.querySelector('textarea, input') ?? hang.firstElementChild).focus();
  if (giay) {
    const het = Date.now() + giay * 1000; // a throttled page still ends in time
    const xem = () => {
      const con = Math.ceil((het - Date.now()) / 1000);
      conLai.textContent = khiGiay ? khiGiay(Math.max(con, 0)) : '';
      if (con <= 0) ket(macDinh);
    };
    xem();
    dongHo = setInterval(xem, 500);
  }
  return { traLoi, thoi: () => ket(macDinh) };
}
