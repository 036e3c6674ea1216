/**
 * What is drawn over the pictures: single pixels and their polarizers, lines of angle, the cursor and the region.
 *
 * @import {StoredFrame} from './frame_store.js'
 * @import {Box, PanelKind, Point, Region, Settings, View} from './types.js'
 */
import { framePoint, panelPoint, visibleRegion } from './geometry.js';
import { polarizerAt } from './mosaic.js';

/**
 * In CSS pixels; `polarizers` where they are drawn at this panel.
 *
 * @typedef {{box: Box, kind: PanelKind, settings: Settings, frame: StoredFrame | null, polarizers: boolean}} OverlaidPanel
 * @typedef {{view: View, cursor: Point | null, region: Region | null, lines: boolean}} Marks
 */

/** Widths of a pixel on the screen from which more of it is drawn. */
const gridFrom = 10;
const polarizersFrom = 9;
const numbersFrom = 44;

/**
 * Twice, dark below light, so that it shows on every colour.
 *
 * @param {CanvasRenderingContext2D} context
 * @param {number} width
 * @param {() => void} trace
 */
function strokeTwice(context, width, trace) {
  for (const [colour, line] of /** @type {[string, number][]} */ ([['rgba(0, 0, 0, 0.75)', width + 2], ['#fff', width]])) {
    context.strokeStyle = colour;
    context.lineWidth = line;
    context.beginPath();
    trace();
    context.stroke();
  }
}

/**
 * @param {CanvasRenderingContext2D} context
 * @param {number} x
 * @param {number} y
 * @param {number} degrees counter-clockwise from the horizontal
 * @param {number} length
 */
function traceLine(context, x, y, degrees, length) {
  const across = (Math.cos((degrees * Math.PI) / 180) * length) / 2;
  const up = (Math.sin((degrees * Math.PI) / 180) * length) / 2;
  context.moveTo(x - across, y + up);
  context.lineTo(x + across, y - up);
}

/**
 * @param {CanvasRenderingContext2D} context
 * @param {OverlaidPanel} panel
 * @param {View} view
 * @param {Region} seen
 */
function drawPixels(context, { box, kind, settings, frame, polarizers }, view, seen) {
  const { scale } = view;
  const corner = panelPoint(view, box, seen.x, seen.y);
  if (scale >= gridFrom) {
    context.strokeStyle = 'rgba(128, 128, 128, 0.45)';
    context.lineWidth = 1;
    context.beginPath();
    for (let x = 0; x <= seen.width; ++x) {
      context.moveTo(Math.round(corner.left + x * scale) + 0.5, corner.top);
      context.lineTo(Math.round(corner.left + x * scale) + 0.5, corner.top + seen.height * scale);
    }
    for (let y = 0; y <= seen.height; ++y) {
      context.moveTo(corner.left, Math.round(corner.top + y * scale) + 0.5);
      context.lineTo(corner.left + seen.width * scale, Math.round(corner.top + y * scale) + 0.5);
    }
    context.stroke();
  }
  if (polarizers && scale >= polarizersFrom) {
    strokeTwice(context, scale >= 24 ? 2 : 1.2, () => {
      for (let y = 0; y < seen.height; ++y) {
        for (let x = 0; x < seen.width; ++x) {
          traceLine(context, corner.left + (x + 0.5) * scale, corner.top + (y + (scale >= numbersFrom ? 0.36 : 0.5)) * scale,
            polarizerAt(settings, seen.x + x, seen.y + y), scale * (scale >= numbersFrom ? 0.4 : 0.6));
        }
      }
    });
  }
  const raw = frame?.full?.arrays.raw ?? null;
  const near = frame?.sight?.step === 1 ? frame.sight : null;
  if (kind === 'raw' && scale >= numbersFrom && (raw || near?.arrays.raw)) {
    context.font = `${Math.min(15, scale / 4.2)}px ui-monospace, monospace`;
    context.textAlign = 'center';
    for (let y = 0; y < seen.height; ++y) {
      for (let x = 0; x < seen.width; ++x) {
        const value = raw && frame?.full
          ? raw[(seen.y + y) * frame.full.columns + seen.x + x]
          : near?.arrays.raw?.[(seen.y + y - near.region.y) * near.columns + seen.x + x - near.region.x];
        const text = String(value ?? '');
        const [left, top] = [corner.left + (x + 0.5) * scale, corner.top + (y + 0.86) * scale];
        context.strokeStyle = 'rgba(0, 0, 0, 0.8)';
        context.lineWidth = 3;
        context.strokeText(text, left, top);
        context.fillStyle = '#fff';
        context.fillText(text, left, top);
      }
    }
  }
}

