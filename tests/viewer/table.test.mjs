// SPDX-License-Identifier: Apache-2.0
import assert from "node:assert/strict";
import test from "node:test";
import { safe_name } from "../../viewer/dom.js";
import { comma_separated, number_column, row_order, tab_separated } from "../../viewer/table.js";
import { find_names } from "../../viewer/search.js";

const columns = [{ name: "Name", value: (r) => r[0] }, number_column("Time", "ns", (r) => r[1], String)];

test("tab-separated text has plain numbers and the unit in the head", () => {
    assert.equal(tab_separated(columns, [["a", 82143000], ["b\tc\nd", null]]), "Name\tTime (ns)\na\t82143000\nb c d\t\n");
});

test("CSV quotes what needs it", () => {
    assert.equal(comma_separated(columns, [['a,"b"', 1.5], ["two\nlines", NaN]]), 'Name,Time (ns)\r\n"a,""b""",1.5\r\n"two\nlines",\r\n');
});

test("a text that a spreadsheet would take for a formula gets a ', a negative number doesn't", () => {
    for (const text of ["=1+1", "+1", "-1", "@x", "\tx"]) assert.match(comma_separated(columns, [[text, -3]]), new RegExp(`'${text.replace(/[+]/g, "\\$&")},-3`));
});

test("missing values come last in both directions", () => {
    const rows = [["a", null], ["b", 2], ["c", 10]];
    assert.deepEqual([...rows].sort(row_order(columns[1], true)).map((r) => r[0]), ["b", "c", "a"]);
    assert.deepEqual([...rows].sort(row_order(columns[1], false)).map((r) => r[0]), ["c", "b", "a"]);
});

test("texts sort by letters, with numbers in them by size", () => {
    const rows = [["k10", 0], ["k9", 0], ["K1", 0]];
    assert.deepEqual([...rows].sort(row_order(columns[0], true)).map((r) => r[0]), ["K1", "k9", "k10"]);
});

test("control and bidirectional characters are made visible", () => {
    assert.equal(safe_name("a\u202eb\u0000c\u200b\ufeff"), "a⟨U+202E⟩b⟨U+0000⟩c⟨U+200B⟩⟨U+FEFF⟩");
    assert.equal(safe_name("</script> & ü 漢"), "</script> & ü 漢");
});

test("search wants all words, and names that begin so come first", () => {
    const names = [{ name: "store_history", kind: "block of denoise", address: "1" }, { name: "history", kind: "file", address: "2" }, { name: "load", kind: "block of denoise", address: "3" }];
    assert.deepEqual(find_names(names, "HIST").map((n) => n.address), ["2", "1"]);
    assert.deepEqual(find_names(names, "hist denoise").map((n) => n.address), ["1"]);
    assert.deepEqual(find_names(names, "  "), []);
});
