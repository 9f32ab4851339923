import assert from 'node:assert/strict';
import test from 'node:test';
import { datDau, doc, docBang, html, kichBanTrang, napKichBan, nguonTrang } from './trang.mjs';

const { TvNgonNgu } = napKichBan({}, 'i18n.js');
const CAC_MA = Object.keys(TvNgonNgu.TEN);
const bangVi = docBang('vi');

// A text's forms: one, or one for each plural category.
const cacDang = (muc) => (typeof muc === 'string' ? [muc] : Object.values(muc));
const choTrong = (van) => [...van.matchAll(/\{(\w+)\}/g)].map((m) => m[1]).sort().join();

test('the fifteen languages are those that the host serves', () => {
  assert.deepEqual(CAC_MA, ['vi', 'en', 'zh', 'ja', 'ko', 'th', 'lo', 'ru', 'id', 'es', 'pt', 'tr', 'pl', 'ro', 'fil']);
});

for (const ma of CAC_MA) {
  test(`${ma}: same keys, same placeholders, every plural form`, () => {
    const bang = docBang(ma);
    assert.deepEqual(Object.keys(bang).sort(), Object.keys(bangVi).sort());
    for (const [khoa, muc] of Object.entries(bang)) {
      const mau = choTrong(cacDang(bangVi[khoa])[0]);
      for (const dang of cacDang(muc)) {
        assert.ok(dang.trim() !== '', khoa);
        assert.equal(choTrong(dang), mau, khoa);
      }
      assert.equal(typeof muc, typeof bangVi[khoa], khoa);
      if (typeof muc === 'object') {
        assert.deepEqual(Object.keys(muc).sort(), new Intl.PluralRules(ma).resolvedOptions().pluralCategories.sort(), khoa);
      }
    }
  });
}

// What reads the same in two languages because it is the same: numbers everywhere, and words that a language shares with
// English. Whatever else equals another language's text was forgotten.
const CHI_SO = ['man.muc', 'guiTep.dangGui'];
const NHU_ANH = {
  es: ['xem.netTuDong'],
  pt: ['xem.netTuDong'],
  pl: ['xem.netTuDong'],
  ro: ['xem.netTuDong', 'xem.bangTam', 'bang.chu'],
  fil: ['xem.netTuDong', 'man.tieuDe', 'goi.matKhau', 'xem.manHinh', 'xem.banPhim', 'xem.bangTam', 'sk.bang'],
};

test('a language is a translation, not a copy of Vietnamese or English', () => {
  for (const ma of CAC_MA) {
    const bang = docBang(ma);
    for (const [goc, duocGiong] of [['vi', []], ['en', NHU_ANH[ma] ?? []]].filter(([m]) => m !== ma)) {
      const bangGoc = docBang(goc);
      const giong = Object.keys(bang).filter((k) => cacDang(bang[k]).some((dang) => cacDang(bangGoc[k]).includes(dang)));
      assert.deepEqual(giong.filter((k) => !CHI_SO.includes(k) && !duocGiong.includes(k)), [], `${ma} as ${goc}`);
      assert.deepEqual(duocGiong.filter((k) => !giong.includes(k)), [], `${ma}: no longer as ${goc}`);
    }
  }
});

test('every key that the page uses exists, every key that exists is used, the markup says what vi.json says', () => {
  const trongThe = [...html.matchAll(/data-i18n="([^"]+)"[^>]*>([^<]*)</g)].map(([, khoa, van]) => [khoa, van]);
  const trongThuoc = [...html.matchAll(/(\w[\w-]*)="([^"]*)" data-i18n-attr="\1:([^"]+)"/g)].map(([, , van, khoa]) => [khoa, van]);
  assert.ok(trongThe.length > 20 && trongThuoc.length > 0);
  for (const [khoa, van] of [...trongThe, ...trongThuoc]) assert.equal(van, bangVi[khoa], khoa);
  const trongKichBan = [...nguonTrang().matchAll(/'([a-zA-Z]+\.[a-zA-Z]+)'/g)].map((m) => m[1]).filter((k) => !k.endsWith('.json'));
  const dung = new Set([...trongThe, ...trongThuoc].map(([k]) => k).concat(trongKichBan));
  assert.deepEqual([...dung].sort(), Object.keys(bangVi).sort());
});

test('choosing among what a browser asks for', () => {
  const cac = [
    [['en-GB'], 'en'], [['zh-Hant-TW', 'en'], 'zh'], [['xx', 'pt_BR'], 'pt'], [['tl'], 'fil'], [['in-ID'], 'id'],
    [['xx'], 'vi'], [[], 'vi'], [undefined, 'vi'], [['constructor'], 'vi'],
  ];
  for (const [the, cho] of cac) assert.equal(TvNgonNgu.chonMa(the), cho, String(the));
});

test('parameters are put in once, and a value is never expanded', () => {
  assert.equal(TvNgonNgu.thay('{a} {b} {c}', { a: '{b}', b: '$&' }), '{b} $& {c}');
});

test('plurals follow the language, a missing text falls back to Vietnamese, an unknown key shows itself', async () => {
  const bang = {
    vi: { tep: { other: '{n} tệp' }, rieng: 'chỉ có ở đây' },
    ru: { tep: { one: '{n} файл', few: '{n} файла', many: '{n} файлов', other: '{n} файла' } },
  };
  const nn = TvNgonNgu.tao(async (duong) => bang[duong.slice(6, -5)]);
  assert.equal(await nn.nap('ru'), 'ru');
  assert.deepEqual([1, 3, 5, 21].map((n) => nn.chu('tep', { n })), ['1 файл', '3 файла', '5 файлов', '21 файл']);
  assert.equal(nn.chu('rieng'), 'chỉ có ở đây');
  assert.equal(nn.chu('khong.co'), 'khong.co');
});

test('a language that cannot be loaded leaves the one before; of two loads the last asked for wins', async () => {
  const cho = {};
  const nn = TvNgonNgu.tao((duong) => new Promise((duoc, hong) => { cho[duong.slice(6, -5)] = { duoc, hong }; }));
  const mot = nn.nap('en');
  cho.vi.duoc({ a: 'vi' });
  const hai = nn.nap('pl');
  await new Promise(setImmediate);
  cho.pl.duoc({ a: 'pl' });
  await hai;
  cho.en.duoc({ a: 'en' });
  await mot;
  assert.equal(nn.chu('a'), 'pl');
  const ba = nn.nap('th');
  cho.th.hong(new Error());
  assert.equal(await ba, 'pl');
  assert.equal(nn.chu('a'), 'pl');
});

test('the policy names exactly the inline script and style', () => {
  assert.equal(html.match(/Content-Security-Policy" content="([^"]+)"/)[1], datDau(html).match(/Content-Security-Policy" content="([^"]+)"/)[1]);
  assert.doesNotMatch(html, /\son\w+="|\sstyle="|<a\s|unsafe-/); // neither is allowed by it, and a link would leave the window
  assert.doesNotMatch(kichBanTrang() + doc('i18n.js'), /innerHTML|confirm\(|prompt\(/);
});
