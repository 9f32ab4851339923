// The connection's health out of RTCPeerConnection.getStats(). Pure: reports in, numbers out.

const RIENG = [/^10\./, /^127\./, /^192\.168\./, /^169\.254\./, /^172\.(1[6-9]|2\d|3[01])\./, /^::1$/, /^f[cd]/i, /^fe[89ab]/i, /\.local$/i];
const laRieng = (dia) => RIENG.some((mau) => mau.test(dia ?? ''));

function capDangDung(bang) {
  for (const s of bang.values()) {
    if (s.type === 'transport' && s.selectedCandidatePairId) return bang.get(s.selectedCandidatePairId);
  }
  // Firefox has no transport report, but marks the pair.
  for (const s of bang.values()) if (s.type === 'candidate-pair' && (s.selected || (s.nominated && s.state === 'succeeded'))) return s;
  return undefined;
}

// 'thang': no address translation in between; 'nat': through one; 'chuyen': through a relay, which nobody here sets up; '': not told.
export function loaiDuong(gan, xa) {
  if (!gan || !xa) return '';
  if (gan.candidateType === 'relay' || xa.candidateType === 'relay') return 'chuyen';
  const cac = [gan.candidateType, xa.candidateType];
  const dia = xa.address ?? xa.ip;
  if (laRieng(dia) || cac.every((loai) => loai === 'host')) return 'thang';
  // Engines keep the address of a side that was only heard of by its packets to themselves.
  return dia || cac.includes('srflx') ? 'nat' : '';
}

// bang: a Map of reports (RTCStatsReport is one); truoc: what this gave the time before, or null.
export function docSucKhoe(bang, truoc = null) {
  let hinh = null;
  for (const s of bang.values()) if (s.type === 'inbound-rtp' && (s.kind ?? s.mediaType) === 'video') hinh = s;
  const cap = capDangDung(bang);
  const gan = bang.get(cap?.localCandidateId);
  const xa = bang.get(cap?.remoteCandidateId);
  const luc = hinh?.timestamp ?? 0;
  const byte = hinh?.bytesReceived ?? 0;
  const soKhung = hinh?.framesDecoded ?? 0;
  const giay = truoc && luc > truoc.luc ? (luc - truoc.luc) / 1000 : 0;
  const nhip = (moi, cu) => (giay ? Math.max(0, moi - cu) / giay : null);
  const daChieu = (hinh?.jitterBufferEmittedCount ?? 0) - (truoc?.daChieu ?? 0);
  const daCho = (hinh?.jitterBufferDelay ?? 0) - (truoc?.daCho ?? 0);
  return {
    luc, byte, soKhung,
    daChieu: hinh?.jitterBufferEmittedCount ?? 0, daCho: hinh?.jitterBufferDelay ?? 0,
    khungMoiGiay: nhip(soKhung, truoc?.soKhung ?? 0),
    bitMoiGiay: giay ? nhip(byte, truoc.byte) * 8 : null,
    rong: hinh?.frameWidth ?? 0, cao: hinh?.frameHeight ?? 0,
    maHoa: (bang.get(hinh?.codecId)?.mimeType ?? '').replace(/^video\//i, ''),
    dem: giay && daChieu > 0 ? (daCho / daChieu) * 1000 : null, // ms that a frame waits in the jitter buffer
    mat: hinh?.packetsLost ?? 0,
    rtt: Number.isFinite(cap?.currentRoundTripTime) ? cap.currentRoundTripTime * 1000 : null,
    duong: loaiDuong(gan, xa),
  };
}

// The round trip of the pages themselves: the median of the last answers, in ms.
export function taoNhip({ gui, luc }) {
  const dangBay = new Map();
  const gan = [];
  let so = 0;
  return Object.freeze({
    dap(s) {
      if (!dangBay.has(s)) return;
      gan.push(luc() - dangBay.get(s));
      dangBay.delete(s);
      if (gan.length > 7) gan.shift();
    },
    danh() {
      so += 1;
      dangBay.set(so, luc());
      if (dangBay.size > 20) dangBay.delete(dangBay.keys().next().value);
      gui({ l: 'nhip', s: so });
    },
    get ms() { return gan.length ? [...gan].sort((a, b) => a - b)[gan.length >> 1] : null; },
    // ms since the oldest beat that nobody has answered; 0 when all are.
    get im() {
      const dau = dangBay.values().next();
      return dau.done ? 0 : luc() - dau.value;
    },
  });
}
