// Fonts of this computer, where the browser lets a page ask for them: those that the drawing wants by name, and for scripts that no
// font here has, one that a system would take.

const WIDE = /CJK|Gothic|Mincho|Ming|Song|Heiti|Dotum|Batang|Gulim|Meiryo|Hiragino|IPA|Nanum|YaHei|JhengHei/i;
const MOST_WIDE = 3;

export const hasLocalFonts = () => typeof globalThis.queryLocalFonts === 'function';

const plain = (name) => name.toLowerCase().replace(/[^a-z0-9]/g, '');

// fonts: those of the drawing. Returns the bytes of each that may serve it. Has to be called when the user asks for it.
export async function readLocalFonts(fonts) {
    const local = await globalThis.queryLocalFonts();
    const lacking = fonts.filter(({ match, missingGlyphs }) => match !== 'exact' || missingGlyphs > 0);
    const wanted = new Set(lacking.map(({ asked }) => plain(asked)));
    const named = local.filter(({ postscriptName, fullName }) => wanted.has(plain(postscriptName)) || wanted.has(plain(fullName)));
    const isWideWanted = lacking.some(({ missingGlyphs }) => missingGlyphs > 0);
    const wide = isWideWanted ? local.filter(({ family, postscriptName }) => WIDE.test(family) || WIDE.test(postscriptName)).slice(0, MOST_WIDE) : [];
    const chosen = [...new Set([...named, ...wide])];
    return Promise.all(chosen.map(async (font) => ({ name: font.fullName, bytes: new Uint8Array(await (await font.blob()).arrayBuffer()) })));
}
