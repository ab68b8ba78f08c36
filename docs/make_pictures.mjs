// SPDX-License-Identifier: Apache-2.0
// Makes the pictures of docs/viewer.md from pages of the pipeline workload and its next version.
//
//   node make_pictures.mjs BUILD [--reference]      BUILD is a folder with built programs; --reference: pages by the small
//                                                   writer of the tests
//
// Look at them afterwards: a picture may show that a page has become worse.

import { execFileSync } from "node:child_process";
import { mkdtempSync, rmSync } from "node:fs";
import { tmpdir } from "node:os";
import { dirname, join, resolve } from "node:path";
import { fileURLToPath } from "node:url";
import { open_browser, open_page, settle } from "../tests/viewer/browser.mjs";

const here = dirname(fileURLToPath(import.meta.url));
const width = 1280;
// Name, page, address, theme and height of each.
const pictures = [
    ["overview", "run", "#/overview", "light", 900],
    ["timeline", "run", "#/timeline?r=9000000-18500000&s=13200000-15200000", "dark", 900],
    ["block", "run", "#/block/merge/store_past?i=6&s=17600000-17900000", "light", 860],
    ["source", "run", "#/source/device%2Fstabilize.cl/38", "light", 760],
    ["memory", "run", "#/memory/DDR", "light", 860],
    ["comparison", "both", "#/compare", "dark", 720],
];

/** A report of the workload. */
function make_report(build, folder, workload, name) {
    const report = join(folder, `${name}.json`);
    execFileSync(join(build, "bench/workloads"), [workload, folder]);
    execFileSync(join(build, "zanl-profile-tly"), [join(folder, "design.zanx"), join(folder, "profile.mon"), report]);
    return report;
}

function make_page(build, uses_reference, page, report, ...options) {
    const [program, ...first] = uses_reference ? [process.execPath, join(here, "../tests/viewer/reference/make_page.mjs")]
        : [join(build, "tools/zanl_profile/zanl-profile"), "view"];
    execFileSync(program, [...first, report, "-o", page, ...options]);
}

async function take(browser, page_file, [name, , address, theme, height]) {
    const { page, faults, close } = await open_page(browser, page_file, { address, width, height, dark: theme === "dark" });
    // Charts are drawn when their values have come.
    await settle(page, 1000);
    if (faults.length > 0) throw new Error(`${name}: ${faults.join("; ")}`);
    await page.screenshot({ path: join(here, "viewer", `${name}.png`) });
    await close();
}

const [build_folder, reference] = process.argv.slice(2);
const build = resolve(build_folder);
const folder = mkdtempSync(join(tmpdir(), "pictures-"));
const browser = await open_browser();
try {
    const base = make_report(build, folder, "pipeline", "stabilize");
    const next = make_report(build, folder, "pipeline_aligned", "stabilize_aligned");
    const pages = { run: join(folder, "run.html"), both: join(folder, "both.html") };
    make_page(build, reference === "--reference", pages.run, base, "--source", join(here, "pipeline"));
    make_page(build, reference === "--reference", pages.both, next, "--base", base);
    for (const picture of pictures) await take(browser, pages[picture[1]], picture);
} finally {
    await browser.close();
    rmSync(folder, { recursive: true });
}
