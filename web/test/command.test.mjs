// The command of the package, and what npm would publish.

import assert from 'node:assert/strict';
import { cp, mkdir, mkdtemp, readFile, readdir, rm, writeFile } from 'node:fs/promises';
import os from 'node:os';
import path from 'node:path';
import test from 'node:test';

import { NATIVE, PACKAGE, SOURCE, noNative, run } from './support.mjs';

const gift = path.join(SOURCE, 'samples/gift.vx');
const command = (...words) => run(process.execPath, [path.join(PACKAGE, 'command.js'), ...words], { encoding: 'buffer', maxBuffer: 1 << 26 });
const statusOf = (...words) => command(...words).then(() => 0, ({ code, stderr }) => ({ code, text: String(stderr) }));

async function folderFor(t) {
    const folder = await mkdtemp(path.join(os.tmpdir(), 'vx-'));
    t.after(() => rm(folder, { recursive: true }));
    return folder;
}

test('it draws as the native command, with its options', { skip: noNative }, async (t) => {
    const folder = await folderFor(t);
    const options = ['--dpi', '72', '--pdf-x', 'x3', '--date', '2026-11-22'];
    await command('render', gift, ...options, '-f', 'png,pdf,tif', '-o', `${folder}/ours-{stem}.{ext}`);
    await run(NATIVE, ['render', '-q', gift, ...options, '-f', 'png,pdf,tif', '-o', `${folder}/native-{stem}.{ext}`,
        '--no-system-fonts', '--font-dir', path.join(PACKAGE, 'fonts')]);
    for (const ending of ['png', 'pdf', 'tiff'])
        assert.deepEqual(await readFile(`${folder}/ours-gift.${ending}`), await readFile(`${folder}/native-gift.${ending}`));
    await command('render', gift, '--dpi', '72', '-o', `${folder}/by-name.tif`);
    assert.deepEqual(await readFile(`${folder}/by-name.tif`), await readFile(`${folder}/native-gift.tiff`));
});

test('it prints words as the native command', { skip: noNative }, async () => {
    const inputs = ['text-area.vx', 'gift.vx'].map((name) => path.join(SOURCE, 'samples', name));
    const fonts = ['--no-system-fonts', '--font-dir', path.join(PACKAGE, 'fonts')];
    for (const words of [['text', ...inputs], ['text', inputs[0]], ['text', '--json', inputs[0]]])
        assert.equal(String((await command(...words)).stdout), (await run(NATIVE, [...words, ...fonts])).stdout);
});

test('it takes the numbers that the native command takes', { skip: noNative }, async (t) => {
    const folder = await folderFor(t);
    for (const zoom of ['1.5', '.5', '2.', '1e0', '0x1', '+1', ' 1', '1 ', 'nan', 'inf', '-0.5', '1,5', '0.30000000000000004']) {
        const statuses = [];
        for (const draw of [command, (...words) => run(NATIVE, words)])
            statuses.push(await draw('render', gift, `--zoom=${zoom}`, '-o', `${folder}/x.png`).then(() => 0, ({ code }) => code));
        assert.equal(statuses[0], statuses[1], `"${zoom}"`);
    }
});

test('it tells facts, and what is wrong', async () => {
    const { stdout } = await command('info', gift);
    assert.equal(JSON.parse(stdout).file, gift);
    assert.ok(Array.isArray(JSON.parse((await command('fonts', gift)).stdout).fonts));
    for (const [words, code, text] of [
        [['render', gift], 2, /no output/],
        [['render', gift, '-o', 'x.svg', '--dpi', '3'], 2, /--dpi means nothing here/],
        [['render', gift, '-o', 'x.png', '--dpi', 'many'], 2, /dpi/],
        [['info', gift, '--colour'], 2, /no such option/],
        [['coverage', gift], 2, /the native command has it/],
        [['plates', gift], 2, /no output/],
        [['plates', gift, '-o', 'x.png'], 2, /all plates would be written to one file/],
        [['plates', gift, '-o', '{ink}.png', '--pdf-x', 'x3'], 2, /--pdf-x means nothing here/],
        [['check', gift, '--html', 'x.pdf'], 2, /name a .html/],
        [['draw', gift], 2, /no such command/],
        [['info', '/nothing.vx'], 1, /there is no such file/],
    ]) {
        const status = await statusOf(...words);
        assert.equal(status.code, code, words.join(' '));
        assert.match(status.text, text);
    }
});

