// SPDX-License-Identifier: Apache-2.0
// The page that the program writes says what its summary says: the four answers, and each block's sentence. The program is
// named by the environment, as ZAN_PROFILE=build/.../zanl-profile.

import assert from "node:assert/strict";
import { execFileSync } from "node:child_process";
import { mkdtempSync, readFileSync, rmSync } from "node:fs";
import { tmpdir } from "node:os";
import { join } from "node:path";
import test from "node:test";
import { Model } from "../../viewer/model.js";
import { SeriesStore } from "../../viewer/series.js";
import { sample_names } from "./pages.mjs";
import { top } from "./reference/make_page.mjs";

const program = process.env.ZAN_PROFILE;
const rules = JSON.parse(readFileSync(join(top, "profile/rules.json"), "utf8"));

/** The head of the page that the program writes of a report. */
function written_head(report) {
    const folder = mkdtempSync(join(tmpdir(), "viewer-"));
    execFileSync(program, ["view", report, "-o", join(folder, "page.html")]);
    const page = readFileSync(join(folder, "page.html"), "utf8");
    rmSync(folder, { recursive: true });
    return JSON.parse(/id="head">(.*?)<\/script>/s.exec(page)[1]);
}

for (const name of sample_names) {
    test(`a written page and the summary say the same of ${name}`, { skip: program ? false : "ZAN_PROFILE names no program" }, () => {
        const report = join(top, "samples", name, "expected_report.json");
        const summary = JSON.parse(execFileSync(program, ["summary", report, "--json"], { encoding: "utf8" }));
        const head = written_head(report);
        const model = new Model(head, rules, new SeriesStore(head.series, async () => new Uint8Array(0)), () => {});
        for (const question of ["kernel", "block", "source", "memory"]) assert.equal(model.answers[question].text, summary.answers[question]);
        for (const kernel of summary.kernels) {
            for (const block of kernel.blocks) assert.equal(model.find_block(kernel.name, block.name).sentence.text, block.sentence.text, `${kernel.name}/${block.name}`);
        }
    });
}
