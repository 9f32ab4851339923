// After a call has ended: whether to call again by ourselves, and when. Pure.

const LAN_DAU = 1000;
const LAN_CUOI = 15000; // ms between calls
const SO_LAN = 20; // calls in a row that came to nothing: some four minutes
const CHO_DUONG = 10000; // ms before a path is looked for again
const SO_LAN_DUONG = 30;

// While a session that was live is to be brought back, the host may be reloading, its server restarting.
const TAM_THOI = new Set(['mat', 'khong-may-chu', 'khong-co-may', 'khong-duong', 'im', 'may-chu']);

// het: what the session told; daMo: some session of this call was live; lan: calls in a row that came to nothing.
// Answers ms until the next call, or null: the person decides.
export function sauKhiHet(het, daMo, lan) {
  // Their person is not asked over and over: not again when nobody was there, nor a third time without a session in between.
  // (A host that remembers its person's yes does not ask; see the certificate in khach.js.)
  if (het.daHoi && TAM_THOI.has(het.ly) && (het.ly === 'im' || lan > 0)) return null;
  if (het.ly === 'khong-duong' && !daMo) return lan < SO_LAN_DUONG ? CHO_DUONG : null;
  if (het.ly === 'qua-nhieu' && daMo) return Math.max(1, Number(het.cho) || 10) * 1000;
  if (!daMo || !TAM_THOI.has(het.ly) || lan >= SO_LAN) return null;
  return Math.min(LAN_DAU * 2 ** lan, LAN_CUOI);
}
