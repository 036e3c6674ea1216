// Values in the page are those that the tool writes, to the last bit.
import assert from 'node:assert/strict';
import { readFileSync } from 'node:fs';
import { after, before, test } from 'node:test';
import { at, height, makeScene, raw, readNpy, run, stackFrames, transformed, width } from './scene.mjs';
import { inFull, openPage, startBrowser, startViewer } from './viewer.mjs';

let browser;
let viewer;
let page;
let messages;
before(async () => {
  makeScene();
  browser = await startBrowser();
  viewer = await startViewer(at('stack.raw'), at('scene.raw'), ...raw, '--compare', at('camera.json'));
  ({ page, messages } = await openPage(browser, viewer.address));
});
after(async () => {
  await browser.close();
  viewer.stop();
});

/** What the page says of the pixel under the cursor, by name; of the side b in a comparison too. */
const shownValues = (side = 'a') => page.evaluate((one) => Object.fromEntries(
  [...document.querySelectorAll(`#pixel-values td[data-side="${one}"]`)].map(({ dataset }) => [dataset.name, Number(dataset.value)])), side);

/** Sets the view by its link and waits until the pixel's values have come. */
async function look(link) {
  await page.evaluate((text) => { location.hash = text; }, link);
  await page.waitForTimeout(60);
  await inFull(page);
  await page.waitForFunction((wanted) => !wanted ||
    ![...document.querySelectorAll('#pixel-values td[data-name]')].some(({ dataset }) => dataset.value === ''), link.includes('pixel='));
}

function assertPixel(shown, values, x, y) {
  const i = y * width + x;
  const expected = { s0: values.s0[i], s1: values.s1[i], s2: values.s2[i], stokes1: values.stokes[2 * i], stokes2: values.stokes[2 * i + 1],
    angle: values.angle[i], dolp: values.dolp[i] };
  assert.deepEqual(shown, expected);
}

const stack = (frame, layout = 90, origin = '0.0', calibration = 'none') => `${frame},${layout},${origin},0,${calibration},stack.raw,`;

test('the pixel under the cursor, for each layout and origin, in the middle and at the edges', async () => {
  const samples = new Uint16Array(Uint8Array.from(readFileSync(at('scene.raw'))).buffer);
  for (const [layout, origin, x, y] of [[90, '0,0', 200, 100], [0, '1,0', width - 1, height - 1], [45, '0,1', 63, 64], [135, '1,1', 0, 255]]) {
    const values = transformed('scene.raw', ...raw.slice(0, 4), '--layout', String(layout), '--origin', origin);
    await look(`a=0,${layout},${origin.replace(',', '.')},0,none,scene.raw,&pixel=${x},${y}`);
    assertPixel(await shownValues(), values, x, y);
    const mirrored = (i, size) => (i < size ? i : size - 2);
    const around = [[x, y], [x + 1, y], [x, y + 1], [x + 1, y + 1]].map(([a, b]) => samples[mirrored(b, height) * width + mirrored(a, width)]);
    assert.deepEqual(await page.$$eval('.sample', (boxes) => boxes.map(({ dataset }) => Number(dataset.value))), around);
    await page.keyboard.press('ArrowLeft');
    await page.keyboard.press('ArrowRight');
  }
});

test('two frames, then two calibrations side by side', async () => {
  await look(`a=${stack(1)}&b=${stack(3)}&mode=compare&pixel=50,60`);
  assertPixel(await shownValues('a'), transformed('a1.raw', ...raw), 50, 60);
  assertPixel(await shownValues('b'), transformed('a3.raw', ...raw), 50, 60);
  const name = await page.$eval('#calibration', ({ options }) => options[1].text);
  await look(`a=${stack(1)}&b=${stack(1, 90, '0.0', encodeURIComponent(name))}&mode=compare&pixel=50,60`);
  assertPixel(await shownValues('a'), transformed('a1.raw', ...raw), 50, 60);
  assertPixel(await shownValues('b'), transformed('a1.raw', ...raw, '--calibration', at('camera.json')), 50, 60);
});

test('a region has the statistics that stats prints, and the histogram of its angles', async () => {
  await look(`a=0,90,0.0,0,none,scene.raw,&region=40,30,120,100`);
  const one = JSON.parse(run('stats', at('scene.raw'), ...raw, '--roi', '40,30,120,100', '--json')).frames[0];
  await page.waitForFunction(() => document.querySelector('#region-values td[data-value="12000"]'));
  const shown = await page.$$eval('#region-values td[data-name]', (cells) => Object.fromEntries(cells.map(({ dataset }) => [dataset.name, Number(dataset.value)])));
  for (const name of ['pixels', 'mean_angle_degrees', 'resultant_length', 'angle_deviation_degrees', 'mean_degree']) {
    assert.equal(shown[name], one[name], name);
  }
  assert.equal(shown.saturated, one.saturated_pixels.frame);
  const counts = new Array(180).fill(0);
  for (const angle of transformed('scene.raw', ...raw, '--roi', '40,30,120,100').angle) {
    counts[Math.floor(angle)] += 1;
  }
  const reply = await page.evaluate(() => fetch('/api/region?source=1&region=40,30,120,100').then((answer) => answer.json()));
  assert.deepEqual(reply.histogram, counts);
  assert.ok(await page.isVisible('#wheel-a'));
});

test('a pixel along time has the angle of each frame', async () => {
  await look(`a=${stack(0)}&pixel=50,60`);
  await page.keyboard.press('t');
  await page.waitForFunction((count) => JSON.parse(document.querySelector('#series-plot').dataset.angles ?? '[]').length === count, stackFrames);
  const shown = JSON.parse(await page.getAttribute('#series-plot', 'data-angles'));
  const expected = Array.from({ length: stackFrames }, (_, i) => transformed(`a${i}.raw`, ...raw).angle[60 * width + 50]);
  assert.deepEqual(shown.map(Math.fround), expected);
});

test('saved numbers are what transform writes, of the frame and of a region', async () => {
  const { azimuth } = transformed('scene.raw', ...raw);
  await look('a=0,90,0.0,0,none,scene.raw,&active=coloured');
  const save = async () => {
    const [saved] = await Promise.all([page.waitForEvent('download'), page.keyboard.press('v')]);
    return readFileSync(await saved.path());
  };
  assert.deepEqual(readNpy(await save()), azimuth);
  await look('a=0,90,0.0,0,none,scene.raw,&active=coloured&region=10,20,30,2');
  const rows = [20, 21].map((y) => [...azimuth.subarray(y * width + 10, y * width + 40)]);
  assert.deepEqual([...readNpy(await save())], rows.flat());
  await page.selectOption('#number-format', 'csv');
  await page.evaluate(() => document.activeElement.blur());
  assert.deepEqual((await save()).toString().trim().split(/[\r\n]+/).slice(-2).map((line) => line.split(',').map(Number)), rows);
});

test('nothing was said in the console', () => assert.deepEqual(messages, []));
