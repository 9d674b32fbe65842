// The part of the drawing that the stage shows: its scale and place, and how they change.

import { change, state } from './state.js';

export const ACTUAL = 96 / 72; // CSS pixels a point at 100 %
const MOST = 640 * ACTUAL;
const LEAST = 0.01 * ACTUAL;
const MARGIN = 24; // CSS pixels around a drawing that fits
const KEPT = 48; // of the page stays on the stage
const EASING = 160; // milliseconds

let stage; // its size, in CSS pixels
let moving = 0; // the frame that is asked for
let isFitted = true;

export const page = () => {
    const [left, bottom, right, top] = state.drawing.info.box;
    return { left, bottom, right, top, width: right - left, height: top - bottom };
};

const middle = () => [stage.width / 2, stage.height / 2];

function keepInReach({ scale, x, y }) {
    const { width, height } = page();
    const hold = (at, size, room) => Math.min(Math.max(at, KEPT - size), room - KEPT);
    return { scale, x: hold(x, width * scale, stage.width), y: hold(y, height * scale, stage.height) };
}

function fitted() {
    const { width, height } = page();
    const scale = Math.max(Math.min((stage.width - 2 * MARGIN) / width, (stage.height - 2 * MARGIN) / height, MOST), LEAST);
    return { scale, x: (stage.width - width * scale) / 2, y: (stage.height - height * scale) / 2 };
}

// Goes there at once, or in a few frames for who has nothing against motion.
function goTo(target, { isSmooth = false } = {}) {
    cancelAnimationFrame(moving);
    const wanted = keepInReach(target);
    if (!isSmooth || matchMedia('(prefers-reduced-motion: reduce)').matches) {
        change({ view: wanted });
        return;
    }
    const from = state.view;
    const start = performance.now();
    const step = (now) => {
        const part = Math.min(Math.max((now - start) / EASING, 0), 1);
        const eased = 1 - (1 - part) ** 3;
        const mix = (name) => from[name] + (wanted[name] - from[name]) * eased;
        change({ view: part === 1 ? wanted : { scale: mix('scale'), x: mix('x'), y: mix('y') } });
        if (part < 1) moving = requestAnimationFrame(step);
    };
    moving = requestAnimationFrame(step);
}

export function fit(options) {
    if (state.drawing === null) return;
    goTo(fitted(), options);
    isFitted = true;
}

// What is at the place stays there.
export function zoomTo(scale, [x, y] = middle(), options) {
    if (state.drawing === null) return;
    const wanted = Math.min(Math.max(scale, LEAST), MOST);
    const factor = wanted / state.view.scale;
    isFitted = false;
    goTo({ scale: wanted, x: x - (x - state.view.x) * factor, y: y - (y - state.view.y) * factor }, options);
}

export const zoomBy = (factor, place, options) => zoomTo(state.view.scale * factor, place, options);

export function panBy(dx, dy, options) {
    if (state.drawing === null) return;
    isFitted = false;
    goTo({ ...state.view, x: state.view.x + dx, y: state.view.y + dy }, options);
}

// Brings a box of the drawing into sight, in points.
export function reveal([left, bottom, right, top]) {
    const { scale, x, y } = state.view;
    const origin = page();
    const at = (px, py) => [x + (px - origin.left) * scale, y + (origin.top - py) * scale];
    const [l, t] = at(left, top);
    const [r, b] = at(right, bottom);
    const isSeen = l >= 0 && t >= 0 && r <= stage.width && b <= stage.height;
    if (isSeen) return;
    isFitted = false;
    goTo({ scale, x: x + stage.width / 2 - (l + r) / 2, y: y + stage.height / 2 - (t + b) / 2 }, { isSmooth: true });
}

// The point of the drawing that is at a place on the stage.
export function pointAt(x, y) {
    const origin = page();
    return [origin.left + (x - state.view.x) / state.view.scale, origin.top - (y - state.view.y) / state.view.scale];
}

// A drawing that fitted does so afterwards too.
export function resize(size) {
    const before = stage;
    stage = size;
    if (state.drawing === null || before === undefined) return;
    if (isFitted) goTo(fitted());
    else goTo({ ...state.view, x: state.view.x + (size.width - before.width) / 2, y: state.view.y + (size.height - before.height) / 2 });
}
