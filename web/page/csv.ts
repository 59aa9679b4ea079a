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

/** A field of a csv row. */
export function csvField(text: string): string {
  return /[",\r\n]/.test(text) ? `"${text.replace(/"/g, '""')}"` : text;
}

/** What a judgement says in short. */
export interface Outcome {
  trials: number;
  fail: number;
  warning: number;
  illuminants: string[];
  worst?: { trial: string; illuminant: string; verdict: string; reason: string; excess: number };
}

const RANK: Record<string, number> = { pass: 0, warning: 1, fail: 2 };

/** Counts the trials by their worst verdict and finds the one that is farthest beyond a limit. */
export function outcomeOf(csv: string): Outcome {
  const [header = [], ...rows] = parseCsv(csv);
  const at = (name: string) => header.indexOf(name);
  const [trialAt, illuminantAt, verdictAt, reasonAt, excessAt] = ['trial', 'illuminant', 'verdict', 'reason', 'excess'].map(at) as [number, number, number, number, number];
  const illuminants = [...new Set(rows.map((row) => row[illuminantAt]!))];
  const outcome: Outcome = { trials: 0, fail: 0, warning: 0, illuminants };
  let worstRank = 0;
  // The rows of a trial follow each other, one for each illuminant.
  for (let i = 0; i < rows.length; i += illuminants.length) {
    let rank = 0;
    for (const row of rows.slice(i, i + illuminants.length)) {
      const own = RANK[row[verdictAt]!] ?? 2;
      rank = Math.max(rank, own);
      if (own === 0 || own < worstRank) continue;
      const excess = row[excessAt] === '' ? Infinity : Math.abs(Number(row[excessAt])); // negative at a minus limit
      if (own > worstRank || !outcome.worst || excess > outcome.worst.excess) {
        outcome.worst = { trial: row[trialAt]!, illuminant: row[illuminantAt]!, verdict: row[verdictAt]!, reason: row[reasonAt]!, excess };
        worstRank = own;
      }
    }
    ++outcome.trials;
    if (rank === 2) ++outcome.fail;
    if (rank === 1) ++outcome.warning;
  }
  return outcome;
}

/** The text of trials with a column that names the standard of each. */
export function withStandards(trials: string, standards: string[]): string {
  const [header = [], ...rows] = parseCsv(trials);
  const line = (row: string[], standard: string) => [row[0]!, standard, ...row.slice(1)].map(csvField).join(',');
  return [line(header, 'standard'), ...rows.map((row, i) => line(row, standards[i]!))].join('\n') + '\n';
}
