// The list of drawings, with a small picture of each that is in sight.

import { make } from '../dom.js';
import { state, watch } from '../state.js';
import { say } from '../texts.js';

const AHEAD = '200px';

export function makeList(nav, collection) {
    const items = new Map(); // by entry
    const list = make('ul');
    nav.append(list);
    nav.setAttribute('aria-label', say('drawings'));
    const seen = new IntersectionObserver((changes) => {
        for (const { target, isIntersecting } of changes) {
            if (!isIntersecting) continue;
            seen.unobserve(target);
            sketch([...items.values()].find(({ item }) => item === target));
        }
    }, { root: nav, rootMargin: AHEAD });

    async function sketch({ entry, canvas }) {
        const picture = await collection.sketch(entry);
        if (picture === undefined) {
            canvas.classList.add('none');
            return;
        }
        canvas.width = picture.width;
        canvas.height = picture.height;
        canvas.getContext('2d').drawImage(picture, 0, 0);
        canvas.classList.add('there');
    }

    function makeItem(entry) {
        const canvas = make('canvas', { 'aria-hidden': true, width: 1, height: 1 });
        const button = make('button', { type: 'button', title: entry.name, onclick: () => collection.show(entry) },
            make('span', { class: 'sketch' }, canvas), make('span', { class: 'name' }, entry.name));
        const item = make('li', {}, button);
        items.set(entry, { entry, item, button, canvas });
        list.append(item);
        seen.observe(item);
    }

    watch(['drawings', 'shown'], () => {
        for (const entry of state.drawings) if (!items.has(entry)) makeItem(entry);
        nav.hidden = state.drawings.length < 2;
        for (const [entry, { button }] of items) {
            const isShown = entry === state.shown;
            button.classList.toggle('failed', entry.problem !== undefined);
            if (isShown) button.setAttribute('aria-current', 'true');
            else button.removeAttribute('aria-current');
            if (isShown && !nav.hidden) button.scrollIntoView({ block: 'nearest', inline: 'nearest' });
        }
    });
}
