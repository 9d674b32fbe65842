// What pointers, the wheel and keys do to the view.

import { ACTUAL, fit, panBy, zoomBy, zoomTo } from './view.js';

const WHEEL = 0.0022; // powers of e a pixel of the wheel
const PINCH = 0.01; // the same for two fingers on a touch pad, which come as a wheel with Ctrl
const LINE = 33; // pixels of a wheel that counts in lines
const KEY_STEP = 1.25;
const PAN_STEP = 64; // CSS pixels

export function listenToPointers(stage, { onHover, isSelecting }) {
    const down = new Map();
    const placeOf = ({ clientX, clientY }) => {
        const { left, top } = stage.getBoundingClientRect();
        return [clientX - left, clientY - top];
    };

    stage.addEventListener('pointerdown', (event) => {
        if (event.button > 1 || isSelecting(event)) return;
        if (event.button === 1) event.preventDefault();
        getSelection().removeAllRanges();
        stage.setPointerCapture(event.pointerId);
        down.set(event.pointerId, placeOf(event));
        stage.classList.add('moved');
    });
    stage.addEventListener('pointermove', (event) => {
        const place = placeOf(event);
        onHover(place);
        const before = down.get(event.pointerId);
        if (before === undefined) return;
        const other = [...down].find(([id]) => id !== event.pointerId)?.[1];
        down.set(event.pointerId, place);
        if (other === undefined) {
            panBy(place[0] - before[0], place[1] - before[1]);
            return;
        }
        const away = ([x, y]) => Math.hypot(x - other[0], y - other[1]);
        const between = ([x, y]) => [(x + other[0]) / 2, (y + other[1]) / 2];
        panBy(between(place)[0] - between(before)[0], between(place)[1] - between(before)[1]);
        if (away(before) > 0) zoomBy(away(place) / away(before), between(place));
    });
    const lift = ({ pointerId }) => {
        down.delete(pointerId);
        if (down.size === 0) stage.classList.remove('moved');
    };
    stage.addEventListener('pointerup', lift);
    stage.addEventListener('pointercancel', lift);
    stage.addEventListener('pointerleave', () => onHover(null));
    stage.addEventListener('dblclick', (event) => {
        if (!isSelecting(event)) zoomBy(event.shiftKey ? 0.5 : 2, placeOf(event), { isSmooth: true });
    });
    stage.addEventListener('wheel', (event) => {
        event.preventDefault();
        const unit = event.deltaMode === WheelEvent.DOM_DELTA_PIXEL ? 1 : LINE;
        const [dx, dy] = [event.deltaX * unit, event.deltaY * unit];
        if (event.shiftKey || Math.abs(dx) > Math.abs(dy)) panBy(event.shiftKey && dx === 0 ? -dy : -dx, 0);
        else zoomBy(Math.exp(-dy * (event.ctrlKey ? PINCH : WHEEL)), placeOf(event));
    }, { passive: false });
}

// The keys of the drawing, for the stage and where nothing else has the focus.
const KEYS = {
    '+': () => zoomBy(KEY_STEP, undefined, { isSmooth: true }),
    '=': () => zoomBy(KEY_STEP, undefined, { isSmooth: true }),
    '-': () => zoomBy(1 / KEY_STEP, undefined, { isSmooth: true }),
    0: () => fit({ isSmooth: true }),
    1: () => zoomTo(ACTUAL, undefined, { isSmooth: true }),
    ArrowLeft: () => panBy(PAN_STEP, 0),
    ArrowRight: () => panBy(-PAN_STEP, 0),
    ArrowUp: () => panBy(0, PAN_STEP),
    ArrowDown: () => panBy(0, -PAN_STEP),
};

// others: more of them, and those with Ctrl or the command key, which hold wherever the focus is, as "Ctrl+f".
export function listenToKeys(stage, others) {
    const keys = { ...KEYS, ...others };
    addEventListener('keydown', (event) => {
        if (event.altKey || event.isComposing || document.querySelector('dialog[open]') !== null) return;
        const hasCommand = event.ctrlKey || event.metaKey;
        const isFree = event.target === stage || event.target === document.body;
        if (!hasCommand && !isFree) return;
        const call = keys[hasCommand ? `Ctrl+${event.key.toLowerCase()}` : event.key];
        if (call === undefined) return;
        event.preventDefault();
        call();
    });
}
