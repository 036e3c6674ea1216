/**
 * The view as text behind the address: enough to restore it wherever the same files are viewed. Files and calibrations
 * are named, because their order may differ there.
 *
 * @import {MapName, Mode, PanelKind, Session, Settings, Style} from './types.js'
 * @import {ViewState} from './state.js'
 */
import { allKinds } from './panel_kinds.js';
import { layouts } from './mosaic.js';

/** @param {Settings} settings @param {Session} session */
function settingsText(settings, session) {
  return [
    settings.frame,
    settings.layout,
    settings.origin.join('.'),
    settings.bitDepth,
    encodeURIComponent(session.calibrations[settings.calibration] ?? 'none'),
    encodeURIComponent(session.sources[settings.source]?.name ?? ''),
    encodeURIComponent(session.planes[settings.plane] ?? ''),
  ].join(',');
}

/**
 * @param {string} text
 * @param {Session} session
 * @param {Settings} otherwise
 * @returns {Settings}
 */
function settingsFrom(text, session, otherwise) {
  const [frame, layout, origin, depth, calibration, name, plane] = text.split(',').map(decodeURIComponent);
  // Who names the same file from another folder has another path for it.
  const base = (/** @type {string | undefined} */ path) => path?.replace(/.*[\\/]/, '');
  const exact = session.sources.findIndex((one) => one.name === name);
  const source = exact >= 0 ? exact : Math.max(0, session.sources.findIndex((one) => base(one.name) === base(name)));
  const { first, frames } = session.sources[source] ?? { first: 0, frames: 1 };
  const [x, y] = (origin ?? '').split('.').map(Number);
  const known = layouts.find((angle) => angle === Number(layout));
  return {
    source,
    frame: Math.min(first + Math.max(0, frames - 1), Math.max(first, Math.trunc(Number(frame)) || 0)),
    layout: known ?? otherwise.layout,
    origin: Number.isInteger(x) && Number.isInteger(y) && x >= 0 && y >= 0 ? [x, y] : otherwise.origin,
    calibration: Math.max(0, session.calibrations.indexOf(calibration)),
    bitDepth: Math.min(16, Math.max(0, Math.trunc(Number(depth)) || 0)),
    plane: Math.max(0, session.planes.indexOf(plane)),
  };
}

/**
 * @param {ViewState} state
 * @param {Session} session
 */
export function linkText(state, session) {
  /** @type {[string, string][]} */
  const parts = [
    ['a', settingsText(state.settings, session)],
    ['mode', state.mode],
    ['panels', state.panels.join(',')],
    ['active', state.active + (state.alone ? ',alone' : '')],
    ['style', state.style],
    ['ends', `${state.degreeEnd},${state.powerEnd}`],
    ['maps', `${state.lightMap},${state.degreeMap}`],
  ];
  if (state.mode === 'compare') {
    parts.push(['b', settingsText(state.other, session)]);
  }
  if (state.view) {
    const { x, y, scale } = state.view;
    parts.push(['view', [x.toFixed(2), y.toFixed(2), scale.toPrecision(5)].join(',')]);
  }
  if (state.cursor) {
    parts.push(['pixel', `${state.cursor.x},${state.cursor.y}`]);
  }
  if (state.region) {
    const { x, y, width, height } = state.region;
    parts.push(['region', [x, y, width, height].join(',')]);
  }
  if (state.lines) {
    parts.push(['lines', '1']);
  }
  return parts.map(([name, value]) => `${name}=${value}`).join('&');
}

/**
 * @param {string} text what linkText made; parts that make no sense are silently ignored
 * @param {Session} session
 * @param {ViewState} otherwise
 * @returns {Partial<ViewState>}
 */
export function stateFromLink(text, session, otherwise) {
  const parts = new Map(text.split('&').map((part) => /** @type {[string, string]} */ (part.split(/=(.*)/s, 2))));
  /** @param {string} name */
  const list = (name) => (parts.get(name) ?? '').split(',');
  /** @param {string} name @param {number} count */
  const numbers = (name, count) => {
    const found = list(name).map(Number);
    return parts.has(name) && found.length === count && found.every(Number.isFinite) ? found : null;
  };
  /** @template {string} T @param {string | undefined} value @param {readonly T[]} known @param {T} instead @returns {T} */
  const oneOf = (value, known, instead) => known.find((one) => one === value) ?? instead;
  /** @type {readonly MapName[]} */
  const maps = ['grey', 'sequential'];
  const panels = allKinds.filter((kind) => list('panels').includes(kind));
  const ends = numbers('ends', 2);
  const view = numbers('view', 3);
  const pixel = numbers('pixel', 2);
  const region = numbers('region', 4);
  const a = parts.get('a');
  const b = parts.get('b');
  const settings = a ? settingsFrom(a, session, otherwise.settings) : otherwise.settings;
  return {
    settings,
    other: b ? settingsFrom(b, session, otherwise.settings) : settings,
    mode: oneOf(parts.get('mode'), /** @type {readonly Mode[]} */ (['panels', 'compare', 'candidates']), 'panels'),
    panels: panels.length > 0 ? panels : otherwise.panels,
    active: oneOf(list('active')[0], /** @type {readonly PanelKind[]} */ (allKinds), otherwise.active),
    alone: list('active')[1] === 'alone',
    style: oneOf(parts.get('style'), /** @type {readonly Style[]} */ (['plain', 'light', 'dark', 'composite']), otherwise.style),
    degreeEnd: ends && ends[0] >= 0 ? Math.min(1, ends[0]) : otherwise.degreeEnd,
    powerEnd: ends && ends[1] >= 0 ? Math.min(1, ends[1]) : otherwise.powerEnd,
    lightMap: oneOf(list('maps')[0], maps, otherwise.lightMap),
    degreeMap: oneOf(list('maps')[1], maps, otherwise.degreeMap),
    view: view && view[2] > 0 ? { x: view[0], y: view[1], scale: view[2] } : null,
    cursor: pixel ? { x: pixel[0], y: pixel[1] } : null,
    region: region && region[2] > 0 && region[3] > 0 ? { x: region[0], y: region[1], width: region[2], height: region[3] } : null,
    lines: parts.get('lines') === '1',
  };
}
