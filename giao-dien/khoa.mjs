// Brings the keys of every language in line with vi.json: missing ones get the English text until they are translated,
// those that vi.json does not have go, the order is vi.json's. New texts are written into vi.json and en.json by hand.
//   node giao-dien/khoa.mjs
import { readFileSync, readdirSync, writeFileSync } from 'node:fs';

const thuMuc = new URL('../resources/giao-dien/i18n/', import.meta.url);
const doc = (ma) => JSON.parse(readFileSync(new URL(`${ma}.json`, thuMuc), 'utf8'));

// A plural in the forms that the language has.
function hopDang(muc, ma) {
  if (typeof muc === 'string') return muc;
  const cac = new Intl.PluralRules(ma).resolvedOptions().pluralCategories;
  return Object.fromEntries(cac.map((c) => [c, muc[c] ?? muc.other]));
}

function viet(bang) {
  const dong = Object.entries(bang).map(([khoa, muc]) => `  ${JSON.stringify(khoa)}: ${JSON.stringify(muc).replace(/","/g, '", "').replace(/":"/g, '": "')}`);
  return `{\n${dong.join(',\n')}\n}\n`;
}

const [vi, en] = [doc('vi'), doc('en')];
for (const tep of readdirSync(thuMuc)) {
  const ma = tep.slice(0, -5);
  const cu = doc(ma);
  const thieu = [];
  const moi = Object.fromEntries(Object.keys(vi).map((khoa) => {
    if (khoa in cu) return [khoa, cu[khoa]];
    thieu.push(khoa);
    if (!(khoa in en)) throw new Error(`en.json: ${khoa}`);
    return [khoa, hopDang(en[khoa], ma)];
  }));
  writeFileSync(new URL(tep, thuMuc), viet(moi));
  if (thieu.length > 0) console.log(`${ma}: ${thieu.length} texts to translate`);
}
