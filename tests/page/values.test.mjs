// Values in the page are those that the tool writes, to the last bit.
import assert from 'node:assert/strict';
import { readFileSync } from 'node:fs';
import { after, before, test } from 'node:test';
import { at, height, makeScene, pixelOf, raw, readNpy, run, stackFrames, transformed, width } from './scene.mjs';
import { inFull, openPage, saved, shownPixel, startBrowser, startViewer } from './viewer.mjs';

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

/** Sets the view by its link and waits until it is shown. */
async function look(link) {
  await page.evaluate((text) => { location.hash = text; }, link);
  await page.waitForTimeout(60);
  await inFull(page);
}

const assertPixel = async (values, x, y, side) => assert.deepEqual(await shownPixel(page, side), pixelOf(values, y * width + x));

const stack = (frame, layout = 90, origin = '0.0', calibration = 'none') => `${frame},${layout},${origin},0,${calibration},stack.raw,`;

test('the pixel under the cursor, for each layout and origin, in the middle and at the edges', async () => {
  const samples = new Uint16Array(Uint8Array.from(readFileSync(at('scene.raw'))).buffer);
  for (const [layout, origin, x, y] of [[90, '0,0', 200, 100], [0, '1,0', width - 1, height - 1], [45, '0,1', 63, 64], [135, '1,1', 0, 255]]) {
    const values = transformed('scene.raw', ...raw.slice(0, 4), '--layout', String(layout), '--origin', origin);
    await look(`a=0,${layout},${origin.replace(',', '.')},0,none,scene.raw,&pixel=${x},${y}`);
    await assertPixel(values, x, y);
    const mirrored = (i, size) => (i < size ? i : size - 2);
    const around = [[x, y], [x + 1, y], [x, y + 1], [x + 1, y + 1]].map(([a, b]) => samples[mirrored(b, height) * width + mirrored(a, width)]);
    assert.deepEqual(await page.$$eval('.sample', (boxes) => boxes.map(({ dataset }) => Number(dataset.value))), around);
    await page.keyboard.press('ArrowLeft');
    await page.keyboard.press('ArrowRight');
  }
});

test('two frames, then two calibrations side by side', async () => {
  await look(`a=${stack(1)}&b=${stack(3)}&mode=compare&pixel=50,60`);
  await assertPixel(transformed('a1.raw', ...raw), 50, 60, 'a');
  await assertPixel(transformed('a3.raw', ...raw), 50, 60, 'b');
  const name = await page.$eval('#calibration', ({ options }) => options[1].text);
  await look(`a=${stack(1)}&b=${stack(1, 90, '0.0', encodeURIComponent(name))}&mode=compare&pixel=50,60`);
  await assertPixel(transformed('a1.raw', ...raw), 50, 60, 'a');
  await assertPixel(transformed('a1.raw', ...raw, '--calibration', at('camera.json')), 50, 60, 'b');
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
  const save = async () => (await saved(page, 'v')).bytes;
  assert.deepEqual(readNpy(await save()), azimuth);
  await look('a=0,90,0.0,0,none,scene.raw,&active=coloured&region=10,20,30,2');
  const rows = [20, 21].map((y) => [...azimuth.subarray(y * width + 10, y * width + 40)]);
  assert.deepEqual([...readNpy(await save())], rows.flat());
  await page.selectOption('#number-format', 'csv');
  await page.evaluate(() => document.activeElement.blur());
  assert.deepEqual((await save()).toString().trim().split(/[\r\n]+/).slice(-2).map((line) => line.split(',').map(Number)), rows);
});

test('each colour of a sensor with colour filters: pixel, along time, region, saved numbers and picture', async (context) => {
  const options = [...raw, '--colour', 'RGGB'];
  const colours = await startViewer(at('colours.raw'), ...options);
  context.after(colours.stop);
  const opened = await openPage(browser, colours.address + '#a=0,90,0.0,0,none,colours.raw,B&active=coloured&pixel=90,31&region=20,16,60,50');
  const frames = [0, 1].map((i) => transformed(`c${i}.raw`, ...options));
  const statistics = JSON.parse(run('stats', at('c0.raw'), ...options, '--roi', '40,32,120,100', '--json')).frames[0].colours;
  const pixels = (width / 2) * (height / 2);
  for (const [plane, name] of [[3, 'B'], [0, 'R'], [1, 'G1'], [2, 'G2']]) {
    await inFull(opened.page);
    assert.equal(await opened.page.$eval('#plane', ({ selectedOptions }) => selectedOptions[0].text), name);
    const place = plane * pixels + 31 * (width / 2) + 90;
    assert.deepEqual(await shownPixel(opened.page), pixelOf(frames[0], place));
    await opened.page.waitForFunction((mean) => Number(document.querySelector('#region-values [data-name="mean_angle_degrees"]')?.dataset.value) === mean,
      statistics[name].mean_angle_degrees);
    await opened.page.keyboard.press('t');
    await opened.page.waitForFunction((angles) => JSON.parse(document.querySelector('#series-plot').dataset.angles ?? '[]').map(Math.fround).join() === angles,
      frames.map(({ angle }) => angle[place]).join());
    const numbers = await saved(opened.page, 'v');
    assert.equal(numbers.name, `colours_000000_azimuth_${name.toLowerCase()}.npy`);
    assert.equal(readNpy(numbers.bytes)[0], frames[0].azimuth[plane * pixels + 16 * (width / 2) + 20]);
    assert.equal((await saved(opened.page, 'i')).name, `colours_000000_dark_${name.toLowerCase()}.png`);
    await opened.page.keyboard.press('n');
  }
  assert.deepEqual(opened.messages, []);
});

test('nothing was said in the console', () => assert.deepEqual(messages, []));
