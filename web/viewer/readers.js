// Readers that draw one drawing side by side. The module is compiled once for all of them.

import { createReader } from './package/index.js';

export const LARGE = 20 << 20; // bytes of a drawing, of which each reader has copies: then one has to do
const SLOW = 1 << 20; // bytes of one for which it pays to end a reader that is at work, and start another
const MOST_MEMORY = 2 ** 31; // of the reader that opens drawings, however large they are
const MINUTE = 60000;

export class Readers {
    #seats; // a reader, the drawing that is open in it, and whether it is at work
    #tasks = [];
    #bytes;
    #generation = 0;
    #most = 1;
    #call = {}; // the options of every call about the drawing
    #leaving = new AbortController();

    // onBusy(count): how many tasks there are.
    constructor(onBusy) {
        this.onBusy = onBusy;
        const count = Math.min(Math.max(navigator.hardwareConcurrency - 1, 2), 4);
        this.#seats = Array.from({ length: count }, (_, at) => ({
            reader: createReader(at === 0 ? { maxMemory: MOST_MEMORY } : {}), drawing: null, isBusy: false,
        }));
    }

    // Leaves the drawing that was open. The others open the new one when there is work for them.
    async open(bytes, { signal, onProgress }) {
        this.close();
        const generation = this.#generation;
        const [seat] = this.#seats;
        const timeout = bytes.length > LARGE ? 10 * MINUTE : MINUTE;
        this.#leaving = new AbortController();
        this.#call = { timeout, ...(bytes.length > SLOW ? { signal: this.#leaving.signal } : {}) };
        const drawing = await seat.reader.open(bytes, { signal, onProgress, timeout });
        if (generation !== this.#generation) {
            await drawing.close();
            throw new DOMException('another drawing was opened', 'AbortError');
        }
        seat.drawing = drawing;
        this.#bytes = bytes;
        this.#most = bytes.length > LARGE ? 1 : this.#seats.length;
        return { info: drawing.info, warnings: drawing.warnings, bytes: bytes.length };
    }

    close() {
        this.#generation += 1;
        this.#leaving.abort();
        for (const task of this.#tasks.splice(0)) task.reject(new DOMException('the drawing was closed', 'AbortError'));
        for (const seat of this.#seats) {
            seat.drawing?.close();
            seat.drawing = null;
        }
        this.#bytes = undefined;
        this.#tell();
    }

    // Drawings that are opened afterwards have the fonts. Those that cannot be read throw.
    async addFonts(files) {
        await Promise.all(this.#seats.map(({ reader }) => reader.addFonts(...files)));
    }

    // Has run(drawing, call) called when a reader is free; call is what each call about the drawing gets. Of those that wait, that with the
    // least rank() comes first, and one whose rank is Infinity is not wanted and is given up.
    do(run, rank = () => 0) {
        return new Promise((resolve, reject) => {
            this.#tasks.push({ run, rank, resolve, reject });
            this.#next();
        });
    }

    #next() {
        if (this.#bytes === undefined) return;
        const wanted = [];
        for (const task of this.#tasks) {
            const rank = task.rank();
            if (rank === Infinity) task.reject(new DOMException('not wanted', 'AbortError'));
            else wanted.push({ task, rank });
        }
        wanted.sort((a, b) => a.rank - b.rank);
        for (const seat of this.#seats.slice(0, this.#most)) {
            if (seat.isBusy) continue;
            const first = wanted.shift();
            if (first === undefined) break;
            this.#work(seat, first.task);
        }
        this.#tasks = wanted.map(({ task }) => task);
        this.#tell();
    }

    async #work(seat, { run, resolve, reject }) {
        seat.isBusy = true;
        const generation = this.#generation;
        try {
            if (seat.drawing === null) {
                const drawing = await seat.reader.open(this.#bytes, this.#call);
                if (generation !== this.#generation) {
                    await drawing.close();
                    throw new DOMException('the drawing was closed', 'AbortError');
                }
                seat.drawing = drawing;
            }
            resolve(await run(seat.drawing, this.#call));
        } catch (error) {
            reject(generation === this.#generation ? error : new DOMException('the drawing was closed', 'AbortError'));
        } finally {
            seat.isBusy = false;
            this.#next();
        }
    }

    #tell() {
        this.onBusy(this.#tasks.length + this.#seats.filter(({ isBusy }) => isBusy).length);
    }
}
