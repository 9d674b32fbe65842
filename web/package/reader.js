// Readers and drawings, wherever they are: makeApi is given what differs between a page and Node.

import { VxError } from './errors.js';
import { Server, packError, unpackError } from './server.js';

const MOST_SECONDS = 60;
const GRACE = 1000; // milliseconds in which the library ends a call by itself, before its worker is ended

// A server on this thread: it can only be stopped where it looks, when it tells of its progress.
class Here {
    static async make(settings, { load }) {
        const here = new Here();
        here.server = await Server.make(settings, (name) => load(new URL(name, settings.fontFolder)));
        return here;
    }

    async call(method, args, onProgress) {
        try {
            return await this.server.answer(method, args, onProgress);
        } catch (error) {
            throw unpackError(packError(error));
        }
    }

    end() {}
}

// A server in a worker, which can be ended at any time.
class Elsewhere {
    #worker;
    #waiting = new Map();
    #last = 0;

    static async make(settings, { startWorker }) {
        const elsewhere = new Elsewhere();
        elsewhere.#worker = startWorker((message) => elsewhere.#take(message), (error) => elsewhere.#fail(error));
        await elsewhere.call('start', [settings]);
        return elsewhere;
    }

    call(method, args, onProgress) {
        const id = ++this.#last;
        this.#worker.setBusy(true);
        return new Promise((resolve, reject) => {
            this.#waiting.set(id, { resolve, reject, onProgress });
            this.#worker.post({ id, method, args, wantsProgress: onProgress !== undefined });
        });
    }

    end() {
        this.#worker.end();
    }

    #take({ id, result, error, progress }) {
        const request = this.#waiting.get(id);
        if (request === undefined) return;
        if (progress !== undefined) {
            request.onProgress(...progress);
            return;
        }
        this.#waiting.delete(id);
        if (this.#waiting.size === 0) this.#worker.setBusy(false);
        if (error === undefined) request.resolve(result);
        else request.reject(unpackError(error));
    }

    #fail(error) {
        for (const { reject } of this.#waiting.values()) reject(unpackError(packError(error)));
        this.#waiting.clear();
    }
}

