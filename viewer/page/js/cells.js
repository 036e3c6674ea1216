/**
 * Which panels are on the stage, and their elements.
 *
 * @import {Box, PanelKind, Settings} from './types.js'
 * @import {ViewState} from './state.js'
 */
import { make } from './elements.js';
import { layouts } from './mosaic.js';
import { allKinds, panelKinds } from './panel_kinds.js';

/**
 * A panel that is wanted: `key` tells it from the others, `name` is said beside its title.
 *
 * @typedef {{key: string, kind: PanelKind, settings: Settings, name: string, side: 'a' | 'b' | null,
 *   layout: number | null}} Wanted
 *
 * @typedef {{element: HTMLElement, well: HTMLElement, name: HTMLElement, note: HTMLElement, legend: HTMLElement,
 *   message: HTMLElement, legendKey: string, box: Box, wanted: Wanted}} Cell
 */

/**
 * @param {ViewState} state
 * @param {(settings: Settings) => string} nameOf a frame and its calibration
 * @returns {Wanted[]}
 */
export function wantedCells(state, nameOf) {
  const { settings, other, active, mode } = state;
  if (mode === 'candidates') {
    return layouts.map((layout) => ({
      key: `layout ${layout}`,
      kind: active,
      settings: { ...settings, layout },
      name: `layout ${layout}°`,
      side: null,
      layout,
    }));
  }
  if (mode === 'compare') {
    return [
      { key: 'side a', kind: active, settings, name: `A: ${nameOf(settings)}`, side: 'a', layout: null },
      { key: 'side b', kind: active, settings: other, name: `B: ${nameOf(other)}`, side: 'b', layout: null },
    ];
  }
  return (state.alone ? [active] : state.panels).map((kind) => ({ key: kind, kind, settings, name: '', side: null, layout: null }));
}

/**
 * @param {Wanted} wanted
 * @returns {Cell}
 */
export function makeCell(wanted) {
  const { title, note } = panelKinds[wanted.kind];
  const names = make('span', { class: 'name' });
  const notes = make('span', { class: 'note' });
  const message = make('p', { class: 'message', hidden: '' });
  const well = make('div', { class: 'well' }, [message]);
  const legend = make('div', { class: 'legend' });
  const key = wanted.key === wanted.kind ? make('kbd', {}, [String(allKinds.indexOf(wanted.kind) + 1)]) : '';
  const element = make('section', { class: 'panel', tabindex: '0', 'data-kind': wanted.kind, 'data-key': wanted.key }, [
    make('header', {}, [key, make('h2', {}, [title]), names, notes]),
    well,
    legend,
  ]);
  notes.textContent = note;
  return { element, well, name: names, note: notes, legend, message, legendKey: '', box: { left: 0, top: 0, width: 0, height: 0 }, wanted };
}

/**
 * The number of columns in which pictures get largest.
 *
 * @param {number} count
 * @param {number} width of the stage
 * @param {number} height
 * @param {number} aspect of a frame
 * @param {number} extra height of title and legend
 */
export function bestColumns(count, width, height, aspect, extra) {
  let best = { columns: 1, size: 0 };
  for (let columns = 1; columns <= count; ++columns) {
    const rows = Math.ceil(count / columns);
    const size = Math.min(width / columns, (height / rows - extra) * aspect);
    if (size > best.size + 0.5) {
      best = { columns, size };
    }
  }
  return best.columns;
}
