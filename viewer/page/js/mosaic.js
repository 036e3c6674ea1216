/** The sensor's 2 x 2 pattern of polarizers. */

export const layouts = /** @type {const} */ ([0, 45, 90, 135]);

/** Angles by layout: top-left, top-right, bottom-left, bottom-right at even sensor coordinates. */
const patterns = { 0: [0, 135, 45, 90], 45: [45, 90, 0, 135], 90: [90, 45, 135, 0], 135: [135, 0, 90, 45] };

/**
 * The angle in degrees of the polarizer over a pixel, counter-clockwise from the horizontal.
 *
 * @param {{layout: number, origin: readonly [number, number]}} settings
 * @param {number} x
 * @param {number} y
 */
export function polarizerAt(settings, x, y) {
  const pattern = patterns[/** @type {0 | 45 | 90 | 135} */ (settings.layout)];
  return pattern[((settings.origin[1] + y) & 1) * 2 + ((settings.origin[0] + x) & 1)];
}
