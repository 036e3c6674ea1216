/**
 * Shapes that several files share. Only types: this file runs nothing.
 *
 * @typedef {'raw' | 'power' | 'angle' | 'degree' | 's1' | 's2' | 'coloured'} PanelKind
 * @typedef {'panels' | 'compare' | 'candidates'} Mode
 * @typedef {'plain' | 'light' | 'dark' | 'composite'} Style
 * @typedef {'grey' | 'sequential'} MapName
 *
 * What a frame is computed from: `layout` in degrees, `calibration` an index, `bitDepth` 0 for what the file says.
 * @typedef {{source: number, frame: number, layout: number, origin: readonly [number, number], calibration: number,
 *   bitDepth: number}} Settings
 *
 * In pixels of the frame.
 * @typedef {{x: number, y: number, width: number, height: number}} Region
 * @typedef {{x: number, y: number}} Point
 *
 * Pixels (region.x + step * i, region.y + step * j) of a frame, `columns` times `rows` of them.
 * @typedef {{region: Region, step: number, columns: number, rows: number, arrays: Record<string, PixelArray>}} Layer
 * @typedef {Uint16Array<ArrayBuffer> | Float32Array<ArrayBuffer>} PixelArray
 *
 * What a reply says of its frame. `saturatedFrom` is the least saturated sample.
 * @typedef {{width: number, height: number, bitDepth: number, fullScale: number, saturatedFrom: number,
 *   outputMaximum: number, route: string, notes: string[]}} FrameFacts
 *
 * @typedef {{name: string, frames: number, width: number, height: number, bit_depth: number, kind: string, live: boolean,
 *   error: string | null, layout: number, origin: [number, number]}} Source
 * @typedef {{version: string, route: string, revision?: number, sources: Source[], calibrations: string[],
 *   defaults: {layout: number, layout_given: boolean, origin: [number, number], bit_depth: number, style: Style,
 *   degree_end: number, power_end: number, calibration: number, output_maximum: number}, notes: string[]}} Session
 *
 * Where the frame lies in a panel: the frame's point at the panel's middle and the screen's pixels for each of its own.
 * @typedef {{x: number, y: number, scale: number}} View
 *
 * In pixels of the screen.
 * @typedef {{left: number, top: number, width: number, height: number}} Box
 */
export {};
