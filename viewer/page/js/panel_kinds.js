/**
 * The panels: one row each, from which titles, keys, requests, legends and exports follow.
 *
 * @import {PanelKind, Style} from './types.js'
 *
 * @typedef {{title: string, short: string, note: string, images: readonly string[], exported: string}} PanelFacts
 */

/** @type {Readonly<Record<PanelKind, PanelFacts>>} */
export const panelKinds = {
  raw: { title: 'Raw frame', short: 'Raw', note: 'one polarizer per pixel', images: ['raw'], exported: 'raw' },
  power: { title: 'Total power', short: 'Power', note: 'P', images: ['power'], exported: 'power' },
  angle: { title: 'Angle', short: 'Angle', note: '½ atan2(S2, S1)', images: ['azimuth'], exported: 'angle' },
  degree: { title: 'Degree', short: 'Degree', note: '√(S1² + S2²) / P', images: ['dolp'], exported: 'dolp' },
  s1: { title: 'Horizontal / vertical', short: 'S1', note: 'S1 / P', images: ['stokes'], exported: 's1' },
  s2: { title: 'Diagonal', short: 'S2', note: 'S2 / P', images: ['stokes'], exported: 's2' },
  coloured: { title: 'Coloured angle', short: 'Colour', note: 'angle and degree', images: ['azimuth', 'dolp', 'power'], exported: 'azimuth' },
};

export const allKinds = /** @type {PanelKind[]} */ (Object.keys(panelKinds));

/**
 * The images that a panel is painted from.
 *
 * @param {PanelKind} kind
 * @param {Style} style
 */
export function imagesOf(kind, style) {
  if (kind !== 'coloured') {
    return panelKinds[kind].images;
  }
  return panelKinds.coloured.images.slice(0, style === 'plain' ? 1 : style === 'composite' ? 3 : 2);
}
