// SPDX-License-Identifier: Apache-2.0
// Tables that sort by their heads, filter, copy as tab-separated text and save as CSV. What is copied are plain numbers
// with the unit in the head, not the rounded texts that are shown.

import { announce, append, box, button, element, fill, safe_name } from "./dom.js";
import { is_known } from "./format.js";

/** @typedef {import("./dom.js").Child} Child */
/**
 * @template R
 * @typedef {object} Column
 * @property {string} name
 * @property {string} [unit] of the plain numbers
 * @property {string} [hint]
 * @property {(row: R) => number | string | null | undefined} value plain; also what sorting goes by
 * @property {(row: R) => Child | Child[]} [cell] what is shown, if not the value
 * @property {string} [look] class of its cells; "number" is right-aligned
 */
/**
 * @template R
 * @typedef {object} TableOptions
 * @property {string} title
 * @property {Column<R>[]} columns
 * @property {R[]} rows
 * @property {number} [sort] the column that it is sorted by at first, greatest first; none: as the rows come
 * @property {number} [limit] rows that are shown before "show all"
 * @property {Child[]} [tools] more controls in the head
 */

/**
 * A column of numbers: plain ones to copy and sort by, and texts to show.
 * @template R
 * @param {string} name @param {string} unit @param {(row: R) => unknown} number what isn't one is missing
 * @param {(value: number | null) => string} text @param {Partial<Column<R>>} [more] @returns {Column<R>}
 */
export function number_column(name, unit, number, text, more = {}) {
    const value = (/** @type {R} */ row) => { const found = number(row); return is_known(found) ? found : null; };
    return { name, unit, look: "number", value, cell: (row) => text(value(row)), ...more };
}

/** A column of names that don't wrap. @template R @param {string} name @param {(row: R) => string} value @param {Column<R>["cell"]} [cell] @returns {Column<R>} */
export function name_column(name, value, cell) {
    return { name, look: "name", value, cell };
}

const quote = "\x22";

/** @param {unknown} value */
function plain_text(value) {
    if (value === null || value === undefined || (typeof value === "number" && Number.isNaN(value))) return "";
    return String(value);
}

/** @param {Column<any>} column */
export function head_text(column) {
    return column.unit ? `${column.name} (${column.unit})` : column.name;
}

/** Tab-separated text. Tabs and ends of lines in cells are blanks. @param {Column<any>[]} columns @param {any[]} rows */
export function tab_separated(columns, rows) {
    const line = (/** @type {unknown[]} */ cells) => cells.map((c) => plain_text(c).replace(/[\t\r\n]+/g, " ")).join("\t");
    return [line(columns.map(head_text)), ...rows.map((row) => line(columns.map((c) => c.value(row))))].join("\n") + "\n";
}

/** CSV. A text that a spreadsheet would take for a formula gets a ' in front. @param {Column<any>[]} columns @param {any[]} rows */
export function comma_separated(columns, rows) {
    const cell = (/** @type {unknown} */ value) => {
        let text = plain_text(value);
        if (typeof value === "string" && /^[=+\-@\t]/.test(text)) text = "'" + text;
        return /[\x22,\r\n]/.test(text) ? quote + text.replaceAll(quote, quote + quote) + quote : text;
    };
    const line = (/** @type {unknown[]} */ cells) => cells.map(cell).join(",") + "\r\n";
    return line(columns.map(head_text)) + rows.map((row) => line(columns.map((c) => c.value(row)))).join("");
}

/** Numbers by size, texts by letters; what is missing comes last either way. @param {Column<any>} column @param {boolean} up */
export function row_order(column, up) {
    return (/** @type {any} */ a, /** @type {any} */ b) => {
        const [x, y] = [column.value(a), column.value(b)];
        const missing = Number(plain_text(x) === "") - Number(plain_text(y) === "");
        if (missing !== 0) return missing;
        const order = typeof x === "number" && typeof y === "number" ? x - y
            : String(x).localeCompare(String(y), "en", { numeric: true });
        return up ? order : -order;
    };
}

