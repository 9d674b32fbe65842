// Drawings that "vx view" hands over: it serves this page with "?served" behind its address, a list of the drawings, and a connection
// that tells it how long the page is open.

import { sourceOfAddress } from './opening.js';

export const isServed = () => new URL(globalThis.location.href).searchParams.has('served');

export async function takeServed() {
    const alive = new EventSource('alive');
    addEventListener('pagehide', () => alive.close());
    const response = await fetch('drawings.json');
    if (!response.ok) throw new Error(`drawings.json: ${response.status}`);
    return (await response.json()).map(({ name, url }) => ({ ...sourceOfAddress(url), name }));
}
