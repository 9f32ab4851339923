// Channel 2 of one session on the host: what the host tells, and what the controller wishes.
const BANG_TOI_DA = 1024 * 1024; // bytes of clipboard text
const TIN_TOI_DA = 4 * BANG_TOI_DA; // characters of one message
const CAO = { it: 240, nhieu: 4320 }; // lines that may be asked for

// gui(text) writes into the channel; trangThai() gives the fields of chao and doi. khi: chon(display), cao(), bang(text), het().
export function taoKenhTin({ gui, trangThai, khi }) {
  let daNoi = ''; // the state as it was told last
  let mo = false;
  let cao = 0; // lines that the controller can use; 0 until it says

  const so = (n) => typeof n === 'number' && Number.isFinite(n);
  const VIEC = {
    chon: ({ chiSo }) => { if (Number.isSafeInteger(chiSo) && chiSo >= 0) khi.chon(chiSo); },
    cao(vat) {
      if (!so(vat.cao) || vat.cao <= 0) return;
      cao = Math.round(Math.min(Math.max(vat.cao, CAO.it), CAO.nhieu));
      khi.cao();
    },
    bang: ({ chu }) => { if (typeof chu === 'string' && new Blob([chu]).size <= BANG_TOI_DA) khi.bang(chu); },
    nhip: ({ s }) => { if (so(s)) gui(JSON.stringify({ l: 'dap', s })); },
    het: () => khi.het(),
  };

  return {
    get cao() { return cao; },
    khiMo() {
      mo = true;
      daNoi = JSON.stringify(trangThai());
      gui(JSON.stringify({ l: 'chao', ...JSON.parse(daNoi) }));
    },
    // Tells what has changed since it was told last, if anything has.
    bao() {
      if (!mo) return;
      const nay = JSON.stringify(trangThai());
      if (nay === daNoi) return;
      daNoi = nay;
      gui(JSON.stringify({ l: 'doi', ...JSON.parse(nay) }));
    },
    guiBang: (chu) => mo && new Blob([chu]).size <= BANG_TOI_DA && gui(JSON.stringify({ l: 'bang', chu })),
    nhan(tin) {
      if (typeof tin !== 'string' || tin.length > TIN_TOI_DA) return;
      let vat = null;
      try {
        vat = JSON.parse(tin);
      } catch { /* not ours */ }
      if (vat && typeof vat === 'object' && Object.prototype.hasOwnProperty.call(VIEC, vat.l)) VIEC[vat.l](vat);
    },
  };
}
