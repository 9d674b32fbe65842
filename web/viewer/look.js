// Says how the drawing is to look, as the options of a picture.

import { inksShown } from './inks.js';
import { state } from './state.js';

const isUnnamed = ({ name }) => name === '';

// Layers are told apart by their names. Those without one cannot be named: they go where no others are named, or where none but those that
// print are asked for. So one that prints stays when all others are hidden.
export function layerOptions(layers, hidden) {
    if (hidden === null) return {};
    const names = (isHidden) => [...new Set(layers.filter((layer, place) => !isUnnamed(layer) && hidden.has(place) === isHidden).map(({ name }) => name))];
    const [shown, left] = [names(false), names(true)];
    const hide = left.length > 0 ? { hide: left } : {};
    if (!layers.some((layer, place) => isUnnamed(layer) && hidden.has(place))) return { layers: 'all', ...hide };
    return shown.length > 0 ? { layers: shown } : hide;
}

// Every output has these.
export const shownLayers = () => layerOptions(state.drawing?.info.layers ?? [], state.hidden);

// Plates in gray are those that are shown, so all have to be named.
function plateOptions() {
    if (state.plates === null && !state.gray) return {};
    const names = state.plates === null ? inksShown().map(({ name }) => name) : [...state.plates];
    return { plates: names, ...(state.gray ? { 'plate-colours': 'gray' } : {}) };
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
