// The words of the drawing as text that nobody sees, over the picture: to select, to copy, to read aloud and to search.

import { make } from './dom.js';
import { shownLayers } from './look.js';
import { change, state, watch } from './state.js';
import { page } from './view.js';

const SIZE = 20; // CSS pixels of an em, before a line is made as large as it is
const RISE = 0.8 * SIZE; // of the top of a line above its baseline
const MOST_LINES = 20000;

export class WordLayer {
    #element;
    #readers;
    #lines = []; // { element, nodes: the text, piece by piece }
    #texts = []; // as the drawing has them, with the numbers of their lines
    #key = '';

    constructor(element, readers) {
        this.#element = element;
        this.#readers = readers;
        element.addEventListener('copy', (event) => this.#copy(event));
        watch(['drawing', 'hidden'], () => this.#read());
        watch(['view', 'drawing'], () => this.#place());
    }

    get texts() {
        return this.#texts;
    }

    isWord(target) {
        return target.closest('.line') !== null;
    }

    async #read() {
        const { drawing } = state;
        const options = drawing === null ? {} : shownLayers();
        const key = JSON.stringify([drawing?.name, options]);
        this.#fill([]);
        this.#key = key;
        if (drawing === null || drawing.info.uses.shows === 0) return;
        try {
            const texts = await this.#readers.do((one, common) => one.text({ ...common, ...options }), () => 500);
            if (this.#key === key && state.drawing === drawing) this.#fill(texts);
        } catch (error) {
            if (error.name !== 'AbortError') this.#fill([]);
        }
    }

    #fill(texts) {
        this.#lines = [];
        const parts = [];
        this.#texts = texts.map((text) => {
            const first = this.#lines.length;
            for (const line of text.lines) {
                if (this.#lines.length === MOST_LINES) break;
                this.#lines.push(makeLine(line));
            }
            const own = this.#lines.slice(first);
            parts.push(make('div', { class: 'text' }, ...own.map(({ element }) => element)));
            return { layer: text.layer, lines: text.lines.slice(0, own.length).map(({ text: words }) => words), first };
        });
        this.#element.replaceChildren(...parts);
        this.#stretch();
        change({ words: this.#texts });
    }

    // A line is as long as its text in the browser's own font, until it is stretched. All are measured before any is changed.
    #stretch() {
        if (state.drawing === null) return;
        const { left, top } = page();
        const sizes = this.#lines.map(({ element }) => [element.offsetWidth, element.offsetHeight]);
        for (const [at, { element, line }] of this.#lines.entries()) {
            if (line.places !== undefined) continue;
            const [width, height] = sizes[at];
            const { origin: [x, y], angle, length, height: em, vertical } = line;
            const turn = vertical ? -angle - 90 : -angle;
            const across = vertical ? em / width : length / width;
            const down = vertical ? length / height : em / SIZE;
            const shift = vertical ? `translate(${-width / 2}px, 0)` : `translate(0, ${-RISE}px)`;
            element.style.transform = `translate(${x - left}px, ${top - y}px) rotate(${turn}deg) scale(${across || 1}, ${down || 1}) ${shift}`;
        }
        for (const { nodes, line } of this.#lines) {
            if (line.places === undefined) continue;
            for (const [at, node] of nodes.entries()) {
                const [x, y, angle] = line.places[at] ?? line.places.at(-1);
                const size = line.height / SIZE;
                node.parentElement.style.transform = `translate(${x - left}px, ${top - y}px) rotate(${-angle}deg) scale(${size}) translate(0, ${-RISE}px)`;
            }
        }
    }

    #place() {
        if (state.drawing === null) return;
        const { scale, x, y } = state.view;
        this.#element.style.transform = `translate(${x}px, ${y}px) scale(${scale})`;
    }

    // Returns the ranges of some characters of a text: one for each line that they touch.
    rangesOf({ first, lines }, start, end) {
        const ranges = [];
        let before = 0;
        for (const [at, words] of lines.entries()) {
            const from = Math.max(start - before, 0);
            const to = Math.min(end - before, words.length);
            if (from < to) ranges.push(rangeOf(this.#lines[first + at].nodes, from, to));
            before += words.length + 1;
        }
        return ranges;
    }

    // A line of the drawing is a line of what is copied.
    #copy(event) {
        const selection = getSelection();
        if (selection.isCollapsed) return;
        const chosen = selection.getRangeAt(0);
        const copied = [];
        for (const { element } of this.#lines) {
            if (!chosen.intersectsNode(element)) continue;
            const range = document.createRange();
            range.selectNodeContents(element);
            if (element.contains(chosen.startContainer)) range.setStart(chosen.startContainer, chosen.startOffset);
            if (element.contains(chosen.endContainer)) range.setEnd(chosen.endContainer, chosen.endOffset);
            if (!range.collapsed) copied.push(range.toString());
        }
        event.clipboardData.setData('text/plain', copied.join('\n'));
        event.preventDefault();
    }
}

// Along a path each character has a place of its own.
function makeLine(line) {
    if (line.places === undefined) {
        const node = document.createTextNode(line.text);
        return { line, nodes: [node], element: make('span', { class: line.vertical ? 'line column' : 'line' }, node) };
    }
    const nodes = Array.from(line.text, (character) => document.createTextNode(character));
    return { line, nodes, element: make('span', { class: 'line path' }, ...nodes.map((node) => make('span', {}, node))) };
}

function rangeOf(nodes, from, to) {
    const range = document.createRange();
    let before = 0;
    for (const node of nodes) {
        const end = before + node.length;
        if (from >= before && from < end) range.setStart(node, from - before);
        if (to > before && to <= end) range.setEnd(node, to - before);
        before = end;
    }
    return range;
}
