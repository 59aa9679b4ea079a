// The engine in its worker: files are put before it, commands are run over them. The commands, their options and their messages are
// those of the vrx tool.

/** One run of a command: options by their names on the command line, and the files that stand behind them. */
export interface Command {
  command: string;
  options?: Record<string, string | number | boolean | string[]>;
  files: string[];
  /** The moment that a report says, in seconds since 1970; the current one where it is left out. */
  epoch?: number;
}

/** What a run gave: the exit status of the tool, what it wrote, and the report where one was asked for. */
export interface Answer {
  status: number;
  results: Uint8Array;
  messages: string;
  report?: Uint8Array;
}

export interface InputFile {
  path: string;
  bytes: Uint8Array;
}

export interface Parameter {
  name: string;
  value: number;
}

export interface System {
  name: string;
  title: string;
  parameters: Parameter[];
  inDeltaE: boolean;
}

/** What the worker is told, and what it tells. */
export type ToWorker =
  | { kind: 'start'; module: WebAssembly.Module }
  | { kind: 'file'; file: InputFile }
  | { kind: 'run'; id: number; commands: Command[] };
export type FromWorker =
  | { kind: 'ready'; systems: System[] }
  | { kind: 'progress'; id: number; part: number }
  | { kind: 'done'; id: number; answers: Answer[] }
  | { kind: 'failed'; id: number; reason: string };

/** Where a report is written in the engine's file system. */
export const REPORT_PATH = '/out/report.html';

/** A file's name as the engine may have it: no folders, nothing empty, nothing endless. */
export function safeName(name: string): string {
  const plain = name.replace(/[/\\\0]/g, '_');
  if (/^(|-|\.|\.\.)$/.test(plain)) return '_';
  return plain.length > 200 ? plain.slice(0, 100) + '...' + plain.slice(-90) : plain;
}

interface Module {
  FS: {
    mkdir(path: string): void;
    chdir(path: string): void;
    unlink(path: string): void;
    analyzePath(path: string): { exists: boolean };
    writeFile(path: string, bytes: Uint8Array, options?: { canOwn: boolean }): void;
    readFile(path: string): Uint8Array;
  };
  ccall(name: string, result: string, types: string[], values: unknown[]): unknown;
  onProgress?: (part: number) => void;
}

/** Makes the module that emscripten built, from compiled WebAssembly. */
export type Factory = (settings: object) => Promise<Module>;

export class Engine {
  private constructor(private readonly module: Module) {
    for (const folder of ['/files', '/out']) module.FS.mkdir(folder);
    module.FS.chdir('/files');
  }

  static async start(factory: Factory, compiled: WebAssembly.Module): Promise<Engine> {
    const instantiateWasm = (
      imports: WebAssembly.Imports,
      receive: (instance: WebAssembly.Instance, module: WebAssembly.Module) => void,
    ) => {
      WebAssembly.instantiate(compiled, imports).then((instance) => receive(instance, compiled));
      return {};
    };
    return new Engine(await factory({ instantiateWasm }));
  }

  systems(): System[] {
    return JSON.parse(this.module.ccall('vrx_engine_systems', 'string', [], []) as string) as System[];
  }

  put(file: InputFile): void {
    const { FS } = this.module;
    const folder = file.path.includes('/') ? file.path.slice(0, file.path.indexOf('/')) : '';
    if (folder !== '' && !FS.analyzePath(folder).exists) FS.mkdir(folder);
    if (FS.analyzePath(file.path).exists) FS.unlink(file.path);
    FS.writeFile(file.path, file.bytes, { canOwn: true });
  }

  run(command: Command, onProgress: (part: number) => void): Answer {
    const { FS } = this.module;
    this.module.onProgress = onProgress;
    // A dash alone stands for the results; the name of a file may begin with one.
    const files = command.files.map((path) => (/^-./.test(path) ? `./${path}` : path));
    const status = this.module.ccall('vrx_engine_run', 'number', ['string'], [
      JSON.stringify({ ...command, files }),
    ]) as number;
    const answer: Answer = {
      status,
      results: this.take('/results'),
      messages: new TextDecoder().decode(this.take('/messages')),
    };
    if (FS.analyzePath(REPORT_PATH).exists) answer.report = this.take(REPORT_PATH);
    return answer;
  }

  private take(path: string): Uint8Array {
    const { FS } = this.module;
    if (!FS.analyzePath(path).exists) return new Uint8Array();
    const bytes = FS.readFile(path);
    if (path === REPORT_PATH) FS.unlink(path);
    return bytes;
  }
}
