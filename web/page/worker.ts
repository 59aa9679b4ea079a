// The worker: the engine computes here, so that the page never waits for it.

import factory from 'vrx-engine';
import { Engine, type Factory, type FromWorker, type ToWorker } from './engine';

let engine: Engine | undefined;
const tell = (message: FromWorker) => self.postMessage(message);

self.onmessage = async (event: MessageEvent<ToWorker>) => {
  const message = event.data;
  try {
    if (message.kind === 'start') {
      engine = await Engine.start(factory as Factory, message.module);
      tell({ kind: 'ready', systems: engine.systems() });
    } else if (message.kind === 'file') {
      engine!.put(message.file);
    } else {
      const { id, commands } = message;
      const answers = commands.map((command) =>
        engine!.run(command, (part) => tell({ kind: 'progress', id, part })),
      );
      tell({ kind: 'done', id, answers });
    }
  } catch (error) {
    tell({ kind: 'failed', id: message.kind === 'run' ? message.id : 0, reason: String(error) });
  }
};
