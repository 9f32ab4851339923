// What is known about keys: the names that the host takes, what a US (ANSI) keyboard makes of each, and the chords that
// the special keys menu offers. Plain data.

const CHU_CAI = 'ABCDEFGHIJKLMNOPQRSTUVWXYZ';
const HANG_SO = ')!@#$%^&*(';

// code -> [alone, with Shift] on a US keyboard.
export const BANG_US = Object.freeze(Object.fromEntries([
  ...[...CHU_CAI].map((c) => [`Key${c}`, [c.toLowerCase(), c]]),
  ...[...HANG_SO].map((c, i) => [`Digit${i}`, [String(i), c]]),
  ['Space', [' ', ' ']], ['Minus', ['-', '_']], ['Equal', ['=', '+']], ['BracketLeft', ['[', '{']], ['BracketRight', [']', '}']],
  ['Backslash', ['\\', '|']], ['Semicolon', [';', ':']], ['Quote', ["'", '"']], ['Backquote', ['`', '~']], ['Comma', [',', '<']],
  ['Period', ['.', '>']], ['Slash', ['/', '?']],
]));

const loat = (dau, tu, den) => Array.from({ length: den - tu + 1 }, (_, i) => `${dau}${tu + i}`);

// KeyboardEvent.code names that the host has keys for. Everything else it drops: IntlBackslash, ContextMenu, PrintScreen…
export const MA_MAY_BIET = new Set([
  ...Object.keys(BANG_US), ...loat('F', 1, 12), ...loat('Numpad', 0, 9),
  'Enter', 'Escape', 'Backspace', 'Delete', 'Tab', 'CapsLock', 'NumLock', 'Insert', 'Home', 'End', 'PageUp', 'PageDown',
  'ArrowUp', 'ArrowDown', 'ArrowLeft', 'ArrowRight',
  'ShiftLeft', 'ShiftRight', 'ControlLeft', 'ControlRight', 'AltLeft', 'AltRight', 'MetaLeft', 'MetaRight',
  'NumpadDecimal', 'NumpadMultiply', 'NumpadAdd', 'NumpadSubtract', 'NumpadDivide', 'NumpadEnter', 'NumpadEqual',
]);

// A modifier's code -> the word for it in a command's "modifiers".
export const TU_BO_TRO = Object.freeze({
  ShiftLeft: 'shift', ShiftRight: 'shift', ControlLeft: 'ctrl', ControlRight: 'ctrl',
  AltLeft: 'alt', AltRight: 'alt', MetaLeft: 'meta', MetaRight: 'meta',
});

// A character -> [code, needs Shift] on a US keyboard.
export const PHIM_CUA_CHU = new Map(
  Object.entries(BANG_US).flatMap(([ma, [thuong, hoa]]) => [[hoa, [ma, true]], [thuong, [ma, false]]]),
);

// Chords that the controller's own system keeps for itself. The name is what keys are called on the caps, in every
// language; "Meta" is the Windows or Super key, ⌘ on a Mac.
export const TO_HOP = Object.freeze([
  ['Ctrl + Alt + Del', ['ControlLeft', 'AltLeft', 'Delete']],
  ['Alt + Tab', ['AltLeft', 'Tab']],
  ['Alt + F4', ['AltLeft', 'F4']],
  ['Ctrl + Esc', ['ControlLeft', 'Escape']],
  ['Meta (⊞ / ⌘)', ['MetaLeft']],
  ['Meta + L', ['MetaLeft', 'KeyL']],
  ['Meta + D', ['MetaLeft', 'KeyD']],
  ['Ctrl + Alt + T', ['ControlLeft', 'AltLeft', 'KeyT']],
  ['⌘ Tab', ['MetaLeft', 'Tab']],
  ['⌘ Space', ['MetaLeft', 'Space']],
  ['⌘ Q', ['MetaLeft', 'KeyQ']],
  ['⌘ W', ['MetaLeft', 'KeyW']],
  ['⌥ ⌘ Esc', ['AltLeft', 'MetaLeft', 'Escape']],
  ['⇧ ⌘ 3', ['ShiftLeft', 'MetaLeft', 'Digit3']],
  ['Esc', ['Escape']],
  ['F11', ['F11']],
  ['Caps Lock', ['CapsLock']],
].map(([ten, cacMa]) => Object.freeze({ ten, cacMa })));
