// Measures the page: from the command to the first picture and to full resolution, from a key to the painted frame.
// Usage: node tests/page/measure_speed.mjs FOLDER [canvas|webgl], with NEROVA_TOOL and NEROVA_PAGE_TOOLS in the environment
import { execFileSync } from 'node:child_process';
import { existsSync, mkdirSync } from 'node:fs';
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

/** Milliseconds from a key until the picture is on the screen: with `changed` that of another frame, else the next one. */
const timed = (page, key, { shift = false, changed = false } = {}) =>
  page.evaluate(async ([name, shiftKey, other]) => {
    const stage = document.querySelector('#stage');
    const before = stage.dataset.frame;
    const start = performance.now();
    document.body.dispatchEvent(new KeyboardEvent('keydown', { key: name, shiftKey, bubbles: true }));
    do {
      // A task after the frame's callbacks runs when its painting has been handed over.
      await new Promise((resolve) => requestAnimationFrame(() => setTimeout(resolve)));
    } while (other && stage.dataset.frame === before);
    return performance.now() - start;
  }, [key, shift, changed]);

for (const [painter, option] of [['canvas', '#!canvas'], ['WebGL2 in software', '#!webgl']].filter(([, one]) => one.includes(process.argv[3] ?? ''))) {
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
  for (const [name, key] of [['layout', 'l'], ['origin', 'o']]) {
    const times = [];
    for (let i = 0; i < 3; ++i) {
      times.push(await timed(page, key, { changed: true }));
      await page.waitForSelector('#stage[data-resolution="full"]');
    }
    row(`changed ${name}, not seen before`, times);
  }
  for (const [name, key, shift] of [['zoom', '+', false], ['pan', 'ArrowLeft', true], ['style', 'y', false], ['end of a scale', ']', false]]) {
    const times = [];
    for (let i = 0; i < 8; ++i) {
      times.push(await timed(page, key, { shift }));
    }
    row(name, times);
  }
  viewer.stop();
  await browser.close();
}