test('it makes plates and checks as the native command', { skip: noNative }, async (t) => {
    const folder = await folderFor(t);
    const fonts = ['--no-system-fonts', '--font-dir', path.join(PACKAGE, 'fonts')];
    const inks = path.join(SOURCE, 'samples/spot-inks.vx');
    for (const format of ['png', 'tiff']) {
        await mkdir(`${folder}/ours`, { recursive: true });
        await command('plates', inks, '--dpi', '36', '-f', format, '-o', `${folder}/ours/`);
        await run(NATIVE, ['plates', inks, '--dpi', '36', '-f', format, '-o', `${folder}/native/`, ...fonts]);
        const names = (await readdir(`${folder}/native`)).sort();
        assert.deepEqual((await readdir(`${folder}/ours`)).sort(), names);
        assert.ok(names.includes(`spot-inks-Brick.${format}`));
        for (const name of names) assert.deepEqual(await readFile(`${folder}/ours/${name}`), await readFile(`${folder}/native/${name}`), name);
    }
    const limits = `${folder}/limits.json`;
    await writeFile(limits, '{"limits": {"hairline": 3}, "severities": {"spot-inks": "ignore"}}');
    const drawn = (draw, page, ...words) => draw('check', inks, '--dpi', '36', '--html', page, ...words).then(
        ({ stdout }) => [0, String(stdout)], ({ code, stdout }) => [code, String(stdout)]);
    const native = (...words) => run(NATIVE, [...words, ...fonts]);
    for (const words of [[], ['--json'], ['--limits', limits], ['--json', '--limits', limits]]) {
        const ours = await drawn(command, `${folder}/ours.html`, ...words);
        assert.deepEqual(ours, await drawn(native, `${folder}/native.html`, ...words));
        assert.equal(ours[0], words.includes('--limits') ? 3 : 0);
        assert.deepEqual(await readFile(`${folder}/ours.html`), await readFile(`${folder}/native.html`));
    }
    await writeFile(limits, '{"limits": {"hairline": true}}');
    const refused = await statusOf('check', inks, '--limits', limits);
    assert.equal(refused.code, 2);
    assert.match(refused.text, /--limits .*limits.json: hairline is true/);
});

test('a drawing is not overwritten by a plate', async (t) => {
    const folder = await folderFor(t);
    await cp(gift, `${folder}/Cyan.png`);
    assert.equal((await statusOf('plates', gift, '--dpi', '9', '-o', `${folder}/{ink}.png`)).code, 2);
    assert.deepEqual(await readdir(folder), ['Cyan.png']);
    await command('plates', gift, '--dpi', '9', '-o', `${folder}/{ink}.png`, '--force');
    assert.notDeepEqual(await readFile(`${folder}/Cyan.png`), await readFile(gift));
});

test('an input is never overwritten', async (t) => {
    const folder = await folderFor(t);
    const copy = path.join(folder, 'gift.vx');
    await cp(gift, copy);
    assert.equal((await statusOf('render', copy, '-f', 'svg', '-o', copy)).code, 4);
    assert.deepEqual(await readFile(copy), await readFile(gift));
    assert.deepEqual(await readdir(folder), ['gift.vx']);
});

const noNpm = await run('npm', ['--version']).then(() => false, () => 'there is no npm: install it');

test('npm packs what is needed, with the licences', { skip: noNpm }, async () => {
    const { stdout } = await run('npm', ['pack', '--dry-run', '--json', '--ignore-scripts', '--offline'], { cwd: PACKAGE });
    const [{ files, size }] = JSON.parse(stdout);
    const names = files.map(({ path: name }) => name).sort();
    for (const name of ['LICENSE', 'README.md', 'package.json', 'index.d.ts', 'index.js', 'node.js', 'worker.js', 'worker.node.js', 'command.js', 'vx.wasm',
        'fonts/rows.txt', 'fonts/texgyreheros-regular.otf', 'licenses/fonts-texgyre.txt', 'licenses/emscripten.txt',
        ...['freetype', 'harfbuzz', 'lcms2', 'libdeflate', 'libpng1.6', 'nlohmann-json', 'xz-utils', 'zlib'].map((name) => `licenses/${name}.txt`)])
        assert.ok(names.includes(name), name);
    assert.deepEqual(names.filter((name) => /test|\.map$|\.mjs$/.test(name)), []);
    assert.ok(size < 6 << 20, `${size} bytes`);
    for (const { path: name, size: bytes } of files) assert.ok(bytes > 0, name);
});

// Each example stands in a folder of its own, where the package is installed under its name.
test('the examples of the README run', async (t) => {
    const readme = await readFile(path.join(PACKAGE, 'README.md'), 'utf8');
    const examples = [...readme.matchAll(/```js\n(.*?)```/gs)].map(([, code]) => code);
    assert.equal(examples.length, 3);
    for (const code of examples) {
        const folder = await folderFor(t);
        await cp(PACKAGE, path.join(folder, 'node_modules/vx-drawings'), { recursive: true });
        await cp(path.join(SOURCE, 'samples/gift.vx'), path.join(folder, 'gift.vx'));
        await writeFile(path.join(folder, 'example.mjs'), code);
        const before = (await readdir(folder)).length;
        const { stdout } = await run(process.execPath, ['example.mjs'], { cwd: folder });
        assert.ok(stdout.length > 0 || (await readdir(folder)).length > before, code);
    }
});
