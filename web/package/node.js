// The package in Node.

import { pathToFileURL } from 'node:url';
import { Worker } from 'node:worker_threads';

import { load } from './files.node.js';
import { makeApi } from './reader.js';

// A worker keeps the program alive while it has something to do.
function startWorker(onMessage, onError) {
    const worker = new Worker(new URL('./worker.node.js', import.meta.url));
    worker.unref();
    worker.on('message', onMessage);
    worker.on('error', onError);
    return {
        post: (message, transfer) => worker.postMessage(message, transfer),
        setBusy: (isBusy) => (isBusy ? worker.ref() : worker.unref()),
        end: () => worker.terminate(),
    };
}

const urlOf = (text) => (/^[a-z][a-z0-9+.-]+:\/\//i.test(text) ? new URL(text) : pathToFileURL(text));

export { VxError } from './errors.js';
export const { createReader, open, addFonts } = makeApi({ startWorker, load, urlOf });
