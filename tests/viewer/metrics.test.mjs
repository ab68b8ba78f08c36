// SPDX-License-Identifier: Apache-2.0
// Values worked out by hand, from the cases of docs/metrics.md where it has some.

import assert from "node:assert/strict";
import test from "node:test";
import { clock_of, counted_shares, metrics_of, percent_of } from "../../viewer/metrics.js";

const frame = { clock: 200, unit: "ns", cycles: 1000, kernel_stalls: 0, memory: undefined, max_fill: null, bandwidth_max: null, burst_max: null };
const counted = { stall: true, idle: true };
const block = (kind, rw = "", more = {}) => ({ kind, rw, ...more });

test("the clock is known if it is a number above 0", () => {
    assert.equal(clock_of("300.0"), 300);
    for (const text of ["0.0", "", " ", "fast", "-1", "inf"]) assert.equal(clock_of(text), null, text);
});

test("shares are of the cycles of the samples that count", () => {
    const found = metrics_of(block("global", "read"), { stall: [250, 2, 1000, 0], valid: [500, 2, 1000, 0], idle: [100, 2, 1000, 0] }, frame, counted);
    assert.deepEqual([found.stall, found.valid, found.idle], [25, 50, 10]);
    // 25 % of 1,000 cycles at 200 MHz are 1.25 us.
    assert.equal(found.lost, 1250);
});

test("what no sample measured is missing", () => {
    const found = metrics_of(block("global", "read"), { stall: [0, 0, 0, 4], valid: [35, 1, 100, 0] }, frame, counted);
    assert.equal(found.stall, null);
    assert.equal(found.lost, null);
    assert.equal(found.efficiency, null);
    assert.equal(found.bandwidth, null);
});

test("zeros that leave the cycles unfilled weren't counted", () => {
    assert.deepEqual(counted_shares({ valid: [35, 1, 100, 0], stall: [0, 1, 100, 0], idle: [0, 1, 100, 0] }), { stall: false, idle: false });
    assert.deepEqual(counted_shares({ valid: [96, 1, 100, 0], stall: [0, 1, 100, 0], idle: [0, 1, 100, 0] }), { stall: true, idle: true });
    assert.deepEqual(counted_shares({ valid: [35, 1, 100, 0], stall: [5, 1, 100, 0], idle: [0, 1, 100, 0] }), { stall: true, idle: false });
});

test("bandwidth is weighted by cycles, efficiency by bytes, hits by requests", () => {
    // 1,000 MB/s for 100 cycles and 3,000 for 300: (100,000 + 900,000) / 400 = 2,500 MB/s. Requested: half of the first.
    const found = metrics_of(block("global", "read"), { bandwidth: [1e6, 400, 400, 0], efficiency: [0.5 * 1e5 + 9e5, 1e6, 400, 0], requests: [200, 2, 400, 0], hits: [50, 2, 400, 0], unaligned: [20, 2, 400, 0] }, frame, counted);
    assert.equal(found.bandwidth, 2500);
    assert.equal(found.efficiency, 95);
    assert.equal(found.hits, 25);
    assert.equal(found.unaligned, 10);
    assert.equal(found.moved, 5000, "2,500 MB/s for 400 cycles at 200 MHz");
});

test("a bandwidth of 0 in spite of requests wasn't counted", () => {
    assert.equal(metrics_of(block("global"), { bandwidth: [0, 400, 400, 0], requests: [9, 2, 400, 0] }, frame, counted).bandwidth, null);
    assert.equal(metrics_of(block("global"), { bandwidth: [0, 400, 400, 0], requests: [9, 2, 400, 0], hits: [9, 2, 400, 0] }, frame, counted).bandwidth, 0);
});

test("the fill of a channel is its depth outside of stalls", () => {
    // A reader: depth times (requests + stalls) is 300, over 100 requests.
    const sums = { fill: [300, 150, 1000, 0], requests: [100, 2, 1000, 0], stall: [50, 2, 1000, 0] };
    const reader = metrics_of(block("channel", "read"), sums, { ...frame, max_fill: 10 }, counted);
    assert.deepEqual([reader.fill, reader.fill_share], [3, 30]);
    assert.equal(metrics_of(block("channel", "read"), sums, { ...frame, max_fill: 2 }, counted).fill_share, null, "a reader that never saw more than 2 words");
    // A writer: less its 50 stalls at a full channel of 4 words, (300 - 200) / 100.
    assert.equal(metrics_of(block("channel", "write"), sums, { ...frame, max_fill: 4 }, counted).fill, 1);
    assert.equal(metrics_of(block("channel", "write"), sums, { ...frame, max_fill: 9 }, counted).fill, 0, "not below 0");
});

test("a loop has cycles an iteration, with and without the stalls of its kernel", () => {
    const found = metrics_of(block("loop"), { valid: [100, 2, 800, 0] }, { ...frame, kernel_stalls: 600 }, counted);
    assert.deepEqual([found.iteration, found.net], [8, 2]);
    assert.equal(metrics_of(block("loop"), { valid: [100, 2, 800, 0] }, { ...frame, kernel_stalls: 790 }, counted).net, 1, "not below 1");
});

test("the share of a burst is missing where an entry is more than 10 % too large", () => {
    const memory = { max_burst: 16 };
    assert.equal(metrics_of(block("global", "read", { burst: [2, 4, 3, 5] }), {}, { ...frame, memory, burst_max: 5 }, counted).burst_share, 25);
    assert.equal(metrics_of(block("global", "read", { burst: [2, 4, 3, 18] }), {}, { ...frame, memory, burst_max: 18 }, counted).burst_share, null);
    assert.equal(metrics_of(block("global", "read", { burst: [2, 4, 3, 5] }), {}, { ...frame, memory: { max_burst: 0 }, burst_max: 5 }, counted).burst_share, null);
});

test("a share of nothing is missing", () => {
    assert.equal(percent_of(1, 0), null);
    assert.equal(percent_of(null, 5), null);
    assert.equal(percent_of(1, 4), 25);
});
