/**
 * Where frames lie on the screen. Panels of one size share one view, so all that is said here holds for each of them.
 *
 * @import {Box, Point, Region, View} from './types.js'
 */

export const largestScale = 160;

/**
 * The scale at which a whole frame is seen.
 *
 * @param {{width: number, height: number}} frame
 * @param {{width: number, height: number}} box
 */
export function fitScale(frame, box) {
  return Math.min(box.width / frame.width, box.height / frame.height);
}

/**
 * The frame's point under a place in a panel.
 *
 * @param {View} view
 * @param {Box} box
 * @param {number} left from the panel's left
 * @param {number} top
 * @returns {Point}
 */
export function framePoint(view, box, left, top) {
  return { x: view.x + (left - box.width / 2) / view.scale, y: view.y + (top - box.height / 2) / view.scale };
}

/**
 * The place in a panel, from its left and top, of a point of the frame.
 *
 * @param {View} view
 * @param {Box} box
 * @param {number} x
 * @param {number} y
 */
export function panelPoint(view, box, x, y) {
  return { left: (x - view.x) * view.scale + box.width / 2, top: (y - view.y) * view.scale + box.height / 2 };
}

/**
 * The frame's pixels that a panel shows at least a part of; nothing where it shows none.
 *
 * @param {View} view
 * @param {Box} box
 * @param {{width: number, height: number}} frame
 * @returns {Region | null}
 */
export function visibleRegion(view, box, frame) {
  const from = framePoint(view, box, 0, 0);
  const to = framePoint(view, box, box.width, box.height);
  const x = Math.max(0, Math.floor(from.x));
  const y = Math.max(0, Math.floor(from.y));
  const width = Math.min(frame.width, Math.ceil(to.x)) - x;
  const height = Math.min(frame.height, Math.ceil(to.y)) - y;
  return width > 0 && height > 0 ? { x, y, width, height } : null;
}

/**
 * A view that keeps some of the frame in sight: its middle stays inside the frame, its scale within bounds.
 *
 * @param {View} view
 * @param {Box} box
 * @param {{width: number, height: number}} frame
 * @returns {View}
 */
export function limitedView(view, box, frame) {
  const fit = fitScale(frame, box);
  const scale = Math.min(Math.max(largestScale, fit), Math.max(Math.min(fit, 1), view.scale));
  /** @param {number} value @param {number} size @param {number} shown */
  const limited = (value, size, shown) =>
    shown >= size ? size / 2 : Math.min(size - shown / 2, Math.max(shown / 2, value));
  return {
    x: limited(view.x, frame.width, Math.min(frame.width, box.width / scale)),
    y: limited(view.y, frame.height, Math.min(frame.height, box.height / scale)),
    scale,
  };
}

/**
 * Zooms so that the point under a place of the panel stays there.
 *
 * @param {View} view
 * @param {Box} box
 * @param {number} factor
 * @param {number} left
 * @param {number} top
 * @returns {View}
 */
export function zoomedView(view, box, factor, left, top) {
  const fixed = framePoint(view, box, left, top);
  const scale = Math.min(largestScale, view.scale * factor);
  return { x: fixed.x - (left - box.width / 2) / scale, y: fixed.y - (top - box.height / 2) / scale, scale };
}

/**
 * The region between two pixels, both included.
 *
 * @param {Point} a
 * @param {Point} b
 * @returns {Region}
 */
export function regionBetween(a, b) {
  const x = Math.min(a.x, b.x);
  const y = Math.min(a.y, b.y);
  return { x, y, width: Math.abs(a.x - b.x) + 1, height: Math.abs(a.y - b.y) + 1 };
}

/**
 * @param {Point} point
 * @param {{width: number, height: number}} frame
 * @returns {Point}
 */
export function pixelInside(point, frame) {
  return {
    x: Math.min(frame.width - 1, Math.max(0, Math.floor(point.x))),
    y: Math.min(frame.height - 1, Math.max(0, Math.floor(point.y))),
  };
}
