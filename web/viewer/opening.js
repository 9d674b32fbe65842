// Files, from wherever they come: the dialog, a drop, the clipboard, an address. A source is { name, modified, size, read() → bytes },
// where modified is a time in seconds and size may not be known; it reads its bytes when they are wanted.

const DRAWINGS = /\.(vx|eps|epsf|gz|xz|bin)$/i;
const FONTS = /\.(otf|ttf|ttc|otc|pfb|pfa)$/i;
const MOST_FILES = 2000; // of a folder
const HEAD = 4;

const bytesOf = async (blob) => new Uint8Array(await blob.arrayBuffer());
const sourceOf = (file) => ({ name: file.name, modified: Math.floor(file.lastModified / 1000), size: file.size, read: () => bytesOf(file) });

export const isFont = ({ name }) => FONTS.test(name);

// Only what looks like a drawing is taken of a folder, by its name or by how it begins.
async function looksLikeDrawing(file) {
    if (DRAWINGS.test(file.name)) return true;
    const head = await bytesOf(file.slice(0, HEAD));
    return String.fromCharCode(...head.slice(0, 2)) === '%!' || (head[0] === 0xc5 && head[1] === 0xd0);
}

async function drawingsOf(files) {
    const taken = [];
    for (const file of files) {
        if (taken.length === MOST_FILES) break;
        if (await looksLikeDrawing(file)) taken.push(file);
    }
    return taken.sort((a, b) => a.name.localeCompare(b.name, undefined, { numeric: true }));
}

const entriesOf = (folder) => {
    const reader = folder.createReader();
    return new Promise((resolve, reject) => reader.readEntries(resolve, reject)).then(async function more(some) {
        if (some.length === 0) return [];
        return [...some, ...(await new Promise((resolve, reject) => reader.readEntries(resolve, reject)).then(more))];
    });
};

async function filesBelow(folder, found = []) {
    for (const entry of await entriesOf(folder)) {
        if (found.length === MOST_FILES) break;
        if (entry.isDirectory) await filesBelow(entry, found);
        else found.push(await new Promise((resolve, reject) => entry.file(resolve, reject)));
    }
    return found;
}

// Returns the sources of a drop, which may have folders among them.
export async function sourcesOfDrop(transfer) {
    const entries = [...transfer.items].map((item) => item.webkitGetAsEntry?.()).filter(Boolean);
    const folders = entries.filter(({ isDirectory }) => isDirectory);
    if (folders.length === 0) return sourcesOfFiles(transfer.files);
    const single = [...transfer.files].filter(({ name }) => !folders.some((folder) => folder.name === name));
    const below = [];
    for (const folder of folders) below.push(...(await drawingsOf(await filesBelow(folder))));
    return [...single, ...below].map(sourceOf);
}

export const sourcesOfFiles = (files) => [...files].map(sourceOf);
export const sourcesOfFolder = async (files) => (await drawingsOf(files)).map(sourceOf);

// A drawing may also be pasted as its text, a byte a character.
export function sourcesOfPaste(clipboard, name) {
    if (clipboard.files.length > 0) return sourcesOfFiles(clipboard.files);
    const text = clipboard.getData('text/plain');
    if (!text.startsWith('%!')) return [];
    return [{ name, read: async () => Uint8Array.from(text, (character) => character.charCodeAt(0)) }];
}

// Returns a file of the page's own server; undefined for one of another.
export function sourceOfAddress(address) {
    const url = new URL(address, globalThis.location.href);
    if (url.origin !== globalThis.location.origin) return undefined;
    return {
        name: decodeURIComponent(url.pathname.split('/').pop()) || url.pathname,
        read: async () => {
            const response = await fetch(url);
            if (!response.ok) throw new Error(`${response.status} ${response.statusText}`);
            return bytesOf(await response.blob());
        },
    };
}

// Names what a file is that is no drawing, by how it begins; undefined where that is not known.
export function nameKind(bytes) {
    const head = String.fromCharCode(...bytes.subarray(0, 12));
    const kinds = [
        [/^%PDF/, 'PDF'], [/^\x89PNG/, 'PNG'], [/^\xff\xd8\xff/, 'JPEG'], [/^GIF8/, 'GIF'], [/^(II\*\0|MM\0\*)/, 'TIFF'], [/^PK/, 'ZIP'],
        [/^RIFF....WEBP/s, 'WebP'], [/^8BPS/, 'PSD'], [/^\s*<(\?xml|svg)/, 'SVG'], [/^\s*<(!doctype|html)/i, 'HTML'],
        [/^(\xc5\xd0\xd3\xc6|%!PS)/, 'PostScript'],
    ];
    return kinds.find(([pattern]) => pattern.test(head))?.[1];
}
