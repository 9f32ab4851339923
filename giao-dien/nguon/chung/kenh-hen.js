// The signalling client of either role, over socket.io: events with an answer, and a connection that comes back.
//
//   const kenh = taoKenhHen({ io });                  // diaChi: another server than the page's own
//   kenh.nghe('phien:tin', ({ phien, tin }) => …);
//   const dap = await kenh.goi('khach:goi', { pb: 1, ma });   // { ok: true, … } or { ok: false, code, error }
//   kenh.khi.noi = …; kenh.khi.mat = (ly) => …;       // at every connection; at every loss and failed attempt
//
// An answer always comes: when nothing is heard for `choToi` ms, or the connection goes meanwhile, its code is
// `khong_tra_loi`. What is asked before there is a connection waits for one, and is never sent once it was answered so.
const LAI = 5000; // ms; the library itself does not come back after the server has cut a connection on purpose
const KHONG_TRA_LOI = Object.freeze({ ok: false, code: 'khong_tra_loi', error: '' });

export function taoKenhHen({ io, diaChi, hen = { dat: (h, ms) => setTimeout(h, ms), huy: (s) => clearTimeout(s) } }) {
  const khi = { noi: () => {}, mat: () => {} };
  const cho = new Set(); // answers that are still awaited
  const choNoi = []; // what is to be sent when there is a connection
  let henLai = 0;
  const cam = io(diaChi, { reconnectionDelayMax: 10000 });
  // The substitute of a packaged page never connects but answers everything. It has fewer methods; of the real client's
  // only such are looked at as do nothing by being read (`volatile` would let the next packet be lost).
  const laThay = typeof cam.timeout !== 'function';
  const guiDuoc = () => cam.connected || laThay;

  cam.on('connect', () => {
    choNoi.splice(0).forEach((gui) => gui());
    khi.noi();
  });
  cam.on('disconnect', (ly) => {
    for (const xong of [...cho]) xong(KHONG_TRA_LOI);
    if (ly === 'io server disconnect') henLai = hen.dat(() => cam.connect(), LAI);
    khi.mat(String(ly));
  });
  cam.on('connect_error', (loi) => khi.mat(String(loi?.message ?? loi)));

  return {
    khi,
    laThay,
    get dangNoi() { return !!cam.connected; },
    nghe: (ten, ham) => cam.on(ten, (du) => ham(du && typeof du === 'object' ? du : {})),
    goi(ten, du, choToi = 10000) {
      return new Promise((tra) => {
        let dongHo = 0;
        const xong = (dap) => {
          if (!cho.delete(xong)) return;
          hen.huy(dongHo);
          tra(dap && typeof dap === 'object' ? dap : { ok: false, code: 'sai_dang', error: '' });
        };
        const gui = () => { if (cho.has(xong)) cam.emit(ten, du, xong); };
        cho.add(xong);
        dongHo = hen.dat(() => xong(KHONG_TRA_LOI), choToi);
        if (guiDuoc()) gui();
        else choNoi.push(gui);
      });
    },
    dong() {
      hen.huy(henLai);
      for (const xong of [...cho]) xong(KHONG_TRA_LOI);
      cam.disconnect();
    },
  };
}
