// Makes the page, one file that needs no other:  node build.mjs ENGINE_FOLDER EXAMPLES REPORT_SCRIPT OUT.html
import { build } from 'esbuild';
import { createHash } from 'node:crypto';
import { mkdirSync, readFileSync, writeFileSync } from 'node:fs';
import { dirname, join } from 'node:path';
import { fileURLToPath } from 'node:url';
import { gzipSync } from 'node:zlib';

const [engine, examples, reportScript, out] = process.argv.slice(2);
const here = dirname(fileURLToPath(import.meta.url));
const page = (name) => join(here, 'page', name);
const bundle = async (name, format) => {
  const { outputFiles } = await build({
    entryPoints: [page(name)], bundle: true, write: false, minify: true, format, target: 'es2022', charset: 'utf8',
    alias: { 'vrx-engine': join(engine, 'vrx_engine.mjs') }, define: { 'import.meta.url': '"file:///"' }, logLevel: 'warning',
  });
  return outputFiles[0].text;
};
const sha = (text) => `'sha256-${createHash('sha256').update(text).digest('base64')}'`;
// Neither "</script" nor "<!--" may stand in a script element.
const data = (value) => JSON.stringify(value).replace(/</g, '\\u003c');

const script = (await bundle('main.ts', 'iife')).replace(/<\/script|<!--/g, (end) => end.replace('<', '\\x3C'));
const names = ['chart_ohta.csv', 'chart_average.csv', 'acrylic_paints.json'];
const parts = {
  // Scripts are this page's and the reports'; styles stand in the page; the engine is compiled from its own bytes.
  policy: [
    "default-src 'none'", `script-src ${sha(script)} ${sha(readFileSync(reportScript, 'utf8'))} 'wasm-unsafe-eval'`,
    "style-src 'unsafe-inline'", 'img-src data:', 'worker-src blob:', "form-action 'none'", "base-uri 'none'",
  ].join('; '),
  style: readFileSync(page('style.css'), 'utf8'),
  engine: gzipSync(readFileSync(join(engine, 'vrx_engine.wasm')), { level: 9 }).toString('base64'),
  worker: data(await bundle('worker.ts', 'iife')),
  examples: data(Object.fromEntries(names.map((name) => [name, readFileSync(join(examples, name), 'utf8')]))),
  script,
};
const html = readFileSync(page('index.html'), 'utf8').replace(/\{\{(\w+)\}\}/g, (_, name) => parts[name]);
mkdirSync(dirname(out), { recursive: true });
writeFileSync(out, html);
console.log(`${out}: ${Math.round(html.length / 1024)} KB`);
