#!/usr/bin/env node
// The command of the package: that of the native build, as far as the library goes.

import { readFileSync } from 'node:fs';
import { mkdir, readFile, readdir, rename, rm, stat, writeFile } from 'node:fs/promises';
import path from 'node:path';

import { VxError, createReader } from './node.js';

// Scripts may rely on these statuses, which are those of the native command; the worst of several inputs wins.
const DONE = 0;
const FAILED = 1;
const USAGE = 2;
const WARNED = 3;
const STATUSES = {
    'wrong-option': USAGE, 'wrong-argument': USAGE, 'cannot-write': 4, 'limit': 5, 'out-of-memory': 5, 'timeout': 5, 'crashed': 6,
};

const USE = `usage: vx-drawings render [options] FILE... -o OUT
       vx-drawings plates [options] FILE... -o 'OUT-{ink}.png'
       vx-drawings info|fonts|text|check [options] FILE...

FILE - is standard input, OUT - standard output; {stem}, {dir} and {ext} in OUT stand for those of the input and the format, {ink} for the name
of each ink.

  -o, --output PATH      where to write
  -f, --format FORMAT    pdf, svg, png or tiff, or several with commas between them (by the output's name, else pdf; plates: png)
      --json             text, check: one JSON object a text, or a drawing; info and fonts always print JSON
      --limits FILE      check: a JSON file that says from where on something is found, and how bad it is
      --html PATH        check: write a page too that shows the findings on the picture, and each plate
      --no-mkdir         plates, check: make no folders for outputs
      --force            plates, check: overwrite drawings too, which are lost
      --font-dir DIR     use the fonts in DIR and below it too; may be repeated
      --no-bundled-fonts use only the fonts of --font-dir
      --strict           warnings give exit status 3
  -q, --quiet            tell no warnings
      --version          print the version
  -h, --help             this text, and the options of drawings:
`;
const ELSEWHERE = ['coverage', 'trace', 'batch', 'verify', 'diff', 'view'];
const SHORT = { o: 'output', f: 'format', b: 'background', r: 'dpi', z: 'zoom', q: 'quiet', h: 'help' };
const FLAGS = ['json', 'no-mkdir', 'force', 'no-bundled-fonts', 'strict', 'quiet', 'version', 'help', 'salvage'];
const OWN = ['output', 'format', 'limits', 'html', 'font-dir', ...FLAGS];
// The options of drawings that mean something for these commands.
const SHEET = ['dpi', 'zoom', 'width', 'height', 'fit', 'box', 'page', 'margin', 'bleed', 'layers', 'hide', 'overprint', 'samples'];
const MEANT = { text: ['layers', 'hide'], plates: [...SHEET, 'marks'], check: SHEET };

class UsageError extends Error {}

const RANKS = [6, 5, 4, USAGE, FAILED, WARNED, DONE];
const worse = (one, other) => (RANKS.indexOf(one) < RANKS.indexOf(other) ? one : other);

const say = (text) => process.stderr.write(`vx: ${text}\n`);

// Words into the inputs and the options; those of drawings are known by the table of the library.
function parse(words, known) {
    const options = { 'font-dir': [] };
    const inputs = [];
    let rest = false;
    for (let i = 0; i < words.length; ++i) {
        const word = words[i];
        if (rest || word === '-' || !word.startsWith('-')) {
            inputs.push(word);
            continue;
        }
        if (word === '--') {
            rest = true;
            continue;
        }
        const [, long, short, joined] = /^(?:--([^=]+)|-(.))=?(.*)$/s.exec(word) ?? [];
        const name = long ?? SHORT[short];
        if (name === undefined || !(OWN.includes(name) || known.includes(name)))
            throw new UsageError(`${word}: no such option: --help lists them`);
        if (FLAGS.includes(name)) {
            options[name] = true;
            continue;
        }
        const value = word.includes('=') || (short !== undefined && joined !== '') ? joined : words[++i];
        if (value === undefined || value === '') throw new UsageError(`--${name}: the value is missing: give one`);
        if (name === 'font-dir') options[name].push(value);
        else options[name] = value;
    }
    return { options, inputs };
}

