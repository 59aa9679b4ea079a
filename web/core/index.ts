/**
 * Colour science for industrial colour control: curves to tristimulus values, colours, differences and verdicts, over arrays.
 * The numbers are those of the native library, to the last bit.
 *
 * Rows stand one after the other in a `Float64Array`: a curve is 40 reflectances in percent at 360, 370 ... 750 nm, a colour three or
 * five numbers. What does not exist is NaN. Input that cannot be used is a {@link VrxError}.
 *
 * @module
 */
import factory from './vrx_core.mjs';

/** A call was refused; the message says why. */
export class VrxError extends Error {
  /** The number of the status, as the C interface has it. */
  readonly status: number;
  constructor(message: string, status: number) {
    super(message);
    this.name = 'VrxError';
    this.status = status;
  }
}

/** Rows of numbers, one after the other. */
export type Rows = Float64Array | readonly number[];
/** 2 or 10 degrees. */
export type Observer = 2 | 10;
/** An illuminant by its code, such as `'D65'`. */
export type Illuminant = string;
export type Verdict = 'fail' | 'warning' | 'pass';

const SYSTEMS = [
  'lab', 'cmc', 'hunter', 'fmc2', 'cie94', 'lch', 'luv', 'xyz', 'gepqs2', 'audi', 'din99', 'cie2000', 'din6175', 'din99o', 'din99b',
  'din99c', 'din99d', 'cam02ucs', 'cam16ucs', 'oklab', 'itp', 'hyab',
] as const;
/** A difference system, by the name that the command line has for it. */
export type SystemName = (typeof SYSTEMS)[number];

/** A difference system; what is left out is what is usual. */
export interface SystemOptions {
  /** `'cmc'` where it is left out. */
  system?: SystemName;
  /** l, c for CMC; kL, kC, kH for CIE94 and CIEDE2000 ... */
  parameters?: readonly number[];
  /** Aspecular measuring angle in degrees; Audi and DIN 6175-2 read it. */
  angle?: number;
}

export interface DeltaOptions extends SystemOptions {
  illuminant?: Illuminant;
  observer?: Observer;
}

export interface JudgeOptions extends SystemOptions {
  /** D65, A and CWF where they are left out. */
  illuminants?: readonly Illuminant[];
  observer?: Observer;
  /** The limit of the total; or plus and minus of each component, then the total. 1.5 where it is left out. */
  tolerance?: number | readonly number[];
  /** The fraction of a limit above which the verdict is a warning; 0.75 where it is left out. */
  warning?: number;
  /** What decides; the worse of the two where it is left out. */
  verdict?: 'worse' | 'total' | 'box';
}

/** Of one trial under one illuminant. */
export interface JudgedUnder {
  illuminant: Illuminant;
  verdict: Verdict;
  /** The total difference. */
  total: number;
  /** The seven elements of the difference, the total last. */
  difference: Float64Array;
  /** Shade words, such as "Redder". */
  words: string[];
}
export interface Judged {
  /** The worst of the verdicts. */
  verdict: Verdict;
  under: JudgedUnder[];
}

export interface ReadOptions {
  /** The name that messages have for the file. */
  name?: string;
  /** By the content where it is left out. */
  form?: 'csv' | 'cgats' | 'cxf' | 'json';
  /** What reflectances are; by the file where it is left out, and a file that can be either is refused. */
  scale?: 'percent' | 'fraction';
  /** Skips unknown columns and other deviations, with a note. */
  lenient?: boolean;
}
export interface Measurements {
  count: number;
  form: 'csv' | 'cgats' | 'cxf' | 'json';
  ids: string[];
  /** 40 reflectances in percent a sample, where all samples have curves. */
  curves?: Float64Array;
  xyz?: Float64Array;
  lab?: Float64Array;
  /** What was skipped, and what may make the numbers other than they look. */
  notes: string[];
  warnings: string[];
}

/** A whiteness, tint or yellowness index of all rows. */
export interface Index {
  name: string;
  values: Float64Array;
}

