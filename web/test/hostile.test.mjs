// A damaged or hostile drawing ends in an error, and the reader goes on.

import assert from 'node:assert/strict';
import { readFile, readdir } from 'node:fs/promises';
import path from 'node:path';
import test from 'node:test';

import { SOURCE, VxError, createReader, readerFor, sample, samples } from './support.mjs';

// What opening and drawing end with: "drawn", or the code of an error.
async function endOf(reader, bytes, call = {}) {
    try {
        const drawing = await reader.open(bytes, call);
        for (const format of ['png', 'svg', 'pdf']) assert.ok((await drawing.render({ format, ...call })).length > 100);
        await drawing.close();
        return 'drawn';
    } catch (error) {
        assert.ok(error instanceof VxError, error.stack);
        assert.match(error.message, /^[^\n]+$/);
        return error.code;
    }
}

const isAlive = async (reader) => assert.equal(await endOf(reader, await sample('gift.vx')), 'drawn');

test('what is no drawing is told', async (t) => {
    const reader = readerFor(t);
    assert.equal(await endOf(reader, new Uint8Array()), 'not-a-drawing');
    assert.equal(await endOf(reader, new TextEncoder().encode('hello world')), 'not-a-drawing');
    await assert.rejects(reader.open(17), { code: 'wrong-argument' });
    await assert.rejects(reader.open(path.join(SOURCE, 'nothing.vx')), { code: 'cannot-read' });
    await isAlive(reader);
});

test('finds of the fuzzers end in order', async (t) => {
    const reader = readerFor(t);
    const folder = path.join(SOURCE, 'fuzz/finds');
    const finds = (await readdir(folder)).filter((name) => name.endsWith('.vx'));
    assert.ok(finds.length > 0);
    for (const name of finds)
        assert.notEqual(await endOf(reader, await readFile(path.join(folder, name))), 'crashed', name);
    await isAlive(reader);
});

test('samples with bytes turned over end in order', async (t) => {
    const reader = readerFor(t);
    let seed = 7;
    const random = (below) => (seed = (seed * 1103515245 + 12345) % 2147483648) % below;
    for (const name of samples) {
        const bytes = new Uint8Array(await sample(name));
        for (let i = 0; i < 20; ++i) bytes[random(bytes.length)] = random(256);
        assert.notEqual(await endOf(reader, bytes, { timeout: 20000 }), 'crashed', name);
    }
    await isAlive(reader);
});

test('a call is aborted, before it begins and while it is at work', async (t) => {
    const reader = readerFor(t);
    const bytes = await sample('poster.vx');
    await assert.rejects(reader.open(bytes, { signal: AbortSignal.abort() }), { code: 'aborted' });
    const drawing = await reader.open(bytes);
    const controller = new AbortController();
    const rendering = drawing.render({ format: 'png', dpi: 2400, 'max-memory': 0, signal: controller.signal,
        onProgress: () => controller.abort() });
    await assert.rejects(rendering, { code: 'aborted' });
    assert.ok((await drawing.render({ format: 'svg' })).length > 100); // by another worker
});

test('a reader without a worker is stopped by its progress', async (t) => {
    const reader = readerFor(t, { worker: false });
    const drawing = await reader.open(await sample('poster.vx'));
    await assert.rejects(drawing.render({ format: 'png', onProgress: () => false }), { code: 'stopped' });
    assert.ok((await drawing.render({ format: 'png' })).length > 100);
});

// The second document never comes back to where the library looks at its clock.
test('time has a limit', async (t) => {
    const reader = readerFor(t);
    const drawing = await reader.open(await sample('fireworks.vx'));
    await assert.rejects(drawing.render({ format: 'png', 'max-time': 0.000001 }), { code: 'limit' });
    const endless = drawing.render({ format: 'png', dpi: 4000, samples: 8, 'max-memory': 0, 'max-time': 0, timeout: 1 });
    await assert.rejects(endless, (error) => ['timeout', 'out-of-memory', 'limit', 'crashed'].includes(error.code));
    await isAlive(reader);
});

test('memory has a limit', async (t) => {
    const small = createReader({ maxMemory: 48 << 20 });
    t.after(() => small.close());
    const drawing = await small.open(await sample('fireworks.vx'));
    await assert.rejects(drawing.render({ format: 'png', dpi: 1200, 'max-memory': 0 }), { code: 'out-of-memory' });
    await assert.rejects(drawing.render({ format: 'png', dpi: 1200, 'max-memory': '16M' }), { code: 'limit' });
    assert.ok((await drawing.render({ format: 'png' })).length > 100);
    assert.ok((await small.memory()) <= 48 << 20);
});

test('a thousand drawings take no more memory than ten', async (t) => {
    const reader = readerFor(t);
    const all = await Promise.all(['gift.vx', 'poster.vx', 'layers.vx', 'text-area.vx'].map(sample));
    const some = async (count) => {
        for (let i = 0; i < count; ++i) {
            const drawing = await reader.open(all[i % all.length]);
            await drawing.render({ format: ['svg', 'pdf', 'png'][i % 3], ...(i % 3 === 2 ? { dpi: 20 } : {}) });
            await drawing.close();
        }
        return reader.memory();
    };
    const first = await some(24);
    assert.equal(await some(1000), first);
});
