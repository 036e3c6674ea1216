/**
 * What the keyboard does: one table, from which keys work and the help is written.
 *
 * @import {Stage} from './stage.js'
 * @import {MapName, PanelKind, Point, Session, Style, View} from './types.js'
 */
import { limitedView, pixelInside, regionBetween, visibleRegion, zoomedView } from './geometry.js';
import { layouts } from './mosaic.js';
import { allKinds } from './panel_kinds.js';
import { frameAt, frameCount, placeOf } from './sequence.js';

/**
 * `keys` as events name them, with "Shift+" before those that need it; `shown` is how help writes them.
 *
 * @typedef {{keys: string[], shown: string, label: string, group: string, run: (key: string) => void}} Command
 *
 * @typedef {{help: () => void, close: () => void, theme: () => void, link: () => void, picture: () => void,
 *   screen: () => void, numbers: () => void, series: (pixel: Point) => void}} Actions
 */

/** @type {readonly Style[]} */
export const styles = ['plain', 'light', 'dark', 'composite'];
/** 0 is chosen for each frame. */
export const scaleEnds = [0, 0.01, 0.02, 0.05, 0.1, 0.2, 0.3, 0.4, 0.5, 0.6, 0.8, 1];
export const origins = /** @type {const} */ ([[0, 0], [1, 0], [0, 1], [1, 1]]);

/** @template T @param {readonly T[]} list @param {T} now @param {number} by @returns {T} */
const after = (list, now, by) => list[(list.indexOf(now) + by + list.length) % list.length];

/**
 * @param {Stage} stage
 * @param {Session} session
 * @param {Actions} actions
 * @returns {Command[]}
 */
