// Machines that were reached before: their codes and when, in this browser only. Never a password.

const TEN = 'mayCu';
const TOI_DA = 12;

export const docMa = (chu) => String(chu).replace(/\D+/g, '').slice(0, 9);
export const chiaMa = (ma) => docMa(ma).replace(/(\d{3})(?=\d)/g, '$1 ');

export function taoMayCu(kho) {
  function doc() {
    try {
      const ds = JSON.parse(kho.doc(TEN, '[]'));
      return Array.isArray(ds) ? ds.filter((m) => /^\d{9}$/.test(m?.ma) && Number.isFinite(m.luc)) : [];
    } catch {
      return [];
    }
  }
  const ghi = (ds) => kho.ghi(TEN, JSON.stringify(ds.slice(0, TOI_DA)));
  return Object.freeze({
    doc,
    nho: (ma, luc) => ghi([{ ma, luc }, ...doc().filter((m) => m.ma !== ma)]),
    quen: (ma) => ghi(doc().filter((m) => m.ma !== ma)),
  });
}
