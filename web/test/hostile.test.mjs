// A damaged or hostile drawing ends in an error, and the reader goes on.

import assert from 'node:assert/strict';
import { readFile, readdir } from 'node:fs/promises';
import path from 'node:path';
import test from 'node:test';
import { pathToFileURL } from 'node:url';
import { Worker } from 'node:worker_threads';

import { PACKAGE, SOURCE, VxError, createReader, readerFor, sample, samples } from './support.mjs';

// Opening and drawing end with this: "drawn", or the code of an error.
async function endOf(reader, bytes, call = {}) {
    try {
        const drawing = await reader.open(bytes, call);
        for (const format of ['png', 'svg', 'pdf', 'tiff']) assert.ok((await drawing.render({ format, ...call })).length > 100);
        await drawing.close();
        return 'drawn';
    } catch (error) {
        assert.ok(error instanceof VxError, error.stack);
        assert.match(error.message, /^[^\n]+$/);
        return error.code;
    }
}

// A drawing of lines across the page, each of thousands of dashes, which takes far longer than any limit here.
async function endless() {
    const head = (await sample('gift.vx')).toString('latin1').replace(/^0 0 1 0 k.*/ms, '');
    return Buffer.from(`${head}0 0 0 1 K\n[0.1 0.1]0 d\n${'0 0 m\n576 576 L\nS\n'.repeat(1e5)}%%Trailer\n%%EOF\n`);
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

test('time has a limit', async (t) => {
    const reader = readerFor(t);
    const drawing = await reader.open(await endless(), { timeout: 100000 });
    await assert.rejects(drawing.render({ format: 'png', timeout: 1000 }), { code: 'limit' }); // the library's own
    await assert.rejects(drawing.render({ format: 'png', timeout: 1, 'max-time': 0 }), { code: 'timeout' });
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

test('a trap ends a worker, and the next call has another', async (t) => {
    let started = 0;
    const startWorker = (onMessage, onError) => {
        const isFirst = ++started === 1;
        const worker = new Worker(path.join(PACKAGE, 'worker.node.js'));
        worker.unref();
        worker.on('message', onMessage);
        return {
            post: (message) => (isFirst && message.method === 'render'
                ? onError(new WebAssembly.RuntimeError('unreachable'))
                : worker.postMessage(message)),
            setBusy: (isBusy) => (isBusy ? worker.ref() : worker.unref()),
            end: () => worker.terminate(),
        };
    };
    const { makeApi } = await import(pathToFileURL(path.join(PACKAGE, 'reader.js')));
    const { load } = await import(pathToFileURL(path.join(PACKAGE, 'files.node.js')));
    const reader = makeApi({ startWorker, load }).createReader();
    t.after(() => reader.close());
    const drawing = await reader.open(await sample('gift.vx'));
    await assert.rejects(drawing.render({ format: 'svg' }), { code: 'crashed', message: 'the module ended: unreachable' });
    assert.ok((await drawing.render({ format: 'svg' })).length > 100);
    assert.equal(started, 2);
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
