// A text from elsewhere as it may be shown: one line, no control or direction characters.
export const motDong = (chu) => String(chu).replace(/[\p{C}\p{Zl}\p{Zp}]+/gu, ' ').trim();
