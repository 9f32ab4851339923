// Everything visible follows from what the host says and what the page remembers. A part adds its drawing; whoever
// changes something asks for all of them to be drawn again.
export function taoVe() {
  const cac = [];
  return {
    them: (ham) => cac.push(ham),
    lai: () => cac.forEach((ham) => ham()),
  };
}
