// What a person is told about a call: the state that it is in, and why it ended. Keys of texts with their parameters; pure.

export const CHU_TINH = Object.freeze({
  goi: 'goi.dangGoi', 'bat-tay': 'goi.dangKiem', cho: 'goi.choNguoi', noi: 'goi.dangNoi', yeu: 'goi.yeu',
});

const LY = Object.freeze({
  'khong-may-chu': 'ly.khongMayChu',
  'khong-co-may': 'ly.khongCoMay',
  'phien-ban': 'ly.phienBan',
  'qua-nhieu': 'ly.quaNhieu',
  'may-chu': 'ly.mayChu',
  khoa: 'ly.khoa',
  'tu-choi': 'ly.tuChoi',
  gia: 'ly.gia',
  im: 'ly.im',
  'khong-duong': 'ly.khongDuong',
  mat: 'ly.mat',
  'khong-webrtc': 'ly.khongWebrtc',
  toi: 'ly.toi',
});

// What hosts say when they end a session. Anything else is shown as the plain fact.
const LY_MAY = Object.freeze({ dung: 'ly.mayDung', thay: 'ly.mayThay', 'dong-trang': 'ly.mayDong', 'mat-khau': 'ly.mayDoiMatKhau', ban: 'ly.mayBan' });

// [key, parameters] for the end of a session.
export function chuHet(het) {
  if (het.ly === 'sai') return het.con > 0 ? ['ly.sai', { n: het.con }] : ['ly.saiHet', {}];
  if (het.ly === 'ben-kia') return [LY_MAY[het.chu] ?? 'ly.benKia', {}];
  const so = het.ly === 'khoa' ? het.giay : het.cho;
  return [LY[het.ly] ?? 'ly.mayChu', { n: Math.ceil(Number(so) || 60), ma: String(het.ma ?? '') }];
}

// "1:02:03" or "2:03", for how long a session was.
export function docGiay(giay) {
  const hai = (n) => String(n).padStart(2, '0');
  const [gio, phut] = [Math.floor(giay / 3600), Math.floor(giay / 60) % 60];
  return gio ? `${gio}:${hai(phut)}:${hai(giay % 60)}` : `${phut}:${hai(giay % 60)}`;
}
