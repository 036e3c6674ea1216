/**
 * A pixel along time: its values in all frames of its file.
 *
 * @import {Series} from './api.js'
 * @import {Point, Session} from './types.js'
 * @import {Stage} from './stage.js'
 */
import { fetchSeries } from './api.js';
import { byId } from './elements.js';

/** @type {Record<string, {label: string, lines: (series: Series, maximum: number) => (number | null)[][], range: [number, number] | null}>} */
const quantities = {
  angle: { label: 'angle, degrees', lines: ({ angle }) => [angle], range: [0, 180] },
  degree: { label: 'degree', lines: ({ dolp }, maximum) => [dolp.map((value) => value === null ? null : value / maximum)], range: [0, 1] },
  power: { label: 'P, pixel values', lines: ({ s0 }) => [s0], range: null },
  stokes: { label: 'S1 (solid) and S2 (dashed)', lines: ({ s1, s2 }) => [s1, s2], range: null },
  samples: { label: 'samples', lines: ({ samples }) => [0, 1, 2, 3].map((i) => samples.map((four) => four[i])), range: null },
};

/** Milliseconds after which frames that have come are added. */
const renewal = 1000;

/**
 * @param {Stage} stage
 * @param {Session} session
 */
export function showSeries(stage, session) {
  const { store } = stage;
  const section = byId('series', HTMLElement);
  const canvas = byId('series-plot', HTMLCanvasElement);
  const choice = byId('series-quantity', HTMLSelectElement);
  const place = byId('series-place', HTMLElement);
  /** @type {Series | null} */
  let series = null;
  /** @type {Point | null} */
  let pixel = null;
  let waiting = new AbortController();
  let busy = false;
  /** @type {ReturnType<typeof setTimeout> | undefined} */
  let later;
  const left = 38;
  const source = () => session.sources[store.state.settings.source];
  const frames = () => source()?.frames ?? 1;

  function draw() {
    const ratio = window.devicePixelRatio || 1;
    const width = canvas.clientWidth;
    const height = canvas.clientHeight;
    if (!width || section.hidden) {
      return;
    }
    canvas.width = Math.round(width * ratio);
    canvas.height = Math.round(height * ratio);
    const context = /** @type {CanvasRenderingContext2D} */ (canvas.getContext('2d'));
    context.scale(ratio, ratio);
    const ink = getComputedStyle(canvas).color;
    context.strokeStyle = ink;
    context.fillStyle = ink;
    context.font = '10.5px system-ui, sans-serif';
    if (!series) {
      return;
    }
    const quantity = quantities[choice.value];
    const lines = quantity.lines(series, session.defaults.output_maximum);
    const numbers = lines.flat().filter((value) => value !== null && Number.isFinite(value)).map(Number);
    let [low, high] = quantity.range ?? [Math.min(...numbers), Math.max(...numbers)];
    if (high - low < 1e-9) {
      [low, high] = [low - 1, high + 1];
    }
    const { first } = source();
    const last = Math.max(1, frames() - 1);
    const across = (/** @type {number} */ frame) => left + ((frame - first) / last) * (width - left - 6);
    const down = (/** @type {number} */ value) => 6 + (1 - (value - low) / (high - low)) * (height - 24);
    context.globalAlpha = 0.3;
    for (const value of [low, (low + high) / 2, high]) {
      context.beginPath();
      context.moveTo(left, Math.round(down(value)) + 0.5);
      context.lineTo(width - 6, Math.round(down(value)) + 0.5);
      context.stroke();
    }
    context.globalAlpha = 1;
    context.textAlign = 'right';
    for (const value of [low, (low + high) / 2, high]) {
      context.fillText(String(Number(value.toPrecision(4))), left - 4, down(value) + 4);
    }
    context.fillText(String(first + last), width - 6, height - 4);
    context.textAlign = 'left';
    context.fillText(String(first), left, height - 4);
    for (const [i, line] of lines.entries()) {
      context.setLineDash([[], [5, 3], [2, 2], [8, 2, 2, 2]][i]);
      context.beginPath();
      let pen = false;
      let before = NaN;
      for (const [j, value] of line.entries()) {
        if (value === null || !Number.isFinite(value) || series.frames[j] < first) {
          pen = false;
          continue;
        }
        // An angle that passes 180 degrees goes on at 0: no line joins the two.
        pen = pen && !(choice.value === 'angle' && Math.abs(value - before) > 90);
        context[pen ? 'lineTo' : 'moveTo'](across(series.frames[j]), down(value));
        if (!pen || line.length < 60) {
          context.rect(across(series.frames[j]) - 1, down(value) - 1, 2, 2);
          context.moveTo(across(series.frames[j]), down(value));
        }
        pen = true;
        before = value;
      }
      context.stroke();
    }
    context.setLineDash([]);
    context.lineWidth = 1.5;
    context.beginPath();
    context.moveTo(across(store.state.settings.frame), 4);
    context.lineTo(across(store.state.settings.frame), height - 16);
    context.stroke();
  }

  /** @param {Point} wanted @param {boolean} [renew] what is shown stays until all has come */
  const show = async (wanted, renew) => {
    if (frames() < 2) {
      return;
    }
    pixel = wanted;
    busy = true;
    waiting.abort();
    waiting = new AbortController();
    const { signal } = waiting;
    place.textContent = `x\u00a0${wanted.x} y\u00a0${wanted.y}`;
    try {
      await fetchSeries(store.state.settings, wanted, source(), signal, (grown) => {
        if (renew && grown.frames.length < grown.count) {
          return;
        }
        series = grown;
        canvas.setAttribute('aria-label', `Plot of the pixel at ${wanted.x}, ${wanted.y} over ${frames()} frames: ${quantities[choice.value].label}`);
        canvas.dataset.angles = JSON.stringify(grown.angle);
        draw();
      });
    } catch (failure) {
      if (!signal.aborted) {
        place.textContent = failure instanceof Error ? failure.message : String(failure);
      }
    }
    busy = busy && waiting.signal !== signal;
  };
  /** Frames have come: they are added, but not as often as they come. */
  const sourcesChanged = () => {
    appear();
    if (pixel && source().live && !busy) {
      later ??= setTimeout(() => {
        later = undefined;
        if (pixel && !busy) {
          show(pixel, true);
        }
      }, renewal);
    }
  };

  const appear = () => {
    section.hidden = frames() < 2;
  };
  store.subscribe((state, before) => {
    const { settings } = state;
    if (settings === before.settings) {
      return;
    }
    appear();
    const { frame: _now, ...now } = settings;
    const { frame: _then, ...then } = before.settings;
    if (pixel && JSON.stringify(now) !== JSON.stringify(then)) {
      show(pixel);
    }
    draw();
  });
  choice.addEventListener('change', draw);
  canvas.addEventListener('click', (event) => {
    const share = (event.offsetX - left) / (canvas.clientWidth - left - 6);
    const frame = source().first + Math.round(Math.min(1, Math.max(0, share)) * (frames() - 1));
    store.update({ settings: { ...store.state.settings, frame } });
  });
  appear();
  return { show, sourcesChanged, redraw: draw };
}
