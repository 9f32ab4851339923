// Writes text to the clipboard: the new way where the page may use it, else the old one, which plain addresses have too.
// Answers whether it worked.
export async function chep(van) {
  try {
    if (window.isSecureContext && navigator.clipboard?.writeText) {
      await navigator.clipboard.writeText(van);
      return true;
    }
  } catch { /* not now: the old way may still work */ }
  const o = document.createElement('textarea');
  o.value = van;
  o.className = 'khuat';
  const truoc = document.activeElement;
  document.body.append(o);
  o.select();
  let duoc = false;
  try {
    duoc = document.execCommand('copy');
  } catch { /* refused */ }
  o.remove();
  truoc?.focus?.();
  return duoc;
}
