// How the drawing is to look, as the options of a picture.

import { inksShown } from './inks.js';
import { state } from './state.js';

const escapeComma = (name) => name.replace(/[\\,]/g, '\\$&');
const NO_LAYER = '\u0001'; // the name of none

// Layers are told apart by their names. One without a name is there with all of them, or with none that has a name.
export function layerOptions(layers, hidden) {
    if (hidden === null) return {};
    const names = (wanted) => [...new Set(layers.filter(({ name }, place) => name !== '' && hidden.has(place) === wanted).map(({ name }) => escapeComma(name)))];
    if (layers.some(({ name }, place) => name === '' && hidden.has(place))) {
        const shown = names(false);
        return { layers: shown.length > 0 ? shown : [NO_LAYER] };
    }
    const left = names(true);
    return left.length > 0 ? { layers: 'all', hide: left } : { layers: 'all' };
}

// Those of each output.
export const shownLayers = () => layerOptions(state.drawing?.info.layers ?? [], state.hidden);

// Plates in gray are those that are shown, so all have to be named.
function plateOptions() {
    if (state.plates === null && !state.gray) return {};
    const names = state.plates === null ? inksShown().map(({ name }) => name) : [...state.plates];
    return { plates: names.length > 0 ? names.map(escapeComma) : 'none', ...(state.gray ? { 'plate-colours': 'gray' } : {}) };
}

export function pictureOptions() {
    return {
        background: 'white',
        ...shownLayers(),
        ...(state.overprint ? {} : { overprint: 'ignore' }),
        ...plateOptions(),
    };
}

// Two looks with one key are the same.
export function lookKey() {
    return JSON.stringify([state.heat ? state.limit : 0, pictureOptions()]);
}
