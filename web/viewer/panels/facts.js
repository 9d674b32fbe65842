// The panel that tells what is known of the drawing, and what each of it means.

import { drawIcon, make } from '../dom.js';
import { PROCESS, colourOf, inksOf } from '../inks.js';
import { state, watch } from '../state.js';
import { formatNumber, formatSize, inkName, say } from '../texts.js';

const section = (name, ...children) => make('section', { class: 'facts' }, make('h2', {}, say(name)), ...children);

function factList(facts) {
    const list = make('dl');
    for (const [name, value] of facts) if (value !== '' && value !== undefined) list.append(make('dt', {}, say(name)), make('dd', {}, value));
    return list;
}

function aboutDrawing({ info, bytes, name }) {
    const size = (pair, digits, unit) => `${pair.map((side) => formatNumber(side, digits)).join(' × ')} ${unit}`;
    return section('factsDrawing', factList([
        ['factTitle', info.title],
        ['factFile', name],
        ['factSize', size(info.millimetres, 1, 'mm')],
        ['factPoints', size(info.points, 1, 'pt')],
        ['factCreator', info.creator],
        ['factDate', info.date === '' ? info.creationDate : info.date.replace('T', ' ')],
        ['factVersion', String(info.version)],
        ['factBytes', formatSize(bytes)],
        ['factWrapping', info.wrapping],
        ['factPaths', formatNumber(info.uses.fills + info.uses.strokes, 0)],
    ]));
}

function aboutInks({ info }) {
    const percent = (cmyk) => cmyk.map((ink, at) => `${'CMYK'[at]} ${formatNumber(100 * ink, 0)}`).join('  ');
    const rows = inksOf(info).slice(4).map(({ name, cmyk }) => {
        const swatch = make('span', { class: 'swatch' });
        swatch.style.backgroundColor = colourOf(cmyk);
        return make('li', {}, swatch, make('span', { class: 'name' }, name), make('span', { class: 'numbers' }, percent(cmyk)));
    });
    const process = info.monochrome || !info.uses.cmyk ? inkName('Black') : PROCESS.map((name) => inkName(name)).join(', ');
    const list = rows.length > 0 ? [make('p', { class: 'meaning' }, say('spotInksMean')), make('ul', { class: 'rows plain' }, ...rows)] : [];
    return section('inks', make('p', {}, process), ...list);
}

const SERVED = { exact: 'fontExact', 'stand-in': 'fontStandIn', substitute: 'fontSubstitute', missing: 'fontMissing' };

// add: { choose, useLocal }, what to do for fonts that are not here; useLocal is not there where the browser gives none.
function aboutFonts({ info }, add) {
    if (info.fonts.length === 0) return undefined;
    const rows = info.fonts.map(({ asked, served, match, characters, missingGlyphs }) => {
        const item = make('li', { class: `font ${match}` }, make('strong', {}, asked), make('span', { class: 'served' }, say(SERVED[match], { font: served })));
        if (missingGlyphs > 0) item.append(make('span', { class: 'lacking' }, say('fontGlyphs', { count: missingGlyphs, all: characters })));
        return item;
    });
    const list = make('ul', { class: 'rows plain' }, ...rows);
    if (info.fonts.every(({ match, missingGlyphs }) => match === 'exact' && missingGlyphs === 0)) return section('factsFonts', list);
    const button = (name, onclick) => make('button', { type: 'button', onclick }, say(name));
    const buttons = make('div', { class: 'buttons' }, button('addFonts', add.choose), ...(add.useLocal === undefined ? [] : [button('localFonts', add.useLocal)]));
    return section('factsFonts', list, make('p', { class: 'meaning' }, say('fontsHelp')), buttons);
}

// Finds what is not as it should be: { text, meaning } each.
function findingsOf({ info }) {
    const found = [];
    const find = (key, values) => found.push({ text: say(key, values), meaning: say(`${key}Means`) });
    if (!info.whole) find('cutShort');
    if (info.fault !== undefined) find('fault', { line: info.fault.line, text: info.fault.text });
    if (info.salvage !== undefined) find('salvaged', { count: info.salvage.faults });
    if (info.damage !== '') find('damaged', { text: info.damage });
    if (info.undrawn.bytes !== undefined) find('undrawn', { bytes: formatSize(info.undrawn.bytes) });
    if (Object.keys(info.open).length > 0) find('leftOpen');
    for (const [name, count] of Object.entries(info.unshown)) find(name, { count });
    for (const { name, mixtures } of info.inks) if (mixtures > 1) find('mixtures', { ink: name });
    return found;
}

function aboutWarnings(drawing) {
    const rows = findingsOf(drawing).map(({ text, meaning }) => make('li', {}, drawIcon('warning'),
        make('div', {}, make('strong', {}, text), make('p', { class: 'meaning' }, meaning))));
    const told = drawing.warnings.map((line) => make('li', {}, line));
    if (rows.length === 0 && told.length === 0) return section('factsWarnings', make('p', { class: 'meaning' }, say('noWarnings')));
    const list = rows.length > 0 ? [make('ul', { class: 'rows plain warnings' }, ...rows)] : [];
    const words = told.length > 0 ? [make('details', {}, make('summary', {}, say('inItsWords')), make('ul', { class: 'told', lang: 'en' }, ...told))] : [];
    return section('factsWarnings', ...list, ...words);
}

export function makeFactsPanel(addFonts) {
    const panel = make('section', {});
    watch(['drawing'], () => {
        const { drawing } = state;
        if (drawing === null) panel.replaceChildren(make('p', { class: 'empty' }, say('nothingOpen')));
        else panel.replaceChildren(...[aboutDrawing(drawing), aboutWarnings(drawing), aboutInks(drawing), aboutFonts(drawing, addFonts)].filter(Boolean));
    });
    return panel;
}
