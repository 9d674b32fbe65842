// The viewer in Chromium: opening, looking, moving, layers and saving.

import assert from 'node:assert/strict';
import { mkdtemp, readFile, rm, writeFile } from 'node:fs/promises';
import os from 'node:os';
import path from 'node:path';
import test from 'node:test';
import { gzipSync } from 'node:zlib';

import { VIEWER, browser, choose, differences, noNative, readStage, sample, saved, serve, setScale, settle, sharp, showPanel, skip, viewOf, visit, vx } from './viewer_support.mjs';

const POSTER = [300, 400]; // points

const { url, asked, held } = skip ? {} : await serve({ files: {
    'samples/layers.vx': await readFile(sample('layers.vx')),
    'drawings.json': JSON.stringify([{ name: 'first.vx', url: 'drawings/0' }, { name: 'second.vx', url: 'drawings/1' }]),
    'drawings/0': await readFile(sample('gift.vx')),
    'drawings/1': await readFile(sample('harp.vx')),
} });

async function temporary(t) {
    const folder = await mkdtemp(path.join(os.tmpdir(), 'vx-viewer-'));
    t.after(() => rm(folder, { recursive: true, force: true }));
    return folder;
}

const shows = (page, name) => page.waitForFunction((wanted) => document.title.includes(wanted), name);
const title = (page) => page.textContent('#title');

// Drops files on the stage, as a file manager would.
async function drop(page, ...files) {
    const contents = await Promise.all(files.map(async (file) => ({ name: path.basename(file), bytes: (await readFile(file)).toString('base64') })));
    const transfer = await page.evaluateHandle((all) => {
        const data = new DataTransfer();
        for (const { name, bytes } of all) data.items.add(new File([Uint8Array.from(atob(bytes), (byte) => byte.charCodeAt(0))], name));
        return data;
    }, contents);
    await page.dispatchEvent('#stage', 'dragenter', { dataTransfer: transfer });
    await page.dispatchEvent('#stage', 'drop', { dataTransfer: transfer });
}

test('a drawing is opened by the dialog, a drop, a paste and an address', { skip }, async (t) => {
    const folder = await temporary(t);
    const page = await visit(t, url);
    await page.waitForSelector('.card');
    await choose(page, sample('poster.vx'));
    assert.equal(await title(page), 'poster');
    assert.equal(await page.isVisible('.card'), false);

    await drop(page, sample('harp.vx'));
    await shows(page, 'harp3');
    await writeFile(path.join(folder, 'packed.vx.gz'), gzipSync(await readFile(sample('gift.vx'))));
    await choose(page, path.join(folder, 'packed.vx.gz'));
    await shows(page, 'gift01');
    await choose(page, sample('binary-wrapper.vx'));
    await shows(page, 'binary-wrapper');

    const text = await readFile(sample('dashes.vx'), 'latin1');
    await page.evaluate((words) => {
        const clipboardData = new DataTransfer();
        clipboardData.setData('text/plain', words);
        document.body.dispatchEvent(new ClipboardEvent('paste', { clipboardData, bubbles: true }));
    }, text);
    await shows(page, 'dashes');
    assert.equal(await page.locator('#drawings li').count(), 5);

    const other = await visit(t, `${url}?file=samples/layers.vx`);
    await sharp(other);
    assert.equal(await title(other), 'layers');
    await other.goto(`${url}?file=http://localhost:1/away.vx`);
    assert.match(await other.textContent('#notice'), /its own server only/);
});

test('a folder is opened with all of its drawings, and each has a small picture', { skip }, async (t) => {
    const folder = await temporary(t);
    for (const name of ['gift.vx', 'harp.vx', 'dashes.vx']) await writeFile(path.join(folder, name), await readFile(sample(name)));
    await writeFile(path.join(folder, 'notes.txt'), 'nothing to see');
    await writeFile(path.join(folder, 'bare'), await readFile(sample('paths.vx')));
    const page = await visit(t, url);
    await page.setInputFiles('#choose-folder', folder);
    await sharp(page);
    await page.waitForFunction(() => document.querySelectorAll('#drawings canvas.there').length === 4);
    assert.deepEqual(await page.locator('#drawings .name').allTextContents(), ['bare', 'dashes.vx', 'gift.vx', 'harp.vx']);
    await page.locator('#drawings button').nth(3).click();
    await shows(page, 'harp3');
    await page.locator('#stage').focus();
    await page.keyboard.press('PageUp');
    await shows(page, 'gift01');
    await sharp(page);
});

