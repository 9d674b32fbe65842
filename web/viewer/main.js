// The page: puts its parts together, and says what the keys and the bars do.

import { Collection } from './collection.js';
import { byId, iconButton, make } from './dom.js';
import { hasLocalFonts, readLocalFonts } from './fonts.js';
import { listenToKeys, listenToPointers } from './gestures.js';
import { makeMarks } from './marks.js';
import { keepOffline } from './offline.js';
import { isFont, sourceOfAddress, sourcesOfDrop, sourcesOfFiles, sourcesOfFolder, sourcesOfPaste } from './opening.js';
import { makeList } from './panels/drawings.js';
import { makeFactsPanel } from './panels/facts.js';
import { makeLayersPanel } from './panels/layers.js';
import { makePlatesPanel } from './panels/plates.js';
import { makeSavePanel } from './panels/save.js';
import { makeSide } from './panels/side.js';
import { makeTextPanel } from './panels/text.js';
import { makePicker } from './picker.js';
import { Readers } from './readers.js';
import { isServed, takeServed } from './served.js';
import { change, state, watch } from './state.js';
import { formatNumber, languages, say, setLanguage } from './texts.js';
import { Tiles } from './tiles.js';
import { WordLayer } from './words.js';
import { ACTUAL, fit, resize, zoomBy, zoomTo } from './view.js';

const SAMPLES = ['poster', 'butterfly', 'sleeping-cat'];
const ZOOM_STEP = 1.5;
const WIDE = '(min-width: 760px)';

const stage = byId('stage');
const address = new URL(location.href).searchParams;
setLanguage(address.get('lang'));

const readers = new Readers((busy) => change({ busy }));
const collection = new Collection(readers, tell);
const tiles = new Tiles(byId('picture'), readers, (error) => tell({ text: say('problemDrawing'), detail: error.message }));
const words = new WordLayer(byId('words'), readers);
const picker = makePicker(byId('status'), readers);

// Says something that is wrong, until the next drawing; null: nothing is.
function tell(problem) {
    change({ problem });
}

function makeNotice() {
    const notice = byId('notice');
    watch(['problem'], () => {
        const { problem } = state;
        notice.hidden = problem === null;
        notice.replaceChildren();
        if (problem === null) return;
        const dismiss = iconButton('close', say('dismiss'), () => tell(null));
        const detail = problem.detail === undefined ? [] : [make('p', {}, problem.detail)];
        notice.append(make('div', {}, make('strong', {}, problem.text), ...detail), dismiss);
    });
}

function makeOpening() {
    const name = make('p');
    const progress = make('progress', { max: '1', 'aria-label': say('reading') });
    byId('opening').append(name, progress, make('button', { type: 'button', onclick: () => collection.cancel() }, say('cancel')));
    watch(['opening'], () => {
        byId('opening').hidden = state.opening === null;
        if (state.opening === null) return;
        name.textContent = state.opening.name;
        if (state.opening.part > 0) progress.value = state.opening.part;
        else progress.removeAttribute('value');
    });
}

function speak(text) {
    byId('spoken').textContent = text;
}

// Opening. Fonts that come along serve the drawings from then on.

async function take(sources) {
    const fonts = sources.filter(isFont);
    const drawings = sources.filter((source) => !isFont(source));
    for (const font of fonts) {
        try {
            await readers.addFonts([await font.read()]);
            speak(say('fontAdded', { font: font.name }));
        } catch (error) {
            tell({ text: say('problemFont', { name: font.name }), detail: error.message });
        }
    }
    if (drawings.length > 0) await collection.add(drawings);
    else if (fonts.length > 0 && state.shown !== null) await collection.refresh();
    else if (sources.length === 0) tell({ text: say('nothingToOpen'), detail: say('whatOpens') });
}

// Asks the browser for fonts that the drawing lacks.
async function useLocalFonts() {
    try {
        const fonts = await readLocalFonts(state.drawing.info.fonts);
        if (fonts.length === 0) tell({ text: say('noLocalFonts') });
        else await take(fonts.map(({ name, bytes }) => ({ name: `${name}.otf`, read: () => bytes })));
    } catch (error) {
        tell({ text: say('noLocalFonts'), detail: error.message });
    }
}

