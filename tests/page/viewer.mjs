// A running `nerova-polarize view` and a browser that looks at it.
import { spawn } from 'node:child_process';
import { readFileSync } from 'node:fs';
import { createRequire } from 'node:module';
import path from 'node:path';

const modules = path.resolve(process.env.NEROVA_PAGE_TOOLS ?? 'build/page-tools');
const { chromium } = createRequire(path.join(modules, 'node_modules', 'any.js'))('playwright-core');
export const tool = path.resolve(process.env.NEROVA_TOOL ?? 'build/linux-x86-64/bin/nerova-polarize');

const quietBrowser = ['--headless', '--no-sandbox', '--disable-gpu', '--disable-background-networking',
  '--disable-component-update', '--disable-sync', '--no-first-run'];

/** A browser that reaches nothing but this computer. */
export function startBrowser(...more) {
  return chromium.launch({ executablePath: '/usr/bin/chromium', args: [...quietBrowser, ...more] });
}

/** Starts `view`; the address that it prints, its standard input, its exit code when it has ended, and an end of it. */
export function startViewer(...options) {
  const program = spawn(tool, ['view', '--no-open', ...options], { stdio: ['pipe', 'pipe', 'pipe'] });
  const ended = new Promise((resolve) => program.on('exit', resolve));
  return new Promise((resolve, reject) => {
    let said = '';
    const read = (data) => {
      said += data;
      const address = said.match(/http:\/\/\S+/);
      if (address) {
        resolve({ address: address[0], input: program.stdin, ended, stop: () => program.kill('SIGINT') });
      }
    };
    program.stdout.on('data', read);
    program.stderr.on('data', read);
    program.on('exit', () => reject(new Error(said)));
  });
}

/** Messages of the browser about its own drivers are none of the page's. */
const ofDrivers = /GL Driver Message|Automatic fallback to software WebGL/;

/** Opens a page; `messages` are what its console says and what it throws. */
export async function openPage(browser, address, { width = 1280, height = 720, ...context } = {}) {
  const page = await (await browser.newContext({ viewport: { width, height }, ...context })).newPage();
  const messages = [];
  page.on('console', (message) => ofDrivers.test(message.text()) || messages.push(message.text()));
  page.on('pageerror', (error) => messages.push(error.message));
  await page.goto(address);
  return { page, messages };
}

/** Waits until all panels show what they should in full size. */
export async function inFull(page) {
  await page.waitForSelector('#stage[data-resolution="full"]', { timeout: 20000 });
}

/** What the page says of the pixel under the cursor, by name, when it has come; of the side b in a comparison too. */
export async function shownPixel(page, side = 'a') {
  await page.waitForFunction(() => [...document.querySelectorAll('#pixel-values td[data-name]')].every(({ dataset }) => dataset.value !== ''));
  return page.evaluate((one) => Object.fromEntries(
    [...document.querySelectorAll(`#pixel-values td[data-side="${one}"]`)].map(({ dataset }) => [dataset.name, Number(dataset.value)])), side);
}

/** The file that a key saves: its name and what it holds. */
export async function saved(page, key) {
  const [file] = await Promise.all([page.waitForEvent('download'), page.keyboard.press(key)]);
  return { name: file.suggestedFilename(), bytes: readFileSync(await file.path()) };
}
