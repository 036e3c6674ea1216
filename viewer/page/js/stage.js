/**
 * The panels on the screen: keeps their elements, says what is wanted of frames, paints.
 *
 * @import {Box, Layer, Session, Settings, View} from './types.js'
 * @import {Cell} from './cells.js'
 * @import {TableMaker} from './colours.js'
 * @import {Painter} from './canvas_painter.js'
 * @import {StoredFrame, Wish} from './frame_store.js'
 * @import {ViewState, Store} from './state.js'
 */
import { createCanvasPainter } from './canvas_painter.js';
import { bestColumns, makeCell, wantedCells } from './cells.js';
import { styleNumbers } from './colours.js';
import { byId } from './elements.js';
import { FrameStore, settingsKey } from './frame_store.js';
import { fitScale, limitedView, visibleRegion } from './geometry.js';
import { createGlPainter } from './gl_painter.js';
import { legend } from './legends.js';
import { drawOverlay } from './overlay.js';
import { imagesOf, panelKinds } from './panel_kinds.js';
import { chosenEnds } from './scale_ends.js';
import { hasFrame, isFollowing } from './sequence.js';

/** Height of a panel's title and legend, for the choice of columns. */
const besidePicture = 74;
/** Sizes that are kept of frames that were shown. */
const mostSizes = 1000;

export class Stage {
  /**
   * @param {Store} store
   * @param {Session} session
   * @param {TableMaker} tables
   * @param {(settings: Settings) => string} nameOf
   * @param {string} painter 'canvas' or 'webgl' where one is asked for, else the faster one is taken
   */
  constructor(store, session, tables, nameOf, painter) {
    this.store = store;
    this.session = session;
    this.tables = tables;
    this.nameOf = nameOf;
    this.element = byId('stage', HTMLElement);
    this.grid = byId('panels', HTMLElement);
    this.picture = byId('picture', HTMLCanvasElement);
    this.marks = byId('marks', HTMLCanvasElement);
    /** @type {Painter} */
    this.painter = (painter === 'canvas' ? null : createGlPainter(this.picture, painter === 'webgl')) ?? createCanvasPainter(this.picture);
    /** @type {Map<string, Cell>} */
    this.cells = new Map();
    this.ratio = 1;
    /** @type {Map<string, StoredFrame>} the frame that a panel shows, until the wanted one has come */
    this.shown = new Map();
    this.scheduled = false;
    this.ends = { degree: 1, power: 1, raw: 1 };
    /** @type {Layer | null} the overview that the chosen ends are of */
    this.endsOf = null;
    this.chosen = this.ends;
    /** The size of the last frame in sight, or of one that is usual. */
    this.size = { width: 2448, height: 2048 };
    /** Sizes by source and frame; of a sensor with colour filters by plane and origin, too. @type {Map<string, {width: number, height: number}>} */
    this.sizes = new Map();
    this.arranged = this.size;
    this.overviewStep = 0;
    /** Called after each picture. @type {(() => void)[]} */
    this.afterPaint = [];
    this.frames = new FrameStore((frame) => {
      this.afterFrame.forEach((listener) => listener(frame));
      const { width, height } = this.frameSize();
      if (width * this.arranged.height !== height * this.arranged.width) {
        this.arrange();
      }
      this.wish();
      this.invalidate();
    });
    /** Called when something of a frame has come. @type {((frame: StoredFrame) => void)[]} */
    this.afterFrame = [];
    new ResizeObserver(() => this.arrange()).observe(this.element);
    store.subscribe((state, before) => this.follow(state, before));
    this.compose();
  }

  /** @param {ViewState} state @param {ViewState} before */
  follow(state, before) {
    if (state.settings !== before.settings || state.other !== before.other || state.panels !== before.panels ||
        state.active !== before.active || state.alone !== before.alone || state.mode !== before.mode || state.side !== before.side) {
      this.compose();
    } else if (state.view !== before.view || state.style !== before.style) {
      this.wish();
    }
    this.invalidate();
  }

  /** Makes and removes panels. */
  compose() {
    const wanted = wantedCells(this.store.state, this.nameOf);
    const keys = new Set(wanted.map(({ key, kind }) => `${key}/${kind}`));
    let changed = false;
    for (const [key, cell] of this.cells) {
      if (!keys.has(key)) {
        cell.element.remove();
        this.cells.delete(key);
        this.shown.delete(key);
        changed = true;
      }
    }
    for (const [place, one] of wanted.entries()) {
      const key = `${one.key}/${one.kind}`;
      let cell = this.cells.get(key);
      if (!cell) {
        cell = makeCell(one);
        this.cells.set(key, cell);
        changed = true;
      }
      if (this.grid.children[place] !== cell.element) {
        this.grid.insertBefore(cell.element, this.grid.children[place] ?? null);
      }
      cell.wanted = one;
      cell.name.textContent = one.name;
      cell.note.hidden = one.name !== '';
      cell.element.setAttribute('aria-label', [panelKinds[one.kind].title, one.name].filter(Boolean).join(', '));
      const { mode, side, active, settings } = this.store.state;
      const current = mode === 'compare' ? one.side === side : mode === 'candidates' ? one.layout === settings.layout : one.kind === active;
      cell.element.toggleAttribute('data-current', current);
    }
    if (changed) {
      this.arrange();
    } else {
      this.wish();
    }
  }

