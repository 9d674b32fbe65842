// Draws the page on the canvas, of tiles that the readers make in the exact size of the view. Until they are there, older ones stay, in
// whatever size and look, above a picture of the whole drawing.

import { lookKey, pictureOptions } from './look.js';
import { paintHeat } from './heat.js';
import { state, watch } from './state.js';
import { page } from './view.js';

const TILE = 512; // pixels of the device
const LARGE_TILE = 2048; // for drawings of which each tile takes long, whatever its size
const LARGE = 8 << 20; // bytes of these
const OVERVIEW = 1024;
const MOST_PIXELS = 160 * TILE ** 2;
const REST = 120; // milliseconds without a change of scale, after which it is drawn for

export class Tiles {
    #canvas;
    #readers;
    #onFailure;
    #tiles = new Map(); // by their keys, the one that was shown last at the end
    #asked = new Set();
    #failed = new Set();
    #overview = null;
    #overviewKey = '';
    #level = null; // the size of the page that tiles are made for
    #drawing = null;
    #tile = TILE;
    #frame = 0;
    #timer = 0;

    constructor(canvas, readers, onFailure) {
        this.#canvas = canvas;
        this.#readers = readers;
        this.#onFailure = onFailure;
        watch(['drawing'], () => this.#forget());
        watch(['view', 'drawing', 'hidden', 'plates', 'gray', 'overprint', 'heat', 'limit'], () => this.redraw());
    }

    redraw() {
        this.#frame ||= requestAnimationFrame(() => {
            this.#frame = 0;
            this.#draw();
        });
    }

    #forget() {
        for (const { bitmap } of this.#tiles.values()) bitmap.close();
        this.#overview?.close();
        this.#tiles.clear();
        this.#asked.clear();
        this.#failed.clear();
        this.#overview = null;
        this.#overviewKey = '';
        this.#level = null;
        this.#drawing = state.drawing;
        this.#tile = state.drawing?.bytes > LARGE ? LARGE_TILE : TILE;
    }

    get #ratio() {
        return globalThis.devicePixelRatio || 1;
    }

    // A picture of the whole page has a whole number of pixels each way; its parts are the tiles.
    #levelOfView() {
        const { width, height } = page();
        const scale = state.view.scale * this.#ratio;
        return { width: Math.max(Math.round(width * scale), 1), height: Math.max(Math.round(height * scale), 1) };
    }

    #isCurrent() {
        const { width, height } = this.#levelOfView();
        return this.#level.width === width && this.#level.height === height;
    }

    // While the scale changes, the size stays as it was.
    #settle() {
        if (this.#level === null) this.#level = this.#levelOfView();
        clearTimeout(this.#timer);
        if (this.#isCurrent()) return;
        this.#timer = setTimeout(() => {
            this.#level = this.#levelOfView();
            this.redraw();
        }, REST);
    }

    #draw() {
        const context = this.#canvas.getContext('2d');
        const ratio = this.#ratio;
        context.setTransform(1, 0, 0, 1, 0, 0);
        context.clearRect(0, 0, this.#canvas.width, this.#canvas.height);
        if (state.drawing === null) {
            this.#canvas.removeAttribute('aria-busy');
            return;
        }
        this.#settle();
        const { width, height } = this.#levelOfView();
        const left = Math.round(state.view.x * ratio);
        const top = Math.round(state.view.y * ratio);
        context.save();
        context.shadowColor = 'rgb(0 0 0 / 0.28)';
        context.shadowBlur = 14 * ratio;
        context.shadowOffsetY = 2 * ratio;
        context.fillStyle = 'white';
        context.fillRect(left, top, width, height);
        context.restore();
        context.save();
        context.beginPath();
        context.rect(left, top, width, height);
        context.clip();
        context.imageSmoothingQuality = 'medium';
        if (this.#overview !== null) context.drawImage(this.#overview, left, top, width, height);
        const sight = this.#inSight();
        const isComplete = this.#isCurrent() && sight.every(({ key }) => this.#tiles.has(key) || this.#failed.has(key));
        if (!isComplete) for (const tile of this.#tiles.values()) this.#drawTile(context, tile, left, top, width, height);
        for (const { key } of sight) {
            const tile = this.#tiles.get(key);
            if (tile === undefined) continue;
            this.#tiles.delete(key);
            this.#tiles.set(key, tile);
            this.#drawTile(context, tile, left, top, width, height);
        }
        context.restore();
        this.#canvas.setAttribute('aria-busy', !isComplete);
        this.#ask(sight);
    }

    #drawTile(context, { bitmap, level, column, row }, left, top, width, height) {
        const across = width / level.width;
        const down = height / level.height;
        const x = left + column * this.#tile * across;
        const y = top + row * this.#tile * down;
        const w = this.#tile * across;
        const h = this.#tile * down;
        if (x > this.#canvas.width || y > this.#canvas.height || x + w < 0 || y + h < 0) return;
        context.drawImage(bitmap, x, y, w, h);
    }

    // The tiles that are in sight at the level, from the middle.
    #inSight() {
        const ratio = this.#ratio;
        const { width, height } = this.#levelOfView();
        const across = this.#level.width / width;
        const down = this.#level.height / height;
        const x = Math.round(state.view.x * ratio);
        const y = Math.round(state.view.y * ratio);
        const range = (start, room, factor, size) => [
            Math.max(Math.floor((-start * factor) / this.#tile), 0),
            Math.min(Math.ceil(((room - start) * factor) / this.#tile), Math.ceil(size / this.#tile)),
        ];
        const [first, last] = range(x, this.#canvas.width, across, this.#level.width);
        const [upper, lower] = range(y, this.#canvas.height, down, this.#level.height);
        const look = lookKey();
        const tiles = [];
        for (let row = upper; row < lower; row += 1)
            for (let column = first; column < last; column += 1)
                tiles.push({ column, row, level: this.#level, key: `${look} ${this.#level.width}x${this.#level.height} ${column},${row}` });
        const away = ({ column, row }) => Math.hypot(column + 0.5 - (first + last) / 2, row + 0.5 - (upper + lower) / 2);
        return tiles.sort((a, b) => away(a) - away(b));
    }

    #ask(sight) {
        this.#askOverview();
        for (const [place, { column, row, level, key }] of sight.entries()) {
            if (this.#tiles.has(key) || this.#asked.has(key) || this.#failed.has(key)) continue;
            this.#asked.add(key);
            const rank = () => {
                const at = this.#inSight().findIndex((tile) => tile.key === key);
                return at < 0 ? Infinity : 1 + at;
            };
            const box = this.#boxOf(column, row, level);
            this.#make({ box, width: this.#tile, height: this.#tile }, rank)
                .then((bitmap) => this.#keep(key, { bitmap, level, column, row }))
                .catch((error) => this.#note(error, key))
                .finally(() => this.#asked.delete(key));
        }
    }

    #boxOf(column, row, level) {
        const { left, top, width, height } = page();
        const x = (pixels) => left + (pixels * width) / level.width;
        const y = (pixels) => top - (pixels * height) / level.height;
        return [x(column * this.#tile), y((row + 1) * this.#tile), x((column + 1) * this.#tile), y(row * this.#tile)];
    }

    #askOverview() {
        const key = lookKey();
        if (this.#overviewKey === key) return;
        this.#overviewKey = key;
        const { left, bottom, right, top, width, height } = page();
        const scale = OVERVIEW / Math.max(width, height);
        const side = (length) => Math.max(Math.round(length * scale), 1);
        const isFirst = this.#overview === null;
        const rank = () => (key === this.#overviewKey ? (isFirst ? 0 : 1000) : Infinity);
        this.#make({ box: [left, bottom, right, top], width: side(width), height: side(height) }, rank)
            .then((bitmap) => {
                this.#overview?.close();
                this.#overview = bitmap;
                this.redraw();
            })
            .catch((error) => this.#note(error));
    }

    async #make(call, rank) {
        const drawing = this.#drawing;
        const options = pictureOptions();
        const { heat, limit } = state;
        const bitmap = await this.#readers.do(async (reader, common) => {
            if (!heat) return reader.picture({ ...common, ...call, ...options, bitmap: true });
            const { background, ...others } = options;
            return createImageBitmap(paintHeat(await reader.inkPixels({ ...common, ...call, ...others }), limit));
        }, rank);
        if (drawing === this.#drawing) return bitmap;
        bitmap.close();
        throw new DOMException('another drawing was opened', 'AbortError');
    }

    #keep(key, tile) {
        this.#tiles.set(key, tile);
        const most = MOST_PIXELS / this.#tile ** 2;
        for (const [oldest, { bitmap }] of this.#tiles) {
            if (this.#tiles.size <= most) break;
            bitmap.close();
            this.#tiles.delete(oldest);
        }
        this.redraw();
    }

    #note(error, key) {
        if (error.name === 'AbortError') return;
        if (key !== undefined) this.#failed.add(key);
        this.#onFailure(error);
        this.redraw();
    }
}
