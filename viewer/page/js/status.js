/**
 * The line below: what is shown, by which route, how much of it has come; and what went wrong.
 *
 * @import {Session} from './types.js'
 * @import {Stage} from './stage.js'
 */
import { byId } from './elements.js';

/**
 * @param {Stage} stage
 * @param {Session} session
 */
export function showStatus(stage, session) {
  const size = byId('status-size', HTMLElement);
  const route = byId('status-route', HTMLElement);
  const zoom = byId('status-zoom', HTMLElement);
  const loading = byId('status-loading', HTMLElement);
  const notes = byId('notes', HTMLElement);
  byId('version', HTMLElement).textContent = session.version;
  /** @param {HTMLElement} element @param {string} text */
  const set = (element, text) => {
    if (element.textContent !== text) {
      element.textContent = text;
    }
  };
  /** Of the last frame that has come, so that nothing flickers while the next one does. @type {import('./types.js').FrameFacts | null} */
  let facts = null;
  stage.afterPaint.push(() => {
    const frame = stage.frames.find(stage.store.edited);
    facts = frame?.facts ?? (frame?.error ? null : facts);
    set(size, facts ? `${facts.width} × ${facts.height}, ${facts.bitDepth} bits` : '');
    set(route, session.route.replace(/;.*/, ''));
    const scale = stage.view().scale * stage.ratio;
    set(zoom, scale >= 1 ? `${Number(scale.toPrecision(3))} : 1` : `1 : ${Number((1 / scale).toPrecision(3))}`);
    set(loading, stage.element.dataset.resolution === 'full' ? 'full resolution' : stage.frames.busy() ? 'loading…' : '');
    // The one about the layout that is assumed holds until another is chosen.
    const begin = stage.store.edited.layout === session.defaults.layout ? session.notes : [];
    const said = [...begin, ...(facts?.notes ?? [])].join(' ');
    set(notes, said);
    notes.hidden = said === '';
  });
}

/** @type {ReturnType<typeof setTimeout> | undefined} */
let fading;

/** Says something for some seconds. @param {string} text */
export function say(text) {
  const place = byId('said', HTMLElement);
  place.textContent = text;
  place.hidden = false;
  clearTimeout(fading);
  fading = setTimeout(() => (place.hidden = true), 4000);
}
