// Plates, inks and objects. A level is 255 times the amount of ink, rounded; the sample paints Brick full, with 70 % and with 40 %, and Night with
// 15 % along its lower edge.

import assert from 'node:assert/strict';
import test from 'node:test';

import { readerFor, sample } from './support.mjs';

const INKS = ['Cyan', 'Magenta', 'Yellow', 'Black', 'Night', 'Brick'];
const around = (x, y) => ({ box: [x - 0.5, y - 0.5, x + 0.5, y + 0.5], width: 1, height: 1 });

test('pixels tell their inks', async (t) => {
    const drawing = await readerFor(t).open(await sample('spot-inks.vx'));
    for (const [x, y, levels] of [[30, 60, [0, 0, 0, 0, 0, 255]], [100, 60, [0, 0, 0, 0, 0, 178]], [275, 25, [0, 0, 0, 0, 38, 0]]]) {
        const pixel = await drawing.inkPixels(around(x, y));
        assert.deepEqual(pixel.inks, INKS);
        assert.deepEqual([...pixel.data], levels);
    }
    const { width, height, data } = await drawing.inkPixels({ width: 30 });
    assert.deepEqual([width, height, data.length], [30, 20, 30 * 20 * 6]);
    assert.equal(data[((19 - 6) * 30 + 3) * 6 + 5], 255); // the pixel whose middle is (35, 65)
});

test('a picture shows chosen plates', async (t) => {
    const drawing = await readerFor(t).open(await sample('spot-inks.vx'));
    const pixel = async (x, y, options) => [...(await drawing.picture({ ...around(x, y), profile: 'none', ...options })).data];
    // Brick is 75 % magenta, 80 % yellow and 10 % black; 255 less 25.5 of black is 229.5.
    assert.deepEqual(await pixel(30, 60, { plates: ['Brick'], 'plate-colours': 'gray' }), [0, 0, 0, 255]);
    assert.deepEqual(await pixel(100, 60, { plates: ['Brick'], 'plate-colours': 'gray' }), [77, 77, 77, 255]);
    assert.deepEqual(await pixel(30, 60, { plates: INKS.slice(0, 5) }), [255, 255, 255, 255]);
    assert.deepEqual(await pixel(30, 60, { plates: [] }), [255, 255, 255, 255]);
    assert.deepEqual(await pixel(30, 60, { plates: ['Brick', 'Cyan'] }), await pixel(30, 60, {}));
    const overprinted = await readerFor(t).open(await sample('overprint.vx'));
    const whole = await overprinted.picture({ width: 200 });
    assert.deepEqual((await overprinted.picture({ width: 200, plates: INKS.slice(0, 4) })).data, whole.data);
    await assert.rejects(drawing.picture({ width: 9, 'plate-colours': 'gray' }), { code: 'wrong-option' });
});

test('objects are found', async (t) => {
    const reader = readerFor(t);
    const drawing = await reader.open(await sample('spot-inks.vx'));
    const brick = await drawing.objectAt(100, 60);
    assert.equal(brick.kind, 'fill');
    assert.equal(brick.colour.spot, 'Brick');
    assert.ok(Math.abs(brick.colour.amount - 0.7) < 1e-4);
    assert.deepEqual(brick.box, [90, 40, 150, 130]);
    assert.equal(await drawing.objectAt(-20, 60), null);
    await assert.rejects(drawing.objectAt(NaN, 0), { code: 'wrong-argument' });
    const layers = await reader.open(await sample('layers.vx'));
    assert.equal((await layers.objectAt(5, 195)).layer, 'Sky');
    assert.equal((await layers.objectAt(5, 195, { hide: [] })).layer, 'Sky');
    assert.equal(await layers.objectAt(5, 195, { hide: ['Sky'] }), null);
    const gradients = await reader.open(await sample('text-point.vx'));
    const [text] = await gradients.text();
    const [x, y] = text.lines[0].origin;
    let found = null; // the stem of the first letter stands near its left end
    for (let right = 0; right < text.lines[0].height && found === null; ++right) found = await gradients.objectAt(x + right, y + 3);
    assert.equal(found.kind, 'text');
    assert.ok(text.text.includes(found.text));
});

test('lines of text have their places', async (t) => {
    const reader = readerFor(t);
    const [column] = await (await reader.open(await sample('text-vertical.vx'))).text();
    assert.equal(column.lines[0].vertical, true);
    assert.equal(column.lines[0].angle, -90);
    assert.equal(column.lines[0].length, 24 * [...column.lines[0].text].length);
    const [path] = await (await reader.open(await sample('text-path.vx'))).text();
    assert.equal(path.lines[0].places.length, [...path.lines[0].text].length);
});

test('coverage is measured, and drawings are checked', async (t) => {
    const drawing = await readerFor(t).open(await sample('spot-inks.vx'));
    const { inks, above, heatMap } = await drawing.coverage({ limit: 150, dpi: 36, heatMap: true });
    assert.deepEqual(inks.map(({ name }) => name), INKS);
    assert.equal(above.limit, 1.5);
    assert.deepEqual([...heatMap.subarray(1, 4)], [...Buffer.from('PNG')]);
    assert.equal((await drawing.coverage({ dpi: 36 })).heatMap, undefined);
    const found = await drawing.check({ dpi: 36, limits: { limits: { hairline: 3 } }, html: true });
    assert.equal(found.file, undefined);
    assert.equal(found.findings[0].name, 'hairline');
    assert.match(Buffer.from(found.html).toString(), /^<!DOCTYPE html>/);
    await assert.rejects(drawing.check({ limits: '{' }), { code: 'wrong-option', message: 'limits: no JSON at byte 2: mend it there' });
    const plates = await drawing.plates({ format: 'tiff', dpi: 9 });
    assert.deepEqual(plates.map(({ ink }) => ink), INKS);
});

test('progress comes in steps', async (t) => {
    const reader = readerFor(t, { worker: false });
    const drawing = await reader.open(await sample('fireworks.vx'));
    const told = [];
    await drawing.picture({ width: 40, onProgress: (done, total) => void told.push([done, total]) });
    assert.ok(told.length > 20 && told.length < 600, `${told.length}`);
    let calls = 0;
    await assert.rejects(drawing.picture({ width: 40, onProgress: () => ++calls < 3 }), { code: 'stopped' });
    assert.equal(calls, 3);
});