const CURVE = 40;
const UNSET = 1e-5; // what the C interface has for a number that does not exist
const FORMS = ['csv', 'cgats', 'cxf', 'json'] as const;
const VERDICTS = ['fail', 'warning', 'pass'] as const;
const COMMON: readonly Illuminant[] = ['D65', 'A', 'CWF'];
const isUnset = (x: number) => x > 9.99e-6 && x < 1.001e-5;

interface Wasm {
  HEAPF64: Float64Array;
  HEAP32: Int32Array;
  HEAPU8: Uint8Array;
  FS: { writeFile(path: string, bytes: Uint8Array): void; unlink(path: string): void; mkdir(path: string): void; chdir(path: string): void };
  _malloc(size: number): number;
  _free(place: number): void;
}
type Call = (...values: number[]) => number;

/** Memory of the module for the time of one call. */
class Scratch {
  private readonly places: number[] = [];
  constructor(private readonly wasm: Wasm) {}

  bytes(size: number): number {
    const place = this.wasm._malloc(Math.max(size, 8));
    if (place === 0) throw new VrxError('not enough memory', 8);
    this.places.push(place);
    return place;
  }
  doubles(values: Rows): number {
    const place = this.bytes(8 * values.length);
    const heap = this.wasm.HEAPF64.subarray(place / 8, place / 8 + values.length);
    for (let i = 0; i < values.length; ++i) heap[i] = Number.isNaN(values[i]!) ? UNSET : values[i]!;
    return place;
  }
  integers(values: readonly number[]): number {
    const place = this.bytes(4 * values.length);
    this.wasm.HEAP32.set(values, place / 4);
    return place;
  }
  text(value: string): number {
    const encoded = new TextEncoder().encode(value);
    const place = this.bytes(encoded.length + 1);
    this.wasm.HEAPU8.set(encoded, place);
    this.wasm.HEAPU8[place + encoded.length] = 0;
    return place;
  }
  takeDoubles(place: number, count: number): Float64Array {
    return this.wasm.HEAPF64.slice(place / 8, place / 8 + count).map((x) => (isUnset(x) ? NaN : x));
  }
  takeIntegers(place: number, count: number): Int32Array {
    return this.wasm.HEAP32.slice(place / 4, place / 4 + count);
  }
  free(): void {
    for (const place of this.places) this.wasm._free(place);
  }
}

/** The library; {@link load} gives it. */
export class Vrx {
  private readonly illuminants = new Map<Illuminant, number>();

  /** @internal */
  constructor(private readonly wasm: Wasm) {
    wasm.FS.mkdir('/files');
    wasm.FS.chdir('/files');
  }

  /** X, Y, Z of curves (ASTM E308). */
  tristimulus(curves: Rows, illuminant: Illuminant, observer: Observer = 10): Float64Array {
    const count = rowsOf(curves, CURVE, 'curves');
    return this.use((s) => {
      const out = s.bytes(24 * count);
      this.call('tristimulus', this.numberOf(illuminant), observerOf(observer), s.doubles(curves), count, out);
      return s.takeDoubles(out, 3 * count);
    });
  }

  /** CIE L*, a*, b*, C*, h of tristimulus values: five numbers a row. */
  lab(xyz: Rows, illuminant: Illuminant, observer: Observer = 10): Float64Array {
    const count = rowsOf(xyz, 3, 'xyz');
    return this.use((s) => {
      const out = s.bytes(40 * count);
      this.call('xyz_to_space', 0, this.numberOf(illuminant), observerOf(observer), s.doubles(xyz), count, out);
      return s.takeDoubles(out, 5 * count);
    });
  }

