// From pointer and wheel events to input commands. No document here: the caller gives positions as fractions of the
// picture, or null outside it.

const NUT = ['left', 'middle', 'right'];
const MOT_NAC = 120; // what the host scrolls by for one notch of a wheel
const MOT_DONG = 40; // three lines are a notch
const MOT_TRANG = 800;
const TRON = 1e5; // fractions are sent to a hundred-thousandth: finer than any screen

const lamTron = (p) => ({ x: Math.round(p.x * TRON) / TRON, y: Math.round(p.y * TRON) / TRON });

// One axis of a wheel event in the host's units, down and right positive. A notch is 100, 120 or another number of pixels
// from engine to engine; wheelDelta tells notches (whole 120s) apart from a touchpad's smooth steps, of which it is three
// times the pixels.
function motTruc(delta, tho, che) {
  if (!delta) return 0;
  const laNac = Number.isFinite(tho) && tho !== 0 && tho % MOT_NAC === 0 && Math.abs(tho) !== 3 * Math.abs(delta);
  if (che === 0 && laNac) return Math.sign(delta) * Math.abs(tho);
  return delta * (che === 1 ? MOT_DONG : che === 2 ? MOT_TRANG : 1);
}

export function doiCuon(e) {
  const che = e.deltaMode; // read first: engines that ask for it then report lines
  return { dx: motTruc(e.deltaX, e.wheelDeltaX, che), dy: motTruc(e.deltaY, e.wheelDeltaY, che) };
}

// gui(command); cham(): the channel is behind; moiKhung(work) runs work before the next frame is drawn.
//
// The first move of a frame goes at once, later ones are merged until the next frame, and wait on while the channel is behind.
// A button always goes at once, after the position it belongs to.
export function taoChuot({ gui, cham, moiKhung }) {
  const nutGiu = new Set();
  let cho = null; // position not sent yet
  let cuoi = null; // position last sent
  let cuon = null; // { x, y, dx, dy } not sent yet
  let daHen = false;

  const giong = (a, b) => a && b && a.x === b.x && a.y === b.y;

  function guiMove(p) {
    cho = null;
    if (giong(p, cuoi)) return;
    cuoi = p;
    gui({ t: 'mouse_move', ...p });
  }

  // What is left of a scroll after whole units stays for the next one: the host rounds each command for itself.
  function guiCuon() {
    const dx = Math.trunc(cuon.dx);
    const dy = Math.trunc(cuon.dy);
    if (dx || dy) {
      gui({ t: 'mouse_wheel', x: cuon.x, y: cuon.y, dx, dy });
      cuoi = { x: cuon.x, y: cuon.y };
    }
    cuon = { ...cuon, dx: cuon.dx - dx, dy: cuon.dy - dy };
  }

  const conCuon = () => cuon !== null && (Math.abs(cuon.dx) >= 1 || Math.abs(cuon.dy) >= 1);

  function guiNgay() {
    if (cho) guiMove(cho);
    if (conCuon()) guiCuon();
  }

  function hen() {
    if (daHen) return;
    daHen = true;
    moiKhung(() => {
      daHen = false;
      if (!cho && !conCuon()) return;
      if (!cham()) guiNgay();
      hen();
    });
  }

  function diDen(diem) {
    if (!diem) return;
    const p = lamTron(diem);
    if (daHen || cham()) cho = p;
    else guiMove(p);
    hen();
  }

  function nut(t, so, diem) {
    if (conCuon()) guiCuon();
    const p = lamTron(diem);
    guiMove(p);
    gui({ t, ...p, button: NUT[so] });
  }

  function xuong(so, diem) {
    if (!NUT[so] || !diem) return false;
    nutGiu.add(so);
    nut('mouse_down', so, diem);
    return true;
  }

  // Without a position (the pointer left the window) the button is let go where it was last seen.
  function len(so, diem) {
    if (!nutGiu.delete(so)) return false;
    nut('mouse_up', so, diem ?? cho ?? cuoi ?? { x: 0, y: 0 });
    return true;
  }

  // What a pointer event says is down (MouseEvent.buttons): presses and releases follow from it, and one that went
  // elsewhere is caught up with. trong: the position inside the picture or null; ra: the nearest one of it.
  function theoNut(bit, trong, ra) {
    for (const [so, b] of [[0, 1], [2, 2], [1, 4]]) {
      if (bit & b && !nutGiu.has(so)) xuong(so, nutGiu.size ? ra : trong);
      else if (!(bit & b)) len(so, ra);
    }
  }

  function cuonTai(diem, { dx, dy }) {
    if (!diem) return;
    const p = lamTron(diem);
    if (cho) guiMove(cho);
    cuon = { ...p, dx: (cuon?.dx ?? 0) + dx, dy: (cuon?.dy ?? 0) + dy };
    if (!daHen && !cham()) guiCuon();
    hen();
  }

  function nhaHet() {
    for (const so of [...nutGiu]) len(so, null);
    cho = cuon = null;
  }

  return Object.freeze({
    diDen, xuong, len, theoNut, cuonTai, nhaHet,
    bam(so, diem) {
      if (xuong(so, diem)) len(so, diem);
    },
    get dangKeo() { return nutGiu.size > 0; },
  });
}
