// Answers requests about documents with an instance of the module, in a worker or on the thread of the caller. Fonts that a
// document asks for are loaded when it does.

import { Engine } from './engine.js';
import { VxError } from './errors.js';

const ROWS = 'rows.txt';

export class Server {
    #engine;
    #load;

    // load(name): the bytes of a file beside the bundled fonts.
    static async make({ module, maxMemory, fonts = [], bundled = true }, load) {
        const server = new Server();
        server.#load = load;
        const rows = bundled ? new TextDecoder().decode(await load(ROWS)) : '';
        server.#engine = await Engine.make(module, { maxMemory, rows });
        for (const font of fonts) server.#engine.addFont(font);
        return server;
    }

    async answer(method, args, onProgress) {
        const engine = this.#engine;
        switch (method) {
            case 'open':
                return engine.open(...args);
            case 'close':
                return engine.close(...args);
            case 'addFont':
                return engine.addFont(...args);
            case 'about':
                return { version: engine.version, formats: engine.formats, options: engine.options };
            case 'fontList':
                return engine.fontList;
            case 'memory':
                return engine.memory;
            case 'info':
            case 'render':
            case 'texts':
            case 'picture':
            case 'inkPixels':
            case 'objectAt': {
                const result = await this.#withFonts(() => engine[method](...args, onProgress));
                return { result, warnings: engine.warnings(args[0]) };
            }
            default:
                throw new VxError('wrong-argument', `${method}: no such request`);
        }
    }

    // Once more, when fonts have come that the first try did not have. One that cannot be had is not asked for again.
    async #withFonts(read) {
        for (;;) {
            let result;
            let failure;
            try {
                result = read();
            } catch (error) {
                if (!(error instanceof VxError)) throw error; // the instance is at its end
                failure = error;
            }
            const wanted = this.#engine.takeWanted();
            if (wanted.length === 0 && failure === undefined) return result;
            if (wanted.length === 0) throw failure;
            for (const name of wanted)
                this.#engine.giveFile(name, await this.#load(name).catch(() => new Uint8Array()));
        }
    }
}

// An error as it is sent to another thread, and back.
export function packError(error) {
    if (error instanceof VxError) return { code: error.code, message: error.message };
    return { code: 'crashed', message: `the module ended: ${error?.message ?? error}` };
}

export const unpackError = ({ code, message }) => new VxError(code, message);