test('what is no drawing is told kindly, and harms nothing', { skip }, async (t) => {
    const folder = await temporary(t);
    await writeFile(path.join(folder, 'letter.pdf'), '%PDF-1.4 and so on');
    await writeFile(path.join(folder, 'empty.vx'), '');
    const page = await visit(t, url);
    for (const [name, told] of [['letter.pdf', /letter\.pdf is a PDF file, not a VX drawing/], ['empty.vx', /empty\.vx is not a VX drawing/]]) {
        await page.setInputFiles('#choose-files', path.join(folder, name));
        await page.waitForFunction((wanted) => document.querySelector('#notice').textContent.includes(wanted), name);
        assert.match(await page.textContent('#notice'), told);
        assert.equal(await page.isVisible('.card'), true);
    }
    await choose(page, sample('poster.vx'));
    assert.equal(await page.isVisible('#notice'), false);
});

test('what is shown is what the command draws, at any scale', { skip: noNative }, async (t) => {
    const folder = await temporary(t);
    const page = await visit(t, url);
    await choose(page, sample('poster.vx'));
    const compare = async (name) => {
        const { scale, x, y } = await viewOf(page);
        const [width, height] = POSTER.map((side) => Math.round(side * scale));
        const file = path.join(folder, `${name}.png`);
        await vx('render', sample('poster.vx'), '--width', width, '--height', height, '-o', file);
        const { others, compared } = await differences(page, await readFile(file), [Math.round(x), Math.round(y)]);
        assert.ok(compared > 100000, `${name}: ${compared} pixels were compared`);
        assert.equal(others, 0, `${name}: ${others} of ${compared} pixels`);
    };
    await compare('fitting');
    for (const percent of [100, 237, 1200]) {
        await setScale(page, percent);
        assert.equal(await page.inputValue('#scale'), `${percent.toLocaleString('en-GB')} %`);
        await compare(percent);
    }
});

test('it is sharp at 64,000 %', { skip: noNative }, async (t) => {
    const folder = await temporary(t);
    const page = await visit(t, url);
    await choose(page, sample('poster.vx'));
    await page.mouse.move(420, 380); // on the edge of a shape
    await setScale(page, 64000);
    const { scale, x, y } = await viewOf(page);
    assert.ok(Math.abs(scale - (640 * 96) / 72) < 1e-3);
    const { width, height } = await page.locator('#stage').boundingBox();
    const [across, down] = POSTER.map((side) => Math.round(side * scale) / side); // pixels a point
    const [left, top] = [Math.round(x), Math.round(y)];
    const box = [-left / across, POSTER[1] - (height - top) / down, (width - left) / across, POSTER[1] + top / down];
    const file = path.join(folder, 'deep.png');
    await vx('render', sample('poster.vx'), '--box', box.join(','), '--width', width, '--height', height, '-o', file);
    const { others, compared } = await differences(page, await readFile(file), [0, 0]);
    assert.equal(compared, width * height);
    assert.ok(others <= compared / 1e4, `${others} of ${compared} pixels`); // edges of tiles fall between the samples of the box
});

test('pointer, wheel, fingers and keys move the drawing', { skip }, async (t) => {
    const page = await visit(t, url, { hasTouch: true });
    await choose(page, sample('poster.vx'));
    const fitting = await viewOf(page);
    await page.mouse.move(400, 300);
    await page.mouse.wheel(0, -300);
    const nearer = await viewOf(page);
    assert.ok(nearer.scale > fitting.scale * 1.5);
    const stage = await page.locator('#stage').boundingBox();
    const at = (view) => [(400 - stage.x - view.x) / view.scale, (300 - stage.y - view.y) / view.scale];
    assert.deepEqual(at(nearer).map(Math.round), at(fitting).map(Math.round), 'what is under the pointer stays there');

    await page.mouse.down();
    await page.mouse.move(460, 340, { steps: 3 });
    await page.mouse.up();
    const dragged = await viewOf(page);
    assert.deepEqual([dragged.x - nearer.x, dragged.y - nearer.y].map(Math.round), [60, 40]);

    const touch = await page.context().newCDPSession(page);
    const fingers = (type, ...points) => touch.send('Input.dispatchTouchEvent', { type, touchPoints: points.map(([x, y], id) => ({ x, y, id })) });
    await fingers('touchStart', [300, 300], [400, 300]);
    await fingers('touchMove', [250, 300], [450, 300]);
    await fingers('touchEnd');
    const pinched = await viewOf(page);
    assert.ok(Math.abs(pinched.scale / dragged.scale - 2) < 0.05, `${pinched.scale / dragged.scale}`);

    await page.locator('#stage').focus();
    const settled = async (key) => {
        await page.keyboard.press(key);
        await settle(page);
        return viewOf(page);
    };
    const larger = await settled('+');
    assert.ok(Math.abs(larger.scale / pinched.scale - 1.25) < 1e-4, `${larger.scale / pinched.scale}`);
    assert.ok(Math.abs((await settled('-')).scale / pinched.scale - 1) < 1e-4);
    assert.ok(Math.abs((await settled('1')).scale - 96 / 72) < 1e-4);
    const before = await viewOf(page);
    assert.deepEqual([(await settled('ArrowLeft')).x - before.x, (await settled('ArrowDown')).y - before.y].map(Math.round), [64, -64]);
    assert.deepEqual(await settled('0'), fitting);
});

