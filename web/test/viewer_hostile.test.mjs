// Drawings of strangers and large ones in the viewer: the page lives on, and says what is wrong.

import assert from 'node:assert/strict';
import { mkdtemp, open, readFile, readdir, rm } from 'node:fs/promises';
import os from 'node:os';
import path from 'node:path';
import test from 'node:test';

import { SOURCE, choose, sample, serve, settle, sharp, showPanel, skip, viewOf, visit } from './viewer_support.mjs';

const { url } = skip ? {} : await serve();
const LARGE = 100e6; // bytes

const asFile = (name, text) => ({ name, mimeType: '', buffer: Buffer.from(text, 'latin1') });
const head = async () => (await readFile(sample('paths.vx'), 'latin1')).split(/(?<=%%EndSetup\n)/)[0];

test('names in a document are no markup', { skip }, async (t) => {
    const evil = '<img src=x onerror=alert(1)>';
    const text = (await readFile(sample('layers.vx'), 'latin1')).replaceAll('Kite', evil).replaceAll('(layers)', `(${evil})`);
    const page = await visit(t, url);
    await choose(page, asFile(`${evil}.vx`, text));
    assert.equal(await page.textContent('#title'), evil);
    assert.equal(await page.locator('#panel-layers .name').first().textContent(), evil);
    await showPanel(page, 'facts');
    assert.equal(await page.locator('img').count(), 1, 'the one for paper');
});

test('a layer whose name has a comma, or none, is hidden like others', { skip }, async (t) => {
    const text = (await readFile(sample('layers.vx'), 'latin1')).replaceAll('(Kite)', '(Kite, red\\\\\\\\)').replaceAll('(Guides)', '()');
    const page = await visit(t, url);
    await choose(page, asFile('names.vx', text));
    const boxes = page.locator('#panel-layers input');
    for (let at = 0; at < 3; at += 1)
        for (let turn = 0; turn < 2; turn += 1) {
            await boxes.nth(at).click();
            await settle(page);
            assert.equal(await page.isVisible('#notice'), false, await page.textContent('#notice'));
        }
    for (const name of ['None', 'All']) {
        await page.getByRole('button', { name, exact: true }).click();
        await settle(page);
        assert.equal(await page.isVisible('#notice'), false, await page.textContent('#notice'));
    }
});

test('what was found by fuzzing, and documents that are cut anywhere, leave the page alive', { skip, timeout: 240000 }, async (t) => {
    const page = await visit(t, url);
    const finds = path.join(SOURCE, 'fuzz/finds');
    const files = (await readdir(finds)).map((name) => path.join(finds, name));
    const whole = await readFile(sample('text-area.vx'), 'latin1');
    const cuts = [40, 200, 400, 700, whole.length - 12].map((length) => asFile(`cut-${length}.vx`, whole.slice(0, length)));
    await page.setInputFiles('#choose-files', [...await Promise.all(files.map(async (file) => asFile(path.basename(file), await readFile(file, 'latin1')))), ...cuts]);
    const buttons = page.locator('#drawings button');
    for (let at = 0; at < await buttons.count(); at += 1) {
        await buttons.nth(at).click();
        await page.waitForSelector('#notice:not([hidden]), #picture[aria-busy="false"]', { timeout: 60000 });
    }
    await choose(page, sample('poster.vx'));
    await page.waitForFunction(() => document.title.startsWith('poster'));
});

test('a page of no size, and one as large as numbers get, are told or shown', { skip }, async (t) => {
    const text = await readFile(sample('paths.vx'), 'latin1');
    const page = await visit(t, url);
    for (const box of ['0 0 0 0', '0 0 1 100000', '-1e30 -1e30 1e30 1e30', '0 0 0.0001 0.0001', '5 5 1 1']) {
        await page.setInputFiles('#choose-files', asFile(`${box}.vx`, text.replace(/BoundingBox: .*/g, `BoundingBox: ${box}`)));
        await page.waitForFunction((name) => document.querySelector('#drawings li:last-child .name, #title')?.textContent !== undefined
            && (!document.querySelector('#notice').hidden || document.querySelector('#picture').getAttribute('aria-busy') === 'false'), box, { timeout: 60000 });
    }
    await choose(page, sample('poster.vx'));
    assert.equal(await page.isVisible('#notice'), false);
});

test('opening can be left for another drawing', { skip }, async (t) => {
    const page = await visit(t, url);
    const squares = `${await head()}${'0 0 m 50 0 l 50 50 l 0 50 l f\n'.repeat(2000000)}`;
    await page.setInputFiles('#choose-files', asFile('long.vx', squares));
    await page.setInputFiles('#choose-files', sample('poster.vx'));
    await page.waitForFunction(() => document.title.startsWith('poster'));
    await sharp(page);
    assert.equal(await page.isVisible('#notice'), false);
    assert.equal(await page.textContent('#title'), 'poster');

    await page.locator('#drawings button').first().click();
    await page.getByRole('button', { name: 'Cancel' }).click();
    assert.match(await page.textContent('#notice'), /long\.vx was not opened/);
    await page.locator('#drawings button').nth(1).click();
    await sharp(page);
    assert.equal(await page.textContent('#title'), 'poster');
});

test('a drawing of 100 MB is shown, and moves', { skip, timeout: 600000 }, async (t) => {
    const folder = await mkdtemp(path.join(os.tmpdir(), 'vx-viewer-'));
    t.after(() => rm(folder, { recursive: true, force: true }));
    const name = path.join(folder, 'large.vx');
    const file = await open(name, 'w');
    await file.write(await head());
    const squares = Array.from({ length: 20000 }, (_, at) => {
        const [x, y] = [at % 200, Math.floor(at / 200)];
        return `${(at % 7) / 7} ${(at % 5) / 5} ${(at % 3) / 3} 0 k\n${x} ${y} m ${x + 1} ${y} l ${x + 1} ${y + 1} l ${x} ${y + 1} l f\n`;
    }).join('');
    for (let size = 0; size < LARGE; size += squares.length) await file.write(squares);
    await file.write('%%Trailer\n%%EOF\n');
    await file.close();
    const page = await visit(t, url);
    await page.setInputFiles('#choose-files', name);
    await page.waitForFunction(() => document.title.includes('paths'), undefined, { timeout: 300000 });
    await page.waitForSelector('#picture[aria-busy="false"]', { timeout: 300000 });
    assert.match(await page.textContent('#panel-facts'), /10\d(\.\d)? MB/);
    const before = await viewOf(page);
    await page.locator('#stage').focus();
    await page.keyboard.press('ArrowLeft');
    assert.equal((await viewOf(page)).x - before.x, 64);
    await page.waitForSelector('#picture[aria-busy="false"]', { timeout: 300000 });
});
