// The text field behind the picture: input methods, dead keys and the keyboards of phones write into it, and what they
// wrote is typed on the host.
//
// Two ways. `ghep`: what is being composed stays in the field, which the page shows meanwhile, and goes when it is finished
// (a desktop's input method, whose candidates need a place). `song`: every change goes at once, as so many characters
// taken back and so many typed (a phone's keyboard, which composes whole words and corrects them afterwards).

// Something for a phone's Backspace to delete: without it such a keyboard reports nothing in an empty field.
export const DEM = ' '.repeat(16);
const TOI_DA = 400; // characters after which the field is emptied at the next chance

const boDau = (chu) => chu.normalize('NFC');

// Characters as a person counts them: one Backspace each.
function cacKyTu(chu) {
  if (typeof Intl.Segmenter !== 'function') return [...chu];
  return Array.from(new Intl.Segmenter(undefined, { granularity: 'grapheme' }).segment(chu), (p) => p.segment);
}

// How one text becomes the other: characters taken off its end, then text added.
export function soSanh(truoc, sau) {
  const a = cacKyTu(boDau(truoc));
  const b = cacKyTu(boDau(sau));
  let chung = 0;
  while (chung < a.length && chung < b.length && a[chung] === b[chung]) chung++;
  return { xoa: a.length - chung, them: b.slice(chung).join('') };
}

// o: { value, setSelectionRange? }; go(text) types; xoa() presses Backspace; khiGhep(boolean) shows or hides the field.
export function taoOGo({ o, go, xoa, khiGhep = () => {} }) {
  let song = false;
  let dangGhep = false;
  let truoc = '';

  function lamTrong() {
    o.value = truoc = song ? DEM : '';
    if (song) o.setSelectionRange?.(DEM.length, DEM.length);
  }

  function guiDoi() {
    const doi = soSanh(truoc, o.value);
    truoc = o.value;
    for (let i = 0; i < doi.xoa; i++) xoa();
    if (doi.them) go(doi.them);
    if (!dangGhep && (truoc.length > TOI_DA || truoc.length < DEM.length / 2 || /\n/.test(truoc))) lamTrong();
  }

  function guiXong() {
    const chu = o.value;
    lamTrong();
    if (chu) go(chu);
  }

  return Object.freeze({
    datSong(bat) {
      song = bat;
      lamTrong();
    },
    // The handlers of the events of the same names.
    compositionstart() {
      dangGhep = true;
      if (!song) khiGhep(true);
    },
    compositionend() {
      dangGhep = false;
      if (song) guiDoi();
      else {
        guiXong();
        khiGhep(false);
      }
    },
    input() {
      if (song) guiDoi();
      else if (!dangGhep) guiXong();
    },
    huy() {
      if (dangGhep && !song) khiGhep(false);
      dangGhep = false;
      lamTrong();
    },
    get dangGhep() { return dangGhep; },
  });
}
