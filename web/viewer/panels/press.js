// Tells what a press would get wrong, as the command's check does.

import { drawIcon, make } from '../dom.js';
import { shownLayers } from '../look.js';
import { change, state, watch } from '../state.js';
import { formatNumber, say } from '../texts.js';
import { reveal } from '../view.js';
import { workFor } from './busy.js';
import { download } from './save.js';

const MINUTES = 10 * 60000;
const AROUND = 6; // points around a place that is only one

// Returns the boxes of a finding.
function boxesOf({ at, places = [] }) {
    if (places.length > 0) return places.map(({ box }) => box);
    return at === undefined ? [] : [[at[0] - AROUND, at[1] - AROUND, at[0] + AROUND, at[1] + AROUND]];
}

function makeFinding(finding) {
    const boxes = boxesOf(finding);
    const show = () => {
        reveal(boxes[0], { isNear: true });
        change({ marks: boxes });
    };
    const words = make('span', { lang: 'en' }, finding.text);
    const icon = drawIcon(finding.severity === 'note' ? 'facts' : 'warning');
    const mark = make('span', { class: 'severity', role: 'img', 'aria-label': say(`severity ${finding.severity}`) }, icon);
    if (boxes.length === 0) return make('li', { class: finding.severity }, mark, words);
    return make('li', { class: finding.severity }, mark, make('button', { type: 'button', onclick: show }, words));
}

export function makePressCheck(readers, tell) {
    const list = make('ul', { class: 'rows plain findings' });
    const outcome = make('p', { class: 'meaning', role: 'status' });
    const button = make('button', { type: 'button', onclick: () => workFor(button, check, tell) }, say('checkPress'));
    const report = make('button', { type: 'button', onclick: () => workFor(report, saveReport, tell) }, say('saveReport'));
    const element = make('section', { class: 'facts' }, make('h2', {}, say('press')), make('div', { class: 'buttons' }, button, report), outcome, list);

    const ask = (options) => readers.do((drawing, common) => drawing.check({ ...common, ...shownLayers(), name: state.drawing.name, timeout: MINUTES, ...options }));
    async function check() {
        const { findings } = await ask({});
        outcome.textContent = findings.length === 0 ? say('nothingFound') : '';
        list.replaceChildren(...findings.map(makeFinding));
    }
    async function saveReport() {
        const { html } = await ask({ html: true });
        download(`${state.drawing.name}.html`, new Blob([html], { type: 'text/html' }));
    }
    watch(['drawing', 'hidden'], () => {
        list.replaceChildren();
        outcome.textContent = '';
    });
    return element;
}

// Says how much of the drawing has more ink than the limit, as long as the map of it is shown.
export function makeCoverage(readers) {
    const words = make('p', { class: 'meaning', role: 'status' });
    let asked = '';
    watch(['drawing', 'hidden', 'heat', 'limit', 'overprint'], async () => {
        words.hidden = !state.heat;
        if (!state.heat || state.drawing === null) return;
        const call = { limit: state.limit, ...shownLayers(), ...(state.overprint ? {} : { overprint: 'ignore' }) };
        const key = (asked = JSON.stringify([state.drawing.name, call]));
        try {
            const { above, total } = await readers.do((drawing, common) => drawing.coverage({ ...common, ...call }), () => (key === asked ? 300 : Infinity));
            const percent = (part) => formatNumber(100 * part, 1);
            if (key === asked) words.textContent = say('coverage', { share: percent(above.share), limit: state.limit, most: formatNumber(100 * total.most, 0) });
        } catch (error) {
            if (error.name !== 'AbortError') words.textContent = error.message;
        }
    });
    return words;
}
