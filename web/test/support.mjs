// The tests of the package share this.

import { execFile } from 'node:child_process';
import { existsSync } from 'node:fs';
import { readFile, readdir } from 'node:fs/promises';
import path from 'node:path';
import { pathToFileURL } from 'node:url';
import { promisify } from 'node:util';

export const SOURCE = process.env.VX_SOURCE;
export const PACKAGE = process.env.VX_PACKAGE;
export const NATIVE = path.join(process.env.VX_FULL_BUILD, 'bin/vx');

export const run = promisify(execFile);
export const noNative = existsSync(NATIVE) ? false : `there is no ${NATIVE}: build the release`;

export const drawings = await import(pathToFileURL(path.join(PACKAGE, 'node.js')));
export const { createReader, VxError } = drawings;

export const samples = (await readdir(path.join(SOURCE, 'samples'))).filter((name) => name.endsWith('.vx')).sort();
export const sample = (name) => readFile(path.join(SOURCE, 'samples', name));

// A reader for the length of a test.
export function readerFor(test, options) {
    const reader = createReader(options);
    test.after(() => reader.close());
    return reader;
}