  /** Tristimulus values of L*, a*, b*: three numbers a row in and out. */
  xyz(lab: Rows, illuminant: Illuminant, observer: Observer = 10): Float64Array {
    const count = rowsOf(lab, 3, 'lab');
    const coordinates = new Float64Array(5 * count);
    for (let i = 0; i < count; ++i) for (let k = 0; k < 3; ++k) coordinates[5 * i + k] = lab[3 * i + k]!;
    return this.use((s) => {
      const out = s.bytes(24 * count);
      this.call('space_to_xyz', 0, this.numberOf(illuminant), observerOf(observer), s.doubles(coordinates), count, out);
      return s.takeDoubles(out, 3 * count);
    });
  }

  /** Sample minus standard, pair by pair, of tristimulus values: seven elements a row, the total last. */
  delta(standards: Rows, samples: Rows, options: DeltaOptions = {}): Float64Array {
    const count = rowsOf(samples, 3, 'samples');
    if (rowsOf(standards, 3, 'standards') !== count) throw new VrxError('there must be as many standards as samples', 2);
    return this.use((s) => {
      const out = s.bytes(56 * count);
      const view = [this.numberOf(options.illuminant ?? 'D65'), observerOf(options.observer ?? 10)];
      this.call('differences', this.systemIn(s, options), ...view, s.doubles(standards), s.doubles(samples), count, out);
      return s.takeDoubles(out, 7 * count);
    });
  }

  /** Judges trial curves against a standard: one curve for all, or one for each trial. */
  judge(standards: Rows, trials: Rows, options: JudgeOptions = {}): Judged[] {
    const count = rowsOf(trials, CURVE, 'trials');
    const standardCount = rowsOf(standards, CURVE, 'standards');
    const lamps = options.illuminants ?? COMMON;
    return this.use((s) => {
      const handle = this.judgement(s, options, lamps);
      try {
        this.call('judgement_standards', handle, s.doubles(standards), 0, standardCount);
        const rows = count * lamps.length;
        const [verdicts, differences, words] = [s.bytes(4 * rows), s.bytes(56 * rows), s.bytes(12 * rows)];
        const outcome = s.integers([36, verdicts, 0, 0, differences, words, 0, 0, 0]);
        this.call('judgement_trials_of', handle, s.doubles(trials), 0, count, outcome);
        return this.judged(lamps, s.takeIntegers(verdicts, rows), s.takeDoubles(differences, 7 * rows), s.takeIntegers(words, 3 * rows));
      } finally {
        this.call('close', handle);
      }
    });
  }

  /** The whiteness, tint and yellowness indices that are defined for the illuminant and observer, of tristimulus values. */
  indices(xyz: Rows, illuminant: Illuminant, observer: Observer = 10): Index[] {
    const count = rowsOf(xyz, 3, 'xyz');
    return this.use((s) => {
      const out = s.bytes(8 * count), input = s.doubles(xyz);
      const found: Index[] = [];
      for (let index = 0; index < this.integer('index_count'); ++index) {
        for (const recalculated of [0, 1]) {
          let name: string;
          try {
            name = this.text('index_name', index, recalculated);
          } catch {
            continue; // an index without this form
          }
          this.call('indices', index, recalculated, this.numberOf(illuminant), observerOf(observer), input, count, out);
          const values = s.takeDoubles(out, count);
          if (count > 0 && values.every(Number.isNaN)) continue;
          found.push({ name, values });
        }
      }
      return found;
    });
  }

  /** 8-bit red, green and blue of tristimulus values for an sRGB screen: three bytes a row. */
  displayRgb(xyz: Rows, illuminant: Illuminant, observer: Observer = 10): Uint8Array {
    const count = rowsOf(xyz, 3, 'xyz');
    return this.use((s) => {
      const out = s.bytes(3 * count);
      this.call('display_colors', this.numberOf(illuminant), observerOf(observer), s.doubles(xyz), count, out, 0);
      return this.wasm.HEAPU8.slice(out, out + 3 * count);
    });
  }

