// SPDX-License-Identifier: Apache-2.0
import assert from "node:assert/strict";
import test from "node:test";
import { place_after } from "../../viewer/columns.js";
import { map_pixels, pixels_of } from "../../viewer/pixels.js";

/** A clock without a page. */
function clock_of(invocations, ends) {
    return { is_ready: true, n: ends.length, lowest_step: 1, start: invocations.map((i) => i[0]), end: invocations.map((i) => i[1]), first: invocations.map((i) => i[2]),
        ends: (step) => ends.filter((_, i) => (i + 1) % step === 0 || i === ends.length - 1),
        invocation_of(i) { return Math.max(0, place_after(this.first, i) - 1); },
        rough_samples(from, to) { return [place_after(ends, from), Math.min(ends.length, place_after(ends, to) + 1)]; } };
}

test("a place after a value is the first that is greater", () => {
    assert.deepEqual([0, 1, 2, 2.5, 9].map((v) => place_after([1, 2, 2, 3], v)), [0, 1, 3, 3, 4]);
    assert.equal(place_after([], 5), 0);
});

test("a sample covers the pixels from its beginning to its end", () => {
    // Two samples, 0 to 50 and 50 to 100, on ten pixels of 10.
    const map = map_pixels([50, 100], 0, 1, (_, before) => Math.max(0, before), 0, 100, 10);
    assert.deepEqual([...map.first], [0, 0, 0, 0, 0, 1, 1, 1, 1, 1]);
    assert.deepEqual([...map.last], [1, 1, 1, 1, 1, 2, 2, 2, 2, 2]);
});

test("a pixel that several samples share has all of them", () => {
    const map = map_pixels([10, 20, 30, 40], 0, 1, (_, before) => Math.max(0, before), 0, 40, 2);
    assert.deepEqual([[...map.first], [...map.last]], [[0, 2], [2, 4]]);
});

test("a sample shorter than a pixel is still seen", () => {
    const map = map_pixels([1000, 1001, 2000], 0, 1, (_, before) => Math.max(0, before), 0, 2000, 2);
    assert.deepEqual([[...map.first], [...map.last]], [[0, 1], [1, 3]]);
});

test("nothing is between invocations", () => {
    // 0 to 20 and 60 to 80, samples of 10.
    const clock = clock_of([[0, 20, 0], [60, 80, 2]], [10, 20, 70, 80]);
    const map = pixels_of(clock, 0, 100, 10);
    assert.deepEqual([...map.first], [0, 1, -1, -1, -1, -1, 2, 3, -1, -1]);
});

test("zoomed into a gap, nothing is drawn", () => {
    const clock = clock_of([[0, 20, 0], [60, 80, 2]], [10, 20, 70, 80]);
    assert.ok([...pixels_of(clock, 30, 50, 4).first].every((first) => first === -1));
});

test("zoomed into one sample, all pixels have it", () => {
    const clock = clock_of([[0, 20, 0]], [10, 20]);
    assert.deepEqual([...pixels_of(clock, 12, 14, 3).first], [1, 1, 1]);
});

test("no stretch or no width has no map", () => {
    const clock = clock_of([[0, 20, 0]], [10, 20]);
    assert.equal(pixels_of(clock, 5, 5, 10), undefined);
    assert.equal(pixels_of(clock, 0, 5, 0), undefined);
});
