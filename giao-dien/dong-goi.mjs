// Builds the files of resources/giao-dien that have sources here, and with --kiem only compares: 1 when a committed file
// is not what the sources give, 77 when the packages are not installed.
//   node giao-dien/dong-goi.mjs [--kiem]
import { existsSync, readFileSync, writeFileSync } from 'node:fs';
import { fileURLToPath } from 'node:url';
import { dongTrang } from './trang.mjs';

const day = fileURLToPath(new URL('.', import.meta.url));
const den = new URL('../resources/giao-dien/', import.meta.url);
const GOC_GOI = 'node_modules/';

if (!existsSync(`${day}${GOC_GOI}esbuild`)) {
  console.error('The packages are not installed: ./cai-dat.sh, or npm ci --prefix giao-dien');
  process.exit(77);
}
const { build } = await import('esbuild');

// The files to build: a name in resources/giao-dien and what gives its text.
const KET_QUA = [
  { ten: 'crypto.js', tao: () => dongKichBan('mat-ma/chinh.js') },
  { ten: 'app.html', tao: () => dongTrang(build) },
];

// One classic script that the oldest supported engines run, readable, with the licences of what is in it.
async function dongKichBan(nguon) {
  const kq = await build({
    absWorkingDir: day,
    entryPoints: [nguon],
    bundle: true,
    format: 'iife',
    platform: 'browser',
    target: ['chrome90', 'safari15'],
    charset: 'utf8',
    legalComments: 'none', // the whole licences stand at the top
    metafile: true,
    write: false,
  });
  return `// Built from giao-dien/mat-ma by giao-dien/dong-goi.mjs; change it there.\n${vietGiayPhep(kq.metafile)}${kq.outputFiles[0].text}`;
}

// The packages that gave bytes to the bundle, by name, each with its licence.
function vietGiayPhep(meta) {
  const [ra] = Object.values(meta.outputs);
  const cac = new Set();
  for (const [tep, { bytesInOutput }] of Object.entries(ra.inputs)) {
    if (bytesInOutput > 0 && tep.startsWith(GOC_GOI)) cac.add(tep.slice(GOC_GOI.length).match(/^(?:@[^/]+\/)?[^/]+/)[0]);
  }
  const khoi = [...cac].sort().map((ten) => {
    const goi = JSON.parse(readFileSync(`${day}${GOC_GOI}${ten}/package.json`, 'utf8'));
    const chu = readFileSync(`${day}${GOC_GOI}${ten}/LICENSE`, 'utf8').replace(/\r/g, '').trim();
    return `${ten} ${goi.version}\n\n${chu}\n`;
  });
  return `/*\n${khoi.join('\n----\n\n')}*/\n`.replace(/[ \t]+$/gm, '');
}

const kiem = process.argv.includes('--kiem');
let lech = 0;
for (const { ten, tao } of KET_QUA) {
  const moi = await tao();
  const tep = new URL(ten, den);
  const cu = existsSync(tep) ? readFileSync(tep, 'utf8') : null;
  if (moi === cu) continue;
  if (kiem) {
    lech += 1;
    console.error(`resources/giao-dien/${ten} is not what its sources give: node giao-dien/dong-goi.mjs`);
  } else {
    writeFileSync(tep, moi);
    console.log(`resources/giao-dien/${ten}`);
  }
}
process.exitCode = lech > 0 ? 1 : 0;
