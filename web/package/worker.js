// The worker: a Server behind messages. The first message makes it, the others are requests.

import { Server, packError } from './server.js';

const isNode = typeof process === 'object' && process.versions?.node !== undefined;
const port = isNode ? (await import('node:worker_threads')).parentPort : globalThis;
const load = isNode ? (await import('./files.node.js')).load : (await import('./files.js')).load;

let server;

async function answer({ id, method, args, wantsProgress }) {
    try {
        if (method === 'start') {
            server = await Server.make(args[0], (name) => load(new URL(name, args[0].fontFolder)));
            return port.postMessage({ id });
        }
        const tell = (done, total) => void port.postMessage({ id, progress: [done, total] });
        const onProgress = wantsProgress ? tell : undefined;
        const result = await server.answer(method, args, onProgress);
        const bytes = result?.result?.data ?? result?.result;
        return port.postMessage({ id, result }, bytes?.buffer instanceof ArrayBuffer ? [bytes.buffer] : []);
    } catch (error) {
        return port.postMessage({ id, error: packError(error) });
    }
}

if (isNode) port.on('message', answer);
else port.onmessage = ({ data }) => answer(data);
