// SPDX-License-Identifier: Apache-2.0
// Measures a page in headless Chromium: first paint, parsed, the first charts of a block, and frames of zooming and panning.
//
//   node measure_page.mjs PAGE [RUNS]      prints medians over the runs as JSON; times are milliseconds

import { open_browser, open_page } from "./browser.mjs";

const steps = 60;

function percentile(values, part) {
    const sorted = [...values].sort((a, b) => a - b);
    return sorted[Math.min(sorted.length - 1, Math.max(0, Math.ceil(part * sorted.length) - 1))];
}

/** From the click on the first block to its drawn charts. */
async function chart_time(page) {
    return page.evaluate(() => new Promise((done) => {
        const link = [...document.querySelectorAll("section.card")].find((s) => s.textContent.includes("Worst blocks"))?.querySelector("tbody a");
        if (!link) return done(null);
        const start = performance.now();
        link.click();
        const look = () => {
            const canvas = document.querySelector(".chart canvas");
            const stats = document.querySelector(".stats")?.textContent ?? "";
            if (canvas && /max[\d.<]/.test(stats)) return done(performance.now() - start);
            requestAnimationFrame(look);
        };
        look();
    }));
}

/** Times between frames while keys zoom and pan. */
async function frame_times(page) {
    return page.evaluate((count) => new Promise((done) => {
        const keys = ["w", "w", "w", "d", "d", "a", "s", "s", "a", "d"];
        const times = [];
        let last = performance.now();
        let k = 0;
        const step = () => {
            const now = performance.now();
            if (k > 0) times.push(now - last);
            last = now;
            if (k === count) return done(times);
            document.dispatchEvent(new KeyboardEvent("keydown", { key: keys[k++ % keys.length] }));
            requestAnimationFrame(step);
        };
        requestAnimationFrame(step);
    }), steps);
}

async function measure(browser, file) {
    const { page, close } = await open_page(browser, file);
    // Times of the page's own thread, which other programs don't disturb.
    const session = await page.context().newCDPSession(page);
    await session.send("Performance.enable", { timeDomain: "threadTicks" });
    const cpu = async () => Object.fromEntries((await session.send("Performance.getMetrics")).metrics.map(({ name, value }) => [name, value * 1000]));
    const paint = await page.evaluate(() => performance.getEntriesByName("first-contentful-paint")[0]?.startTime ?? NaN);
    const parsed = await page.evaluate(() => performance.getEntriesByType("navigation")[0].domContentLoadedEventEnd);
    const before_chart = await cpu();
    const chart = await chart_time(page);
    await page.waitForTimeout(300);
    const before_frames = await cpu();
    const frames = await frame_times(page);
    const after_frames = await cpu();
    const heap = await page.evaluate(() => performance.memory?.usedJSHeapSize / 1e6);
    await close();
    return { "first paint": paint, parsed, chart, "frame median": percentile(frames, 0.5), "frame 95 %": percentile(frames, 0.95), "heap MB": heap,
        "chart, CPU": before_frames.TaskDuration - before_chart.TaskDuration, "frame, CPU": (after_frames.TaskDuration - before_frames.TaskDuration) / steps,
        "  of it scripts": (after_frames.ScriptDuration - before_frames.ScriptDuration) / steps };
}

const [file, runs = "3"] = process.argv.slice(2);
const browser = await open_browser();
try {
    const results = [];
    for (let i = 0; i < Number(runs); ++i) results.push(await measure(browser, file));
    console.log(JSON.stringify(Object.fromEntries(Object.keys(results[0]).map((key) => [key, percentile(results.map((r) => r[key]), 0.5)]))));
} finally {
    await browser.close();
}