/** @param {string} text */
async function copy_text(text) {
    try {
        await navigator.clipboard.writeText(text);
    } catch {
        // Pages from the file system may have no clipboard; what is selected can be copied all the same.
        const area = element("textarea", { class: "unseen", "aria-hidden": "true" });
        area.value = text;
        document.body.appendChild(area);
        area.select();
        document.execCommand("copy");
        area.remove();
    }
    announce("Copied");
}

/** @param {string} name @param {string} text */
function save_text(name, text) {
    const address = URL.createObjectURL(new Blob([text], { type: "text/csv" }));
    element("a", { href: address, download: name.replace(/[^\w-]+/g, "_") + ".csv" }).click();
    setTimeout(() => URL.revokeObjectURL(address), 10000);
}

/** The controls that copy and save. @param {string} title @param {Column<any>[]} columns @param {() => any[] | Promise<any[]>} rows */
export function copy_tools(title, columns, rows) {
    return [
        button({ "aria-label": `Copy ${title}`, title: "Copy as tab-separated text",
            onclick: async () => copy_text(tab_separated(columns, await rows())) }, "Copy"),
        button({ "aria-label": `Save ${title} as CSV`,
            onclick: async () => save_text(title, comma_separated(columns, await rows())) }, "Save"),
    ];
}

/**
 * A card with a table.
 * @template R
 * @param {TableOptions<R>} options
 */
export function make_table({ title, columns, rows, sort, limit = Infinity, tools = [] }) {
    let by = sort ?? -1;
    let up = false;
    let shows_all = false;
    let wanted = "";
    const head = element("tr", null);
    const body = element("tbody", null);
    const more = box("more");
    const chosen = () => {
        const found = rows.filter((row) => columns.some((column) => plain_text(column.value(row)).toLowerCase().includes(wanted)));
        return by >= 0 ? found.sort(row_order(columns[by], up)) : found;
    };
    const show = () => {
        fill(head, columns.map((column, i) => head_cell(column, i === by ? (up ? "ascending" : "descending") : undefined, () => {
            up = i === by ? !up : column.look !== "number";
            by = i;
            show();
        })));
        const all = chosen();
        const shown = shows_all ? all : all.slice(0, limit);
        fill(body, shown.map((row) => table_row(columns, row)));
        fill(more, all.length > shown.length && button({ onclick: () => { shows_all = true; show(); } }, `Show all ${all.length}`));
    };
    const filter = rows.length > 8 && element("input", { type: "search", placeholder: "Filter", "aria-label": `Filter ${title}`,
        oninput: (/** @type {Event} */ event) => { wanted = /** @type {HTMLInputElement} */ (event.target).value.toLowerCase(); show(); } });
    show();
    return element("section", { class: "card" },
        box("card-head", element("h2", null, safe_name(title)),
            box("tools", ...tools, filter, copy_tools(title, columns, chosen))),
        element("div", { class: "scroll", tabindex: "0", role: "region", "aria-label": safe_name(title) },
            element("table", null, element("thead", null, head), body), more));
}

/** @param {Column<any>} column @param {string | undefined} order @param {() => void} sort */
function head_cell(column, order, sort) {
    const arrow = order && element("span", { "aria-hidden": "true" }, order === "ascending" ? " ▴" : " ▾");
    const name = column.name === "" ? element("span", { class: "unseen" }, "bar") : column.name;
    return element("th", { scope: "col", class: column.look === "number" ? "number" : null, "aria-sort": order },
        button({ onclick: sort, title: column.hint }, name, arrow));
}

/** @param {Column<any>[]} columns @param {any} row */
export function table_row(columns, row) {
    return element("tr", null, columns.map((column) => {
        const cell = element("td", { class: column.look });
        const shown = column.cell ? column.cell(row) : column.value(row);
        append(cell, Array.isArray(shown) ? shown : [typeof shown === "string" ? safe_name(shown) : shown]);
        return cell;
    }));
}
