// SPDX-License-Identifier: Apache-2.0
// Page and program say the same of each sample: the four answers, and each block's sentence. The page has other code for
// it, in another language. And the program's page has the values and sums of the page of the tests' small writer, which
// shares no code with it. The program is named by the environment, as ZAN_PROFILE=build/.../zanl-profile.

import assert from "node:assert/strict";
import { execFileSync } from "node:child_process";
import { readFileSync } from "node:fs";
import { join } from "node:path";
import test, { after } from "node:test";
import { inflateRawSync } from "node:zlib";
import { Model } from "../../viewer/model.js";
import { SeriesStore } from "../../viewer/series.js";
import { PageFolder, sample_names, sample_report } from "./pages.mjs";
import { make_part, top } from "./reference/make_page.mjs";

const skip = process.env.ZAN_PROFILE ? false : "ZAN_PROFILE names no program";
const rules = JSON.parse(readFileSync(join(top, "profile/rules.json"), "utf8"));
const folder = new PageFolder();
after(() => folder.remove());

/** Head and chunks of a page, of which there are as many as its elements d0, d1, ... */
function page_part(file) {
    const text = readFileSync(file, "utf8");
    const head = JSON.parse(/<script type="application\/json" id="head">(.*?)<\/script>/s.exec(text)[1]);
    return { head, chunks: [...text.matchAll(/<script type="text\/plain" id="d\d+">([^<]*)<\/script>/g)].map(([, chunk]) => chunk) };
}

function model_of({ head, chunks }) {
    const store = new SeriesStore(head.series, async (k) => Buffer.from(chunks[k], "base64"), async (packed) => inflateRawSync(packed));
    return new Model(head, rules, store, () => {});
}

const is_near = (a, b) => a === b || Math.abs(a - b) <= 1e-6 * Math.max(Math.abs(a), Math.abs(b));

for (const name of sample_names) {
    test(`page and program say the same of ${name}`, { skip }, () => {
        const summary = JSON.parse(execFileSync(process.env.ZAN_PROFILE, ["summary", join(top, "samples", name, "expected_report.json"), "--json"], { encoding: "utf8" }));
        const model = model_of(page_part(folder.write(name, sample_report(name))));
        for (const question of ["kernel", "block", "source", "memory"]) assert.equal(model.answers[question].text, summary.answers[question]);
        let num_compared = 0;
        for (const kernel of summary.kernels) {
            for (const block of kernel.blocks) {
                assert.equal(model.find_block(kernel.name, block.name).sentence.text, block.sentence.text, `${kernel.name}/${block.name}`);
                ++num_compared;
            }
        }
        assert.equal(num_compared, model.ranking.length);
    });

    test(`both writers write the same values and sums of ${name}`, { skip }, async () => {
        const ours = model_of(page_part(folder.write(name, sample_report(name))));
        const theirs = model_of(make_part(sample_report(name), name));
        assert.equal(ours.kernels.length, theirs.kernels.length);
        for (const kernel of ours.kernels) {
            for (const { block } of kernel.blocks) {
                const other = theirs.find_block(kernel.name, block.name).block;
                for (const metric of new Set([...Object.keys(block.series), ...Object.keys(other.series)])) {
                    const what = `${kernel.name}/${block.name} ${metric}`;
                    const [values, others] = await Promise.all([ours.store.values(block.series[metric] ?? -1), theirs.store.values(other.series[metric] ?? -1)]);
                    // A column without any number may be absent.
                    if (values.length !== others.length) {
                        assert.ok([...values, ...others].every(Number.isNaN), what);
                        continue;
                    }
                    assert.deepEqual(values, others, what);
                    block.sums[metric].forEach((sum, i) => assert.ok(is_near(sum, other.sums[metric][i]), `${what}: sum ${i} is ${sum}, not ${other.sums[metric][i]}`));
                }
            }
        }
    });
}
