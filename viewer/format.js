// SPDX-License-Identifier: Apache-2.0
// Numbers as people read them. Missing is "–", never 0. A number and its unit stay on one line.

const narrow_blank = "\u202f";
export const missing_text = "–";

/** Nanoseconds of a unit of time. @type {Record<string, number>} */
const nanoseconds_of = { ns: 1, us: 1e3, ms: 1e6, s: 1e9 };

/** @param {unknown} value @returns {value is number} */
export function is_known(value) {
    return typeof value === "number" && !Number.isNaN(value);
}

/**
 * With that many decimals; what is no number is "-", and what rounds to 0 has no sign.
 * @param {number} value @param {number} decimals
 */
export function fixed_text(value, decimals) {
    if (!Number.isFinite(value)) return "-";
    const text = Math.abs(value) < 1e21 ? value.toFixed(decimals) : String(BigInt(value));
    return /^-[0.]*$/.test(text) ? text.slice(1) : text;
}

/** The same without zeros at the end of the decimals. @param {number} value @param {number} decimals */
export function trimmed_text(value, decimals) {
    const text = fixed_text(value, decimals);
    return text.includes(".") ? text.replace(/\.?0+$/, "") : text;
}

/** A whole number with commas: "12,345". @param {number} value */
export function whole_text(value) {
    return fixed_text(value, 0).replace(/\B(?=(\d{3})+$)/g, ",");
}

/**
 * Decimals that make `digits` digits of a value, as it is once it has been rounded to them.
 * @param {number} value @param {number} digits
 */
export function decimals_for(value, digits) {
    let decimals = digits - 1;
    for (let limit = 10; decimals > 0 && Math.abs(value) >= limit - 0.5 * 10 ** -decimals; limit *= 10) --decimals;
    return decimals;
}

/** Three digits without zeros at the end: "6.45", "56.9", "1"; from 1,000 on a whole number. @param {number} value */
export function number_text(value) {
    const size = Math.abs(value);
    if (size >= 999.5) return whole_text(value);
    if (size >= 0.9995 || value === 0) return trimmed_text(value, decimals_for(value, 3));
    let decimals = 3;
    for (let shown = size; shown < 0.09995 && decimals < 9; shown *= 10) ++decimals;
    return trimmed_text(value, decimals);
}

/** A count as it is; a mean of counts with three digits. @param {number | null | undefined} value */
export function count_text(value) {
    return is_known(value) ? number_text(value) : missing_text;
}

/** Percent: one decimal below 10, "<0.1%" for what would read 0.0 but isn't. @param {number | null | undefined} percent */
export function percent_text(percent) {
    if (!is_known(percent)) return missing_text;
    if (percent === 0) return "0%";
    if (percent > 0 && percent < 0.05) return "<0.1%";
    return fixed_text(percent, decimals_for(percent, 2)) + (Number.isFinite(percent) ? "%" : "");
}

/** The steps of a unit, largest first. @type {Record<string, [number, string][]>} */
const steps = {
    time: [[1e9, "s"], [1e6, "ms"], [1e3, "µs"], [1, "ns"]],
    bandwidth: [[1e6, "TB/s"], [1e3, "GB/s"], [1, "MB/s"]],
    bytes: [[1e12, "TB"], [1e9, "GB"], [1e6, "MB"], [1e3, "KB"], [1, "B"]],
};

/** Three digits and a unit. @param {number} value @param {[number, string][]} list */
function scaled(value, list) {
    if (!Number.isFinite(value)) return String(value);
    const [factor, unit] = list.find(([f]) => Math.abs(value) / f >= 0.9995) ?? list[list.length - 1];
    const shown = value / factor;
    const decimals = Math.abs(shown) < 0.9995 ? 3 : decimals_for(shown, 3);
    const text = Math.abs(shown) >= 999.5 ? whole_text(shown) : factor === 1 ? trimmed_text(shown, decimals) : fixed_text(shown, decimals);
    return text + narrow_blank + unit;
}

/**
 * @param {number | null | undefined} ticks a time in units of the report
 * @param {string} unit ns, us, ms, s; empty if it isn't known
 */
export function time_text(ticks, unit) {
    if (!is_known(ticks)) return missing_text;
    const factor = nanoseconds_of[unit];
    return factor ? scaled(ticks * factor, steps.time) : number_text(ticks);
}

/** @param {number | null | undefined} megabytes a second */
export function bandwidth_text(megabytes) {
    return is_known(megabytes) ? scaled(megabytes, steps.bandwidth) : missing_text;
}

/** @param {number | null | undefined} bytes */
export function bytes_text(bytes) {
    return is_known(bytes) ? scaled(bytes, steps.bytes) : missing_text;
}

/** Nanoseconds of a unit; undefined if it isn't known. @param {string} unit @returns {number | undefined} */
export function nanoseconds(unit) {
    return nanoseconds_of[unit];
}

/**
 * With its sign, and a minus as long as a plus.
 * @param {number | null | undefined} value @param {(v: number) => string} text
 */
export function change_text(value, text) {
    if (!is_known(value)) return missing_text;
    if (value === 0) return text(0);
    return (value > 0 ? "+" : "−") + text(Math.abs(value));
}

/**
 * Round places for the lines of an axis: about `wanted` of them, at steps of 1, 2 or 5.
 * @param {number} from @param {number} to @param {number} wanted
 * @returns {{step: number, places: number[]}}
 */
export function round_places(from, to, wanted) {
    const least = (to - from) / Math.max(1, wanted);
    if (!(least > 0) || !Number.isFinite(least)) return { step: 0, places: [] };
    const power = 10 ** Math.floor(Math.log10(least));
    const factor = [1, 2, 5, 10].find((f) => f * power >= least * (1 - 1e-9)) ?? 10;
    const step = factor * power;
    const places = [];
    const first = Math.ceil(from / step - 1e-9);
    for (let k = first; k * step <= to + step * 1e-9 && places.length < 1000; ++k) places.push(k * step || 0);
    return { step, places };
}

/**
 * Times of a ruler, all in the same unit and with the same number of decimals.
 * @param {number[]} places @param {number} step @param {string} unit
 */
export function ruler_texts(places, step, unit) {
    const factor = nanoseconds_of[unit];
    const greatest = Math.max(0, ...places.map(Math.abs));
    const [size, name] = factor
        ? (steps.time.find(([f]) => greatest * factor >= f) ?? [1, "ns"])
        : [1, ""];
    const scale = (factor ?? 1) / size;
    const decimals = Math.max(0, Math.min(9, Math.ceil(-Math.log10(step * scale) - 1e-9)));
    return places.map((place) => (place * scale).toFixed(decimals) + (name && narrow_blank + name));
}
