/**
 * The histogram of the angle as a half-wheel: 0 degrees to the right, 90 upwards, 180 to the left; each bar has the hue
 * of its angle.
 *
 * @import {ValueTable} from './colours.js'
 */

/**
 * @param {HTMLCanvasElement} canvas
 * @param {number[]} counts evenly over 180 degrees
 * @param {number | null} mean in degrees
 * @param {ValueTable} hues by azimuth
 * @param {string} name written in the corner
 */
export function drawHalfWheel(canvas, counts, mean, hues, name) {
  const ratio = window.devicePixelRatio || 1;
  const width = canvas.clientWidth || 240;
  const height = canvas.clientHeight || 130;
  canvas.width = Math.round(width * ratio);
  canvas.height = Math.round(height * ratio);
  const context = /** @type {CanvasRenderingContext2D} */ (canvas.getContext('2d'));
  context.scale(ratio, ratio);
  const ink = getComputedStyle(canvas).color;
  const [x, y] = [width / 2, height - 16];
  const outer = Math.min(width / 2 - 34, height - 34);
  const inner = outer * 0.3;
  const largest = Math.max(1, ...counts);
  for (const [i, count] of counts.entries()) {
    const from = (i / counts.length) * Math.PI;
    const to = ((i + 1) / counts.length) * Math.PI;
    const reach = inner + (outer - inner) * (count / largest);
    const hue = 4 * Math.round((((i + 0.5) / counts.length + 0.5) % 1) * 65535);
    context.fillStyle = `rgb(${hues[hue]} ${hues[hue + 1]} ${hues[hue + 2]})`;
    context.beginPath();
    context.arc(x, y, reach, -from, -to, true);
    context.arc(x, y, inner - 5, -to, -from);
    context.fill();
  }
  context.strokeStyle = ink;
  context.fillStyle = ink;
  context.globalAlpha = 0.35;
  context.lineWidth = 1;
  for (const radius of [inner, outer]) {
    context.beginPath();
    context.arc(x, y, radius, 0, Math.PI, true);
    context.stroke();
  }
  context.globalAlpha = 1;
  context.font = '11px system-ui, sans-serif';
  for (const degrees of [0, 45, 90, 135, 180]) {
    const angle = (degrees * Math.PI) / 180;
    const [across, up] = [Math.cos(angle), Math.sin(angle)];
    context.textAlign = across > 0.3 ? 'left' : across < -0.3 ? 'right' : 'center';
    context.fillText(`${degrees}°`, x + across * (outer + 5), y - up * (outer + 5) + (up < 0.1 ? 4 : 0));
  }
  context.textAlign = 'left';
  context.fillText(name, 2, 12);
  if (mean !== null) {
    const angle = (mean * Math.PI) / 180;
    context.lineWidth = 2;
    context.beginPath();
    context.moveTo(x, y);
    context.lineTo(x + Math.cos(angle) * outer, y - Math.sin(angle) * outer);
    context.stroke();
  }
}
