/**
 * What the page shows, in one place: whoever changes it calls `update`, whoever depends on it subscribes.
 *
 * @import {MapName, Mode, PanelKind, Point, Region, Session, Settings, Style, View} from './types.js'
 *
 * `other` is the second side of a comparison and `side` the one that controls change. `view` is nothing while the whole
 * frame is shown. An end of 0 is chosen for each frame. `cursor` is the pixel whose values are shown.
 * @typedef {{settings: Settings, other: Settings, side: 'a' | 'b', mode: Mode, panels: PanelKind[], active: PanelKind,
 *   alone: boolean, style: Style, degreeEnd: number, powerEnd: number, lightMap: MapName, degreeMap: MapName,
 *   view: View | null, cursor: Point | null, region: Region | null, lines: boolean, selecting: boolean,
 *   playing: boolean}} ViewState
 */
import { allKinds } from './panel_kinds.js';
import { firstFrame } from './sequence.js';

export class Store {
  /** @param {ViewState} state */
  constructor(state) {
    this.state = state;
    /** @type {((state: ViewState, before: ViewState) => void)[]} */
    this.listeners = [];
  }

  /** @param {(state: ViewState, before: ViewState) => void} listener */
  subscribe(listener) {
    this.listeners.push(listener);
  }

  /**
   * The other side is the same as the first until a comparison has changed one of them.
   *
   * @param {Partial<ViewState>} changes
   */
  update(changes) {
    const before = this.state;
    const { settings } = changes;
    const both = settings && before.mode !== 'compare' && before.other === before.settings ? { other: settings } : {};
    this.state = { ...before, ...both, ...changes };
    this.listeners.forEach((listener) => listener(this.state, before));
  }

  /** The settings that controls show and change. */
  get edited() {
    return this.state.mode === 'compare' && this.state.side === 'b' ? this.state.other : this.state.settings;
  }

  /** @param {Partial<Settings>} changes */
  edit(changes) {
    const settings = { ...this.edited, ...changes };
    this.update(this.state.mode === 'compare' && this.state.side === 'b' ? { other: settings } : { settings });
  }
}

/**
 * @param {Session} session
 * @param {boolean} small whether the screen has room for few panels
 * @returns {ViewState}
 */
export function initialState(session, small) {
  const { defaults } = session;
  const [source] = session.sources;
  const settings = {
    source: 0,
    frame: firstFrame(source),
    layout: defaults.layout,
    origin: defaults.origin,
    calibration: defaults.calibration,
    bitDepth: defaults.bit_depth,
    plane: 0,
  };
  return {
    settings,
    other: settings,
    side: 'a',
    mode: 'panels',
    panels: small ? ['raw', 'power', 'degree', 'coloured'] : [...allKinds],
    active: 'coloured',
    alone: false,
    style: defaults.style,
    degreeEnd: defaults.degree_end ?? 0,
    powerEnd: defaults.power_end ?? 0,
    lightMap: 'grey',
    degreeMap: 'sequential',
    view: null,
    cursor: null,
    region: null,
    lines: false,
    selecting: false,
    playing: false,
  };
}