test('the old picture stays until the new one is there', { skip }, async (t) => {
    const page = await visit(t, url);
    await choose(page, sample('fireworks.vx'));
    await readStage(page);
    await page.evaluate(() => {
        globalThis.least = Infinity;
        const look = () => {
            const pixels = globalThis.readStage().data;
            let dark = 0;
            for (let i = 0; i < pixels.length; i += 4) if (pixels[i + 3] === 255 && pixels[i] + pixels[i + 1] + pixels[i + 2] < 300) dark += 1;
            globalThis.least = Math.min(globalThis.least, dark);
            globalThis.looking = requestAnimationFrame(look);
        };
        look();
    });
    await page.mouse.move(500, 400);
    for (let turn = 0; turn < 5; turn += 1) {
        await page.mouse.wheel(0, turn % 2 === 0 ? -200 : 150);
        await page.waitForTimeout(100);
    }
    await sharp(page);
    const least = await page.evaluate(() => globalThis.least);
    assert.ok(least > 100000, `a frame had ${least} dark pixels`); // its background is black
});

test('layers are shown and hidden', { skip: noNative }, async (t) => {
    const folder = await temporary(t);
    const page = await visit(t, `${url}?file=samples/layers.vx`);
    await sharp(page);
    const rows = page.locator('#panel-layers li');
    assert.deepEqual(await rows.locator('.name').allTextContents(), ['Kite', 'Guides', 'Sky']);
    assert.equal(await rows.nth(1).getByRole('img', { name: 'Does not print' }).count(), 1);
    assert.deepEqual(await rows.locator('input').evaluateAll((boxes) => boxes.map(({ checked }) => checked)), [true, false, true]);
    const compare = async (...options) => {
        await settle(page);
        const { scale, x, y } = await viewOf(page);
        const file = path.join(folder, 'layers.png');
        await vx('render', sample('layers.vx'), '--width', Math.round(300 * scale), '--height', Math.round(200 * scale), ...options, '-o', file);
        assert.equal((await differences(page, await readFile(file), [Math.round(x), Math.round(y)])).others, 0, options.join(' '));
    };
    await compare();
    await rows.nth(1).locator('input').check();
    await compare('--layers', 'all');
    await rows.nth(2).locator('input').uncheck();
    await compare('--layers', 'Guides,Kite');
    await page.getByRole('button', { name: 'None' }).click();
    await compare('--layers', 'all', '--hide', 'Sky,Guides,Kite');
    await page.getByRole('button', { name: 'As it prints' }).click();
    await compare();
});

test('what is saved has the bytes that the command writes', { skip: noNative }, async (t) => {
    const folder = await temporary(t);
    const page = await visit(t, url);
    await choose(page, sample('gift.vx'));
    await showPanel(page, 'save');
    const save = () => saved(page, () => page.getByRole('button', { name: 'Save file' }).click());
    const kind = (name) => page.getByRole('radio', { name, exact: true }).check();
    const check = async (name, ...options) => {
        const file = path.join(folder, name);
        await vx('render', sample('gift.vx'), ...options, '-o', file);
        const { name: given, bytes } = await save();
        assert.equal(given, name);
        assert.ok(bytes.equals(await readFile(file)), `${name} ${options.join(' ')}`);
    };
    await check('gift.pdf');
    await page.selectOption('#pdf-pdf-x', 'x4');
    await page.selectOption('#pdf-pdf-a', '2b');
    await check('gift.pdf', '--pdf-x', 'x4', '--pdf-a', '2b');
    await kind('SVG');
    await check('gift.svg');
    await kind('PNG');
    await check('gift.png');
    await page.selectOption('#png-dpi', '72');
    await page.selectOption('#png-background', 'none');
    await check('gift.png', '--dpi', '72', '--background', 'none');
});

