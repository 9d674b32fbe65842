// Files in Node: those of the machine by "file:" and by their names, others by the network.

import { readFile } from 'node:fs/promises';

import { VxError } from './errors.js';
import { load as fetchFile } from './files.js';

export async function load(url) {
    if (url instanceof URL && url.protocol !== 'file:') return fetchFile(url);
    try {
        const bytes = await readFile(url);
        return new Uint8Array(bytes.buffer, bytes.byteOffset, bytes.length);
    } catch (error) {
        throw new VxError('cannot-read', `${url}: ${error.code === 'ENOENT' ? 'there is no such file' : error.message}`);
    }
}
