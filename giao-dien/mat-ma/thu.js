// The handshake's letters as text: their shapes, read strictly (every field, no other field, one encoding of each value).
import { DAI_PHAN_TU, DAI_THE } from './cpace.js';
import { sangBase64Url, tuBase64Url } from './tien-ich.js';
import { laVanTay } from './van-tay.js';

export const DAI_TOI_DA = 65536; // characters; the rendezvous server carries no more
export const DAI_NGAU = 16;
export const SO_MAT_KHAU = 2; // this opening's and a lasting one

// Each reader gives the value that the machines use, or null.
const bytes = (dai) => (v) => {
  const ra = tuBase64Url(v);
  return ra !== null && ra.length === dai ? ra : null;
};
const cacBytes = (dai) => (v) => {
  if (!Array.isArray(v) || v.length < 1 || v.length > SO_MAT_KHAU) return null;
  const ra = v.map(bytes(dai));
  return ra.includes(null) ? null : ra;
};
const so = (it, nhieu) => (v) => (Number.isInteger(v) && v >= it && v <= nhieu ? v : null);
const vanTay = (v) => (laVanTay(v) ? v : null);

const HINH = new Map(Object.entries({
  1: { n: bytes(DAI_NGAU) },
  2: { n: bytes(DAI_NGAU), muoi: cacBytes(DAI_NGAU) },
  3: { y: cacBytes(DAI_PHAN_TU), vt: vanTay },
  4: { y: cacBytes(DAI_PHAN_TU), vt: vanTay },
  5: { t: cacBytes(DAI_THE) },
  6: { i: so(0, SO_MAT_KHAU - 1), t: bytes(DAI_THE) },
  7: { d: tuBase64Url },
  khoa: { giay: so(1, 3600) },
  sai: { con: so(0, 100) },
}));

// { b, …fields } with byte strings decoded, or null.
export function docThu(chu) {
  let tho;
  try {
    tho = JSON.parse(chu);
  } catch {
    return null;
  }
  if (tho === null || typeof tho !== 'object' || Array.isArray(tho)) return null;
  const hinh = typeof tho.b === 'number' || tho.b === 'khoa' || tho.b === 'sai' ? HINH.get(String(tho.b)) : undefined;
  if (hinh === undefined || Object.keys(tho).length !== Object.keys(hinh).length + 1) return null;
  const ra = { b: tho.b };
  for (const [ten, doc] of Object.entries(hinh)) {
    ra[ten] = Object.hasOwn(tho, ten) ? doc(tho[ten]) : null;
    if (ra[ten] === null) return null;
  }
  return ra;
}

const sangChu = (v) => (ArrayBuffer.isView(v) ? sangBase64Url(v) : Array.isArray(v) ? v.map(sangChu) : v);
export const vietThu = (thu) => JSON.stringify(Object.fromEntries(Object.entries(thu).map(([k, v]) => [k, sangChu(v)])));
