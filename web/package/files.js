// Files where there is a network: what a page may fetch.

import { VxError } from './errors.js';

export async function load(url) {
    const response = await fetch(url).catch((error) => {
        throw new VxError('cannot-read', `${url}: ${error.message}`);
    });
    if (!response.ok) throw new VxError('cannot-read', `${url}: the server answered ${response.status}`);
    return new Uint8Array(await response.arrayBuffer());
}
