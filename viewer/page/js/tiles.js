/**
 * All values of single pixels, in tiles around them: s0, s1, s2 and the angle as floats are many bytes, of which only
 * those under the cursor are shown.
 *
 * @import {FrameFacts, Layer, Settings} from './types.js'
 *
 * Everything the server has of a pixel. Samples: top-left, top-right, bottom-left, bottom-right.
 * @typedef {{samples: number[], power: number, azimuth: number, dolp: number, stokes: [number, number], s0: number,
 *   s1: number, s2: number, angle: number, facts: FrameFacts}} PixelValues
 */
import { fetchImages } from './api.js';
import { settingsKey } from './frame_store.js';

const side = 64;
const images = ['raw4', 'power', 'azimuth', 'dolp', 'stokes', 's0', 's1', 's2', 'angle'];
const kept = 128;

export class TileCache {
  /** @param {() => void} changed called when a tile has come */
  constructor(changed) {
    this.changed = changed;
    /** @type {Map<string, {facts: FrameFacts, layer: Layer} | 'asked' | null>} null where one cannot be had */
    this.tiles = new Map();
  }

  clear() {
    this.tiles.clear();
  }

  /**
   * The values of a pixel; undefined while they are fetched, null where they cannot be had.
   *
   * @param {Settings} settings
   * @param {{x: number, y: number}} pixel inside the frame
   * @param {{width: number, height: number}} frame
   * @returns {PixelValues | null | undefined}
   */
  values(settings, pixel, frame) {
    const x = Math.floor(pixel.x / side) * side;
    const y = Math.floor(pixel.y / side) * side;
    const key = `${settingsKey(settings)} ${x} ${y}`;
    const tile = this.tiles.get(key);
    if (tile === undefined) {
      const region = { x, y, width: Math.min(side, frame.width - x), height: Math.min(side, frame.height - y) };
      if (region.width > 0 && region.height > 0) {
        this.fetch(key, settings, region);
      }
    }
    if (!tile || tile === 'asked') {
      return tile === null ? null : undefined;
    }
    const { columns, arrays } = tile.layer;
    const at = (pixel.y - y) * columns + pixel.x - x;
    return {
      samples: [...arrays.raw4.subarray(4 * at, 4 * at + 4)],
      power: arrays.power[at],
      azimuth: arrays.azimuth[at],
      dolp: arrays.dolp[at],
      stokes: [arrays.stokes[2 * at], arrays.stokes[2 * at + 1]],
      s0: arrays.s0[at],
      s1: arrays.s1[at],
      s2: arrays.s2[at],
      angle: arrays.angle[at],
      facts: tile.facts,
    };
  }

  /** @param {string} key @param {Settings} settings @param {import('./types.js').Region} region */
  async fetch(key, settings, region) {
    this.tiles.set(key, 'asked');
    if (this.tiles.size > kept) {
      this.tiles.delete(/** @type {string} */ (this.tiles.keys().next().value));
    }
    try {
      this.tiles.set(key, await fetchImages(settings, images, 1, region));
      this.changed();
    } catch {
      // The panels say why a frame cannot be shown; asking again would bring the same answer.
      this.tiles.set(key, null);
      this.changed();
    }
  }
}
