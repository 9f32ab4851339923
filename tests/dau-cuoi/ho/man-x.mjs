// What is on the host's display: a coloured background, terminals that write down what reaches them, and where windows are.
import { readFile } from 'node:fs/promises';
import { cho, ChuongTrinh, chayXong } from './the-gioi.mjs';

// The background of the whole display.
export const toNen = (mau) => chayXong('may', 'xsetroot', '-solid', mau);

// The visible windows with such a title: number and place in pixels of the display.
export async function timCacCuaSo(ten) {
  const cac = (await chayXong('may', 'xdotool', 'search', '--onlyvisible', '--name', ten)).trim().split('\n');
  return Promise.all(cac.map(async (id) => {
    const hinh = await chayXong('may', 'xdotool', 'getwindowgeometry', '--shell', id);
    const so = (nhan) => Number(new RegExp(`^${nhan}=(-?\\d+)`, 'm').exec(hinh)[1]);
    return { id, x: so('X'), y: so('Y'), rong: so('WIDTH'), cao: so('HEIGHT') };
  }));
}

export const timCuaSo = async (ten) => (await timCacCuaSo(ten)).at(-1);

// A terminal whose program is `cat` into a file: everything that the terminal sends there can be read afterwards.
// With `chuot` it reports button presses, drags and the wheel in the SGR form (code; column; row, M pressed, m released).
export class OGo {
  static async mo({ ten, tep, viTri, chuot = false }) {
    const o = new OGo();
    o.tep = tep;
    const lenh = chuot ? 'stty raw -echo; printf "\\033[?1002h\\033[?1006h"; exec cat >"$0"' : 'exec cat >"$0"';
    o.ct = new ChuongTrinh('may', 'xterm', ['-u8', '-T', ten, '-geometry', `60x12${viTri}`, '-fa', 'DejaVu Sans Mono', '-fs', '10', '-e', 'sh', '-c', lenh, tep],
      { moiTruong: { LC_ALL: 'C.UTF-8' } });
    o.hinh = await cho(`the terminal ${ten}`, () => timCuaSo(ten));
    await cho(`the terminal's program`, () => o.doc().then(() => true));
    return o;
  }

  doc() { return readFile(this.tep, 'utf8'); }

  choChu(mau, han) { return cho(`${mau} in the terminal's file`, async () => mau.exec(await this.doc()), han); }

  tat() { return this.ct.tat(); }
}
