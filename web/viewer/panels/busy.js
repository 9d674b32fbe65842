// Work that a button begins, and shows as long as it lasts.

import { say } from '../texts.js';

export async function workFor(button, call, tell) {
    button.setAttribute('aria-busy', 'true');
    try {
        await call();
    } catch (error) {
        if (error.name !== 'AbortError') tell({ text: say('problemSaving'), detail: error.message });
    } finally {
        button.removeAttribute('aria-busy');
    }
}
