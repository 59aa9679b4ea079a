// The page in a headless Chromium, from the disk: dropped, pasted and changed, handed on, and looked at by axe. What it saves is compared
// with the tool's, byte for byte.
//
//   node page_test.mjs PAGE VRX EXAMPLES [PICTURES]     (VRX_CHROMIUM names the browser)
import assert from 'node:assert/strict';
import { execFileSync } from 'node:child_process';
import { mkdtempSync, readFileSync, rmSync, writeFileSync } from 'node:fs';
import { createRequire } from 'node:module';
import { tmpdir } from 'node:os';
import { join } from 'node:path';
import { after, before, test } from 'node:test';
import { pathToFileURL } from 'node:url';
import { chromium } from 'playwright-core';

const [html, vrx, examples, pictures] = process.argv.slice(2);
const axe = readFileSync(createRequire(import.meta.url).resolve('axe-core/axe.min.js'), 'utf8');
const EPOCH = '1764115200';
const folder = mkdtempSync(join(tmpdir(), 'vrx-page-'));
const example = (name) => readFileSync(join(examples, name), 'utf8');
const chart = ['chart_ohta.csv', 'chart_average.csv'].map((name) => ({ name, text: example(name) }));
let browser;

const tool = (cwd, ...options) => execFileSync(vrx, options, { cwd, maxBuffer: 1 << 28, env: { ...process.env, SOURCE_DATE_EPOCH: EPOCH } });
// One patch of the chart as the standard, and many like it, the same ones in every run.
const trialsOf = (count, nameOf = (i) => `T${i + 1}`) => {
  const [header, ...rows] = chart[1].text.trim().split('\n');
  const [id, patch, ...curve] = rows[14].split(',');
  let seed = 1;
  const random = () => (seed = (seed * 48271) % 2147483647) / 2147483647 - 0.5;
  const lines = Array.from({ length: count }, (_, i) => {
    const [level, tilt] = [random(), random()];
    return [`"${nameOf(i).replaceAll('"', '""')}"`, patch, ...curve.map((value, k) => (value * (1 + 0.1 * level + 0.1 * tilt * (k / 18 - 1))).toFixed(2))].join(',');
  });
  return { standard: `${header}\n${rows[14]}\n`, trials: `${header}\n${lines.join('\n')}\n` };
};

// Opens the page and fails for whatever it complains of or asks the network for.
const withPage = async (use, { hash = '', ...options } = {}) => {
  const context = await browser.newContext({ viewport: { width: 1280, height: 900 }, acceptDownloads: true, ...options });
  const page = await context.newPage();
  page.setDefaultTimeout(60000);
  const address = `${pathToFileURL(html).href}?epoch=${EPOCH}`;
  const complaints = [];
  page.on('console', (message) => complaints.push(message.text()));
  page.on('pageerror', (error) => complaints.push(String(error)));
  page.on('dialog', (dialog) => { complaints.push('a dialog'); dialog.dismiss(); });
  page.on('request', (request) => { if (!/^(file|blob|data|about):/.test(request.url())) complaints.push(request.url()); });
  await page.goto(address + hash);
  await page.locator('select[name=system]').waitFor();
  await use(page);
  assert.deepEqual(complaints, []);
  await context.close();
};
const drop = (page, files, target = 'body') => page.evaluate(({ list, where }) => {
  const data = new DataTransfer();
  for (const { name, text } of list) data.items.add(new File([text], name));
  document.querySelector(where).dispatchEvent(new DragEvent('drop', { dataTransfer: data, bubbles: true, cancelable: true }));
}, { list: files, where: target });
const dropBoth = async (page, standard, trials) => {
  await drop(page, [standard], '#slot-standard');
  await page.locator('#slot-standard .name').waitFor();
  await drop(page, [trials], '#slot-trials');
};
const sentence = (page) => page.locator('#sentence');
const says = (page, pattern) => page.waitForFunction((source) => new RegExp(source).test(document.querySelector('#sentence').textContent), pattern.source);
const saved = async (page, name) => {
  const [download] = await Promise.all([page.waitForEvent('download'), page.getByRole('button', { name }).click()]);
  return { name: download.suggestedFilename(), bytes: readFileSync(await download.path()) };
};
const reportFrame = async (page) => {
  const frame = await (await page.waitForSelector('#report:not([hidden])')).contentFrame();
  await frame.waitForSelector('[data-table="0"] tbody tr');
  return frame;
};
const set = async (page, name, value) => {
  const control = page.locator(`[name=${name}]`);
  await ((await control.evaluate((element) => element.tagName)) === 'SELECT' ? control.selectOption(value) : control.fill(value));
};
const faultsOf = (page) => page.evaluate(async (source) => {
  if (!window.axe) (0, eval)(source);
  return (await window.axe.run(document, { iframes: false })).violations.map(({ id, nodes }) => `${id}: ${nodes.map((node) => node.html).join(' ')}`);
}, axe);

