// The csv of the engine, read back for the sentence above a report.

/** The rows of a csv text. A field in quotes may hold commas and line ends. */
export function parseCsv(text: string): string[][] {
  if (!text.includes('"')) return text.split('\n').filter((line) => line !== '').map((line) => line.split(','));
  const rows: string[][] = [];
  let row: string[] = [], field = '', quoted = false;
  for (let i = 0; i < text.length; ++i) {
    const c = text[i]!;
    if (quoted) {
      if (c !== '"') field += c;
      else if (text[i + 1] === '"') field += text[++i];
      else quoted = false;
    } else if (c === '"') quoted = true;
    else if (c === ',' || c === '\n') {
      row.push(field);
      field = '';
      if (c === '\n') {
        rows.push(row);
        row = [];
      }
    } else field += c;
  }
  if (field !== '' || row.length > 0) rows.push([...row, field]);
  return rows;
}

const PIECE = 1 << 24; // bytes that are decoded at a time: a text of a browser has half a gigabyte at most

/** The rows of a csv file of any size, one after the other. */
function* rowsOf(bytes: Uint8Array): Generator<string[]> {
  const decoder = new TextDecoder();
  let rest = '';
  for (let from = 0; from < bytes.length; from += PIECE) {
    rest += decoder.decode(bytes.subarray(from, from + PIECE), { stream: true });
    // Up to the last line end that is not within quotes.
    let end = rest.lastIndexOf('\n') + 1;
    while (end > 0 && (rest.slice(0, end).split('"').length - 1) % 2 !== 0) end = rest.lastIndexOf('\n', end - 2) + 1;
    yield* parseCsv(rest.slice(0, end));
    rest = rest.slice(end);
  }
  yield* parseCsv(rest);
}

/** A field of a csv row. */
export function csvField(text: string): string {
  return /[",\r\n]/.test(text) ? `"${text.replace(/"/g, '""')}"` : text;
}

/** What a judgement says in short. */
export interface Outcome {
  trials: number;
  fail: number;
  warning: number;
  /** Lots of which several geometries were measured: their number, and how many fail under any of them. */
  lots?: { count: number; fail: number };
  illuminants: string[];
  worst?: { trial: string; illuminant: string; verdict: string; reason: string; excess: number };
}

const RANK: Record<string, number> = { pass: 0, warning: 1, fail: 2 };

/** Counts the trials by their worst verdict and finds the one that is farthest beyond a limit. */
export function outcomeOf(csv: Uint8Array): Outcome {
  const rows = rowsOf(csv);
  const header: string[] = rows.next().value ?? [];
  const at = (name: string) => header.indexOf(name);
  const [trialAt, illuminantAt, verdictAt, reasonAt, excessAt] = ['trial', 'illuminant', 'verdict', 'reason', 'excess'].map(at) as [number, number, number, number, number];
  const standardAt = at('standard'), geometryAt = at('geometry');
  const lots = new Map<string, number>(); // rank of the worst verdict
  const illuminants = new Set<string>();
  const counts = [0, 0, 0]; // trials by the rank of their worst verdict
  let worst: Outcome['worst'];
  let first = '', rank = -1, worstRank = 0, lot = '';
  const close = () => {
    if (rank < 0) return;
    ++counts[rank]!;
    if (lot) lots.set(lot, Math.max(lots.get(lot) ?? 0, rank));
  };
  for (const row of rows) {
    const illuminant = row[illuminantAt]!;
    illuminants.add(illuminant);
    // The rows of a trial follow each other, one for each illuminant.
    first ||= illuminant;
    if (illuminant === first) {
      close();
      lot = row[geometryAt] ? JSON.stringify([row[standardAt], row[trialAt]]) : '';
    }
    const own = RANK[row[verdictAt]!] ?? 2;
    rank = illuminant === first ? own : Math.max(rank, own);
    if (own === 0 || own < worstRank) continue;
    const excess = row[excessAt] === '' ? Infinity : Math.abs(Number(row[excessAt])); // negative at a minus limit
    if (own > worstRank || !worst || excess > worst.excess) {
      worst = { trial: row[trialAt]!, illuminant, verdict: row[verdictAt]!, reason: row[reasonAt]!, excess };
      worstRank = own;
    }
  }
  close();
  const [pass, warning, fail] = counts as [number, number, number];
  const trials = pass + warning + fail;
  const ofLots = { count: lots.size, fail: [...lots.values()].filter((worstOfLot) => worstOfLot === RANK['fail']).length };
  return { trials, fail, warning, illuminants: [...illuminants], ...(lots.size > 0 && lots.size < trials && { lots: ofLots }), ...(worst && { worst }) };
}

/** The text of trials with a column that names the standard of each. */
export function withStandards(trials: string, standards: string[]): string {
  const [header = [], ...rows] = parseCsv(trials);
  const line = (row: string[], standard: string) => [row[0]!, standard, ...row.slice(1)].map(csvField).join(',');
  return [line(header, 'standard'), ...rows.map((row, i) => line(row, standards[i]!))].join('\n') + '\n';
}
