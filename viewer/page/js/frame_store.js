/**
 * Frames as the server gave them. A frame comes in three layers: an overview with every `step`th pixel, what is in sight
 * at the screen's resolution, and the whole in full size, which is fetched when nothing else is wanted.
 *
 * @import {FrameFacts, Layer, PixelArray, Region, Settings} from './types.js'
 *
 * @typedef {object} StoredFrame
 * @property {string} key
 * @property {Settings} settings
 * @property {FrameFacts | null} facts
 * @property {string | null} error the sentence that says why there is no frame
 * @property {Layer | null} overview
 * @property {Layer | null} sight
 * @property {Layer | null} full
 * @property {AbortController | null} waiting
 * @property {Map<string, Promise<void>>} requests
 *
 * What is wanted of a frame: full-size images by name, and what is in sight.
 * @typedef {{settings: Settings, images: string[], overviewStep: number,
 *   sight: {region: Region, step: number} | null}} Wish
 */
import { fetchImages } from './api.js';

/** @param {Settings} settings */
export function settingsKey(settings) {
  return [settings.source, settings.frame, settings.layout, ...settings.origin, settings.calibration, settings.bitDepth, settings.plane].join(' ');
}

const overviewImages = ['raw4', 'power', 'azimuth', 'dolp', 'stokes'];
const keptOverviews = 60;
const keptFull = 3;

/** @param {Region} outer @param {Region} inner */
function covers(outer, inner) {
  return outer.x <= inner.x && outer.y <= inner.y && outer.x + outer.width >= inner.x + inner.width &&
    outer.y + outer.height >= inner.y + inner.height;
}

export class FrameStore {
  /** @param {(frame: StoredFrame) => void} changed called whenever something of a frame has come */
  constructor(changed) {
    this.changed = changed;
    /** @type {Map<string, StoredFrame>} in the order of their last use */
    this.frames = new Map();
    /** @type {Wish[]} */
    this.wishes = [];
    /** @type {ReturnType<typeof setTimeout> | undefined} */
    this.idle = undefined;
    /** Milliseconds without a new wish after which full-size images are fetched. */
    this.patience = 40;
  }

  /** @param {Settings} settings */
  find(settings) {
    return this.frames.get(settingsKey(settings)) ?? null;
  }

  /** @param {Settings} settings */
  frame(settings) {
    const key = settingsKey(settings);
    const known = this.frames.get(key);
    /** @type {StoredFrame} */
    const frame = known ?? { key, settings, facts: null, error: null, overview: null, sight: null, full: null, waiting: null, requests: new Map() };
    this.frames.delete(key);
    this.frames.set(key, frame);
    return frame;
  }

  /**
   * Says what is wanted now. Requests for anything else end.
   *
   * @param {Wish[]} wishes the most wanted first
   */
  want(wishes) {
    this.wishes = wishes;
    const keys = new Set(wishes.map(({ settings }) => settingsKey(settings)));
    for (const frame of this.frames.values()) {
      if (!keys.has(frame.key) && frame.waiting) {
        frame.waiting.abort();
        frame.waiting = null;
        frame.requests.clear();
      }
    }
    for (const wish of wishes) {
      const frame = this.frame(wish.settings);
      if (frame.error !== null) {
        continue;
      }
      if (!frame.overview) {
        this.request(frame, 'overview', overviewImages, wish.overviewStep, null, (layer) => (frame.overview = layer));
      }
      this.wantSight(frame, wish);
    }
    clearTimeout(this.idle);
    this.idle = setTimeout(() => this.fillNext(), this.patience);
    this.forgetOldest(keys);
  }

  /** @param {StoredFrame} frame @param {Wish} wish */
  wantSight(frame, { sight, images, overviewStep }) {
    const complete = images.every((name) => frame.full?.arrays[name]);
    if (!sight || complete || sight.step >= (frame.overview?.step ?? overviewStep)) {
      return;
    }
    const known = frame.sight;
    if (known && known.step <= sight.step && covers(known.region, sight.region)) {
      return;
    }
    // A step above 1 takes the frame's pixels at its multiples, as the overview does.
    const { region, step } = sight;
    const x = Math.floor(region.x / step) * step;
    const y = Math.floor(region.y / step) * step;
    const wanted = { x, y, width: region.x + region.width - x, height: region.y + region.height - y };
    const names = step === 1 ? images : images.map((name) => (name === 'raw' ? 'raw4' : name));
    this.request(frame, 'sight', names, step, wanted, (layer) => (frame.sight = layer));
  }

