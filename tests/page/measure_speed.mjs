// Measures the page: from the command to the first picture and to full resolution, from a key to the painted frame.
// Usage: node tests/page/measure_speed.mjs FOLDER, with NEROVA_TOOL and NEROVA_PAGE_TOOLS in the environment
import { execFileSync } from 'node:child_process';
import { copyFileSync, existsSync, mkdirSync } from 'node:fs';
import path from 'node:path';
import { openPage, startBrowser, startViewer, tool } from './viewer.mjs';

const folder = process.argv[2];
const rounds = 5;
mkdirSync(folder, { recursive: true });
const frame = path.join(folder, 'frame.png');
const stack = path.join(folder, 'stack.raw');
if (!existsSync(frame)) {
  execFileSync(tool, ['simulate', frame, '--size', '2448x2048', '--bit-depth', '12', '--layout', '90', '--photons', '10000', '-q']);
}
if (!existsSync(stack)) {
  execFileSync('/usr/bin/python3', ['-c', `
import sys
one = bytes(range(256)) * (2448 * 2048 * 2 // 256)
masked = bytes(b if i % 2 == 0 else b & 15 for i, b in enumerate(one[:512])) * (len(one) // 512)
with open(sys.argv[1], "wb") as f:
    for i in range(1000):
        f.write(masked)`, stack]);
}

const median = (values) => values.sort((a, b) => a - b)[values.length >> 1];
const row = (name, values) => process.stdout.write(`| ${name} | ${median(values).toFixed(0)} | ${Math.max(...values).toFixed(0)} |\n`);

/** Milliseconds from an action in the page until a picture for which `there` holds is on the screen. */
const timed = (page, action, there) =>
  page.evaluate(async ([act, check]) => {
    const stage = document.querySelector('#stage');
    const before = stage.dataset.frame;
    const painted = new Function('stage', 'before', `return ${check}`);
    const start = performance.now();
    new Function(act)();
    for (;;) {
      // A task after the frame's callbacks runs when its painting has been handed over.
      await new Promise((resolve) => requestAnimationFrame(() => setTimeout(resolve)));
      if (painted(stage, before)) {
        return performance.now() - start;
      }
    }
  }, [action, there]);
const key = (name) => `document.body.dispatchEvent(new KeyboardEvent('keydown', { key: '${name}', bubbles: true }))`;

for (const [painter, option] of [['canvas', ''], ['WebGL2 in software', '#!webgl']]) {
  const browser = await startBrowser();
  await (await browser.newPage()).close();
  process.stdout.write(`\n| ${painter}, milliseconds | median | longest |\n|---|---:|---:|\n`);
  for (const [name, files] of [['a frame', [frame]], ['a stack of 1000', [stack, '--raw', '2448x2048', '--pixel-format', 'Mono12']]]) {
    const first = [];
    const full = [];
    for (let i = 0; i < rounds; ++i) {
      const start = performance.now();
      const viewer = await startViewer(...files, '--layout', '90');
      const { page } = await openPage(browser, viewer.address + option);
      await page.waitForFunction(() => document.querySelector('#stage')?.dataset.frame, null, { polling: 'raf' });
      first.push(performance.now() - start);
      await page.waitForSelector('#stage[data-resolution="full"]');
      full.push(performance.now() - start);
      await page.context().close();
      viewer.stop();
    }
    row(`${name}: command to first picture`, first);
    row(`${name}: command to full resolution`, full);
  }
  const viewer = await startViewer(frame, '--layout', '90');
  const { page } = await openPage(browser, viewer.address + option);
  await page.waitForSelector('#stage[data-resolution="full"]');
  const changed = 'stage.dataset.frame !== before && stage.dataset.frame !== ""';
  for (const [name, letter] of [['layout', 'l'], ['origin', 'o']]) {
    const times = [];
    for (let i = 0; i < 4; ++i) {
      times.push(await timed(page, key(letter), changed));
      await page.waitForSelector('#stage[data-resolution="full"]');
    }
    row(`changed ${name}, not seen before`, times.slice(0, 3));
  }
  for (const [name, letter] of [['zoom', '+'], ['pan', 'ArrowLeft'], ['style', 'y'], ['end of a scale', ']']]) {
    const times = [];
    for (let i = 0; i < 8; ++i) {
      const act = name === 'pan' ? "document.body.dispatchEvent(new KeyboardEvent('keydown', { key: 'ArrowLeft', shiftKey: true, bubbles: true }))" : key(letter);
      times.push(await timed(page, act, 'true'));
    }
    row(name, times);
  }
  viewer.stop();
  await browser.close();
}
