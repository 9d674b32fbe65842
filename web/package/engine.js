// One instance of the module. Everything here runs at once, on the thread that calls it.

import { VxError, codeOf } from './errors.js';

// The interface of vx.h, and what its records look like in the module.
const INTERFACE = 2;
const ERROR_SIZE = 504;
const ERROR_TEXT = 8;
const PIXELS_SIZE = 56;
const INKS_SIZE = 64;
const OPTION_SIZE = 48;
const FORMAT_SIZE = 12;
const FONT_SIZE = 28;
const OK = 0;
const COPY = 0;

const PAGE = 65536;
const LEAST_PAGES = 256;
export const MOST_MEMORY = 2 ** 31;

const encoder = new TextEncoder();
const decoder = new TextDecoder();

// "dpi: 300" as the library takes it: true is "yes", and of several values a list is made; no value at all is "none".
function textOf(value) {
    if (value === true) return 'yes';
    if (value === false) return 'no';
    if (!Array.isArray(value)) return String(value);
    return value.map((one) => String(one).replace(/[\\,]/g, '\\$&')).join(',') || 'none';
}

export class Engine {
    #exports;
    #memory;
    #error; // the record that every call fills
    #library = 0;
    #documents = new Map(); // a key of the caller's, and the address of the document and its library
    #libraries = new Map(); // how many documents each has, for those that are open or current
    #fonts = []; // what was added
    #write = () => 1;
    #text = () => 1;
    #plate = () => 1;
    #progress = () => 0;

