// What a user has chosen, as the options of the tool, and as the text behind the # of a link.

export interface Settings {
  mode: 'judge' | 'match';
  system: string;
  parameters: string;
  illuminants: string[];
  observer: string;
  tolerance: string;
  limits: string;
  verdict: string;
  warning: string;
  pairing: '' | 'pairs' | 'first' | 'nearest';
  scale: '' | 'fraction' | 'percent';
  idColumn: string;
  lenient: boolean;
  force: boolean;
  title: string;
  customer: string;
  lot: string;
  approval: string;
  author: string;
  most: string;
  top: string;
  matchTolerance: string;
  specular: string;
}

export const USUAL: Readonly<Settings> = {
  mode: 'judge', system: 'cmc', parameters: '', illuminants: ['D65', 'A', 'CWF'], observer: '10', tolerance: '1.5', limits: '',
  verdict: 'worse', warning: '0.75', pairing: '', scale: '', idColumn: '', lenient: false, force: false, title: '', customer: '',
  lot: '', approval: '', author: '', most: '4', top: '10', matchTolerance: '1', specular: '',
};

type Options = Record<string, string | number | boolean | string[]>;

/** The options of reading files. */
export function readOptions(settings: Settings): Options {
  const options: Options = {};
  if (settings.scale) options[settings.scale] = true;
  if (settings.idColumn) options['id-column'] = settings.idColumn;
  if (settings.lenient) options.lenient = true;
  if (settings.force) options.force = true;
  return options;
}

function viewOptions(settings: Settings): Options {
  const options: Options = { ...readOptions(settings), illuminants: settings.illuminants.join(','), system: settings.system, observer: settings.observer, threads: 1 };
  if (settings.parameters) options.parameters = settings.parameters;
  for (const name of ['title', 'customer', 'lot', 'approval', 'author'] as const) {
    if (settings[name]) options[`report-${name}`] = settings[name];
  }
  return options;
}

/** The options of the judgement. `firstId`: the id of the standard where one stands for all. */
export function judgeOptions(settings: Settings, firstId: string): Options {
  const options = viewOptions(settings);
  if (settings.tolerance) options.tolerance = settings.tolerance;
  if (settings.limits) options.limits = settings.limits;
  if (settings.verdict === 'ellipse') options.ellipse = true;
  else if (settings.verdict !== USUAL.verdict) options.verdict = settings.verdict;
  if (settings.warning) options.warning = settings.warning;
  if (settings.pairing === 'pairs') options.pairs = true;
  if (settings.pairing === 'first' && firstId) options['standard-id'] = firstId;
  return options;
}

/** The options of a search for the nearest standards. */
export function nearestOptions(settings: Settings): Options {
  const options: Options = { ...readOptions(settings), illuminants: settings.illuminants.join(','), system: settings.system, observer: settings.observer, count: 1, threads: 1 };
  if (settings.parameters) options.parameters = settings.parameters;
  return options;
}

/** The options of a search for recipes. */
export function matchOptions(settings: Settings): Options {
  const options = viewOptions(settings);
  options['max-colorants'] = settings.most;
  options.top = settings.top;
  options.tolerance = settings.matchTolerance;
  if (settings.specular) options.specular = settings.specular;
  return options;
}

/** Files in a link: what they are, by name, and their text. */
export interface LinkFile {
  role: string;
  name: string;
  text: string;
}
export interface Link {
  settings: Settings;
  files: LinkFile[];
}

const LARGEST_LINK = 4_000_000; // of what a link may unpack to

async function through(bytes: Uint8Array, stream: GenericTransformStream, most: number): Promise<Uint8Array> {
  const reader = new Blob([bytes as BlobPart]).stream().pipeThrough(stream as ReadableWritablePair).getReader();
  const parts: Uint8Array[] = [];
  let size = 0;
  for (let next = await reader.read(); !next.done; next = await reader.read()) {
    size += next.value.length;
    if (size > most) throw new Error('too long');
    parts.push(next.value);
  }
  return new Uint8Array(await new Blob(parts as BlobPart[]).arrayBuffer());
}

/** The text behind the # of a link. */
export async function toHash(link: Link): Promise<string> {
  const changed = Object.entries(link.settings).filter(([name, value]) => JSON.stringify(value) !== JSON.stringify(USUAL[name as keyof Settings]));
  const json = JSON.stringify({ s: Object.fromEntries(changed), f: link.files.map((file) => [file.role, file.name, file.text]) });
  const packed = await through(new TextEncoder().encode(json), new CompressionStream('deflate-raw'), Infinity);
  let binary = '';
  for (const byte of packed) binary += String.fromCharCode(byte);
  return '#1' + btoa(binary).replace(/\+/g, '-').replace(/\//g, '_').replace(/=+$/, '');
}

/** The settings and files of a link; everything is looked at, as anybody can write one. Throws for what is none. */
export async function fromHash(hash: string): Promise<Link> {
  if (!hash.startsWith('#1')) throw new Error('not a link');
  const binary = atob(hash.slice(2).replace(/-/g, '+').replace(/_/g, '/'));
  const packed = Uint8Array.from(binary, (character) => character.charCodeAt(0));
  const bytes = await through(packed, new DecompressionStream('deflate-raw'), LARGEST_LINK);
  const { s, f } = JSON.parse(new TextDecoder().decode(bytes)) as { s: Record<string, unknown>; f: unknown[] };
  const settings: Record<string, unknown> = { ...USUAL, illuminants: [...USUAL.illuminants] };
  for (const [name, usual] of Object.entries(USUAL)) {
    const value = s[name];
    const isList = Array.isArray(usual);
    if (isList && Array.isArray(value) && value.every((one) => typeof one === 'string')) settings[name] = value;
    else if (!isList && typeof value === typeof usual) settings[name] = value;
  }
  const files = f.map((file) => {
    const [role, name, text] = file as unknown[];
    if (typeof role !== 'string' || typeof name !== 'string' || typeof text !== 'string') throw new Error('not a link');
    return { role, name, text };
  });
  return { settings: settings as unknown as Settings, files };
}
