// The viewer for everybody: rules of accessibility, in both colour schemes, on a wide screen and on a phone, and three languages.

import assert from 'node:assert/strict';
import test from 'node:test';

import { choose, noTool, sample, serve, sharp, showPanel, skip, toolsPath, visit } from './viewer_support.mjs';

const { url } = skip ? {} : await serve();
const reason = skip || noTool('axe-core');
const PANELS = ['layers', 'plates', 'text', 'facts', 'save'];
const RULES = ['wcag2a', 'wcag2aa', 'wcag21a', 'wcag21aa', 'wcag22aa', 'best-practice'];
const PHONE = { size: [390, 780], hasTouch: true, isMobile: true };

// Loaded as a debugger does it: the policy of the page lets in no script of others.
async function violations(page) {
    const { readFile } = await import('node:fs/promises');
    await page.evaluate(await readFile(toolsPath('axe-core'), 'utf8'));
    const { violations: found, passes } = await page.evaluate((rules) => globalThis.axe.run(document, { runOnly: rules }), RULES);
    assert.ok(passes.length > 15, `${passes.length} rules were of use`);
    return found.map(({ id, help, nodes }) => `${id}: ${help}: ${nodes.map(({ html, any }) => `${html} ${any.map(({ message }) => message).join(' ')}`).join('\n   ')}`);
}

for (const [device, settings] of [['a wide screen', {}], ['a phone', PHONE]])
    for (const colorScheme of ['light', 'dark'])
        test(`on ${device} in ${colorScheme} colours no rule is broken`, { skip: reason, timeout: 240000 }, async (t) => {
            const page = await visit(t, url, { colorScheme, ...settings });
            const check = async (state) => assert.deepEqual(await violations(page), [], state);
            await check('start');
            await choose(page, sample('layers.vx'), sample('text-missing.vx'), sample('cut-short.vx'));
            for (const panel of PANELS) {
                await showPanel(page, panel);
                await check(panel);
            }
            await page.locator('#drawings button').nth(1).click();
            await page.waitForFunction(() => document.title.startsWith('text-missing'));
            await sharp(page);
            for (const panel of ['text', 'facts']) {
                await showPanel(page, panel);
                await check(panel);
            }
            await showPanel(page, 'plates');
            await page.getByRole('switch', { name: 'Total ink' }).check();
            await page.getByRole('button', { name: 'Check', exact: true }).click();
            await page.waitForSelector('.findings li');
            await check('heat map and findings');
            await page.locator('#stage').focus();
            await page.keyboard.press('?');
            await check('keys');
            await page.keyboard.press('Escape');
            await page.setInputFiles('#choose-files', { name: 'wrong.vx', mimeType: '', buffer: Buffer.from('wrong') });
            await page.waitForSelector('#notice:not([hidden])');
            await check('notice');
        });

test('words are in the language of the browser, or in that of the address', { skip: reason }, async (t) => {
    const lead = async (locale, address = '') => {
        const page = await visit(t, url + address, { locale });
        return [await page.textContent('.lead'), await page.getAttribute('html', 'lang')];
    };
    assert.deepEqual(await lead('de-AT'), ['Hier eine Zeichnung ablegen', 'de']);
    assert.deepEqual(await lead('ja-JP'), ['ここに図面をドロップ', 'ja']);
    assert.deepEqual(await lead('fr-FR'), ['Drop a drawing here', 'en']);
    assert.deepEqual(await lead('en-GB', '?lang=de'), ['Hier eine Zeichnung ablegen', 'de']);
});

test('every text is there in every language, with the same names in braces', { skip: reason }, async (t) => {
    const page = await visit(t, url);
    const wrong = await page.evaluate(async () => {
        const { TEXTS, languages } = await import('./texts.js');
        const names = (text) => (text.match(/\{\w+\}/g) ?? []).sort().join();
        const isWrong = (row) => row.length !== Object.keys(languages).length || row.some((text) => text === '' || names(text) !== names(row[0]));
        return Object.keys(TEXTS).filter((key) => isWrong(TEXTS[key]));
    });
    assert.deepEqual(wrong, []);
});

test('who wants no motion gets none', { skip: reason }, async (t) => {
    const page = await visit(t, url, { reducedMotion: 'reduce' });
    await choose(page, sample('poster.vx'));
    await page.locator('#stage').focus();
    const scales = await page.evaluate(async () => {
        const { state } = await import('./state.js');
        const before = state.view.scale;
        document.querySelector('#stage').dispatchEvent(new KeyboardEvent('keydown', { key: '+', bubbles: true }));
        return [before, state.view.scale];
    });
    assert.ok(Math.abs(scales[1] / scales[0] - 1.25) < 1e-9);
});

test('on a phone nothing is wider than the screen', { skip: reason }, async (t) => {
    const page = await visit(t, url, { ...PHONE, size: [320, 640] });
    await choose(page, sample('layers.vx'), sample('poster.vx'));
    for (const panel of PANELS) {
        await showPanel(page, panel);
        const widths = await page.locator('header, #side, #side .panels, #status').evaluateAll((parts) =>
            parts.map((part) => [part.id || part.className || part.tagName, part.scrollWidth - part.clientWidth]));
        for (const [name, over] of widths) assert.ok(over <= 0, `${panel}: ${name} by ${over}`);
        assert.ok((await page.locator('#stage').boundingBox()).height > 150, panel);
    }
});
