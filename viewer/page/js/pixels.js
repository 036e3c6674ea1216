/**
 * Painting without a graphics interface: values to bytes, by the same tables as the other painter.
 *
 * @import {PanelTables} from './colours.js'
 * @import {Box, Layer, PanelKind, View} from './types.js'
 */
import { divergingPlace, mixedChannel, styleNumbers } from './colours.js';
import { framePoint } from './geometry.js';

/** @param {Uint8Array<ArrayBuffer>} table */
const words = (table) => new Uint32Array(table.buffer);

const opaque = 0xff000000;

/**
 * The sample of a layer for each of `count` pixels of the screen, -1 outside.
 *
 * @param {number} first the frame's place at the left or top edge
 * @param {number} scale
 * @param {number} count
 * @param {number} start of the layer
 * @param {number} size of the layer in pixels of the frame
 * @param {number} step
 * @param {number} samples
 */
function sampleIndex(first, scale, count, start, size, step, samples) {
  const index = new Int32Array(count);
  for (let i = 0; i < count; ++i) {
    const offset = Math.floor(first + (i + 0.5) / scale) - start;
    index[i] = offset < 0 || offset >= size ? -1 : Math.min(samples - 1, Math.floor(offset / step));
  }
  return index;
}

/**
 * What gives a sample's colour as red, green, blue and opaque in the bytes of a number.
 *
 * @param {PanelKind} kind
 * @param {Layer} layer
 * @param {PanelTables} tables
 * @param {boolean} mean whether the raw frame is shown as means of 2 x 2
 * @returns {((x: number, y: number) => number) | null} nothing where the layer lacks an image
 */
function colourAt(kind, layer, tables, mean) {
  const { columns, rows, arrays } = layer;
  /** @param {Uint8Array<ArrayBuffer>} table @param {import('./types.js').PixelArray} values */
  const lookedUp = (table, values) => {
    const colours = words(table);
    return (/** @type {number} */ x, /** @type {number} */ y) => (colours[values[y * columns + x]] | opaque) >>> 0;
  };
  if (kind === 'raw') {
    const colours = words(tables.raw);
    const { raw4, raw } = arrays;
    if (raw4) {
      return (x, y) => {
        const at = 4 * (y * columns + x);
        return (colours[(raw4[at] + raw4[at + 1] + raw4[at + 2] + raw4[at + 3] + 2) >> 2] | opaque) >>> 0;
      };
    }
    if (raw && mean && columns > 1 && rows > 1) {
      return (x, y) => {
        const at = Math.min(rows - 2, y & ~1) * columns + Math.min(columns - 2, x & ~1);
        return (colours[(raw[at] + raw[at + 1] + raw[at + columns] + raw[at + columns + 1] + 2) >> 2] | opaque) >>> 0;
      };
    }
    return raw ? lookedUp(tables.raw, raw) : null;
  }
  if (kind === 'power') {
    return arrays.power ? lookedUp(tables.power, arrays.power) : null;
  }
  if (kind === 'degree') {
    return arrays.dolp ? lookedUp(tables.degree, arrays.dolp) : null;
  }
  if (kind === 's1' || kind === 's2') {
    const pairs = arrays.stokes;
    const channel = kind === 's1' ? 0 : 1;
    const colours = words(tables.diverging);
    const end = tables.signedEnd;
    return pairs ? (x, y) => colours[divergingPlace(pairs[2 * (y * columns + x) + channel] / end)] : null;
  }
  const { azimuth, dolp, power } = arrays;
  const style = kind === 'angle' ? styleNumbers.plain : tables.style;
  if (!azimuth || (style !== styleNumbers.plain && !dolp) || (style === styleNumbers.composite && !power)) {
    return null;
  }
  if (style === styleNumbers.plain) {
    return lookedUp(tables.hue, azimuth);
  }
  const { hue, degree, power: light } = tables;
  const composite = style === styleNumbers.composite;
  return (x, y) => {
    const at = y * columns + x;
    const from = 4 * azimuth[at];
    const level = degree[4 * dolp[at] + 3];
    const grey = composite ? light[4 * power[at] + 3] : 0;
    const red = mixedChannel(style, hue[from], level, grey);
    const green = mixedChannel(style, hue[from + 1], level, grey);
    const blue = mixedChannel(style, hue[from + 2], level, grey);
    return (opaque | (blue << 16) | (green << 8) | red) >>> 0;
  };
}

/**
 * Paints a layer into `target` (box.width x box.height, red first); what lies outside of it stays as it was.
 *
 * @param {PanelKind} kind
 * @param {Layer} layer
 * @param {PanelTables} tables
 * @param {View} view
 * @param {Box} box
 * @param {Uint32Array} target
 * @returns {boolean} whether the layer has the images for it
 */
export function paintLayer(kind, layer, tables, view, box, target) {
  const colour = colourAt(kind, layer, tables, view.scale < 1);
  if (!colour) {
    return false;
  }
  const corner = framePoint(view, box, 0, 0);
  const { region, step } = layer;
  const across = sampleIndex(corner.x, view.scale, box.width, region.x, region.width, step, layer.columns);
  const down = sampleIndex(corner.y, view.scale, box.height, region.y, region.height, step, layer.rows);
  for (let y = 0; y < box.height; ++y) {
    const row = down[y];
    if (row < 0) {
      continue;
    }
    const start = y * box.width;
    if (y > 0 && row === down[y - 1]) {
      // Magnified pixels repeat the row above.
      for (let x = 0; x < box.width; ++x) {
        if (across[x] >= 0) {
          target[start + x] = target[start + x - box.width];
        }
      }
      continue;
    }
    for (let x = 0; x < box.width; ++x) {
      if (across[x] >= 0) {
        target[start + x] = colour(across[x], row);
      }
    }
  }
  return true;
}
