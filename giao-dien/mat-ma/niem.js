// Sealed letters: XChaCha20-Poly1305, one key a direction, the nonce being the letter's number. A letter lost, repeated
// or moved does not open.
import { xchacha20poly1305 } from '@noble/ciphers/chacha.js';
import { hkdf } from '@noble/hashes/hkdf.js';
import { sha512 } from '@noble/hashes/sha2.js';
import { sangUtf8, xoaBytes } from './tien-ich.js';

const VAI = ['khach', 'may'];

function soThanhNonce(so) {
  const ra = new Uint8Array(24);
  new DataView(ra.buffer).setBigUint64(0, BigInt(so), true);
  return ra;
}

// vai is the role of this side. Both calls take and give bytes; mo gives null for what does not open.
export function taoNiem(isk, vai) {
  const [gui, nhan] = (vai === VAI[0] ? VAI : [...VAI].reverse()).map((v) => ({
    khoa: hkdf(sha512, isk, undefined, sangUtf8(`tovira-1 ${v}`), 32),
    so: 0,
  }));
  return {
    niem: (bytes) => xchacha20poly1305(gui.khoa, soThanhNonce(gui.so++)).encrypt(bytes),
    mo(bytes) {
      try {
        return xchacha20poly1305(nhan.khoa, soThanhNonce(nhan.so++)).decrypt(bytes);
      } catch {
        return null;
      }
    },
    xoa: () => xoaBytes(gui.khoa, nhan.khoa),
  };
}
