// SPDX-License-Identifier: Apache-2.0
// A kernel's columns: when its samples ended, and what charts show of them, at the step that the zoom asks for.

import { is_known } from "./format.js";
import { SeriesStore } from "./series.js";
import { has_stored_level, level_of_values, levels_from, stored_step, stretch_of } from "./pyramid.js";

/** @typedef {import("./pyramid.js").Level} Level */
/** @typedef {import("./types.d.ts").Kernel} Kernel */
/** @typedef {import("./types.d.ts").Block} Block */

/** A level whose entry 0 is entry `offset` of the column. @typedef {{level: Level, offset: number}} Window */

/** Metrics whose charts show the share of cycles. */
const shares = new Set(["valid", "stall", "idle"]);
/** The shared counters' type that measures a metric; others are measured in every run. @type {Record<string, number>} */
const measured_by = { valid: 0, stall: 1, idle: 2, requests: 3, efficiency: 3 };

/** The first place whose value is greater. @param {ArrayLike<number>} sorted @param {number} value */
export function place_after(sorted, value) {
    let low = 0;
    let high = sorted.length;
    while (low < high) {
        const middle = (low + high) >>> 1;
        if (sorted[middle] > value) high = middle;
        else low = middle + 1;
    }
    return low;
}

/** The invocations of a kernel, and the ends of its samples. */
export class Clock {
    /** @param {SeriesStore} store @param {Kernel} kernel @param {() => void} changed called when data has come */
    constructor(store, kernel, changed) {
        this.store = store;
        this.kernel = kernel;
        this.changed = changed;
        this.n = kernel.n;
        const none = /** @type {Float64Array} */ (new Float64Array(0));
        this.start = none;
        this.end = none;
        this.first = none;
        this.type = none;
        /** @type {Map<number, Float64Array>} ends of the samples at a step */
        this.ends_by_step = new Map();
        /** @type {Promise<this> | undefined} */
        this.loading = undefined;
        this.is_ready = false;
        /** The ends of single samples of a long column, as far as they were asked for. */
        this.raw = { offset: 0, ends: none };
        this.lowest_step = has_stored_level(this.n) ? stored_step : 1;
        /** @type {Track | undefined} */
        this.cycle_track = undefined;
    }

    /** Loads what every chart of the kernel needs. */
    load() {
        this.loading ??= this.read().finally(() => this.changed());
        return this.loading;
    }

    async read() {
        const series = this.kernel.invocations;
        const is_single = this.lowest_step === 1;
        const times = is_single ? [this.kernel.time] : this.store.table.pyramid[this.kernel.time].slice(0, 2);
        let least, range;
        [this.start, this.end, this.first, this.type, least, range] = await Promise.all(
            [series.start, series.end, series.first, series.type, ...times].map((id) => this.store.values(id)));
        this.ends_by_step.set(this.lowest_step, is_single ? least : least.map((value, i) => value + range[i]));
        this.is_ready = true;
        return this;
    }

    /** The end of each entry, all of them. @param {number} step */
    ends(step) {
        let ends = this.ends_by_step.get(step);
        if (!ends) {
            const lowest = /** @type {Float64Array} */ (this.ends_by_step.get(this.lowest_step));
            const factor = step / this.lowest_step;
            ends = new Float64Array(Math.ceil(lowest.length / factor));
            for (let e = 0; e < ends.length; ++e) ends[e] = lowest[Math.min(lowest.length, (e + 1) * factor) - 1];
            this.ends_by_step.set(step, ends);
        }
        return ends;
    }

    /** The invocation that sample `i` is of. @param {number} i */
    invocation_of(i) {
        return Math.max(0, place_after(this.first, i) - 1);
    }

    /** Samples that may lie in a stretch: a little more than do. @param {number} from @param {number} to @returns {[number, number]} */
    rough_samples(from, to) {
        const step = this.lowest_step;
        const ends = this.ends(step);
        const first = place_after(ends, from);
        const last = Math.min(ends.length, place_after(ends, to) + 1);
        return [first * step, Math.min(this.n, last * step)];
    }

    /** Single ends of samples in a long column; nothing while they are loaded. @param {number} from @param {number} to */
    single_ends(from, to) {
        const { offset, ends } = this.raw;
        if (from >= offset && to <= offset + ends.length) return this.raw;
        this.load_single_ends(from, to).then(this.changed, () => {});
        return undefined;
    }

    /** @param {number} from @param {number} to */
    async load_single_ends(from, to) {
        this.raw = { offset: from, ends: await this.store.values(this.kernel.time, from, to) };
        return this.raw;
    }

