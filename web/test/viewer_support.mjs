// The tests of the viewer share this: a server of its folder with the headers that its README asks for, and a browser.

import { execFile } from 'node:child_process';
import { existsSync } from 'node:fs';
import { readFile } from 'node:fs/promises';
import http from 'node:http';
import { createRequire } from 'node:module';
import path from 'node:path';
import { after } from 'node:test';
import { promisify } from 'node:util';

export const SOURCE = process.env.VX_SOURCE;
export const PACKAGE = process.env.VX_PACKAGE;
export const VIEWER = process.env.VX_VIEWER;
export const NATIVE = path.join(process.env.VX_FULL_BUILD, 'bin/vx');
const CHROMIUM = '/usr/bin/chromium';

export const run = promisify(execFile);
const tools = createRequire(path.join(process.env.VX_WEB_TOOLS, 'package.json'));
export const toolsPath = (name) => tools.resolve(name);
export const tool = (name) => tools(name);
const isThere = (name) => {
    try {
        return toolsPath(name) !== '';
    } catch {
        return false;
    }
};

export const noTool = (name) => (isThere(name) ? false : `there is no ${name}: ./check --web installs it`);
export const skip = existsSync(CHROMIUM) ? noTool('playwright-core') : 'there is no chromium: install it';
export const noNative = existsSync(NATIVE) ? skip : `there is no ${NATIVE}: build the release`;
export const sample = (name) => path.join(SOURCE, 'samples', name);

// With the fonts of the package the command draws what the page draws.
export const FONTS = ['--no-system-fonts', '--font-dir', path.join(PACKAGE, 'fonts')];
export const vx = (command, ...words) => run(NATIVE, [command, '--quiet', ...FONTS, ...words], { encoding: 'buffer', maxBuffer: 2 ** 28 });

const TYPES = {
    '.html': 'text/html; charset=utf-8', '.js': 'text/javascript', '.css': 'text/css', '.wasm': 'application/wasm', '.svg': 'image/svg+xml',
    '.webmanifest': 'application/manifest+json',
};

