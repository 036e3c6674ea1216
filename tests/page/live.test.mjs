// Frames that come while the page is open: of standard input, of a camera.
import assert from 'node:assert/strict';
import { spawn, spawnSync } from 'node:child_process';
import { readFileSync, writeFileSync } from 'node:fs';
import { after, before, test } from 'node:test';
import { at, makeScene, pixelOf, raw, transformed, width } from './scene.mjs';
import { inFull, openPage, saved, shownPixel, startBrowser, startViewer } from './viewer.mjs';

const simulator = 'arv-fake-gv-camera-0.8';

let browser;
before(async () => {
  makeScene();
  browser = await startBrowser();
});
after(() => browser.close());

const frameIs = (page, number) => page.waitForFunction((wanted) => document.querySelector('#frame-number').value === wanted, String(number));

test('standard input: from no frame to the newest, one that is held, the end of the input, of the page and of the program', async (context) => {
  const viewer = await startViewer('-', ...raw, '--once');
  context.after(viewer.stop);
  const { page, messages } = await openPage(browser, viewer.address + '#pixel=50,60');
  const shows = async (number) => {
    await frameIs(page, number);
    await inFull(page);
    assert.deepEqual(await shownPixel(page), pixelOf(transformed(`a${number}.raw`, ...raw), 60 * width + 50));
  };
  const frames = Array.from({ length: 5 }, (_, i) => readFileSync(at(`a${i}.raw`)));
  await page.waitForFunction(() => document.querySelector('.message').textContent === 'standard input has no frame yet.');
  viewer.input.write(frames[0]);
  await shows(0);
  viewer.input.write(Buffer.concat([frames[1], frames[2], frames[3].subarray(0, 99)]));
  await shows(2);
  await page.keyboard.press(',');
  viewer.input.write(Buffer.concat([frames[3].subarray(99), frames[4]]));
  await page.waitForFunction(() => document.querySelector('#frame-number').max === '4');
  await shows(1);
  assert.equal(await page.getAttribute('#live', 'aria-pressed'), 'false');
  await page.click('#live');
  await shows(4);
  viewer.input.end(frames[0].subarray(0, 700));
  await page.waitForSelector('#unreadable:visible');
  assert.match(await page.textContent('#unreadable'), /^standard input frame 5 is cut short/);
  assert.ok(await page.isHidden('#live'));
  assert.deepEqual(messages, []);
  await page.close();
  assert.equal(await viewer.ended, 0);
});

test('a camera is followed, held, and shown to be gone', async (context) => {
  if (spawnSync(simulator, ['--help']).error) {
    context.skip('aravis-tools, which simulates a camera, is not installed');
    return;
  }
  const camera = spawn(simulator, ['-i', '127.0.0.1'], { stdio: 'ignore' });
  context.after(() => camera.kill());
  let viewer;
  for (let tries = 0; !viewer; ++tries) {  // the camera takes a moment to start
    viewer = await startViewer('--camera', '127.0.0.1', '--layout', '45').catch((failure) => assert.ok(tries < 20, failure));
  }
  context.after(viewer.stop);
  const { page, messages } = await openPage(browser, viewer.address + '#active=raw&pixel=50,60');
  await page.waitForSelector('#live[aria-pressed="true"]');
  const number = () => page.$eval('#frame-number', ({ value }) => Number(value));
  const first = await number();
  await page.waitForFunction((old) => Number(document.querySelector('#frame-number').value) >= old + 10, first);
  await page.keyboard.press(',');
  await inFull(page);
  const held = await number();
  const shown = await shownPixel(page);
  const { name, bytes } = await saved(page, 'v');
  assert.ok(name.endsWith(`_${String(held).padStart(6, '0')}_raw.npy`), name);
  writeFileSync(at('held.npy'), bytes);
  assert.deepEqual(shown, pixelOf(transformed('held.npy', '--bit-depth', '8', '--layout', '45'), 60 * 512 + 50));
  assert.equal(await number(), held);
  camera.kill();
  await page.waitForSelector('#unreadable:visible');
  assert.equal(await page.textContent('#unreadable'), 'the camera 127.0.0.1 is gone.');
  assert.deepEqual(messages, []);
});