    /**
     * The samples of a stretch: those that end in it, or the one that it lies in.
     * @param {number} from @param {number} to @returns {Promise<[number, number]>}
     */
    async samples(from, to) {
        await this.load();
        const [rough_from, rough_to] = this.rough_samples(from, to);
        const { offset, ends } = this.lowest_step === 1
            ? { offset: 0, ends: this.ends(1) } : { offset: rough_from, ends: await this.store.values(this.kernel.time, rough_from, rough_to) };
        let first = place_after(ends, from) + offset;
        let last = place_after(ends, to) + offset;
        if (first === last && first < this.n && this.start[this.invocation_of(first)] < to) last = first + 1;
        if (to <= from) last = first;
        return [Math.min(first, this.n), Math.min(last, this.n)];
    }

    /** Clock cycles of samples `from` to before `to`. @param {number} from @param {number} to */
    async cycles_in(from, to) {
        const id = this.kernel.cycles;
        if (id < 0 || to <= from) return 0;
        this.cycle_track ??= new Track(this, { id, weights: [], metric: "cycles", shared: false });
        const levels = await this.cycle_track.load();
        const { sum } = levels[0].step === 1 || to - from > 2 * stored_step ? stretch_of(levels, from, to)
            : stretch_of([await this.cycle_track.single(from, to)], 0, to - from);
        return sum;
    }
}

/** One column of a block or port, as charts show it. */
export class Track {
    /**
     * @param {Clock} clock of its kernel
     * @param {{id: number, weights: number[], metric: string, shared: boolean}} column `weights`: series whose
     *     product or sum weighs a value, see weight_of
     */
    constructor(clock, column) {
        this.clock = clock;
        this.store = clock.store;
        this.column = column;
        this.scale = shares.has(column.metric) || column.metric === "efficiency" ? 100 : 1;
        /** @type {Level[] | undefined} lowest first */
        this.levels = undefined;
        /** @type {Promise<Level[]> | undefined} */
        this.loading = undefined;
        /** @type {Window | undefined} */
        this.raw = undefined;
    }

    load() {
        this.loading ??= this.read().then((levels) => {
            this.levels = levels;
            return levels;
        }).finally(() => this.clock.changed());
        return this.loading;
    }

    async read() {
        // What an invocation measured decides which values count.
        if (this.column.shared) await this.clock.load();
        if (!has_stored_level(this.clock.n)) return levels_from(await this.single(0, this.clock.n));
        const ids = this.store.table.pyramid[this.column.id];
        const [least, range, sum] = await Promise.all(ids.slice(0, 3).map((id) => this.store.values(id)));
        // Shares are stored as ten-thousandths of the cycles, efficiency as a ratio.
        const factor = shares.has(this.column.metric) ? 0.01 : this.scale;
        const low = least.map((value) => value * factor);
        const high = low.map((value, i) => value + range[i] * factor);
        const weight = ids.length > 3 ? await this.store.values(ids[3]) : await this.stored_weight(low.length);
        const sums = sum.map((value) => value * this.scale);
        return levels_from({ step: stored_step, least: low, greatest: high, sum: sums, weight });
    }

    /** The weights of the stored entries are sums of other columns. @param {number} length */
    async stored_weight(length) {
        const { weights } = this.column;
        if (weights.length === 0) {
            const counts = new Float64Array(length).fill(stored_step);
            counts[length - 1] = this.clock.n - (length - 1) * stored_step;
            return counts;
        }
        const all = new Float64Array(length);
        // Efficiency is weighted by bandwidth times cycles, which is what the sums of bandwidth are.
        const sources = this.column.metric === "efficiency" ? weights.slice(0, 1) : weights;
        for (const id of sources) {
            const part = await this.store.values(this.store.table.pyramid[id][2]);
            for (let i = 0; i < length; ++i) all[i] += part[i];
        }
        return all;
    }

