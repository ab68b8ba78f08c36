// SPDX-License-Identifier: Apache-2.0
// Chromium for the tests: offline, from the file system, with every message, request and policy report recorded.

import { existsSync } from "node:fs";
import { pathToFileURL } from "node:url";

const places = ["/usr/bin/chromium", "/usr/bin/chromium-browser", "/usr/bin/google-chrome"];
export const chromium_path = process.env.CHROMIUM ?? places.find((path) => existsSync(path));

export async function open_browser() {
    const { chromium } = await import("playwright-core");
    return chromium.launch({ executablePath: chromium_path, args: ["--no-sandbox", "--disable-gpu", "--disable-dev-shm-usage", "--enable-precise-memory-info"] });
}

/** A page of the file, and what it did that it shouldn't: requests, messages, errors, policy reports. */
export async function open_page(browser, file, { address = "", width = 1440, height = 900, dark = false } = {}) {
    const context = await browser.newContext({ viewport: { width, height }, colorScheme: dark ? "dark" : "light", offline: true });
    const page = await context.newPage();
    const faults = [];
    page.on("console", (message) => faults.push(`console: ${message.text()}`));
    page.on("pageerror", (error) => faults.push(`error: ${error.stack ?? error}`));
    page.on("request", (request) => {
        if (!request.url().startsWith(pathToFileURL(file).href) && !/^(?:data|blob):/.test(request.url())) faults.push(`request: ${request.url()}`);
    });
    await page.addInitScript(() => addEventListener("securitypolicyviolation", (event) => console.error(`policy: ${event.violatedDirective}`)));
    await page.goto(pathToFileURL(file).href + address, { waitUntil: "load" });
    await settle(page);
    return { page, faults, close: () => context.close() };
}

/** Waits until two frames have been drawn and nothing is loaded. */
export async function settle(page, milliseconds = 150) {
    await page.waitForTimeout(milliseconds);
    await page.evaluate(() => new Promise((done) => requestAnimationFrame(() => requestAnimationFrame(() => done(undefined)))));
}
