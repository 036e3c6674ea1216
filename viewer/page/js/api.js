/**
 * The server's interface: one function for each address.
 *
 * @import {FrameFacts, Layer, PixelArray, Region, Session, Settings} from './types.js'
 */

/** What the server refuses; the message is the sentence that it gives. */
export class ServerError extends Error {}

/**
 * @param {string} address
 * @param {AbortSignal} [signal]
 */
async function request(address, signal) {
  const response = await fetch(address, { signal: signal ?? null, credentials: 'same-origin' });
  if (response.ok) {
    return response;
  }
  const text = await response.text();
  let sentence = text;
  try {
    sentence = JSON.parse(text).error ?? text;
  } catch {
    // Not a document: the text itself says it.
  }
  throw new ServerError(sentence || `The server replied with status ${response.status}.`);
}

/**
 * @param {Settings} settings
 * @param {Record<string, string | number>} more
 */
function query(settings, more) {
  const names = new URLSearchParams({
    source: String(settings.source),
    frame: String(settings.frame),
    layout: String(settings.layout),
    origin: settings.origin.join(','),
    calibration: String(settings.calibration),
    bit_depth: String(settings.bitDepth),
    plane: String(settings.plane),
  });
  for (const [name, value] of Object.entries(more)) {
    names.set(name, String(value));
  }
  return names.toString().replaceAll('%2C', ',');
}

/** @param {Region} region */
const regionText = (region) => [region.x, region.y, region.width, region.height].join(',');

/**
 * @param {number} [since] wait until the session's revision is another one
 * @param {AbortSignal} [signal]
 * @returns {Promise<Session>}
 */
export async function fetchSession(since, signal) {
  const response = await request(since === undefined ? '/api/session' : `/api/session?since=${since}`, signal);
  return response.json();
}

/** @returns {Promise<Record<string, {entries: number, rgb: string}>>} */
export async function fetchTables() {
  return (await request('/api/tables')).json();
}

/**
 * Images of a frame as they are, at every `step`th pixel of a region (else of the whole frame).
 *
 * @param {Settings} settings
 * @param {readonly string[]} images
 * @param {number} step
 * @param {Region | null} region
 * @param {AbortSignal} [signal]
 * @returns {Promise<{facts: FrameFacts, layer: Layer}>}
 */
export async function fetchImages(settings, images, step, region, signal) {
  /** @type {Record<string, string | number>} */
  const more = { images: images.join(','), step };
  if (region) {
    more.region = regionText(region);
  }
  const response = await request(`/api/images?${query(settings, more)}`, signal);
  const bytes = await response.arrayBuffer();
  const length = Number(new DataView(bytes).getBigUint64(0, true));
  const head = JSON.parse(new TextDecoder().decode(new Uint8Array(bytes, 8, length)));
  /** @type {Record<string, PixelArray>} */
  const arrays = {};
  for (const image of head.images) {
    const start = 8 + length + image.offset;
    arrays[image.name] =
      image.element === 'f32' ? new Float32Array(bytes, start, image.bytes / 4) : new Uint16Array(bytes, start, image.bytes / 2);
  }
  const [first] = head.images;
  return {
    facts: {
      width: head.width,
      height: head.height,
      bitDepth: head.bit_depth,
      fullScale: head.full_scale,
      saturatedFrom: head.saturated_from,
      outputMaximum: head.output_maximum,
      notes: head.notes ?? [],
    },
    layer: {
      region: region ?? { x: 0, y: 0, width: head.width, height: head.height },
      step,
      columns: first.width,
      rows: first.height,
      arrays,
    },
  };
}

/**
 * @typedef {{pixels: number, mean_angle_degrees: number | null, resultant_length: number | null,
 *   angle_deviation_degrees: number | null, pixels_without_angle: number, mean_degree: number | null,
 *   pixels_without_degree: number, saturated_pixels: Record<string, number>, dark_pixels: Record<string, number>,
 *   histogram: number[]}} RegionStatistics
 *
 * @param {Settings} settings
 * @param {Region} region
 * @param {AbortSignal} [signal]
 * @returns {Promise<RegionStatistics>}
 */
export async function fetchRegion(settings, region, signal) {
  return (await request(`/api/region?${query(settings, { region: regionText(region) })}`, signal)).json();
}

/**
 * @typedef {{count: number, frames: number[], samples: number[][], s0: number[], s1: number[], s2: number[],
 *   angle: (number | null)[], dolp: (number | null)[]}} Series
 *
 * A pixel in frames evenly spread over a source. The server answers in parts, so that no request takes long.
 *
 * @param {Settings} settings
 * @param {{x: number, y: number}} pixel
 * @param {{first: number, frames: number}} source
 * @param {AbortSignal} signal
 * @param {(series: Series) => void} grown called for each part, with all that has come
 */
export async function fetchSeries(settings, pixel, { first, frames }, signal, grown) {
  /** @type {Series | null} */
  let series = null;
  do {
    const more = { x: pixel.x, y: pixel.y, from: first, to: first + frames, count: Math.min(frames, 500), skip: series?.frames.length ?? 0 };
    /** @type {Series} */
    const part = await (await request(`/api/series?${query(settings, more)}`, signal)).json();
    if (part.frames.length === 0) {
      break;
    }
    series = series ? joined(series, part) : part;
    grown(series);
  } while (series.frames.length < series.count);
}

/** @param {Series} one @param {Series} next @returns {Series} */
const joined = (one, next) => ({
  count: next.count,
  frames: [...one.frames, ...next.frames],
  samples: [...one.samples, ...next.samples],
  s0: [...one.s0, ...next.s0],
  s1: [...one.s1, ...next.s1],
  s2: [...one.s2, ...next.s2],
  angle: [...one.angle, ...next.angle],
  dolp: [...one.dolp, ...next.dolp],
});

/**
 * @param {Settings} settings
 * @param {string} image
 * @param {Region | null} region
 * @param {'npy' | 'csv'} format
 */
export function exportAddress(settings, image, region, format) {
  /** @type {Record<string, string | number>} */
  const more = { image, format };
  if (region) {
    more.region = regionText(region);
  }
  return `/api/export?${query(settings, more)}`;
}
