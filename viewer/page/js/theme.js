/** Dark or light: as the system says, until the user chooses. */

const key = 'nerova-zel-theme';
const system = matchMedia('(prefers-color-scheme: light)');

function chosen() {
  try {
    return localStorage.getItem(key);
  } catch {
    return null;
  }
}

export function applyTheme() {
  document.documentElement.dataset.theme = chosen() ?? (system.matches ? 'light' : 'dark');
}

export function switchTheme() {
  const next = document.documentElement.dataset.theme === 'dark' ? 'light' : 'dark';
  try {
    localStorage.setItem(key, next);
  } catch {
    // Where nothing can be kept the choice holds for this page.
  }
  document.documentElement.dataset.theme = next;
}

/** @param {() => void} redraw called when the colours have changed */
export function followTheme(redraw) {
  system.addEventListener('change', () => {
    applyTheme();
    redraw();
  });
}
