// SPDX-License-Identifier: Apache-2.0
// The sources: lines with the time that was lost there, and the blocks under them.

import { source_address } from "./address.js";
import { block_link, place_link, shares_bar } from "./bars.js";
import { box, element, fill, safe_name, second, view_link } from "./dom.js";
import { is_known, percent_text, time_text } from "./format.js";
import { place_text } from "./model.js";

/** @typedef {import("./page.js").App} App */
/** @typedef {import("./model.js").ModelBlock} ModelBlock */
/**
 * @typedef {object} SourceLine
 * @property {Set<ModelBlock>} own blocks of this line
 * @property {Set<ModelBlock>} inlined blocks of code that was inlined here
 */
/** @typedef {Map<number, SourceLine>} SourceFile */

/** Files and lines that blocks name. @param {App["model"]} model */
export function source_files(model) {
    /** @type {Map<string, SourceFile>} */
    const files = new Map();
    const line_of = (/** @type {string} */ name, /** @type {number} */ line) => {
        const file = files.get(name) ?? new Map();
        files.set(name, file);
        const entry = file.get(line) ?? { own: new Set(), inlined: new Set() };
        file.set(line, entry);
        return entry;
    };
    for (const block of model.ranking) {
        for (const chain of block.block.src) {
            chain.forEach(([file, line], depth) => {
                if (file === "") return;
                const entry = line_of(file, line);
                (depth === 0 ? entry.own : entry.inlined).add(block);
            });
        }
    }
    for (const kernel of model.kernels) if (kernel.kernel.file !== "") line_of(kernel.kernel.file, kernel.kernel.line);
    return files;
}

/** The time lost by blocks: of each kernel the one that lost most, at most the time that the kernel ran. @param {App["model"]} model @param {Iterable<ModelBlock>} blocks */
export function lost_by(model, blocks) {
    /** @type {Map<import("./model.js").ModelKernel, number>} */
    const worst = new Map();
    for (const { kernel, facts } of blocks) if (is_known(facts.lost)) worst.set(kernel, Math.max(worst.get(kernel) ?? 0, facts.lost));
    const cap = (/** @type {import("./model.js").ModelKernel} */ kernel) => kernel.kernel.total * (model.ticks(1) ? 1 / Number(model.ticks(1)) : 1);
    return [...worst].reduce((sum, [kernel, lost]) => sum + Math.min(lost, cap(kernel)), 0);
}

/** @param {SourceFile} file */
function blocks_of(file) {
    return new Set([...file.values()].flatMap((line) => [...line.own, ...line.inlined]));
}

/** @param {App} app @param {string[]} names of file and line */
export function view_source(app, [name = "", line_text = ""]) {
    const { model } = app;
    const files = source_files(model);
    const by_loss = [...files].map(([file, lines]) => ({ file, lines, lost: lost_by(model, blocks_of(lines)) })).sort((a, b) => b.lost - a.lost);
    const culprit_file = model.answers.culprit?.block.src[0]?.[0]?.[0];
    const shown = by_loss.find(({ file }) => file === name) ?? (name === "" ? by_loss.find(({ file }) => file === culprit_file) ?? by_loss[0] : undefined);
    const here = Number(line_text) || (name === "" && shown?.file === culprit_file ? Number(model.answers.culprit?.block.src[0]?.[0]?.[1]) : 0);
    const side = element("nav", { class: "card side", "aria-label": "Files" }, element("h2", null, "Files"),
        by_loss.map(({ file, lost }) => element("a", { href: source_address(file, 0), "aria-current": file === shown?.file ? "page" : null, title: safe_name(file) },
            element("span", { class: "code" }, safe_name(file)), second(lost > 0 ? time_text(lost, model.fact_unit) : ""))));
    const listing = element("div", { class: "card listing", role: "region", "aria-label": "Source", tabindex: "0" });
    const note = element("p", { class: "second" });
    const head = box("view-head", element("h1", null, element("b", { class: "code" }, safe_name(shown?.file ?? "Source"))), note);
    if (shown) show_listing(app, shown.file, shown.lines, here, listing, note);
    else listing.append(element("p", { class: "chart-head" }, name === "" ? "The profile names no sources." : `The profile names no file ${safe_name(name)}.`));
    return { root: [box("with-side", side, box("block", head, listing))], draw: () => {} };
}

