// Makes the picture of the viewer that README shows: node picture_viewer.mjs VIEWER TOOLS SAMPLES OUT
// TOOLS is the folder with playwright-core.

import { readFile } from 'node:fs/promises';
import http from 'node:http';
import { createRequire } from 'node:module';
import path from 'node:path';

const [viewer, tools, samples, out] = process.argv.slice(2);
const { chromium } = createRequire(path.join(path.resolve(tools), 'package.json'))('playwright-core');

const SHOWN = ['layers', 'poster', 'open-book', 'butterfly', 'fireworks', 'harp', 'gift'];
const TYPES = { '.html': 'text/html', '.js': 'text/javascript', '.css': 'text/css', '.wasm': 'application/wasm', '.svg': 'image/svg+xml' };

const server = http.createServer(async (request, response) => {
    const name = decodeURIComponent(new URL(request.url, 'http://localhost').pathname).slice(1) || 'index.html';
    const bytes = await readFile(path.join(viewer, name)).catch(() => null);
    response.writeHead(bytes === null ? 404 : 200, { 'Content-Type': TYPES[path.extname(name)] ?? 'application/octet-stream' });
    response.end(bytes ?? '');
});
await new Promise((resolve) => server.listen(0, '127.0.0.1', resolve));
const browser = await chromium.launch({ executablePath: '/usr/bin/chromium', args: ['--force-color-profile=srgb'] });
const page = await browser.newPage({ viewport: { width: 1100, height: 680 }, locale: 'en-GB', serviceWorkers: 'block' });
await page.goto(`http://127.0.0.1:${server.address().port}/`);
await page.setInputFiles('#choose-files', SHOWN.map((name) => path.join(samples, `${name}.vx`)));
await page.waitForFunction(() => document.querySelectorAll('#drawings .there').length > 5);
await page.waitForSelector('#picture[aria-busy="false"]');
const { x, y, width, height } = await page.locator('#stage').boundingBox();
await page.mouse.move(x + width * 0.55, y + height * 0.4);
await page.waitForSelector('#status .ink');
await page.waitForTimeout(500);
await page.screenshot({ path: out });
await browser.close();
server.close();
