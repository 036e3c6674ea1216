/**
 * From values to colours, by the tool's tables and rounding (docs/pictures.md). Every 16-bit value gets its entry once;
 * painting is then lookups and whole numbers, the same on both painters.
 *
 * @import {MapName} from './types.js'
 *
 * Entries of 4 bytes for each 16-bit value: red, green, blue, and a level of 0 to 255 for mixing.
 * @typedef {Uint8Array<ArrayBuffer>} ValueTable
 */

/** The tool's tables, as they come from the server. */
export class ColourTables {
  /** @param {Record<string, {entries: number, rgb: string}>} encoded */
  constructor(encoded) {
    /** @type {Record<string, Uint8Array>} */
    this.rgb = {};
    for (const [name, table] of Object.entries(encoded)) {
      this.rgb[name] = Uint8Array.from(atob(table.rgb), (character) => character.charCodeAt(0));
    }
  }

  /**
   * The place in a table of the entry nearest to a share of 0 to 1.
   *
   * @param {string} name
   * @param {number} share
   */
  place(name, share) {
    const entries = this.rgb[name].length / 3;
    return Math.round((entries - 1) * Math.min(1, Math.max(0, share || 0)));
  }
}

/** How many 16-bit values there are. */
const values = 65536;

/**
 * Colours of a quantity from 0 to where its scale ends. The level is the share in 255 steps, or the grey's brightness.
 *
 * @param {ColourTables} tables
 * @param {MapName} map
 * @param {number} maximum the value that is a share of 1
 * @param {number} end the share at the scale's end
 * @param {'share' | 'grey'} level
 * @param {boolean} limited whether values above the maximum count as it
 * @returns {ValueTable}
 */
export function scaledTable(tables, map, maximum, end, level, limited = true) {
  const table = new Uint8Array(4 * values);
  const rgb = tables.rgb[map];
  const greys = tables.rgb.grey;
  for (let value = 0; value < values; ++value) {
    const share = (limited ? Math.min(value, maximum) : value) / maximum / end;
    const from = 3 * tables.place(map, share);
    table[4 * value] = rgb[from];
    table[4 * value + 1] = rgb[from + 1];
    table[4 * value + 2] = rgb[from + 2];
    table[4 * value + 3] = level === 'grey' ? greys[3 * tables.place('grey', share)] : Math.round(255 * Math.min(1, share));
  }
  return table;
}

/**
 * Hues of the azimuth image.
 *
 * @param {ColourTables} tables
 * @param {number} maximum
 * @returns {ValueTable}
 */
export function hueTable(tables, maximum) {
  const table = new Uint8Array(4 * values);
  const rgb = tables.rgb.hue;
  const entries = rgb.length / 3;
  for (let value = 0; value < values; ++value) {
    const turns = (180 * (Math.min(value, maximum) / maximum) - 90) / 180;
    const entry = Math.round(entries * (turns - Math.floor(turns))) % entries;
    table.set(rgb.subarray(3 * entry, 3 * entry + 3), 4 * value);
    table[4 * value + 3] = 255;
  }
  return table;
}

/**
 * Colours of S1 / P and S2 / P, 257 from -end to +end.
 *
 * @param {ColourTables} tables
 * @returns {ValueTable}
 */
export function divergingTable(tables) {
  const rgb = tables.rgb.diverging;
  const table = new Uint8Array((4 * rgb.length) / 3);
  for (let entry = 0; entry < rgb.length / 3; ++entry) {
    table.set(rgb.subarray(3 * entry, 3 * entry + 3), 4 * entry);
    table[4 * entry + 3] = 255;
  }
  return table;
}

/**
 * The entry of the diverging table for a value as a share of its scale's end; not a number counts as 0.
 *
 * @param {number} share
 */
export function divergingPlace(share) {
  return Math.round(256 * (0.5 + 0.5 * Math.min(1, Math.max(-1, share || 0))));
}

/**
 * For each entry of the diverging table the least value that takes it and the least that takes the next one: by comparing,
 * a painter with single precision only finds the entries that double precision gives.
 *
 * @param {number} end where the scale ends
 * @returns {Float32Array<ArrayBuffer>}
 */
