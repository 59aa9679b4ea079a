// Reports in a headless Chromium: read, sorted, filtered, pointed at, driven by keys, printed, and looked at by axe.
//
//   node report_test.mjs VRX EXAMPLES     (VRX_CHROMIUM names the browser)
import assert from 'node:assert/strict';
import { execFileSync, spawnSync } from 'node:child_process';
import { createHash } from 'node:crypto';
import { mkdtempSync, readFileSync, rmSync, statSync, writeFileSync } from 'node:fs';
import { createRequire } from 'node:module';
import { tmpdir } from 'node:os';
import { join } from 'node:path';
import { after, before, test } from 'node:test';
import { pathToFileURL } from 'node:url';
import { chromium } from 'playwright-core';

const [vrx, examples] = process.argv.slice(2);
const axe = readFileSync(createRequire(import.meta.url).resolve('axe-core/axe.min.js'), 'utf8');
const folder = mkdtempSync(join(tmpdir(), 'vrx-report-'));
const file = (name) => join(folder, name);
const chart = ['chart_ohta.csv', 'chart_average.csv'].map((name) => join(examples, name));
const box = ['--tolerance', '1.5,1.5,1.5,1.5,1.5,1.5,1.5'];
let browser;

const judge = (name, standard, trials, ...options) => {
  execFileSync(vrx, ['judge', standard, trials, '--report', file(name), ...options], { maxBuffer: 1 << 27 });
  return name;
};
// One patch of the chart as the standard, and many like it, the same ones in every run.
const writeTrials = (name, count, nameOf) => {
  const lines = readFileSync(chart[1], 'utf8').trim().split('\n');
  const [id, patch, ...curve] = lines[15].split(',');
  writeFileSync(file('standard.csv'), `${lines[0]}\n${lines[15]}\n`);
  let seed = 1;
  const random = () => (seed = (seed * 48271) % 2147483647) / 2147483647 - 0.5;
  const rows = Array.from({ length: count }, (_, i) => {
    const [level, tilt] = [random(), random()];
    const values = curve.map((value, k) => (value * (1 + 0.12 * level + 0.12 * tilt * (k / 18 - 1))).toFixed(2));
    return [`T${i + 1}`, `"${nameOf(i).replaceAll('"', '""')}"`, ...values].join(',');
  });
  writeFileSync(file(name), `${lines[0]}\n${rows.join('\n')}\n`);
};
// Opens a report and fails for whatever the page complains of or asks the network for.
const withPage = async (name, use, options = {}) => {
  const context = await browser.newContext({ viewport: { width: 1280, height: 900 }, ...options });
  const page = await context.newPage();
  page.setDefaultTimeout(10000);
  const address = pathToFileURL(file(name)).href;
  const complaints = [];
  page.on('console', (message) => complaints.push(message.text()));
  page.on('pageerror', (error) => complaints.push(String(error)));
  page.on('dialog', (dialog) => { complaints.push('a dialog'); dialog.dismiss(); });
  page.on('request', (request) => { if (request.url().split('#')[0] !== address && !request.url().startsWith('data:')) complaints.push(request.url()); });
  await page.goto(address);
  await use(page);
  assert.deepEqual(complaints, []);
  await context.close();
};
const rowsOf = (page) => page.$$eval('[data-table="0"] tbody tr', (rows) => rows.map((row) => [...row.cells].map((cell) => cell.textContent)));
const results = (page) => page.locator('[data-table="0"]');
const headingsOf = (page) => page.$$eval('[data-table="0"] thead th', (cells) => cells.map((cell) => cell.textContent));

