// What events may hold. Each checker answers the code of the refusal, or empty.

export const PB = 1;
export const TIN_DAI_NHAT = 65_536; // characters of one letter

const MA = /^\d{9}$/;
const THE = /^[0-9a-f]{64}$/;
const PHIEN = /^[A-Za-z0-9_-]{22}$/;

const laChu = (t) => typeof t === 'string';

function kiemPb(d) {
  if (!Number.isInteger(d.pb)) return 'sai_dang';
  return d.pb === PB ? '' : 'phien_ban';
}

const CAC_KIEM = {
  'may:mo': (d) => kiemPb(d) || (laChu(d.ma) && (d.ma === '' || MA.test(d.ma)) && laChu(d.the) && THE.test(d.the) ? '' : 'sai_dang'),
  'may:dong': () => '',
  'khach:goi': (d) => kiemPb(d) || (laChu(d.ma) && MA.test(d.ma) ? '' : 'sai_dang'),
  'phien:tin': (d) => {
    if (!laChu(d.phien) || !PHIEN.test(d.phien) || !laChu(d.tin)) return 'sai_dang';
    return d.tin.length <= TIN_DAI_NHAT ? '' : 'qua_lon';
  },
  'phien:dong': (d) => (laChu(d.phien) && PHIEN.test(d.phien) ? '' : 'sai_dang'),
};

export const CAC_SU_KIEN = Object.keys(CAC_KIEM);

// `may:dong` needs no fields; a page may leave its object out.
export function kiemTin(su, d) {
  if (su === 'may:dong') return '';
  if (d === null || typeof d !== 'object' || Array.isArray(d)) return 'sai_dang';
  return CAC_KIEM[su](d);
}

const LOI = {
  sai_dang: 'malformed',
  phien_ban: 'unknown version',
  khong_co_may: 'nobody with that code',
  khong_co_phien: 'no such session',
  qua_nhieu: 'too many, try later',
  qua_lon: 'too large',
};

export const tuChoi = (code, cho) => ({ ok: false, code, error: LOI[code], ...(cho ? { cho } : {}) });
