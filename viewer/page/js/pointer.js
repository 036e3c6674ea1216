/**
 * Mouse, pen and fingers on the panels: the cursor follows, dragging pans, with Shift (or while selecting) it makes a
 * region, the wheel and two fingers zoom.
 *
 * @import {Point} from './types.js'
 * @import {Stage} from './stage.js'
 * @import {Cell} from './cells.js'
 * @import {Store} from './state.js'
 */
import { framePoint, limitedView, pixelInside, regionBetween, zoomedView } from './geometry.js';

/**
 * @param {Stage} stage
 * @param {Store} store
 * @param {(pixel: Point) => void} chosen a click on a pixel
 */
export function followPointers(stage, store, chosen) {
  /** Places of the pointers that are down. @type {Map<number, Point>} */
  const down = new Map();
  /** @type {Cell | null} */
  let held = null;
  /** @type {Point | null} the first pixel of a region */
  let anchor = null;
  let moved = 0;

  /** @param {Event} event @returns {Cell | null} */
  const cellOf = (event) => {
    const element = event.target instanceof Element ? event.target.closest('.panel') : null;
    return [...stage.cells.values()].find((cell) => cell.element === element) ?? null;
  };
  /** @param {Cell} cell @param {{clientX: number, clientY: number}} event */
  const inWell = (cell, event) => {
    const place = cell.well.getBoundingClientRect();
    return { x: event.clientX - place.left, y: event.clientY - place.top };
  };
  /** @param {Cell} cell @param {{clientX: number, clientY: number}} event */
  const pixelAt = (cell, event) => {
    const place = inWell(cell, event);
    return pixelInside(framePoint(stage.view(), cell.box, place.x, place.y), stage.frameSize());
  };
  /** @param {Cell} cell @param {number} factor @param {Point} place */
  const zoom = (cell, factor, place) => {
    store.update({ view: limitedView(zoomedView(stage.view(), cell.box, factor, place.x, place.y), cell.box, stage.frameSize()) });
  };

  stage.grid.addEventListener('pointerdown', (event) => {
    const cell = cellOf(event);
    if (!cell || event.button !== 0 || !(event.target instanceof Element) || !event.target.closest('.well')) {
      return;
    }
    held = cell;
    moved = 0;
    stage.grid.setPointerCapture(event.pointerId);
    down.set(event.pointerId, { x: event.clientX, y: event.clientY });
    anchor = down.size === 1 && (event.shiftKey || store.state.selecting) ? pixelAt(cell, event) : null;
    if (anchor) {
      store.update({ region: regionBetween(anchor, anchor) });
    }
  });

  stage.grid.addEventListener('pointermove', (event) => {
    const before = down.get(event.pointerId);
    const cell = held ?? cellOf(event);
    if (!cell) {
      return;
    }
    if (!before) {
      if (event.pointerType === 'mouse') {
        store.update({ cursor: pixelAt(cell, event) });
      }
      return;
    }
    const now = { x: event.clientX, y: event.clientY };
    moved += Math.abs(now.x - before.x) + Math.abs(now.y - before.y);
    if (anchor) {
      store.update({ region: regionBetween(anchor, pixelAt(cell, event)) });
    } else if (down.size === 2) {
      const other = [...down].find(([id]) => id !== event.pointerId)?.[1] ?? now;
      const apart = (/** @type {Point} */ place) => Math.max(10, Math.hypot(place.x - other.x, place.y - other.y));
      const place = inWell(cell, { clientX: (now.x + other.x) / 2, clientY: (now.y + other.y) / 2 });
      zoom(cell, apart(now) / apart(before), place);
    } else {
      const view = stage.view();
      const next = { ...view, x: view.x - (now.x - before.x) / view.scale, y: view.y - (now.y - before.y) / view.scale };
      store.update({ view: limitedView(next, cell.box, stage.frameSize()) });
    }
    down.set(event.pointerId, now);
  });

  /** @param {PointerEvent} event */
  const release = (event) => {
    if (!down.delete(event.pointerId)) {
      return;
    }
    const cell = held;
    if (cell && anchor) {
      const { region } = store.state;
      store.update({ selecting: false, region: region && region.width > 1 && region.height > 1 ? region : null });
    } else if (cell && moved < 6 && event.type === 'pointerup') {
      const pixel = pixelAt(cell, event);
      cell.element.focus({ preventScroll: true });
      store.update({ cursor: pixel, ...choice(cell) });
      chosen(pixel);
    }
    if (down.size === 0) {
      held = null;
      anchor = null;
    }
  };
  /** What a click on a panel makes current. @param {Cell} cell */
  const choice = ({ wanted }) => {
    const { mode, settings } = store.state;
    if (mode === 'candidates') {
      return { settings: { ...settings, layout: wanted.layout ?? settings.layout } };
    }
    return mode === 'compare' ? { side: wanted.side ?? 'a' } : { active: wanted.kind };
  };
  stage.grid.addEventListener('pointerup', release);
  stage.grid.addEventListener('pointercancel', release);

  stage.grid.addEventListener('wheel', (event) => {
    const cell = cellOf(event);
    if (!cell) {
      return;
    }
    event.preventDefault();
    const lines = event.deltaMode === WheelEvent.DOM_DELTA_LINE ? 24 : 1;
    zoom(cell, 2 ** (-event.deltaY * lines / 240), inWell(cell, event));
  }, { passive: false });

  stage.grid.addEventListener('dblclick', (event) => {
    const cell = cellOf(event);
    if (!cell) {
      return;
    }
    if (store.state.mode === 'candidates') {
      store.update({ mode: 'panels' });
    } else if (store.state.mode === 'panels') {
      store.update({ active: cell.wanted.kind, alone: !store.state.alone });
    }
  });

  stage.grid.addEventListener('focusin', (event) => {
    const cell = cellOf(event);
    if (cell && store.state.mode === 'panels' && cell.wanted.kind !== store.state.active) {
      store.update({ active: cell.wanted.kind });
    } else if (cell && store.state.mode === 'compare' && cell.wanted.side && cell.wanted.side !== store.state.side) {
      store.update({ side: cell.wanted.side });
    }
  });
}
