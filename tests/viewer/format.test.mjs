// SPDX-License-Identifier: Apache-2.0
import assert from "node:assert/strict";
import test from "node:test";
import { bandwidth_text, bytes_text, change_text, count_text, fixed_text, number_text, percent_text, round_places, ruler_texts, time_text, trimmed_text, whole_text } from "../../viewer/format.js";

const nb = "\u202f";

test("what is missing is a dash, never 0", () => {
    for (const text of [count_text, percent_text, bandwidth_text, bytes_text]) {
        for (const missing of [null, undefined, NaN]) assert.equal(text(missing), "–");
        assert.notEqual(text(0), "–");
    }
    assert.equal(time_text(null, "ns"), "–");
});

test("numbers have three digits, and commas from a thousand on", () => {
    assert.equal(number_text(6.4512), "6.45");
    assert.equal(number_text(56.94), "56.9");
    assert.equal(number_text(1), "1");
    assert.equal(number_text(999.4), "999");
    assert.equal(number_text(999.5), "1,000");
    assert.equal(number_text(1234567), "1,234,567");
    assert.equal(number_text(0.012345), "0.0123");
    assert.equal(number_text(0), "0");
    assert.equal(number_text(9.996), "10");
});

test("decimals are fixed or trimmed, and a rounded 0 has no sign", () => {
    assert.equal(fixed_text(12.5, 2), "12.50");
    assert.equal(trimmed_text(12.5, 2), "12.5");
    assert.equal(trimmed_text(12, 2), "12");
    assert.equal(trimmed_text(100, 0), "100");
    assert.equal(fixed_text(-0.001, 2), "0.00");
    assert.equal(fixed_text(NaN, 2), "-");
    assert.equal(whole_text(12345.4), "12,345");
});

test("percent has a decimal below 10, and says when it is almost nothing", () => {
    assert.equal(percent_text(9.44), "9.4%");
    assert.equal(percent_text(61.2), "61%");
    assert.equal(percent_text(9.96), "10%");
    assert.equal(percent_text(0), "0%");
    assert.equal(percent_text(0.04), "<0.1%");
    assert.equal(percent_text(101.6), "102%");
});

test("times have the unit that leaves three digits", () => {
    assert.equal(time_text(82143000, "ns"), `82.1${nb}ms`);
    assert.equal(time_text(3000000, "ns"), `3.00${nb}ms`);
    assert.equal(time_text(999600, "ns"), `1.00${nb}ms`);
    assert.equal(time_text(999400, "ns"), `999${nb}µs`);
    assert.equal(time_text(12, "ns"), `12${nb}ns`);
    assert.equal(time_text(5, "ms"), `5.00${nb}ms`);
    assert.equal(time_text(2500, "s"), `2,500${nb}s`);
    assert.equal(time_text(82143, ""), "82,143", "without a unit a plain number");
});

test("bandwidths and bytes go by thousands", () => {
    assert.equal(bandwidth_text(51200), `51.2${nb}GB/s`);
    assert.equal(bandwidth_text(39.94), `39.9${nb}MB/s`);
    assert.equal(bytes_text(932e6), `932${nb}MB`);
    assert.equal(bytes_text(64), `64${nb}B`);
});

test("a change has its sign", () => {
    assert.equal(change_text(-25, percent_text), "−25%");
    assert.equal(change_text(8.2, percent_text), "+8.2%");
    assert.equal(change_text(0, percent_text), "0%");
    assert.equal(change_text(null, percent_text), "–");
});

test("axes have round places at steps of 1, 2 or 5", () => {
    assert.deepEqual(round_places(0, 100, 4), { step: 50, places: [0, 50, 100] });
    assert.deepEqual(round_places(0, 10, 5), { step: 2, places: [0, 2, 4, 6, 8, 10] });
    assert.deepEqual(round_places(3, 3, 5).places, []);
    assert.deepEqual(round_places(0, Infinity, 5).places, []);
});

test("the texts of a ruler have one unit and the same decimals", () => {
    assert.deepEqual(ruler_texts([222e6, 222.5e6, 223e6], 0.5e6, "ns"), [`222.0${nb}ms`, `222.5${nb}ms`, `223.0${nb}ms`]);
    assert.deepEqual(ruler_texts([0, 50e6], 50e6, "ns"), [`0${nb}ms`, `50${nb}ms`]);
    assert.deepEqual(ruler_texts([0, 5], 5, ""), ["0", "5"]);
});
