// The words of the viewer: to select, to copy and to search, on lines, down columns and along paths.

import assert from 'node:assert/strict';
import test from 'node:test';

import { choose, noNative, readStage, run, sample, serve, settle, sharp, showPanel, skip, visit, vx } from './viewer_support.mjs';

const { url } = skip ? {} : await serve();

async function open(t, name, settings = { permissions: ['clipboard-read', 'clipboard-write'] }) {
    const page = await visit(t, url, settings);
    await choose(page, sample(name));
    await page.waitForSelector('#words .line', { state: 'attached' });
    return page;
}

// The least box around an element, on the page.
const boxOf = (page, selector, at = 0) => page.locator(selector).nth(at).evaluate((element) => {
    const { left, top, right, bottom } = element.getBoundingClientRect();
    return { left, top, right, bottom };
});

const copied = async (page) => {
    await page.keyboard.press('Control+c');
    return page.evaluate(() => navigator.clipboard.readText());
};

// Returns how much of the dark of the picture is below an element.
async function darkBelow(page, { left, top, right, bottom }) {
    return page.evaluate(({ left, top, right, bottom }) => {
        const canvas = document.querySelector('#picture');
        const at = canvas.getBoundingClientRect();
        const all = globalThis.readStage();
        let inside = 0;
        let whole = 0;
        for (let y = 0; y < all.height; y += 1)
            for (let x = 0; x < all.width; x += 1) {
                const pixel = 4 * (y * all.width + x);
                if (all.data[pixel + 3] < 255 || all.data[pixel] + all.data[pixel + 1] + all.data[pixel + 2] > 380) continue;
                whole += 1;
                const [px, py] = [x + at.left, y + at.top];
                if (px >= left - 1 && px <= right + 1 && py >= top - 1 && py <= bottom + 1) inside += 1;
            }
        return { inside, whole };
    }, { left, top, right, bottom });
}

test('all words of the command are there, in its order', { skip: noNative }, async (t) => {
    for (const name of ['text-point.vx', 'text-area.vx', 'text-vertical.vx', 'text-path.vx']) {
        const page = await open(t, name);
        const lines = await page.locator('#words .line').allTextContents();
        const { stdout } = await vx('text', sample(name));
        assert.deepEqual(lines, stdout.toString().split('\n').filter((line) => line !== ''), name);
        await page.close();
    }
});

test('words lie where they are painted', { skip }, async (t) => {
    const page = await open(t, 'text-point.vx');
    await readStage(page);
    const boxes = await page.locator('#words .line').evaluateAll((lines) => lines.map((line) => {
        const { left, top, right, bottom } = line.getBoundingClientRect();
        return { left, top, right, bottom };
    }));
    for (const box of boxes) assert.ok((await darkBelow(page, box)).inside > 100, JSON.stringify(box));
});

test('a line is selected with the pointer and copied', { skip }, async (t) => {
    const page = await open(t, 'text-area.vx');
    const lines = await page.locator('#words .line').allTextContents();
    const first = await boxOf(page, '#words .line', 0);
    const second = await boxOf(page, '#words .line', 1);
    const before = await page.locator('#words').evaluate((words) => words.style.transform);
    await page.mouse.move(first.left + 1, (first.top + first.bottom) / 2);
    await page.mouse.down();
    await page.mouse.move(second.right - 1, (second.top + second.bottom) / 2, { steps: 5 });
    await page.mouse.up();
    assert.equal(await copied(page), `${lines[0]}\n${lines[1]}`);
    assert.equal(await page.locator('#words').evaluate((words) => words.style.transform), before, 'the drawing does not move');
});

test('a column is selected downwards', { skip }, async (t) => {
    const page = await open(t, 'text-vertical.vx');
    const [line] = await page.locator('#words .line').allTextContents();
    const box = await boxOf(page, '#words .line');
    assert.ok(box.bottom - box.top > 3 * (box.right - box.left));
    const middle = (box.left + box.right) / 2;
    await page.mouse.move(middle, box.top + 2);
    await page.mouse.down();
    await page.mouse.move(middle, box.bottom - 2, { steps: 5 });
    await page.mouse.up();
    assert.equal(await copied(page), line);
});

