/** The program that paints a panel: values from integer textures, colours from the tables of all 16-bit values. */

const vertexSource = `#version 300 es
void main() {
  vec2 corner = vec2(gl_VertexID == 1 ? 3.0 : -1.0, gl_VertexID == 2 ? 3.0 : -1.0);
  gl_Position = vec4(corner, 0.0, 1.0);
}`;

const fragmentSource = `#version 300 es
precision highp float;
precision highp int;
precision highp usampler2D;
precision highp sampler2D;

uniform usampler2D image0;  // raw, power, degree or azimuth
uniform usampler2D image1;  // of the coloured angle: degree
uniform usampler2D image2;  // and power
uniform sampler2D pairs;    // S1 / P and S2 / P
uniform sampler2D bounds;   // for each entry of the signed table the least value of it and of the next
uniform usampler2D table0;  // colours of image0
uniform usampler2D table1;  // levels of image1
uniform usampler2D table2;  // and of image2
uniform int kind;           // 0 by table, 1 means of four samples, 2 means of 2 x 2 pixels, 3 signed, 4 coloured angle
uniform int style;
uniform int channel;
uniform float signed_end;
uniform vec2 corner;        // the frame's place at the panel's top left
uniform float pixel;        // of the screen, in the frame's
uniform vec3 panel;         // left and top of the panel, height of the canvas
uniform ivec4 region;
uniform int stride;
out vec4 colour;

uvec4 entry(usampler2D table, uint value) {
  return texelFetch(table, ivec2(int(value & 255u), int(value >> 8u)), 0);
}

uint mixed(uint hue, uint degree, uint grey) {
  if (style == 1) return (65152u - (255u - hue) * degree) / 255u;
  if (style == 2) return (hue * degree + 127u) / 255u;
  if (style == 3) return (grey * 65025u + 32512u - degree * grey * (255u - hue)) / 65025u;
  return hue;
}

void main() {
  vec2 place = vec2(gl_FragCoord.x, panel.z - gl_FragCoord.y) - panel.xy;
  ivec2 offset = ivec2(floor(corner + place * pixel)) - region.xy;
  if (any(lessThan(offset, ivec2(0))) || any(greaterThanEqual(offset, region.zw))) discard;
  ivec2 at = offset / stride;
  uvec4 found;
  if (kind == 1) {
    uvec4 four = texelFetch(image0, at, 0);
    found = entry(table0, (four.x + four.y + four.z + four.w + 2u) / 4u);
  } else if (kind == 2) {
    ivec2 cell = min(at & ~1, region.zw - 2);
    uint sum = texelFetch(image0, cell, 0).x + texelFetch(image0, cell + ivec2(1, 0), 0).x +
               texelFetch(image0, cell + ivec2(0, 1), 0).x + texelFetch(image0, cell + ivec2(1, 1), 0).x;
    found = entry(table0, (sum + 2u) / 4u);
  } else if (kind == 3) {
    vec2 both = texelFetch(pairs, at, 0).xy;
    float value = channel == 0 ? both.x : both.y;
    int place = 128;
    if (!isnan(value)) {
      place = int(floor(128.5 + 128.0 * clamp(value / signed_end, -1.0, 1.0)));
      vec2 ends = texelFetch(bounds, ivec2(place, 0), 0).xy;
      place += value < ends.x ? -1 : value >= ends.y ? 1 : 0;
    }
    found = texelFetch(table0, ivec2(place, 0), 0);
  } else {
    found = entry(table0, texelFetch(image0, at, 0).x);
    if (kind == 4) {
      uint degree = entry(table1, texelFetch(image1, at, 0).x).w;
      uint grey = style == 3 ? entry(table2, texelFetch(image2, at, 0).x).w : 0u;
      found = uvec4(mixed(found.x, degree, grey), mixed(found.y, degree, grey), mixed(found.z, degree, grey), 255u);
    }
  }
  colour = vec4(vec3(found.xyz) / 255.0, 1.0);
}`;

/**
 * @param {WebGL2RenderingContext} gl
 * @returns {{program: WebGLProgram, at: (name: string) => WebGLUniformLocation | null} | null} nothing where it does
 *   not compile
 */
export function createProgram(gl) {
  const program = gl.createProgram();
  for (const [type, source] of /** @type {const} */ ([
    [gl.VERTEX_SHADER, vertexSource],
    [gl.FRAGMENT_SHADER, fragmentSource],
  ])) {
    const shader = gl.createShader(type);
    if (!shader) {
      return null;
    }
    gl.shaderSource(shader, source);
    gl.compileShader(shader);
    gl.attachShader(program, shader);
  }
  gl.linkProgram(program);
  if (!gl.getProgramParameter(program, gl.LINK_STATUS)) {
    return null;
  }
  /** @type {Map<string, WebGLUniformLocation | null>} */
  const places = new Map();
  return {
    program,
    at(name) {
      if (!places.has(name)) {
        places.set(name, gl.getUniformLocation(program, name));
      }
      return places.get(name) ?? null;
    },
  };
}