export function makeApi(platform) {
    let compiled; // the module, for all readers
    const fontFolder = new URL('./fonts/', import.meta.url).href;

    async function compile(source) {
        if (source instanceof WebAssembly.Module) return source;
        const bytes = ArrayBuffer.isView(source) || source instanceof ArrayBuffer
            ? source
            : await platform.load(source ?? new URL('./vx.wasm', import.meta.url));
        return WebAssembly.compile(bytes);
    }

    async function bytesOf(source) {
        if (source instanceof Uint8Array) return source;
        if (ArrayBuffer.isView(source)) return new Uint8Array(source.buffer, source.byteOffset, source.byteLength);
        if (source instanceof ArrayBuffer) return new Uint8Array(source);
        if (typeof Blob === 'function' && source instanceof Blob) return new Uint8Array(await source.arrayBuffer());
        if (source instanceof URL) return platform.load(source);
        if (typeof source === 'string') return platform.load(platform.urlOf(source));
        throw new VxError('wrong-argument', 'the drawing is neither bytes, a Blob nor a URL: give one of them');
    }

    class Reader {
        #options;
        #server; // none before the first request, and after one that ended it
        #queue = Promise.resolve();
        #fonts = [];
        #drawings = 0;
        #closed = false;
        generation = 0; // of the server: what was open in one before is not in this

        constructor(options = {}) {
            this.#options = options;
        }

        // Opens a drawing and reads it to its end, so that all that is known of it is there.
        async open(source, { options = {}, ...call } = {}) {
            const bytes = await bytesOf(source);
            const drawing = new Drawing(this, ++this.#drawings, bytes.slice(), options);
            try {
                await drawing.read(call);
            } catch (error) {
                await drawing.close();
                throw error;
            }
            return drawing;
        }

        // Drawings that are opened from now on have the fonts.
        async addFonts(...sources) {
            for (const source of sources) {
                const font = (await bytesOf(source)).slice();
                await this.request({ method: 'addFont', args: [font] });
                this.#fonts.push(font);
            }
        }

        about = () => this.request({ method: 'about', args: [] });
        fontList = () => this.request({ method: 'fontList', args: [] });
        memory = () => this.request({ method: 'memory', args: [] });

        close() {
            this.#closed = true;
            this.#endServer();
        }

        // One after the other: the module does one thing at a time.
        request(task) {
            const turn = this.#queue.then(() => this.#answer(task));
            this.#queue = turn.catch(() => {});
            return turn;
        }

        // prepare: makes ready a server that has not seen the drawing.
        async #answer({ method, args, prepare, signal, timeout, onProgress }) {
            if (this.#closed) throw new VxError('closed', 'the reader is closed: make another');
            const aborted = () => new VxError('aborted', 'the call was aborted');
            if (signal?.aborted) throw aborted();
            let clock;
            let onAbort;
            const ended = new Promise((_, reject) => {
                onAbort = () => reject(aborted());
                signal?.addEventListener('abort', onAbort, { once: true });
                const seconds = timeout ?? MOST_SECONDS * 1000;
                const late = () => reject(new VxError('timeout', `the drawing took longer than ${seconds / 1000} s`));
                if (Number.isFinite(seconds)) clock = setTimeout(late, seconds + GRACE);
            });
            const tell = onProgress === undefined && signal === undefined
                ? undefined
                : (done, total) => onProgress?.(done, total) === false || signal?.aborted === true;
            try {
                const work = (async () => {
                    await this.#start();
                    if (this.#server === undefined) throw aborted();
                    if (prepare !== undefined) await prepare(this.#server);
                    return this.#server.call(method, args, tell);
                })();
                work.catch(() => {}); // that it failed after it was given up is nobody's business
                return await Promise.race([work, ended]);
            } catch (error) {
                if (['aborted', 'timeout', 'crashed', 'out-of-memory'].includes(error.code)) this.#endServer();
                throw signal?.aborted ? aborted() : error;
            } finally {
                clearTimeout(clock);
                signal?.removeEventListener('abort', onAbort);
            }
        }

        // One that is ended while it starts is not used.
        async #start() {
            if (this.#server !== undefined) return;
            const { wasm, maxMemory, bundledFonts = true, worker = true } = this.#options;
            const generation = ++this.generation;
            const module = await (wasm === undefined ? (compiled ??= compile()) : compile(wasm));
            const settings = {
                module, maxMemory, fonts: this.#fonts, bundled: bundledFonts,
                fontFolder: this.#options.fontFolder ?? fontFolder,
            };
            const server = await (worker ? Elsewhere : Here).make(settings, platform);
            if (generation === this.generation) this.#server = server;
            else server.end();
        }

        #endServer() {
            this.#server?.end();
            this.#server = undefined;
            this.generation += 1;
        }
    }

    class Drawing {
        #reader;
        #key;
        #bytes;
        #options; // of every call
        #generation = 0;
        #json = '{}';
        #info = {};
        #warnings = [];

        constructor(reader, key, bytes, options) {
            this.#reader = reader;
            this.#key = key;
            this.#bytes = bytes;
            this.#options = options;
        }

        get info() {
            return this.#info;
        }

        // The same as text.
        get json() {
            return this.#json;
        }

        get layers() {
            return this.#info.layers;
        }

        get inks() {
            return this.#info.inks;
        }

        get fonts() {
            return this.#info.fonts;
        }

        // The results of the last call.
        get warnings() {
            return this.#warnings;
        }

        async read(call) {
            this.#json = await this.#ask('info', [], {}, call);
            this.#info = JSON.parse(this.#json);
        }

        async render({ format, signal, timeout, onProgress, ...options }) {
            return this.#ask('render', [format], options, { signal, timeout, onProgress });
        }

        async text(options) {
            const texts = await this.rawText(options);
            return texts.map(({ lines, json }) => ({ ...JSON.parse(json), text: lines }));
        }

        // The same with what is known of a text as text.
        async rawText({ signal, timeout, onProgress, ...options } = {}) {
            return this.#ask('texts', [], options, { signal, timeout, onProgress });
        }

        // An ImageData where there is such a thing, else what has the same members; with bitmap: true an ImageBitmap.
        async picture({ box, width, height, bitmap = false, signal, timeout, onProgress, ...options } = {}) {
            const pixels = await this.#ask('picture', [{ box, width, height }], options, { signal, timeout, onProgress });
            if (typeof ImageData !== 'function') return pixels;
            const image = new ImageData(pixels.data, pixels.width, pixels.height);
            return bitmap ? createImageBitmap(image) : image;
        }

        // The gray pictures of all inks, each { ink, bytes }.
        async plates({ format = 'png', signal, timeout, onProgress, ...options } = {}) {
            return this.#ask('plates', [format], options, { signal, timeout, onProgress });
        }

        // Tells how much ink the page takes; with heatMap: true, a PNG of where that is.
        async coverage({ limit = 300, heatMap = false, signal, timeout, onProgress, ...options } = {}) {
            const told = await this.#ask('coverage', [{ limit, heatMap }], options, { signal, timeout, onProgress });
            return { ...JSON.parse(told.json), heatMap: told.heatMap };
        }

        // Tells what a press would get wrong; with html: true, a page of that.
        async check(call) {
            const { json, html } = await this.rawCheck(call);
            return { ...JSON.parse(json), html };
        }

        // The same as text: a line a finding, and JSON. name is that of the drawing, where one is to be told.
        async rawCheck({ name = '', limits, html = false, signal, timeout, onProgress, ...options } = {}) {
            const asked = { name, limits: typeof limits === 'object' ? JSON.stringify(limits) : limits ?? '', html };
            return this.#ask('check', [asked], options, { signal, timeout, onProgress });
        }

        // Tells how much of each ink the pixels of a box have: of pixel x, y the byte at (y * width + x) * inks.length + i of data is
        // that of inks[i], from 0 to 255.
        async inkPixels({ box, width, height, signal, timeout, onProgress, ...options } = {}) {
            return this.#ask('inkPixels', [{ box, width, height }], options, { signal, timeout, onProgress });
        }

        // The topmost object at a point of the page; null where there is paper.
        async objectAt(x, y, { within = 0.25, signal, timeout, onProgress, ...options } = {}) {
            const json = await this.#ask('objectAt', [{ x, y, within }], options, { signal, timeout, onProgress });
            return json === '' ? null : JSON.parse(json);
        }

        async close() {
            if (this.#bytes === undefined) return;
            this.#bytes = undefined;
            if (this.#generation === this.#reader.generation && this.#generation !== 0)
                await this.#reader.request({ method: 'close', args: [this.#key] }).catch(() => {});
        }

        async #ask(method, args, options, call) {
            if (this.#bytes === undefined) throw new VxError('closed', 'the drawing is closed: open it again');
            const seconds = call?.timeout === undefined ? undefined : Math.max(1, Math.ceil(call.timeout / 1000));
            const limits = Number.isFinite(seconds) ? { 'max-time': seconds } : {};
            const prepare = async (server) => {
                if (this.#generation === this.#reader.generation) return;
                await server.call('open', [this.#key, this.#bytes]);
                this.#generation = this.#reader.generation;
            };
            const all = { ...limits, ...this.#options, ...options };
            const answer = await this.#reader.request({ ...call, method, args: [this.#key, ...args, all], prepare });
            this.#warnings = answer.warnings;
            return answer.result;
        }
    }

    let shared;
    const reader = () => (shared ??= new Reader());
    return {
        createReader: (options) => new Reader(options),
        open: (source, options) => reader().open(source, options),
        addFonts: (...sources) => reader().addFonts(...sources),
    };
}
