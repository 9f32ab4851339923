// Who was connected and when, on this machine only: { ten, cach, tu, den, ly }, newest first, times in ms.
const TOI_DA = 200;

export function taoLichSu(kho) {
  let cac = [];
  try {
    const luu = JSON.parse(kho.doc('lichSu', '[]'));
    if (Array.isArray(luu)) cac = luu.filter((m) => m && typeof m === 'object' && typeof m.ten === 'string' && m.tu > 0 && m.den > 0).slice(0, TOI_DA);
  } catch { /* unreadable: begun anew */ }
  const ghi = () => kho.ghi('lichSu', JSON.stringify(cac));
  return {
    get cac() { return cac; },
    them(muc) {
      cac = [muc, ...cac].slice(0, TOI_DA);
      ghi();
    },
    xoa() {
      cac = [];
      kho.xoa('lichSu');
    },
  };
}