before(async () => {
  browser = await chromium.launch({ executablePath: process.env.VRX_CHROMIUM ?? '/usr/bin/chromium', args: ['--no-sandbox'] });
  for (const { name, text } of chart) writeFileSync(join(folder, name), text);
});
after(async () => {
  await browser.close();
  rmSync(folder, { recursive: true });
});

test('dropped files are judged as by the tool; what is open is asked; all that is saved has its bytes', () => withPage(async (page) => {
  await says(page, /standard is missing/);
  await dropBoth(page, ...chart);
  await says(page, /each trial has the id of a standard/);
  await page.getByRole('button', { name: 'same id' }).click();
  await says(page, /of 24 trials fail/);
  const judge = ['judge', chart[0].name, chart[1].name, '--pairs'];
  const rows = [
    [[['limits', 'db=-0.1:9']], ['--limits', 'db=-0.1:9'], 'P01'],
    [[['limits', '']], [], 'P19'], [[['system', 'cie2000'], ['tolerance', '1']], ['--system', 'cie2000', '--tolerance', '1'], 'dE00'],
    [[['parameters', '2:1:1'], ['observer', '2'], ['warning', '0.5'], ['limits', 'dL=0.8']], ['--parameters', '2:1:1', '--observer', '2', '--warning', '0.5', '--limits', 'dL=0.8', '--system', 'cie2000', '--tolerance', '1'], 'dE00'],
  ];
  for (const [changes, options, worst] of rows) {
    for (const [name, value] of changes) await set(page, name, value);
    const expected = tool(folder, ...judge, ...options, '--format', 'csv', '--report', join(folder, 'expected.html'));
    // From the first change on nothing can be saved until its answer is there.
    assert.ok((await saved(page, 'Save csv')).bytes.equals(expected), `csv after ${JSON.stringify(changes)}`);
    assert.match(await sentence(page).textContent(), new RegExp(worst));
    const report = await saved(page, 'Save report');
    assert.deepEqual([report.name, report.bytes.equals(readFileSync(join(folder, 'expected.html')))], ['chart_average.html', true]);
  }
  for (const [button, form, ending] of [['CxF3', 'cxf', 'cxf'], ['CGATS', 'cgats', 'txt']]) {
    const { name, bytes } = await saved(page, button);
    assert.equal(name, `chart_average.${ending}`);
    const untimed = (file) => file.toString('utf8').replace(/\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d/g, '');  // the moment of writing
    assert.equal(untimed(bytes), untimed(tool(folder, 'convert', chart[1].name, '-', '--to', form)), form);
  }
  // The first sample for all, and the nearest standard for each, which for these two charts is the same patch.
  await set(page, 'pairing', 'first');
  await says(page, /24 trials fail|2\d of 24/);
  await set(page, 'pairing', 'nearest');
  await says(page, /\d of 24 trials fail/);
}));

test('the other examples, whose columns or ids are asked about, are judged as by the tool', async () => {
  const rows = [
    ['cie_test_samples.csv', 'cie_test_samples.csv', ['The first sample'], ['--standard-id', 'T01']],
    ['cie_test_samples.csv', 'oil_drawdowns.csv', ['Skip unknown columns'], ['--lenient']],
    ['chart_ohta.csv', 'oil_drawdowns.csv', ['Skip unknown columns'], undefined],
  ];
  const view = ['--illuminants', 'D65,A,CWF', '--system', 'cmc'];
  for (const [standard, trials, answers, options] of rows) {
    await withPage(async (page) => {
      await dropBoth(page, ...[standard, trials].map((name) => ({ name, text: example(name) })));
      for (const answer of answers) await page.locator('#question').getByRole('button', { name: answer }).click();
      await says(page, /of \d+ trials fail/);
      if (!options) await set(page, 'pairing', 'nearest');
      const { bytes } = await saved(page, 'Save csv');
      const fields = (csv) => csv.toString().trim().split('\n').slice(1).map((line) => line.split(','));
      if (options) {
        assert.ok(bytes.equals(tool(examples, 'judge', standard, trials, ...options, ...view, '--tolerance', '1.5', '--format', 'csv')), trials);
      } else {
        // Three rows each, one for each illuminant.
        const nearest = fields(tool(examples, 'search', trials, standard, '--lenient', ...view, '--count', '1', '--format', 'csv'));
        assert.deepEqual(fields(bytes).map(([name, trial]) => [trial, name]), nearest.flatMap(([trial, , name]) => Array(3).fill([trial, name])));
      }
    });
  }
});

