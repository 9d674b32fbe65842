// A reader's worker in Node.

import { parentPort } from 'node:worker_threads';

import { makeAnswers } from './answers.js';
import { load } from './files.node.js';

parentPort.on('message', makeAnswers((message, transfer) => parentPort.postMessage(message, transfer), load));
