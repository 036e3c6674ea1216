// Frames to look at, and what the tool makes of them.
import { execFileSync, spawnSync } from 'node:child_process';
import { mkdtempSync, readdirSync, readFileSync, writeFileSync } from 'node:fs';
import { tmpdir } from 'node:os';
import path from 'node:path';
import { tool } from './viewer.mjs';

export const width = 320;
export const height = 256;
export const stackFrames = 6;
export const folder = mkdtempSync(path.join(tmpdir(), 'page-'));
export const at = (name) => path.join(folder, name);
export const raw = ['--raw', `${width}x${height}`, '--pixel-format', 'Mono12', '--layout', '90'];

export const run = (...options) => execFileSync(tool, options, { encoding: 'utf8', stdio: ['ignore', 'pipe', 'pipe'] });
/** The sentence that a command prints when it fails. */
export const complaint = (...options) => spawnSync(tool, options, { encoding: 'utf8' }).stderr.trim().split('\n')[0].replace('nerova-polarize: ', '');

const simulate = (name, ...options) =>
  run('simulate', at(name), '--size', `${width}x${height}`, '--bit-depth', '12', '--layout', '90', '--photons', '4000', '-q', ...options);

/** A scene, a stack of a turning polarizer, a stack of a colour sensor, a calibration, a file that is no picture. */
export function makeScene() {
  simulate('scene.raw');
  simulate('scene.png');
  simulate('c0.raw', '--colour', 'RGGB', '--seed', '2');
  simulate('c1.raw', '--colour', 'RGGB', '--seed', '3');
  writeFileSync(at('colours.raw'), Buffer.concat([readFileSync(at('c0.raw')), readFileSync(at('c1.raw'))]));
  const sensor = ['--angle-errors=1.2,-0.8,-1.5,0.6', '--extinction', '300,150,220,90'];
  const stack = [];
  for (let i = 0; i < stackFrames; ++i) {
    simulate(`a${i}.raw`, '--source-angle', String(30 * i), ...sensor);
    stack.push(readFileSync(at(`a${i}.raw`)));
  }
  writeFileSync(at('stack.raw'), Buffer.concat(stack));
  run('calibrate', ...stack.flatMap((_, i) => ['--frame', `${30 * i}:${at(`a${i}.raw`)}`]), ...raw, '--bit-depth', '12', '-q', '--output', at('camera.json'));
  writeFileSync(at('broken.png'), 'no picture');
}

/** An NPY file's values. */
export function readNpy(bytes) {
  const start = 10 + bytes.readUInt16LE(8);
  const body = bytes.buffer.slice(bytes.byteOffset + start, bytes.byteOffset + bytes.length);
  return /<f4/.test(bytes.toString('latin1', 10, start)) ? new Float32Array(body) : new Uint16Array(body);
}

const outputs = ['power', 'azimuth', 'dolp', 'stokes', 's0', 's1', 's2', 'angle'];
/** What transform writes for a frame, by output; the planes of a colour sensor one after another. */
export function transformed(file, ...options) {
  const results = mkdtempSync(at('out-'));
  run('transform', at(file), '--outputs', outputs.join(','), '-f', 'npy', '-q', '-o', results, ...options);
  const names = readdirSync(results);
  return Object.fromEntries(outputs.map((output) => [output, readNpy(readFileSync(path.join(results, names.find((name) => name.includes(`_${output}`) && name.endsWith('.npy')))))]));
}

/** The values of one pixel among them, as the page names them; `i` counts pixels. */
export function pixelOf(values, i) {
  const { s0, s1, s2, stokes, angle, dolp } = values;
  return { s0: s0[i], s1: s1[i], s2: s2[i], stokes1: stokes[2 * i], stokes2: stokes[2 * i + 1], angle: angle[i], dolp: dolp[i] };
}