before(async () => {
  const executablePath = process.env.VRX_CHROMIUM ?? '/usr/bin/chromium';
  browser = await chromium.launch({ executablePath, args: ['--no-sandbox'] });
  judge('pairs.html', ...chart, '--pairs', ...box);
  writeTrials('trials.csv', 30, (i) => `lot ${i + 1}`);
  const few = chart.map((path, i) => {
    writeFileSync(file(`few${i}.csv`), readFileSync(path, 'utf8').split('\n').slice(0, 4).join('\n'));
    return file(`few${i}.csv`);
  });
  judge('few.html', ...few, '--pairs');
  execFileSync(vrx, ['swatch', ...few, '--pairs', '--output', file('logo.png')]);
  judge('trials.html', file('standard.csv'), file('trials.csv'), '--ellipse', '--tolerance', '1.2', '--report-logo', file('logo.png'));
});
after(async () => {
  await browser.close();
  rmSync(folder, { recursive: true });
});

test('the first screen says what the csv says, and which files were judged', () => withPage('pairs.html', async (page) => {
  const csv = execFileSync(vrx, ['judge', ...chart, '--pairs', ...box, '--format', 'csv', '--verdict-numbers'], { encoding: 'utf8' }).trim().split('\n');
  const fromEnd = csv[0].split(',').indexOf('verdict') - csv[0].split(',').length;
  const results = csv.slice(1).map((line) => line.split(/,(?! )/));
  const cards = await page.$$eval('.card', (all) => all.map((card) => [...card.querySelectorAll('li b')].map((b) => Number(b.textContent))));
  const expected = ['D65', 'A', 'CWF'].map((code) => [2, 1, 0].map((verdict) => results.filter((row) => row.includes(code) && row.at(fromEnd) === String(verdict)).length));
  assert.deepEqual(cards, expected);
  const facts = await page.textContent('.facts');
  for (const path of chart) assert.ok(facts.includes(createHash('sha256').update(readFileSync(path)).digest('hex')));
  assert.match(facts, /CMC \(L:C\) = 2\.00 : 1\.00/);
  assert.equal((await rowsOf(page)).length, 72);
}));

test('what stands in the file of each command is what the script shows', async () => {
  const commands = {
    color: [chart[0]], index: [file('few0.csv'), '--illuminants', 'C'], strength: [file('standard.csv'), file('trials.csv')],
    match: [join(examples, 'acrylic_paints.json'), file('few0.csv'), '--specular', 'excluded', '--max-colorants', '3'],
    'fit-tolerance': [file('trials.csv'), '--standard', file('standard.csv')], judge: [file('standard.csv'), file('trials.csv')],
  };
  for (const [command, options] of Object.entries(commands)) {
    const csv = execFileSync(vrx, [command, ...options, '--format', 'csv', '--report', file(`${command}.html`)], { encoding: 'utf8' });
    let written;
    await withPage(`${command}.html`, async (page) => { written = await rowsOf(page); }, { javaScriptEnabled: false });
    assert.equal(written.length, csv.trim().split('\n').length - 1, command);
    await withPage(`${command}.html`, async (page) => assert.deepEqual(await rowsOf(page), written));
  }
});

test('a report of recipes names the paints and shows each target beside its first recipe', () => withPage('match.html', async (page) => {
  const rows = await rowsOf(page), formula = (await headingsOf(page)).indexOf('formula');
  assert.match(rows[0][formula], /^[\d.]+ [A-Z][a-z]+ [A-Z]/);
  const targets = readFileSync(file('few0.csv'), 'utf8').trim().split('\n').slice(1).map((line) => line.split(',')[0]);
  assert.deepEqual(await page.$$eval('#pictures h3', (all) => all.map((heading) => heading.textContent)), targets);
  const pairs = await page.$$eval('#pictures .swatches', (all) => all.map((pair) => pair.getAttribute('aria-label').match(/[0-9a-f]{6}/g).map((hex) => [0, 2, 4].map((at) => parseInt(hex.slice(at, at + 2), 16)))));
  assert.equal(pairs.length, targets.length);
  for (const [target, recipe] of pairs) target.forEach((channel, i) => assert.ok(Math.abs(channel - recipe[i]) <= 6, `${target} | ${recipe}`));
  assert.equal(await page.locator('#pictures .chart svg[aria-label^="Reflectance, and difference from the target. Reflectance curves of the target and of 10 recipes"]').count(), targets.length);
}));

