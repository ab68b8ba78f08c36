// SPDX-License-Identifier: Apache-2.0
// The page of `history trend` in a browser: no request, no message, no policy report, nothing for axe to find, and colours of
// the system. The program is named by the environment, as ZAN_PROFILE=build/.../zanl-profile.

import assert from "node:assert/strict";
import { execFileSync, spawnSync } from "node:child_process";
import { readFileSync, writeFileSync } from "node:fs";
import { join } from "node:path";
import { test } from "node:test";
import { axe_faults, axe_source, browser_suite } from "./browser_suite.mjs";
import { top } from "./reference/make_page.mjs";

const program = process.env.ZAN_PROFILE;
const hostile = "</title><script>alert(1)</script><img src=x onerror=alert(2)>\"'\u202e";

/** A page of six runs that differ; the last is slower. Their package version is hostile. @param {string} folder */
function trend_page(folder) {
    const report = join(top, "samples/image_pipeline/expected_report.json");
    const summary = JSON.parse(execFileSync(program, ["summary", report, "--json"], { encoding: "utf8" }));
    const run = (...words) => spawnSync(program, ["history", ...words], { cwd: folder });
    [6000, 6010, 5990, 6005, 6002, 7100].forEach((time, i) => {
        summary.kernels.find((kernel) => kernel.name === "writer").kernel_time_ns = time;
        writeFileSync(join(folder, "s.json"), JSON.stringify({ ...summary, zanx_version: hostile }));
        run("add", "trend.db", "s.json", "--date", `2026-11-1${i}`);
    });
    run("trend", "trend.db", "--kernel", "writer", "--metric", "kernel_time", "--fail-on", "+5%", "--html", "trend.html");
    return join(folder, "trend.html");
}

browser_suite("the page of a trend", (shared) => {
    const skip = program ? false : "ZAN_PROFILE names no program";
    for (const dark of [false, true]) {
        test(dark ? "dark" : "light", { skip }, async () => {
            const file = trend_page(shared.folder.path);
            assert.ok(readFileSync(file, "utf8").includes("Content-Security-Policy"));
            await shared.on_page(file, { dark }, async (page) => {
                assert.equal(await page.evaluate(() => getComputedStyle(document.body).backgroundColor), dark ? "rgb(19, 22, 25)" : "rgb(247, 247, 245)");
                assert.equal(await page.locator("circle").count(), 6);
                assert.equal(await page.locator("script, img").count(), 0);
                assert.match(await page.locator(".sentence").innerText(), /^failed: kernel_time of writer is 7\.10 us/);
                await page.evaluate(axe_source());
                assert.deepEqual(await axe_faults(page), []);
            });
        });
    }
});