// files: what there is beside the viewer, by its path. Returns the address, and what was asked for.
export async function serve({ files = {} } = {}) {
    const policy = (await readFile(path.join(VIEWER, 'index.html'), 'utf8')).match(/Security-Policy" content="([^"]+)"/)[1];
    const asked = [];
    const held = new Set(); // connections that stay open
    const server = http.createServer(async (request, response) => {
        const { pathname } = new URL(request.url, 'http://localhost');
        asked.push(`${request.method} ${request.url}`);
        if (pathname === '/alive') {
            held.add(response);
            response.on('close', () => held.delete(response));
            response.writeHead(200, { 'Content-Type': 'text/event-stream' }).write(':\n\n');
            return;
        }
        const name = pathname === '/' ? 'index.html' : decodeURIComponent(pathname.slice(1));
        const bytes = files[name] ?? (await readFile(path.join(VIEWER, name)).catch(() => null));
        response.writeHead(bytes === null ? 404 : 200, {
            'Content-Type': TYPES[path.extname(name)] ?? 'application/octet-stream',
            'Content-Security-Policy': `${policy}; frame-ancestors 'none'`,
        });
        response.end(bytes ?? '');
    });
    await new Promise((resolve) => server.listen(0, '127.0.0.1', resolve));
    after(() => {
        server.closeAllConnections?.();
        server.close();
    });
    return { url: `http://127.0.0.1:${server.address().port}/`, asked, held };
}

export const browser = skip ? undefined : await tool('playwright-core').chromium.launch({ executablePath: CHROMIUM, args: ['--force-color-profile=srgb'] });
after(() => browser?.close());

// A page of the viewer. What it complains of fails the test.
export async function visit(t, url, { size = [1280, 800], ...options } = {}) {
    const context = await browser.newContext({ viewport: { width: size[0], height: size[1] }, locale: 'en-GB', ...options });
    const page = await context.newPage();
    page.setDefaultTimeout(120000); // for machines that have other work
    const complaints = [];
    page.on('pageerror', (error) => complaints.push(String(error.stack)));
    page.on('console', (message) => {
        if (['error', 'warning'].includes(message.type())) complaints.push(message.text());
    });
    t.after(async () => {
        await context.close();
        if (complaints.length > 0) throw new Error(`the page complained: ${complaints.join('\n')}`);
    });
    await page.goto(url);
    return page;
}

// Waits until all that is in sight is drawn in its own size.
export const sharp = (page) => page.waitForSelector('#picture[aria-busy="false"]', { timeout: 60000 });

// Waits until what was done is drawn, and nothing moves any more.
export async function settle(page) {
    await page.evaluate(async () => {
        const words = document.querySelector('#words');
        let before;
        for (let still = 0; still < 4; still += 1) {
            if (words.style.transform !== before) still = 0;
            before = words.style.transform;
            await new Promise((resolve) => requestAnimationFrame(resolve));
        }
    });
    await sharp(page);
}

export async function choose(page, ...files) {
    await page.setInputFiles('#choose-files', files);
    await sharp(page);
}

// A click on the panel that is shown would close it.
export async function showPanel(page, name) {
    const tab = page.locator(`#tab-${name}`);
    if ((await tab.getAttribute('aria-selected')) !== 'true') await tab.click();
}

// The pixels of the canvas for a script of the page: { width, height, data }.
export const readStage = (page) => page.evaluate(() => {
    globalThis.readStage = () => {
        const canvas = document.querySelector('#picture');
        const context = new OffscreenCanvas(canvas.width, canvas.height).getContext('2d');
        context.drawImage(canvas, 0, 0);
        return context.getImageData(0, 0, canvas.width, canvas.height);
    };
});

// The page of the drawing on the stage, in CSS pixels: its scale, and its left top corner.
export const viewOf = (page) => page.evaluate(() => {
    const { a, e, f } = new DOMMatrix(getComputedStyle(document.querySelector('#words')).transform);
    return { scale: a, x: e, y: f };
});

export async function setScale(page, percent) {
    const box = page.locator('#scale');
    await box.fill(String(percent));
    await box.press('Enter');
    await settle(page);
}

// Compares a screenshot of the stage with a PNG whose left top corner is at the given place of it: how many pixels are others, and of
// how many.
export async function differences(page, png, [left, top]) {
    const pictures = [await page.locator('#stage').screenshot(), png].map((bytes) => bytes.toString('base64'));
    return page.evaluate(async ({ pictures, left, top }) => {
        const [shown, wanted] = await Promise.all(pictures.map((bytes) => createImageBitmap(
            new Blob([Uint8Array.from(atob(bytes), (byte) => byte.charCodeAt(0))]), { colorSpaceConversion: 'none', premultiplyAlpha: 'none' })));
        const [x0, y0] = [Math.max(left, 0), Math.max(top, 0)];
        const [width, height] = [Math.min(left + wanted.width, shown.width) - x0, Math.min(top + wanted.height, shown.height) - y0];
        const pixelsOf = (picture, x, y) => {
            const context = new OffscreenCanvas(width, height).getContext('2d');
            context.drawImage(picture, -x, -y);
            return new Uint32Array(context.getImageData(0, 0, width, height).data.buffer);
        };
        const [a, b] = [pixelsOf(shown, x0, y0), pixelsOf(wanted, x0 - left, y0 - top)];
        return { others: a.reduce((sum, pixel, at) => sum + (pixel === b[at] ? 0 : 1), 0), compared: a.length };
    }, { pictures, left, top });
}

// The bytes of the file that a click saves.
export async function saved(page, click) {
    const [download] = await Promise.all([page.waitForEvent('download'), click()]);
    return { name: download.suggestedFilename(), bytes: await readFile(await download.path()) };
}
