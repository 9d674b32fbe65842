// The drawings of the list: how they are added and shown, and their small pictures.

import { createReader } from './package/index.js';
import { nameKind } from './opening.js';
import { LARGE } from './readers.js';
import { change, state } from './state.js';
import { say } from './texts.js';
import { fit } from './view.js';

const THUMBNAIL = 160;

export class Collection {
    #readers;
    #tell; // ({ text, detail }): of what could not be opened
    #opening = new AbortController();
    #sketcher; // the reader of small pictures
    #sketches = Promise.resolve();

    constructor(readers, tell) {
        this.#readers = readers;
        this.#tell = tell;
    }

    // Adds the sources to the list and shows the first of them.
    async add(sources) {
        const added = sources.map((source) => ({ ...source, picture: undefined, problem: undefined }));
        if (added.length === 0) return;
        change({ drawings: [...state.drawings, ...added] });
        await this.show(added[0]);
    }

    async show(entry) {
        this.#opening.abort();
        const opening = (this.#opening = new AbortController());
        change({ shown: entry, drawing: null, hidden: null, plates: null, heat: false, gray: false });
        this.#tell(null);
        change({ opening: { name: entry.name, part: 0 } });
        let bytes;
        try {
            bytes = await entry.read();
            if (opening.signal.aborted) return;
            const onProgress = (done, total) => change({ opening: { name: entry.name, part: total > 0 ? done / total : 0 } });
            const drawing = await this.#readers.open(bytes, { signal: opening.signal, onProgress });
            if (opening.signal.aborted) return;
            entry.problem = undefined;
            change({ drawing: { ...drawing, name: entry.name } });
            fit();
        } catch (error) {
            if (opening.signal.aborted || error.name === 'AbortError') return;
            this.#readers.close();
            entry.problem = describeFailure(entry.name, error, bytes);
            this.#tell(entry.problem);
            change({ drawings: [...state.drawings] });
        } finally {
            if (this.#opening === opening) change({ opening: null });
        }
    }

    // Shows the one that is so many behind.
    step(by) {
        const at = state.drawings.indexOf(state.shown) + by;
        if (state.drawings[at] !== undefined) this.show(state.drawings[at]);
    }

    // Gives up what is being read.
    cancel() {
        this.#opening.abort();
        this.#readers.close();
        state.shown.problem = { text: say('cancelled', { name: state.shown.name }) };
        this.#tell(state.shown.problem);
        change({ opening: null, drawings: [...state.drawings] });
    }

    // Drawings are opened anew, with fonts that have come.
    async refresh() {
        const { view, hidden, plates } = state;
        const entry = state.shown;
        await this.show(entry);
        if (state.shown === entry && state.drawing !== null) change({ view, hidden, plates });
    }

    // Resolves to the small picture of an entry, one after the other; undefined where there is none.
    sketch(entry) {
        this.#sketches = this.#sketches.then(() => this.#sketch(entry)).catch(() => undefined);
        return this.#sketches;
    }

    async #sketch(entry) {
        if (entry.picture !== undefined || entry.size > LARGE) return entry.picture;
        this.#sketcher ??= createReader();
        const drawing = await this.#sketcher.open(await entry.read(), { timeout: 20000 });
        try {
            entry.picture = await drawing.picture({ fit: THUMBNAIL * 2, background: 'white', bitmap: true });
        } finally {
            await drawing.close();
        }
        return entry.picture;
    }
}

// Says kindly what is wrong; detail has the words of the library.
function describeFailure(name, error, bytes) {
    const known = { malformed: 'problemMalformed', limit: 'problemLimit', timeout: 'problemLimit', 'out-of-memory': 'problemMemory', crashed: 'problemCrashed' };
    if (error.code === 'not-a-drawing') {
        const kind = nameKind(bytes);
        return { text: kind === undefined ? say('notADrawing', { name }) : say('otherKind', { name, kind }), detail: say('whatOpens') };
    }
    return { text: say(known[error.code] ?? 'problemReading', { name }), detail: error.message };
}
