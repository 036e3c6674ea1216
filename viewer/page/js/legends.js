/**
 * The legend below a panel: its colours from end to end, ticks and unit.
 *
 * @import {PanelTables} from './colours.js'
 * @import {PanelKind} from './types.js'
 */
import { mixedChannel, styleNumbers } from './colours.js';
import { make } from './elements.js';

/** @param {number} value */
const short = (value) => String(Number(value.toPrecision(3)));

/** @typedef {{ends: {degree: number, power: number, raw: number}, fullScale: number}} Scales */

/**
 * @param {PanelKind} kind
 * @param {Scales} scales
 * @returns {{ticks: string[], unit: string}}
 */
function ticksOf(kind, { ends, fullScale }) {
  const angles = ['0°', '45°', '90°', '135°', '180°'];
  /** @param {number} end */
  const light = (end) => [0, 0.25, 0.5, 0.75, 1].map((share) => short(share * end * 100)).map((text) => `${text} %`);
  const signed = [-1, -0.5, 0, 0.5, 1].map((share) => (share > 0 ? '+' : '') + short(share * ends.degree).replace('-', '−'));
  switch (kind) {
    case 'raw':
      return { ticks: light(ends.raw), unit: `of full scale ${fullScale}` };
    case 'power':
      return { ticks: light(ends.power), unit: `of full scale ${fullScale}` };
    case 'degree':
      return { ticks: [0, 0.25, 0.5, 0.75, 1].map((share) => short(share * ends.degree)), unit: '1 is fully polarized' };
    case 's1':
      return { ticks: signed, unit: 'vertical to horizontal' };
    case 's2':
      return { ticks: signed, unit: '135° to 45°' };
    case 'angle':
      return { ticks: angles, unit: 'from the horizontal' };
    case 'coloured':
      return { ticks: angles, unit: `downwards: degree 0 to ${short(ends.degree)}` };
  }
}

/**
 * @param {PanelKind} kind
 * @param {PanelTables} tables
 * @param {Scales} scales
 * @param {Uint32Array} target
 * @param {number} width
 * @param {number} height
 */
function paintBar(kind, tables, { ends, fullScale }, target, width, height) {
  const bytes = new Uint8Array(target.buffer);
  for (let y = 0; y < height; ++y) {
    for (let x = 0; x < width; ++x) {
      const share = (x + 0.5) / width;
      /** @type {ArrayLike<number>} */
      let colour;
      if (kind === 'raw') {
        colour = entry(tables.raw, Math.round(share * ends.raw * fullScale));
      } else if (kind === 'power') {
        colour = entry(tables.power, Math.round(share * ends.power * 65535));
      } else if (kind === 'degree') {
        colour = entry(tables.degree, Math.round(share * ends.degree * 65535));
      } else if (kind === 's1' || kind === 's2') {
        colour = entry(tables.diverging, Math.round(share * 256));
      } else {
        // The azimuth image has 90 degrees more than the angle.
        const hue = entry(tables.hue, Math.round(((share + 0.5) % 1) * 65535));
        const level = Math.round((255 * (y + 0.5)) / height);
        const style = kind === 'angle' ? styleNumbers.plain : tables.style;
        colour = [0, 1, 2].map((channel) => mixedChannel(style, hue[channel], level, 200));
      }
      bytes.set([colour[0], colour[1], colour[2], 255], 4 * (y * width + x));
    }
  }
}

/** @param {Uint8Array} table @param {number} value */
const entry = (table, value) => table.subarray(4 * value, 4 * value + 3);

/**
 * @param {PanelKind} kind
 * @param {PanelTables} tables for an output maximum of 65535
 * @param {Scales} scales
 * @returns {Node[]}
 */
export function legend(kind, tables, scales) {
  const [width, height] = [180, kind === 'coloured' ? 12 : 1];
  const bar = make('canvas', { class: 'bar', width: String(width), height: String(height), 'aria-hidden': 'true' });
  const context = /** @type {CanvasRenderingContext2D} */ (bar.getContext('2d'));
  const picture = context.createImageData(width, height);
  paintBar(kind, tables, scales, new Uint32Array(picture.data.buffer), width, height);
  context.putImageData(picture, 0, 0);
  const { ticks, unit } = ticksOf(kind, scales);
  return [
    bar,
    make('div', { class: 'ticks' }, ticks.map((tick) => make('span', {}, [tick]))),
    make('div', { class: 'unit' }, [unit]),
  ];
}
