/**
 * Shapes that several files share. Only types: this file runs nothing.
 *
 * @typedef {'raw' | 'power' | 'angle' | 'degree' | 's1' | 's2' | 'coloured'} PanelKind
 * @typedef {'panels' | 'compare' | 'candidates'} Mode
 * @typedef {'plain' | 'light' | 'dark' | 'composite'} Style
 * @typedef {'grey' | 'sequential'} MapName
 *
 * What a frame is computed from: `layout` in degrees, `calibration` and `plane` (a colour of a sensor with colour filters)
 * are indices, `bitDepth` is 0 for what the file says.
 * @typedef {{source: number, frame: number, layout: number, origin: readonly [number, number], calibration: number,
 *   bitDepth: number, plane: number}} Settings
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
 *   outputMaximum: number, notes: string[]}} FrameFacts
 *
 * Frames have the numbers `first` to `first + frames - 1`. The size is null where only reading a frame tells it.
 * @typedef {{name: string, first: number, frames: number, width: number | null, height: number | null, kind: string,
 *   live: boolean, error: string | null}} Source
 * @typedef {{version: string, revision: number, route: string, sources: Source[], calibrations: string[],
 *   planes: string[], notes: string[], defaults: {layout: number, layout_given: boolean, origin: [number, number],
 *   bit_depth: number, style: Style, degree_end: number | null, power_end: number | null, calibration: number,
 *   output_maximum: number}}} Session
 *
 * Where the frame lies in a panel: the frame's point at the panel's middle and the screen's pixels for each of its own.
 * @typedef {{x: number, y: number, scale: number}} View
 *
 * In pixels of the screen.
 * @typedef {{left: number, top: number, width: number, height: number}} Box
 */
export {};
