/**
 * The painter on WebGL2.
 *
 * @import {PaintedPanel, Painter} from './canvas_painter.js'
 * @import {PanelTables} from './colours.js'
 * @import {Layer, PanelKind, PixelArray} from './types.js'
 */
import { styleNumbers } from './colours.js';
import { framePoint } from './geometry.js';
import { createProgram } from './gl_program.js';

/** Bytes that one picture may bring over: more would make panning stop for it. */
const bytesForPicture = 12 << 20;

/**
 * The images of a panel in a layer, by the shader's names; nothing where one is missing.
 *
 * @param {PanelKind} kind
 * @param {Layer} layer
 * @param {PanelTables} tables
 * @returns {PixelArray[] | null}
 */
function imagesIn(kind, layer, tables) {
  const { arrays } = layer;
  const of = {
    raw: [arrays.raw4 ?? arrays.raw],
    power: [arrays.power],
    degree: [arrays.dolp],
    angle: [arrays.azimuth],
    s1: [arrays.stokes],
    s2: [arrays.stokes],
    coloured: [arrays.azimuth, arrays.dolp, arrays.power].slice(
      0, tables.style === styleNumbers.plain ? 1 : tables.style === styleNumbers.composite ? 3 : 2),
  }[kind];
  return of.every((image) => image) ? of : null;
}

/**
 * @param {HTMLCanvasElement} canvas
 * @param {boolean} emulated whether a processor may do the work of a graphics card; painting without is faster then
 * @returns {Painter | null} nothing where WebGL2 is missing
 */
