// The words of the drawing: search, and all of it to read and copy.

import { byId, iconButton, make } from '../dom.js';
import { findWords } from '../search.js';
import { state, watch } from '../state.js';
import { say } from '../texts.js';
import { pointAt, reveal } from '../view.js';

const MOST_LISTED = 500;

function paint(name, ranges) {
    if (globalThis.Highlight !== undefined) CSS.highlights.set(name, new Highlight(...ranges));
}

function boxOf(ranges) {
    const { left, top } = byId('stage').getBoundingClientRect();
    const sides = ranges.map((range) => range.getBoundingClientRect());
    const [x0, y1] = pointAt(Math.min(...sides.map((side) => side.left)) - left, Math.min(...sides.map((side) => side.top)) - top);
    const [x1, y0] = pointAt(Math.max(...sides.map((side) => side.right)) - left, Math.max(...sides.map((side) => side.bottom)) - top);
    return [x0, y0, x1, y1];
}

export function makeTextPanel(words) {
    let found = [];
    let current = -1;
    const input = make('input', { type: 'search', id: 'search', placeholder: say('searchHint'), 'aria-label': say('search'), autocomplete: 'off', spellcheck: 'false' });
    const count = make('span', { class: 'count', role: 'status' });
    const step = (by) => () => go(current + by);
    const previous = iconButton('up', say('previousMatch'), step(-1));
    const next = iconButton('down', say('nextMatch'), step(1));
    const list = make('ul', { class: 'texts' });
    const copyAll = () => navigator.clipboard.writeText(state.words.map(({ lines }) => lines.join('\n')).join('\n\n'));
    const copy = make('button', { type: 'button', onclick: copyAll }, say('copyText'));
    const empty = make('p', { class: 'empty' }, say('noText'));

    function go(to) {
        if (found.length === 0) return;
        current = (to + found.length) % found.length;
        const ranges = words.rangesOf(found[current].text, found[current].start, found[current].end);
        paint('match', ranges);
        reveal(boxOf(ranges));
        count.textContent = say('matchOf', { at: current + 1, count: found.length });
    }

    function search() {
        found = findWords(state.words, input.value);
        current = -1;
        paint('match', []);
        paint('found', found.flatMap(({ text, start, end }) => words.rangesOf(text, start, end)));
        previous.disabled = next.disabled = found.length === 0;
        if (found.length > 0) go(0);
        else count.textContent = input.value.trim() === '' ? '' : say('noMatch');
    }

    input.addEventListener('input', search);
    input.addEventListener('keydown', (event) => {
        if (event.key === 'Enter') go(current + (event.shiftKey ? -1 : 1));
        if (event.key === 'Escape') {
            input.value = '';
            search();
            byId('stage').focus();
        }
    });

    const show = (text) => reveal(boxOf(words.rangesOf(text, 0, text.lines.join('\n').length)));
    watch(['words'], () => {
        const texts = state.words.filter(({ lines }) => lines.length > 0);
        empty.hidden = texts.length > 0;
        copy.hidden = list.hidden = texts.length === 0;
        list.replaceChildren(...texts.slice(0, MOST_LISTED).map((text) =>
            make('li', {}, make('button', { type: 'button', onclick: () => show(text) }, text.lines.join('\n')))));
        search();
    });
    return make('section', {}, make('div', { class: 'search' }, input, previous, next), count, empty, list, copy);
}
