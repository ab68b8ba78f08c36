// SPDX-License-Identifier: Apache-2.0
// Heads made by the reference writer, read by the page's own modules: exact values, sums, ranking, the four answers.

import assert from "node:assert/strict";
import { readFileSync } from "node:fs";
import { join } from "node:path";
import test from "node:test";
import { inflateRawSync } from "node:zlib";
import { Model } from "../../viewer/model.js";
import { change_of, compare, pairs_of } from "../../viewer/pairs.js";
import { bytes_of_base64, SeriesStore } from "../../viewer/series.js";
import { stretch_facts, Tracks } from "../../viewer/stretch_facts.js";
import { lost_by, source_files } from "../../viewer/view_source.js";
import { hostile_report, long_report, sample_names, sample_report } from "./pages.mjs";
import { make_part, top } from "./reference/make_page.mjs";
import { list } from "./reference/report.mjs";

const rules = JSON.parse(readFileSync(join(top, "profile/rules.json"), "utf8"));

function model_of(report) {
    const { head, chunks } = make_part(report, "report.json");
    const store = new SeriesStore(head.series, async (chunk) => bytes_of_base64(chunks[chunk]), async (packed) => new Uint8Array(inflateRawSync(packed)));
    return new Model(head, rules, store, () => {});
}

const keys = { valid: "occupancy_samples", stall: "stall_samples", idle: "idle_samples", requests: "activity_samples", bandwidth: "bandwidth_samples",
    efficiency: "bandwidth_eff_samples", fill: "average_channel_depth_samples", max_fill: "max_channel_depth_samples", hits: "cache_hit_samples", unaligned: "non_aligned_access_samples" };

for (const name of sample_names) {
    test(`every value of the report of ${name} is in its page, digit for digit`, async () => {
        const report = sample_report(name);
        const model = model_of(report);
        let compared = 0;
        for (const { kernel } of model.kernels) {
            const first = (await model.store.values(kernel.invocations.first));
            const nodes = list(report.kernels.nodes).filter((n) => n.name === kernel.name);
            for (const [k, node] of nodes.entries()) {
                for (const child of list(node.children).filter((c) => c.type === "moduleinst")) {
                    const block = kernel.blocks.find((b) => b.name === child.name);
                    for (const [metric, key] of Object.entries(keys)) {
                        const texts = list(child.module_inst_details[key]);
                        if (texts.length === 0) continue;
                        const id = block.series[metric];
                        const values = await model.store.values(id, first[k], first[k] + texts.length);
                        texts.forEach((text, i) => assert.equal(model.store.mark_text(id, first[k] + i) ?? String(values[i]), String(text in { nan: 1, inf: 1, "-0": 1 } ? text : Number(text))));
                        compared += texts.length;
                    }
                }
            }
        }
        assert.ok(compared > 0 || name === "kernel_names" || model.ranking.length === 0, "something was compared");
    });
}

/** One kernel, two samples of 100 cycles at 200 MHz: stalls 40 and 30, valid 50 and 60. */
const simple = () => model_of(hostile_report("k"));

test("the facts of the run follow from the sums", () => {
    const [load, send] = simple().kernels[0].blocks;
    assert.equal(load.facts.stall, 35);
    assert.equal(load.facts.valid, 55);
    assert.equal(load.facts.lost, 350, "70 cycles at 200 MHz");
    assert.equal(load.facts.bandwidth, 1500);
    // (1,000 x 1 + 2,000 x 0.5) of 3,000.
    assert.ok(Math.abs(load.facts.efficiency - 200 / 3) < 1e-9);
    // A writer: (3.25 x 90 + 4.5 x 90 - 70 x 8) / 110 words.
    assert.ok(Math.abs(send.facts.fill - (292.5 + 405 - 560) / 110) < 1e-9);
});

test("blocks are ranked by the time they lost, and the first is the culprit of its kernel", () => {
    const model = simple();
    assert.deepEqual(model.ranking.map((b) => b.kind), ["global read", "channel write"]);
    assert.equal(model.kernels[0].culprit, model.ranking[0]);
    assert.equal(model.answers.leader, model.kernels[0]);
    assert.equal(model.answers.culprit, model.ranking[0]);
});