export function createGlPainter(canvas, emulated) {
  const context = canvas.getContext('webgl2', {
    antialias: false,
    depth: false,
    preserveDrawingBuffer: true,
    failIfMajorPerformanceCaveat: !emulated,
  });
  const made = context && createProgram(context);
  if (!context || !made) {
    return null;
  }
  const gl = context;
  const { program, at } = made;
  const largest = gl.getParameter(gl.MAX_TEXTURE_SIZE);
  /** @type {Map<PixelArray | Uint8Array, {texture: WebGLTexture, rows: number}>} */
  const textures = new Map();
  let budget = 0;
  /** @type {Float32Array<ArrayBuffer> | null} the bounds in use */
  let bounds = null;
  gl.useProgram(program);
  gl.bindVertexArray(gl.createVertexArray());
  gl.pixelStorei(gl.UNPACK_ALIGNMENT, 1);

  /**
   * Binds the texture of an array to a unit; brings over as much of it as may still come.
   *
   * @param {number} unit
   * @param {PixelArray | Uint8Array} array
   * @param {number} columns
   * @param {number} rows
   * @param {boolean} whole whether it comes at once
   * @returns {boolean} whether it is there completely
   */
  function bind(unit, array, columns, rows, whole) {
    const channels = array.length / (columns * rows);
    const [inside, outside, type] =
      array instanceof Float32Array
        ? [gl.RG32F, gl.RG, gl.FLOAT]
        : array instanceof Uint16Array
          ? [channels === 4 ? gl.RGBA16UI : gl.R16UI, channels === 4 ? gl.RGBA_INTEGER : gl.RED_INTEGER, gl.UNSIGNED_SHORT]
          : [gl.RGBA8UI, gl.RGBA_INTEGER, gl.UNSIGNED_BYTE];
    gl.activeTexture(gl.TEXTURE0 + unit);
    let known = textures.get(array);
    if (known) {
      gl.bindTexture(gl.TEXTURE_2D, known.texture);
    } else {
      known = { texture: gl.createTexture(), rows: 0 };
      textures.set(array, known);
      gl.bindTexture(gl.TEXTURE_2D, known.texture);
      gl.texParameteri(gl.TEXTURE_2D, gl.TEXTURE_MIN_FILTER, gl.NEAREST);
      gl.texParameteri(gl.TEXTURE_2D, gl.TEXTURE_MAG_FILTER, gl.NEAREST);
      gl.texStorage2D(gl.TEXTURE_2D, 1, inside, columns, rows);
    }
    if (known.rows < rows) {
      const rowBytes = columns * channels * array.BYTES_PER_ELEMENT;
      const count = whole ? rows : Math.min(rows - known.rows, Math.floor(budget / rowBytes));
      if (count > 0) {
        const from = known.rows * columns * channels;
        gl.texSubImage2D(gl.TEXTURE_2D, 0, 0, known.rows, columns, count, outside, type,
          array.subarray(from, from + count * columns * channels));
        known.rows += count;
        budget -= count * rowBytes;
      }
    }
    return known.rows === rows;
  }

  /**
   * @param {PaintedPanel} panel
   * @param {Layer} layer
   * @returns {boolean | null} false where it waits for its textures, nothing where images are missing
   */
  function bindLayer({ kind, tables }, layer) {
    const images = imagesIn(kind, layer, tables);
    if (!images) {
      return null;
    }
    const signed = kind === 's1' || kind === 's2';
    const whole = layer.step > 1 || layer.columns * layer.rows < 1 << 19;
    const ready = images.map((image, unit) => bind(signed ? 3 : unit, image, layer.columns, layer.rows, whole));
    return ready.every((one) => one);
  }

  /**
   * @param {PaintedPanel} panel
   * @param {Layer} layer
   */
  function draw({ box, view, kind, tables }, layer) {
    const signed = kind === 's1' || kind === 's2';
    const table = { raw: tables.raw, power: tables.power, degree: tables.degree }[/** @type {'raw'} */ (kind)] ??
      (signed ? tables.diverging : tables.hue);
    bind(4, table, signed ? table.length / 4 : 256, signed ? 1 : 256, true);
    bind(5, tables.degree, 256, 256, true);
    bounds = tables.signedBounds;
    bind(7, bounds, 257, 1, true);
    bind(6, tables.power, 256, 256, true);
    const mean = kind === 'raw' && view.scale < 1 && layer.columns > 1 && layer.rows > 1;
    const coloured = kind === 'coloured' && tables.style !== styleNumbers.plain;
    gl.uniform1i(at('kind'), signed ? 3 : coloured ? 4 : kind !== 'raw' ? 0 : layer.arrays.raw4 ? 1 : mean ? 2 : 0);
    gl.uniform1i(at('style'), tables.style);
    gl.uniform1i(at('channel'), kind === 's2' ? 1 : 0);
    gl.uniform1f(at('signed_end'), tables.signedEnd);
    const corner = framePoint(view, box, 0, 0);
    gl.uniform2f(at('corner'), corner.x, corner.y);
    gl.uniform1f(at('pixel'), 1 / view.scale);
    gl.uniform3f(at('panel'), box.left, box.top, canvas.height);
    gl.uniform4i(at('region'), layer.region.x, layer.region.y, layer.region.width, layer.region.height);
    gl.uniform1i(at('stride'), layer.step);
    gl.scissor(box.left, canvas.height - box.top - box.height, box.width, box.height);
    gl.drawArrays(gl.TRIANGLES, 0, 3);
  }

  for (const [name, unit] of Object.entries({ image0: 0, image1: 1, image2: 2, pairs: 3, table0: 4, table1: 5, table2: 6, bounds: 7 })) {
    gl.uniform1i(at(name), unit);
  }
  // Every sampler needs a texture of its kind, whether it is read or not.
  const none = new Uint16Array(1);
  for (const unit of [0, 1, 2]) {
    bind(unit, none, 1, 1, true);
  }
  const nothing = new Float32Array(2);
  bind(3, nothing, 1, 1, true);

  return {
    name: 'WebGL2',
    resize(width, height) {
      canvas.width = width;
      canvas.height = height;
    },
    paint(panels) {
      gl.viewport(0, 0, canvas.width, canvas.height);
      gl.disable(gl.SCISSOR_TEST);
      gl.clearColor(0, 0, 0, 0);
      gl.clear(gl.COLOR_BUFFER_BIT);
      gl.enable(gl.SCISSOR_TEST);
      budget = bytesForPicture;
      let complete = true;
      for (const panel of panels) {
        /** @type {Layer[]} */
        const drawn = [];
        for (const layer of panel.layers.filter(({ columns, rows }) => columns <= largest && rows <= largest).reverse()) {
          const ready = bindLayer(panel, layer);
          if (ready) {
            drawn.unshift(layer);
            if (layer.step === 1 && layer === panel.layers.at(-1)) {
              break;
            }
          } else if (ready === false) {
            complete = false;
          }
        }
        for (const layer of drawn) {
          bindLayer(panel, layer);
          draw(panel, layer);
        }
      }
      return complete;
    },
    retain(live) {
      for (const [array, { texture }] of textures) {
        if (!(array instanceof Uint8Array) && array !== none && array !== nothing && array !== bounds && !live.has(array)) {
          gl.deleteTexture(texture);
          textures.delete(array);
        }
      }
    },
  };
}
