// CRC-32 as in Ethernet and zip (reflected polynomial 0xEDB88320), which STUN's fingerprint is made of.

const BANG = Uint32Array.from({ length: 256 }, (_, n) => {
  for (let k = 0; k < 8; k++) n = n & 1 ? 0xedb88320 ^ (n >>> 1) : n >>> 1;
  return n;
});

export function crc32(byte) {
  let c = 0xffffffff;
  for (const b of byte) c = BANG[(c ^ b) & 0xff] ^ (c >>> 8);
  return ~c >>> 0;
}