test('a picture goes to the clipboard, and to paper in its real size', { skip }, async (t) => {
    const page = await visit(t, url, { permissions: ['clipboard-read', 'clipboard-write'] });
    await choose(page, sample('gift.vx'));
    await showPanel(page, 'save');
    await page.getByRole('button', { name: 'Copy as picture' }).click();
    await page.waitForSelector('#panel-save button[aria-busy]', { state: 'detached' });
    const size = await page.evaluate(async () => {
        const [item] = await navigator.clipboard.read();
        const picture = await createImageBitmap(await item.getType('image/png'));
        return [picture.width, picture.height];
    });
    const points = await page.locator('dl dd').evaluateAll((values) => values.map((value) => value.textContent).find((text) => text.endsWith(' pt')));
    const [across, down] = points.match(/[\d.]+/g).map(Number);
    assert.deepEqual(size, [across, down].map((side) => Math.round((side * 150) / 72)));

    await page.evaluate(() => {
        globalThis.print = () => (globalThis.printed = true);
    });
    await page.getByRole('button', { name: 'Print…' }).click();
    await page.waitForFunction(() => globalThis.printed);
    const paper = await page.pdf({ preferCSSPageSize: true });
    const [, left, bottom, right, top] = paper.toString('latin1').match(/MediaBox \[([\d.]+) ([\d.]+) ([\d.]+) ([\d.]+)\]/).map(Number);
    assert.ok(Math.abs(right - left - across) < 1 && Math.abs(top - bottom - down) < 1, `${right} by ${top}`);
    assert.equal(paper.toString('latin1').match(/\/Type \/Page\b/g).length, 1);
});

test('it is worked by the keyboard alone', { skip }, async (t) => {
    const page = await visit(t, `${url}?file=samples/layers.vx`);
    await sharp(page);
    const focused = () => page.evaluate(() => document.activeElement.id || document.activeElement.textContent);
    await page.locator('#stage').focus();
    await page.keyboard.press('l');
    assert.equal(await focused(), 'tab-layers');
    await page.keyboard.press('ArrowRight');
    assert.equal(await focused(), 'tab-plates');
    assert.equal(await page.isVisible('#panel-plates'), true);
    await page.keyboard.press('ArrowLeft');
    await page.keyboard.press('Tab');
    await page.keyboard.press('Tab');
    await page.keyboard.press('Enter');
    assert.deepEqual(await page.locator('#panel-layers input').evaluateAll((boxes) => boxes.map(({ checked }) => checked)), [true, true, true]);
    await page.keyboard.press('Control+s');
    assert.equal(await focused(), 'tab-save');
    await page.keyboard.press('Control+f');
    assert.equal(await focused(), 'search');
    await page.keyboard.press('Escape');
    assert.equal(await focused(), 'stage');
    await page.keyboard.press('?');
    assert.equal(await page.getByRole('dialog', { name: 'Keys' }).count(), 1);
    await page.keyboard.press('Escape');
    assert.equal(await page.getByRole('dialog').count(), 0);
});

test('no request leaves the origin, and none is made without need', { skip }, async (t) => {
    asked.length = 0;
    const page = await visit(t, url);
    const elsewhere = [];
    page.context().on('request', (request) => {
        if (!request.url().startsWith(url) && !request.url().startsWith('blob:')) elsewhere.push(request.url());
    });
    await page.evaluate(() => navigator.serviceWorker.ready);
    const kept = asked.length;
    await choose(page, sample('poster.vx'), sample('text-area.vx'));
    await showPanel(page, 'save');
    await saved(page, () => page.getByRole('button', { name: 'Save file' }).click());
    assert.deepEqual(elsewhere, []);
    for (const name of asked) assert.match(name, /^GET \//);
    assert.ok(asked.every((name) => !/alive|drawings(\.json|\/\d)/.test(name)), 'what a command serves is not asked for');
    const later = asked.slice(kept).filter((name) => !/\.(wasm|js|txt|otf)$/.test(name));
    assert.deepEqual(later, []);
});

test('it works without a network after the first visit', { skip }, async (t) => {
    const page = await visit(t, url);
    await page.evaluate(() => navigator.serviceWorker.ready);
    await page.reload();
    await page.context().setOffline(true);
    await page.reload();
    await choose(page, sample('text-area.vx'));
    assert.equal(await title(page), 'text-area');
});

test('drawings that a command serves are opened, and it hears when the page is closed', { skip }, async (t) => {
    const page = await visit(t, `${url}?served`);
    await sharp(page);
    assert.deepEqual(await page.locator('#drawings .name').allTextContents(), ['first.vx', 'second.vx']);
    assert.match(await title(page), /gift01/);
    assert.equal(held.size, 1);
    assert.equal(await page.evaluate(async () => (await navigator.serviceWorker.getRegistrations()).length), 0);
    await page.close();
    for (let turn = 0; turn < 100 && held.size > 0; turn += 1) await new Promise((resolve) => setTimeout(resolve, 50));
    assert.equal(held.size, 0);
});

test('from the disk it says what to do', { skip }, async (t) => {
    const page = await browser.newPage();
    t.after(() => page.close());
    await page.goto(`file://${VIEWER}/index.html`);
    await page.waitForSelector('#unserved', { state: 'visible' });
    assert.match(await page.locator('#unserved').innerText(), /vx view drawing\.vx/);
});