  /** Reads a file of measurements: CSV, CGATS, CxF3 or JSON. */
  read(content: Uint8Array | string, options: ReadOptions = {}): Measurements {
    const bytes = typeof content === 'string' ? new TextEncoder().encode(content) : content;
    const name = (options.name ?? 'measurements').replace(/[/\0]/g, '_');
    this.wasm.FS.writeFile(name, bytes);
    try {
      return this.use((s) => {
        const form = options.form === undefined ? 0 : 1 + FORMS.indexOf(options.form);
        const scale = { percent: 1, fraction: 2 }[options.scale!] ?? 0;
        const handle = s.integers([0]);
        this.call('measurements_open', s.text(name), s.integers([16, form, scale, options.lenient ? 1 : 0]), handle);
        const measurements = s.takeIntegers(handle, 1)[0]!;
        try {
          return this.measurements(s, measurements);
        } finally {
          this.call('close', measurements);
        }
      });
    } finally {
      this.wasm.FS.unlink(name);
    }
  }

  /** The headings under which the elements of a difference are shown. */
  columns(system: SystemName): string[] {
    return this.text('system_columns', SYSTEMS.indexOf(system)).split('|');
  }

  // Calls ---------------------------------------------------------------------------------------------------

  private use<T>(work: (scratch: Scratch) => T): T {
    const scratch = new Scratch(this.wasm);
    try {
      return work(scratch);
    } finally {
      scratch.free();
    }
  }

  private function(name: string): Call {
    return (this.wasm as unknown as Record<string, Call>)[`_vrx_${name}`]!;
  }

  private call(name: string, ...values: number[]): void {
    const status = this.function(name)(...values);
    if (status !== 0) throw new VrxError(this.text('last_error'), status);
  }

  private integer(name: string): number {
    return this.use((s) => {
      const place = s.integers([0]);
      this.call(name, place);
      return s.takeIntegers(place, 1)[0]!;
    });
  }

  private text(name: string, ...values: number[]): string {
    return this.use((s) => {
      const length = s.integers([0]);
      const tooSmall = 6;
      const asked = this.function(name)(...values, 0, 0, length);
      if (asked !== 0 && asked !== tooSmall) throw new VrxError(name === 'last_error' ? 'refused' : this.text('last_error'), asked);
      const room = s.takeIntegers(length, 1)[0]! + 1;
      const place = s.bytes(room);
      if (this.function(name)(...values, place, room, length) !== 0) return '';
      return new TextDecoder().decode(this.wasm.HEAPU8.slice(place, place + room - 1));
    });
  }

  private numberOf(illuminant: Illuminant): number {
    const known = this.illuminants.get(illuminant);
    if (known !== undefined) return known;
    const number = this.use((s) => {
      const place = s.integers([0]);
      this.call('find_illuminant', s.text(illuminant), place);
      return s.takeIntegers(place, 1)[0]!;
    });
    this.illuminants.set(illuminant, number);
    return number;
  }

  // The structure vrx_system, 48 bytes.
  private systemIn(s: Scratch, options: SystemOptions): number {
    const number = SYSTEMS.indexOf(options.system ?? 'cmc');
    if (number < 0) throw new VrxError(`there is no difference system "${options.system}"`, 4);
    const place = s.bytes(48);
    this.call('default_system', number, place);
    if (options.parameters !== undefined) this.wasm.HEAPF64.set(options.parameters.slice(0, 4), place / 8 + 1);
    if (options.angle !== undefined) this.wasm.HEAPF64[place / 8 + 5] = options.angle;
    return place;
  }