test('the search of the page finds words, across lines too, and goes to them', { skip }, async (t) => {
    const page = await open(t, 'text-area.vx');
    const text = await page.locator('#words .text').first().evaluate((element) => [...element.querySelectorAll('.line')].map((line) => line.textContent));
    const [last] = text[0].trim().split(/\s+/).slice(-1);
    const [next] = text[1].trim().split(/\s+/);
    await page.keyboard.press('Control+f');
    await page.keyboard.type(`${last} ${next}`.toUpperCase());
    assert.equal(await page.textContent('#panel-text .count'), '1 of 1');
    const marked = () => page.evaluate(() => [...(CSS.highlights.get('match') ?? [])].map((range) => range.toString()));
    assert.deepEqual(await marked(), [last, next]);

    await page.fill('#search', 'e');
    const count = text.join('').length > 0 && Number((await page.textContent('#panel-text .count')).split(' of ')[1]);
    assert.ok(count > 3);
    await page.press('#search', 'Enter');
    assert.equal(await page.textContent('#panel-text .count'), `2 of ${count}`);
    await page.press('#search', 'Shift+Enter');
    await page.press('#search', 'Shift+Enter');
    assert.equal(await page.textContent('#panel-text .count'), `${count} of ${count}`);
    await page.fill('#search', 'no such words');
    assert.equal(await page.textContent('#panel-text .count'), 'Not found');
});

test('a match that is out of sight is brought into it', { skip }, async (t) => {
    const page = await open(t, 'text-area.vx');
    await page.locator('#stage').focus();
    await page.locator('#scale').fill('2000');
    await page.press('#scale', 'Enter');
    const lines = await page.locator('#words .line').allTextContents();
    const [word] = lines.at(-1).trim().split(/\s+/);
    await page.keyboard.press('Control+f');
    await page.keyboard.type(word);
    await settle(page);
    const { left, top, right, bottom } = await page.evaluate(() => {
        const [range] = CSS.highlights.get('match');
        const box = range.getBoundingClientRect();
        return { left: box.left, top: box.top, right: box.right, bottom: box.bottom };
    });
    const stage = await page.locator('#stage').boundingBox();
    const [x, y] = [(left + right) / 2, (top + bottom) / 2];
    assert.ok(x > stage.x && x < stage.x + stage.width && y > stage.y && y < stage.y + stage.height, `${x}, ${y}`);
});

test('Japanese is found down a column, and words along a path', { skip }, async (t) => {
    const page = await open(t, 'text-vertical.vx');
    await page.keyboard.press('Control+f');
    await page.keyboard.type('見本');
    assert.equal(await page.textContent('#panel-text .count'), '1 of 2');

    const along = await open(t, 'text-path.vx');
    const word = (await along.locator('#words .path').first().textContent()).trim().split(/\s+/)[0];
    await along.keyboard.press('Control+f');
    await along.keyboard.type(word);
    assert.deepEqual(await along.evaluate(() => [...CSS.highlights.get('match')].map((range) => range.toString())), [word]);
});

test('a drawing without words says so, and words of hidden layers are not there', { skip }, async (t) => {
    const page = await visit(t, url);
    await choose(page, sample('poster.vx'));
    await showPanel(page, 'text');
    assert.equal(await page.isVisible('#panel-text .empty'), true);
    const layered = await open(t, 'text-layers.vx');
    const shown = await layered.locator('#words .line').allTextContents();
    assert.ok(shown.length > 0);
    await showPanel(layered, 'layers');
    await layered.getByRole('button', { name: 'None' }).click();
    await layered.waitForFunction(() => document.querySelectorAll('#words .line').length === 0);
});

// Fonts for a drawing that has none of its own here.
test('a font that is dropped in, and those of the computer, serve the drawing', { skip }, async (t) => {
    const found = await run('fc-list', ['-f', '%{postscriptname} %{file}\n', ':lang=ja']).catch(() => ({ stdout: '' }));
    const file = found.stdout.split('\n').map((line) => line.split(' ')[1]).find((name) => /\.(ttf|otf)$/.test(name ?? ''));
    if (file === undefined) return t.skip('there is no Japanese font on this machine');
    const lacking = (page) => page.locator('#panel-facts .lacking').count();
    for (const way of ['drop', 'computer']) {
        const page = await open(t, 'text-japanese.vx', { permissions: ['local-fonts'] });
        await showPanel(page, 'facts');
        assert.ok((await lacking(page)) > 0, way);
        if (way === 'drop') await page.setInputFiles('#choose-files', file);
        else await page.getByRole('button', { name: 'Use fonts of this computer' }).click();
        await page.waitForFunction(() => document.querySelectorAll('#panel-facts .lacking').length === 0);
        await sharp(page);
    }
    return undefined;
});
