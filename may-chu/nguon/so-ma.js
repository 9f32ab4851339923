// Which machine code belongs to whom. A code is bound to the SHA-256 of its host's proof for as long as the host comes back now and
// then, and leads to the one connection that speaks for it at this moment.

export const HAN_CHU = 30 * 24 * 3600_000; // ms: a code whose host stayed away for longer is free again
export const HAN_CO_MAT = 60_000; // ms: a connection that its instance has not confirmed for longer is gone

// In this process's memory.
export class SoMaBoNho {
  #so = new Map(); // code → { bam, sid, luc }, the longest unconfirmed first

  constructor({ dongHo, toiDa = 200_000 }) {
    Object.assign(this, { dongHo, toiDa });
  }

  // Makes `sid` the connection of `ma`, unless the code belongs to another proof: { duoc, cu }, `cu` being the connection that it
  // replaces, or empty.
  async dangKy(ma, bam, sid) {
    const muc = this.#lay(ma);
    if (muc && muc.bam !== bam) return { duoc: false, cu: '' };
    if (!muc && !this.#chuaCho()) return { duoc: false, cu: '' };
    this.#dat(ma, { bam, sid, luc: this.dongHo() });
    return { duoc: true, cu: muc?.sid ?? '' };
  }

  // Confirms that `sid` still is the connection of `ma`; false when another one is.
  async giuCho(ma, bam, sid) {
    const muc = this.#lay(ma);
    if (muc && (muc.bam !== bam || (muc.sid !== '' && muc.sid !== sid))) return false;
    this.#dat(ma, { bam, sid, luc: this.dongHo() });
    return true;
  }

  // The connection of `ma`, or empty.
  async tim(ma) {
    const muc = this.#lay(ma);
    return muc && this.dongHo() - muc.luc < HAN_CO_MAT ? muc.sid : '';
  }

  // `sid` no longer speaks for `ma`; the code stays its host's.
  async nha(ma, sid) {
    const muc = this.#lay(ma);
    if (muc?.sid === sid) this.#dat(ma, { ...muc, sid: '' });
  }

  get soMa() {
    return this.#so.size;
  }

  #lay(ma) {
    const muc = this.#so.get(ma);
    if (!muc || this.dongHo() - muc.luc < HAN_CHU) return muc;
    this.#so.delete(ma);
    return undefined;
  }

  #dat(ma, muc) {
    this.#so.delete(ma);
    this.#so.set(ma, muc);
  }

  // Room for one more: the host that stayed away longest gives way, one that is there never does.
  #chuaCho() {
    if (this.#so.size < this.toiDa) return true;
    for (const [ma, muc] of this.#so) {
      if (muc.sid !== '' && this.dongHo() - muc.luc < HAN_CO_MAT) continue;
      this.#so.delete(ma);
      return true;
    }
    return false;
  }
}

const DANG_KY = `
local bam = redis.call('GET', KEYS[1])
if bam and bam ~= ARGV[1] then return {0, ''} end
local cu = redis.call('GET', KEYS[2]) or ''
if ARGV[5] == 'giu' and cu ~= '' and cu ~= ARGV[2] then return {0, cu} end
redis.call('SET', KEYS[1], ARGV[1], 'PX', ARGV[3])
redis.call('SET', KEYS[2], ARGV[2], 'PX', ARGV[4])
return {1, cu}`;

const NHA = `
if redis.call('GET', KEYS[1]) == ARGV[1] then redis.call('DEL', KEYS[1]) end
return 0`;

// In Redis, for several instances. Each step is one script there, so that two instances cannot both win.
export class SoMaRedis {
  constructor(redis) {
    this.redis = redis;
  }

  async dangKy(ma, bam, sid) {
    const [duoc, cu] = await this.#ghi(ma, bam, sid, 'lay');
    return { duoc: duoc === 1, cu };
  }

  async giuCho(ma, bam, sid) {
    const [duoc] = await this.#ghi(ma, bam, sid, 'giu');
    return duoc === 1;
  }

  async tim(ma) {
    return (await this.redis.get(khoaSid(ma))) ?? '';
  }

  async nha(ma, sid) {
    await this.redis.eval(NHA, { keys: [khoaSid(ma)], arguments: [sid] });
  }

  #ghi(ma, bam, sid, cach) {
    const arguments_ = [bam, sid, String(HAN_CHU), String(HAN_CO_MAT), cach];
    return this.redis.eval(DANG_KY, { keys: [`tovira:{${ma}}:bam`, khoaSid(ma)], arguments: arguments_ });
  }
}

const khoaSid = (ma) => `tovira:{${ma}}:sid`;