test("the answers name kernel, block and line", () => {
    const { answers } = simple();
    assert.match(answers.kernel.text, /^k: 91% of the run, 1\.00 us in 1 invocation$/, "1,000 of 1,100 ns");
    assert.match(answers.block.text, /^k\/k__global: 35% of its cycles stalled, at most 350 ns lost$/);
    assert.match(answers.source.text, /^k:3, called from k:9$/);
});

test("the facts of a stretch are those of its samples", async () => {
    const model = simple();
    const facts = await stretch_facts(model, new Tracks(), model.kernels[0], 0, [500, 1000]);
    // Times count from the first transfer at 0: the second sample ends at 1,100, the first at 600.
    assert.equal(facts.stall, 40);
    const second = await stretch_facts(model, new Tracks(), model.kernels[0], 0, [600, 1100]);
    assert.equal(second.stall, 30);
    assert.equal(second.bandwidth, 2000);
    assert.equal(second.lost, 150);
    const whole = await stretch_facts(model, new Tracks(), model.kernels[0], 0, [0, 1100]);
    for (const name of ["stall", "valid", "idle", "bandwidth", "efficiency", "hits", "lost"]) assert.equal(whole[name], model.kernels[0].blocks[0].facts[name], name);
});

test("the facts of a stretch name who shares the port there", async () => {
    const report = hostile_report("k");
    const { children } = report.kernels.nodes[0];
    const other = structuredClone(children[1]);
    other.name = "other";
    for (const block of [children[1], other]) block.module_inst_details.bandwidth_eff_samples = ["1", "1"];
    children[1].module_inst_details.bandwidth_samples = ["900", "1000"];
    other.module_inst_details.bandwidth_samples = ["100", "1000"];
    children.push(other);
    const model = model_of(report);
    const facts = (stretch) => stretch_facts(model, new Tracks(), model.kernels[0], 0, stretch);
    // The port carries 1,000 and 2,000 MB/s. Of the first the other block has 10%, of the second half: 20% is enough.
    const [first, second, whole] = await Promise.all([[500, 600], [600, 1100], [0, 1100]].map(facts));
    assert.deepEqual([first.port_sharers, first.sharer], [1, undefined]);
    assert.deepEqual([second.port_sharers, second.sharer], [2, "other"]);
    const run = model.kernels[0].blocks[0].facts;
    assert.deepEqual([whole.port_sharers, whole.sharer], [2, "other"], "1,100 of 3,000");
    assert.deepEqual([run.port_sharers, run.sharer], [2, "other"]);
});

test("a stretch of a column with stored pyramids has the same facts as the run", async () => {
    const model = model_of(long_report(70000));
    const facts = await stretch_facts(model, new Tracks(), model.kernels[0], 0, [0, model.head.run.span]);
    for (const name of ["stall", "valid", "bandwidth", "efficiency"]) assert.ok(Math.abs(facts[name] / model.kernels[0].blocks[0].facts[name] - 1) < 1e-9, name);
});

test("lost time of a line is of each kernel's worst block, and at most the kernel's time", () => {
    const model = simple();
    const lines = source_files(model).get("k");
    assert.deepEqual([...lines.keys()].sort((a, b) => a - b), [3, 9]);
    assert.equal(lines.get(3).own.size, 2);
    assert.equal(lines.get(9).inlined.size, 2);
    assert.equal(lost_by(model, lines.get(3).own), 350, "not 350 twice, as both stall at the same time");
});

test("two runs are matched by name, with what only one has", () => {
    assert.deepEqual(pairs_of(["a", "b"], ["b", "c"], (x) => x), [{ key: "b", was: "b", now: "b" }, { key: "c", was: null, now: "c" }, { key: "a", was: "a", now: null }]);
    assert.equal(change_of(5, 3), -2);
    assert.equal(change_of(null, 3), null);
});

test("blocks that lose less or more are listed if that is a thousandth of the base's span", () => {
    const faster = hostile_report("k");
    faster.kernels.nodes[0].children[1].module_inst_details.stall_samples = ["10", "10"];
    const found = compare(simple(), model_of(faster));
    assert.deepEqual(found.less.map((p) => [p.now.block.name, p.change]), [["k__global", -250]]);
    assert.deepEqual(found.more, []);
    assert.equal(found.kernels.length, 1);
});
