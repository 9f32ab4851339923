// Puts the page together: markup, styles and one script from nguon/, and the policy with the digests of what is inline.
import { createHash } from 'node:crypto';
import { readFileSync } from 'node:fs';
import { fileURLToPath } from 'node:url';

const day = fileURLToPath(new URL('.', import.meta.url));
const doc = (ten) => readFileSync(new URL(`nguon/${ten}`, import.meta.url), 'utf8');
const KIEU = ['nen.css', 'may.css', 'khach.css']; // in this order

const dau = (van) => createHash('sha256').update(van, 'utf8').digest('base64');

// The text of app.html. A place of the markup is a comment with its name, there exactly once.
export async function dongTrang(build) {
  const kq = await build({
    absWorkingDir: day,
    entryPoints: ['nguon/chinh.js'],
    bundle: true,
    format: 'iife',
    platform: 'browser',
    target: ['chrome90', 'safari15'],
    charset: 'utf8',
    legalComments: 'none',
    write: false,
  });
  const kichBan = `\n${kq.outputFiles[0].text}`;
  const kieu = `\n${KIEU.map((ten) => doc(`kieu/${ten}`)).join('')}`;
  const dat = { 'khách': doc('khach.html').trimEnd(), 'kịch bản': kichBan, 'kiểu': kieu, 'dấu kịch bản': dau(kichBan), 'dấu kiểu': dau(kieu) };
  return doc('khung.html').replace(/<!-- (.+?) -->/g, (ca, ten) => {
    if (!(ten in dat)) throw new Error(`khung.html: ${ca}`);
    return dat[ten];
  });
}
