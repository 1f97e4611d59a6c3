// The page in real Chromium (Debian's, headless), driven through its UI as a person would use it.
// `node run.mjs SITE EXCHANGE NATIVE_TIMING.json SCREENSHOT` serves SITE with the isolation
// headers; EXCHANGE is the stem of the sets and answers that the native build's file_exchange
// wrote; the native timing figures are compared with the same workload in the page.
import puppeteer from 'puppeteer-core';
import { mkdtempSync, readFileSync, rmSync, writeFileSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { join, resolve } from 'node:path';
import { serve } from './server.mjs';
import { timingWorkload, probeAnswers, probePoint } from './workloads.js';

const [site, exchange, nativeTimingFile, screenshot] = process.argv.slice(2).map((p) => resolve(p));
let passed = 0;
let failed = 0;
// Times vary with the machine's load: they are reported beside the native ones, never failed on.
function report(what, detail) {
  console.log(`time ${what}: ${detail}`);
}
function check(ok, what, detail = '') {
  if (ok) passed++;
  else failed++;
  console.log(`${ok ? 'ok  ' : 'FAIL'} ${what}${detail ? `: ${detail}` : ''}`);
}

const server = await serve(site);
const url = `http://127.0.0.1:${server.address().port}/`;
const profile = mkdtempSync(join(tmpdir(), 'zando-chromium-'));
const browser = await puppeteer.launch({
  executablePath: '/usr/bin/chromium',
  userDataDir: profile,
  headless: true,
  args: ['--headless', '--no-sandbox', '--disable-gpu', '--disable-quic', '--no-first-run', '--disable-background-networking',
    '--disable-component-update', '--disable-sync', '--window-size=1280,800'],
  defaultViewport: { width: 1280, height: 800 },
});
const problems = [];

try {
  const page = await browser.newPage();
  page.on('pageerror', (error) => problems.push(`page error: ${error.message}`));
  page.on('console', (message) => { if (message.type() === 'error') problems.push(`console: ${message.text()}`); });

  // ---- Loading ----
  const loadStart = Date.now();
  await page.goto(url);
  await page.waitForSelector('body[data-ready=true]', { timeout: 15000 });
  const loadMs = Date.now() - loadStart;
  report('until the page is usable', `${loadMs} ms`);

  const text = (selector) => page.$eval(selector, (e) => e.textContent);
  const box = await (await page.$('#scene')).boundingBox();
  // A stroke drawn with the mouse on the canvas: points of a shape in [-1, 1]^2, mapped onto the
  // middle of the drawing area.
  async function draw(shape, seed) {
    const cx = box.x + box.width * 0.42 + 6 * Math.sin(seed), cy = box.y + box.height * 0.5 + 5 * Math.cos(seed);
    const size = Math.min(box.width, box.height) * 0.22 * (1 + 0.1 * Math.sin(3 * seed));
    const points = 40;
    for (let i = 0; i < points; i++) {
      const t = i / (points - 1);
      let x, y;
      if (shape === 'circle') { x = Math.cos(2 * Math.PI * t); y = Math.sin(2 * Math.PI * t); }
      else if (shape === 'swipe') { x = -1 + 2 * t; y = 0.1 * Math.sin(Math.PI * t); }
      else { x = 0.35 * Math.sin(6 * Math.PI * t); y = -1 + 2 * t; }
      const px = cx + size * x, py = cy - size * y;
      if (i === 0) { await page.mouse.move(px, py); await page.mouse.down(); }
      else await page.mouse.move(px, py);
    }
    await page.mouse.up();
  }

  // ---- Errors are shown, not thrown ----
  await draw('circle', 0);
  await page.waitForSelector('#message.error');
  check((await text('#message')).includes('NoGestures'), 'identifying without gestures says so on the page', await text('#message'));
  await page.$eval('#load', (input) => {
    const file = new File([new Uint8Array([1, 2, 3, 4, 5])], 'broken.dat');
    const transfer = new DataTransfer();
    transfer.items.add(file);
    input.files = transfer.files;
    input.dispatchEvent(new Event('change'));
  });
  await page.waitForFunction(() => document.getElementById('message').textContent.includes('InvalidFile'), { timeout: 5000 })
    .then(() => check(true, 'a broken set file is reported on the page'))
    .catch(async () => check(false, 'a broken set file is reported on the page', await text('#message')));

  // ---- Record samples through the UI, identify scripted strokes (enhanced mode: no training) ----
  const shapes = ['circle', 'swipe', 'zigzag'];
  for (const shape of shapes) {
    await page.type('#gesture-name', shape);
    await page.click('#add-gesture');
    for (let s = 0; s < 4; s++) await draw(shape, 10 * shapes.indexOf(shape) + s);
  }
  const counts = await page.$$eval('#gestures .count', (items) => items.map((i) => i.textContent));
  check(counts.join() === '4 samples,4 samples,4 samples', 'four samples of each of three gestures recorded', counts.join());
  await page.click('#mode-identify');
  let right = 0;
  for (const [i, shape] of shapes.entries()) {
    await draw(shape, 100 + i);
    await page.waitForFunction((n) => window.zandoPage.strokesEnded >= n, {}, 13 + i);
    if ((await text('#result')).includes(`“${shape}”`)) right++;
  }
  check(right === 3, 'scripted strokes identified in the enhanced mode', `${right} of 3`);
  const bars = await page.$$eval('#probabilities li', (items) => items.length);
  check(bars === 3, 'the probabilities of every gesture are shown', `${bars} bars`);
  await page.click('#gestures li:nth-child(1) .select');
  await new Promise((r) => setTimeout(r, 400));
  await page.screenshot({ path: screenshot });

  // ---- Background training: progress events while the page keeps drawing frames ----
  // A fourth gesture drawn like the first: no network tells them apart, so training runs its
  // whole time, and the page must keep drawing all along.
  await page.type('#gesture-name', 'loop');
  await page.click('#add-gesture');
  for (let s = 0; s < 4; s++) await draw('circle', 50 + s);
  await page.click('#enhanced');
  await page.$eval('#train-seconds', (input) => { input.value = '3'; });
  await page.evaluate(() => {
    // The longest gap between animation frames while training runs.
    window.frameGaps = { last: performance.now(), longest: 0, running: true };
    const tick = (time) => {
      window.frameGaps.longest = Math.max(window.frameGaps.longest, time - window.frameGaps.last);
      window.frameGaps.last = time;
      if (window.frameGaps.running) requestAnimationFrame(tick);
    };
    requestAnimationFrame(tick);
  });
  const framesBefore = await page.evaluate(() => window.zandoPage.frames);
  const trainStart = Date.now();
  await page.click('#train');
  await page.waitForFunction(() => document.getElementById('train-status').textContent.startsWith('Trained'), { timeout: 30000 });
  const trainMs = Date.now() - trainStart;
  const training = await page.evaluate(() => {
    window.frameGaps.running = false;
    return { frames: window.zandoPage.frames, progress: window.zandoPage.progressEvents, longest: window.frameGaps.longest };
  });
  check(training.progress > 0, 'training reports progress events', `${training.progress} events in ${trainMs} ms`);
  const framesPerSecond = (training.frames - framesBefore) / (trainMs / 1000);
  check(framesPerSecond > 20 && training.longest < 250, 'the page keeps drawing while training runs',
    `${framesPerSecond.toFixed(0)} frames/s, longest gap ${training.longest.toFixed(0)} ms`);
  await draw('circle', 200);
  await page.waitForFunction(() => window.zandoPage.strokesEnded >= 20);
  check((await text('#result')).includes('“'), 'the trained network identifies a stroke', await text('#result'));

  // ---- A set saved by the native build loads through the page and gives the same answers ----
  for (const mode of ['network', 'enhanced']) {
    const input = await page.$('#load');
    await input.uploadFile(`${exchange}-${mode}.dat`);
    await page.waitForFunction(() => document.getElementById('message').textContent.startsWith('Loaded'), { timeout: 10000 });
    const answers = await page.evaluate(`(${probeAnswers})(window.zandoPage.gestures, ${JSON.stringify(mode)}, ${probePoint})`);
    const expected = readFileSync(`${exchange}.answers`, 'utf8').split('\n').filter((l) => l.startsWith(`${mode} `));
    const differing = expected.filter((line, i) => !sameAnswer(line, answers[i] ?? ''));
    check(expected.length === 12 && differing.length === 0, `the native build's ${mode} set gives the same answers in the page`,
      `${expected.length - differing.length} of ${expected.length}${differing.length ? `; first: ${differing[0]} / ${answers[expected.indexOf(differing[0])]}` : ''}`);
    await page.evaluate(() => document.getElementById('message').textContent = '');
  }

  // ---- Timing: the native workload in the page ----
  const native = readFileSync(nativeTimingFile, 'utf8').trim().split('\n').map((l) => JSON.parse(l));
  const web = [];
  for (const mode of ['network', 'enhanced']) {
    const bytes = [...readFileSync(`${exchange}-${mode}.dat`)];
    web.push(await page.evaluate(`(${timingWorkload})(${JSON.stringify(mode)}, new Uint8Array(${JSON.stringify(bytes)}), 20, ${probePoint})`));
  }
  const rows = [];
  for (const w of web) {
    const n = native.find((x) => x.mode === w.mode);
    rows.push({ mode: w.mode, ...Object.fromEntries(['frameIdentifyUs', 'frameDetectUs', 'endStrokeUs'].map((k) => [k, { chromium: w[k], native: n[k], ratio: +(w[k] / n[k]).toFixed(2) }])) });
    // As the native build answers with the same file (a briefly trained network may miss a few).
    check(w.correct === n.correct, `the timing workload is identified alike (${w.mode})`,
      `${w.correct} of ${w.strokes}, natively ${n.correct}`);
    report(`identification at the stroke's end (${w.mode})`,
      `${w.endStrokeUs.toFixed(1)} us against ${n.endStrokeUs.toFixed(1)} us native (${(w.endStrokeUs / n.endStrokeUs).toFixed(2)}x)`);
  }
  console.log(JSON.stringify({ loadMs, trainMs, timing: rows }, null, 1));
  writeFileSync(join(site, 'timing.json'), JSON.stringify({ loadMs, timing: rows }, null, 1));

  check(problems.length === 0, 'nothing was thrown or logged as an error', problems.join(' | '));
} catch (error) {
  check(false, 'the test ran to its end', error.stack);
} finally {
  await browser.close();
  server.close();
  rmSync(profile, { recursive: true, force: true });
}

// As file_exchange compares: the same words, numbers alike to nine digits.
function sameAnswer(expected, actual) {
  const a = expected.split(' '), b = actual.split(' ');
  if (a.length !== b.length) return false;
  return a.every((word, i) => word === b[i] || Math.abs(Number(word) - Number(b[i])) <= 1e-9 * Math.max(1, Math.abs(Number(word))));
}

console.log(`${passed} passed, ${failed} failed`);
process.exit(failed === 0 ? 0 : 1);
