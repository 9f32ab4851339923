// The controller's role. goc is its (empty) element; tv is window.tovira or null.
export function taoKhach({ goc, chu, kho, io, baoTin, tv }) {
  return {
    veChu() {}, // the language has changed: write what is not marked with data-i18n again
    khiHien(hien) {}, // this role has come into sight or gone out of it
  };
}
