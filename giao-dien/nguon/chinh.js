// The page: two roles under one head. Which one a person sees first depends on where the page was opened.
import { $, khi } from './chung/trang.js';
import { taoBaoTin } from './chung/tin.js';
import { taoVan } from './chung/van.js';
import { taoVe } from './chung/ve.js';
import { taoKhach } from './khach/khach.js';
import { taoMay } from './may/may.js';

const tv = window.tovira || null;
const kho = TvKho.tao(window);
const ve = taoVe();
const van = taoVan({ kho, tv, khiDoi: veChu });
const baoTin = taoBaoTin(van.chu);
const may = taoMay({ tv, van, kho, ve, baoTin, io: window.io, ban: () => khach.dangDung });
const khach = taoKhach({ goc: $('phan-khach'), chu: van.chu, kho, io: window.io, baoTin, tv });

function veChu() {
  may.veChu();
  khach.veChu();
  ve.lai();
}

function chuyen(vai) {
  may.khiHien(vai === 'may');
  $('phan-khach').hidden = vai !== 'khach';
  khach.khiHien(vai === 'khach');
  $('ve-may').setAttribute('aria-pressed', String(vai === 'may'));
  $('ve-khach').setAttribute('aria-pressed', String(vai === 'khach'));
}

khi('ve-may', () => chuyen('may'));
khi('ve-khach', () => chuyen('khach'));
chuyen(tv ? 'may' : 'khach');
ve.lai();
may.batDau(van.khoiDong(baoTin));