const formatOf = (name) => (name === 'tif' ? 'tiff' : name);
const stemOf = (input) => path.basename(input).replace(/\.(gz|xz)$/i, '').replace(/(.)\.[^.]*$/s, '$1');

const isFolder = async (name) => /[/\\]$/.test(name) || stat(name).then((found) => found.isDirectory(), () => false);

async function outputOf(pattern, input, format, { ink, noMkdir = false } = {}) {
    const whole = (await isFolder(pattern)) ? path.join(pattern, ink === undefined ? '{stem}.{ext}' : '{stem}-{ink}.{ext}') : pattern;
    const parts = { stem: input === '-' ? 'stdin' : stemOf(input), dir: path.dirname(input), ext: format, ink: ink ?? '{ink}' };
    const made = whole.replace(/\{(stem|dir|ext|ink)\}/g, (_, part) => parts[part]);
    if (made !== pattern && !noMkdir) await mkdir(path.dirname(made), { recursive: true });
    return made;
}

// The ink's name as a part of a file's name: what a file system or a pattern might take for something else is "_".
function fileNameOf(ink) {
    const name = Buffer.from(ink.replace(/[\x00-\x1f\x7f/\\:*?"<>|{}]/g, '_').replace(/^\.+/, (dots) => '_'.repeat(dots.length)));
    let end = Math.min(name.length, 100);
    while ((name[end] & 0xc0) === 0x80) --end; // a character stays whole
    return name.subarray(0, end).toString();
}

// Each ink's name for files, each another, also where large letters are the same as small ones.
function fileNamesOf(inks) {
    const used = new Set();
    return inks.map((ink) => {
        const plain = fileNameOf(ink);
        const fold = (name) => name.replace(/[A-Z]/g, (letter) => letter.toLowerCase());
        let name = plain;
        for (let number = 2; used.has(fold(name)); ++number) name = `${plain}-${number}`;
        used.add(fold(name));
        return name;
    });
}

// It appears whole or not at all.
async function write(name, bytes) {
    if (name === '-') {
        await new Promise((resolve, reject) => process.stdout.write(bytes, (error) => (error ? reject(error) : resolve())));
        return;
    }
    const part = `${name}.${process.pid}.part`;
    try {
        await writeFile(part, bytes, { flag: 'wx' });
        await rename(part, name);
    } catch (error) {
        await rm(part, { force: true });
        throw new VxError('cannot-write', `${name}: ${error.message}`);
    }
}

async function fontsIn(folder) {
    const found = [];
    for (const entry of await readdir(folder, { withFileTypes: true })) {
        const name = path.join(folder, entry.name);
        if (entry.isDirectory()) found.push(...(await fontsIn(name)));
        else if (/\.(otf|ttf|ttc|otc|pfb|pfa|t1)$/i.test(name)) found.push(name);
    }
    return found.sort();
}

// A line of JSON that begins with the name of the input; the library does not know it.
const withFile = (input, json) => `{"file":${JSON.stringify(input)},${json.slice(1).trimEnd()}\n`;

// A file that is a drawing is not written over.
async function checkKeepsDrawing(option, pattern, name, reader) {
    const found = name === '-' ? undefined : await readFile(name).catch(() => undefined);
    if (found === undefined) return;
    const drawing = await reader.open(found).catch(() => undefined);
    await drawing?.close();
    if (drawing !== undefined)
        throw new UsageError(`${option} ${pattern}: would overwrite the drawing "${name}": choose another name, or add --force`);
}

const COMMANDS = {
    async plates(drawing, input, { output, formats: [format], chosen, reader, force, 'no-mkdir': noMkdir }) {
        const plates = await drawing.plates({ ...chosen, format });
        const told = drawing.warnings;
        const inks = fileNamesOf(plates.map(({ ink }) => ink));
        const names = [];
        for (const ink of inks) names.push(await outputOf(output, input, format, { ink, noMkdir }));
        for (const name of force ? [] : names) await checkKeepsDrawing('-o', output, name, reader);
        for (const [i, { bytes }] of plates.entries()) await write(names[i], bytes);
        return told;
    },
    async check(drawing, input, { html, limits, json, chosen, reader, force, 'no-mkdir': noMkdir, tellsOf }) {
        const page = html === undefined ? undefined : await outputOf(html, input, 'html', { noMkdir });
        if (page !== undefined && !force) await checkKeepsDrawing('--html', html, page, reader);
        const text = limits === undefined ? undefined : await readFile(limits, 'utf8').catch((error) => {
            throw new UsageError(`--limits ${limits}: ${error.message}`);
        });
        const found = await drawing.rawCheck({ ...chosen, name: input, limits: text, html: page !== undefined }).catch((error) => {
            if (!error.message.startsWith('limits: ')) throw error;
            throw new UsageError(`--limits ${limits}: ${error.message.slice('limits: '.length)}`);
        });
        process.stdout.write(json ? found.json : `${input === '-' ? 'standard input' : input}\n${found.text}`);
        if (page !== undefined) await write(page, found.html);
        const { errors, warnings } = JSON.parse(found.json);
        if (errors + warnings > 0) tellsOf(WARNED);
        return drawing.warnings;
    },
    async render(drawing, input, { output, formats, chosen }) {
        const warnings = [];
        for (const format of formats) {
            const bytes = await drawing.render({ ...chosen, format });
            warnings.push(...drawing.warnings);
            const name = output === '-' ? '-' : await outputOf(output, input, format);
            if (input !== '-' && path.resolve(name) === path.resolve(input))
                throw new VxError('cannot-write', `${name} is the input: give another name`);
            await write(name, bytes);
        }
        return [...new Set(warnings)];
    },
    async info(drawing, input) {
        process.stdout.write(withFile(input, drawing.json));
        return drawing.warnings;
    },
    async fonts(drawing, input) {
        process.stdout.write(`${JSON.stringify({ file: input, fonts: drawing.fonts })}\n`);
        return drawing.warnings;
    },
    async text(drawing, input, { json, chosen, prefix }) {
        const texts = await drawing.rawText(chosen);
        const shown = json ? texts.map((text) => withFile(input, text.json))
            : texts.map(({ lines }, i) => (i === 0 ? lines : `\n${lines}`).replace(/[^\n]*\n/g, `${prefix.replaceAll('$', '$$$$')}$&`));
        process.stdout.write(shown.join(''));
        return drawing.warnings;
    },
};

// An option of another kind of command is refused, not forgotten.
function checkMeant(command, options, formats, table) {
    for (const { name, formats: meant } of table) {
        if (options[name] === undefined || meant.length === 0) continue;
        const isMeant = command === 'render' ? meant.some((format) => formats.includes(format)) : MEANT[command]?.includes(name);
        if (!isMeant)
            throw new UsageError(`--${name} means nothing here: it is for ${meant.join(', ')}`);
    }
}

async function run(words) {
    const [command, ...others] = words;
    if (command === '--version') {
        process.stdout.write(`${JSON.parse(readFileSync(new URL('./package.json', import.meta.url), 'utf8')).version}\n`);
        return DONE;
    }
    if (ELSEWHERE.includes(command)) throw new UsageError(`${command}: not in this package: the native command has it`);
    const reader = createReader({ bundledFonts: !others.includes('--no-bundled-fonts') });
    try {
        const { formats: known, options: table } = await reader.about();
        const help = () => {
            const rows = table.map(({ name, value, help: text }) => `      --${`${name} ${value}`.padEnd(22)} ${text}\n`);
            process.stdout.write(USE + rows.join(''));
            return DONE;
        };
        if (command === undefined || command === '--help' || command === '-h') return help();
        if (!Object.hasOwn(COMMANDS, command))
            throw new UsageError(`${command}: no such command: give ${Object.keys(COMMANDS).join(', ')}`);
        const { options, inputs } = parse(others, table.map(({ name }) => name));
        if (options.help) return help();
        if (inputs.length === 0) throw new UsageError('no FILE: name a drawing, or - for standard input');
        if (command === 'render' && options.output === undefined)
            throw new UsageError('no output: add -o and a name, as -o picture.pdf');
        const ending = formatOf(path.extname(options.output ?? '').slice(1).toLowerCase());
        const standard = command === 'plates' ? 'png' : 'pdf';
        const formats = (options.format ?? (known.some(({ name }) => name === ending) ? ending : standard)).split(',').map(formatOf);
        if (command === 'plates') {
            if (options.output === undefined) throw new UsageError("no output: add -o and a name, as -o '{stem}-{ink}.png'");
            if (!options.output.includes('{ink}') && !(await isFolder(options.output)))
                throw new UsageError(`-o ${options.output}: all plates would be written to one file: name each after its ink, as -o ` +
                    "'{stem}-{ink}.png'");
            if (inputs.length > 1 && !/\{stem\}|\{dir\}/.test(options.output) && !(await isFolder(options.output)))
                throw new UsageError(`${options.output}: several results go to one output: put {stem} into its name`);
            if (formats.length > 1 || !['png', 'tiff'].includes(formats[0]))
                throw new UsageError(`--format ${formats}: not one of plates: give png or tiff`);
        }
        if (options.html !== undefined && !/\.html?$/.test(options.html))
            throw new UsageError(`--html ${options.html}: html is written: name a .html`);
        if (options.html !== undefined && inputs.length > 1 && !options.html.includes('{stem}'))
            throw new UsageError(`--html ${options.html}: several results go to one output: put {stem} into its name`);
        if (command === 'render' && inputs.length * formats.length > 1 && !/\{stem\}|\{ext\}|[/\\]$/.test(options.output) &&
            !(await isFolder(options.output)))
            throw new UsageError(`${options.output}: several results go to one output: put {stem} or {ext} into its name`);
        checkMeant(command, options, formats, table);
        for (const folder of options['font-dir']) {
            const files = await fontsIn(folder).catch((error) => {
                throw new UsageError(`--font-dir ${folder}: ${error.message}`);
            });
            for (const file of files) await reader.addFonts(file).catch((error) => say(`${file}: ${error.message}`));
        }
        const of = (wanted) => Object.fromEntries(table.filter(wanted).map(({ name }) => [name, options[name]]));
        if (options.salvage) options.salvage = 'yes';
        const reading = of((row) => row.formats.length === 0);
        const drawingOptions = of((row) => row.formats.length > 0);
        const epoch = process.env.SOURCE_DATE_EPOCH;
        let worst = DONE;
        for (const input of inputs) {
            try {
                const bytes = input === '-' ? new Uint8Array(readFileSync(0)) : input;
                const drawing = await reader.open(bytes, { options: reading, timeout: secondsOf(reading) });
                const chosenFor = (format) => {
                    const chosen = Object.fromEntries(Object.entries(drawingOptions).filter(([name]) =>
                        table.find((row) => row.name === name).formats.includes(format)));
                    if (format === 'pdf' && epoch && chosen.date === undefined) chosen.date = epoch;
                    return chosen;
                };
                const tellsOf = (status) => void (worst = worse(worst, status));
                const told = { ...options, formats, reader, tellsOf, prefix: inputs.length > 1 ? `${input}:` : '' };
                const warnings = [];
                if (command === 'render')
                    for (const format of formats)
                        warnings.push(...(await COMMANDS.render(drawing, input, { ...told, formats: [format], chosen: chosenFor(format) })));
                else
                    warnings.push(...(await COMMANDS[command](drawing, input, { ...told, chosen: drawingOptions })));
                for (const warning of options.quiet ? [] : new Set(warnings)) say(`${input}: warning: ${warning}`);
                if (options.strict && warnings.length > 0) worst = worse(worst, WARNED);
                await drawing.close();
            } catch (error) {
                if (!(error instanceof VxError)) throw error;
                say(`${input}: ${error.message}`);
                worst = worse(worst, STATUSES[error.code] ?? FAILED);
            }
        }
        return worst;
    } finally {
        reader.close();
    }
}

// The time that the worker has: that of the library, which ends a call in order.
function secondsOf(reading) {
    const given = reading['max-time'];
    if (given === undefined) return undefined;
    return Number(given) === 0 ? Infinity : Number(given) * 1000;
}

try {
    process.exitCode = await run(process.argv.slice(2));
} catch (error) {
    say(error instanceof UsageError || error instanceof VxError ? error.message : error.stack);
    process.exitCode = error instanceof UsageError ? USAGE : STATUSES[error.code] ?? FAILED;
}
