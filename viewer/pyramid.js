// SPDX-License-Identifier: Apache-2.0
// Pyramids: least, greatest and sum of any stretch of a series without reading all of its values. Below 2^16 values
// the levels are built here; above, the page has the level of 256 values, and those above it are built of that.

export const stored_step = 256;
const stored_from = 2 ** 16;
const factor = 8;

/** @param {number} length of a series @returns {boolean} whether the page has its level of 256 values */
export function has_stored_level(length) {
    return length >= stored_from;
}

/**
 * @typedef {object} Level least, greatest, sum and weight of `step` values at a time
 * @property {number} step
 * @property {Float64Array} least
 * @property {Float64Array} greatest
 * @property {Float64Array} sum
 * @property {Float64Array} weight
 */

/** @param {number} step @param {number} length @returns {Level} */
function empty_level(step, length) {
    return { step, least: new Float64Array(length), greatest: new Float64Array(length),
        sum: new Float64Array(length), weight: new Float64Array(length) };
}

/**
 * The level of single values. A value that doesn't count is NaN, and has the weight 0.
 * @param {Float64Array} shown what charts show @param {Float64Array} sum value times weight @param {Float64Array} weight
 * @returns {Level}
 */
export function level_of_values(shown, sum, weight) {
    return { step: 1, least: shown, greatest: shown, sum, weight };
}

/** The next level. @param {Level} level @returns {Level} */
export function level_above(level) {
    const length = Math.ceil(level.least.length / factor);
    const above = empty_level(level.step * factor, length);
    for (let e = 0; e < length; ++e) {
        const end = Math.min(level.least.length, (e + 1) * factor);
        let least = Infinity;
        let greatest = -Infinity;
        for (let i = e * factor; i < end; ++i) {
            if (level.least[i] < least) least = level.least[i];
            if (level.greatest[i] > greatest) greatest = level.greatest[i];
            above.sum[e] += level.sum[i];
            above.weight[e] += level.weight[i];
        }
        // Nothing that counts: NaN again.
        above.least[e] = least === Infinity ? NaN : least;
        above.greatest[e] = greatest === -Infinity ? NaN : greatest;
    }
    return above;
}

/** This level and all above it. @param {Level} lowest */
export function levels_from(lowest) {
    const levels = [lowest];
    while (levels[levels.length - 1].least.length > factor) levels.push(level_above(levels[levels.length - 1]));
    return levels;
}

/**
 * The level to draw by: the coarsest one with at least an entry for each pixel, so that a pixel has 1 to 8.
 * @param {number} lowest the step of the lowest level @param {number} values_per_pixel
 */
export function step_for(lowest, values_per_pixel) {
    let step = lowest;
    while (step * factor <= values_per_pixel) step *= factor;
    return step;
}

/**
 * Least, greatest, sum and weight over entries of a level.
 * @param {Level} level @param {number} from @param {number} to
 */
export function range_of(level, from, to) {
    let least = Infinity;
    let greatest = -Infinity;
    let sum = 0;
    let weight = 0;
    for (let i = Math.max(0, from); i < to && i < level.least.length; ++i) {
        if (level.least[i] < least) least = level.least[i];
        if (level.greatest[i] > greatest) greatest = level.greatest[i];
        sum += level.sum[i];
        weight += level.weight[i];
    }
    return { least, greatest, sum, weight };
}

/**
 * The same over values `from` to before `to`, by the coarsest levels that fit: O(log n). The lowest level decides how
 * finely the ends are cut.
 * @param {Level[]} levels lowest first @param {number} from @param {number} to values
 */
export function stretch_of(levels, from, to) {
    const all = { least: Infinity, greatest: -Infinity, sum: 0, weight: 0 };
    const add = (/** @type {Level} */ level, /** @type {number} */ a, /** @type {number} */ b) => {
        const part = range_of(level, a, b);
        all.least = Math.min(all.least, part.least);
        all.greatest = Math.max(all.greatest, part.greatest);
        all.sum += part.sum;
        all.weight += part.weight;
    };
    let first = Math.floor(from / levels[0].step);
    let last = Math.ceil(to / levels[0].step);
    for (let k = 0; first < last; ++k) {
        if (k + 1 === levels.length || last - first <= factor) {
            add(levels[k], first, last);
            break;
        }
        const above_first = Math.ceil(first / factor);
        const above_last = Math.floor(last / factor);
        add(levels[k], first, Math.min(last, above_first * factor));
        add(levels[k], Math.max(first, above_last * factor), last);
        first = above_first;
        last = above_last;
    }
    return all;
}
