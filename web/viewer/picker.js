// The line at the bottom: where the pointer is, which inks are there, and what they belong to.

import { make } from './dom.js';
import { colourOf, inksShown } from './inks.js';
import { pictureOptions } from './look.js';
import { state, watch } from './state.js';
import { formatNumber, inkName, say } from './texts.js';
import { page, pointAt } from './view.js';

const MM = 25.4 / 72;

export function makePicker(bar, readers) {
    const place = make('span', { class: 'place' });
    const inks = make('span', { class: 'inks' });
    const object = make('span', { class: 'object' });
    const work = make('span', { class: 'work' });
    bar.append(place, inks, object, work);
    let wanted = null; // the point under the pointer
    let isAsking = false;

    const tellSize = () => {
        if (state.drawing === null) return '';
        return `${state.drawing.info.millimetres.map((side) => formatNumber(side, 1)).join(' × ')} mm`;
    };
    const clear = () => {
        wanted = null;
        inks.replaceChildren();
        object.replaceChildren();
        place.textContent = tellSize();
    };
    const isOnPage = ([x, y]) => {
        const { left, bottom, right, top } = page();
        return x >= left && x < right && y > bottom && y <= top;
    };

    // The inks of the pixel and the object on top, of the last place that the pointer came to.
    async function ask() {
        if (isAsking || wanted === null) return;
        isAsking = true;
        const [x, y] = wanted;
        const half = 0.5 / (state.view.scale * (globalThis.devicePixelRatio || 1));
        const { background, plates, 'plate-colours': colours, ...options } = pictureOptions();
        try {
            const found = await readers.do(async (drawing, common) => {
                const pixels = await drawing.inkPixels({ ...common, box: [x - half, y - half, x + half, y + half], width: 1, height: 1, ...options });
                return { pixels, hit: await drawing.objectAt(x, y, { ...common, within: 4 * half, ...options }) };
            }, () => -1);
            if (wanted !== null) tell(found);
        } catch (error) {
            if (error.name !== 'AbortError') clear();
        } finally {
            isAsking = false;
            if (wanted !== null && (wanted[0] !== x || wanted[1] !== y)) ask();
        }
    }

    function tell({ pixels, hit }) {
        const total = pixels.data.reduce((sum, amount) => sum + amount, 0) / 2.55;
        inks.replaceChildren(...pixels.inks.map((name, at) => inkOf(name, pixels.data[at] / 2.55)),
            make('span', { class: total > state.limit ? 'total much' : 'total' }, `Σ ${formatNumber(total, 0)} %`));
        object.textContent = hit === null ? '' : describeObject(hit);
    }

    watch(['drawing'], clear);
    watch(['busy'], () => {
        work.textContent = state.busy > 0 ? say('working') : '';
    });
    return {
        // at: where the pointer is on the stage; null: nowhere.
        hover(at) {
            if (state.drawing === null || at === null) return clear();
            const point = pointAt(...at);
            if (!isOnPage(point)) return clear();
            const { left, top } = page();
            const [x, y] = [point[0] - left, top - point[1]].map((side) => formatNumber(side * MM, 1));
            place.textContent = `x ${x}  y ${y} mm`;
            wanted = point;
            return ask();
        },
    };
}

function inkOf(name, percent) {
    const known = inksShown().find((ink) => ink.name === name);
    const swatch = make('span', { class: 'swatch' });
    swatch.style.backgroundColor = colourOf(known?.cmyk ?? [0, 0, 0, 0.5]);
    return make('span', { class: percent > 0 ? 'ink' : 'ink none', title: inkName(name) }, swatch, `${inkName(name, true)} ${formatNumber(percent, 0)}`);
}

// Says "Fill, C 20 M 100 Y 0 K 0, layer Kite".
function describeObject({ kind, colour, layer, overprint }) {
    const percent = (part) => formatNumber(100 * part, 1);
    const parts = [say(`object ${kind}`)];
    if (colour?.spot !== undefined) parts.push(`${colour.spot} ${percent(colour.amount)} %`);
    else if (colour?.cmyk !== undefined) parts.push(colour.cmyk.map((ink, at) => `${'CMYK'[at]} ${percent(ink)}`).join(' '));
    else if (colour?.gray !== undefined) parts.push(`K ${percent(1 - colour.gray)}`);
    if (overprint) parts.push(say('overprints'));
    if (layer !== null && layer !== undefined) parts.push(say('inLayer', { layer: layer === '' ? say('unnamedLayer') : layer }));
    return parts.join(', ');
}
