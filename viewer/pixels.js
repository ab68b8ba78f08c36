// SPDX-License-Identifier: Apache-2.0
// For each device pixel its samples, worked out once for all charts of a kernel.

import { place_after, Clock } from "./columns.js";
import { step_for } from "./pyramid.js";

/**
 * @typedef {object} PixelMap
 * @property {number} step values in an entry
 * @property {Int32Array} first entry of each pixel; -1 where nothing ran
 * @property {Int32Array} last the entry after its last one
 * @property {number} from the first entry that any pixel has
 * @property {number} to the entry after the last one
 */

/**
 * Entries of a level on pixels: an entry covers the pixels from its beginning to its end.
 * @param {ArrayLike<number>} ends of entries, from entry `offset` on
 * @param {number} offset @param {number} step
 * @param {(entry: number, previous_end: number) => number} begin_of
 * @param {number} t0 @param {number} t1 what the pixels show @param {number} width
 * @returns {PixelMap}
 */
export function map_pixels(ends, offset, step, begin_of, t0, t1, width) {
    const first = new Int32Array(width).fill(-1);
    const last = new Int32Array(width);
    const scale = width / (t1 - t0);
    const start = place_after(ends, t0);
    let k = start;
    for (; k < ends.length; ++k) {
        const begin = begin_of(k + offset, k > 0 ? ends[k - 1] : -Infinity);
        if (begin >= t1) break;
        const left = Math.max(0, Math.floor((begin - t0) * scale));
        const right = Math.min(width, Math.max(left + 1, Math.ceil((ends[k] - t0) * scale - 1e-6)));
        for (let x = left; x < right; ++x) {
            if (first[x] < 0) first[x] = k + offset;
            last[x] = k + offset + 1;
        }
    }
    return { step, first, last, from: start + offset, to: k + offset };
}

/** Takes the pixels out in which no invocation ran. @param {PixelMap} map @param {Clock} clock @param {number} t0 @param {number} t1 */
function cut_gaps(map, clock, t0, t1) {
    const width = map.first.length;
    let k = Math.max(0, place_after(clock.end, t0));
    const last = place_after(clock.start, t1);
    // With several invocations to a pixel there is nothing to cut that can be seen.
    if (last - k > 4 * width) return;
    const scale = width / (t1 - t0);
    let x = 0;
    for (; k < last; ++k) {
        const left = Math.floor((clock.start[k] - t0) * scale);
        for (; x < Math.min(left, width); ++x) map.first[x] = -1;
        x = Math.max(x, Math.ceil((clock.end[k] - t0) * scale));
    }
    for (; x < width; ++x) map.first[x] = -1;
}

/**
 * The map of a kernel's samples; nothing while its times are loaded.
 * @param {Clock} clock @param {number} t0 @param {number} t1 @param {number} width
 * @returns {PixelMap | undefined}
 */
export function pixels_of(clock, t0, t1, width) {
    if (!clock.is_ready) {
        clock.load().catch(() => {});
        return undefined;
    }
    if (!(t1 > t0) || width < 1) return undefined;
    const [from, to] = clock.rough_samples(t0, t1);
    const wanted = (to - from) / width;
    const single = wanted < clock.lowest_step || clock.lowest_step === 1;
    const step = single ? step_for(1, Math.max(1, wanted)) : step_for(clock.lowest_step, wanted);
    let map;
    if (step < clock.lowest_step) {
        // Steps between 1 and the stored level don't exist in a long column: its values are drawn one by one.
        const raw = clock.single_ends(from, to);
        if (!raw) return undefined;
        map = map_pixels(raw.ends, raw.offset, 1, begin_by(clock, 1), t0, t1, width);
    } else {
        map = map_pixels(clock.ends(step), 0, step, begin_by(clock, step), t0, t1, width);
    }
    cut_gaps(map, clock, t0, t1);
    return map;
}

/** @param {Clock} clock @param {number} step */
function begin_by(clock, step) {
    let k = -1;
    return (/** @type {number} */ entry, /** @type {number} */ previous_end) => {
        const sample = entry * step;
        if (k < 0) k = clock.invocation_of(sample);
        while (k + 1 < clock.first.length && clock.first[k + 1] <= sample) ++k;
        return clock.first[k] === sample || previous_end === -Infinity ? clock.start[k] : previous_end;
    };
}
