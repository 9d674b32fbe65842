// Elements, with few words.

// make('button', { type: 'button', onclick }, 'text', child...): what begins with "on" listens, true and false are attributes that are
// there or not, and undefined is none.
export function make(name, attributes = {}, ...children) {
    const element = document.createElement(name);
    for (const [key, value] of Object.entries(attributes)) {
        if (value === undefined || value === false) continue;
        if (key.startsWith('on')) element.addEventListener(key.slice(2), value);
        else element.setAttribute(key, value === true ? '' : value);
    }
    element.append(...children.filter((child) => child !== undefined));
    return element;
}

// A button with a picture, whose name is read aloud and shown as a hint.
export function iconButton(icon, name, onclick, attributes = {}) {
    return make('button', { type: 'button', class: 'icon', 'aria-label': name, title: name, onclick, ...attributes }, drawIcon(icon));
}

export const byId = (id) => document.getElementById(id);

// Lines of a 16 by 16 grid.
const ICONS = {
    open: 'M2 12.5V4a1 1 0 0 1 1-1h3l1.5 1.5H12a1 1 0 0 1 1 1V7M2 12.5 4 7.5h10.5L12.5 12.5Z',
    plus: 'M8 3v10M3 8h10',
    minus: 'M3 8h10',
    fit: 'M2.5 6V2.5H6M10 2.5h3.5V6M13.5 10v3.5H10M6 13.5H2.5V10',
    actual: 'M3 5l1.5-1v8M8 6.5v.01M8 10v.01M11 5l1.5-1v8',
    layers: 'M8 2 14 5.5 8 9 2 5.5ZM2 8.5l6 3.5 6-3.5M2 11l6 3.5L14 11',
    plates: 'M6 2.5a3.5 3.5 0 1 0 0 7 3.5 3.5 0 1 0 0-7M10 6.5a3.5 3.5 0 1 0 0 7 3.5 3.5 0 1 0 0-7',
    text: 'M3 4V3h10v1M8 3v10M6 13h4',
    facts: 'M8 2a6 6 0 1 0 0 12A6 6 0 1 0 8 2M8 7.5V11M8 5v.01',
    save: 'M8 2v8M4.5 7 8 10.5 11.5 7M3 13.5h10',
    panel: 'M2 3h12v10H2ZM10 3v10',
    close: 'M4 4l8 8M12 4l-8 8',
    lock: 'M4 7.5h8v6H4ZM5.5 7.5V5a2.5 2.5 0 0 1 5 0v2.5',
    unprinted: 'M4.5 6V2.5h7V6M4.5 11H2.5V6h11v5h-2M4.5 9h7v4.5h-7ZM2 2l12 12',
    dimmed: 'M8 2.5a5.5 5.5 0 1 0 0 11ZM8 2.5a5.5 5.5 0 0 1 0 11',
    up: 'M4 10l4-4 4 4',
    down: 'M4 6l4 4 4-4',
    search: 'M7 2.5a4.5 4.5 0 1 0 0 9 4.5 4.5 0 1 0 0-9M10.5 10.5 14 14',
    picker: 'M9 4l3 3M10.5 2.5a1.5 1.5 0 0 1 3 3L11 8 8 5ZM8.5 5.5 3 11v2h2l5.5-5.5',
    warning: 'M8 2.5 14 13H2ZM8 6.5V9.5M8 11.300v.01',
    keys: 'M2 4h12v8H2ZM4.5 6.5v.01M8 6.5v.01M11.5 6.5v.01M5 9.5h6',
};

export function drawIcon(name) {
    const svg = document.createElementNS('http://www.w3.org/2000/svg', 'svg');
    svg.setAttribute('viewBox', '0 0 16 16');
    svg.setAttribute('aria-hidden', 'true');
    const path = document.createElementNS(svg.namespaceURI, 'path');
    path.setAttribute('d', ICONS[name]);
    svg.append(path);
    return svg;
}
