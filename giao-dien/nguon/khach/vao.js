// The form where a call begins, and the machines that were called before.
import { $, khi, taoNut, taoThe } from '../chung/trang.js';
import { chiaMa, docMa, taoMayCu } from './may-cu.js';

// Where a machine's address was typed without a scheme: what is plainly on this network speaks http, the rest https.
export function docDiaChi(chu) {
  const dia = chu.trim().replace(/\/+$/, '');
  if (!dia || /^https?:\/\//i.test(dia)) return dia;
  return `${/^(localhost|[\d.]+|\[[\da-f:]+\]|[^./:]+|[^/:]+\.local)(:\d+)?(\/|$)/i.test(dia) ? 'http' : 'https'}://${dia}`;
}

// khiGoi({ ma, matKhau, ten, diaChi }); canDiaChi: this page comes from no server, so that one has to be named.
export function taoVao({ chu, kho, canDiaChi, khiGoi }) {
  const mayCu = taoMayCu(kho);

  function baoLoi(van) {
    $('k-loi').hidden = !van;
    $('k-loi').textContent = van;
  }

  function chiaKhiGo() {
    const o = $('k-ma');
    const so = docMa(o.value.slice(0, o.selectionStart ?? o.value.length)).length;
    o.value = chiaMa(o.value);
    const cho = chiaMa(docMa(o.value).slice(0, so)).length;
    if (document.activeElement === o) o.setSelectionRange?.(cho, cho);
  }

  function goi(e) {
    e?.preventDefault();
    const ma = docMa($('k-ma').value);
    const matKhau = $('k-mat').value;
    const diaChi = docDiaChi($('k-dia').value);
    const thieu = (van, o) => {
      baoLoi(van);
      o.focus();
    };
    if (canDiaChi && !diaChi) return thieu(chu('goi.thieuMayChu'), $('k-dia'));
    if (ma.length !== 9) return thieu(chu('goi.saiMa'), $('k-ma'));
    if (!matKhau) return thieu(chu('goi.thieuMatKhau'), $('k-mat'));
    baoLoi('');
    kho.ghi('tenKhach', $('k-ten').value.trim());
    if (canDiaChi) kho.ghi('mayChuKhach', diaChi);
    khiGoi({ ma, matKhau, ten: $('k-ten').value.trim(), diaChi: canDiaChi ? diaChi : undefined });
  }

  function chonMay(ma) {
    $('k-ma').value = chiaMa(ma);
    $('k-mat').value = '';
    $('k-mat').focus();
  }

  function taoMuc({ ma, luc }) {
    const li = taoThe('li');
    const goiLai = taoNut('', () => chonMay(ma), 'k-goi');
    goiLai.append(taoThe('strong', '', chiaMa(ma)), taoThe('span', 'phu', new Date(luc).toLocaleString()));
    const quen = taoNut('✕', () => {
      mayCu.quen(ma);
      ve();
    });
    quen.setAttribute('aria-label', chu('goi.quen', { ma: chiaMa(ma) }));
    li.append(goiLai, quen);
    return li;
  }

  function ve() {
    const ds = mayCu.doc();
    $('k-cu').hidden = ds.length === 0;
    $('k-vao').classList.toggle('k-mot', ds.length === 0);
    $('k-ds').replaceChildren(...ds.map(taoMuc));
    const hien = $('k-mat').type === 'text';
    $('k-hien').textContent = chu(hien ? 'goi.an' : 'goi.hien');
    $('k-hien').setAttribute('aria-pressed', String(hien));
  }

  khi('k-form', goi, 'submit');
  khi('k-ma', chiaKhiGo, 'input');
  khi('k-hien', () => {
    $('k-mat').type = $('k-mat').type === 'text' ? 'password' : 'text';
    ve();
  });
  $('k-o-dia').hidden = !canDiaChi;
  $('k-ten').value = kho.doc('tenKhach', '');
  $('k-dia').value = kho.doc('mayChuKhach', '');

  return Object.freeze({
    ve, baoLoi,
    nho(ma) {
      mayCu.nho(ma, Date.now());
      ve();
    },
    // Back to the form; after a wrong password the next one is typed at once.
    veLai(chonMatKhau) {
      if (!chonMatKhau) return;
      $('k-mat').select?.();
      $('k-mat').focus();
    },
    xoaMatKhau() {
      Object.assign($('k-mat'), { value: '', type: 'password' });
      ve();
    },
  });
}
