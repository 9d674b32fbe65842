// The main way through the viewer in Firefox: open, look, hide a layer, search, save.

import assert from 'node:assert/strict';
import { existsSync } from 'node:fs';
import { mkdtemp, readFile, readdir, rm } from 'node:fs/promises';
import os from 'node:os';
import path from 'node:path';
import test from 'node:test';
import { pathToFileURL } from 'node:url';

import { NATIVE, noTool, sample, serve, toolsPath, vx } from './viewer_support.mjs';

const FIREFOX = '/usr/bin/firefox-esr';
const skip = existsSync(FIREFOX) ? noTool('puppeteer-core') : 'there is no firefox-esr: ./check --web installs it';
const { url } = skip ? {} : await serve();

async function start(t, downloads) {
    const { default: puppeteer } = await import(pathToFileURL(toolsPath('puppeteer-core')));
    const browser = await puppeteer.launch({ browser: 'firefox', executablePath: FIREFOX, headless: true, extraPrefsFirefox: {
        'browser.download.folderList': 2, 'browser.download.dir': downloads, 'browser.download.useDownloadDir': true, 'intl.accept_languages': 'en-GB',
        'browser.download.always_ask_before_handling_new_types': false, 'pdfjs.disabled': true, 'browser.helperApps.neverAsk.saveToDisk': 'application/pdf' } });
    t.after(() => browser.close());
    const page = await browser.newPage();
    await page.setViewport({ width: 1200, height: 800 });
    return page;
}

const until = async (wanted) => {
    for (let turn = 0; turn < 200; turn += 1) {
        const found = await wanted();
        if (found) return found;
        await new Promise((resolve) => setTimeout(resolve, 100));
    }
    throw new Error('it took too long');
};

test('Firefox opens, draws, hides layers, finds words and saves', { skip, timeout: 300000 }, async (t) => {
    const downloads = await mkdtemp(path.join(os.tmpdir(), 'vx-viewer-'));
    t.after(() => rm(downloads, { recursive: true, force: true }));
    const page = await start(t, downloads);
    const sharp = () => page.waitForSelector('#picture[aria-busy="false"]', { timeout: 60000 });
    const open = async (name) => {
        const input = await page.$('#choose-files');
        await input.uploadFile(sample(name));
        await page.waitForFunction((wanted) => document.title.startsWith(wanted), {}, path.parse(name).name);
        await sharp();
    };
    // The part of the stage that is as opaque and blue as the sky of the drawing.
    const painted = () => page.evaluate(() => {
        const canvas = document.querySelector('#picture');
        const { data } = canvas.getContext('2d').getImageData(0, 0, canvas.width, canvas.height);
        let count = 0;
        for (let i = 0; i < data.length; i += 4) if (data[i + 3] === 255 && data[i] + data[i + 1] + data[i + 2] < 740) count += 1;
        return count / (data.length / 4);
    });
    await page.goto(url);
    await open('layers.vx');
    assert.ok((await painted()) > 0.5);
    await page.evaluate(() => [...document.querySelectorAll('#panel-layers input')].at(-1).click());
    await until(async () => (await painted()) < 0.4);

    await open('text-area.vx');
    await page.waitForSelector('#words .line');
    await page.focus('#stage');
    await page.keyboard.press('t');
    await page.keyboard.type('the');
    await page.waitForFunction(() => document.querySelector('#panel-text .count').textContent === '1 of 3');
    await page.focus('#stage');
    await page.keyboard.press('+');
    await sharp();

    if (!existsSync(NATIVE)) return;
    await page.click('#tab-save');
    await page.click('#panel-save button.main');
    const name = await until(async () => (await readdir(downloads)).find((file) => file.endsWith('.pdf')));
    const wanted = path.join(downloads, 'wanted');
    await vx('render', sample('text-area.vx'), '-f', 'pdf', '-o', wanted);
    const bytes = await readFile(wanted);
    await until(async () => (await readFile(path.join(downloads, name))).equals(bytes));
});
