// The inks of a drawing: those of the press, and each spot ink that has a plate of its own.

import { state } from './state.js';

export const PROCESS = ['Cyan', 'Magenta', 'Yellow', 'Black'];

// What light a full ink lets through: red, green and blue.
const LIGHT = [[0, 0.62, 0.88], [0.89, 0, 0.49], [1, 0.92, 0], [0.11, 0.11, 0.11]];

// Something close to what inks look like, for a small patch.
export function colourOf(cmyk) {
    const through = (channel) => cmyk.reduce((light, amount, ink) => light * (1 - amount * (1 - LIGHT[ink][channel])), 1);
    return `rgb(${[0, 1, 2].map((channel) => Math.round(255 * through(channel))).join(' ')})`;
}

const unit = (place) => PROCESS.map((_, at) => (at === place ? 1 : 0));

export function inksOf(info) {
    const spots = new Map();
    for (const { name, cmyk, plate } of info.inks) if (plate && !PROCESS.includes(name) && !spots.has(name)) spots.set(name, cmyk);
    return [...PROCESS.map((name, place) => ({ name, cmyk: unit(place) })), ...[...spots].map(([name, cmyk]) => ({ name, cmyk }))];
}

export const inksShown = () => inksOf(state.drawing?.info ?? { inks: [] });
