// SPDX-License-Identifier: Apache-2.0
// The page in Chromium: every view of every sample, hostile names, odd values, pages that are damaged.

import assert from "node:assert/strict";
import { mkdtempSync, readFileSync, truncateSync, writeFileSync } from "node:fs";
import { join } from "node:path";
import test from "node:test";
import { pathToFileURL } from "node:url";
import { open_page, settle } from "./browser.mjs";
import { axe_faults, axe_source, browser_suite, go, views } from "./browser_suite.mjs";
import { hostile_names, hostile_report, long_report, odd_reports, program, sample_names, sample_report } from "./pages.mjs";

browser_suite("the page in a browser", (shared) => {
    for (const name of sample_names) {
        test(`every view of ${name} is quiet and accessible, light and dark`, async () => {
            const report = sample_report(name);
            const file = shared.folder.write(name, report, { base: report });
            await shared.on_page(file, {}, async (page) => {
                await page.evaluate(axe_source());
                for (const view of views) {
                    await go(page, `#/${view}`);
                    assert.ok(await page.locator("main h1").count() === 1, `${view} has a title`);
                    assert.deepEqual(await axe_faults(page), [], view);
                    // The same elements in other colours.
                    await page.emulateMedia({ colorScheme: "dark" });
                    await settle(page, 60);
                    assert.ok(await page.evaluate(() => document.documentElement.classList.contains("dark")));
                    assert.deepEqual(await axe_faults(page, { runOnly: ["color-contrast", "link-in-text-block"] }), [], `${view}, dark`);
                    await page.emulateMedia({ colorScheme: "light" });
                }
            });
        });
    }

    test("windows, tables of charts and the list of the search are accessible", async () => {
        const file = shared.folder.write("windows", sample_report("image_pipeline"));
        await shared.on_page(file, { address: "#/block" }, async (page) => {
            await page.evaluate(axe_source());
            await page.keyboard.press("?");
            await settle(page);
            assert.deepEqual(await axe_faults(page), [], "keys");
            await page.keyboard.press("Escape");
            await page.getByRole("button", { name: /as table/ }).first().click();
            await settle(page);
            assert.match(await page.locator("dialog tbody tr").first().textContent(), /\d/);
            assert.deepEqual(await axe_faults(page), [], "table of a chart");
            await page.keyboard.press("Escape");
            await page.keyboard.press("/");
            await page.keyboard.type("e");
            await settle(page);
            assert.deepEqual(await axe_faults(page), [], "search");
        });
    });

    test("hostile names are shown as what they are, in each view", async () => {
        for (const [i, name] of hostile_names.entries()) {
            const file = shared.folder.write(`hostile${i}`, hostile_report(name), { report_name: `${name}.json` });
            await shared.on_page(file, {}, async (page) => {
                for (const view of views) {
                    await go(page, `#/${view}`);
                    assert.doesNotMatch(await page.title(), /^run$/);
                    assert.equal(await page.locator("main img, main script").count(), 0);
                    const text = await page.locator("main").textContent();
                    assert.doesNotMatch(text, /[\u0000-\u0008\u202e\u2066\u200b]/, `${view} has a harmful character`);
                }
                await go(page, "#/overview");
                const shown = [...name].map((c) => /[\u0000-\u001f\u200b\u202e\u2066]/.test(c) ? `⟨U+${c.charCodeAt(0).toString(16).toUpperCase().padStart(4, "0")}⟩` : c).join("");
                assert.ok((await page.locator("main").textContent()).includes(shown), `the name is on the overview: ${shown}`);
            });
        }
    });

    test("a block with a hostile name has its address", async () => {
        const file = shared.folder.write("hostile_address", hostile_report("a/b?c#d%2F"));
        await shared.on_page(file, {}, async (page) => {
            await go(page, "#/overview");
            await page.locator("section", { hasText: "Worst blocks" }).locator("tbody a").first().click();
            await settle(page);
            assert.match(await page.locator("h1").textContent(), /a\/b\?c#d%2F \/ a\/b\?c#d%2F/);
        });
    });

    for (const [name, report] of Object.entries(odd_reports())) {
        test(`a report that is odd (${name}) is shown`, async () => {
            const file = shared.folder.write(`odd_${name}`, report);
            await shared.on_page(file, {}, async (page) => {
                for (const view of views) {
                    await go(page, `#/${view}`);
                    assert.doesNotMatch(await page.locator("main").textContent(), /NaN|undefined|Infinity|\[object/, view);
                }
            });
        });
    }

    test("places without numbers are in the table as the report writes them", async () => {
        const file = shared.folder.write("odd_table", odd_reports().odd);
        await shared.on_page(file, { address: "#/block/odd/odd__global" }, async (page) => {
            await page.evaluate(() => document.querySelectorAll("dialog").forEach((d) => d.remove()));
            const tables = page.getByRole("button", { name: /as table/ });
            await tables.first().click();
            assert.match(await page.locator("dialog table").textContent(), /-1/);
        });
    });

    test("a page of joined samples says so on top of each view, and keeps peaks", { skip: program ? false : "ZAN_PROFILE names no program" }, async () => {
        const report = long_report(4000);
        report.kernels.nodes[0].children.find((c) => c.name.endsWith("__global")).module_inst_details.stall_samples[1234] = "97";
        const file = shared.folder.write("joined", report, { options: ["--samples", "20000"] });
        await shared.on_page(file, {}, async (page) => {
            for (const view of views) {
                await go(page, `#/${view}`);
                assert.match(await page.locator(".banner:visible").textContent(), /^Each point stands for \d+ samples; every peak is kept\.$/, view);
            }
            await go(page, "#/block/long/long__global");
            await settle(page, 400);
            assert.match(await page.locator(".stats").first().textContent(), /max97%/);
        });
    });

    test("a page that was cut says so", async () => {
        const file = shared.folder.write("cut", long_report(3000));
        const text = readFileSync(file, "utf8");
        truncateSync(file, text.indexOf('id="d3"'));
        const opened = await open_page(shared.browser, file, { address: "#/block/long/long__global" });
        await settle(opened.page, 300);
        assert.match(await opened.page.getByRole("alert").first().textContent(), /part of this page is missing/);
        await opened.close();
        const no_head = shared.folder.write("cut_head", long_report(10));
        writeFileSync(no_head, text.slice(0, text.indexOf('"kernels"')));
        const broken = await open_page(shared.browser, no_head);
        assert.match(await broken.page.locator("body").textContent(), /needs a browser|can't be read|no data/);
        await broken.close();
    });

    test("a garbled chunk is reported, and the rest is shown", async () => {
        const file = shared.folder.write("garbled", long_report(3000));
        const text = readFileSync(file, "utf8").replace(/(id="d\d+">)[^<]{40}/g, "$1AAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAA");
        writeFileSync(file, text);
        const opened = await open_page(shared.browser, file, { address: "#/block/long/long__global" });
        await settle(opened.page, 300);
        assert.match(await opened.page.getByRole("alert").first().textContent(), /could be read/);
        const frames = await opened.page.evaluate(() => new Promise((done) => {
            const ask = window.requestAnimationFrame;
            let count = 0;
            window.requestAnimationFrame = (draw) => { ++count; return ask.call(window, draw); };
            setTimeout(() => done(count), 500);
        }));
        assert.equal(frames, 0, "what can't be read is not drawn again and again");
        await opened.close();
    });

    test("the page prints on white, without its controls", async () => {
        const file = shared.folder.write("print", sample_report("image_pipeline"));
        await shared.on_page(file, { dark: true }, async (page) => {
            await page.emulateMedia({ media: "print" });
            assert.equal(await page.evaluate(() => getComputedStyle(document.body).backgroundColor), "rgb(255, 255, 255)");
            assert.equal(await page.locator(".search").isVisible(), false);
            // A4 without its margins; nothing is cut at the right.
            await page.setViewportSize({ width: 718, height: 1000 });
            await settle(page);
            for (const table of await page.locator("table").all()) {
                const box = await table.boundingBox();
                assert.ok(box.x + box.width <= 718, `a table ends at ${box.x + box.width}`);
            }
        });
    });

    test("a source file that isn't UTF-8 is shown, with a mark for each byte that is none", { skip: !program }, async () => {
        const source = mkdtempSync(join(shared.folder.path, "source-"));
        // In the first line a byte of Latin-1, in the third bytes that begin characters and don't end them.
        const lines = ["caf\u00e9 = 1;", "<b>plain</b>", "x \u00ff\u00c3( y\u00e2\u0082", "last"];
        writeFileSync(join(source, "k"), Buffer.from(lines.join("\n"), "latin1"));
        const file = shared.folder.write("latin", hostile_report("k"), { source });
        await shared.on_page(file, { address: "#/source/k/3" }, async (page) => {
            await page.getByText("The text is of the day").waitFor();
            const shown = await page.locator(".listing").textContent();
            for (const text of ["caf\ufffd = 1;", "<b>plain</b>", "x \ufffd\ufffd( y\ufffd", "last"]) assert.ok(shown.includes(text), text);
        });
    });

    test("a browser that can't unpack gets a sentence", async () => {
        const file = shared.folder.write("old", sample_report("loop"));
        const context = await shared.browser.newContext({ offline: true });
        const page = await context.newPage();
        await page.addInitScript(() => { delete globalThis.DecompressionStream; });
        await page.goto(pathToFileURL(file).href);
        await page.getByText("This page needs a browser from 2023 on").waitFor({ state: "visible", timeout: 20000 });
        assert.equal(await page.locator("main").count(), 0);
        await context.close();
    });
});
