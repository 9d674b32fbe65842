// Files of the drawing, its picture on the clipboard, and paper.

import { make } from '../dom.js';
import { pictureOptions, shownLayers } from '../look.js';
import { state, watch } from '../state.js';
import { say } from '../texts.js';
import { page } from '../view.js';
import { makeZip } from '../zip.js';
import { workFor } from './busy.js';

const MINUTES = 10 * 60000;
const TYPES = { pdf: 'application/pdf', svg: 'image/svg+xml', png: 'image/png', tiff: 'image/tiff' };
const PRINT_DPI = 300;
const COPY_DPI = 150;
const MOST_PIXELS = 2 ** 26; // of a picture for paper or the clipboard

// The settings of each format, by the names of the command: the first choice is what it does by itself.
const SETTINGS = {
    pdf: { 'pdf-x': ['none', 'x1a', 'x3', 'x4'], 'pdf-a': ['none', '2b', '2u'], text: ['text', 'outlines'], spots: ['keep', 'process'] },
    svg: { text: ['text', 'outlines', 'editable'] },
    png: { dpi: ['150', '72', '96', '300', '600'], background: ['white', 'none'] },
    plates: { format: ['png', 'tiff'], dpi: ['150', '300', '600', '1200'] },
};

const chosen = {}; // format and setting, to what is chosen

const baseName = () => state.drawing.name.replace(/\.(gz|xz)$/i, '').replace(/\.(vx|eps|epsf)$/i, '');

export function download(name, blob) {
    const url = URL.createObjectURL(blob);
    make('a', { href: url, download: name }).click();
    setTimeout(() => URL.revokeObjectURL(url), MINUTES);
}

// Leaves out what the command would do by itself, so that the bytes are the same.
function optionsOf(format) {
    const options = {};
    for (const [name, [standard]] of Object.entries(SETTINGS[format])) {
        const value = chosen[`${format} ${name}`] ?? standard;
        if (value !== standard) options[name] = value;
    }
    return options;
}

// At a level a PDF has a date, which for a drawing without one is that of its file.
function dateOf(options) {
    const isLevel = 'pdf-x' in options || 'pdf-a' in options;
    return isLevel && state.drawing.info.date === '' && state.shown.modified !== undefined ? { date: String(state.shown.modified) } : {};
}

async function makeFile(readers, format) {
    const options = optionsOf(format);
    const call = { ...options, ...dateOf(options), ...shownLayers(), timeout: MINUTES };
    if (format !== 'plates') {
        const bytes = await readers.do((drawing, common) => drawing.render({ ...common, format, ...call }));
        return { name: `${baseName()}.${format}`, blob: new Blob([bytes], { type: TYPES[format] }) };
    }
    const { format: kind = 'png', ...others } = call;
    const plates = await readers.do((drawing, common) => drawing.plates({ ...common, format: kind, ...others }));
    const files = plates.map(({ ink, bytes }) => ({ name: `${baseName()}-${ink.replace(/[\\/:]/g, '_')}.${kind}`, bytes }));
    return { name: `${baseName()}-plates.zip`, blob: makeZip(files) };
}

// Makes a picture as it is shown, in a resolution at which it can be had.
async function makePicture(readers, dpi) {
    const { width, height } = page();
    const fitting = Math.sqrt((MOST_PIXELS / Math.max(width * height, 1)) * 72 * 72);
    const options = { format: 'png', ...pictureOptions(), dpi: Math.floor(Math.min(dpi, fitting)), timeout: MINUTES };
    const bytes = await readers.do((drawing, common) => drawing.render({ ...common, ...options }));
    return new Blob([bytes], { type: TYPES.png });
}

export async function copyPicture(readers) {
    await navigator.clipboard.write([new ClipboardItem({ [TYPES.png]: makePicture(readers, COPY_DPI) })]);
}

// Prints the drawing in its real size, on a sheet as large.
export async function print(readers, paper) {
    const { width, height } = page();
    const url = URL.createObjectURL(await makePicture(readers, PRINT_DPI));
    const sheet = new CSSStyleSheet();
    sheet.replaceSync(`@page { size: ${width}pt ${height}pt; margin: 0 } @media print { #paper { width: ${width}pt; height: ${height}pt } }`);
    paper.src = url;
    await paper.decode();
    document.adoptedStyleSheets.push(sheet);
    addEventListener('afterprint', () => {
        document.adoptedStyleSheets = document.adoptedStyleSheets.filter((one) => one !== sheet);
        paper.removeAttribute('src');
        URL.revokeObjectURL(url);
    }, { once: true });
    globalThis.print();
}

function makeSetting(format, name, choices) {
    const id = `${format}-${name}`;
    const select = make('select', { id, onchange: () => (chosen[`${format} ${name}`] = select.value) },
        ...choices.map((choice) => make('option', { value: choice }, say(`choice ${name} ${choice}`, { value: choice }))));
    return make('div', { class: 'setting' }, make('label', { for: id }, say(`setting ${name}`)), select);
}

export function makeSavePanel(readers, { tell, paper }) {
    let format = 'pdf';
    const action = (name, call, attributes) => {
        const button = make('button', { type: 'button', ...attributes }, say(name));
        button.addEventListener('click', () => workFor(button, call, tell));
        return button;
    };
    const groups = Object.entries(SETTINGS).map(([name, settings]) => make('div', { class: 'settings', 'data-format': name },
        make('p', { class: 'meaning' }, say(`about ${name}`)), ...Object.entries(settings).map(([setting, choices]) => makeSetting(name, setting, choices))));
    const choose = (name) => {
        format = name;
        for (const group of groups) group.hidden = group.dataset.format !== name;
    };
    const kinds = make('div', { class: 'kinds', role: 'radiogroup', 'aria-label': say('format') }, ...Object.keys(SETTINGS).map((name) =>
        make('label', {},
            make('input', { type: 'radio', name: 'format', value: name, checked: name === format, onchange: () => choose(name) }),
            make('span', {}, say(`format ${name}`)))));
    const save = action('saveFile', async () => {
        const { name, blob } = await makeFile(readers, format);
        download(name, blob);
    }, { class: 'main' });
    const layersNote = make('p', { class: 'meaning' }, say('saveShownLayers'));
    const form = make('div', {}, kinds, ...groups, layersNote, save, make('hr'),
        make('div', { class: 'buttons' }, action('copyPicture', () => copyPicture(readers)), action('print', () => print(readers, paper))),
        make('p', { class: 'meaning' }, say('printHelp')));
    const empty = make('p', { class: 'empty' }, say('nothingOpen'));
    const panel = make('section', {}, empty, form);
    choose(format);
    watch(['drawing', 'hidden'], () => {
        form.hidden = state.drawing === null;
        empty.hidden = state.drawing !== null;
        layersNote.hidden = state.hidden === null;
    });
    return panel;
}
