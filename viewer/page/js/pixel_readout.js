/**
 * The values of the pixel under the cursor, of both sides in a comparison.
 *
 * @import {Settings} from './types.js'
 * @import {Stage} from './stage.js'
 * @import {PixelValues} from './tiles.js'
 */
import { byId, make } from './elements.js';
import { polarizerAt } from './mosaic.js';
import { hasFrame } from './sequence.js';
import { TileCache } from './tiles.js';

/** @param {number} value @param {number} digits */
export const fixed = (value, digits) => (Number.isFinite(value) ? value.toFixed(digits).replace('-', '−') : '–');

/**
 * The rows below the samples: what it is called, its name among the images, its text and its exact value.
 *
 * @type {readonly [string, string, (values: PixelValues) => [string, number]][]}
 */
const rows = [
  ['P', 's0', ({ s0 }) => [fixed(s0, 1), s0]],
  ['S1', 's1', ({ s1 }) => [fixed(s1, 1), s1]],
  ['S2', 's2', ({ s2 }) => [fixed(s2, 1), s2]],
  ['S1 / P', 'stokes1', ({ stokes }) => [fixed(stokes[0], 4), stokes[0]]],
  ['S2 / P', 'stokes2', ({ stokes }) => [fixed(stokes[1], 4), stokes[1]]],
  ['Angle', 'angle', ({ angle }) => [Number.isFinite(angle) ? `${fixed(angle, 2)}°` : '–', angle]],
  ['Degree', 'dolp', ({ dolp, facts }) => [fixed(dolp / facts.outputMaximum, 4), dolp]],
];

/**
 * @param {Stage} stage
 * @returns {{tiles: TileCache}}
 */
export function showPixelValues(stage) {
  const { store } = stage;
  const place = byId('pixel-place', HTMLElement);
  const content = byId('pixel-values', HTMLElement);
  const tiles = new TileCache(() => update());
  /** What was shown last of this pixel: it stays while the next frame's values are on their way. */
  let last = { key: '', found: /** @type {(PixelValues | null)[]} */ ([]) };

  /** @param {Settings} settings @param {PixelValues | null} values @param {string} side */
  const samples = (settings, values, side) => {
    const { cursor } = store.state;
    const boxes = [0, 1, 2, 3].map((i) => {
      const saturated = values !== null && values.samples[i] >= values.facts.saturatedFrom;
      const angle = cursor ? polarizerAt(settings, cursor.x + (i & 1), cursor.y + (i >> 1)) : null;
      const box = make('div', { class: saturated ? 'sample saturated' : 'sample', 'data-value': String(values?.samples[i] ?? '') }, [
        make('span', { class: 'angle' }, [angle === null ? '' : `${angle}°`]),
        make('span', { class: 'number' }, [values ? String(values.samples[i]) : '–']),
      ]);
      if (saturated) {
        box.append(make('span', { class: 'flag' }, ['saturated']));
      }
      return box;
    });
    return make('div', { class: 'samples', 'data-side': side, role: 'group', 'aria-label': `Samples ${side}` }, boxes);
  };

  function update() {
    const { state } = store;
    const { cursor } = state;
    /** @param {{width: number, height: number} | null} frame */
    const isInside = (frame) => cursor && frame && cursor.x >= 0 && cursor.y >= 0 && cursor.x < frame.width && cursor.y < frame.height;
    const inside = cursor && isInside(stage.frameSize());
    place.textContent = inside ? `x ${cursor.x}  y ${cursor.y}` : 'move over a picture';
    const sides = state.mode === 'compare' ? [state.settings, state.other] : [state.settings];
    const asked = sides.map((settings) => {
      const frame = hasFrame(stage.session, settings) ? stage.sizeOf(settings) : null;
      if (!frame) {
        return stage.frames.find(settings)?.error ? null : undefined;
      }
      return cursor && isInside(frame) ? tiles.values(settings, cursor, frame) : null;
    });
    const key = [cursor?.x, cursor?.y, sides.length].join(' ');
    const found = asked.map((values, i) => (values !== undefined ? values : last.key === key ? last.found[i] ?? null : null));
    last = { key, found };
    const table = make('table', {}, [
      make('tbody', {}, rows.map(([title, name, text]) =>
        make('tr', {}, [
          make('th', { scope: 'row' }, [title]),
          ...found.map((values, i) => {
            const [shown, value] = values ? text(values) : ['–', ''];
            return make('td', { 'data-name': name, 'data-side': i ? 'b' : 'a', 'data-value': asked[i] ? String(value) : '' }, [shown]);
          }),
        ]))),
    ]);
    if (sides.length > 1) {
      table.prepend(make('thead', {}, [make('tr', {}, [make('td', {}), make('th', { scope: 'col' }, ['A']), make('th', { scope: 'col' }, ['B'])])]));
    }
    const saturated = found.some((values) => values?.samples.some((sample) => sample >= values.facts.saturatedFrom));
    content.replaceChildren(
      make('div', { class: 'sample-sets' }, sides.flatMap((settings, i) => [
        sides.length > 1 ? make('span', { class: 'side-name' }, [i ? 'B' : 'A']) : '',
        samples(settings, found[i] ?? null, i ? 'b' : 'a'),
      ])),
      table,
      make('p', { class: saturated ? 'state saturated' : 'state', id: 'saturation' },
        [!inside || !found.some(Boolean) ? ' ' : saturated ? 'A sample is saturated: the values are not to be trusted.' : 'No sample is saturated.']));
  }

  store.subscribe((state, before) => {
    if (state.cursor !== before.cursor || state.settings !== before.settings || state.other !== before.other || state.mode !== before.mode) {
      update();
    }
  });
  stage.afterFrame.push(() => update());
  update();
  return { tiles };
}
