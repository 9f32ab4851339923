// The share as this page sees it: what it asked of the host and what the host has answered. tv is window.tovira or null.
// Nothing here is drawn; `doi` is called whenever the page should be.
export function taoChia(tv, doi) {
  let choMo = null; // tv.manHinh as a start left it; the host's first answer replaces that object
  let choDung = null; // the same for a stop
  let soDangChia = null; // display asked for last

  const chia = {
    get so() { return soDangChia; },

    // nghi (idle), mo (asked for, no answer yet), chia (sharing), dung (told to stop, no answer yet)
    tinh() {
      if (!tv) return 'nghi';
      if (choMo && tv.manHinh === choMo) return 'mo';
      if (tv.manHinh.duongDan) return 'chia';
      if (!tv.manHinhDangPhat()) return 'nghi';
      return tv.manHinh === choDung ? 'dung' : 'chia';
    },

    // Shares display number so; cao is the most lines that anyone can use.
    batDau(so, cao) {
      if (!tv) return;
      soDangChia = so;
      tv.datCaoManHinh(cao);
      tv.xinManHinh(so);
      choMo = tv.manHinh;
      doi();
    },

    // Stops whatever the page believes: the host's menu asks for it too, and its picture of things is the truth.
    dung() {
      choMo = null;
      if (tv) {
        tv.dungManHinh();
        choDung = tv.manHinh;
      }
      doi();
    },

    danhSach: () => (tv && Array.isArray(tv.dsManHinh) ? tv.dsManHinh : []),
    tenManHinh: (so) => chia.danhSach().find((m) => m.chiSo === so)?.ten,
  };
  return chia;
}