test('the table sorts and filters, by keys too', () => withPage('pairs.html', async (page) => {
  const total = (await headingsOf(page)).indexOf('ΔE*cmc');
  const heading = page.locator('thead th', { hasText: 'ΔE*cmc' }).locator('button');
  await heading.focus();
  await page.keyboard.press('Enter');
  let rows = await rowsOf(page);
  assert.deepEqual([rows[0][0], rows[0][2], rows[0][total]], ['P19', 'CWF/10°', '3.02']);
  assert.deepEqual(rows.map((row) => Number(row[total])), rows.map((row) => Number(row[total])).sort((a, b) => b - a));
  await page.keyboard.press('Space');
  rows = await rowsOf(page);
  assert.equal(rows.at(-1)[0], 'P19');
  assert.equal(await heading.locator('..').getAttribute('aria-sort'), 'ascending');
  await results(page).getByLabel('Illuminant').selectOption({ label: 'A/10°' });
  await page.locator('label', { hasText: /^Verdict/ }).locator('select').selectOption({ label: 'fail' });
  rows = await rowsOf(page);
  assert.ok(rows.length === 6 && rows.every((row) => row[2] === 'A/10°' && row[3] === 'fail'));
  await results(page).getByLabel('Search').fill('blue a/10');
  assert.deepEqual((await rowsOf(page)).map((row) => row[1]), ['purplish blue', 'bluish green', 'blue']);
  await results(page).getByLabel('Search').fill('no such thing');
  assert.equal(await page.textContent('.status'), 'No row matches');
}));

test('limits are drawn where they are, and a trial where its difference is', () => withPage('pairs.html', async (page) => {
  const plane = page.locator('#view0 .chart[data-illuminant="0"]');
  const { ticks, limit, mark } = await plane.evaluate((figure) => {
    const number = (node, name) => Number(node.getAttribute(name));
    const texts = [...figure.querySelectorAll('text')].map((t) => ({ x: number(t, 'x'), y: number(t, 'y'), anchor: t.getAttribute('text-anchor'), value: Number(t.textContent) })).filter((t) => !isNaN(t.value));
    return {
      ticks: { x: texts.filter((t) => t.anchor === 'middle'), y: texts.filter((t) => t.anchor === 'end') },
      limit: figure.querySelector('polygon').getAttribute('points').split(' ').map((pair) => pair.split(',').map(Number)),
      mark: figure.querySelector('path:is(.s-pass, .f-warning, .s-fail)').getAttribute('d').match(/^M([\d.]+) ([\d.]+)/).slice(1).map(Number),
    };
  });
  const value = (at, all, key) => all[0].value + (at - all[0][key]) * (all.at(-1).value - all[0].value) / (all.at(-1)[key] - all[0][key]);
  const toDifference = ([x, y]) => [value(x, ticks.x, 'x'), value(y + 4, ticks.y, 'y')];  // labels hang 4 below their line
  const near = (point, expected) => point.forEach((v, i) => assert.ok(Math.abs(v - expected[i]) < 0.02, `${point} is not ${expected}`));
  near(toDifference(limit[0]), [-1.5, -1.5]);
  near(toDifference(limit[2]), [1.5, 1.5]);
  const row = (await rowsOf(page))[0], headings = await headingsOf(page);
  near(toDifference(mark), ['Δa*', 'Δb*'].map((name) => Number(row[headings.indexOf(name)])));
}));