/**
 * Lines of the light's angle, as long as its degree; readable without telling hues apart.
 *
 * @param {CanvasRenderingContext2D} context
 * @param {OverlaidPanel} panel
 * @param {View} view
 */
function drawAngles(context, { box, frame }, view) {
  const layers = [frame?.full, frame?.sight, frame?.overview];
  const layer = layers.find((one) => one?.arrays.azimuth && one.arrays.dolp);
  if (!layer || !frame?.facts) {
    return;
  }
  const { region, step, columns, rows, arrays } = layer;
  const maximum = frame.facts.outputMaximum;
  const pixels = Math.max(1, Math.ceil(18 / view.scale));
  const gap = pixels * view.scale;
  const first = framePoint(view, box, 0, 0);
  strokeTwice(context, 1.4, () => {
    for (let y = Math.floor(first.y / pixels) * pixels; y < first.y + box.height / view.scale; y += pixels) {
      for (let x = Math.floor(first.x / pixels) * pixels; x < first.x + box.width / view.scale; x += pixels) {
        // The middle one of the pixels that the line stands for.
        const column = Math.floor((x + Math.floor(pixels / 2) - region.x) / step);
        const row = Math.floor((y + Math.floor(pixels / 2) - region.y) / step);
        if (column < 0 || row < 0 || column >= columns || row >= rows) {
          continue;
        }
        const at = row * columns + column;
        const degree = arrays.dolp[at] / maximum;
        const middle = panelPoint(view, box, x + pixels / 2, y + pixels / 2);
        if (degree > 0.02) {
          traceLine(context, middle.left, middle.top, (arrays.azimuth[at] / maximum) * 180 - 90, gap * 0.9 * Math.sqrt(degree));
        }
      }
    }
  });
}

/**
 * @param {HTMLCanvasElement} canvas
 * @param {number} ratio of the screen's pixels to CSS pixels
 * @param {OverlaidPanel[]} panels
 * @param {Marks} marks
 */
export function drawOverlay(canvas, ratio, panels, { view, cursor, region, lines }) {
  const context = /** @type {CanvasRenderingContext2D} */ (canvas.getContext('2d'));
  context.setTransform(1, 0, 0, 1, 0, 0);
  context.clearRect(0, 0, canvas.width, canvas.height);
  for (const panel of panels) {
    const { box, frame } = panel;
    const facts = frame?.facts;
    const seen = facts && visibleRegion(view, box, facts);
    if (!seen) {
      continue;
    }
    context.save();
    context.setTransform(ratio, 0, 0, ratio, box.left * ratio, box.top * ratio);
    context.beginPath();
    context.rect(0, 0, box.width, box.height);
    context.clip();
    drawPixels(context, panel, view, seen);
    // Where polarizers are drawn, other lines would be taken for them.
    if (lines && !(panel.polarizers && view.scale >= polarizersFrom)) {
      drawAngles(context, panel, view);
    }
    if (region) {
      const at = panelPoint(view, box, region.x, region.y);
      strokeTwice(context, 1.5, () => context.rect(at.left, at.top, region.width * view.scale, region.height * view.scale));
    }
    if (cursor) {
      drawCursor(context, panelPoint(view, box, cursor.x, cursor.y), view.scale);
    }
    context.restore();
  }
}

/**
 * The pixel and, below and right of it, the neighbours that it is computed with.
 *
 * @param {CanvasRenderingContext2D} context
 * @param {{left: number, top: number}} at
 * @param {number} scale
 */
function drawCursor(context, at, scale) {
  const half = scale / 2;
  if (scale >= 6) {
    strokeTwice(context, 1.5, () => context.rect(at.left, at.top, scale, scale));
    context.setLineDash([4, 3]);
    strokeTwice(context, 1, () => context.rect(at.left, at.top, 2 * scale, 2 * scale));
    context.setLineDash([]);
    return;
  }
  strokeTwice(context, 1, () => {
    for (const [x, y] of [[1, 0], [-1, 0], [0, 1], [0, -1]]) {
      context.moveTo(at.left + half + x * 4, at.top + half + y * 4);
      context.lineTo(at.left + half + x * 11, at.top + half + y * 11);
    }
  });
}
