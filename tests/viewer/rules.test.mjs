// SPDX-License-Identifier: Apache-2.0
import assert from "node:assert/strict";
import { readFileSync } from "node:fs";
import { join } from "node:path";
import test from "node:test";
import { holds, judge } from "../../viewer/rules.js";
import { top } from "./reference/make_page.mjs";

const table = {
    thresholds: { stall_worth: 10 },
    formats: { stall: "percent", lost: "time", net: "number", count: "count", gap: "short_time", clock: "decimal" },
    words: [{ name: "only", when: [["hits", ">", 0]], then: "at most", else: "only" }],
    rules: [
        { name: "waits", kind: "global", tone: "cause", when: [["stall", ">=", "stall_worth"]], text: "Waits for {memory}[, though {free} free][ ({only} {net})]" },
        { name: "write", kind: "global write", tone: "none", when: [], text: "Writes" },
        { name: "late", kind: "all", tone: "added", when: [["lost", ">", 0]], text: "lost {lost}" },
        { name: "unknown", kind: "all", tone: "note", when: [["stall", "unknown"]], text: "Unknown" },
    ],
    answers: {},
};
const judged = (facts, kind = "global read") => judge(table, table.rules, facts, kind);

test("the first rule whose conditions hold has the sentence", () => {
    assert.deepEqual(judged({ stall: 55, memory: "HBM" }), { rule: "waits", tone: "cause", text: "Waits for HBM (only)".replace(" (only)", "") });
    assert.equal(judged({ stall: 9.99, memory: "HBM" }, "global write").rule, "write");
    assert.equal(judged({ stall: 55, memory: "HBM" }, "loop").rule, "", "no rule for its kind");
});

test("only unknown holds for what is missing", () => {
    assert.equal(judged({}).rule, "unknown");
    assert.ok(!holds(table, [["stall", "<", 5]], {}));
    assert.ok(holds(table, [["stall", "unknown"]], { stall: null }));
    assert.ok(!holds(table, [["stall", "unknown"]], { stall: 0 }));
    assert.ok(holds(table, [["flag", "=", 1]], { flag: true }));
});

test("a part in brackets is left out if a value in it is missing", () => {
    assert.equal(judged({ stall: 55, memory: "HBM", net: 6.43 }).text, "Waits for HBM (only 6.43)");
    assert.equal(judged({ stall: 55, memory: "HBM", net: 6.43, hits: 3 }).text, "Waits for HBM (at most 6.43)");
});

test("a sentence without a value that it needs isn't said", () => {
    assert.equal(judged({ stall: 55 }).rule, "");
});

test("rules of the tone added follow after a semicolon", () => {
    assert.equal(judged({ stall: 55, memory: "HBM", lost: 8.7e3, time_unit_known: true }).text, "Waits for HBM; lost 8.70 us");
    assert.equal(judged({ stall: 55, memory: "HBM", lost: 8700, time_unit_known: false }).text, "Waits for HBM; lost 8,700");
});

test("names are texts: braces and brackets in them stay", () => {
    assert.equal(judged({ stall: 55, memory: "{net}[x]" }).text, "Waits for {net}[x]");
});

test("each name in the table of rules has a format, is a text, or is a word", () => {
    const rules = JSON.parse(readFileSync(join(top, "profile/rules.json"), "utf8"));
    const texts = ["memory", "port", "what", "sharer", "rivals", "stage", "stalling_block", "kernel", "culprit", "place", "caller"];
    const known = new Set([...Object.keys(rules.formats), ...rules.words.map((w) => w.name), ...texts]);
    for (const rule of [...rules.rules, ...Object.values(rules.answers).flat()]) {
        for (const [, name] of rule.text.matchAll(/\{(\w+)\}/g)) assert.ok(known.has(name), `${rule.name}: ${name}`);
        for (const [, , limit] of rule.when) if (typeof limit === "string") assert.ok(limit in rules.thresholds, `${rule.name}: ${limit}`);
    }
});