  /** Gives panels their places and canvases their size. */
  arrange() {
    const { clientWidth: width, clientHeight: height } = this.element;
    if (width === 0 || height === 0) {
      return;
    }
    const frame = this.frameSize();
    this.arranged = frame;
    const columns = bestColumns(this.cells.size, width, height, frame.width / frame.height, besidePicture);
    this.grid.style.gridTemplateColumns = `repeat(${columns}, minmax(0, 1fr))`;
    this.grid.style.gridTemplateRows = `repeat(${Math.ceil(this.cells.size / columns)}, minmax(0, 1fr))`;
    this.ratio = window.devicePixelRatio || 1;
    const origin = this.element.getBoundingClientRect();
    for (const cell of this.cells.values()) {
      const place = cell.well.getBoundingClientRect();
      cell.box = {
        left: Math.round(place.left - origin.left),
        top: Math.round(place.top - origin.top),
        width: Math.max(1, Math.round(place.width)),
        height: Math.max(1, Math.round(place.height)),
      };
    }
    const [across, down] = [Math.round(width * this.ratio), Math.round(height * this.ratio)];
    if (this.picture.width !== across || this.picture.height !== down) {
      this.painter.resize(across, down);
      this.marks.width = across;
      this.marks.height = down;
    }
    const box = this.box();
    this.overviewStep ||= Math.max(1, Math.floor(1 / (fitScale(frame, box) * this.ratio)));
    this.wish();
    this.invalidate();
  }

  /** The size of the frames in sight. */
  frameSize() {
    this.size = this.sizeOf(this.store.state.settings) ?? this.size;
    return this.size;
  }

  /** The size of a frame where it is known. @param {Settings} settings @returns {{width: number, height: number} | null} */
  sizeOf(settings) {
    const { source, frame, plane, origin } = settings;
    const key = [source, frame, ...(this.session.planes.length > 0 ? [plane, ...origin] : [])].join(' ');
    const facts = this.frames.find(settings)?.facts;
    if (facts) {
      this.sizes.set(key, { width: facts.width, height: facts.height });
      if (this.sizes.size > mostSizes) {  // a camera sends frames for hours
        const [oldest] = this.sizes.keys();
        this.sizes.delete(oldest);
      }
    }
    const { width, height } = this.session.sources[source];
    return this.sizes.get(key) ?? (width && height ? { width, height } : null);
  }

  /** What a panel says instead of a picture. @param {Settings} settings */
  noFrame({ source }) {
    const { name, live } = this.session.sources[source];
    return `${name} has no frame${live ? ' yet' : ''}.`;
  }

  /** The place of a panel; all panels are of one size. @returns {Box} */
  box() {
    return this.cells.values().next().value?.box ?? { left: 0, top: 0, width: 1, height: 1 };
  }

  /** The view as it is painted: the whole frame unless the state says otherwise. @returns {View} */
  view() {
    const frame = this.frameSize();
    const box = this.box();
    const whole = { x: frame.width / 2, y: frame.height / 2, scale: fitScale(frame, box) };
    return limitedView(this.store.state.view ?? whole, box, frame);
  }

  /** Says what is wanted of frames. */
  wish() {
    const { style, playing, settings } = this.store.state;
    const box = this.box();
    const view = this.view();
    const step = Math.max(1, Math.floor(1 / (view.scale * this.ratio)));
    /** @type {Map<string, Wish>} */
    const wishes = new Map();
    for (const { wanted } of this.cells.values()) {
      if (!hasFrame(this.session, wanted.settings)) {
        continue;
      }
      const key = settingsKey(wanted.settings);
      const known = wishes.get(key);
      const images = [...new Set([...(known?.images ?? []), ...imagesOf(wanted.kind, style)])];
      const size = this.sizeOf(wanted.settings);
      const region = size && visibleRegion(view, box, size);
      wishes.set(key, { settings: wanted.settings, images, overviewStep: this.overviewStep || 8, sight: region && { region, step } });
    }
    this.frames.patience = playing || isFollowing(this.session, settings) ? 400 : 40;
    this.frames.want([...wishes.values()]);
  }

