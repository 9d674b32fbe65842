// Puts the viewer together, so that any server can serve it as it is: node assemble_viewer.mjs VIEWER PACKAGE SAMPLES OUT

import { createHash } from 'node:crypto';
import { cp, readFile, readdir, rm, writeFile } from 'node:fs/promises';
import path from 'node:path';

const [viewer, drawings, samples, out] = process.argv.slice(2);

const SAMPLES = ['poster', 'butterfly', 'sleeping-cat'];
const FOR_NODE = ['command.js', 'node.js', 'files.node.js', 'worker.node.js', 'index.d.ts', 'README.md', 'package.json'];
const NOT_SERVED = ['CMakeLists.txt', 'README.md'];
const KEPT_ELSEWHERE = ['sw.js', 'files.js']; // by the browser itself

await rm(out, { recursive: true, force: true });
await cp(viewer, out, { recursive: true, filter: (file) => !NOT_SERVED.includes(path.basename(file)) });
await cp(drawings, path.join(out, 'package'), { recursive: true, filter: (file) => !FOR_NODE.includes(path.basename(file)) });
for (const name of SAMPLES) await cp(path.join(samples, `${name}.vx`), path.join(out, 'samples', `${name}.vx`));

async function filesBelow(folder) {
    const entries = await readdir(folder, { withFileTypes: true });
    const nested = await Promise.all(entries.map((entry) => {
        const file = path.join(folder, entry.name);
        return entry.isDirectory() ? filesBelow(file) : [file];
    }));
    return nested.flat();
}

const hash = createHash('sha256');
const files = [];
for (const file of (await filesBelow(out)).sort()) {
    const name = path.relative(out, file).split(path.sep).join('/');
    hash.update(name).update(await readFile(file));
    if (!KEPT_ELSEWHERE.includes(name) && !name.startsWith('package/licenses/')) files.push(name);
}
const version = hash.digest('hex').slice(0, 16);
await writeFile(path.join(out, 'files.js'), `const VIEWER_VERSION = '${version}';\nconst VIEWER_FILES = ${JSON.stringify(files, null, 4)};\n`);
console.log(`viewer: ${files.length} files, version ${version}`);
