// SPDX-License-Identifier: Apache-2.0
// From sums to metrics. docs/metrics.md has the formulas. What was not measured is missing, never 0.

import { is_known, nanoseconds } from "./format.js";

/** @typedef {import("./types.d.ts").Block} Block */
/** @typedef {import("./types.d.ts").Kernel} Kernel */
/** @typedef {import("./types.d.ts").Memory} Memory */
/** @typedef {import("./types.d.ts").Sums} Sums */
/** @typedef {import("./types.d.ts").Facts} Facts */

/**
 * What the sums of a block stand among.
 * @typedef {object} Frame
 * @property {number | null} clock MHz
 * @property {string} unit of time
 * @property {number | null} cycles of all samples
 * @property {number} kernel_stalls stalled cycles of all blocks of the kernel
 * @property {Memory | undefined} memory of the block
 * @property {number | null} max_fill largest depth seen
 * @property {number | null} bandwidth_max
 * @property {number | null} burst_max
 */

/** The clock in MHz; null for "0.0" and what is no number. @param {string} text */
export function clock_of(text) {
    const clock = text.trim() === "" ? NaN : Number(text);
    return Number.isFinite(clock) && clock > 0 ? clock : null;
}

/** @param {number | null | undefined} part @param {number | null | undefined} whole */
export function percent_of(part, whole) {
    return is_known(part) && is_known(whole) && whole > 0 ? 100 * part / whole : null;
}

/** @param {Sums | undefined} sums @returns {number | null} share of the cycles of the samples that count */
function share(sums) {
    return sums && sums[1] > 0 ? percent_of(sums[0], sums[2]) : null;
}

/**
 * Whether stalls and idle cycles were counted: all 0 while the rest doesn't fill the cycles says that they weren't.
 * @param {Record<string, Sums>} sums
 */
export function counted_shares(sums) {
    const valid = share(sums.valid);
    const stall = share(sums.stall);
    const idle = share(sums.idle);
    const filled = (valid ?? 0) + (stall ?? 0) + (idle ?? 0) >= 95;
    return { stall: is_known(stall) && (stall > 0 || filled), idle: is_known(idle) && (idle > 0 || filled) };
}

/**
 * The metrics of a block. Shares are in percent, times in nanoseconds, or in units of the report where those aren't known.
 * @param {Block} block @param {Record<string, Sums>} sums @param {Frame} frame
 * @param {{stall: boolean, idle: boolean}} counted of the whole run @returns {Facts}
 */
export function metrics_of(block, sums, frame, counted) {
    const stall = counted.stall ? share(sums.stall) : null;
    const bandwidth = bandwidth_of(sums);
    const { valid, efficiency, requests } = sums;
    const burst = block.burst && block.burst[1] > 0 ? block.burst[1] : null;
    return {
        stall,
        valid: share(valid),
        idle: counted.idle ? share(sums.idle) : null,
        lost: lost_time(stall, frame),
        ...(block.kind === "loop" ? loop_metrics(sums, frame) : {}),
        bandwidth,
        bandwidth_max: bandwidth === null ? null : frame.bandwidth_max,
        moved: bandwidth === null || !frame.clock ? null : sums.bandwidth[0] / frame.clock,
        efficiency: efficiency && efficiency[1] > 0 && efficiency[0] > 0 ? 100 * efficiency[0] / efficiency[1] : null,
        hits: percent_of(sums.hits?.[0], requests?.[0]),
        unaligned: percent_of(sums.unaligned?.[0], requests?.[0]),
        ...(block.kind === "channel" ? fill_metrics(block, sums, frame) : {}),
        burst,
        burst_share: burst_share(burst, frame),
    };
}

/** Missing if it is 0 throughout in spite of requests that didn't hit a cache. @param {Record<string, Sums>} sums */
function bandwidth_of({ bandwidth, requests, hits }) {
    if (!bandwidth || !(bandwidth[1] > 0)) return null;
    if (bandwidth[0] === 0 && (requests?.[0] ?? 0) > 0 && !((hits?.[0] ?? 0) > 0)) return null;
    return bandwidth[0] / bandwidth[1];
}

/** @param {number | null} stall @param {Frame} frame */
function lost_time(stall, { clock, cycles, unit }) {
    if (!is_known(stall) || !clock || !is_known(cycles) || !nanoseconds(unit)) return null;
    return stall / 100 * cycles / clock * 1000;
}

/** @param {Record<string, Sums>} sums @param {Frame} frame @returns {Facts} */
function loop_metrics({ valid }, { kernel_stalls }) {
    if (!valid || !(valid[0] > 0)) return {};
    return { iteration: valid[2] / valid[0], net: Math.max(1, (valid[2] - kernel_stalls) / valid[0]) };
}

/** Depth outside of stalls. @param {Block} block @param {Record<string, Sums>} sums @param {Frame} frame @returns {Facts} */
function fill_metrics(block, { fill, requests, stall }, { max_fill }) {
    if (!fill || !(fill[1] > 0) || !requests || !(requests[0] > 0)) return { max_fill };
    const stalled_depth = block.rw === "write" ? (stall?.[0] ?? 0) * (max_fill ?? 0) : 0;
    const depth = Math.max(0, (fill[0] - stalled_depth) / requests[0]);
    const has_share = is_known(max_fill) && max_fill > (block.rw === "read" ? 2 : 0);
    return { fill: depth, max_fill, fill_share: has_share ? percent_of(depth, max_fill) : null };
}

/** @param {number | null} burst @param {Frame} frame */
function burst_share(burst, { memory, burst_max }) {
    const largest = memory?.max_burst ?? 0;
    if (!is_known(burst) || largest <= 0 || (burst_max ?? 0) > 1.1 * largest) return null;
    return 100 * burst / largest;
}
