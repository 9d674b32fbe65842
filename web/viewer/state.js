// The state of the page, in one place. What is shown follows from it: panels change it, and are told when something that they watch has
// changed.

export const state = {
    drawings: [], // those in the list, as collection.js has them
    shown: null, // the one of them that is open
    drawing: null, // what the readers know of it, as Readers.open returns it
    view: { scale: 1, x: 0, y: 0 }, // CSS pixels a point, and where the page's top left corner is on the stage
    hidden: null, // the layers that are not shown, by their places; null: as it prints
    plates: null, // the names of the inks that are shown; null: all
    gray: false, // plates are shown as they are exposed
    overprint: true,
    heat: false,
    limit: 300, // percent of ink, above which there is too much
    words: [], // the texts of the drawing, as words.js has them
    panel: null,
    marks: [], // boxes of the drawing that are pointed out
    opening: null, // the drawing that is read: { name, part }, where part is from 0 to 1
    problem: null, // what is told to be wrong: { text, detail }
    busy: 0, // pictures that are being made
};

const watchers = new Map();

export function change(values) {
    const told = new Set();
    for (const [name, value] of Object.entries(values)) {
        if (state[name] === value) continue;
        state[name] = value;
        for (const tell of watchers.get(name) ?? []) told.add(tell);
    }
    for (const tell of told) tell();
}

// Calls tell now, and after each change of one of the names.
export function watch(names, tell) {
    for (const name of names) watchers.set(name, [...(watchers.get(name) ?? []), tell]);
    tell();
}