  private judgement(s: Scratch, options: JudgeOptions, lamps: readonly Illuminant[]): number {
    const place = s.integers([0]);
    const numbers = s.integers(lamps.map((lamp) => this.numberOf(lamp)));
    this.call('judgement_open', this.systemIn(s, options), numbers, lamps.length, observerOf(options.observer ?? 10), place);
    const handle = s.takeIntegers(place, 1)[0]!;
    try {
      const { tolerance = 1.5, warning, verdict = 'worse' } = options;
      const isTotal = typeof tolerance === 'number';
      if (!isTotal && tolerance.length !== 7) throw new VrxError('a tolerance is one number or seven', 2);
      // A limit of the total alone: components have the widest one that there is, and nothing to decide.
      const widest = 1e6;
      const box = s.doubles(isTotal ? [...Array<number>(6).fill(widest), tolerance] : tolerance);
      for (let i = 0; i < lamps.length; ++i) this.call('judgement_box', handle, i, box);
      if (warning !== undefined) this.call('judgement_warning', handle, warning);
      if (isTotal && verdict === 'box') throw new VrxError('no component has a limit; give a tolerance of seven numbers', 2);
      this.call('judgement_rule', handle, ['worse', 'total', 'box'].indexOf(verdict));
    } catch (error) {
      this.call('close', handle);
      throw error;
    }
    return handle;
  }

  private judged(lamps: readonly Illuminant[], verdicts: Int32Array, differences: Float64Array, words: Int32Array): Judged[] {
    const names = new Map<number, string>();
    const wordOf = (word: number) => {
      if (!names.has(word)) names.set(word, this.text('shade_word', word));
      return names.get(word)!;
    };
    return Array.from({ length: verdicts.length / lamps.length }, (_, trial) => {
      const under = lamps.map((illuminant, i) => {
        const row = trial * lamps.length + i;
        const difference = differences.slice(7 * row, 7 * row + 7);
        const said = [...words.slice(3 * row, 3 * row + 3)].filter((word) => word > 0).map(wordOf);
        return { illuminant, verdict: VERDICTS[verdicts[row]!]!, total: difference[6]!, difference, words: said };
      });
      const worst = Math.min(...under.map(({ verdict }) => VERDICTS.indexOf(verdict)));
      return { verdict: VERDICTS[worst]!, under };
    });
  }

  private measurements(s: Scratch, handle: number): Measurements {
    const size = 10;
    const place = s.integers([4 * size, ...Array<number>(size - 1).fill(0)]);
    this.call('measurements_summarize', handle, place);
    const [, count = 0, form = 1, hasCurves, hasXyz, hasLab, notes = 0, warnings = 0] = s.takeIntegers(place, size);
    const texts = (kind: number, n: number) => Array.from({ length: n }, (_, i) => this.text('measurements_text', handle, kind, i));
    const numbers = (kind: number, width: number) => {
      const out = s.bytes(8 * width * count);
      this.call('measurements_numbers', handle, kind, 0, count, out);
      return s.takeDoubles(out, width * count);
    };
    return {
      count,
      form: FORMS[form - 1]!,
      ids: texts(0, count),
      ...(hasCurves ? { curves: numbers(0, CURVE) } : {}),
      ...(hasXyz ? { xyz: numbers(1, 3) } : {}),
      ...(hasLab ? { lab: numbers(2, 3) } : {}),
      notes: texts(3, notes),
      warnings: texts(4, warnings),
    };
  }
}

function rowsOf(values: Rows, width: number, name: string): number {
  if (values.length % width !== 0) throw new VrxError(`${name}: ${values.length} numbers are not rows of ${width}`, 2);
  return values.length / width;
}

function observerOf(degrees: Observer): number {
  if (degrees !== 2 && degrees !== 10) throw new VrxError('the observer must be 2 or 10', 4);
  return degrees === 2 ? 0 : 1;
}

async function moduleBytes(): Promise<ArrayBuffer | Uint8Array> {
  const address = new URL('./vrx_core.wasm', import.meta.url);
  if (address.protocol !== 'file:') return (await fetch(address)).arrayBuffer();
  const { readFile } = await import('node:fs/promises');
  return readFile(address);
}

/**
 * Loads the library. `bytes`: the content of `vrx_core.wasm`, for a bundler that keeps it elsewhere; otherwise it is read from beside
 * this module.
 */
export async function load(bytes?: ArrayBuffer | Uint8Array): Promise<Vrx> {
  return new Vrx((await factory({ wasmBinary: bytes ?? (await moduleBytes()) })) as Wasm);
}
