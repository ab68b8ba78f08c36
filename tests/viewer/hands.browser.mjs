// SPDX-License-Identifier: Apache-2.0
// Hands on the page in Chromium: keys, mouse, addresses, search, tables.

import assert from "node:assert/strict";
import { readFileSync } from "node:fs";
import test from "node:test";
import { settle } from "./browser.mjs";
import { browser_suite, go, hash_of, views } from "./browser_suite.mjs";
import { long_report, sample_report } from "./pages.mjs";

// All pages of a browser have one clipboard, so its users wait for each other.
let clipboard = Promise.resolve();

// What the button Copy of this part of the page leaves in the clipboard, as rows of cells.
function copiedRows(page, part) {
    const rows = clipboard.then(async () => {
        await page.context().grantPermissions(["clipboard-read", "clipboard-write"]);
        await part.getByRole("button", { name: /Copy/ }).click();
        await page.waitForFunction(() => document.getElementById("status").textContent === "Copied");
        const text = await page.evaluate(() => navigator.clipboard.readText());
        return text.trim().split("\n").map((line) => line.split("\t"));
    });
    clipboard = rows.catch(() => {});
    return rows;
}

browser_suite("hands on the page", (shared) => {
    test("a double click on an invocation selects it", async () => {
        const file = shared.folder.write("double", long_report(300, 3));
        await shared.on_page(file, { address: "#/timeline" }, async (page) => {
            await settle(page, 300);
            const lane = await page.getByRole("img", { name: /^long: 3 × / }).boundingBox();
            await page.mouse.dblclick(lane.x + 20, lane.y + 12);
            await settle(page, 400);
            // The first one of three begins at 100 after the first transfer, with 100 samples of 500.
            assert.match(await hash_of(page), /s=100-50100/);
        });
    });

    test("keys do what the list says", async () => {
        const file = shared.folder.write("keys", sample_report("image_pipeline"), { base: sample_report("image_pipeline") });
        await shared.on_page(file, {}, async (page) => {
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
        const file = shared.folder.write("search", report);
        await shared.on_page(file, {}, async (page) => {
            await page.keyboard.press("/");
            await page.keyboard.type(block);
            await page.keyboard.press("Enter");
            await settle(page, 300);
            assert.match(await hash_of(page), new RegExp(`^#/block/.*/${block}`));
        });
    });

    test("drag selects, sentence and address follow, R zooms, Escape clears; wheel zooms and pans", async () => {
        const file = shared.folder.write("drag", long_report(5000, 3));
        await shared.on_page(file, { address: "#/block/long/long__global" }, async (page) => {
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
        const file = shared.folder.write("address", long_report(5000, 3));
        const address = "#/block/long/long__global?r=200000-700000&s=300000-400000";
        await shared.on_page(file, { address }, async (page) => {
            await settle(page, 300);
            assert.equal(await hash_of(page), address);
            assert.match(await page.locator(".sentence").textContent(), /Selected: 100\u202fµs, from 300\u202fµs/);
        });
    });

    test("the arrow keys move the cursor by a sample on a focused chart", async () => {
        const file = shared.folder.write("arrows", long_report(100));
        await shared.on_page(file, { address: "#/block/long/long__global" }, async (page) => {
            await page.locator(".plot").focus();
            for (const key of ["ArrowRight", "ArrowRight", "Shift+ArrowRight", "ArrowLeft"]) await page.keyboard.press(key);
            await settle(page, 200);
            assert.match(await page.locator(".stats").first().textContent(), /here[\d.]+%/);
        });
    });

    test("tables sort, filter, copy and save", async () => {
        const report = sample_report("image_pipeline");
        for (const { children } of report.kernels.nodes) children.push(...children.filter((c) => c.type === "moduleinst").map((c) => ({ ...c, name: `${c.name}_again` })));
        const file = shared.folder.write("tables", report);
        await shared.on_page(file, {}, async (page) => {
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
            const [head, first] = await copiedRows(page, card);
            assert.equal(head[0], "Block");
            assert.equal(first[0], (await names())[0]);
            // Plain numbers, with the unit in the head.
            assert.match(first[head.indexOf("Stall (%)")], /^\d*(?:\.\d+)?$/);
            const all = (await names()).length;
            await card.getByRole("searchbox").fill("write");
            const found = await names();
            assert.ok(found.length > 0 && found.length < all, `${found.length} of ${all}`);
            for (const row of await card.locator("tbody tr").allTextContents()) assert.match(row, /write/i);
        });
    });

    test("the table of a chart copies and saves all samples, not only the page that is shown", async () => {
        const file = shared.folder.write("rows", long_report(350));
        await shared.on_page(file, { address: "#/block/long/long__global" }, async (page) => {
            await page.getByRole("button", { name: /as table/ }).first().click();
            await settle(page);
            assert.equal(await page.locator("dialog tbody tr").count(), 100);
            const lines = await copiedRows(page, page.locator("dialog"));
            assert.equal(lines.length, 351, "a head and 350 samples");
            // Each sample takes 500 from the start at 100 on; times count from the transfer at 0.
            assert.deepEqual([lines[350][0], lines[350][1]], ["349", String(100 + 350 * 500)]);
            const saved = page.waitForEvent("download");
            await page.locator("dialog").getByRole("button", { name: /Save/ }).click();
            assert.equal(readFileSync(await (await saved).path(), "utf8").trim().split("\r\n").length, 351);
        });
    });

    test("a long column is drawn from its stored pyramid, and zoomed down to single samples", async () => {
        const file = shared.folder.write("long", long_report(80000));
        await shared.on_page(file, { address: "#/block/long/long__global" }, async (page) => {
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

    test("the sentence of a memory follows the selection", async () => {
        const file = shared.folder.write("memory", long_report(300, 3));
        await shared.on_page(file, { address: "#/memory?s=20000-40000" }, async (page) => {
            const sentence = () => page.locator(".sentence").first().textContent();
            assert.match(await sentence(), /^In this stretch (at least )?\d.* of its peak, .* at the busiest\.$/);
            await page.keyboard.press("Escape");
            await settle(page, 300);
            assert.match(await sentence(), / of its peak over the run, /);
        });
    });

    test("a kernel's invocations are stepped through, and left by moving away", async () => {
        const file = shared.folder.write("steps", long_report(300, 3));
        await shared.on_page(file, { address: "#/block/long/long__global" }, async (page) => {
            const press = async (key) => { await page.keyboard.press(key); await settle(page, 300); };
            const sentence = () => page.locator(".sentence").textContent();
            await press("]");
            await press("]");
            // The second one of three runs from 75100 to 125100.
            assert.match(await sentence(), /Invocation 2: 50\.0\u202fµs, from 75\.1\u202fµs$/);
            assert.match(await hash_of(page), /i=2/);
            for (let i = 0; i < 6; ++i) await press("d");
            assert.match(await sentence(), /Shown: /);
            assert.doesNotMatch(await hash_of(page), /i=/);
            // From here, its middle at about 165000, the one before is the second one again.
            await press("[");
            assert.match(await hash_of(page), /i=2/);
            await press("f");
            assert.doesNotMatch(await sentence(), /Shown|Invocation/);
        });
    });

    test("a touch pad pans by sideways movement and zooms by pinching; Shift+drag pans", async () => {
        const file = shared.folder.write("pad", long_report(300, 3));
        await shared.on_page(file, { address: "#/timeline?r=50000-150000" }, async (page) => {
            const stretch = async () => /r=([\d.]+)-([\d.]+)/.exec(await hash_of(page)).slice(1).map(Number);
            const box = await page.locator(".plot").boundingBox();
            await page.mouse.move(box.x + 600, box.y + 60);
            await page.mouse.wheel(100, 0);
            await settle(page, 300);
            const [from, to] = await stretch();
            assert.ok(from > 50000 && Math.abs(to - from - 100000) < 1, `${from} to ${to}`);
            // A pinch arrives as a wheel with Ctrl.
            await page.keyboard.down("Control");
            await page.mouse.wheel(0, -100);
            await page.keyboard.up("Control");
            await settle(page, 300);
            const [zoomed_from, zoomed_to] = await stretch();
            assert.ok(zoomed_to - zoomed_from < 90000 && zoomed_from > from && zoomed_to < to);
            await page.keyboard.down("Shift");
            await page.mouse.down();
            await page.mouse.move(box.x + 500, box.y + 60, { steps: 3 });
            await page.mouse.up();
            await page.keyboard.up("Shift");
            await settle(page, 300);
            const [dragged_from] = await stretch();
            assert.ok(dragged_from > zoomed_from, "what was under the pointer follows it to the left");
            assert.doesNotMatch(await hash_of(page), /s=/);
            // A wheel alone scrolls the page.
            await page.mouse.wheel(0, 100);
            await settle(page, 300);
            assert.equal((await stretch())[0], dragged_from);
        });
    });
});
