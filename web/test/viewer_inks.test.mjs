// The inks of the viewer: plates, the picker, and the map of total ink, held against the command.

import assert from 'node:assert/strict';
import { mkdtemp, readFile, rm } from 'node:fs/promises';
import os from 'node:os';
import path from 'node:path';
import test from 'node:test';

import { choose, differences, noNative, readStage, sample, saved, serve, settle, showPanel, skip, viewOf, visit, vx } from './viewer_support.mjs';

const { url } = skip ? {} : await serve();
const SPOTS = [300, 200]; // points

async function temporary(t) {
    const folder = await mkdtemp(path.join(os.tmpdir(), 'vx-viewer-'));
    t.after(() => rm(folder, { recursive: true, force: true }));
    return folder;
}

async function open(t, name, panel = 'plates') {
    const page = await visit(t, url);
    await choose(page, sample(name));
    await showPanel(page, panel);
    await readStage(page);
    await settle(page);
    return page;
}

test('inks are shown and left out, alone and in gray, as the command does', { skip: noNative }, async (t) => {
    const folder = await temporary(t);
    const page = await open(t, 'spot-inks.vx');
    const ink = (name) => page.getByRole('checkbox', { name, exact: true });
    const compare = async (...options) => {
        await settle(page);
        const { scale, x, y } = await viewOf(page);
        const [width, height] = SPOTS.map((side) => Math.round(side * scale));
        const file = path.join(folder, 'plates.png');
        await vx('render', sample('spot-inks.vx'), '--width', width, '--height', height, ...options, '-o', file);
        assert.equal((await differences(page, await readFile(file), [Math.round(x), Math.round(y)])).others, 0, options.join(' '));
    };
    assert.deepEqual(await page.locator('#panel-plates li .name').allTextContents(), ['Cyan', 'Magenta', 'Yellow', 'Black', 'Night', 'Brick']);
    await ink('Brick').uncheck();
    await compare('--plates', 'Cyan,Magenta,Yellow,Black,Night');
    await page.getByRole('button', { name: 'Night alone' }).click();
    await compare('--plates', 'Night');
    await page.getByRole('switch', { name: 'As gray' }).check();
    await compare('--plates', 'Night', '--plate-colours', 'gray');
    await page.getByRole('switch', { name: 'As gray' }).uncheck();
    await ink('Night').uncheck();
    await compare('--plates', 'none');
    await page.getByRole('button', { name: 'All inks' }).click();
    await compare();
    await page.getByRole('switch', { name: 'Overprint' }).uncheck();
    await compare('--overprint', 'ignore');
});

test('the picker tells the inks under the pointer, and what they belong to', { skip }, async (t) => {
    const page = await open(t, 'spot-inks.vx', 'facts');
    const { scale, x, y } = await viewOf(page);
    const stage = await page.locator('#stage').boundingBox();
    const hover = (px, py) => page.mouse.move(stage.x + x + px * scale, stage.y + y + (SPOTS[1] - py) * scale);
    await hover(150, 12); // the ground
    await page.waitForSelector('#status .ink');
    assert.match(await page.textContent('#status .place'), /x 52\.\d\s+y 66\.\d mm/);
    await hover(30, 60); // the first house is all Brick
    await page.waitForFunction(() => /Brick 100/.test(document.querySelector('#status .inks').textContent));
    assert.match(await page.textContent('#status .inks'), /C 0.*M 0.*Y 0.*K 0.*Σ 100 %/);
    assert.match(await page.textContent('#status .object'), /^Fill, Brick 100 %/);
    await page.mouse.move(stage.x + 3, stage.y + 3);
    await page.waitForFunction(() => document.querySelector('#status .inks').textContent === '');
});

test('the map of total ink shows where there is more than the limit', { skip: noNative }, async (t) => {
    const page = await open(t, 'poster.vx');
    await page.getByRole('switch', { name: 'Total ink' }).check();
    const red = async (limit) => {
        await page.fill('#limit', String(limit));
        await page.press('#limit', 'Enter');
        await settle(page);
        return page.evaluate(() => {
            const { data } = globalThis.readStage();
            let count = 0;
            for (let i = 0; i < data.length; i += 4) if (data[i + 3] === 255 && data[i] >= 208 && data[i + 2] <= 32) count += 1;
            return count;
        });
    };
    const { scale } = await viewOf(page);
    const all = Math.round(300 * scale) * Math.round(400 * scale);
    for (const limit of [240, 150]) {
        const { stdout } = await vx('coverage', '--json', '--limit', String(limit), sample('poster.vx'));
        const { above } = JSON.parse(stdout);
        const part = (await red(limit)) / all;
        assert.ok(Math.abs(part - above.share) < 0.01, `${limit} %: ${part} of ${above.share}`);
    }
});

test('plates are saved as the command makes them', { skip: noNative }, async (t) => {
    const folder = await temporary(t);
    const page = await open(t, 'spot-inks.vx', 'save');
    await page.getByRole('radio', { name: 'Plates' }).check();
    const { name, bytes } = await saved(page, () => page.getByRole('button', { name: 'Save file' }).click());
    assert.equal(name, 'spot-inks-plates.zip');
    await vx('plates', sample('spot-inks.vx'), '-o', path.join(folder, '{ink}.png'));
    for (const ink of ['Cyan', 'Night', 'Brick']) {
        const plate = await readFile(path.join(folder, `${ink}.png`));
        const at = bytes.indexOf(`spot-inks-${ink}.png`);
        assert.ok(at > 0, ink);
        assert.ok(bytes.subarray(at + `spot-inks-${ink}.png`.length).subarray(0, plate.length).equals(plate), ink);
    }
});

test('how much has too much ink is told as the command does', { skip: noNative }, async (t) => {
    const page = await open(t, 'poster.vx');
    await page.getByRole('switch', { name: 'Total ink' }).check();
    await page.fill('#limit', '240');
    await page.press('#limit', 'Enter');
    const { stdout } = await vx('coverage', '--json', '--limit', '240', sample('poster.vx'));
    const { above, total } = JSON.parse(stdout);
    const wanted = `${Number((100 * above.share).toFixed(1))} % of the page has more than 240 %; the most is ${Math.round(100 * total.most)} %.`;
    await page.waitForFunction((words) => document.querySelector('#panel-plates').textContent.includes(words), wanted);
});

test('what a press would get wrong is listed as the command finds it, shown on the drawing, and saved', { skip: noNative }, async (t) => {
    const page = await open(t, 'hairlines.vx');
    await page.getByRole('button', { name: 'Check', exact: true }).click();
    await page.waitForSelector('#panel-plates .findings li');
    const { stdout } = await vx('check', '--json', sample('hairlines.vx')).catch((error) => error);
    const { findings } = JSON.parse(stdout);
    assert.deepEqual(await page.locator('.findings li').evaluateAll((items) => items.map((item) => item.textContent)), findings.map(({ text }) => text));
    const before = await viewOf(page);
    await page.locator('.findings button').first().click();
    await settle(page);
    assert.notDeepEqual(await viewOf(page), before);
    assert.equal(await page.locator('#marks div').count(), findings[0].places.length);
    const { name, bytes } = await saved(page, () => page.getByRole('button', { name: 'Save as a page' }).click());
    assert.equal(name, 'hairlines.vx.html');
    assert.match(bytes.toString(), /^<!doctype html>/i);
});
