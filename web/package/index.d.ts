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

/** With `plates: ['Cyan', 'Gold']` a picture shows what these inks alone print, in their colours, or with 'plate-colours': 'gray' in gray. */
export interface PictureCall extends CallWithOptions {
    box?: Box;
    width?: number;
    height?: number;
    /** Whether it is to be an ImageBitmap. */
    bitmap?: boolean;
}

/** How much of each ink the pixels of a box have. */
export interface InkPixels {
    width: number;
    height: number;
    /** Cyan, Magenta, Yellow, Black, and each spot ink that the drawing paints with. */
    inks: string[];
    /** Of pixel x, y the byte at (y * width + x) * inks.length + i is that of inks[i]: 0 none, 255 full. Rows begin at the top. */
    data: Uint8Array;
}

export interface ObjectCall extends CallWithOptions {
    /** Points: lines that are thinner are found as if they were as wide as that (0.25). */
    within?: number;
}

/** Amounts are from 0 to 1. Gray is light: 0 is black. */
export interface Colour {
    gray?: number;
    /** Of a spot ink: what stands in for it. */
    cmyk?: [number, number, number, number];
    spot?: string;
    amount?: number;
    /** The other one of a blend of two spot inks. */
    spot2?: string;
    amount2?: number;
}

export interface PaintedObject {
    kind: 'fill' | 'stroke' | 'text' | 'blend';
    /** Of a blend it is that at the point. */
    colour: Colour;
    overprint: boolean;
    /** The innermost one; null: it is in none. */
    layer: string | null;
    printing: boolean;
    /** Around what the clip leaves of it. */
    box: Box;
    /** Of a stroke, points; 0 is the thinnest line that can be seen. */
    width?: number;
    /** Of a text: the characters that look the same, the fonts asked for and served, and the size in points. */
    text?: string;
    font?: string;
    served?: string;
    size?: number;
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

export interface TextLine {
    text: string;
    /** The left end of the baseline of its first character; of a column the middle of its upper edge. */
    origin: [number, number];
    /** To the next character: degrees against the clock, from the right. */
    angle: number;
    /** From the origin to the end of the last character, and an em of its largest characters, in points. */
    length: number;
    height: number;
    vertical: boolean;
    /** On a path, of each character: x, y and its angle. */
    places?: [number, number, number][];
    runs: { text: string; font: string; served: string; size: number; colour: Colour }[];
}

export interface Text {
    /** The lines, each with a line end behind it. */
    text: string;
    kind: 'point' | 'path' | 'area';
    layer: string | null;
    printing: boolean;
    box: Box;
    lines: TextLine[];
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
    inkPixels(call?: PictureCall): Promise<InkPixels>;
    /** The topmost object at a point, in the coordinates of the document's box; null: paper. */
    objectAt(x: number, y: number, call?: ObjectCall): Promise<PaintedObject | null>;
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