const chooser = (attributes, sourcesOf) => {
    const input = make('input', { type: 'file', hidden: true, multiple: true, ...attributes });
    input.addEventListener('change', async () => {
        const sources = await sourcesOf([...input.files]);
        input.value = '';
        await take(sources);
    });
    document.body.append(input);
    return () => input.click();
};
const chooseFiles = chooser({ id: 'choose-files' }, sourcesOfFiles);
const chooseFolder = chooser({ id: 'choose-folder', webkitdirectory: true }, sourcesOfFolder);
const chooseFonts = chooser({ id: 'choose-fonts', accept: '.otf,.ttf,.ttc,.otc,.pfb,.pfa' }, sourcesOfFiles);

function listenToDrops() {
    let depth = 0;
    const show = (by) => {
        depth += by;
        document.body.classList.toggle('dropping', depth > 0);
    };
    addEventListener('dragenter', () => show(1));
    addEventListener('dragleave', () => show(-1));
    addEventListener('dragover', (event) => event.preventDefault());
    addEventListener('drop', async (event) => {
        event.preventDefault();
        show(-depth);
        await take(await sourcesOfDrop(event.dataTransfer));
    });
    addEventListener('paste', async (event) => {
        if (event.target.matches?.('input, textarea')) return;
        const sources = sourcesOfPaste(event.clipboardData, say('pasted'));
        if (sources.length > 0) await take(sources);
    });
}

// The parts of the page.

function makeBars() {
    byId('bar-file').append(iconButton('open', say('open'), chooseFiles));
    const scale = make('input', { id: 'scale', inputmode: 'decimal', 'aria-label': say('scale'), onchange: () => takeScale(scale), onfocus: () => scale.select() });
    const zoom = byId('bar-zoom');
    zoom.setAttribute('aria-label', say('scale'));
    zoom.append(
        iconButton('minus', say('zoomOut'), () => zoomBy(1 / ZOOM_STEP, undefined, { isSmooth: true })), scale,
        iconButton('plus', say('zoomIn'), () => zoomBy(ZOOM_STEP, undefined, { isSmooth: true })),
        iconButton('fit', say('fit'), () => fit({ isSmooth: true })),
        iconButton('actual', say('actualSize'), () => zoomTo(ACTUAL, undefined, { isSmooth: true })));
    byId('bar-panel').append(
        iconButton('keys', say('keys'), () => showKeys()),
        iconButton('panel', say('panels'), () => change({ panel: state.panel === null ? lastPanel : null }), { id: 'toggle-panel' }));
    let lastPanel = 'layers';
    watch(['panel'], () => {
        lastPanel = state.panel ?? lastPanel;
        byId('toggle-panel').setAttribute('aria-expanded', state.panel !== null);
    });
    watch(['view', 'drawing'], () => {
        const percent = (100 * state.view.scale) / ACTUAL;
        scale.value = state.drawing === null ? '' : `${formatNumber(percent, percent < 10 ? 1 : 0)} %`;
    });
    watch(['drawing', 'shown'], () => {
        const name = state.drawing?.info.title || state.shown?.name || '';
        byId('title').textContent = name || say('name');
        document.title = name === '' ? say('name') : `${name} – ${say('name')}`;
        for (const element of zoom.children) element.disabled = state.drawing === null;
        byId('picture').setAttribute('aria-label', say('nothingOpen'));
        if (state.drawing === null) return;
        const [width, height] = state.drawing.info.millimetres.map((side) => formatNumber(side, 0));
        byId('picture').setAttribute('aria-label', say('pictureOf', { name, width, height }));
        speak(say('opened', { name, width, height }));
    });
}

