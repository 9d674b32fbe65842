// The layers: which are shown, in the words and colours of the document.

import { drawIcon, make } from '../dom.js';
import { change, state, watch } from '../state.js';
import { say } from '../texts.js';

// As it prints.
const standard = (layers) => new Set(layers.flatMap(({ printing }, place) => (printing ? [] : [place])));

const isSame = (a, b) => a.size === b.size && [...a].every((place) => b.has(place));

export function hideLayers(hidden) {
    const { layers } = state.drawing.info;
    change({ hidden: isSame(hidden, standard(layers)) ? null : hidden });
}

function toggle(place, isShown) {
    const { layers } = state.drawing.info;
    const hidden = new Set(state.hidden ?? standard(layers));
    for (const [at, { name }] of layers.entries()) {
        if (name !== layers[place].name) continue;
        if (isShown) hidden.delete(at);
        else hidden.add(at);
    }
    hideLayers(hidden);
}

function depthOf(layers, place) {
    let depth = 0;
    for (let { parent } = layers[place]; parent >= 0 && depth < 8; { parent } = layers[parent]) depth += 1;
    return depth;
}

const note = (icon, text) => {
    const element = make('span', { class: 'note', title: text, role: 'img', 'aria-label': text });
    element.append(drawIcon(icon));
    return element;
};

function makeRow(layers, place) {
    const layer = layers[place];
    const name = layer.name === '' ? say('unnamedLayer') : layer.name;
    const box = make('input', { type: 'checkbox', onchange: () => toggle(place, box.checked) });
    const swatch = make('span', { class: 'swatch round' });
    swatch.style.backgroundColor = `rgb(${layer.colour.join(' ')})`;
    const row = make('li', {}, make('label', { class: 'row' }, box, swatch, make('span', { class: 'name' }, name)));
    row.style.paddingInlineStart = `${depthOf(layers, place) * 16}px`;
    const notes = make('span', { class: 'notes' });
    if (!layer.printing) notes.append(note('unprinted', say('layerUnprinted')));
    if (!layer.enabled) notes.append(note('lock', say('layerLocked')));
    if (layer.dimmed) notes.append(note('dimmed', say('layerDimmed')));
    row.append(notes);
    return { row, box };
}

export function makeLayersPanel() {
    const panel = make('section', {});
    let rows = [];
    watch(['drawing'], () => {
        const layers = state.drawing?.info.layers ?? [];
        rows = layers.map((_, place) => makeRow(layers, place));
        const only = (hidden) => () => hideLayers(hidden);
        const buttons = make('div', { class: 'buttons' },
            make('button', { type: 'button', onclick: () => change({ hidden: null }) }, say('layersPrinted')),
            make('button', { type: 'button', onclick: only(new Set()) }, say('layersAll')),
            make('button', { type: 'button', onclick: () => hideLayers(new Set(layers.keys())) }, say('layersNone')));
        if (layers.length === 0) panel.replaceChildren(make('p', { class: 'empty' }, say(state.drawing === null ? 'nothingOpen' : 'noLayers')));
        else panel.replaceChildren(buttons, make('ul', { class: 'rows', 'aria-label': say('layers') }, ...rows.map(({ row }) => row).reverse()));
    });
    watch(['drawing', 'hidden'], () => {
        const layers = state.drawing?.info.layers ?? [];
        const hidden = state.hidden ?? standard(layers);
        for (const [place, { row, box }] of rows.entries()) {
            box.checked = !hidden.has(place);
            row.classList.toggle('off', hidden.has(place));
        }
    });
    return panel;
}