test('a trial is chosen in the table by keys and found in the pictures by the mouse', () => withPage('trials.html', async (page) => {
  assert.ok(await page.$eval('header img', (logo) => logo.complete && logo.naturalWidth > 0));
  const button = page.locator('button.name', { hasText: /^T7$/ }).first();
  await button.focus();
  await page.keyboard.press('Enter');
  assert.equal(await page.evaluate(() => document.activeElement.tagName), 'H2');
  assert.match(await page.textContent('.shown'), /T7/);
  // The caption has the colour of the trial, which stands in the second table.
  const row = await page.$$eval('[data-table="1"] tbody tr', (rows) => [...rows.find((row) => row.cells[0].textContent === 'T7').cells].map((cell) => cell.textContent));
  const [L, a, b, C, h] = row.slice(-5);
  assert.equal(await page.textContent('.pair .lab'), `Trial L* ${L}, a* ${a}, b* ${b}, C* ${C}, h ${h}`);
  assert.equal(await page.locator('tr.picked').count(), 1);
  const plane = page.locator('.chart[data-scales^="plane"]').first();
  const circle = plane.locator('g.picked circle').first();
  await circle.scrollIntoViewIfNeeded();
  const box = await circle.boundingBox();
  await page.mouse.move(box.x + box.width / 2, box.y + box.height / 2);
  assert.match(await page.textContent('#hint'), /^T7 ΔE\*cmc \d/);
  for (const kind of ['curves', 'trend', 'profile']) assert.ok(await page.locator(`.chart[data-scales^="${kind}"] g.picked > *`).count() > 0, kind);
  await page.mouse.click(box.x + box.width / 2, box.y + box.height / 2);
  assert.equal(await page.textContent('tr.picked td'), 'T7');
}));

for (const [name, colorScheme] of [['few.html', 'light'], ['trials.html', 'dark'], ['color.html', 'dark'], ['match.html', 'light']]) {
  test(`axe finds nothing in ${name}, ${colorScheme}`, () => withPage(name, async (page) => {
    await page.evaluate(axe);
    const { violations } = await page.evaluate(() => window.axe.run());
    assert.deepEqual(violations.map(({ id, nodes }) => `${id}: ${nodes[0].html} ${nodes[0].failureSummary}`), []);
  }, { colorScheme, bypassCSP: true }));
}

test('names come out as text', async () => {
  const names = ['<script>alert(1)</script>', '</script><img src=x onerror=alert(2)>', '"quoted" \'n\' &amp; <b>', 'שלום עולם', 'a\u202Efdp.exe', 'bell\x07 \x1b[31m'];
  writeTrials('hostile.csv', names.length, (i) => names[i]);
  judge('hostile.html', file('standard.csv'), file('hostile.csv'), '--report-title', names[1], '--illuminants', 'D65');
  await withPage('hostile.html', async (page) => {
    const shown = (await rowsOf(page)).map((row) => row[1]);
    assert.deepEqual(shown, names.map((name) => name.replace(/[\x07\x1b\u202E]/g, ' ')));
    assert.equal(await page.textContent('h1'), names[1]);
    assert.equal(await page.locator('td img, td script, td b').count(), 0);
  });
});

test('ten thousand trials', async () => {
  writeTrials('many.csv', 10000, () => 'lot');
  judge('many.html', file('standard.csv'), file('many.csv'));
  assert.ok(statSync(file('many.html')).size < 20e6);
  await withPage('many.html', async (page) => {
    assert.match(await page.textContent('.status'), /Rows 1 to 100 of 30000/);
    await page.getByRole('button', { name: 'Next' }).click();
    assert.match(await page.textContent('.status'), /Rows 101 to 200 of 30000/);
    await results(page).getByLabel('Search').fill('T9876');
    assert.equal((await rowsOf(page)).length, 3);
    await page.locator('button.name').first().click();
    assert.match(await page.textContent('.shown'), /T9876/);
    assert.ok(await page.locator('*').count() < 10000);
  });
});

// The trial of each row of the tables in a PDF, read by pdftotext where it is installed.
const rowsInPdf = (pdf) => execFileSync('pdftotext', ['-layout', pdf, '-'], { encoding: 'utf8', maxBuffer: 1 << 28 })
  .split('\n').filter((line) => /^ *T\d+ .*\/10° .*\b(pass|warning|fail)\b/.test(line)).map((line) => line.trim().split(/ +/)[0]);

