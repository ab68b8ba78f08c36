// SPDX-License-Identifier: Apache-2.0
// The page in Chromium: every view of every sample, hands and keys, hostile names, odd values.

import assert from "node:assert/strict";
import { readFileSync, truncateSync, writeFileSync } from "node:fs";
import { createRequire } from "node:module";
import test, { after, before, describe } from "node:test";
import { chromium_path, open_browser, open_page, settle } from "./browser.mjs";
import { hostile_names, hostile_report, long_report, odd_reports, PageFolder, sample_names, sample_report } from "./pages.mjs";

const views = ["overview", "timeline", "block", "source", "memory", "compare"];
const axe_source = () => readFileSync(createRequire(import.meta.url).resolve("axe-core/axe.min.js"), "utf8");
const has_packages = await import("playwright-core").then(() => true, () => false);

describe("the page in a browser", { skip: !chromium_path || !has_packages ? "needs Chromium and the packages of tests/viewer" : false }, () => {
    let browser;
    let folder;
    before(async () => {
        folder = new PageFolder();
        browser = await open_browser();
    });
    after(async () => {
        await browser?.close();
        folder?.remove();
    });

    /** Runs a test on a page and asserts that it was quiet. */
    const on_page = async (file, options, work) => {
        const opened = await open_page(browser, file, options);
        try {
            await work(opened.page);
            assert.deepEqual(opened.faults, []);
        } finally {
            await opened.close();
        }
    };
    const go = async (page, address) => {
        await page.evaluate((hash) => { location.hash = hash; }, address);
        await settle(page, 60);
    };
    const hash_of = (page) => page.evaluate(() => decodeURIComponent(location.hash));

    for (const name of sample_names) {
        for (const dark of [false, true]) {
            test(`every view of ${name} is quiet and accessible, ${dark ? "dark" : "light"}`, async () => {
                const report = sample_report(name);
                const file = folder.write(name, report, { base: report });
                await on_page(file, { dark }, async (page) => {
                    await page.evaluate(axe_source());
                    for (const view of views) {
                        await go(page, `#/${view}`);
                        assert.ok(await page.locator("main h1").count() === 1, `${view} has a title`);
                        const found = await page.evaluate(() => axe.run(document, { resultTypes: ["violations"] }));
                        assert.deepEqual(found.violations.map((v) => [v.id, v.nodes.slice(0, 2).map((n) => n.html.slice(0, 160))]), [], view);
                    }
                });
            });
        }
    }

    test("windows, tables of charts and the list of the search are accessible", async () => {
        const file = folder.write("windows", sample_report("image_pipeline"));
        await on_page(file, { address: "#/block" }, async (page) => {
            await page.evaluate(axe_source());
            const faults_of = async () => (await page.evaluate(() => axe.run(document, { resultTypes: ["violations"] }))).violations.map((v) => [v.id, v.nodes[0].html.slice(0, 160)]);
            await page.keyboard.press("?");
            await settle(page);
            assert.deepEqual(await faults_of(), [], "keys");
            await page.keyboard.press("Escape");
            await page.getByRole("button", { name: /as table/ }).first().click();
            await settle(page);
            assert.match(await page.locator("dialog tbody tr").first().textContent(), /\d/);
            assert.deepEqual(await faults_of(), [], "table of a chart");
            await page.keyboard.press("Escape");
            await page.keyboard.press("/");
            await page.keyboard.type("e");
            await settle(page);
            assert.deepEqual(await faults_of(), [], "search");
        });
    });

    test("a double click on an invocation selects it", async () => {
        const file = folder.write("double", long_report(300, 3));
        await on_page(file, { address: "#/timeline" }, async (page) => {
            await settle(page, 300);
            const lane = await page.getByRole("img", { name: /^long: 3 × / }).boundingBox();
            await page.mouse.dblclick(lane.x + 20, lane.y + 12);
            await settle(page, 400);
            // The first one of three begins at 100 after the first transfer, with 100 samples of 500.
            assert.match(await hash_of(page), /s=100-50100/);
        });
    });

    test("hostile names are shown as what they are, in each view", async () => {
        for (const [i, name] of hostile_names.entries()) {
            const file = folder.write(`hostile${i}`, hostile_report(name), { report_name: `${name}.json` });
            await on_page(file, {}, async (page) => {
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
        const file = folder.write("hostile_address", hostile_report("a/b?c#d%2F"));
        await on_page(file, {}, async (page) => {
            await go(page, "#/overview");
            await page.locator("section", { hasText: "Worst blocks" }).locator("tbody a").first().click();
            await settle(page);
            assert.match(await page.locator("h1").textContent(), /a\/b\?c#d%2F \/ a\/b\?c#d%2F/);
        });
    });

    for (const [name, report] of Object.entries(odd_reports())) {
        test(`a report that is odd (${name}) is shown`, async () => {
            const file = folder.write(`odd_${name}`, report);
            await on_page(file, {}, async (page) => {
                for (const view of views) {
                    await go(page, `#/${view}`);
                    assert.doesNotMatch(await page.locator("main").textContent(), /NaN|undefined|Infinity|\[object/, view);
                }
            });
        });
    }

    test("places without numbers are in the table as the report writes them", async () => {
        const file = folder.write("odd_table", odd_reports().odd);
        await on_page(file, { address: "#/block/odd/odd__global" }, async (page) => {
            await page.evaluate(() => document.querySelectorAll("dialog").forEach((d) => d.remove()));
            const tables = page.getByRole("button", { name: /as table/ });
            await tables.first().click();
            assert.match(await page.locator("dialog table").textContent(), /-1/);
        });
    });

    test("a page that was cut says so", async () => {
        const file = folder.write("cut", long_report(3000));
        const text = readFileSync(file, "utf8");
        truncateSync(file, text.indexOf('id="d3"'));
        const opened = await open_page(browser, file, { address: "#/block/long/long__global" });
        await settle(opened.page, 300);
        assert.match(await opened.page.getByRole("alert").first().textContent(), /part of this page is missing/);
        await opened.close();
        const no_head = folder.write("cut_head", long_report(10));
        writeFileSync(no_head, text.slice(0, text.indexOf('"kernels"')));
        const broken = await open_page(browser, no_head);
        assert.match(await broken.page.locator("body").textContent(), /needs a browser|can't be read|no data/);
        await broken.close();
    });

    test("a garbled chunk is reported, and the rest is shown", async () => {
        const file = folder.write("garbled", long_report(3000));
        const text = readFileSync(file, "utf8").replace(/(id="d\d+">)[^<]{40}/g, "$1AAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAA");
        writeFileSync(file, text);
        const opened = await open_page(browser, file, { address: "#/block/long/long__global" });
        await settle(opened.page, 300);
        assert.match(await opened.page.getByRole("alert").first().textContent(), /could be read/);
        await opened.close();
    });

    test("keys do what the list says", async () => {
        const file = folder.write("keys", sample_report("image_pipeline"), { base: sample_report("image_pipeline") });
        await on_page(file, {}, async (page) => {
            const press = async (key) => { await page.keyboard.press(key); await settle(page, 260); };
            for (const [i, view] of views.entries()) {
                await press(String(i + 1));
                assert.match(await hash_of(page), new RegExp(`^#/${view}`));
            }
            await press("2");
            await press("w");
            const zoomed = /r=([\d.]+)-([\d.]+)/.exec(await hash_of(page));
            assert.ok(zoomed, "W zooms");
            await press("a");
            const panned = /r=([\d.]+)-([\d.]+)/.exec(await hash_of(page));
            assert.ok(Number(panned[1]) < Number(zoomed[1]), "A pans to the left");
            await press("d");
            assert.ok(Math.abs(Number(/r=([\d.]+)/.exec(await hash_of(page))[1]) - Number(zoomed[1])) < 1, "D pans back");
            await press("s");
            await press("f");
            assert.doesNotMatch(await hash_of(page), /r=/, "F shows all");
            await press("?");
            assert.equal(await page.locator("dialog[open]").count(), 1);
            await press("Escape");
            assert.equal(await page.locator("dialog[open]").count(), 0);
            await press("j");
            const first = await hash_of(page);
            await press("j");
            assert.notEqual(await hash_of(page), first, "J goes to the next block");
            await press("k");
            assert.equal(await hash_of(page), first, "K goes back");
            await press("]");
            assert.match(await hash_of(page), /i=1/);
            await press("]");
            await press("[");
            assert.match(await hash_of(page), /i=1/);
            await press("t");
            assert.match(await page.locator("header").textContent(), /Light/);
            await press("t");
            assert.ok(await page.evaluate(() => document.documentElement.classList.contains("dark")));
            await press("/");
            await page.keyboard.type("w");
            await settle(page);
            assert.equal(await page.evaluate(() => document.activeElement?.getAttribute("role")), "combobox", "keys go to the field");
        });
    });

    test("search finds a block and goes there", async () => {
        const report = sample_report("image_pipeline");
        const block = report.kernels.nodes.flatMap((k) => k.children || []).find((c) => c.type === "moduleinst").name;
        const file = folder.write("search", report);
        await on_page(file, {}, async (page) => {
            await page.keyboard.press("/");
            await page.keyboard.type(block);
            await page.keyboard.press("Enter");
            await settle(page, 300);
            assert.match(await hash_of(page), new RegExp(`^#/block/.*/${block}`));
        });
    });

    test("drag selects, sentence and address follow, R zooms, Escape clears; wheel zooms and pans", async () => {
        const file = folder.write("drag", long_report(5000, 3));
        await on_page(file, { address: "#/block/long/long__global" }, async (page) => {
            const box = await page.locator(".plot").boundingBox();
            await page.mouse.move(box.x + 200, box.y + 80);
            await page.mouse.down();
            await page.mouse.move(box.x + 400, box.y + 80, { steps: 4 });
            await page.mouse.up();
            await settle(page, 400);
            const [, from, to] = /s=([\d.]+)-([\d.]+)/.exec(await hash_of(page));
            assert.ok(Number(to) > Number(from));
            assert.match(await page.locator(".sentence").textContent(), /Selected: /);
            assert.match(await page.locator(".stats").first().textContent(), /here[\d.<]+%/, "the value at the cursor");
            await page.keyboard.press("r");
            await settle(page, 300);
            assert.match(await hash_of(page), new RegExp(`r=${from}-${to}`.replaceAll(".", "\\.")));
            await page.keyboard.press("Escape");
            await settle(page, 300);
            assert.doesNotMatch(await hash_of(page), /s=/);
            const before_wheel = await hash_of(page);
            await page.mouse.move(box.x + 300, box.y + 80);
            await page.keyboard.down("Control");
            await page.mouse.wheel(0, 400);
            await page.keyboard.up("Control");
            await settle(page, 300);
            const zoomed_out = await hash_of(page);
            assert.notEqual(zoomed_out, before_wheel, "Ctrl+wheel zooms");
            await page.keyboard.down("Shift");
            await page.mouse.wheel(0, -300);
            await page.keyboard.up("Shift");
            await settle(page, 300);
            assert.notEqual(await hash_of(page), zoomed_out, "Shift+wheel pans");
        });
    });

    test("a copied address shows the same", async () => {
        const file = folder.write("address", long_report(5000, 3));
        const address = "#/block/long/long__global?r=200000-700000&s=300000-400000";
        await on_page(file, { address }, async (page) => {
            await settle(page, 300);
            assert.equal(await hash_of(page), address);
            assert.match(await page.locator(".sentence").textContent(), /Selected: 100\u202fµs, from 300\u202fµs/);
        });
    });

    test("the arrow keys move the cursor by a sample on a focused chart", async () => {
        const file = folder.write("arrows", long_report(100));
        await on_page(file, { address: "#/block/long/long__global" }, async (page) => {
            await page.locator(".plot").focus();
            for (const key of ["ArrowRight", "ArrowRight", "Shift+ArrowRight", "ArrowLeft"]) await page.keyboard.press(key);
            await settle(page, 200);
            assert.match(await page.locator(".stats").first().textContent(), /here[\d.]+%/);
        });
    });

    test("tables sort, filter, copy and save", async () => {
        const file = folder.write("tables", sample_report("load_store_units"));
        await on_page(file, {}, async (page) => {
            const card = page.locator("section.card", { hasText: "Worst blocks" });
            const names = () => card.locator("tbody tr td:first-child").allTextContents();
            await card.getByRole("button", { name: "Block", exact: true }).click();
            const up = await names();
            assert.deepEqual(up, [...up].sort((a, b) => a.localeCompare(b, "en", { numeric: true })));
            await card.getByRole("button", { name: /^Block/ }).click();
            assert.deepEqual(await names(), [...await names()].sort((a, b) => b.localeCompare(a, "en", { numeric: true })));
            const saved = page.waitForEvent("download");
            await card.getByRole("button", { name: /Save/ }).click();
            const text = readFileSync(await (await saved).path(), "utf8");
            assert.match(text, /^Block,Kernel,Kind,Source,/);
            await card.getByRole("button", { name: /Copy/ }).click();
            assert.match(await page.locator("#status").textContent(), /Copied/);
        });
    });

    test("a long column is drawn from its stored pyramid, and zoomed down to single samples", async () => {
        const file = folder.write("long", long_report(80000));
        await on_page(file, { address: "#/block/long/long__global" }, async (page) => {
            await settle(page, 500);
            const inked = () => page.evaluate(() => {
                const canvas = document.querySelector(".chart canvas");
                const copy = new OffscreenCanvas(canvas.width, canvas.height).getContext("2d", { willReadFrequently: true });
                copy.drawImage(canvas, 0, 0);
                const { data } = copy.getImageData(0, 0, canvas.width, canvas.height);
                let count = 0;
                for (let i = 0; i < data.length; i += 4) if (data[i] === 0xd5 && data[i + 1] === 0x5e && data[i + 2] === 0) ++count;
                return count;
            });
            assert.ok(await inked() > 1000, "stalls are drawn");
            await go(page, "#/block/long/long__global?r=20000000-20010000");
            await settle(page, 500);
            assert.ok(await inked() > 1000, "single samples are drawn");
            assert.match(await page.locator(".stats").first().textContent(), /min\d+%mean\d+%max\d+%/);
        });
    });

    test("the page prints on white, without its controls", async () => {
        const file = folder.write("print", sample_report("image_pipeline"));
        await on_page(file, { dark: true }, async (page) => {
            await page.emulateMedia({ media: "print" });
            assert.equal(await page.evaluate(() => getComputedStyle(document.body).backgroundColor), "rgb(255, 255, 255)");
            assert.equal(await page.locator(".search").isVisible(), false);
        });
    });
});
