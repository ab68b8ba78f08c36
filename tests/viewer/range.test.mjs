// SPDX-License-Identifier: Apache-2.0
import assert from "node:assert/strict";
import test from "node:test";
import { Stretch } from "../../viewer/range.js";

test("a stretch is cut at the ends of the run and keeps its length there", () => {
    const stretch = new Stretch(1000);
    stretch.show(900, 1100);
    assert.deepEqual([stretch.from, stretch.to], [800, 1000]);
    stretch.show(-50, 50);
    assert.deepEqual([stretch.from, stretch.to], [0, 100]);
    stretch.show(-500, 5000);
    assert.ok(stretch.is_whole());
});

test("zooming keeps the place under the cursor", () => {
    const stretch = new Stretch(1000);
    stretch.point(250);
    stretch.zoom(0.5);
    assert.deepEqual([stretch.from, stretch.to], [125, 625]);
    assert.equal((250 - stretch.from) / (stretch.to - stretch.from), 0.25);
    stretch.point(null);
    stretch.zoom(0.5);
    assert.deepEqual([stretch.from, stretch.to], [250, 500], "without a cursor around the middle");
    stretch.zoom(100);
    assert.ok(stretch.is_whole());
});

test("panning moves by a part of what is shown", () => {
    const stretch = new Stretch(1000);
    stretch.show(400, 600);
    stretch.pan(0.5);
    assert.deepEqual([stretch.from, stretch.to], [500, 700]);
});

test("a selection has its ends in order, inside of the run, and is nothing without a length", () => {
    const stretch = new Stretch(1000);
    stretch.select(700, 300);
    assert.deepEqual(stretch.selection, [300, 700]);
    stretch.show_selection();
    assert.deepEqual([stretch.from, stretch.to], [300, 700]);
    stretch.select(-10, 20);
    assert.deepEqual(stretch.selection, [0, 20]);
    stretch.select(5, 5);
    assert.equal(stretch.selection, null);
});

test("listeners learn what has changed, and nothing if the cursor stays", () => {
    const stretch = new Stretch(1000);
    const heard = [];
    stretch.listeners.add((what) => heard.push(what));
    stretch.show(1, 2);
    stretch.select(1, 2);
    stretch.point(1.5);
    stretch.point(1.5);
    assert.deepEqual(heard, ["stretch", "selection", "cursor"]);
});

test("a run of no length has a stretch all the same", () => {
    const stretch = new Stretch(0);
    stretch.zoom(0.5);
    assert.ok(stretch.to > stretch.from);
});
