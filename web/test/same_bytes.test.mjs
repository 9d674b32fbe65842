// The files are those of the native command, byte for byte, with the same fonts.

import assert from 'node:assert/strict';
import { mkdtemp, readFile, rm } from 'node:fs/promises';
import os from 'node:os';
import path from 'node:path';
import test from 'node:test';

import { NATIVE, PACKAGE, SOURCE, noNative, readerFor, run, sample, samples } from './support.mjs';

const FORMATS = ['png', 'svg', 'pdf'];
const EAST_ASIAN = [
    '/usr/share/fonts/opentype/ipafont-gothic/ipag.ttf',
    '/usr/share/fonts/truetype/arphic-bsmi00lp/bsmi00lp.ttf',
];

async function compare(t, folders, files, names) {
    const folder = await mkdtemp(path.join(os.tmpdir(), 'vx-'));
    t.after(() => rm(folder, { recursive: true }));
    const fonts = folders.flatMap((name) => ['--font-dir', name]);
    const inputs = names.map((name) => path.join(SOURCE, 'samples', name));
    await run(NATIVE, ['render', '-q', '--no-system-fonts', ...fonts, ...inputs, '-f', FORMATS.join(','), '-o', `${folder}/{stem}.{ext}`],
        { env: { PATH: process.env.PATH } });
    const reader = readerFor(t);
    await reader.addFonts(...files);
    const differing = [];
    for (const name of names) {
        const drawing = await reader.open(await sample(name));
        for (const format of FORMATS) {
            const expected = await readFile(path.join(folder, name.replace(/vx$/, format)));
            if (!expected.equals(await drawing.render({ format }))) differing.push(`${name} ${format}`);
        }
        await drawing.close();
    }
    assert.deepEqual(differing, []);
}

test('every sample is drawn as by the native command', { skip: noNative }, async (t) => {
    assert.ok(samples.length > 60);
    await compare(t, [path.join(PACKAGE, 'fonts')], [], samples);
});

test('with fonts that are given besides', { skip: noNative }, async (t) => {
    const names = samples.filter((name) => /japanese|vertical|chinese/.test(name));
    assert.ok(names.length > 2);
    await compare(t, [path.join(PACKAGE, 'fonts'), ...EAST_ASIAN.map((file) => path.dirname(file))], EAST_ASIAN, names);
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
