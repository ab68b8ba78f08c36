// SPDX-License-Identifier: Apache-2.0
// The numbers of a chart as a table, a page at a time.

import { box, button, element, fill, safe_name } from "./dom.js";
import { copy_tools, head_text, table_row } from "./table.js";

const page_rows = 100;
/** Rows that are copied or saved: a text of more would take gigabytes. */
const most_copied = 1e6;

/** @typedef {import("./columns.js").Track} Track */
/** @typedef {import("./page.js").App} App */

/** A window over the page; Escape closes it. @param {string} title @param {(import("./dom.js").Child | import("./dom.js").Child[])[]} content */
export function show_window(title, ...content) {
    const close = button({ onclick: () => dialog.close() }, "Close");
    const dialog = element("dialog", { "aria-label": title }, box("dialog-head", element("h2", null, title), close), box("dialog-body", ...content));
    const before = /** @type {HTMLElement | null} */ (document.activeElement);
    dialog.addEventListener("close", () => { dialog.remove(); before?.focus(); });
    document.body.appendChild(dialog);
    dialog.showModal();
    return dialog;
}

/**
 * The samples of the stretch that is shown: when each ended, and its values as the report has them.
 * @param {App} app @param {import("./model.js").ModelBlock} block @param {string} title @param {Track[]} tracks @param {string[]} metrics
 */
export async function show_samples(app, block, title, tracks, metrics) {
    const { model, stretch } = app;
    const [from, to] = await block.kernel.clock.samples(...(stretch.selection ?? [stretch.from, stretch.to]));
    const columns = [
        { name: "Sample", look: "number", value: (/** @type {(number | string)[]} */ row) => row[0] },
        { name: "End", unit: model.unit, look: "number", value: (/** @type {(number | string)[]} */ row) => row[1] },
        ...metrics.map((metric, k) => ({ name: metric, look: "number", value: (/** @type {(number | string)[]} */ row) => row[k + 2] })),
    ];
    const body = element("tbody", null);
    const where = element("span", { class: "second", role: "status" });
    let page = 0;
    /** @param {number} first @param {number} last @returns {Promise<(number | string)[][]>} */
    const rows = async (first, last) => {
        const ends = await model.store.values(block.kernel.kernel.time, first, last);
        const values = await Promise.all(tracks.map((track) => model.store.values(track.column.id, first, last)));
        const marked = tracks.map((track) => model.store.marked_places(track.column.id, first, last));
        return Array.from(ends, (end, i) => [first + i, end, ...values.map((column, k) => marked[k].get(first + i) ?? column[i])]);
    };
    const show = async () => {
        const first = from + page * page_rows;
        const last = Math.min(to, first + page_rows);
        fill(body, (await rows(first, last)).map((row) => table_row(columns, row)));
        fill(where, to > from ? `samples ${first} to ${last - 1} of ${from} to ${to - 1}` : "no samples in this stretch");
    };
    const turn = (/** @type {number} */ pages) => {
        page = Math.min(Math.max(0, Math.ceil((to - from) / page_rows) - 1), Math.max(0, page + pages));
        show();
    };
    await show();
    const name = `${title} of ${safe_name(block.block.name)}`;
    show_window(name, box("stepper",
        button({ "aria-label": "Page before", onclick: () => turn(-1) }, "◂"), where,
        button({ "aria-label": "Page after", onclick: () => turn(1) }, "▸"), copy_tools(name, columns, () => rows(from, Math.min(to, from + most_copied)))), plain_table(columns, body));
}

/** A table of numbers that doesn't sort. @param {import("./table.js").Column<any>[]} columns @param {HTMLElement} body */
export function plain_table(columns, body) {
    return element("table", null, element("thead", null, element("tr", null, columns.map((c) => element("th", { scope: "col", class: "number" }, head_text(c))))), body);
}