export function makeCommands(stage, session, actions) {
  const { store } = stage;
  /** @type {Point | null} the first pixel of a region made by keys */
  let anchor = null;
  /** @type {Record<string, readonly [number, number]>} */
  const directions = { ArrowLeft: [-1, 0], ArrowRight: [1, 0], ArrowUp: [0, -1], ArrowDown: [0, 1] };

  /** @param {View} view */
  const look = (view) => store.update({ view: limitedView(view, stage.box(), stage.frameSize()) });

  /** @param {string} key @param {number} pixels */
  const moveCursor = (key, pixels) => {
    const view = stage.view();
    const frame = stage.frameSize();
    const [across, down] = directions[key];
    const step = Math.max(pixels, Math.ceil((pixels * 2) / view.scale / (view.scale < 1 ? 1 : 8)));
    const from = store.state.cursor ?? { x: Math.floor(view.x), y: Math.floor(view.y) };
    const cursor = store.state.cursor ? pixelInside({ x: from.x + across * step, y: from.y + down * step }, frame) : pixelInside(from, frame);
    store.update({ cursor, ...(anchor ? { region: regionBetween(anchor, cursor) } : {}) });
    const seen = visibleRegion(view, stage.box(), frame);
    if (seen && store.state.view && (cursor.x < seen.x || cursor.y < seen.y || cursor.x >= seen.x + seen.width || cursor.y >= seen.y + seen.height)) {
      look({ ...view, x: cursor.x + 0.5, y: cursor.y + 0.5 });
    }
  };
  /** @param {number} factor */
  const zoom = (factor) => {
    const view = stage.view();
    const box = stage.box();
    const { cursor } = store.state;
    const seen = cursor && visibleRegion(view, box, stage.frameSize());
    const inside = cursor && seen && cursor.x >= seen.x && cursor.x < seen.x + seen.width && cursor.y >= seen.y && cursor.y < seen.y + seen.height;
    const left = inside ? (cursor.x + 0.5 - view.x) * view.scale + box.width / 2 : box.width / 2;
    const top = inside ? (cursor.y + 0.5 - view.y) * view.scale + box.height / 2 : box.height / 2;
    look(zoomedView(view, box, factor, left, top));
  };
  /** @param {number} by */
  const step = (by) => store.edit(frameAt(session, placeOf(session, store.edited) + by));
  /** @param {PanelKind} kind */
  const panelKey = (kind) => {
    const { mode, panels, alone } = store.state;
    if (mode !== 'panels' || alone) {
      store.update({ active: kind });
      return;
    }
    const next = allKinds.filter((one) => (one === kind ? !panels.includes(one) : panels.includes(one)));
    store.update({ panels: next.length > 0 ? next : panels });
  };
  const region = () => {
    if (anchor) {
      anchor = null;
      store.update({ selecting: false });
      return;
    }
    const view = stage.view();
    const cursor = store.state.cursor ?? pixelInside(view, stage.frameSize());
    anchor = cursor;
    store.update({ cursor, region: regionBetween(cursor, cursor), selecting: true });
  };
  const escape = () => {
    if (anchor || store.state.region) {
      anchor = null;
      store.update({ region: null, selecting: false });
    } else if (store.state.selecting) {
      store.update({ selecting: false });
    } else if (store.state.alone || store.state.mode !== 'panels') {
      store.update({ alone: false, mode: 'panels' });
    }
    actions.close();
  };
  /** @param {'degreeEnd' | 'powerEnd'} name @param {number} by */
  const end = (name, by) => {
    const now = store.state[name];
    const nearest = scaleEnds.reduce((best, one) => (Math.abs(one - now) < Math.abs(best - now) ? one : best), 0);
    store.update({ [name]: after(scaleEnds, nearest, by) });
  };
  /** @type {readonly MapName[]} */
  const maps = ['grey', 'sequential'];
  const enter = () => {
    const { mode, alone } = store.state;
    if (anchor) {
      anchor = null;
      store.update({ selecting: false });
    } else if (mode === 'candidates') {
      store.update({ mode: 'panels' });
    } else if (mode === 'panels') {
      store.update({ alone: !alone });
    }
  };

  /** @type {Command[]} */
  return [
    { group: 'Look', keys: Object.keys(directions), shown: '← ↑ → ↓', label: 'move the cursor', run: (key) => moveCursor(key, 1) },
    { group: 'Look', keys: Object.keys(directions).map((key) => `Shift+${key}`), shown: 'Shift ← ↑ → ↓', label: 'pan',
      run: (key) => {
        const view = stage.view();
        const box = stage.box();
        const [across, down] = directions[key.replace('Shift+', '')];
        look({ ...view, x: view.x + (across * box.width) / 5 / view.scale, y: view.y + (down * box.height) / 5 / view.scale });
      } },
    { group: 'Look', keys: ['+', '=', 'Shift++'], shown: '+', label: 'zoom in, at the cursor', run: () => zoom(1.5) },
    { group: 'Look', keys: ['-'], shown: '−', label: 'zoom out', run: () => zoom(1 / 1.5) },
    { group: 'Look', keys: ['0'], shown: '0', label: 'whole frame', run: () => store.update({ view: null }) },
    { group: 'Look', keys: ['p'], shown: 'P', label: 'single pixels, at the cursor', run: () => {
      const { cursor } = store.state;
      const view = stage.view();
      look(cursor ? { x: cursor.x + 0.5, y: cursor.y + 0.5, scale: 48 } : { ...view, scale: 48 });
    } },
    { group: 'Look', keys: ['q'], shown: 'Q', label: 'lines of the angle on or off', run: () => store.update({ lines: !store.state.lines }) },
    ...allKinds.map((kind, i) => /** @type {Command} */ ({
      group: 'Panels', keys: [String(i + 1)], shown: i ? '' : `1 … ${allKinds.length}`,
      label: 'show or hide a panel; choose it where one is shown', run: () => panelKey(kind),
    })),
    { group: 'Panels', keys: ['Enter'], shown: 'Enter', label: 'the current panel alone; take a candidate', run: enter },
    { group: 'Panels', keys: ['Tab'], shown: 'Tab', label: 'next panel or control', run: () => {} },
    { group: 'Frames', keys: ['.', 'PageDown'], shown: '.', label: 'next frame', run: () => step(1) },
    { group: 'Frames', keys: [',', 'PageUp'], shown: ',', label: 'previous frame', run: () => step(-1) },
    { group: 'Frames', keys: ['Home'], shown: 'Home', label: 'first frame', run: () => step(-frameCount(session)) },
    { group: 'Frames', keys: ['End'], shown: 'End', label: 'last frame', run: () => step(frameCount(session)) },
    { group: 'Frames', keys: [' '], shown: 'Space', label: 'play or stop', run: () => store.update({ playing: !store.state.playing }) },
    { group: 'Frames', keys: ['t'], shown: 'T', label: 'the cursor’s pixel along time', run: () => store.state.cursor && actions.series(store.state.cursor) },
    { group: 'Settings', keys: ['l'], shown: 'L', label: 'next layout (Shift: previous)', run: () => store.edit({ layout: after(layouts, /** @type {90} */ (store.edited.layout), 1) }) },
    { group: 'Settings', keys: ['Shift+L'], shown: '', label: '', run: () => store.edit({ layout: after(layouts, /** @type {90} */ (store.edited.layout), -1) }) },
    { group: 'Settings', keys: ['o'], shown: 'O', label: 'next origin', run: () => {
      const [x, y] = store.edited.origin;
      const now = origins.findIndex(([a, b]) => a === (x & 1) && b === (y & 1));
      store.edit({ origin: origins[(now + 1) % origins.length] });
    } },
    { group: 'Settings', keys: ['u'], shown: 'U', label: 'next calibration', run: () => store.edit({ calibration: (store.edited.calibration + 1) % Math.max(1, session.calibrations.length) }) },
    { group: 'Settings', keys: ['n'], shown: 'N', label: 'next colour of the sensor’s filters', run: () => store.edit({ plane: (store.edited.plane + 1) % Math.max(1, session.planes.length) }) },
    { group: 'Settings', keys: ['k'], shown: 'K', label: 'the four candidates for the layout', run: () => store.update({ mode: store.state.mode === 'candidates' ? 'panels' : 'candidates' }) },
    { group: 'Settings', keys: ['c'], shown: 'C', label: 'compare side by side', run: () => store.update(store.state.mode === 'compare' ? { mode: 'panels', side: 'a' } : { mode: 'compare', side: 'b' }) },
    { group: 'Settings', keys: ['b'], shown: 'B', label: 'which side the controls change', run: () => store.update({ side: store.state.side === 'a' ? 'b' : 'a' }) },
    { group: 'Colours', keys: ['y'], shown: 'Y', label: 'next style of the coloured angle', run: () => store.update({ style: after(styles, store.state.style, 1) }) },
    { group: 'Colours', keys: ['[', ']'], shown: '[ ]', label: 'end of the degree’s scale', run: (key) => end('degreeEnd', key === ']' ? 1 : -1) },
    { group: 'Colours', keys: ['{', '}', 'Shift+{', 'Shift+}'], shown: '{ }', label: 'end of the power’s scale', run: (key) => end('powerEnd', key.endsWith('}') ? 1 : -1) },
    { group: 'Colours', keys: ['m'], shown: 'M', label: 'colour map of the degree (Shift: of raw and power)', run: () => store.update({ degreeMap: after(maps, store.state.degreeMap, 1) }) },
    { group: 'Colours', keys: ['Shift+M'], shown: '', label: '', run: () => store.update({ lightMap: after(maps, store.state.lightMap, 1) }) },
    { group: 'Colours', keys: ['g'], shown: 'G', label: 'dark or light page', run: actions.theme },
    { group: 'Region', keys: ['r'], shown: 'R', label: 'start at the cursor, arrows extend, R or Enter ends; the pointer drags', run: region },
    { group: 'Region', keys: ['Escape'], shown: 'Esc', label: 'no region; then back to all panels', run: escape },
    { group: 'Keep', keys: ['i'], shown: 'I', label: 'save the current panel’s picture', run: actions.picture },
    { group: 'Keep', keys: ['Shift+I'], shown: 'Shift I', label: 'save the screen', run: actions.screen },
    { group: 'Keep', keys: ['v'], shown: 'V', label: 'save the current panel’s numbers', run: actions.numbers },
    { group: 'Keep', keys: ['h'], shown: 'H', label: 'copy a link to this view', run: actions.link },
    { group: 'Keep', keys: ['?', 'Shift+?'], shown: '?', label: 'this list', run: actions.help },
  ];
}

