// Where received files go: the receiving endpoint of an open folder, or a download.
const CHO_TAI = 10 * 60 * 1000; // ms until a download that the host says nothing about counts as lost
const GIU_BLOB = 60 * 1000; // ms that a saved blob's address stays

// A path in one name: a download has no folders.
export const tenTai = (duong) => duong.split('/').filter(Boolean).join('_');

// Whether a download's name on disk is that of the one asked for: engines replace characters and shorten, the host numbers.
const SO_SANH = 24; // letters and digits compared
const gon = (ten) => ten.normalize('NFKC').toLowerCase().replace(/[^\p{L}\p{N}]+/gu, '');
export const cungTen = (xin, den) => gon(den).startsWith(gon(xin.replace(/\.[^.]*$/, '')).slice(0, SO_SANH));

// thuMuc() gives { goc, cong, biMat } of the open folder or null; khiGhi(folder, name) is called for each file written there.
export function taoLuuTep({ thuMuc, khiGhi }) {
  let truoc = Promise.resolve(); // downloads go one after the other, so that the host's word belongs to the right one
  let choHost = null;
  let tenCho = ''; // the name that choHost waits for

  async function ghi(duong, blob) {
    const { goc, cong, biMat } = thuMuc();
    const dap = await fetch(`http://127.0.0.1:${cong}/ghi?k=${biMat}`, {
      method: 'POST',
      headers: { 'X-Duong': TvMaHoa.sangBase64(TvMaHoa.sangUtf8(duong)), 'Content-Type': 'application/octet-stream' },
      body: blob,
    });
    if (!dap.ok) return dap.status === 400 ? 'nhanTep.duong' : 'nhanTep.khongLuu';
    const manh = duong.split('/').filter(Boolean);
    const ten = manh.pop();
    khiGhi([goc, ...manh].join('/'), ten);
    return '';
  }

  function taiMot(duong, blob) {
    return new Promise((xong) => {
      const dia = URL.createObjectURL(blob);
      const ket = (ly) => {
        if (choHost !== ket) return;
        choHost = null;
        clearTimeout(hen);
        setTimeout(() => URL.revokeObjectURL(dia), GIU_BLOB);
        xong(ly);
      };
      choHost = ket;
      tenCho = tenTai(duong);
      const hen = setTimeout(() => ket('nhanTep.khongLuu'), CHO_TAI);
      const lienKet = document.createElement('a');
      lienKet.href = dia;
      lienKet.download = tenCho;
      document.body.append(lienKet);
      lienKet.click();
      lienKet.remove();
    });
  }

  return {
    ghi,
    tai(duong, blob) {
      const viec = truoc.then(() => taiMot(duong, blob));
      truoc = viec.catch(() => {});
      return viec;
    },
    // The host's word about a download; it may be one that this person made.
    khiDaTai: (ten) => { if (cungTen(tenCho, ten)) choHost?.(''); },
    khiTaiHong: () => choHost?.('nhanTep.khongLuu'),
  };
}
