// The ways to fail, by codes that do not change.

// By the statuses of vx.h.
const CODES = [
    'ok', 'wrong-argument', 'wrong-option', 'cannot-read', 'not-a-drawing', 'malformed', 'font-missing', 'limit',
    'out-of-memory', 'cannot-write', 'stopped', 'busy', 'failed', 'not-isolated',
];

export const codeOf = (status) => CODES[status] ?? 'failed';

// code is one of those above, or "aborted", "timeout", "crashed", "closed".
export class VxError extends Error {
    constructor(code, message) {
        super(message);
        this.name = 'VxError';
        this.code = code;
    }
}
