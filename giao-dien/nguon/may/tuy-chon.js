import { $, khi } from '../chung/trang.js';

// Switches that say who may come in and what they may do. They stay in this origin's store: a cookie could be written by
// any other program on this machine's loopback address.
const CAC = {
  choDieuKhien: { o: 'cho-dieu-khien', macDinh: true },
  hoiTruoc: { o: 'hoi-truoc', macDinh: false },
  bang: { o: 'chung-bang', macDinh: false },
  nhanTep: { o: 'cho-tep', macDinh: true },
};

export function taoTuyChon({ tv, kho, ve }) {
  const doc = (ten) => kho.doc(ten, CAC[ten].macDinh ? '1' : '0') === '1';
  for (const [ten, { o }] of Object.entries(CAC)) {
    khi(o, () => {
      kho.ghi(ten, $(o).checked ? '1' : '0');
      ve.lai();
    }, 'change');
  }
  ve.them(() => {
    for (const [ten, { o }] of Object.entries(CAC)) {
      $(o).checked = doc(ten);
      $(o).disabled = !tv;
    }
  });
  return { doc };
}
