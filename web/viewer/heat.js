// Shows how much ink is where, as colours.

const STEPS = [
    [0, [255, 255, 255]],
    [0.25, [198, 219, 239]],
    [0.5, [107, 174, 214]],
    [0.75, [49, 110, 180]],
    [1, [24, 50, 110]],
];
const TOO_MUCH = [[208, 32, 32], [255, 170, 0]]; // at the limit, and at all inks

const mix = (from, to, part) => from.map((value, i) => value + (to[i] - value) * part);

// The colour of an amount of ink, in percent.
export function heatColour(total, limit) {
    if (total > limit) return mix(...TOO_MUCH, Math.min((total - limit) / Math.max(400 - limit, 1), 1));
    const part = total / limit;
    const at = STEPS.findIndex(([least]) => least >= part);
    if (at <= 0) return STEPS[0][1];
    const [[low, from], [high, to]] = [STEPS[at - 1], STEPS[at]];
    return mix(from, to, (part - low) / (high - low));
}

// pixels: as inkPixels returns them, a byte an ink.
export function paintHeat({ width, height, inks, data }, limit) {
    const most = 255 * inks.length;
    const colours = Array.from({ length: most + 1 }, (_, sum) => heatColour(sum / 2.55, limit));
    const image = new ImageData(width, height);
    for (let pixel = 0, at = 0; pixel < width * height; pixel += 1) {
        let sum = 0;
        for (let ink = 0; ink < inks.length; ink += 1) sum += data[at++];
        image.data.set(colours[sum], 4 * pixel);
        image.data[4 * pixel + 3] = 255;
    }
    return image;
}