    /** The level of single values of a part. @param {number} from @param {number} to */
    async single(from, to) {
        const { id, weights, metric, shared } = this.column;
        const values = await this.store.values(id, from, to);
        const others = await Promise.all(weights.map((w) => this.store.values(w, from, to)));
        const type = measured_by[metric];
        const shown = new Float64Array(values.length);
        const sum = new Float64Array(values.length);
        const weight = new Float64Array(values.length);
        for (let i = 0; i < values.length; ++i) {
            const w = weight_of(metric, others, i);
            const missing = shared && type !== undefined && this.type_at(from + i) !== type;
            // Counts below 0 and samples without cycles don't count; see docs/metrics.md.
            const counts = values[i] >= (metric === "burst" ? 1e-9 : 0) && w > 0 && Number.isFinite(w) && !missing;
            shown[i] = counts ? values[i] * this.scale / (shares.has(metric) ? w : 1) : NaN;
            if (counts) {
                sum[i] = values[i] * this.scale * (shares.has(metric) ? 1 : w);
                weight[i] = w;
            }
        }
        const level = level_of_values(shown, sum, weight);
        const peaks = this.store.table.peaks?.[id];
        if (!peaks) return level;
        // Each value is of several samples, whose least and greatest ones are stored.
        const [least, range, counts] = await Promise.all(peaks.map((p) => this.store.values(p, from, to)));
        const factor = shares.has(metric) ? 0.01 : this.scale;
        return { ...level, weight: counts ?? weight, least: least.map((value) => value * factor), greatest: least.map((value, i) => (value + range[i]) * factor) };
    }

    /** @param {number} i */
    type_at(i) {
        return this.clock.type[this.clock.invocation_of(i)] ?? -1;
    }

    /** Entries to draw; nothing while they are loaded. @param {number} step @param {number} from @param {number} to entries @returns {Window | undefined} */
    window(step, from, to) {
        if (!this.levels) {
            this.load().catch(() => {});
            return undefined;
        }
        const level = this.levels.find((l) => l.step === step);
        if (level) return { level, offset: 0 };
        if (step > this.levels[0].step) return { level: this.levels[this.levels.length - 1], offset: 0 };
        if (this.raw && from >= this.raw.offset && to <= this.raw.offset + this.raw.level.least.length) return this.raw;
        this.single(from, to).then((made) => {
            this.raw = { level: made, offset: from };
            this.clock.changed();
        }, () => {});
        return undefined;
    }

    /** Least, mean and greatest of samples `from` to before `to`. @param {number} from @param {number} to */
    async summary(from, to) {
        const levels = await this.load();
        if (levels[0].step === 1 || to - from > 2 * stored_step) return means(stretch_of(levels, from, to));
        return means(stretch_of([await this.single(from, to)], 0, to - from));
    }

    /** The sums over samples `from` to before `to`, and the cycles of those samples. @param {number} from @param {number} to */
    async sums(from, to) {
        const levels = await this.load();
        const { sum, weight } = levels[0].step === 1 || to - from > 2 * stored_step ? stretch_of(levels, from, to)
            : stretch_of([await this.single(from, to)], 0, to - from);
        return { sum, weight, cycles: await this.clock.cycles_in(from, to) };
    }

    /** What is shown at a sample; NaN if that is missing or isn't at hand. @param {number} i */
    value_at(i) {
        const from = this.raw?.offset ?? 0;
        const level = this.levels?.[0].step === 1 ? this.levels[0] : this.raw?.level;
        const place = level === this.raw?.level ? i - from : i;
        if (level && level.least !== level.greatest) return level.sum[place] / level.weight[place];
        return level?.least[place] ?? NaN;
    }
}

/** @param {{least: number, greatest: number, sum: number, weight: number}} range */
function means({ least, greatest, sum, weight }) {
    const none = weight === 0 && least === Infinity;
    return { least: none ? NaN : least, mean: weight > 0 ? sum / weight : NaN, greatest: none ? NaN : greatest };
}

/**
 * The weight of a value: cycles for shares and bandwidth, bandwidth times cycles for efficiency, requests plus stalls
 * for the fill of a channel, else 1.
 * @param {string} metric @param {Float64Array[]} others @param {number} i
 */
function weight_of(metric, others, i) {
    if (others.length === 0) return 1;
    if (metric === "efficiency") return others[0][i] * others[1][i];
    if (metric === "fill") return others[0][i] + (others[1]?.[i] ?? 0);
    return others[0][i];
}

/**
 * The column of a block's metric; nothing if the block has none.
 * @param {Kernel} kernel @param {Block} block @param {string} metric
 */
export function block_column(kernel, block, metric) {
    const id = block.series[metric];
    if (!is_known(id) || id < 0) return undefined;
    const { requests = -1, stall = -1, bandwidth = -1 } = block.series;
    /** @type {Record<string, number[]>} */
    const weights = {
        valid: [kernel.cycles], stall: [kernel.cycles], idle: [kernel.cycles], bandwidth: [kernel.cycles],
        efficiency: [bandwidth, kernel.cycles], fill: [requests, stall],
    };
    const needed = (weights[metric] ?? []).filter((w) => w >= 0);
    if (shares.has(metric) && needed.length === 0) return undefined;
    return { id, weights: needed, metric, shared: kernel.types.some((type) => type >= 0) };
}
