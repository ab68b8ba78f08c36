// SPDX-License-Identifier: Apache-2.0
// Page and program say the same of each sample: the four answers, and each block's sentence. The page has other code for
// it, in another language; the program is named by the environment, as ZAN_PROFILE=build/.../zanl-profile.

import assert from "node:assert/strict";
import { execFileSync } from "node:child_process";
import { readFileSync } from "node:fs";
import { join } from "node:path";
import test from "node:test";
import { Model } from "../../viewer/model.js";
import { SeriesStore } from "../../viewer/series.js";
import { sample_names, sample_report } from "./pages.mjs";
import { make_part, top } from "./reference/make_page.mjs";

const program = process.env.ZAN_PROFILE;
const rules = JSON.parse(readFileSync(join(top, "profile/rules.json"), "utf8"));

for (const name of sample_names) {
    test(`page and program say the same of ${name}`, { skip: program ? false : "ZAN_PROFILE names no program" }, () => {
        const summary = JSON.parse(execFileSync(program, ["summary", join(top, "samples", name, "expected_report.json"), "--json"], { encoding: "utf8" }));
        const { head } = make_part(sample_report(name), name);
        const model = new Model(head, rules, new SeriesStore(head.series, async () => new Uint8Array(0)), () => {});
        for (const question of ["kernel", "block", "source", "memory"]) assert.equal(model.answers[question].text, summary.answers[question]);
        for (const kernel of summary.kernels) {
            for (const block of kernel.blocks) assert.equal(model.find_block(kernel.name, block.name).sentence.text, block.sentence.text, `${kernel.name}/${block.name}`);
        }
    });
}
