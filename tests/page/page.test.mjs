// What the page does when it is used: by keys alone, small, in both themes, with links, with frames that cannot be read.
import assert from 'node:assert/strict';
import { appendFileSync, readFileSync, writeFileSync } from 'node:fs';
import { after, before, test } from 'node:test';
import { at, complaint, makeScene, pixelOf, raw, run, stackFrames, transformed, width } from './scene.mjs';
import { inFull, openPage, shownPixel, startBrowser, startViewer } from './viewer.mjs';

let browser;
before(async () => {
  makeScene();
  browser = await startBrowser();
});
after(() => browser.close());

async function open(context, files, options = {}) {
  const viewer = await startViewer(...files);
  context.after(viewer.stop);
  const opened = await openPage(browser, viewer.address + (options.link ?? ''), options);
  context.after(() => opened.page.context().close());
  return { ...opened, viewer };
}

/** A part of the view's link, when it has been written. */
const linkPart = async (page, name) => {
  await page.waitForSelector('html[data-link="written"]', { state: 'attached' });
  return page.evaluate((key) => new Map(location.hash.slice(1).split('&').map((part) => part.split('='))).get(key), name);
};

test('keys do all that the pointer does', async (context) => {
  const { page, messages } = await open(context, [at('stack.raw'), ...raw]);
  await inFull(page);
  assert.equal(await page.$$eval('.panel', ({ length }) => length), 7);
  const press = async (...keys) => {
    for (const key of keys) {
      await page.keyboard.press(key);
    }
  };
  const settings = async () => (await linkPart(page, 'a')).split(',');
  await press('l');
  assert.equal((await settings())[1], '135');
  await press('Shift+L', 'o');
  assert.deepEqual((await settings()).slice(1, 3), ['90', '1.0']);
  await press('o', 'o', 'o', '.', '.');
  assert.equal((await settings())[0], '2');
  await press('End');
  assert.equal((await settings())[0], String(stackFrames - 1));
  await press('Home', 'ArrowRight', 'ArrowDown', 'ArrowRight');
  const cursor = (await linkPart(page, 'pixel')).split(',').map(Number);
  await press('r', 'ArrowRight', 'ArrowDown', 'ArrowDown', 'Enter');
  const [x, y, across, down] = (await linkPart(page, 'region')).split(',').map(Number);
  assert.deepEqual([x, y], cursor);
  assert.ok(across > 1 && down > across, `${across} x ${down}`);
  await press('Escape', 'p');
  assert.equal(Number((await linkPart(page, 'view')).split(',')[2]), 48);
  await press('Shift+ArrowRight', '-');
  assert.equal(Number((await linkPart(page, 'view')).split(',')[2]), 32);
  await press('0', 'y', ']', '}', 'm', 'q');
  assert.deepEqual([await linkPart(page, 'view'), await linkPart(page, 'style'), await linkPart(page, 'ends'), await linkPart(page, 'maps'), await linkPart(page, 'lines')],
    [undefined, 'composite', '0.01,0.01', 'grey,grey', '1']);
  await press('3');
  assert.equal(await page.$$eval('.panel', ({ length }) => length), 6);
  await press('k');
  assert.equal(await page.$$eval('.panel', ({ length }) => length), 4);
  await press('k', 'c', '.');
  assert.deepEqual([(await linkPart(page, 'b')).split(',')[0], (await settings())[0]], ['1', '0']);
  await press('c', 'Enter');
  assert.equal(await page.$$eval('.panel', ({ length }) => length), 1);
  await press('Escape', '?');
  assert.ok(await page.isVisible('#help-dialog'));
  await press('Escape', ' ');
  await page.waitForFunction(() => Number(document.querySelector('#frame').value) >= 2);
  await press(' ');
  const theme = await page.getAttribute('html', 'data-theme');
  await press('g');
  assert.notEqual(await page.getAttribute('html', 'data-theme'), theme);
  assert.deepEqual(messages, []);
});

