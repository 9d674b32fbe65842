// Finds words in texts whose lines end where they like: a line end counts as a blank or as nothing, and so does a hyphen before it.

const LINE_END = '(?:-?\\n)?';
const escape = (character) => character.replace(/[\\^$.*+?()[\]{}|/-]/g, '\\$&');

function patternOf(query) {
    const pieces = query.trim().split(/\s+/).filter(Boolean);
    if (pieces.length === 0) return undefined;
    return new RegExp(pieces.map((piece) => Array.from(piece, escape).join(LINE_END)).join('\\s+'), 'giu');
}

// texts: { lines } each. Returns { text, start, end }: the places in the lines of a text, with one character between two lines.
export function findWords(texts, query) {
    const pattern = patternOf(query.normalize('NFC'));
    if (pattern === undefined) return [];
    return texts.flatMap((text) => [...text.lines.join('\n').matchAll(pattern)].map((match) => ({ text, start: match.index, end: match.index + match[0].length })));
}
