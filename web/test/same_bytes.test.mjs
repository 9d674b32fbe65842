// The files are those of the native command, byte for byte, with the same fonts.

import assert from 'node:assert/strict';
import { mkdtemp, readFile, rm } from 'node:fs/promises';
import os from 'node:os';
import path from 'node:path';
import test from 'node:test';

import { NATIVE, PACKAGE, SOURCE, noNative, readerFor, run, sample, samples } from './support.mjs';

const FORMATS = ['png', 'svg', 'pdf', 'tiff'];
const EAST_ASIAN = [
    '/usr/share/fonts/opentype/ipafont-gothic/ipag.ttf',
    '/usr/share/fonts/truetype/arphic-bsmi00lp/bsmi00lp.ttf',
];

async function compare(t, { folders = [], files = [], names, formats = FORMATS, options = {} }) {
    const folder = await mkdtemp(path.join(os.tmpdir(), 'vx-'));
    t.after(() => rm(folder, { recursive: true }));
    const fonts = [path.join(PACKAGE, 'fonts'), ...folders].flatMap((name) => ['--font-dir', name]);
    const words = Object.entries(options).flatMap(([name, value]) => [`--${name}`, value]);
    const inputs = names.map((name) => path.join(SOURCE, 'samples', name));
    await run(NATIVE, ['render', '-q', '--no-system-fonts', ...fonts, ...words, ...inputs, '-f', formats.join(','), '-o',
        `${folder}/{stem}.{ext}`], { env: { PATH: process.env.PATH } });
    const reader = readerFor(t);
    await reader.addFonts(...files);
    const differing = [];
    for (const name of names) {
        const drawing = await reader.open(await sample(name));
        for (const format of formats) {
            const expected = await readFile(path.join(folder, name.replace(/vx$/, format)));
            if (!expected.equals(await drawing.render({ ...options, format }))) differing.push(`${name} ${format}`);
        }
        await drawing.close();
    }
    assert.deepEqual(differing, []);
}

test('every sample is drawn as by the native command', { skip: noNative }, async (t) => {
    assert.ok(samples.length > 60);
    await compare(t, { names: samples });
});

test('with fonts that are given besides', { skip: noNative }, async (t) => {
    const names = samples.filter((name) => /japanese|vertical|chinese/.test(name));
    assert.ok(names.length > 2);
    await compare(t, { folders: EAST_ASIAN.map((file) => path.dirname(file)), files: EAST_ASIAN, names });
});

// Standards ask for a date: the native command would take that of the file, which the package does not see.
const date = '2026-11-22';
const OPTIONS = [
    [FORMATS, { page: 'drawing' }],
    [FORMATS, { page: 'a4-landscape' }],
    [FORMATS, { margin: '5mm' }],
    [FORMATS, { bleed: '3mm' }],
    [FORMATS, { page: '210x297mm', bleed: '0.125in', marks: 'crop' }],
    [['pdf'], { 'pdf-x': 'x4', date }],
    [['pdf'], { 'pdf-a': '2u', date }],
    [['pdf'], { 'pdf-x': 'x4', 'pdf-a': '2b', date }],
    [['svg'], { text: 'editable' }],
];
for (const [formats, options] of OPTIONS)
    test(`with ${JSON.stringify(options)}`, { skip: noNative }, async (t) => {
        await compare(t, { names: ['custom-colours.vx', 'gift.vx', 'layers.vx', 'text-area.vx'], formats, options });
    });

test('the facts are those of the native command', { skip: noNative }, async (t) => {
    const reader = readerFor(t);
    const { stdout } = await run(NATIVE, ['info', '-q', '--json', '--no-system-fonts', '--font-dir', path.join(PACKAGE, 'fonts'),
        ...samples.map((name) => path.join(SOURCE, 'samples', name))], { maxBuffer: 1 << 26 });
    const lines = stdout.trim().split('\n');
    assert.equal(lines.length, samples.length);
    for (const [i, name] of samples.entries()) {
        const { file, confinedBy, ...facts } = JSON.parse(lines[i]);
        const drawing = await reader.open(await sample(name));
        for (const font of facts.fonts) font.file &&= path.basename(font.file);
        assert.deepEqual(drawing.info, facts, name);
        await drawing.close();
    }
});
