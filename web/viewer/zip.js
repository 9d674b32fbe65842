// A zip archive of files that are stored as they are.

const CRC = Uint32Array.from({ length: 256 }, (_, byte) => {
    let crc = byte;
    for (let bit = 0; bit < 8; bit += 1) crc = (crc >>> 1) ^ (crc & 1 ? 0xedb88320 : 0);
    return crc;
});

function crc32(bytes) {
    let crc = -1;
    for (const byte of bytes) crc = (crc >>> 8) ^ CRC[(crc ^ byte) & 0xff];
    return ~crc >>> 0;
}

const UTF8_NAMES = 0x800;
const FIRST_DAY = 0x21; // 1980-01-01, the least date that there is

// fields: [bytes of the number, number]...
function record(...fields) {
    const bytes = new Uint8Array(fields.reduce((size, [width]) => size + width, 0));
    const view = new DataView(bytes.buffer);
    let at = 0;
    for (const [width, value] of fields) {
        if (width === 2) view.setUint16(at, value, true);
        else view.setUint32(at, value, true);
        at += width;
    }
    return bytes;
}

// files: { name, bytes } each.
export function makeZip(files) {
    const parts = [];
    const directory = [];
    let at = 0;
    for (const { name, bytes } of files) {
        const written = new TextEncoder().encode(name);
        const common = [[2, 20], [2, UTF8_NAMES], [2, 0], [2, 0], [2, FIRST_DAY], [4, crc32(bytes)], [4, bytes.length], [4, bytes.length], [2, written.length], [2, 0]];
        const local = record([4, 0x04034b50], ...common);
        parts.push(local, written, bytes);
        directory.push(record([4, 0x02014b50], [2, 20], ...common, [2, 0], [2, 0], [2, 0], [4, 0], [4, at]), written);
        at += local.length + written.length + bytes.length;
    }
    const size = directory.reduce((sum, { length }) => sum + length, 0);
    const end = record([4, 0x06054b50], [2, 0], [2, 0], [2, files.length], [2, files.length], [4, size], [4, at], [2, 0]);
    return new Blob([...parts, ...directory, end], { type: 'application/zip' });
}