    static async make(module, { maxMemory = 2 ** 30, rows = '' } = {}) {
        const engine = new Engine();
        const maximum = Math.min(Math.max(Math.ceil(maxMemory / PAGE), LEAST_PAGES), MOST_MEMORY / PAGE);
        engine.#memory = new WebAssembly.Memory({ initial: LEAST_PAGES, maximum });
        const instance = await WebAssembly.instantiate(module, engine.#imports());
        engine.#exports = instance.exports;
        engine.#exports._initialize?.();
        engine.#error = engine.#allocate(ERROR_SIZE);
        engine.#view().setUint32(engine.#error, ERROR_SIZE, true);
        engine.#with([rows], (text) => engine.#exports.vx_web_set_rows(text));
        return engine;
    }

    get version() {
        return this.#textAt(this.#exports.vx_version());
    }

    // The bytes that the instance has taken so far; it never gives any back.
    get memory() {
        return this.#memory.buffer.byteLength;
    }

    get formats() {
        return this.#records(this.#exports.vx_format_count(), FORMAT_SIZE, this.#exports.vx_format_at, (at) => ({
            name: this.#textOf(at, 4),
            mime: this.#textOf(at, 8),
        }));
    }

    get options() {
        return this.#records(this.#exports.vx_option_count(), OPTION_SIZE, this.#exports.vx_option_at, (at) => ({
            name: this.#textOf(at, 4),
            value: this.#textOf(at, 8),
            choices: this.#textOf(at, 12).split(',').filter(Boolean),
            standard: this.#textOf(at, 16),
            formats: this.#textOf(at, 20).split(',').filter(Boolean),
            help: this.#textOf(at, 24),
            least: this.#view().getFloat64(at + 32, true),
            most: this.#view().getFloat64(at + 40, true),
        }));
    }

    // The fonts that there are, given and bundled, in the order in which they are searched.
    get fontList() {
        const library = this.#currentLibrary();
        const count = this.#allocate(4);
        try {
            this.#check(this.#exports.vx_library_font_count(library, count, this.#error));
            const at = (index, record, error) => this.#exports.vx_library_font_at(library, index, record, error);
            return this.#records(this.#view().getUint32(count, true), FONT_SIZE, at, (font) => ({
                postscript: this.#textOf(font, 4),
                family: this.#textOf(font, 8),
                servedBy: this.#textOf(font, 12),
                file: this.#textOf(font, 16),
            }));
        } finally {
            this.#exports.free(count);
        }
    }

    // Documents that are opened from now on have the font.
    addFont(bytes) {
        const trial = this.#makeLibrary([bytes]);
        this.#exports.vx_library_free(trial);
        this.#fonts.push(bytes);
        this.#leaveLibrary();
    }

    // Returns what a list has to know of the fonts in a file, as set by rows.
    rowsOf(name, bytes) {
        return this.#with([name, bytes], (file, address, size) =>
            this.#textAt(this.#exports.vx_web_rows_of(file, address, size)));
    }

    // The names of the font files that were asked for since the last call, and are not there.
    takeWanted() {
        return this.#textAt(this.#exports.vx_web_wanted()).split('\n').filter(Boolean);
    }

    giveFile(name, bytes) {
        this.#with([name, bytes], (...at) => this.#exports.vx_web_give_file(...at));
    }

    open(key, bytes) {
        const library = this.#currentLibrary();
        const document = this.#pointerFrom((to) =>
            this.#with([bytes], (address, size) =>
                this.#exports.vx_document_open_bytes(library, address, size, COPY, to, this.#error)));
        this.#documents.set(key, { document, library });
        this.#libraries.set(library, this.#libraries.get(library) + 1);
    }

    close(key) {
        const opened = this.#documents.get(key);
        if (opened === undefined) return;
        this.#documents.delete(key);
        this.#exports.vx_document_free(opened.document);
        this.#release(opened.library);
    }

    has(key) {
        return this.#documents.has(key);
    }

    // Each of the following reads the document with the options, of which none stays. onProgress(done, total) ends the call
    // when it returns true.

    // As JSON.
    info(key, options, onProgress) {
        return this.#read(key, options, onProgress, (document) =>
            this.#textAt(this.#pointerFrom((to) => this.#exports.vx_document_json(document, to, this.#error))));
    }

    render(key, format, options, onProgress) {
        return this.#read(key, options, onProgress, (document) => {
            const written = this.#collect();
            this.#with([format], (name) => this.#check(this.#exports.vx_web_render(document, name, this.#error)));
            return written();
        });
    }

    // The file of each ink.
    plates(key, format, options, onProgress) {
        return this.#read(key, options, onProgress, (document) => {
            const plates = [];
            this.#plate = (ink, address, size) => {
                plates.push({ ink: this.#textAt(ink), bytes: this.#bytes(address, size).slice() });
                return 0;
            };
            this.#with([format], (name) => this.#check(this.#exports.vx_web_plates(document, name, this.#error)));
            return plates;
        });
    }

    coverage(key, { limit, heatMap }, options, onProgress) {
        return this.#read(key, options, onProgress, (document) => {
            const written = this.#collect();
            const json = this.#textAt(this.#pointerFrom((to) =>
                this.#exports.vx_web_coverage(document, limit, heatMap ? 1 : 0, to, this.#error)));
            return { json, heatMap: heatMap ? written() : undefined };
        });
    }

    // limits: as JSON; empty for those that hold without.
    check(key, { name, limits, html }, options, onProgress) {
        return this.#read(key, options, onProgress, (document) => {
            const written = this.#collect();
            const told = this.#allocate(8);
            try {
                this.#with([name, limits], (...at) =>
                    this.#check(this.#exports.vx_web_check(document, ...at, html ? 1 : 0, told, this.#error)));
                return { text: this.#textOf(told, 0), json: this.#textOf(told, 4), html: html ? written() : undefined };
            } finally {
                this.#exports.free(told);
            }
        });
    }

    // The lines of each text, and all that is known of it, as JSON.
    texts(key, options, onProgress) {
        return this.#read(key, options, onProgress, (document) => {
            const texts = [];
            this.#text = (lines, json) => {
                texts.push({ lines: this.#textAt(lines), json: this.#textAt(json) });
                return 0;
            };
            this.#check(this.#exports.vx_web_texts(document, this.#error));
            return texts;
        });
    }

    // box: left, bottom, right, top in points; without it that of the options or the document.
    picture(key, { box, width, height }, options, onProgress) {
        return this.#read(key, options, onProgress, (document) => {
            const size = this.#sizeOf(document, box, width, height);
            const stride = size.width * 4;
            const pixels = this.#allocate(stride * size.height);
            const record = this.#pixelRecord(PIXELS_SIZE, box, size);
            try {
                this.#bytes(pixels, stride * size.height).fill(0);
                const view = this.#view();
                view.setUint32(record + 48, pixels, true);
                view.setInt32(record + 52, stride, true);
                this.#check(this.#exports.vx_document_pixels(document, record, this.#error));
                return { ...size, data: new Uint8ClampedArray(this.#bytes(pixels, stride * size.height)) };
            } finally {
                this.#exports.free(record);
                this.#exports.free(pixels);
            }
        });
    }

    // Tells how much of each ink the pixels of such a picture have: the inks of a pixel beside each other, a byte each.
    inkPixels(key, { box, width, height }, options, onProgress) {
        return this.#read(key, options, onProgress, (document) => {
            const size = this.#sizeOf(document, box, width, height);
            const record = this.#pixelRecord(INKS_SIZE, box, size);
            try {
                this.#check(this.#exports.vx_document_inks(document, record, this.#error));
                const view = this.#view();
                const names = view.getUint32(record + 48, true);
                const count = view.getUint32(record + 52, true);
                const inks = Array.from({ length: count }, (_, i) => this.#textOf(names, 4 * i));
                const data = this.#bytes(view.getUint32(record + 56, true), size.width * size.height * count).slice();
                return { ...size, inks, data };
            } finally {
                this.#exports.free(record);
            }
        });
    }

    // As JSON; empty where there is paper.
    objectAt(key, { x, y, within }, options, onProgress) {
        return this.#read(key, options, onProgress, (document) =>
            this.#textAt(this.#pointerFrom((to) =>
                this.#exports.vx_document_object_at(document, x, y, within, to, this.#error))));
    }

    // The last call about the document had this to tell beside its result.
    warnings(key) {
        const { document } = this.#documents.get(key);
        const count = this.#exports.vx_document_warning_count(document);
        return Array.from({ length: count }, (_, i) => this.#textAt(this.#exports.vx_document_warning_at(document, i)));
    }

    #read(key, options = {}, onProgress, read) {
        const { document } = this.#documents.get(key);
        const set = [];
        try {
            for (const [name, value] of Object.entries(options)) {
                if (value === undefined || value === null || (name === 'hide' && value.length === 0)) continue;
                this.#set(document, name, textOf(value));
                set.push(name);
            }
            this.#progress = inSteps(onProgress);
            this.#check(this.#exports.vx_web_tell_progress(document, onProgress === undefined ? 0 : 1, this.#error));
            return read(document);
        } finally {
            // The last that was set goes first: no two of them then stand against each other.
            for (const name of set.reverse()) this.#set(document, name, null);
            this.#write = this.#text = this.#plate = () => 1;
        }
    }

    // From now on the bytes that are written are kept. Returns what gives them back.
    #collect() {
        const pieces = [];
        this.#write = (address, size) => {
            pieces.push(this.#bytes(address, size).slice());
            return 0;
        };
        return () => joined(pieces);
    }

    #set(document, name, value) {
        this.#with([name], (nameAt) => {
            if (value === null) this.#check(this.#exports.vx_document_set(document, nameAt, 0, this.#error));
            else this.#with([value], (valueAt) =>
                this.#check(this.#exports.vx_document_set(document, nameAt, valueAt, this.#error)));
        });
    }

    #sizeOf(document, box, width, height) {
        if (width !== undefined && height !== undefined) return { width, height };
        const to = this.#allocate(8);
        try {
            if (width !== undefined) this.#set(document, 'width', width);
            if (height !== undefined) this.#set(document, 'height', height);
            if (box !== undefined) this.#set(document, 'box', box.join(','));
            this.#check(this.#exports.vx_document_size(document, to, to + 4, this.#error));
            const view = this.#view();
            return { width: view.getInt32(to, true), height: view.getInt32(to + 4, true) };
        } finally {
            if (box !== undefined) this.#set(document, 'box', null);
            if (height !== undefined) this.#set(document, 'height', null);
            if (width !== undefined) this.#set(document, 'width', null);
            this.#exports.free(to);
        }
    }

    // Holds what records of pixels have in common.
    #pixelRecord(bytes, box = [0, 0, 0, 0], { width, height }) {
        const record = this.#allocate(bytes);
        const view = this.#view();
        view.setUint32(record, bytes, true);
        [0, 1, 2, 3].forEach((i) => view.setFloat64(record + 8 + 8 * i, box[i], true));
        view.setInt32(record + 40, width, true);
        view.setInt32(record + 44, height, true);
        return record;
    }

    // The library for documents that are opened now.
    #currentLibrary() {
        if (this.#library === 0) {
            this.#library = this.#makeLibrary(this.#fonts);
            this.#libraries.set(this.#library, 1);
        }
        return this.#library;
    }

    // Fonts cannot be added to a library once it has documents.
    #leaveLibrary() {
        const left = this.#library;
        this.#library = 0;
        if (left !== 0) this.#release(left);
    }

    #release(library) {
        const users = this.#libraries.get(library) - 1;
        this.#libraries.set(library, users);
        if (users > 0) return;
        this.#libraries.delete(library);
        this.#exports.vx_library_free(library);
    }

    #makeLibrary(fonts) {
        const library = this.#pointerFrom((to) => this.#exports.vx_library_create(INTERFACE, to, this.#error));
        try {
            for (const font of fonts)
                this.#with([font], (address, size) =>
                    this.#check(this.#exports.vx_library_add_font(library, address, size, this.#error)));
        } catch (error) {
            this.#exports.vx_library_free(library);
            throw error;
        }
        return library;
    }

    #check(status) {
        if (status === OK) return;
        throw new VxError(codeOf(status), this.#textAt(this.#error + ERROR_TEXT));
    }

    #allocate(size) {
        const address = this.#exports.malloc(Math.max(size, 1)) >>> 0;
        if (address === 0) throw new VxError('out-of-memory', `there is no memory for ${size} bytes`);
        return address;
    }

    // Puts texts, which end with NUL, and bytes, which are followed by their number, into the module for one call.
    #with(values, call) {
        const addresses = [];
        const taken = [];
        try {
            for (const value of values) {
                const isText = typeof value === 'string' || typeof value === 'number';
                const bytes = isText ? encoder.encode(`${value}\0`) : value;
                const address = this.#allocate(bytes.length);
                taken.push(address);
                this.#bytes(address, bytes.length).set(bytes);
                addresses.push(address, ...(isText ? [] : [bytes.length]));
            }
            return call(...addresses);
        } finally {
            for (const address of taken) this.#exports.free(address);
        }
    }

    #pointerFrom(call) {
        const to = this.#allocate(4);
        try {
            this.#check(call(to));
            return this.#view().getUint32(to, true);
        } finally {
            this.#exports.free(to);
        }
    }

    #records(count, size, at, read) {
        const record = this.#allocate(size);
        try {
            return Array.from({ length: count }, (_, i) => {
                this.#view().setUint32(record, size, true);
                this.#check(at(i, record, this.#error));
                return read(record);
            });
        } finally {
            this.#exports.free(record);
        }
    }

    // A view is made anew each time: when the memory grows, those before it are empty.
    #view() {
        return new DataView(this.#memory.buffer);
    }

    #bytes(address, size) {
        return new Uint8Array(this.#memory.buffer, address >>> 0, size);
    }

    #textOf(record, offset) {
        return this.#textAt(this.#view().getUint32(record + offset, true));
    }

    #textAt(address) {
        const start = address >>> 0;
        if (start === 0) return '';
        const bytes = new Uint8Array(this.#memory.buffer);
        return decoder.decode(bytes.subarray(start, bytes.indexOf(0, start)));
    }

    // The module asks for a clock, and for somebody who hears that it gives up. It has no files: those that the libraries
    // would open are not there.
    #imports() {
        const notThere = () => 52; // as WASI says that a call is not known
        const clock = (id, precision, to) => {
            const now = id === 0 ? Date.now() : performance.now();
            this.#view().setBigUint64(to, BigInt(Math.round(now * 1e6)), true);
            return 0;
        };
        const environment = (count, size) => {
            this.#view().setUint32(count, 0, true);
            this.#view().setUint32(size, 0, true);
            return 0;
        };
        let high = 0;
        return {
            vx: {
                write: (address, size) => this.#write(address, size),
                text: (lines, json) => this.#text(lines, json),
                plate: (ink, address, size) => this.#plate(ink, address, size),
                progress: (done, total) => (this.#progress(done, total) === true ? 1 : 0),
            },
            env: {
                memory: this.#memory,
                emscripten_notify_memory_growth: () => {},
                getTempRet0: () => high,
                setTempRet0: (value) => {
                    high = value;
                },
                __syscall_unlink: () => -1,
                __syscall_rmdir: () => -1,
            },
            wasi_snapshot_preview1: {
                clock_time_get: clock,
                environ_sizes_get: environment,
                environ_get: () => 0,
                fd_close: notThere,
                fd_read: notThere,
                fd_seek: notThere,
                fd_write: notThere,
                proc_exit: () => {
                    throw new VxError('crashed', 'the module gave up');
                },
            },
        };
    }
}

// The module tells of each line; whoever listens hears of some two hundred steps.
function inSteps(tell) {
    let next = 0;
    return (done, total) => {
        if (done < next && done < total && done > 0) return false;
        next = done + total / 200;
        return tell(done, total);
    };
}

function joined(pieces) {
    const all = new Uint8Array(pieces.reduce((size, piece) => size + piece.length, 0));
    let at = 0;
    for (const piece of pieces) {
        all.set(piece, at);
        at += piece.length;
    }
    return all;
}
