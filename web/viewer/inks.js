// The inks of a drawing: those of the press, and each spot ink that has a plate of its own.

import { state } from './state.js';

export const PROCESS = ['Cyan', 'Magenta', 'Yellow', 'Black'];

// Something close to what it looks like, for a small patch.
export const colourOf = ([cyan, magenta, yellow, black]) =>
    `rgb(${[cyan, magenta, yellow].map((ink) => Math.round(255 * (1 - Math.min(ink + black, 1)))).join(' ')})`;

const unit = (place) => PROCESS.map((_, at) => (at === place ? 1 : 0));

export function inksOf(info) {
    const spots = new Map();
    for (const { name, cmyk, plate } of info.inks) if (plate && !PROCESS.includes(name) && !spots.has(name)) spots.set(name, cmyk);
    return [...PROCESS.map((name, place) => ({ name, cmyk: unit(place) })), ...[...spots].map(([name, cmyk]) => ({ name, cmyk }))];
}

export const inksShown = () => inksOf(state.drawing?.info ?? { inks: [] });