// "150", "150 %" or "1,5".
function takeScale(input) {
    const percent = Number.parseFloat(input.value.replace(/[\s.']+(?=\d{3}\b)/g, '').replace(',', '.'));
    if (percent > 0) zoomTo((percent / 100) * ACTUAL);
    else change({ view: { ...state.view } });
    stage.focus();
}

function makeStart() {
    const start = byId('start');
    const sample = (name) => make('button', { type: 'button', class: 'link', onclick: () => take([sourceOfAddress(`samples/${name}.vx`)]) }, say(`sample ${name}`));
    const language = make('select', { 'aria-label': say('language'), onchange: () => {
        const url = new URL(location.href);
        url.searchParams.set('lang', language.value);
        location.assign(url);
    } }, ...Object.entries(languages).map(([code, name]) => make('option', { value: code, lang: code, selected: code === document.documentElement.lang }, name)));
    start.append(make('div', { class: 'card' },
        make('p', { class: 'lead' }, say(matchMedia('(pointer: coarse)').matches ? 'startTouch' : 'startLead')),
        make('p', {}, say('startHow')),
        make('div', { class: 'buttons' },
            make('button', { type: 'button', class: 'main', onclick: chooseFiles }, say('openFiles')),
            make('button', { type: 'button', onclick: chooseFolder }, say('openFolder'))),
        make('p', { class: 'meaning' }, say('startSamples'), ...SAMPLES.flatMap((name, at) => [at === 0 ? ' ' : ', ', sample(name)])),
        make('p', { class: 'meaning' }, say('startPrivate')), language));
    watch(['drawing', 'shown', 'problem'], () => {
        const isIdle = state.shown === null || (state.drawing === null && state.shown.problem !== undefined);
        start.hidden = !isIdle;
        document.body.classList.toggle('idle', isIdle);
    });
}

function showKeys() {
    const rows = ['+ −', '0', '1', '← ↑ → ↓', 'PageUp PageDown', 'O', 'L', 'P', 'T', 'I', 'S', 'Ctrl F', 'Ctrl S', '?'];
    const dialog = make('dialog', { 'aria-labelledby': 'keys-title', onclose: () => dialog.remove() },
        make('h2', { id: 'keys-title' }, say('keys')),
        make('dl', { class: 'keys' }, ...rows.flatMap((keys) => [
            make('dt', {}, ...keys.split(' ').map((key) => make('kbd', {}, key))), make('dd', {}, say(`key ${keys}`))])),
        make('p', { class: 'meaning' }, say('keysPointer')),
        make('form', { method: 'dialog' }, make('button', { class: 'main' }, say('close'))));
    document.body.append(dialog);
    dialog.showModal();
}

function openPanel(name) {
    change({ panel: name });
    byId(name === 'text' ? 'search' : `tab-${name}`).focus();
}

function listen() {
    listenToPointers(stage, { onHover: (place) => picker.hover(place), isSelecting: (event) => words.isWord(event.target) });
    listenToKeys(stage, {
        o: chooseFiles, l: () => openPanel('layers'), p: () => openPanel('plates'), t: () => openPanel('text'), i: () => openPanel('facts'), s: () => openPanel('save'),
        PageUp: () => collection.step(-1), PageDown: () => collection.step(1), '?': showKeys, Escape: () => change({ panel: null }),
        'Ctrl+f': () => openPanel('text'), 'Ctrl+s': () => openPanel('save'), 'Ctrl+o': chooseFiles,
    });
    listenToDrops();
    new ResizeObserver(() => {
        const { width, height } = stage.getBoundingClientRect();
        if (width === 0 || height === 0) return;
        const ratio = globalThis.devicePixelRatio || 1;
        const canvas = byId('picture');
        canvas.width = Math.round(width * ratio);
        canvas.height = Math.round(height * ratio);
        resize({ width, height });
        tiles.redraw();
    }).observe(stage);
}

function start() {
    byId('unserved').remove();
    byId('viewer').hidden = false;
    stage.setAttribute('aria-label', say('stage'));
    makeBars();
    makeStart();
    makeNotice();
    makeOpening();
    makeMarks(byId('marks'));
    makeList(byId('drawings'), collection);
    makeSide(byId('side'), [
        { name: 'layers', icon: 'layers', element: makeLayersPanel() },
        { name: 'plates', icon: 'plates', element: makePlatesPanel(readers, tell) },
        { name: 'text', icon: 'text', element: makeTextPanel(words) },
        { name: 'facts', icon: 'facts', element: makeFactsPanel({ choose: chooseFonts, useLocal: hasLocalFonts() ? useLocalFonts : undefined }) },
        { name: 'save', icon: 'save', element: makeSavePanel(readers, { tell, paper: byId('paper') }) },
    ]);
    listen();
    openFirstPanel();
}

// The first drawing has a panel beside it, where there is room.
function openFirstPanel() {
    let isFirst = matchMedia(WIDE).matches;
    watch(['drawing'], () => {
        if (!isFirst || state.drawing === null) return;
        isFirst = false;
        if (state.panel === null) change({ panel: state.drawing.info.layers.length > 1 ? 'layers' : 'facts' });
    });
}

// Opens what the address asks for.
async function openAddress() {
    if (isServed()) return take(await takeServed());
    keepOffline();
    const file = address.get('file');
    if (file === null) return undefined;
    const source = sourceOfAddress(file);
    if (source === undefined) return tell({ text: say('otherOrigin'), detail: file });
    return take([source]);
}

start();
openAddress().catch((error) => tell({ text: say('problemReading', { name: '' }), detail: error.message }));
