// The package on a page: Chromium opens one, with a strict policy, which sends back what it drew.

import assert from 'node:assert/strict';
import { spawn } from 'node:child_process';
import { createHash } from 'node:crypto';
import { existsSync } from 'node:fs';
import { mkdtemp, readFile, rm } from 'node:fs/promises';
import http from 'node:http';
import os from 'node:os';
import path from 'node:path';
import test from 'node:test';

import { PACKAGE, SOURCE, readerFor, sample } from './support.mjs';

const CHROMIUM = '/usr/bin/chromium';
const skip = existsSync(CHROMIUM) ? false : 'there is no chromium: install it';
const POLICY = "default-src 'none'; script-src 'self' 'wasm-unsafe-eval'; worker-src 'self'; connect-src 'self'";
const TYPES = { '.js': 'text/javascript', '.wasm': 'application/wasm', '.html': 'text/html' };

const PAGE = '<!doctype html><script type="module" src="/page.js"></script>';
const SCRIPT = `
import { createReader, open } from '/package/index.js';

const hex = async (bytes) => Array.from(new Uint8Array(await crypto.subtle.digest('SHA-256', bytes)), (byte) => byte.toString(16).padStart(2, '0')).join('');
const told = {};
try {
    const bytes = await (await fetch('/samples/text-area.vx')).arrayBuffer();
    const drawing = await open(new Blob([bytes]));
    told.title = drawing.info.title;
    for (const format of ['png', 'svg', 'pdf', 'tiff']) told[format] = await hex(await drawing.render({ format }));
    const pixels = await drawing.picture({ width: 50 });
    told.pixels = [pixels.constructor.name, pixels.width, await hex(pixels.data)];
    told.bitmap = (await drawing.picture({ width: 50, bitmap: true })).constructor.name;
    const here = createReader({ worker: false });
    told.here = await hex(await (await here.open(new URL('/samples/text-area.vx', location))).render({ format: 'png' }));
    const controller = new AbortController();
    const stopped = drawing.render({ format: 'png', dpi: 600, signal: controller.signal, onProgress: () => controller.abort() });
    told.aborted = await stopped.then(() => 'drawn', ({ code }) => code);
    told.again = await hex(await drawing.render({ format: 'svg' }));
    told.wrong = await open(new Uint8Array(3)).catch(({ code }) => code);
} catch (error) {
    told.error = String(error.stack ?? error);
}
await fetch('/told', { method: 'POST', body: JSON.stringify(told) });
`;

// A server of the package and the samples, and what it was asked for and told.
async function serve(t) {
    const asked = [];
    let tell;
    const told = new Promise((resolve) => (tell = resolve));
    const server = http.createServer(async (request, response) => {
        const { pathname } = new URL(request.url, 'http://localhost');
        asked.push(`${request.method} ${pathname}`);
        if (request.method === 'POST') {
            const body = await request.setEncoding('utf8').reduce((all, piece) => all + piece, '');
            response.end();
            return tell(JSON.parse(body));
        }
        const made = { '/': PAGE, '/page.js': SCRIPT }[pathname];
        const file = pathname.startsWith('/package/') ? path.join(PACKAGE, pathname.slice(9)) : path.join(SOURCE, pathname);
        const bytes = made ?? (await readFile(file).catch(() => null));
        const type = pathname === '/' ? 'text/html' : TYPES[path.extname(pathname)] ?? 'application/octet-stream';
        response.writeHead(bytes === null ? 404 : 200, { 'Content-Type': type, 'Content-Security-Policy': POLICY });
        return response.end(bytes ?? '');
    });
    await new Promise((resolve) => server.listen(0, '127.0.0.1', resolve));
    t.after(() => {
        server.closeAllConnections?.();
        server.close();
    });
    return { url: `http://127.0.0.1:${server.address().port}/`, told, asked };
}

test('a page draws the same bytes, and loads nothing but the package', { skip, timeout: 300000 }, async (t) => {
    const { url, told, asked } = await serve(t);
    const profile = await mkdtemp(path.join(os.tmpdir(), 'vx-'));
    const browser = spawn(CHROMIUM, ['--headless', '--no-sandbox', '--disable-gpu', '--no-first-run', '--disable-background-networking',
        `--user-data-dir=${profile}`, '--remote-debugging-port=0', url], { stdio: 'ignore' });
    t.after(async () => {
        const ended = new Promise((resolve) => browser.once('exit', resolve));
        browser.kill();
        await ended;
        await rm(profile, { recursive: true, force: true, maxRetries: 5, retryDelay: 200 });
    });
    const page = await told;
    assert.equal(page.error, undefined);

    const hex = (bytes) => createHash('sha256').update(bytes).digest('hex');
    const drawing = await readerFor(t).open(await sample('text-area.vx'));
    const { width, data } = await drawing.picture({ width: 50 });
    const svg = hex(await drawing.render({ format: 'svg' }));
    assert.deepEqual(page, {
        title: drawing.info.title,
        png: hex(await drawing.render({ format: 'png' })),
        svg,
        pdf: hex(await drawing.render({ format: 'pdf' })),
        tiff: hex(await drawing.render({ format: 'tiff' })),
        pixels: ['ImageData', width, hex(data)],
        bitmap: 'ImageBitmap',
        here: hex(await drawing.render({ format: 'png' })),
        aborted: 'aborted',
        again: svg,
        wrong: 'not-a-drawing',
    });
    const fonts = asked.filter((name) => name.endsWith('.otf'));
    assert.ok(fonts.length > 0 && fonts.length < 12, fonts.join(' '));
    for (const name of asked) assert.match(name, /^GET \/($|page\.js|package\/|samples\/|favicon)|^POST \/told$/);
});
