// The viewer as "vx view" serves it: in a real browser, from the first byte to the end of the command.

import assert from 'node:assert/strict';
import { spawn } from 'node:child_process';
import { once } from 'node:events';
import { createInterface } from 'node:readline';
import test from 'node:test';

import { NATIVE, VIEWER, noNative, sample, sharp, visit } from './viewer_support.mjs';

// Returns the process, the address that it told, and what becomes of it.
async function view(t, ...names) {
    const server = spawn(NATIVE, ['view', '--no-browser', ...names], { env: { ...process.env, VX_VIEWER: VIEWER }, stdio: ['ignore', 'pipe', 'inherit'] });
    t.after(() => server.kill('SIGKILL'));
    const ended = once(server, 'exit');
    const [address] = await once(createInterface(server.stdout), 'line');
    return { server, address, ended };
}

test('drawings are shown, once more when the page is loaded again, and the command ends with the page', { skip: noNative, timeout: 300000 }, async (t) => {
    const { server, address, ended } = await view(t, sample('poster.vx'), sample('text-point.vx'));
    const page = await visit(t, address); // which complains of what the policy of the server forbids
    const look = async () => {
        await sharp(page);
        assert.deepEqual(await page.locator('#drawings .name').allTextContents(), ['poster.vx', 'text-point.vx']);
    };
    await look();
    await page.locator('#drawings .name', { hasText: 'text-point.vx' }).click();
    await look(); // with fonts of the viewer
    await page.reload();
    await look();
    assert.equal(server.exitCode, null);
    await page.close();
    assert.deepEqual(await ended, [0, null]);
});

test('without a drawing the page opens those of the user', { skip: noNative, timeout: 300000 }, async (t) => {
    const { address, ended } = await view(t);
    const page = await visit(t, address);
    await page.setInputFiles('#choose-files', sample('harp.vx'));
    await sharp(page);
    await page.close();
    assert.deepEqual(await ended, [0, null]);
});

test('the policy of the server is that of the page', { skip: noNative }, async (t) => {
    const { address } = await view(t);
    const response = await fetch(address);
    const [, policy] = (await response.text()).match(/Security-Policy" content="([^"]+)"/);
    assert.equal(response.headers.get('Content-Security-Policy'), `${policy}; frame-ancestors 'none'`);
});
