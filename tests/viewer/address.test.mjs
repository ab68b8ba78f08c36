// SPDX-License-Identifier: Apache-2.0
import assert from "node:assert/strict";
import test from "node:test";
import { address_of, block_address, parse_address, source_address } from "../../viewer/address.js";

test("an address is read back as it was written", () => {
    for (const name of ["load", "a/b?c#d", "%2F", "ü ⟨⟩", "../..", "&i=3", "</script>"]) {
        const place = { view: "block", names: [name, name], stretch: [1.5, 2000], selection: [3, 4], invocation: 7 };
        assert.deepEqual(parse_address(address_of(place)), place, name);
    }
});

test("an unknown view is the overview", () => {
    for (const fragment of ["", "#", "#/", "#/nothing/a", "#/constructor", "x"]) {
        assert.deepEqual([parse_address(fragment).view, parse_address(fragment).names], ["overview", []], fragment);
    }
});

test("what can't be read is left out", () => {
    const place = parse_address("#/timeline?r=5-3&s=a-b&i=-1");
    assert.deepEqual([place.stretch, place.selection, place.invocation], [null, null, null]);
    assert.deepEqual(parse_address("#/block/%E0%A4%A/x").names, ["%E0%A4%A", "x"]);
    assert.equal(parse_address("#/timeline?i=1.5").invocation, null);
});

test("times have at most three decimals", () => {
    assert.equal(address_of({ view: "timeline", stretch: [0.12345, 1e7] }), "#/timeline?r=0.123-10000000");
});

test("blocks and sources have addresses by name", () => {
    assert.equal(block_address("k", "b/c"), "#/block/k/b%2Fc");
    assert.equal(source_address("a/b.cl", 12), "#/source/a%2Fb.cl/12");
});
