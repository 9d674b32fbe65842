// The panels beside the drawing, one at a time, as tabs.

import { drawIcon, make } from '../dom.js';
import { change, state, watch } from '../state.js';
import { say } from '../texts.js';

// panels: { name, icon, element } each.
export function makeSide(side, panels) {
    const tabs = panels.map(({ name, icon }) => make('button', {
        type: 'button', role: 'tab', id: `tab-${name}`, 'aria-controls': `panel-${name}`,
        onclick: () => change({ panel: state.panel === name ? null : name }),
    }, drawIcon(icon), make('span', {}, say(name))));
    const list = make('div', { role: 'tablist', 'aria-label': say('panels'), onkeydown: (event) => moveAmong(tabs, event) }, ...tabs);
    const body = make('div', { class: 'panels' });
    for (const { name, element } of panels) {
        element.setAttribute('role', 'tabpanel');
        element.id = `panel-${name}`;
        element.setAttribute('aria-labelledby', `tab-${name}`);
        body.append(element);
    }
    side.append(list, body);
    watch(['panel'], () => {
        side.classList.toggle('closed', state.panel === null);
        for (const [at, { name, element }] of panels.entries()) {
            const isShown = name === state.panel;
            element.hidden = !isShown;
            tabs[at].setAttribute('aria-selected', isShown);
            tabs[at].tabIndex = isShown || (state.panel === null && at === 0) ? 0 : -1;
        }
    });
}

function moveAmong(tabs, event) {
    const steps = { ArrowRight: 1, ArrowDown: 1, ArrowLeft: -1, ArrowUp: -1 };
    const step = steps[event.key];
    if (step === undefined) return;
    event.preventDefault();
    const next = tabs[(tabs.indexOf(document.activeElement) + step + tabs.length) % tabs.length];
    next.focus();
    next.click();
}
