// The page: files and settings in, the report and what can be handed on out.

import { Client, Stopped } from './client';
import { outcomeOf, parseCsv, withStandards } from './csv';
import { button, byId, el, save } from './dom';
import { type Answer, type Command, REPORT_PATH, safeName } from './engine';
import { Form } from './form';
import { fromHash, judgeOptions, type LinkFile, matchOptions, nearestOptions, readOptions, type Settings, toHash, USUAL } from './settings';
import { type Key, t } from './texts';

type Role = 'standard' | 'trials' | 'system';
interface Loaded {
  name: string; // as the user knows it
  path: string; // as the engine does
  bytes: Uint8Array;
  about?: string; // what was read of it
  fault?: string;
  samples: number;
  firstId: string;
}

const LARGEST = 512; // megabytes of one file
const LINK_SAMPLES = 50;
const MANY = 1000;
const LINK_LENGTH = 60_000;

const settings: Settings = { ...USUAL, illuminants: [...USUAL.illuminants] };
const roles: Partial<Record<Role, Loaded>> = {};
const open: Loaded[] = []; // whose role nobody has told
let epoch: number | undefined; // for a report that is to be the same again
let form: Form | undefined;
let last: { csv: Uint8Array; report?: Uint8Array } | undefined;
let round = 0;
let busy = 0;

// The engine is packed into the page.
async function compiled(): Promise<WebAssembly.Module> {
  const packed = Uint8Array.from(atob(byId('engine').textContent!), (character) => character.charCodeAt(0));
  const stream = new Blob([packed]).stream().pipeThrough(new DecompressionStream('gzip'));
  return WebAssembly.compile(await new Response(stream).arrayBuffer());
}
const client = new Client(JSON.parse(byId('worker').textContent!) as string, compiled());
function text(bytes: Uint8Array): string {
  const decoded = new TextDecoder().decode(bytes);
  if (decoded === '' && bytes.length > 0) throw new RangeError('a text is too long'); // which some browsers give as an empty one
  return decoded;
}

// Files ---------------------------------------------------------------------------------------------------------

let places = 0;
function load(name: string, bytes: Uint8Array): Loaded {
  // The engine's name is the user's, so that messages and reports have it; files of the same name lie in folders.
  const plain = safeName(name);
  const taken = [...Object.values(roles), ...open].some((file) => file.path === plain);
  const path = taken ? `${++places}/${plain}` : plain;
  client.put({ path, bytes });
  return { name, path, bytes, samples: 0, firstId: '' };
}

async function take(files: Iterable<File>, role?: Role): Promise<void> {
  let taken = 0;
  for (const file of files) {
    const megabytes = Math.ceil(file.size / 1e6);
    if (megabytes > LARGEST) {
      complain(t('tooLarge', file.name, megabytes, LARGEST));
      continue;
    }
    try {
      await place(load(file.name, new Uint8Array(await file.arrayBuffer())), role);
      ++taken;
    } catch (error) {
      complain(t('unreadable', file.name, String(error)));
    }
    role = undefined;
  }
  if (taken > 0) await update();
}