test('the pointer pans, zooms, selects and takes a candidate', async (context) => {
  const { page, messages } = await open(context, [at('scene.raw'), ...raw]);
  await inFull(page);
  const well = await (await page.$('.panel[data-kind="degree"] .well')).boundingBox();
  const [x, y] = [well.x + well.width / 2, well.y + well.height / 2];
  await page.mouse.move(x, y);
  await page.mouse.wheel(0, -480);
  const [, , scale] = (await linkPart(page, 'view')).split(',').map(Number);
  await page.mouse.down();
  await page.mouse.move(x - 30, y);
  await page.mouse.up();
  const [left, , now] = (await linkPart(page, 'view')).split(',').map(Number);
  assert.equal(now, scale);
  assert.ok(Math.abs(left - (160 + 30 / scale)) < 1, `${left}`);
  await page.keyboard.down('Shift');
  await page.mouse.move(x, y);
  await page.mouse.down();
  await page.mouse.move(x + 20 * scale, y + 10 * scale);
  await page.mouse.up();
  await page.keyboard.up('Shift');
  assert.match(await linkPart(page, 'region'), /,21,11$/);
  await page.click('#candidates');
  await page.click('.panel[data-key="layout 45"] .well');
  assert.equal((await linkPart(page, 'a')).split(',')[1], '45');
  assert.deepEqual(messages, []);
});

test('a link restores the view in another run', async (context) => {
  const link = '#a=3,45,1.0,0,none,stack.raw,&mode=panels&panels=raw,degree&active=degree&style=light&ends=0.5,0.2&maps=sequential,grey&view=100.00,90.00,3.0000&pixel=101,91&region=90,80,20,10&lines=1';
  const { page } = await open(context, [at('scene.raw'), at('stack.raw'), ...raw], { link });
  await inFull(page);
  await page.keyboard.press('ArrowLeft');
  await page.keyboard.press('ArrowRight');
  await page.waitForSelector('html[data-link="written"]', { state: 'attached' });
  const written = await page.evaluate(() => location.hash);
  assert.equal(written.replace(/none,[^&]*stack\.raw/, 'none,stack.raw'), link);
  assert.equal(await page.$$eval('.panel', ({ length }) => length), 2);
});

test('a frame that cannot be read shows the sentence that the tool prints', async (context) => {
  const { page } = await open(context, [at('broken.png'), '--layout', '90']);
  const said = page.locator('.message:visible, #unreadable:visible').first();
  await said.waitFor();
  assert.equal(await said.textContent(), complaint('transform', at('broken.png'), '-o', at('none')));
});

test('frames of different sizes, one after another and side by side', async (context) => {
  run('simulate', at('small.png'), '--size', '160x120', '-q');
  const { page, messages } = await open(context, [at('scene.png'), at('small.png'), '--layout', '90'], { link: '#pixel=150,100' });
  const steps = [['.', 'small.png'], [',', 'scene.png'], ['c', 'scene.png'], ['.', 'small.png']];
  for (const [key, name] of steps) {
    await inFull(page);
    await page.keyboard.press(key);
    assert.equal(await page.$eval('#source', ({ selectedOptions }) => selectedOptions[0].text), name);
  }
  await inFull(page);
  assert.deepEqual(await shownPixel(page, 'b'), pixelOf(transformed('small.png', '--layout', '90'), 100 * 160 + 150));
  assert.deepEqual(messages, []);
});

test('the last frame is followed while a file grows, and its first one when it is written anew', async (context) => {
  const frame = readFileSync(at('a0.raw'));
  writeFileSync(at('growing.raw'), frame);
  const { page } = await open(context, [at('growing.raw'), ...raw], { link: '#pixel=50,60' });
  await inFull(page);
  appendFileSync(at('growing.raw'), Buffer.concat([frame, frame]));
  await page.waitForFunction(() => document.querySelector('#frame').value === '2', null, { timeout: 15000 });
  writeFileSync(at('growing.raw'), readFileSync(at('a3.raw')));
  const { s1 } = pixelOf(transformed('a3.raw', ...raw), 60 * width + 50);
  await page.waitForSelector(`#pixel-values td[data-name="s1"][data-value="${s1}"]`);
});

test('a phone, both themes, names and focus', async (context) => {
  for (const colorScheme of ['dark', 'light']) {
    const { page, messages } = await open(context, [at('stack.raw'), ...raw], { width: 390, height: 844, colorScheme });
    await inFull(page);
    assert.equal(await page.getAttribute('html', 'data-theme'), colorScheme);
    assert.ok(await page.evaluate(() => document.documentElement.scrollWidth <= innerWidth), 'wider than the screen');
    const nameless = await page.$$eval('button, select, input, canvas, .panel', (elements) => elements
      .filter((one) => !one.hidden && one.getAttribute('aria-hidden') !== 'true' &&
        !(one.getAttribute('aria-label') ?? one.labels?.[0]?.textContent ?? one.textContent).trim())
      .map(({ id, outerHTML }) => id || outerHTML));
    assert.deepEqual(nameless, []);
    await page.keyboard.press('Tab');
    assert.notEqual(await page.evaluate(() => getComputedStyle(document.activeElement).outlineStyle), 'none');
    assert.deepEqual(messages, []);
  }
});
