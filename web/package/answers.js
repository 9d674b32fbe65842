// The other end of a reader's worker: the first message makes a Server, the others are requests to it.

import { Server, packError } from './server.js';

const OFTEN = 50; // milliseconds between two messages of progress: a drawing has millions of lines

// Returns what to call with each message. post(message, transfer) sends one back.
export function makeAnswers(post, load) {
    let server;
    return async ({ id, method, args, wantsProgress }) => {
        try {
            if (method === 'start') {
                const [settings] = args;
                server = await Server.make(settings, (name) => load(new URL(name, settings.fontFolder)));
                return post({ id }, []);
            }
            let last = -Infinity;
            const tell = (done, total) => {
                if (performance.now() - last < OFTEN) return;
                last = performance.now();
                post({ id, progress: [done, total] }, []);
            };
            const result = await server.answer(method, args, wantsProgress ? tell : undefined);
            const bytes = result?.result?.data ?? result?.result;
            return post({ id, result }, bytes?.buffer instanceof ArrayBuffer ? [bytes.buffer] : []);
        } catch (error) {
            return post({ id, error: packError(error) }, []);
        }
    };
}
