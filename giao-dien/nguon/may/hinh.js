const MO_LAI = 1500; // ms before a picture that broke off is opened again

// The picture as this machine's own person sees it. The stream never ends by itself, and engines keep reading it for an
// image that is merely detached: the image lives in a frame of its own, which takes its connections along when removed.
export function taoHinh(san, doi) {
  let duong = '';
  let khung = null;
  let anh = null;
  let hen = 0;
  let tinh = 'dangMo';

  function doiTinh(moi) {
    tinh = moi;
    doi();
  }

  function tao() {
    tinh = 'dangMo';
    khung = document.createElement('iframe');
    khung.tabIndex = -1;
    san.append(khung);
    const trong = khung.contentDocument;
    anh = trong.createElement('img');
    anh.onload = () => doiTinh('coHinh');
    anh.onerror = hong;
    Object.assign(trong.body.style, { margin: '0', overflow: 'hidden', background: 'transparent' });
    Object.assign(anh.style, { display: 'block', width: '100vw', height: '100vh', objectFit: 'contain' });
    trong.body.append(anh);
    anh.src = duong;
  }

  // The address is tried for as long as the host names it.
  function hong() {
    go();
    hen = setTimeout(() => {
      if (duong) tao();
      doi();
    }, MO_LAI);
    doiTinh('matHinh');
  }

  function go() {
    clearTimeout(hen);
    if (!khung) return;
    anh.onload = anh.onerror = null;
    anh.src = '';
    anh.remove();
    khung.remove();
    khung = anh = null;
  }

  return {
    get duong() { return duong; },
    get tinh() { return khung ? tinh : duong ? 'matHinh' : 'dong'; },
    // An empty address closes.
    mo(moi) {
      if (moi === duong) return;
      go();
      duong = moi;
      if (duong) tao();
    },
    datTen(ten) {
      if (khung) khung.title = anh.alt = ten;
    },
  };
}
