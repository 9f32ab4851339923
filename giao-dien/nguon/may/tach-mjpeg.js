// Takes a multipart stream of JPEG pictures apart as it arrives. Every byte is copied once, however the pieces fall.
const DAU_TOI_DA = 4096; // bytes of one part's head
const ANH_TOI_DA = 64 * 1024 * 1024; // bytes of one picture

// nhan(bytes) takes the next piece; khiAnh(Uint8Array) is called with each whole picture. A stream that is not what it
// should be throws, and is of no use any more.
export function taoTachMjpeg(khiAnh) {
  let dau = ''; // a part's head so far, while one is being read
  let anh = null; // the picture being filled
  let day = 0; // bytes of it that are there

  // One byte of the head. Four bytes end it: CR LF CR LF.
  function docDau(byte) {
    dau += String.fromCharCode(byte);
    if (dau.length > DAU_TOI_DA) throw new Error('mjpeg: head');
    if (byte !== 10 || !dau.endsWith('\r\n\r\n')) return;
    const dai = Number(/^content-length:[ \t]*(\d{1,9})[ \t]*\r$/im.exec(dau)?.[1]);
    if (!(dai > 0 && dai <= ANH_TOI_DA)) throw new Error('mjpeg: length');
    dau = '';
    anh = new Uint8Array(dai);
    day = 0;
  }

  return {
    nhan(bytes) {
      let i = 0;
      while (i < bytes.length) {
        if (anh === null) {
          docDau(bytes[i]);
          i += 1;
          continue;
        }
        const phan = bytes.subarray(i, i + anh.length - day);
        anh.set(phan, day);
        day += phan.length;
        i += phan.length;
        if (day < anh.length) return;
        const xong = anh;
        anh = null;
        khiAnh(xong);
      }
    },
  };
}