// Trials with their nearest standards are written anew, in percent: with "fraction" they were refused, and the answer that the refusal
// offered, "percent", made near black of all, which passes.
test('the nearest standards are judged with what was said of the files', () => withPage(async (page) => {
  const wavelengths = Array.from({ length: 31 }, (_, i) => 400 + 10 * i);
  const table = (heading, rows) => [[heading, ...wavelengths].join(','), ...rows.map(([names, part]) => [names, ...wavelengths.map(() => part)].join(','))].join('\n') + '\n';
  const standards = [['light', 0.6], ['dark', 0.05]], trials = [['1', 'dark', 0.052], ['2', 'light', 0.5]];
  await dropBoth(page, { name: 's.csv', text: table('Lot', standards) }, { name: 't.csv', text: table('Lot', trials.map(([id, , part]) => [id, part])) });
  await set(page, 'scale', 'fraction');
  await set(page, 'idColumn', 'Lot');
  await set(page, 'pairing', 'nearest');
  await says(page, /1 of 2 trials fail/);
  writeFileSync(join(folder, 's.csv'), table('Lot', standards));
  writeFileSync(join(folder, 't.csv'), table('Lot,standard', trials.map(([id, standard, part]) => [`${id},${standard}`, part])));
  const expected = tool(folder, 'judge', 's.csv', 't.csv', '--fraction', '--id-column', 'Lot', '--illuminants', 'D65,A,CWF', '--tolerance', '1.5', '--format', 'csv');
  assert.ok((await saved(page, 'Save csv')).bytes.equals(expected));
}));

// One option speaks for both files: of fractions beside percent, "percent" would make near black.
test('files of two scales are told, and no answer is offered that is wrong for one of them', () => withPage(async (page) => {
  const wavelengths = Array.from({ length: 31 }, (_, i) => 400 + 10 * i);
  const table = (value) => `id,${wavelengths.join(',')}\na,${wavelengths.map(() => value).join(',')}\n`;
  await dropBoth(page, { name: 's.csv', text: table(45) }, { name: 't.csv', text: table(0.45) });
  await set(page, 'scale', 'fraction');
  await says(page, /the files seem to have different scales/);
  assert.equal(await page.locator('#question').getByRole('button', { name: 'The values are percent' }).count(), 0);
}));

test('each geometry is a trial, and lots are counted beside', () => withPage(async (page) => {
  const wavelengths = Array.from({ length: 31 }, (_, i) => 400 + 10 * i);
  const table = (rows) => [`id,geometry,${wavelengths.join(',')}`, ...rows.map(([names, value]) => [names, ...wavelengths.map(() => value)].join(','))].join('\n') + '\n';
  const standards = table([['P,15deg', 50], ['P,45deg', 50]]), trials = table([['A,15deg', 70], ['A,45deg', 50], ['B,15deg', 50], ['B,45deg', 50]]);
  await dropBoth(page, { name: 's.csv', text: standards }, { name: 't.csv', text: trials });
  await set(page, 'pairing', 'first');
  await says(page, /1 of 4 trials fail .* of the lots, 1 of 2 fail/);
}));

test('the live report sorts, filters and opens a trial', () => withPage(async (page) => {
  await page.getByRole('button', { name: 'Show an example', exact: true }).click();
  const frame = await reportFrame(page);
  assert.ok((await frame.locator('[data-table="0"] tbody tr').count()) > 20);
  await frame.getByRole('searchbox').or(frame.locator('.controls input')).first().fill('P19');
  await frame.waitForFunction(() => document.querySelectorAll('[data-table="0"] tbody tr').length <= 3);
  assert.ok((await frame.locator('svg').count()) > 3);
  await frame.evaluate(() => { window.print = () => { window.wasPrinted = true; }; });
  await page.getByRole('button', { name: 'Print' }).click();
  assert.equal(await frame.evaluate(() => window.wasPrinted), true);
}));