  invalidate() {
    if (!this.scheduled) {
      this.scheduled = true;
      requestAnimationFrame(() => {
        this.scheduled = false;
        this.paint();
      });
    }
  }

  /** The frame that a panel shows now. @param {string} key @param {Cell} cell */
  frameFor(key, cell) {
    const wanted = this.frames.find(cell.wanted.settings);
    if (wanted && (wanted.overview || wanted.sight || wanted.full || wanted.error !== null)) {
      this.shown.set(key, wanted);
    }
    return this.shown.get(key) ?? null;
  }

  paint() {
    const { state } = this.store;
    const view = this.view();
    const { ratio } = this;
    const pictures = [];
    const overlaid = [];
    this.chooseEnds();
    let complete = true;
    for (const [key, cell] of this.cells) {
      const frame = this.frameFor(key, cell);
      const { kind, settings } = cell.wanted;
      const error = hasFrame(this.session, settings) ? frame?.error ?? null : this.noFrame(settings);
      cell.message.hidden = error === null;
      cell.message.textContent = error;
      const images = imagesOf(kind, state.style);
      const current = frame?.key === settingsKey(settings);
      complete &&= current && error === null && images.every((name) => frame?.full?.arrays[name]);
      cell.element.dataset.frame = frame && error === null ? frame.key : '';
      overlaid.push({ box: cell.box, kind, settings, frame, polarizers: kind === 'raw' || state.mode === 'candidates' });
      if (!frame?.facts || error !== null) {
        continue;
      }
      const tables = this.tablesFor(frame);
      const box = scaledBox(cell.box, ratio);
      pictures.push({ box, view: { ...view, scale: view.scale * ratio }, kind, tables, layers: this.layersFor(frame, images) });
      this.showLegend(cell, frame);
    }
    const ready = this.painter.paint(pictures);
    drawOverlay(this.marks, ratio, overlaid, { view, cursor: state.cursor, region: state.region, lines: state.lines });
    this.element.dataset.resolution = complete && ready ? 'full' : 'overview';
    this.element.dataset.frame = [...new Set([...this.cells.values()].map(({ element }) => element.dataset.frame))].join('; ');
    if (ready) {
      this.painter.retain(this.frames.arrays());
    } else {
      this.invalidate();
    }
    this.afterPaint.forEach((listener) => listener());
  }

  /**
   * What there is of a frame, the coarse first. The full size serves for whatever it has.
   *
   * @param {StoredFrame} frame
   * @param {readonly string[]} images
   * @returns {Layer[]}
   */
  layersFor(frame, images) {
    const layers = [frame.overview, frame.sight, frame.full].filter((layer) => layer !== null);
    return images.every((name) => frame.full?.arrays[name]) && this.painter.name === 'canvas' && frame.full ? [frame.full] : layers;
  }

  /** Ends that the state leaves open follow the first side's frame. */
  chooseEnds() {
    const { settings, degreeEnd, powerEnd } = this.store.state;
    const frame = this.frames.find(settings);
    if (frame?.overview && frame.facts && this.endsOf !== frame.overview) {
      this.endsOf = frame.overview;
      this.chosen = chosenEnds(frame.overview, frame.facts);
    }
    const { degree, power, raw } = this.chosen;
    this.ends = { degree: degreeEnd || degree, power: powerEnd || power, raw: powerEnd || raw };
  }

  /** @param {StoredFrame} frame */
  tablesFor(frame) {
    const { state } = this.store;
    return this.tables.make({
      style: styleNumbers[state.style],
      degreeEnd: this.ends.degree,
      powerEnd: this.ends.power,
      rawEnd: this.ends.raw,
      lightMap: state.lightMap,
      degreeMap: state.degreeMap,
      fullScale: frame.facts?.fullScale ?? 255,
      outputMaximum: frame.facts?.outputMaximum ?? 65535,
    });
  }

  /** @param {Cell} cell @param {StoredFrame} frame */
  showLegend(cell, frame) {
    const { state } = this.store;
    const { kind } = cell.wanted;
    const fullScale = frame.facts?.fullScale ?? 255;
    const key = [kind, state.style, ...Object.values(this.ends), state.lightMap, state.degreeMap, fullScale].join(' ');
    if (cell.legendKey !== key) {
      cell.legendKey = key;
      cell.legend.replaceChildren(...legend(kind, this.tablesFor(frame), { ends: this.ends, fullScale }));
    }
  }
}

/** @param {Box} box @param {number} ratio @returns {Box} */
function scaledBox(box, ratio) {
  const left = Math.round(box.left * ratio);
  const top = Math.round(box.top * ratio);
  return { left, top, width: Math.max(1, Math.round(box.width * ratio)), height: Math.max(1, Math.round(box.height * ratio)) };
}