/** @param {App} app @param {string} file @param {SourceFile} lines @param {number} here @param {HTMLElement} listing @param {HTMLElement} note */
async function show_listing(app, file, lines, here, listing, note) {
    const most = Math.max(1, ...[...lines.values()].map((line) => lost_by(app.model, [...line.own, ...line.inlined])));
    const sorted = [...lines.keys()].sort((a, b) => a - b);
    const show = (/** @type {number[]} */ numbers, /** @type {string[]} */ text) => {
        fill(listing, numbers.map((no) => source_line(app, no, text[no - 1] ?? "", lines.get(no), most, no === here)));
        const marked = listing.querySelector(".here");
        if (marked && typeof marked.scrollIntoView === "function") marked.scrollIntoView({ block: "center" });
    };
    show(sorted, []);
    try {
        const text = await app.source_text(file);
        if (text === null) {
            fill(note, "Its text isn't in this page; the lines with blocks are.");
            return;
        }
        const all = text.split(/\r\n|\n|\r/);
        if (all[all.length - 1] === "") all.pop();
        const last = Math.max(all.length, sorted[sorted.length - 1] ?? 0);
        fill(note, "The text is of the day this page was made; nothing proves that it is what was compiled.");
        show(Array.from({ length: last }, (_, i) => i + 1), all);
    } catch (error) {
        fill(note, String(/** @type {Error} */ (error).message));
    }
}

/** @param {App} app @param {number} no @param {string} text @param {SourceLine | undefined} line @param {number} most lost by a line of the file @param {boolean} here */
function source_line(app, no, text, line, most, here) {
    const { model } = app;
    const own = line ? lost_by(model, line.own) : 0;
    const all = line ? Math.max(own, lost_by(model, [...line.own, ...line.inlined])) : 0;
    const bar = element("span", { class: "lost", "aria-hidden": "true" });
    for (const [look, lost] of /** @type {[string, number][]} */ ([["inlined", all - own], ["", own]])) {
        if (!(lost > 0)) continue;
        const piece = element("span", { class: look });
        piece.style.width = `${100 * lost / most}%`;
        bar.appendChild(piece);
    }
    const blocks = line && line.own.size + line.inlined.size > 0;
    return element("div", { class: `line${blocks ? " hot" : ""}${here ? " here" : ""}`, "aria-current": here ? "true" : null },
        element("span", { class: "time" }, all > 0 ? time_text(all, model.fact_unit) : ""), bar, element("span", { class: "no" }, no > 0 ? no : ""),
        element("span", { class: "text code" }, visible_text(text)),
        blocks && box("under", [...line.own].map((block) => own_block(block, no)), line.inlined.size > 0 && inlined_blocks(line.inlined)));
}

/** Source text as it is, but with tabs as blanks and harmful characters made visible. @param {string} text */
function visible_text(text) {
    return safe_name(text.replaceAll("\t", "    "));
}

/** @param {ModelBlock} block @param {number} no */
function own_block(block, no) {
    const { facts, sentence } = block;
    const plain = ["little", "fine", "mostly-idle"].includes(sentence.rule);
    const text = plain ? [is_known(facts.stall) && `stalled ${percent_text(facts.stall)}`, is_known(facts.valid) && `valid ${percent_text(facts.valid)}`].filter(Boolean).join(", ") : sentence.text;
    const chain = block.block.src.find((c) => c[0][1] === no) ?? [];
    const caller = chain.length > 1 ? [" inlined into ", place_link(chain[chain.length - 1])] : [];
    return element("div", null, shares_bar(facts), block_link(block, "code"), element("span", { class: sentence.tone === "cause" ? "cause" : "second" }, safe_name(text), second(caller)));
}

/** @param {Set<ModelBlock>} blocks */
function inlined_blocks(blocks) {
    const names = [...blocks].flatMap((block, i) => [i > 0 ? ", " : "", block_link(block), is_known(block.facts.stall) ? ` stalled ${percent_text(block.facts.stall)}` : "",
        ...(block.block.src[0]?.[0] ? [" (", view_link(source_address(block.block.src[0][0][0], block.block.src[0][0][1]), safe_name(place_text(block.block.src[0][0]))), ")"] : [])]);
    return element("div", null, second("inlined here: ", names));
}
