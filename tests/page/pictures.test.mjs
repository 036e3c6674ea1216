// The colours on the screen are those of the tool, by either painter.
import assert from 'node:assert/strict';
import { readFileSync } from 'node:fs';
import { after, before, test } from 'node:test';
import { at, height, makeScene, raw, run, transformed, width } from './scene.mjs';
import { inFull, openPage, startBrowser, startViewer } from './viewer.mjs';

let browser;
before(async () => {
  makeScene();
  browser = await startBrowser();
});
after(() => browser.close());

/** Pixels as text, which comes out of the page faster than numbers. */
const inText = (bytes) => Array.from(bytes, (byte) => String.fromCharCode(byte)).join('');
const fromText = (text) => Buffer.from(text, 'latin1');

/** Red, green, blue and opacity of the frame where it lies on the screen, pixel for pixel. */
const onScreen = (page) => page.evaluate(([columns, rows]) => {
  const picture = document.querySelector('#picture');
  const well = document.querySelector('.well').getBoundingClientRect();
  const origin = picture.getBoundingClientRect();
  const canvas = new OffscreenCanvas(picture.width, picture.height);
  const context = canvas.getContext('2d');
  context.drawImage(picture, 0, 0);
  // The frame's middle lies in the panel's.
  const left = Math.round(well.left - origin.left) + Math.ceil(Math.round(well.width) / 2 - columns / 2);
  const top = Math.round(well.top - origin.top) + Math.ceil(Math.round(well.height) / 2 - rows / 2);
  return inText(context.getImageData(left, top, columns, rows).data);
}, [width, height]).then(fromText);

/** What a PNG holds, as the browser reads it. */
const pixelsOf = (page, png) => page.evaluate(async (text) => {
  const image = new Image();
  image.src = `data:image/png;base64,${text}`;
  await image.decode();
  const context = new OffscreenCanvas(image.width, image.height).getContext('2d');
  context.drawImage(image, 0, 0);
  return inText(context.getImageData(0, 0, image.width, image.height).data);
}, png.toString('base64')).then(fromText);

const table = (name) => readFileSync(new URL(`../../docs/colour-tables/${name}.csv`, import.meta.url), 'utf8')
  .split('\n').filter((line) => /^\d/.test(line)).map((line) => line.split(',').map(Number));

/** The colours that docs/pictures.md defines; the ends are 0.8 for the degree and 0.6 for the power. */
function expectedColours(kind, values, samples) {
  const tables = { grey: table('grey'), sequential: table('sequential'), diverging: table('diverging'), hue: table('hue') };
  const nearest = (name, share) => tables[name][Math.round((tables[name].length - 1) * Math.min(1, Math.max(0, share)))];
  const colourOf = {
    raw: (i) => nearest('grey', samples[i] / 4095 / 0.6),
    power: (i) => nearest('grey', values.power[i] / 65535 / 0.6),
    degree: (i) => nearest('sequential', values.dolp[i] / 65535 / 0.8),
    angle: (i) => tables.hue[(Math.round(1530 * (values.azimuth[i] / 65535 - 0.5)) + 1530) % 1530],
    s1: (i) => nearest('diverging', 0.5 + 0.5 * (values.stokes[2 * i] / 0.8)),
    s2: (i) => nearest('diverging', 0.5 + 0.5 * (values.stokes[2 * i + 1] / 0.8)),
  }[kind];
  return Buffer.from(Array.from({ length: width * height }, (_, i) => [...colourOf(i), 255]).flat());
}

for (const painter of ['canvas', 'webgl']) {
  test(`each panel by ${painter}`, async (context) => {
    const viewer = await startViewer(at('scene.raw'), ...raw);
    context.after(viewer.stop);
    const values = transformed('scene.raw', ...raw);
    const samples = new Uint16Array(Uint8Array.from(readFileSync(at('scene.raw'))).buffer);
    const { page, messages } = await openPage(browser, `${viewer.address}#!${painter}`);
    await page.evaluate(`globalThis.inText = ${inText}`);
    await page.waitForSelector(`html[data-painter="${painter === 'webgl' ? 'WebGL2' : 'canvas'}"]`, { state: 'attached' });
    const show = async (kind, style) => {
      await page.evaluate(([one, colours, x, y]) => {
        location.hash = `active=${one},alone&style=${colours}&ends=0.8,0.6&view=${x},${y},1`;
      }, [kind, style, width / 2, height / 2]);
      await page.waitForSelector(`.panel:only-child[data-kind="${kind}"]`);
      await inFull(page);
      await page.waitForTimeout(150);
    };
    for (const kind of ['raw', 'power', 'degree', 'angle', 's1', 's2']) {
      await show(kind, 'dark');
      const shown = await onScreen(page);
      const expected = expectedColours(kind, values, samples);
      assert.equal(shown.length, expected.length);
      assert.equal(shown.filter((value, i) => value !== expected[i]).length, 0, kind);
    }
    for (const style of ['plain', 'light', 'dark', 'composite']) {
      run('transform', at('scene.raw'), ...raw, '-q', '-o', at('styles'), '--outputs', 'azimuth-picture',
        '--degree-max', '0.8', '--power-max', '0.6', '--azimuth-style', style);
      const expected = await pixelsOf(page, readFileSync(at(`styles/scene_azimuth_${style}.png`)));
      await show('coloured', style);
      assert.ok((await onScreen(page)).equals(expected), style);
    }
    await show('coloured', 'light');
    const [saved] = await Promise.all([page.waitForEvent('download'), page.keyboard.press('i')]);
    const light = await pixelsOf(page, readFileSync(at('styles/scene_azimuth_light.png')));
    assert.ok((await pixelsOf(page, readFileSync(await saved.path()))).equals(light), 'the saved picture');
    assert.deepEqual(messages, []);
    await page.context().close();
  });
}
