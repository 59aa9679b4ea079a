// The page's side of the worker: starts it, gives it files and work, one piece at a time, and starts a new one after a stop.

import { type Answer, type Command, type FromWorker, type InputFile, type System, type ToWorker } from './engine';

/** Work was stopped by the user. */
export class Stopped extends Error {}

interface Work {
  id: number;
  commands: Command[];
  resolve: (answers: Answer[]) => void;
  reject: (reason: Error) => void;
  onProgress?: (part: number) => void;
}

export class Client {
  private worker: Worker | undefined;
  private ready: Promise<System[]> | undefined;
  private readonly files = new Map<string, InputFile>();
  private current: Work | undefined;
  private readonly waiting: Work[] = [];
  private ids = 0;

  constructor(
    private readonly script: string,
    private readonly compiled: Promise<WebAssembly.Module>,
  ) {}

  /** The difference systems that the engine has, once it is there. */
  start(): Promise<System[]> {
    this.ready ??= this.launch();
    return this.ready;
  }

  put(file: InputFile): void {
    this.files.set(file.path, file);
    if (this.worker) this.send({ kind: 'file', file });
  }

  run(commands: Command[], onProgress?: (part: number) => void): Promise<Answer[]> {
    return new Promise((resolve, reject) => {
      this.waiting.push({ id: ++this.ids, commands, resolve, reject, onProgress });
      void this.next();
    });
  }

  /** Ends what is being computed, at once; the files stay. */
  stop(): void {
    this.worker?.terminate();
    this.worker = undefined;
    this.ready = undefined;
    const ended = [this.current, ...this.waiting.splice(0)];
    this.current = undefined;
    for (const work of ended) work?.reject(new Stopped());
    void this.start();
  }

  private async launch(): Promise<System[]> {
    const worker = new Worker(URL.createObjectURL(new Blob([this.script], { type: 'text/javascript' })));
    const compiled = await this.compiled;
    return new Promise((resolve, reject) => {
      worker.onmessage = (event: MessageEvent<FromWorker>) => {
        if (event.data.kind !== 'ready') return reject(new Error(event.data.kind === 'failed' ? event.data.reason : ''));
        worker.onmessage = (next: MessageEvent<FromWorker>) => this.take(next.data);
        worker.onerror = (error) => this.fail(error.message);
        this.worker = worker;
        for (const file of this.files.values()) this.send({ kind: 'file', file });
        resolve(event.data.systems);
      };
      worker.onerror = (error) => reject(new Error(error.message));
      worker.postMessage({ kind: 'start', module: compiled } satisfies ToWorker);
    });
  }

  private send(message: ToWorker): void {
    this.worker!.postMessage(message);
  }

  private async next(): Promise<void> {
    await this.start();
    if (this.current || this.waiting.length === 0 || !this.worker) return;
    this.current = this.waiting.shift()!;
    this.send({ kind: 'run', id: this.current.id, commands: this.current.commands });
  }

  private take(message: FromWorker): void {
    const work = this.current;
    if (message.kind === 'ready' || !work || message.id !== work.id) {
      if (message.kind === 'failed') this.fail(message.reason);
      return;
    }
    if (message.kind === 'progress') return work.onProgress?.(message.part);
    this.current = undefined;
    if (message.kind === 'done') work.resolve(message.answers);
    else this.fail(message.reason, work);
    void this.next();
  }

  // A worker that failed, for want of memory for instance, is not trusted any more.
  private fail(reason: string, work = this.current): void {
    this.current = undefined;
    work?.reject(new Error(reason));
    this.stop();
  }
}
