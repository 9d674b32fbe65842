// Tests what a reader hears of its progress while another thread reads.

import assert from 'node:assert/strict';
import test from 'node:test';

import { readerFor, sample } from './support.mjs';

const LINES = 100000;

test('progress is told as often as somebody can see it, not for every line', async (t) => {
    const [head] = (await sample('paths.vx')).toString('latin1').split(/(?<=%%EndSetup\n)/);
    const bytes = Buffer.from(head + '0 0 m 50 0 l 50 50 l 0 50 l f\n'.repeat(LINES), 'latin1');
    const told = [];
    await readerFor(t).open(bytes, { onProgress: (done, total) => void told.push([done, total]) });
    assert.ok(told.length > 0);
    assert.ok(told.length < LINES / 100, `${told.length} times`);
    for (const [done, total] of told) assert.ok(done >= 0 && done <= total && total === bytes.length, `${done} of ${total}`);
});