export function signedBounds(end) {
  const bounds = new Float32Array(2 * 257);
  const value = new Float32Array(1);
  const bits = new Int32Array(value.buffer);
  bounds[0] = -Infinity;
  bounds[2 * 257 - 1] = Infinity;
  for (let entry = 1; entry < 257; ++entry) {
    value[0] = ((entry - 128.5) / 128) * end;
    // Neighbours among single numbers: one up or down in their bits, which count away from 0.
    const up = value[0] < 0 ? -1 : 1;
    while (divergingPlace(value[0] / end) >= entry) {
      bits[0] -= up;
    }
    while (divergingPlace(value[0] / end) < entry) {
      bits[0] += up;
    }
    bounds[2 * entry] = value[0];
    bounds[2 * entry - 1] = value[0];
  }
  return bounds;
}

/** What the styles are in both painters, by number. */
export const styleNumbers = { plain: 0, light: 1, dark: 2, composite: 3 };

/**
 * One channel of a coloured angle: `hue`, `degree` and `grey` are 0 to 255.
 *
 * @param {number} style
 * @param {number} hue
 * @param {number} degree
 * @param {number} grey
 */
export function mixedChannel(style, hue, degree, grey) {
  switch (style) {
    case styleNumbers.light:
      return ((65152 - (255 - hue) * degree) / 255) | 0;
    case styleNumbers.dark:
      return ((hue * degree + 127) / 255) | 0;
    case styleNumbers.composite:
      return ((grey * 65025 + 32512 - degree * grey * (255 - hue)) / 65025) | 0;
    default:
      return hue;
  }
}

/**
 * Every table that panels of one look are painted by.
 *
 * @typedef {{raw: ValueTable, power: ValueTable, degree: ValueTable, hue: ValueTable, diverging: ValueTable, style: number,
 *   signedEnd: number, signedBounds: Float32Array<ArrayBuffer>}} PanelTables
 *
 * @typedef {{style: number, degreeEnd: number, powerEnd: number, rawEnd: number, lightMap: MapName, degreeMap: MapName,
 *   fullScale: number, outputMaximum: number}} Look
 */

/** Makes tables and keeps those in use: a changed end costs one table. */
export class TableMaker {
  /** @param {ColourTables} tables */
  constructor(tables) {
    this.tables = tables;
    this.diverging = divergingTable(tables);
    this.boundsEnd = 1;
    this.bounds = signedBounds(1);
    /** @type {Map<string, ValueTable>} */
    this.kept = new Map();
  }

  /**
   * @param {string} key
   * @param {() => ValueTable} make
   */
  keep(key, make) {
    const known = this.kept.get(key);
    if (known) {
      return known;
    }
    if (this.kept.size > 40) {
      this.kept.delete(/** @type {string} */ (this.kept.keys().next().value));
    }
    const table = make();
    this.kept.set(key, table);
    return table;
  }

  /** @param {number} end */
  boundsFor(end) {
    if (this.boundsEnd !== end) {
      this.boundsEnd = end;
      this.bounds = signedBounds(end);
    }
    return this.bounds;
  }

  /**
   * @param {Look} look
   * @returns {PanelTables}
   */
  make(look) {
    const { outputMaximum: maximum, lightMap, degreeMap } = look;
    return {
      raw: this.keep(`raw ${lightMap} ${look.fullScale} ${look.rawEnd}`, () =>
        scaledTable(this.tables, lightMap, look.fullScale, look.rawEnd, 'grey', false)),
      power: this.keep(`power ${lightMap} ${maximum} ${look.powerEnd}`, () =>
        scaledTable(this.tables, lightMap, maximum, look.powerEnd, 'grey')),
      degree: this.keep(`degree ${degreeMap} ${maximum} ${look.degreeEnd}`, () =>
        scaledTable(this.tables, degreeMap, maximum, look.degreeEnd, 'share')),
      hue: this.keep(`hue ${maximum}`, () => hueTable(this.tables, maximum)),
      diverging: this.diverging,
      style: look.style,
      signedEnd: look.degreeEnd,
      signedBounds: this.boundsFor(look.degreeEnd),
    };
  }
}
