export type Source = Uint8Array | ArrayBuffer | ArrayBufferView | Blob | URL | string;

/** Points of 1/72 inch: left, bottom, right, top. */
export type Box = [number, number, number, number];

export type Code =
    | 'wrong-argument' | 'wrong-option' | 'cannot-read' | 'not-a-drawing' | 'malformed' | 'font-missing' | 'limit'
    | 'out-of-memory' | 'cannot-write' | 'stopped' | 'busy' | 'failed' | 'aborted' | 'timeout' | 'crashed' | 'closed';

export class VxError extends Error {
    readonly code: Code;
}

export interface Call {
    /** Ends the call, with the code "aborted". */
    signal?: AbortSignal;
    /** Milliseconds; then the call ends with "limit" or "timeout". 60,000 without it, Infinity for none. */
    timeout?: number;
    /** Bytes of the document that were read, and how many there are. When it returns false in a reader without a worker, the call ends. */
    onProgress?: (done: number, total: number) => boolean | void;
}

/** Options by the names of the command, as "dpi", "pdf-x" and "layers"; `createReader().about()` lists them. */
export type Option = string | number | boolean | Array<string | number> | null | undefined;

export interface CallWithOptions extends Call {
    [name: string]: Option | unknown;
}

export interface RenderCall extends CallWithOptions {
    format: 'pdf' | 'svg' | 'png' | 'tiff';
}

export interface PictureCall extends CallWithOptions {
    box?: Box;
    width?: number;
    height?: number;
    /** Whether it is to be an ImageBitmap. */
    bitmap?: boolean;
}

export interface OpenCall extends Call {
    /** Those of all calls about the drawing. */
    options?: Record<string, Option>;
}

export interface Layer {
    name: string;
    visible: boolean;
    preview: boolean;
    enabled: boolean;
    printing: boolean;
    dimmed: boolean;
    colour: [number, number, number];
    /** Its place in the list; -1: none. */
    parent: number;
}

export interface Ink {
    name: string;
    cmyk: [number, number, number, number];
    tints: [number, number];
    mixtures: number;
    plate: boolean;
}

export interface Font {
    asked: string;
    served: string;
    file: string;
    match: 'exact' | 'stand-in' | 'substitute' | 'missing';
    strings: number;
    characters: number;
    missingGlyphs: number;
}

/** Holds what the command's `info --json` tells; its manual page describes all of it. */
export interface Info {
    vx: boolean;
    version: number;
    title: string;
    creator: string;
    creationDate: string;
    box: Box;
    points: [number, number];
    millimetres: [number, number];
    monochrome: boolean;
    layers: Layer[];
    inks: Ink[];
    fonts: Font[];
    [member: string]: unknown;
}

export interface Text {
    /** The lines, each with a line end behind it. */
    text: string;
    [member: string]: unknown;
}

export interface Picture {
    width: number;
    height: number;
    /** Red, green, blue and alpha, a byte each. */
    data: Uint8ClampedArray;
}

export class Drawing {
    readonly info: Info;
    /** The same as text, to the letter what the command prints. */
    readonly json: string;
    readonly layers: Layer[];
    readonly inks: Ink[];
    readonly fonts: Font[];
    /** Lists what the last call told beside its result. */
    readonly warnings: string[];
    /** The bytes of a file. */
    render(call: RenderCall): Promise<Uint8Array>;
    picture(call: PictureCall & { bitmap: true }): Promise<ImageBitmap>;
    picture(call?: PictureCall): Promise<ImageData | Picture>;
    text(call?: CallWithOptions): Promise<Text[]>;
    /** The same with what is known of a text as JSON. */
    rawText(call?: CallWithOptions): Promise<{ lines: string; json: string }[]>;
    close(): Promise<void>;
}

export interface ReaderOptions {
    /** Whether drawings are read in a worker of the reader's own (true). Without one nothing can be ended by time. */
    worker?: boolean;
    /** The most bytes that the module may take: 2^30 without it, 2^31 at most. */
    maxMemory?: number;
    /** Whether the fonts of the package serve drawings (true). */
    bundledFonts?: boolean;
    /** Names the folder that these are in, with a slash at its end. */
    fontFolder?: string | URL;
    /** The module, where it does not lie beside the scripts. */
    wasm?: URL | ArrayBuffer | Uint8Array | WebAssembly.Module;
}

export interface About {
    version: string;
    formats: { name: string; mime: string }[];
    options: {
        name: string; value: string; choices: string[]; standard: string; formats: string[]; help: string;
        least: number; most: number;
    }[];
}

export class Reader {
    open(source: Source, call?: OpenCall): Promise<Drawing>;
    addFonts(...sources: Source[]): Promise<void>;
    about(): Promise<About>;
    fontList(): Promise<{ postscript: string; family: string; servedBy: string; file: string }[]>;
    /** The bytes that the module has taken. */
    memory(): Promise<number>;
    close(): void;
}

export function createReader(options?: ReaderOptions): Reader;
/** Opens a drawing with a reader that all such calls share. */
export function open(source: Source, call?: OpenCall): Promise<Drawing>;
/** Drawings that are opened afterwards have the fonts: OpenType or Type 1 files. */
export function addFonts(...sources: Source[]): Promise<void>;
