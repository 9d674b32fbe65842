// The package as programs use it.

import assert from 'node:assert/strict';
import { readFile } from 'node:fs/promises';
import path from 'node:path';
import test from 'node:test';
import { pathToFileURL } from 'node:url';

import { PACKAGE, SOURCE, drawings, readerFor, sample } from './support.mjs';

test('a drawing tells what it is', async (t) => {
    const reader = readerFor(t);
    const drawing = await reader.open(await sample('layers.vx'));
    assert.equal(drawing.info.version, 5);
    assert.deepEqual(drawing.info.box, [0, 0, 300, 200]);
    assert.ok(drawing.layers.some(({ name }) => name === 'Sky'));
    assert.deepEqual(drawing.inks, []);
    assert.equal(drawing.warnings.length, 1);
    assert.match(drawing.warnings[0], /^1 object behind the end of a layer/);
});

test('drawings come as bytes, as a Blob, by a URL and by a name', async (t) => {
    const reader = readerFor(t);
    const file = path.join(SOURCE, 'samples/gift.vx');
    const bytes = await readFile(file);
    const buffer = bytes.buffer.slice(bytes.byteOffset, bytes.byteOffset + bytes.length);
    const { title } = (await reader.open(bytes)).info;
    for (const source of [buffer, new Blob([bytes]), pathToFileURL(file), file])
        assert.equal((await reader.open(source)).info.title, title);
});

test('options have the names of the command, and hold for one call', async (t) => {
    const reader = readerFor(t);
    const drawing = await reader.open(await sample('gift.vx'));
    const size = (png) => [new DataView(png.buffer, png.byteOffset).getUint32(16), new DataView(png.buffer, png.byteOffset).getUint32(20)];
    const whole = await drawing.render({ format: 'png' });
    assert.equal(size(await drawing.render({ format: 'png', width: 40 }))[0], 40);
    assert.deepEqual(await drawing.render({ format: 'png' }), whole);
    await assert.rejects(drawing.render({ format: 'png', dots: 3 }), { code: 'wrong-option' });
    await assert.rejects(drawing.render({ format: 'png', dpi: -3 }), { code: 'wrong-option' });
    await assert.rejects(drawing.render({ format: 'png', dpi: 30, width: 40 }), { code: 'wrong-option' });
    assert.deepEqual(await drawing.render({ format: 'png' }), whole);
    const { options, formats } = await reader.about();
    assert.deepEqual(formats.map(({ name }) => name).sort(), ['pdf', 'png', 'svg', 'tiff']);
    assert.ok(options.some(({ name, formats: meant }) => name === 'dpi' && meant.includes('png')));
});

test('a picture has the pixels of its box', async (t) => {
    const reader = readerFor(t);
    const drawing = await reader.open(await sample('gift.vx'));
    const [left, bottom, right, top] = drawing.info.box;
    const picture = await drawing.picture({ width: 60, background: 'white' });
    assert.equal(picture.width, 60);
    assert.equal(picture.data.length, picture.width * picture.height * 4);
    assert.ok(new Set(picture.data).size > 3);
    const twice = await drawing.picture({ box: [left, bottom, right, top], width: 120, height: 2 * picture.height, background: 'white' });
    const quarter = await drawing.picture({ box: [left, (bottom + top) / 2, (left + right) / 2, top], width: 60, height: picture.height,
        background: 'white' });
    // The upper left quarter of the larger one, to the byte.
    for (let y = 0; y < picture.height; ++y) {
        const row = twice.data.subarray(y * 480, y * 480 + 240);
        assert.deepEqual(quarter.data.subarray(y * 240, y * 240 + 240), row, `row ${y}`);
    }
});

test('texts are told', async (t) => {
    const reader = readerFor(t);
    const drawing = await reader.open(await sample('text-area.vx'));
    const texts = await drawing.text();
    assert.ok(texts.length > 0);
    assert.match(texts[0].text, /\w+.*\n$/s);
    assert.ok(texts[0].lines.length > 0);
});

test('fonts of the package serve drawings, and given ones come first', async (t) => {
    const bundled = readerFor(t);
    const drawing = await bundled.open(await sample('text-area.vx'));
    assert.ok(drawing.fonts.length > 0);
    assert.ok(drawing.fonts.every(({ match }) => match === 'stand-in'), JSON.stringify(drawing.fonts));
    const bare = readerFor(t, { bundledFonts: false });
    assert.ok((await bare.open(await sample('text-area.vx'))).fonts.every(({ match }) => match === 'missing'));
    await bare.addFonts(new URL('fonts/texgyretermes-regular.otf', pathToFileURL(`${PACKAGE}/`)));
    assert.ok((await bare.fontList()).some(({ postscript }) => postscript === 'TeXGyreTermes-Regular'));
    assert.ok((await bare.open(await sample('text-area.vx'))).fonts.every(({ match }) => match !== 'missing'));
    await assert.rejects(bare.addFonts(new Uint8Array(100)), { code: 'wrong-argument' });
});

test('progress is told', async (t) => {
    const reader = readerFor(t);
    const told = [];
    const bytes = await sample('fireworks.vx');
    await reader.open(bytes, { onProgress: (done, total) => void told.push([done, total]) });
    assert.ok(told.length > 0);
    assert.ok(told.every(([done, total]) => done <= total && total === bytes.length));
});

test('what is closed says so', async () => {
    const reader = drawings.createReader();
    const drawing = await reader.open(await sample('gift.vx'));
    await drawing.close();
    await assert.rejects(drawing.render({ format: 'svg' }), { code: 'closed' });
    reader.close();
    await assert.rejects(reader.open(await sample('gift.vx')), { code: 'closed' });
});

test('the shared reader does as any other, with several calls at once', async () => {
    const files = await Promise.all(['gift.vx', 'poster.vx', 'layers.vx'].map(sample));
    const opened = await Promise.all(files.map((file) => drawings.open(file)));
    const svgs = await Promise.all(opened.map((drawing) => drawing.render({ format: 'svg' })));
    for (const svg of svgs) assert.match(new TextDecoder().decode(svg), /^<svg|^<\?xml/);
    await Promise.all(opened.map((drawing) => drawing.close()));
});