test('a table from a spreadsheet is pasted; one file can hold standard and trials', () => withPage(async (page) => {
  const table = chart[0].text.split('\n').slice(0, 6).join('\n').replaceAll(',', '\t');
  await page.locator('summary', { hasText: 'Paste a table' }).click();
  await page.locator('#pasted').fill(table);
  await page.getByRole('button', { name: 'Take the table' }).click();
  await page.getByRole('button', { name: 'Both' }).click();
  await says(page, /of 5 trials fail/);
  await page.evaluate((text) => {
    const clipboardData = new DataTransfer();
    clipboardData.setData('text/plain', text);
    document.body.dispatchEvent(new ClipboardEvent('paste', { clipboardData, bubbles: true }));
  }, table);
  await page.getByText('What is pasted').waitFor();
}));

test('a link holds settings and measurements; a damaged one is told', async () => {
  let hash = '', told = '';
  await withPage(async (page) => {
    await page.getByRole('button', { name: 'Show an example', exact: true }).click();
    await says(page, /of 24/);
    await set(page, 'tolerance', '0.4');
    await says(page, /23 of 24/);
    told = await sentence(page).textContent();
    await page.getByRole('button', { name: 'Copy link' }).click();
    await page.waitForFunction(() => location.hash !== '');
    hash = new URL(page.url()).hash;
  });
  await withPage(async (page) => {
    await says(page, /of 24/);
    assert.equal(await sentence(page).textContent(), told);
    assert.equal(await page.locator('[name=tolerance]').inputValue(), '0.4');
  }, { hash });
  for (const bad of [hash.slice(0, 200), '#1AAAA', '#2', '#%00<img src=x onerror=alert(1)>']) {
    await withPage(async (page) => { await page.locator('#messages', { hasText: 'damaged' }).waitFor(); }, { hash: bad });
  }
});

test('10,000 trials: the page answers meanwhile, and can be stopped', () => withPage(async (page) => {
  const { standard, trials } = trialsOf(10_000);
  await dropBoth(page, { name: 'standard.csv', text: standard }, { name: 'lot.csv', text: trials });
  await says(page, /10000 trials/);
  writeFileSync(join(folder, 'standard.csv'), standard);
  writeFileSync(join(folder, 'lot.csv'), trials);
  const { bytes } = await saved(page, 'Save csv');
  assert.ok(bytes.equals(tool(folder, 'judge', 'standard.csv', 'lot.csv', '--format', 'csv')));
  // The page shows its bar by a timer of its own while the engine works, and takes the press then: at once, before the work can end.
  await page.evaluate(async () => {
    const field = document.querySelector('[name=tolerance]');
    field.value = '0.9';
    field.dispatchEvent(new Event('input'));
    while (document.querySelector('#work').hidden) await new Promise((resolve) => setTimeout(resolve, 0));
    document.querySelector('#stop').click();
  });
  await says(page, /Stopped/);
  // The report of the limit before is still to be seen, and nobody can hand it on.
  assert.deepEqual([await page.locator('#report').isVisible(), await page.getByRole('button', { name: 'Save report' }).isDisabled()], [true, true]);
  await page.getByRole('button', { name: 'Judge again' }).click();
  await says(page, /10000 trials/);
}));

test('more trials than a report takes have a verdict and their csv', () => withPage(async (page) => {
  const { standard, trials } = trialsOf(34_000, (i) => (i % 1000 === 0 ? `a "quoted",\nname ${i}` : `T${i + 1}`));
  await dropBoth(page, { name: 'standard.csv', text: standard }, { name: 'many.csv', text: trials });
  await page.locator('#messages', { hasText: 'more than 100000 judgements' }).waitFor();
  writeFileSync(join(folder, 'standard.csv'), standard);
  writeFileSync(join(folder, 'many.csv'), trials);
  const { bytes } = await saved(page, 'Save csv'); // of more than one piece as the page reads it
  assert.ok(bytes.length > 1 << 24 && bytes.equals(tool(folder, 'judge', 'standard.csv', 'many.csv', '--format', 'csv')));
  const json = JSON.parse(tool(folder, 'judge', 'standard.csv', 'many.csv', '--format', 'json'));
  const worst = new Map();
  for (const { trial, verdict } of json) worst.set(trial, Math.min(worst.get(trial) ?? 2, verdict));
  const count = (rank) => [...worst.values()].filter((verdict) => verdict === rank).length;
  assert.match(await sentence(page).textContent(), new RegExp(`^${count(0)} of 34000 trials fail and ${count(1)} are near`));
  assert.equal(await page.getByRole('button', { name: 'Save report' }).count(), 0);
}));

