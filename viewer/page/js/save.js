/**
 * Saving what is shown: pictures are painted here from full-size values, numbers are the server's files.
 *
 * @import {Stage} from './stage.js'
 */
import { exportAddress } from './api.js';
import { make } from './elements.js';
import { imagesOf, panelKinds } from './panel_kinds.js';
import { paintLayer } from './pixels.js';
import { hasFrame } from './sequence.js';

/** @param {string} address @param {string} name */
function download(address, name) {
  const link = make('a', { href: address, download: name });
  document.body.append(link);
  link.click();
  link.remove();
}

/** @param {Stage} stage */
function checkFrame({ session, store }) {
  if (!hasFrame(session, store.edited)) {
    throw new Error('There is no frame to save.');
  }
}

/**
 * The current panel's picture, a pixel for each pixel of the region, or else of the frame.
 *
 * @param {Stage} stage
 * @returns {Promise<HTMLCanvasElement>}
 */
async function wholePicture(stage) {
  const { store } = stage;
  const { active, style } = store.state;
  checkFrame(stage);
  const frame = await stage.frames.complete(store.edited, imagesOf(active, style));
  if (!frame.full || !frame.facts) {
    throw new Error(frame.error ?? 'There is no frame to save.');
  }
  const { x, y, width, height } = store.state.region ?? { x: 0, y: 0, width: frame.facts.width, height: frame.facts.height };
  const canvas = make('canvas', { width: String(width), height: String(height) });
  const context = /** @type {CanvasRenderingContext2D} */ (canvas.getContext('2d'));
  const picture = context.createImageData(width, height);
  const view = { x: x + width / 2, y: y + height / 2, scale: 1 };
  paintLayer(active, frame.full, stage.tablesFor(frame), view, { left: 0, top: 0, width, height }, new Uint32Array(picture.data.buffer));
  context.putImageData(picture, 0, 0);
  return canvas;
}

/** @param {Stage} stage @param {(what: string) => string} fileName */
export async function savePicture(stage, fileName) {
  const canvas = await wholePicture(stage);
  const { active, style } = stage.store.state;
  const blob = await new Promise((resolve) => canvas.toBlob(resolve, 'image/png'));
  if (!(blob instanceof Blob)) {
    throw new Error('The picture is too large for this browser to save.');
  }
  const address = URL.createObjectURL(blob);
  download(address, fileName(active === 'coloured' ? style : panelKinds[active].short.toLowerCase()));
  setTimeout(() => URL.revokeObjectURL(address), 10000);
}

/** The stage as it is on the screen. @param {Stage} stage @param {string} fileName */
export async function saveScreen(stage, fileName) {
  stage.paint();
  const canvas = make('canvas', { width: String(stage.picture.width), height: String(stage.picture.height) });
  const context = /** @type {CanvasRenderingContext2D} */ (canvas.getContext('2d'));
  context.drawImage(stage.picture, 0, 0);
  context.drawImage(stage.marks, 0, 0);
  const blob = await new Promise((resolve) => canvas.toBlob(resolve, 'image/png'));
  if (blob instanceof Blob) {
    const address = URL.createObjectURL(blob);
    download(address, fileName);
    setTimeout(() => URL.revokeObjectURL(address), 10000);
  }
}

/**
 * The current panel's values in the region, or else of the frame.
 *
 * @param {Stage} stage
 * @param {'npy' | 'csv'} format
 */
export async function saveNumbers(stage, format) {
  const { store } = stage;
  checkFrame(stage);
  download(exportAddress(store.edited, panelKinds[store.state.active].exported, store.state.region, format), '');
}
