/**
 * Statistics of the region, of both sides in a comparison.
 *
 * @import {RegionStatistics} from './api.js'
 * @import {Stage} from './stage.js'
 */
import { fetchRegion } from './api.js';
import { hueTable } from './colours.js';
import { byId, make } from './elements.js';
import { drawHalfWheel } from './half_wheel.js';
import { fixed } from './pixel_readout.js';
import { hasFrame } from './sequence.js';

/** The mean angle where the half-wheel shows it, 0 to 180 degrees. @param {number} degrees */
const turned = (degrees) => ((degrees % 180) + 180) % 180;

/** @type {readonly [string, string, (one: RegionStatistics) => [string, number | null]][]} */
const rows = [
  ['Pixels', 'pixels', (one) => [String(one.pixels), one.pixels]],
  ['Mean angle', 'mean_angle_degrees', ({ mean_angle_degrees: mean }) => [mean === null ? '–' : `${fixed(turned(mean), 2)}°`, mean]],
  ['Deviation', 'angle_deviation_degrees', ({ angle_deviation_degrees: one }) => [one === null ? '–' : `${fixed(one, 2)}°`, one]],
  ['Resultant length', 'resultant_length', ({ resultant_length: one }) => [one === null ? '–' : fixed(one, 4), one]],
  ['Mean degree', 'mean_degree', ({ mean_degree: one }) => [one === null ? '–' : fixed(one, 4), one]],
  ['Saturated samples', 'saturated', (one) => [String(one.saturated_pixels.frame), one.saturated_pixels.frame ?? 0]],
  ['Dark samples', 'dark', (one) => [String(one.dark_pixels.frame), one.dark_pixels.frame ?? 0]],
];

/** @param {Stage} stage */
export function showRegion(stage) {
  const { store } = stage;
  const place = byId('region-place', HTMLElement);
  const content = byId('region-values', HTMLElement);
  const message = byId('region-message', HTMLElement);
  const wheels = [byId('wheel-a', HTMLCanvasElement), byId('wheel-b', HTMLCanvasElement)];
  let waiting = new AbortController();
  let busy = false;
  let again = false;
  /** @type {ReturnType<typeof setTimeout> | undefined} */
  let soon;
  /** @type {(RegionStatistics | null)[]} */
  let shown = [];
  const hues = hueTable(stage.tables.tables, 65535);

  /** @param {(RegionStatistics | null)[]} found */
  const show = (found) => {
    shown = found;
    content.replaceChildren(make('table', {}, [
      make('tbody', {}, rows.map(([title, name, text]) => make('tr', {}, [
        make('th', { scope: 'row' }, [title]),
        ...found.map((one, i) => {
          const [words, value] = one ? text(one) : ['–', null];
          return make('td', { 'data-name': name, 'data-side': i ? 'b' : 'a', 'data-value': String(value ?? '') }, [words]);
        }),
      ]))),
    ]));
    wheels.forEach((wheel, i) => {
      const one = found[i];
      wheel.hidden = !one;
      if (one) {
        const mean = one.mean_angle_degrees === null ? null : turned(one.mean_angle_degrees);
        wheel.setAttribute('aria-label', mean === null
          ? 'Histogram of the angle: no pixel has one'
          : `Histogram of the angle, 0 to 180 degrees, mean ${mean.toFixed(1)} degrees`);
        drawHalfWheel(wheel, one.histogram, mean, hues, found.length > 1 ? 'AB'[i] : '');
      }
    });
  };

  const fetchNow = async () => {
    const { region, mode, settings, other } = store.state;
    if (!region || region.width < 2 || region.height < 2 || !hasFrame(stage.session, settings)) {
      return;
    }
    waiting = new AbortController();
    const { signal } = waiting;
    busy = true;
    try {
      const sides = mode === 'compare' ? [settings, other] : [settings];
      const found = await Promise.all(sides.map((one) => fetchRegion(one, region, signal)));
      message.textContent = '';
      show(found);
    } catch (failure) {
      if (!signal.aborted) {
        message.textContent = failure instanceof Error ? failure.message : String(failure);
        show([]);
      }
    }
    busy = false;
    if (again) {
      again = false;
      ask();
    }
  };
  /** One request after another: where frames follow fast, each that has been asked for is shown. */
  const ask = () => {
    again = busy;
    if (!busy) {
      soon ??= setTimeout(() => {
        soon = undefined;
        fetchNow();
      }, 60);
    }
  };

  const update = () => {
    const { region } = store.state;
    place.textContent = region ? `${region.width}\u00a0×\u00a0${region.height} at\u00a0${region.x},\u00a0${region.y}` : 'Shift and drag';
    byId('region', HTMLElement).classList.toggle('empty', !region);
    if (region) {
      ask();
    } else {
      waiting.abort();
      message.textContent = '';
      show([]);
    }
  };
  store.subscribe((state, before) => {
    if (state.region !== before.region || (state.region && (state.settings !== before.settings || state.other !== before.other || state.mode !== before.mode))) {
      update();
    }
  });
  matchMedia('(prefers-color-scheme: dark)').addEventListener('change', () => show(shown));
  update();
  return { redraw: () => show(shown) };
}