test('paper has every row, under its headings, on numbered pages', async () => {
  for (const [count, illuminants] of [[50, 'D65,A,CWF'], [1000, 'D65']]) {
    writeTrials('paper.csv', count, () => 'lot');
    judge('paper.html', file('standard.csv'), file('paper.csv'), '--illuminants', illuminants, '--report-title', 'Lot "7" \\ <b>');
    await withPage('paper.html', async (page) => {
      await results(page).getByLabel('Rows per page').selectOption('25');
      writeFileSync(file('paper.pdf'), await page.pdf({ preferCSSPageSize: true }));
      assert.equal((await rowsOf(page)).length, 25);  // the screen is as it was
    });
    const trials = rowsInPdf(file('paper.pdf'));
    assert.equal(trials.length, count * illuminants.split(',').length);
    assert.equal(new Set(trials).size, count);
    const pages = execFileSync('pdftotext', ['-layout', file('paper.pdf'), '-'], { encoding: 'utf8', maxBuffer: 1 << 28 }).split('\f').slice(0, -1);
    pages.forEach((text, i) => {
      assert.match(text, new RegExp(`${i + 1} ?/ ?${pages.length}\\s*$`));
      assert.equal(text.includes('Lot "7" \\ <b>, continued'), i > 0);
      if (/^ *T\d+ .*\/10° .*\b(pass|warning|fail)\b/m.test(text)) assert.match(text, /Trial +Name/);
    });
  }
});

test('a page that is turned keeps the focus on its button', () => withPage('many.html', async (page) => {
  const focused = () => page.evaluate(() => document.activeElement.textContent);
  await results(page).getByLabel('Rows per page').selectOption('300');
  await page.getByRole('button', { name: 'Next' }).focus();
  await page.keyboard.press('Enter');
  assert.equal(await focused(), 'Next');
  await page.keyboard.press('Enter');
  assert.match(await page.textContent('.status'), /Rows 601 to 900 of 30000/);
  for (let i = 0; i < 2; ++i) {
    await page.getByRole('button', { name: 'Previous' }).focus();
    await page.keyboard.press('Enter');
  }
  assert.equal(await focused(), 'Next');  // there is no page before the first
}));

test('nothing is off the screen of a phone', async () => {
  for (const name of ['trials.html', 'pairs.html', 'match.html']) {
    await withPage(name, async (page) => {
      const beyond = await page.evaluate(() => [...document.querySelectorAll('main *, header *')]
        .filter((element) => !element.closest('.scroll, .across, svg') && element.getBoundingClientRect().right > innerWidth + 1)
        .map((element) => element.outerHTML.slice(0, 80)));
      assert.deepEqual(beyond, [], name);
      assert.ok(await page.evaluate(() => document.documentElement.scrollWidth <= innerWidth), name);
    }, { viewport: { width: 390, height: 844 } });
  }
});

test('the marks of all pictures are of one size', () => withPage('many.html', async (page) => {
  const dots = await page.$$eval('.chart path[stroke-linecap="round"]', (all) => [...new Set(all.map((path) => path.getAttribute('stroke-width')))]);
  assert.deepEqual(dots, ['6']);
}));

test('a report prints whole, and the tool prints it', async () => {
  await withPage('pairs.html', async (page) => {
    await page.emulateMedia({ media: 'print' });
    assert.ok(await page.$eval('.scroll', (box) => box.scrollHeight <= box.clientHeight));
    assert.ok((await page.pdf({ preferCSSPageSize: true })).length > 50000);
  });
  judge('pairs.pdf', ...chart, '--pairs');
  const pdf = readFileSync(file('pairs.pdf'), 'latin1');
  assert.ok(pdf.startsWith('%PDF') && /\/MediaBox \[0 0 59[45][\d.]* 84[12]/.test(pdf));  // A4
  const failed = spawnSync(vrx, ['judge', ...chart, '--pairs', '--report', file('other.pdf')], { env: { ...process.env, VRX_CHROMIUM: 'no-such-browser' }, encoding: 'utf8' });
  assert.equal(failed.status, 2);
  assert.match(failed.stderr, /other\.pdf: writing a PDF needs Chromium, which is not installed/);
});
