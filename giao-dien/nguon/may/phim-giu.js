// What each session holds down, so that a controller that vanishes leaves no key and no button behind.
const LENH_TOI_DA = 32768; // characters of one command; typed text is at most 4096 bytes of it
const GIU_TOI_DA = 64; // keys and buttons of one session

function docLenh(json) {
  if (typeof json !== 'string' || json.length > LENH_TOI_DA) return null;
  try {
    const lenh = JSON.parse(json);
    return lenh && typeof lenh === 'object' && typeof lenh.t === 'string' ? lenh : null;
  } catch {
    return null;
  }
}

const CAC_NUT = ['right', 'middle']; // any other word means the left one to the host

// gui(json) hands a command to the host.
export function taoPhimGiu(gui) {
  const giu = new Map(); // session -> Map of 'key:KeyA' or 'nut:left' -> the command that ends it
  const choO = (phien) => {
    if (!giu.has(phien)) giu.set(phien, new Map());
    return giu.get(phien);
  };
  const aiGiu = (ten) => [...giu.values()].some((cac) => cac.has(ten));

  function ghiNho(phien, lenh) {
    const cac = choO(phien);
    const chuot = lenh.t.startsWith('mouse_');
    const ten = chuot ? `nut:${CAC_NUT.includes(lenh.button) ? lenh.button : 'left'}` : `key:${lenh.code}`;
    // Whoever moves the pointer takes what it holds along: a release happens where it is then.
    if (chuot) for (const nha of cac.values()) if (nha.t === 'mouse_up') Object.assign(nha, { x: lenh.x, y: lenh.y });
    if (lenh.t === 'mouse_down') cac.set(ten, { t: 'mouse_up', x: lenh.x, y: lenh.y, button: ten.slice(4) });
    if (lenh.t === 'key_down' && typeof lenh.code === 'string') cac.set(ten, { t: 'key_up', code: lenh.code });
    if (lenh.t === 'mouse_up' || lenh.t === 'key_up') cac.delete(ten);
  }

  return {
    // Passes a session's command on; false when it is none.
    nhan(phien, json) {
      const lenh = docLenh(json);
      if (lenh === null) return false;
      if ((lenh.t === 'key_down' || lenh.t === 'mouse_down') && choO(phien).size >= GIU_TOI_DA) return false;
      ghiNho(phien, lenh);
      gui(json);
      return true;
    },
    dangGiu: (phien) => !!giu.get(phien)?.size,
    // Lets go of what this session holds and no other does.
    nha(phien) {
      const cac = giu.get(phien);
      giu.delete(phien);
      for (const [ten, lenh] of cac ?? []) if (!aiGiu(ten)) gui(JSON.stringify(lenh));
    },
    nhaHet() {
      for (const phien of [...giu.keys()]) this.nha(phien);
    },
  };
}
