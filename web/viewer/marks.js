// Frames on the drawing around what is pointed out.

import { make } from './dom.js';
import { change, state, watch } from './state.js';
import { page } from './view.js';

const ROOM = 4; // CSS pixels between a frame and what is in it
const MOST = 200;

export function makeMarks(element) {
    watch(['drawing', 'panel'], () => change({ marks: [] }));
    watch(['marks', 'view'], () => {
        if (state.marks.length === 0 || state.drawing === null) {
            element.replaceChildren();
            return;
        }
        const { scale, x, y } = state.view;
        const origin = page();
        element.replaceChildren(...state.marks.slice(0, MOST).map(([left, bottom, right, top]) => {
            const frame = make('div');
            frame.style.left = `${x + (left - origin.left) * scale - ROOM}px`;
            frame.style.top = `${y + (origin.top - top) * scale - ROOM}px`;
            frame.style.width = `${(right - left) * scale + 2 * ROOM}px`;
            frame.style.height = `${(top - bottom) * scale + 2 * ROOM}px`;
            return frame;
        }));
    });
}