/** @param {Command[]} commands */
export function followKeys(commands) {
  const byKey = new Map(commands.flatMap((command) => command.keys.map((key) => /** @type {const} */ ([key, command]))));
  document.addEventListener('keydown', (event) => {
    if (event.ctrlKey || event.metaKey || event.altKey || event.key === 'Tab') {
      return;
    }
    const { target } = event;
    const field = target instanceof HTMLSelectElement || target instanceof HTMLInputElement;
    const control = field || target instanceof HTMLButtonElement || target instanceof HTMLCanvasElement;
    const letter = event.key.length === 1 && event.key !== ' ';
    // Controls keep the keys that they act on themselves.
    if ((target instanceof HTMLInputElement && (target.type === 'text' || target.type === 'number')) ||
        (control && !letter && event.key !== 'Escape') || (target instanceof HTMLSelectElement && event.key !== 'Escape' && !letter) ||
        (target instanceof Element && target.closest('dialog') && event.key !== 'Escape' && event.key !== '?')) {
      return;
    }
    const name = (event.shiftKey ? 'Shift+' : '') + event.key;
    const command = byKey.get(name) ?? (event.shiftKey && !/[A-Z]/.test(event.key) && letter ? byKey.get(event.key) : undefined) ??
      (!event.shiftKey ? byKey.get(event.key.toLowerCase()) : undefined);
    if (command) {
      event.preventDefault();
      command.run(name);
    }
  });
}
