/**
 * Round ends of scales for a frame, by its overview: at most one value in two hundred lies beyond. The degree is noise
 * where there is little light, so such samples do not count.
 *
 * @import {FrameFacts, Layer} from './types.js'
 */

const roundEnds = [0.01, 0.02, 0.05, 0.1, 0.2, 0.3, 0.4, 0.5, 0.6, 0.8];

/** @param {number[]} shares */
function roundEnd(shares) {
  if (shares.length === 0) {
    return 1;
  }
  const sorted = Float64Array.from(shares).sort();
  const most = sorted[Math.floor((sorted.length - 1) * 0.995)];
  return roundEnds.find((end) => most <= end) ?? 1;
}

/**
 * @param {Layer} overview
 * @param {FrameFacts} facts
 * @returns {{degree: number, power: number, raw: number}}
 */
export function chosenEnds(overview, facts) {
  const { power, dolp, raw4 } = overview.arrays;
  const maximum = facts.outputMaximum;
  const samples = overview.columns * overview.rows;
  // Some thousand samples tell as much as all.
  const step = Math.max(1, Math.floor(samples / 8000));
  const powers = [];
  const raws = [];
  for (let i = 0; i < samples; i += step) {
    powers.push(power[i] / maximum);
    raws.push(raw4[4 * i] / facts.fullScale, raw4[4 * i + 3] / facts.fullScale);
  }
  const powerEnd = roundEnd(powers);
  const degrees = [];
  for (let i = 0; i < samples; i += step) {
    if (power[i] / maximum > 0.05 * powerEnd) {
      degrees.push(dolp[i] / maximum);
    }
  }
  return { degree: Math.max(0.05, roundEnd(degrees)), power: powerEnd, raw: roundEnd(raws) };
}