  /** Fetches the next full-size image of the wishes, one after another. */
  fillNext() {
    for (const { settings, images } of this.wishes) {
      const frame = this.frame(settings);
      if (frame.error !== null || !frame.overview) {
        continue;
      }
      const missing = images.find((name) => !frame.full?.arrays[name]);
      if (!missing) {
        continue;
      }
      if (![...frame.requests.keys()].some((name) => name.startsWith('full'))) {
        this.request(frame, `full ${missing}`, [missing], 1, null, (layer) => {
          frame.full = frame.full ? { ...frame.full, arrays: { ...frame.full.arrays, ...layer.arrays } } : layer;
          this.fillNext();
        });
      }
      return;
    }
  }

  /**
   * @param {StoredFrame} frame
   * @param {string} name of the request; a second one of a name is made only when the first has ended
   * @param {readonly string[]} images
   * @param {number} step
   * @param {Region | null} region
   * @param {(layer: Layer) => void} take
   */
  request(frame, name, images, step, region, take) {
    if (frame.requests.has(name)) {
      return;
    }
    frame.waiting ??= new AbortController();
    const { signal } = frame.waiting;
    const done = async () => {
      try {
        const { facts, layer } = await fetchImages(frame.settings, images, step, region, signal);
        frame.requests.delete(name);
        frame.facts = facts;
        take(layer);
      } catch (failure) {
        if (signal.aborted) {
          return;
        }
        frame.requests.delete(name);
        frame.error = failure instanceof Error ? failure.message : String(failure);
      }
      this.changed(frame);
    };
    frame.requests.set(name, done());
  }

  /** Whether anything that is wanted has not come yet. */
  busy() {
    return this.wishes.some(({ settings }) => (this.find(settings)?.requests.size ?? 0) > 0);
  }

  /**
   * All images of a frame in full size.
   *
   * @param {Settings} settings
   * @param {readonly string[]} images
   */
  async complete(settings, images) {
    const frame = this.frame(settings);
    const missing = images.filter((name) => !frame.full?.arrays[name]);
    if (missing.length > 0) {
      const { facts, layer } = await fetchImages(settings, missing, 1, null);
      frame.facts = facts;
      frame.full = { ...layer, arrays: { ...frame.full?.arrays, ...layer.arrays } };
    }
    return frame;
  }

  /** Whether something of a frame can be shown, or why not. @param {Settings} settings */
  hasCome(settings) {
    const frame = this.find(settings);
    return frame !== null && (frame.overview !== null || frame.error !== null);
  }

  /** Whether a frame of a source could not be had. @param {number} source */
  hasFailed(source) {
    return [...this.frames.values()].some(({ settings, error }) => settings.source === source && error !== null);
  }

  /** The frames of a source are others now. @param {number} source */
  forget(source) {
    for (const frame of this.frames.values()) {
      if (frame.settings.source === source) {
        frame.waiting?.abort();
        this.frames.delete(frame.key);
      }
    }
  }

  /** @param {Set<string>} wanted */
  forgetOldest(wanted) {
    const others = [...this.frames.values()].filter(({ key }) => !wanted.has(key));
    const withFull = others.filter(({ full }) => full);
    for (const frame of withFull.slice(0, Math.max(0, withFull.length - keptFull))) {
      frame.full = null;
    }
    for (const frame of others) {
      frame.sight = null;
    }
    for (const frame of others.slice(0, Math.max(0, others.length - keptOverviews))) {
      this.frames.delete(frame.key);
    }
  }

  /** All arrays that may still be painted. */
  arrays() {
    /** @type {Set<PixelArray>} */
    const live = new Set();
    for (const frame of this.frames.values()) {
      for (const layer of [frame.overview, frame.sight, frame.full]) {
        Object.values(layer?.arrays ?? {}).forEach((array) => live.add(array));
      }
    }
    return live;
  }
}
