// The package on a page, and in a worker of a page.

import { load } from './files.js';
import { makeApi } from './reader.js';

function startWorker(onMessage, onError) {
    const worker = new Worker(new URL('./worker.js', import.meta.url), { type: 'module' });
    worker.onmessage = ({ data }) => onMessage(data);
    worker.onerror = onError;
    return {
        post: (message, transfer) => worker.postMessage(message, transfer),
        setBusy: () => {},
        end: () => worker.terminate(),
    };
}

const urlOf = (text) => new URL(text, globalThis.location?.href);

export { VxError } from './errors.js';
export const { createReader, open, addFonts } = makeApi({ startWorker, load, urlOf });
