// SPDX-License-Identifier: Apache-2.0
// What the tests in a browser share: one browser and one folder of pages for a file of tests.

import assert from "node:assert/strict";
import { readFileSync } from "node:fs";
import { createRequire } from "node:module";
import { after, before, describe } from "node:test";
import { chromium_path, open_browser, open_page, settle } from "./browser.mjs";
import { PageFolder } from "./pages.mjs";

const titles = { overview: "Overview", timeline: "Timeline", block: "Blocks", source: "Source", memory: "Memory", compare: "Comparison" };
export const views = Object.keys(titles);
export const axe_source = () => readFileSync(createRequire(import.meta.url).resolve("axe-core/axe.min.js"), "utf8");

const has_packages = await import("playwright-core").then(() => true, () => false);

/** Goes to a view, however busy the machine is. */
export async function go(page, address) {
    await page.evaluate((hash) => { location.hash = hash; }, address);
    const title = titles[/^#\/(\w+)/.exec(address)[1]];
    await page.waitForFunction((text) => document.title.startsWith(text), title);
    await settle(page, 60);
}

export const hash_of = (page) => page.evaluate(() => decodeURIComponent(location.hash));

/** What axe finds on the page as it is: rule and elements. `options` are those of axe.run. */
export async function axe_faults(page, options = {}) {
    const found = await page.evaluate((more) => axe.run(document, { resultTypes: ["violations"], ...more }), options);
    return found.violations.map((v) => [v.id, v.nodes.slice(0, 2).map((n) => n.html.slice(0, 160))]);
}

/** Tests that share a browser; two run at a time. `define` gets what they use. */
export function browser_suite(title, define) {
    const skip = !chromium_path || !has_packages ? "needs Chromium and the packages of tests/viewer" : false;
    describe(title, { skip, concurrency: 2 }, () => {
        const shared = {
            browser: undefined,
            folder: undefined,
            /** Runs a test on a page and asserts that it was quiet. */
            on_page: async (file, options, work) => {
                const opened = await open_page(shared.browser, file, options);
                try {
                    await work(opened.page);
                    assert.deepEqual(opened.faults, []);
                } finally {
                    await opened.close();
                }
            },
        };
        before(async () => {
            shared.folder = new PageFolder();
            shared.browser = await open_browser();
        });
        after(async () => {
            await shared.browser?.close();
            shared.folder?.remove();
        });
        define(shared);
    });
}
