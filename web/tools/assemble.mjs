// Puts the package together: node assemble.mjs PACKAGE MODULE FONTS LICENSES OUT
//
// Prints how large the module is, as it is and as servers send it.

import { cp, mkdir, readFile, readdir, rm, writeFile } from 'node:fs/promises';
import path from 'node:path';
import { pathToFileURL } from 'node:url';
import { brotliCompressSync, constants, gzipSync } from 'node:zlib';

const [source, module, fonts, licenses, out] = process.argv.slice(2);

// The parts that others wrote have their licences here, by the names of what they are.
const OTHERS = {
    'nlohmann-json.txt': '/usr/share/doc/nlohmann-json3-dev/copyright',
    'emscripten.txt': '/usr/share/doc/emscripten/copyright',
    'fogra39.txt': path.join(source, '../../devices/colour/profiles/README.md'),
    'fonts-texgyre.txt': '/usr/share/doc/fonts-texgyre/copyright',
};

await rm(out, { recursive: true, force: true });
await cp(source, out, { recursive: true });
await cp(path.join(source, '../../LICENSE'), path.join(out, 'LICENSE'));
await cp(module, path.join(out, 'vx.wasm'));
await cp(licenses, path.join(out, 'licenses'), { recursive: true });
for (const [name, file] of Object.entries(OTHERS)) await cp(file, path.join(out, 'licenses', name), { dereference: true });

// The rows are made by the module that will read them.
const { Engine } = await import(pathToFileURL(path.join(source, 'engine.js')));
const bytes = await readFile(module);
const engine = await Engine.make(await WebAssembly.compile(bytes));
await mkdir(path.join(out, 'fonts'));
const rows = [];
for (const name of (await readdir(fonts)).sort()) {
    if (!/^texgyre.*\.otf$/.test(name) || name.includes('math')) continue;
    const font = await readFile(path.join(fonts, name));
    rows.push(engine.rowsOf(name, font));
    await writeFile(path.join(out, 'fonts', name), font);
}
if (rows.length < 12) throw new Error(`${fonts} has ${rows.length} fonts: install Debian's fonts-texgyre`);
await writeFile(path.join(out, 'fonts', 'rows.txt'), rows.join(''));

const brotli = brotliCompressSync(bytes, { params: { [constants.BROTLI_PARAM_SIZE_HINT]: bytes.length } });
const scripts = (await readdir(out)).filter((name) => name.endsWith('.js') && !/command|node/.test(name));
const script = Buffer.concat(await Promise.all(scripts.map((name) => readFile(path.join(out, name)))));
const told = { 'vx.wasm': bytes.length, 'with gzip': gzipSync(bytes, { level: 9 }).length, 'with brotli': brotli.length,
    scripts: script.length, 'scripts with brotli': brotliCompressSync(script).length, fonts: rows.length };
console.log(Object.entries(told).map(([name, size]) => `${name}: ${size}`).join(', '));