// A colour system is known by its content; anything else is what the user says.
function isSystem(file: Loaded): boolean {
  const start = text(file.bytes.subarray(0, 4000));
  return /^\s*\{/.test(start) && /"components"\s*:/.test(start);
}

async function place(file: Loaded, role?: Role): Promise<void> {
  if (isSystem(file)) role = 'system';
  if (role) setRole(role, file);
  else open.push(file);
  await look(file);
}

function setRole(role: Role, file: Loaded): void {
  roles[role] = file;
  if (role === 'system') settings.mode = 'match';
}

/** Asks the engine what a file holds. */
async function look(file: Loaded): Promise<void> {
  if (isSystem(file)) {
    file.about = t('system');
    return;
  }
  const about = await run([{ command: 'info', options: { ...readOptions(settings), format: 'json' }, files: [file.path] }]);
  if (!about) return;
  const { status, results, messages } = about[0]!;
  file.fault = status === 0 ? undefined : faultOf(messages);
  if (status !== 0) return;
  const lines = JSON.parse(text(results)) as { what: string; value: string }[];
  const valueOf = (what: string) => lines.find((line) => line.what === what)?.value ?? '';
  file.samples = Number(valueOf('samples'));
  const details = lines.filter(({ what }) => !['file', 'format', 'samples', 'curves', 'colours'].includes(what));
  file.about = [t('read', valueOf('format'), file.samples), ...details.map(({ what, value }) => (what === 'note' ? value : `${what} ${value}`))].join('; ');
}

const faultOf = (messages: string) => messages.replace(/^vrx: /gm, '').trim();

function showFiles(): void {
  for (const role of ['standard', 'trials', 'system'] as const) {
    const slot = byId(`slot-${role}`);
    const file = roles[role];
    slot.hidden = role === 'system' && !file;
    slot.replaceChildren(el('h3', {}, t(role)));
    if (!file) slot.append(el('p', {}, `${t('none')}: ${t('drop')}`));
    else {
      slot.append(el('p', { class: 'name' }, el('bdi', {}, file.name)), el('p', file.fault ? { class: 'bad' } : {}, file.fault ?? file.about ?? ''));
      const away = button('✕', () => {
        delete roles[role];
        if (role === 'system') settings.mode = 'judge';
        update();
      });
      away.setAttribute('aria-label', t('remove', file.name));
      slot.append(away);
    }
  }
  byId<HTMLButtonElement>('swap').disabled = !roles.standard && !roles.trials;
  byId('roles').replaceChildren(...open.map((file) => {
    const give = (...given: Role[]) => () => {
      open.splice(open.indexOf(file), 1);
      for (const role of given) setRole(role, file);
      if (given.length === 2) settings.pairing = 'first';
      update();
    };
    return el('div', { class: 'ask' }, el('span', {}, t('askRole', file.name)), button(t('isStandard'), give('standard'), true), button(t('isTrials'), give('trials')), button(t('isBoth'), give('standard', 'trials')));
  }));
}

function showModes(): void {
  const modes = byId('modes');
  modes.hidden = !roles.system;
  modes.replaceChildren(...(['judge', 'match'] as const).map((mode) => {
    const radio = el('input', { type: 'radio', name: 'mode', value: mode, change: () => {
      settings.mode = mode;
      update();
    } });
    radio.checked = settings.mode === mode;
    return el('label', {}, radio, ` ${t(mode)}`);
  }));
  modes.setAttribute('aria-label', t('settings'));
}

// Computing -----------------------------------------------------------------------------------------------------

async function run(commands: Command[]): Promise<Answer[] | undefined> {
  ++busy;
  const work = byId('work');
  const timer = setTimeout(() => { work.hidden = busy === 0; }, 150);
  const progress = byId<HTMLProgressElement>('progress');
  progress.removeAttribute('value');
  try {
    return await client.run(commands, (part) => { progress.value = part; });
  } catch (error) {
    if (error instanceof Stopped) say(t('stopped'));
    else complain(/memory|allocation|RangeError|abort|unreachable|out of bounds/i.test(String(error)) ? t('noMemory', String(error)) : String(error));
    byId('again').hidden = false;
    return undefined;
  } finally {
    clearTimeout(timer);
    if (--busy === 0) work.hidden = true;
  }
}

function say(sentence: string, verdict = ''): void {
  const place = byId('sentence');
  place.textContent = sentence;
  place.className = verdict;
}

function complain(message: string): void {
  say(message, 'fail');
}

function clear(): void {
  last = undefined;
  byId('report').hidden = true;
  byId('hand-on').hidden = true;
  byId('again').hidden = true;
  byId('question').replaceChildren();
  showMessages('');
}

function showMessages(messages: string): void {
  const place = byId('messages');
  place.textContent = messages;
  place.hidden = messages === '';
}

/** What is missing for a result; empty for nothing. */
function missing(): Key | undefined {
  if (!roles.standard) return settings.mode === 'match' ? 'waitsTarget' : 'waitsStandard';
  if (settings.mode === 'judge' && !roles.trials) return 'waitsTrials';
  return settings.illuminants.length === 0 ? 'waitsIlluminant' : undefined;
}

/** Files as the engine is to read them. */
interface Inputs {
  standard: string;
  trials: string;
  reading: Pick<Settings, 'scale' | 'idColumn'>;
}

/** The trials with a column of the ids of the standards that are nearest to them. */
async function pairNearest(standards: Loaded, trials: Loaded): Promise<Inputs | undefined> {
  const convert = (file: Loaded): Command => ({ command: 'convert', options: { ...readOptions(settings), to: 'csv' }, files: [file.path, '-'] });
  // What is written is in percent, with its ids under "id": the standards have to be read in the same way.
  const isReadAlike = settings.scale !== 'fraction' && settings.idColumn === '';
  const answers = await run([
    { command: 'search', options: { ...nearestOptions(settings), format: 'csv' }, files: [trials.path, standards.path] },
    ...[trials, ...(isReadAlike ? [] : [standards])].map(convert),
  ]);
  if (!answers) return undefined;
  const failed = answers.find(({ status }) => status !== 0);
  if (failed) {
    ask(failed.messages);
    return undefined;
  }
  const [header = [], ...rows] = parseCsv(text(answers[0]!.results));
  const at = header.indexOf('standard');
  const table = text(answers[1]!.results);
  // A trial that no standard can serve has no row.
  if (rows.length !== parseCsv(table).length - 1) {
    ask(answers[0]!.messages);
    return undefined;
  }
  const put = (folder: string, file: Loaded, content: Uint8Array) => {
    const path = `${folder}/${file.path.split('/').pop()!}`;
    client.put({ path, bytes: content });
    return path;
  };
  const path = put('nearest', trials, new TextEncoder().encode(withStandards(table, rows.map((row) => row[at]!))));
  if (isReadAlike) return { standard: standards.path, trials: path, reading: settings };
  return { standard: put('standards', standards, answers[2]!.results), trials: path, reading: { scale: 'percent', idColumn: '' } };
}

async function commandOf(): Promise<Command | undefined> {
  const stamp = epoch === undefined ? {} : { epoch };
  const output = { format: 'csv', report: REPORT_PATH };
  if (settings.mode === 'match') {
    return { command: 'match', options: { ...matchOptions(settings), ...output }, files: [roles.system!.path, roles.standard!.path], ...stamp };
  }
  const { standard, trials } = roles as Record<Role, Loaded>;
  const inputs = settings.pairing === 'nearest' ? await pairNearest(standard, trials) : { standard: standard.path, trials: trials.path, reading: settings };
  if (!inputs) return undefined;
  const { scale, idColumn } = inputs.reading;
  const options = judgeOptions({ ...settings, scale, idColumn }, await firstId(standard));
  return { command: 'judge', options: { ...options, ...output }, files: [inputs.standard, inputs.trials], ...stamp };
}

// The id of the first sample, which the option for one standard names.
async function firstId(file: Loaded): Promise<string> {
  if (settings.pairing !== 'first' || file.firstId) return file.firstId;
  const answers = await run([{ command: 'color', options: { ...readOptions(settings), illuminants: 'D65', format: 'csv' }, files: [file.path] }]);
  const [, row] = answers?.[0]?.status === 0 ? parseCsv(text(answers[0].results)) : [];
  file.firstId = row?.[0] ?? '';
  return file.firstId;
}

// What is shown was found with other settings or files: it cannot be handed on as if it were the answer to these.
function outdate(): void {
  ++round;
  setOld(true);
}

function setOld(isOld: boolean): void {
  byId<HTMLFieldSetElement>('hand-on').disabled = isOld;
  for (const name of ['sentence', 'report']) byId(name).classList.toggle('old', isOld);
}

async function update(): Promise<void> {
  try {
    await showAnswer();
  } catch (error) {
    clear();
    complain(t('noMemory', String(error)));
  }
}

async function showAnswer(): Promise<void> {
  outdate();
  const own = round;
  showFiles();
  showModes();
  form?.show();
  const gap = missing();
  if (gap) {
    clear();
    say(t(gap));
    return;
  }
  const command = await commandOf();
  if (!command || own !== round) return;
  // The verdict first, where the pictures of the report take longer; a newer change makes older results void.
  const { report: _, ...options } = command.options!;
  const isLarge = settings.mode === 'judge' && roles.trials!.samples > MANY;
  let verdict: Answer | undefined;
  for (const step of isLarge ? [{ ...command, options }, command] : [command]) {
    const answers = await run([step]);
    if (!answers || own !== round) return;
    const answer = answers[0]!;
    // A verdict stays where there are too many trials for a report; the message says so.
    if (answer.status !== 0 && verdict) return show({ ...verdict, messages: answer.messages });
    if (step === command || answer.status !== 0) return show(answer);
    sayOutcome(answer.results);
    verdict = answer;
  }
}

function show(answer: Answer): void {
  clear();
  if (answer.status !== 0) {
    ask(answer.messages);
    return;
  }
  last = { csv: answer.results, ...(answer.report && { report: answer.report }) };
  showMessages(faultOf(answer.messages));
  settings.mode === 'match' ? sayRecipes(text(answer.results)) : sayOutcome(answer.results);
  showHandOn();
  setOld(false);
  if (!answer.report) return;
  const frame = byId<HTMLIFrameElement>('report');
  frame.title = t('frame');
  frame.srcdoc = text(answer.report);
  frame.hidden = false;
}

function listed(words: string[]): string {
  return new Intl.ListFormat('en-GB').format(words);
}

function sayOutcome(csv: Uint8Array): void {
  const { trials, fail, warning, lots, illuminants, worst } = outcomeOf(csv);
  const lamps = listed(illuminants);
  if (!worst) return say(trials === 1 ? t('onePasses', lamps) : t('allPass', trials, lamps), 'pass');
  const counts = t('somePass', fail, trials, warning) + (lots ? ` ${t('ofLots', lots.fail, lots.count)}` : '');
  const isKnown = Number.isFinite(worst.excess);
  const why = t(!isKnown ? 'noDifference' : worst.verdict === 'fail' ? 'worst' : 'worstWarning', worst.trial, worst.illuminant, worst.reason, worst.excess.toFixed(2));
  say(`${counts} ${why}`, fail > 0 ? 'fail' : 'warning');
}

function sayRecipes(csv: string): void {
  const [header = [], ...rows] = parseCsv(csv);
  const [targetAt, recipeAt, statusAt] = ['target', 'rank', 'status'].map((name) => header.indexOf(name)) as [number, number, number];
  const targets = new Set(rows.map((row) => row[targetAt]));
  const recipes = new Set(rows.filter((row) => row[recipeAt]).map((row) => `${row[targetAt]}\n${row[recipeAt]}`));
  const met = new Set(rows.filter((row) => row[statusAt] === 'ok').map((row) => row[targetAt]));
  say(t('recipes', recipes.size, met.size, targets.size), met.size === targets.size ? 'pass' : 'warning');
}

// What is open is asked: the message names the options, and each becomes a button.
function ask(messages: string): void {
  clear();
  const message = faultOf(messages).replace(/\nRun with --help.*/, '');
  complain(message);
  const choose = (key: Key, change: () => void) => button(t(key), () => {
    change();
    for (const file of Object.values(roles)) void look(file).then(showFiles);
    void update();
  });
  const offers: Node[] = [];
  const names = (option: string) => new RegExp(`--${option}(?![a-z-])`).test(message);
  if (names('pairs') && names('standard-id')) {
    offers.push(...(['pairs', 'first', 'nearest'] as const).map((way) => choose(way, () => { settings.pairing = way; })));
  }
  // A value that is refused as a fraction may stand beside fractions in the other file: there is no one answer for both.
  if (names('fraction') && !message.includes('different scales')) {
    offers.push(...(['percent', 'fraction'] as const).map((scale) => choose(scale, () => { settings.scale = scale; })));
  }
  if (names('id-column')) {
    const name = el('input', { 'aria-label': t('idColumn') });
    offers.push(name, choose('useColumn', () => { settings.idColumn = name.value.trim(); }));
  }
  if (names('lenient')) offers.push(choose('lenient', () => { settings.lenient = true; }));
  if (names('force')) offers.push(choose('force', () => { settings.force = true; }));
  if (offers.length > 0) byId('question').replaceChildren(el('span', {}, t('askOpen')), ...offers);
}

// Handing on ----------------------------------------------------------------------------------------------------

const stem = (name: string) => name.replace(/\.[^.]*$/, '');

async function saveConverted(to: 'cxf' | 'cgats', ending: string, type: string): Promise<void> {
  const file = roles.trials ?? roles.standard!;
  const answers = await run([{ command: 'convert', options: { ...readOptions(settings), to }, files: [file.path, '-'] }]);
  if (!answers) return;
  const { status, results, messages } = answers[0]!;
  showMessages(faultOf(messages));
  if (status === 0) save(stem(safeName(file.name)) + ending, results, type);
}

function showHandOn(): void {
  const name = () => stem(safeName((roles.trials ?? roles.standard!).name));
  const place = byId('hand-on');
  const report = last!.report;
  place.hidden = false;
  place.replaceChildren(
    ...(report ? [button(t('saveReport'), () => save(`${name()}.html`, report, 'text/html'), true)] : []),
    button(t('saveCsv'), () => save(`${name()} ${settings.mode}.csv`, last!.csv, 'text/csv')),
    button(t('saveCxf'), () => void saveConverted('cxf', '.cxf', 'application/xml')),
    button(t('saveCgats'), () => void saveConverted('cgats', '.txt', 'text/plain')),
    ...(report ? [button(t('print'), () => byId<HTMLIFrameElement>('report').contentWindow!.print())] : []),
    button(t('copyLink'), () => void copyLink()),
  );
}

async function copyLink(): Promise<void> {
  const used = Object.entries(roles).filter(([role]) => settings.mode === 'match' || role !== 'system');
  const files: LinkFile[] = used.map(([role, file]) => ({ role, name: file.name, text: text(file.bytes) }));
  const few = used.every(([, file]) => file.samples <= LINK_SAMPLES);
  let hash = await toHash({ settings, files: few ? files : [] });
  const withFiles = few && hash.length <= LINK_LENGTH;
  if (!withFiles) hash = await toHash({ settings, files: [] });
  history.replaceState(null, '', hash);
  const done = t(withFiles ? 'linkCopied' : 'linkSettings');
  try {
    await navigator.clipboard.writeText(location.href);
    showMessages(done);
  } catch {
    showMessages(`${done} ${t('linkShown')}`);
  }
}

// Takes what the address holds and shows it; a damaged link is told beside what is there.
async function openLink(): Promise<void> {
  const isWhole = await takeLink();
  await update();
  if (!isWhole) showMessages(t('linkBroken'));
}

async function takeLink(): Promise<boolean> {
  if (location.hash === '') return true;
  try {
    const link = await fromHash(location.hash);
    Object.assign(settings, link.settings);
    for (const { role, name, text: content } of link.files) {
      if (role !== 'standard' && role !== 'trials' && role !== 'system') continue;
      const mode = settings.mode;
      await place(load(name, new TextEncoder().encode(content)), role);
      settings.mode = mode;
    }
    if (settings.mode === 'match' && !roles.system) settings.mode = 'judge';
  } catch {
    return false;
  }
  return true;
}

// The report is as high as its content, so that the page scrolls as one.
function fitFrame(): void {
  const frame = byId<HTMLIFrameElement>('report');
  frame.addEventListener('load', () => {
    const inside = frame.contentDocument?.documentElement;
    if (!inside) return;
    const fit = () => { frame.style.height = `${inside.scrollHeight + 8}px`; };
    new ResizeObserver(fit).observe(inside.querySelector('body') ?? inside);
    fit();
  });
}

// Beginning -----------------------------------------------------------------------------------------------------

async function showExample(names: string[], given: Role[], change: () => void): Promise<void> {
  const examples = JSON.parse(byId('examples').textContent!) as Record<string, string>;
  open.length = 0;
  for (const role of Object.keys(roles)) delete roles[role as Role];
  Object.assign(settings, USUAL, { illuminants: [...USUAL.illuminants] });
  change();
  for (const [i, name] of names.entries()) await place(load(name, new TextEncoder().encode(examples[name])), given[i]);
  void update();
}

function listen(): void {
  for (const name of ['dragover', 'dragleave', 'drop'] as const) {
    document.addEventListener(name, (event) => {
      event.preventDefault();
      const slot = (event.target as Element | null)?.closest?.<HTMLElement>('.slot');
      for (const other of document.querySelectorAll('.slot')) other.classList.toggle('over', name === 'dragover' && other === slot);
      document.body.classList.toggle('over', name === 'dragover');
      if (name === 'drop') void take([...(event.dataTransfer?.files ?? [])], slot?.dataset.role as Role | undefined);
    });
  }
  const pasted = (table: string) => {
    if (table.trim() === '') return;
    const number = open.length + Object.keys(roles).length + 1;
    void place(load(t('pastedName', number), new TextEncoder().encode(table.endsWith('\n') ? table : `${table}\n`))).then(update);
  };
  document.addEventListener('paste', (event) => {
    if ((event.target as Element).closest?.('input, textarea')) return;
    const files = [...(event.clipboardData?.files ?? [])];
    if (files.length > 0) void take(files);
    else pasted(event.clipboardData?.getData('text/plain') ?? '');
  });
  byId('take').addEventListener('click', () => {
    const area = byId<HTMLTextAreaElement>('pasted');
    pasted(area.value);
    area.value = '';
  });
  byId('choose').addEventListener('change', (event) => {
    const chosen = event.target as HTMLInputElement;
    void take([...(chosen.files ?? [])]).then(() => { chosen.value = ''; });
  });
  byId('swap').addEventListener('click', () => {
    const { standard, trials } = roles;
    delete roles.standard;
    delete roles.trials;
    if (trials) roles.standard = trials;
    if (standard) roles.trials = standard;
    void update();
  });
  byId('example').addEventListener('click', () => void showExample(['chart_ohta.csv', 'chart_average.csv'], ['standard', 'trials'], () => { settings.pairing = 'pairs'; }));
  byId('match-example').addEventListener('click', () => void showExample(['acrylic_paints.json', 'chart_average.csv'], ['system', 'standard'], () => {
    settings.system = 'cie2000';
    settings.specular = 'excluded';
    settings.top = '3';
    settings.most = '3';
  }));
  byId('reset').addEventListener('click', () => {
    Object.assign(settings, USUAL, { illuminants: [...USUAL.illuminants], mode: settings.mode });
    void update();
  });
  byId('stop').addEventListener('click', () => client.stop());
  byId('again').addEventListener('click', () => void update());
  byId('form').addEventListener('submit', (event) => event.preventDefault());
  window.addEventListener('hashchange', () => void openLink());
}

async function begin(): Promise<void> {
  document.title = `VrxMath: ${t('title')}`;
  for (const element of document.querySelectorAll<HTMLElement>('[data-text]')) element.textContent = t(element.dataset.text as Key);
  const given = new URLSearchParams(location.search).get('epoch');
  if (given !== null && /^\d{1,12}$/.test(given)) epoch = Number(given);
  showFiles();
  fitFrame();
  say(t('starting'));
  try {
    const systems = await client.start();
    const tables = await client.run([{ command: 'tables', options: { format: 'csv' }, files: [] }]);
    const [header = [], ...rows] = parseCsv(text(tables[0]!.results));
    const [codeAt, descriptionAt] = [header.indexOf('code'), header.indexOf('description')];
    let timer = 0;
    form = new Form(byId('settings'), systems, rows.map((row) => [row[codeAt]!, row[descriptionAt]!]), settings, () => {
      outdate();
      clearTimeout(timer);
      timer = window.setTimeout(() => void update(), 50);
    });
  } catch (error) {
    return complain(t('noEngine', String(error)));
  }
  listen();
  await openLink();
}

void begin();
