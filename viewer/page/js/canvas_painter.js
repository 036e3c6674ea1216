/**
 * The painter where there is no WebGL2.
 *
 * @import {Box, Layer, PanelKind, PixelArray, View} from './types.js'
 * @import {PanelTables} from './colours.js'
 */
import { paintLayer } from './pixels.js';

/**
 * A panel to paint, in pixels of the canvas; coarse layers first.
 *
 * @typedef {{box: Box, view: View, kind: PanelKind, layers: Layer[], tables: PanelTables}} PaintedPanel
 *
 * @typedef {object} Painter
 * @property {string} name
 * @property {(width: number, height: number) => void} resize
 * @property {(panels: PaintedPanel[]) => boolean} paint false where more is to come, as soon as the next picture
 * @property {(live: Set<PixelArray>) => void} retain forgets all that belongs to other arrays
 */

/**
 * @param {HTMLCanvasElement} canvas
 * @returns {Painter}
 */
export function createCanvasPainter(canvas) {
  const context = /** @type {CanvasRenderingContext2D} */ (canvas.getContext('2d'));
  return {
    name: 'canvas',
    resize(width, height) {
      canvas.width = width;
      canvas.height = height;
    },
    paint(panels) {
      context.clearRect(0, 0, canvas.width, canvas.height);
      for (const { box, view, kind, layers, tables } of panels) {
        const picture = context.createImageData(box.width, box.height);
        const target = new Uint32Array(picture.data.buffer);
        for (const layer of layers) {
          paintLayer(kind, layer, tables, view, box, target);
        }
        context.putImageData(picture, box.left, box.top);
      }
      return true;
    },
    retain() {},
  };
}
