// A reader's worker on a page.

import { makeAnswers } from './answers.js';
import { load } from './files.js';

const answer = makeAnswers((message, transfer) => globalThis.postMessage(message, transfer), load);
globalThis.onmessage = ({ data }) => answer(data);