test('hostile and broken files get an answer, and names are text', () => withPage(async (page) => {
  const name = '<img src=x onerror=alert(1)>.csv';
  const { standard, trials } = trialsOf(5, () => '<script>alert(1)</script>');
  await dropBoth(page, { name, text: standard }, { name: `${name}"&quot;`, text: trials });
  await says(page, /of 5 trials|All 5/);
  const frame = await reportFrame(page);
  for (const place of [page, frame]) assert.equal(await place.locator('img').count(), 0);
  assert.match(await page.locator('#slot-standard .name').textContent(), /<img src=x/);
  const answers = [
    ['', /empty/], ['\0\0\0\0', /./], ['id,400,500\nx,1', /bad\.csv, line 1/], ['{"components": [', /./], ['<?xml version="1.0"?><a>', /./],
    ['id,400,410\n'.repeat(3), /./], [`id,${'9'.repeat(100_000)}\n`, /./],
  ];
  for (const [text, reason] of answers) {
    await drop(page, [{ name: 'bad.csv', text }], '#slot-trials');
    await page.waitForFunction(() => document.querySelector('#sentence').className === 'fail' && !document.querySelector('#report:not([hidden])'));
    await page.waitForFunction((source) => new RegExp(source, 's').test(document.querySelector('#sentence').textContent), reason.source);
    await page.getByRole('button', { name: /Take away/ }).last().click();
  }
  // Larger than what a browser takes: the size alone is looked at.
  await page.evaluate(() => {
    const data = new DataTransfer();
    data.items.add(new File([''], 'huge.csv'));
    Object.defineProperty(File.prototype, 'size', { configurable: true, get: () => 9e9 });
    document.body.dispatchEvent(new DragEvent('drop', { dataTransfer: data, bubbles: true }));
  });
  await says(page, /huge\.csv has 9000 MB/);
}));

test('recipes are found with a colour system, as by the tool', () => withPage(async (page) => {
  await page.getByRole('button', { name: 'example of recipes' }).click();
  await says(page, /recipes were found/);
  const options = ['--system', 'cie2000', '--specular', 'excluded', '--top', '3', '--max-colorants', '3', '--format', 'csv'];
  assert.ok((await saved(page, 'Save csv')).bytes.equals(tool(examples, 'match', 'acrylic_paints.json', 'chart_average.csv', ...options)));
}));

test('axe finds nothing, in light and dark, on a screen and on a phone; keys reach everything', async () => {
  const shot = async (page, name) => { if (pictures && name !== 'zoomed') await page.screenshot({ path: join(pictures, `${name}.png`) }); };
  const views = [
    ['web', { colorScheme: 'light' }], ['web_dark', { colorScheme: 'dark' }],
    ['web_phone', { viewport: { width: 360, height: 740 }, deviceScaleFactor: 2, colorScheme: 'light' }],
    ['zoomed', { viewport: { width: 640, height: 450 }, deviceScaleFactor: 2 }],
  ];
  for (const [name, options] of views) {
    await withPage(async (page) => {
      assert.deepEqual(await faultsOf(page), [], `${name}, empty`);
      await page.getByRole('button', { name: 'Show an example', exact: true }).focus();
      await page.keyboard.press('Enter');
      await reportFrame(page);
      await page.waitForTimeout(300);
      await shot(page, name);
      assert.deepEqual(await faultsOf(page), [], name);
      const wide = await page.evaluate(() => document.documentElement.scrollWidth - innerWidth);
      assert.ok(wide <= 0, `${name} is ${wide} pixels too wide`);
      if (name === 'web_phone') {
        await page.locator('#result').scrollIntoViewIfNeeded();
        await page.evaluate(() => document.querySelector('#result').scrollIntoView());
        await shot(page, 'web_phone_result');
      }
      const reached = new Set();
      await page.locator('.skip').focus();
      for (let i = 0; i < 60; ++i) {
        await page.keyboard.press('Tab');
        reached.add(await page.evaluate(() => document.activeElement.id || document.activeElement.getAttribute('name') || document.activeElement.textContent.trim()));
      }
      for (const place of ['choose', 'swap', 'system', 'tolerance', 'Save csv', 'Print']) assert.ok(reached.has(place), `${place} by key`);
    }, options);
  }
});
