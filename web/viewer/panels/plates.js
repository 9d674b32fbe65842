// The plates: each ink on and off and alone, overprint, and where there is too much ink.

import { make } from '../dom.js';
import { colourOf, inksShown } from '../inks.js';
import { change, state, watch } from '../state.js';
import { inkName, say } from '../texts.js';
import { makeCoverage, makePressCheck } from './press.js';

function show(inks, wanted) {
    change({ plates: wanted.size === inks.length ? null : wanted, heat: false });
}

function makeRow(inks, { name, cmyk }) {
    const toggle = () => {
        const wanted = new Set(state.plates ?? inks.map((ink) => ink.name));
        if (box.checked) wanted.add(name);
        else wanted.delete(name);
        show(inks, wanted);
    };
    const isAlone = () => state.plates?.size === 1 && state.plates.has(name);
    const box = make('input', { type: 'checkbox', onchange: toggle });
    const swatch = make('span', { class: 'swatch' });
    swatch.style.backgroundColor = colourOf(cmyk);
    const alone = make('button', {
        type: 'button', class: 'small', 'aria-label': say('inkAloneOf', { ink: inkName(name) }),
        onclick: () => show(inks, isAlone() ? new Set(inks.map((ink) => ink.name)) : new Set([name])),
    }, say('inkAlone'));
    const row = make('li', {}, make('label', { class: 'row' }, box, swatch, make('span', { class: 'name' }, inkName(name))), alone);
    const update = () => {
        box.checked = state.plates === null || state.plates.has(name);
        row.classList.toggle('off', !box.checked);
        alone.setAttribute('aria-pressed', isAlone());
    };
    return { row, update };
}

function makeSwitch(label, read, write, help) {
    const box = make('input', { type: 'checkbox', role: 'switch', onchange: () => write(box.checked) });
    const update = () => {
        box.checked = read();
    };
    return { element: make('label', { class: 'row switch', title: help }, box, make('span', { class: 'name' }, label)), update };
}

export function makePlatesPanel(readers, tell) {
    const panel = make('section', {});
    const list = make('ul', { class: 'rows', 'aria-label': say('inks') });
    let rows = [];
    const all = make('button', { type: 'button', onclick: () => change({ plates: null, heat: false }) }, say('inksAll'));
    const gray = makeSwitch(say('asGray'), () => state.gray, (isOn) => change({ gray: isOn }), say('asGrayHelp'));
    const overprint = makeSwitch(say('overprint'), () => state.overprint, (isOn) => change({ overprint: isOn }), say('overprintHelp'));
    const heat = makeSwitch(say('heat'), () => state.heat, (isOn) => change({ heat: isOn }), say('heatHelp'));
    const number = make('input', { type: 'number', min: '100', max: '400', step: '5', id: 'limit', onchange: () => setLimit(number.value) });
    const slider = make('input', { type: 'range', min: '100', max: '400', step: '5', 'aria-label': say('heatLimit'), oninput: () => setLimit(slider.value) });
    const limit = make('div', { class: 'limit' }, make('label', { for: 'limit' }, say('heatLimit')), slider, number, make('span', {}, '%'));
    const scale = make('div', { class: 'heat-scale', 'aria-hidden': true }, make('span', {}, '0'), make('span', { class: 'mark' }), make('span', {}, '400 %'));
    panel.append(make('div', { class: 'buttons' }, all), list, gray.element, make('hr'), overprint.element,
        heat.element, limit, scale, makeCoverage(readers), makePressCheck(readers, tell));
    watch(['drawing'], () => {
        const inks = inksShown();
        rows = inks.map((ink) => makeRow(inks, ink));
        list.replaceChildren(...rows.map(({ row }) => row));
    });
    watch(['drawing', 'plates', 'gray', 'overprint', 'heat', 'limit'], () => {
        for (const part of [...rows, gray, overprint, heat]) part.update();
        number.value = slider.value = state.limit;
        limit.hidden = scale.hidden = !state.heat;
        scale.style.setProperty('--limit', `${state.limit / 4}%`);
        scale.querySelector('.mark').textContent = `${state.limit} %`;
        panel.classList.toggle('heated', state.heat);
    });
    return panel;
}

function setLimit(text) {
    const limit = Math.min(Math.max(Math.round(Number(text)) || 300, 100), 400);
    change({ limit });
}
