// SPDX-License-Identifier: Apache-2.0
import assert from "node:assert/strict";
import test from "node:test";
import { level_of_values, levels_from, range_of, step_for, stretch_of } from "../../viewer/pyramid.js";

function levels_of(values, weights = values.map(() => 1)) {
    return levels_from(level_of_values(Float64Array.from(values), Float64Array.from(values, (v, i) => Number.isNaN(v) ? 0 : v * weights[i]), Float64Array.from(weights)));
}

test("each level has least, greatest, sum and weight of eight entries of the one below", () => {
    const levels = levels_of([3, 1, 4, 1, 5, 9, 2, 6, 5]);
    assert.deepEqual(levels.map((l) => l.step), [1, 8]);
    assert.deepEqual([...levels[1].least], [1, 5]);
    assert.deepEqual([...levels[1].greatest], [9, 5]);
    assert.deepEqual([...levels[1].sum], [31, 5]);
    assert.deepEqual([...levels[1].weight], [8, 1]);
});

test("values that don't count have no part in it", () => {
    const [, level] = levels_of([NaN, NaN, NaN, NaN, NaN, NaN, NaN, NaN, 2, NaN], [0, 0, 0, 0, 0, 0, 0, 0, 3, 0]);
    assert.ok(Number.isNaN(level.least[0]) && Number.isNaN(level.greatest[0]));
    assert.deepEqual([level.least[1], level.greatest[1], level.sum[1], level.weight[1]], [2, 2, 6, 3]);
});

test("any stretch is the same as by adding up one by one", () => {
    const values = Array.from({ length: 700 }, (_, i) => (i * 7919) % 1009);
    const levels = levels_of(values);
    for (const [from, to] of [[0, 700], [0, 1], [699, 700], [8, 16], [7, 17], [1, 699], [63, 65], [64, 512], [100, 100], [5, 13]]) {
        const part = values.slice(from, to);
        const range = stretch_of(levels, from, to);
        assert.equal(range.sum, part.reduce((a, b) => a + b, 0), `${from} to ${to}`);
        assert.equal(range.weight, part.length);
        assert.equal(range.least, Math.min(...part));
        assert.equal(range.greatest, Math.max(...part));
    }
});

test("a range that passes the ends is cut", () => {
    const [level] = levels_of([1, 2, 3]);
    assert.deepEqual(range_of(level, -5, 50), { least: 1, greatest: 3, sum: 6, weight: 3 });
});

test("a pixel gets one to eight entries", () => {
    assert.equal(step_for(1, 0.3), 1);
    assert.equal(step_for(1, 7.9), 1);
    assert.equal(step_for(1, 8), 8);
    assert.equal(step_for(256, 300), 256);
    assert.equal(step_for(256, 2048), 2048);
});
