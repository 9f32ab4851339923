import { taoTachMjpeg } from './tach-mjpeg.js';

const CHO_ANH_DAU = 4000; // ms for the first picture before the other way is tried
const NHIP_ANH = 80; // ms between looks at an image that does not say when it has changed

// Two ways to read the host's stream. Each takes the address and khi: { hinh(source, width, height), het(reason) };
// hinh takes the picture (an ImageBitmap) over. Each answers a function that ends it.

// By fetch: each picture is decoded off the main thread, and while one is being decoded only the newest is kept.
export function docBangFetch(duong, khi) {
  const ngung = new AbortController();
  let dangGiai = false;
  let moiNhat = null;
  let xong = false;

  function het(ly) {
    if (xong) return;
    xong = true;
    clearTimeout(hen);
    ngung.abort();
    khi.het(ly);
  }
  const hen = setTimeout(() => het('khong-hinh'), CHO_ANH_DAU);

  async function giai(anh) {
    moiNhat = anh;
    if (dangGiai) return;
    dangGiai = true;
    while (moiNhat && !xong) {
      const nay = moiNhat;
      moiNhat = null;
      try {
        const hinh = await createImageBitmap(new Blob([nay], { type: 'image/jpeg' }));
        clearTimeout(hen);
        if (xong) hinh.close();
        else khi.hinh(hinh, hinh.width, hinh.height);
      } catch { /* a picture that cannot be read is left out; the next one follows */ }
    }
    dangGiai = false;
  }

  async function doc() {
    const dap = await fetch(duong, { signal: ngung.signal, cache: 'no-store', credentials: 'omit' });
    if (!dap.ok || !dap.body) return het('khong-mo');
    const tach = taoTachMjpeg(giai);
    const nguon = dap.body.getReader();
    for (;;) {
      const { done, value } = await nguon.read();
      if (done) return het('het');
      tach.nhan(value);
    }
  }

  doc().catch(() => het('loi'));
  return () => {
    xong = true;
    clearTimeout(hen);
    ngung.abort();
  };
}

// By an image in a frame of its own, which takes its connection along when it is removed. The host lets any origin read
// the picture, so a canvas that it is drawn on may be captured.
export function docBangAnh(duong, khi) {
  const khung = document.createElement('iframe');
  khung.tabIndex = -1;
  khung.setAttribute('aria-hidden', 'true');
  khung.className = 'khuat';
  document.body.append(khung);
  const anh = khung.contentDocument.createElement('img');
  anh.crossOrigin = 'anonymous';
  khung.contentDocument.body.append(anh);
  let dangChup = false;
  let xong = false;
  const nhip = setInterval(async () => {
    if (dangChup || !anh.naturalWidth) return;
    dangChup = true;
    try {
      const hinh = await createImageBitmap(anh);
      if (xong) hinh.close();
      else khi.hinh(hinh, hinh.width, hinh.height);
    } catch { /* between two pictures */ }
    dangChup = false;
  }, NHIP_ANH);
  const hen = setTimeout(() => { if (!anh.naturalWidth) hong('khong-hinh'); }, CHO_ANH_DAU);
  function go() {
    xong = true;
    clearInterval(nhip);
    clearTimeout(hen);
    anh.onerror = null;
    anh.src = '';
    khung.remove();
  }
  function hong(ly) {
    go();
    khi.het(ly);
  }
  anh.onerror = () => hong('loi');
  anh.src = duong;
  return go;
}
