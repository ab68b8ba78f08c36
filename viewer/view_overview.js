// SPDX-License-Identifier: Apache-2.0
// The overview: the four answers, and the tables by which they can be checked.

import { address_of } from "./address.js";
import { block_link, culprit_text, kernel_name, place_link, sentence_text, shares_bar } from "./bars.js";
import { bold, box, colour, element, mark, safe_name, share_bar, view_link } from "./dom.js";
import { bandwidth_text, bytes_text, count_text, is_known, percent_text, time_text } from "./format.js";
import { percent_of } from "./metrics.js";
import { canvas_pen, picture } from "./ruler.js";
import { make_table, name_column, number_column } from "./table.js";

/** @typedef {import("./page.js").App} App */
/** @typedef {import("./model.js").ModelKernel} ModelKernel */

/** A view is drawn from the head alone. @param {App} app */
export function view_overview(app) {
    const { model } = app;
    const sparks = /** @type {(() => void)[]} */ ([]);
    const started = model.kernels.filter((k) => !k.kernel.autorun);
    const autorun = model.kernels.filter((k) => k.kernel.autorun);
    const root = [
        element("h1", { class: "unseen" }, "Overview"),
        four_answers(app),
        where_it_went(app),
        started.length > 0 && kernel_table(app, started),
        model.ranking.length > 0 && block_table(app),
        autorun.length > 0 && autorun_table(autorun),
        element("div", { class: model.head.transfers.n > 0 && model.head.memories.length > 0 ? "pair" : "" },
            model.head.memories.length > 0 && memory_table(app, sparks),
            model.head.transfers.n > 0 && transfer_table(app)),
        notes_card(app),
    ];
    return { root, draw: () => { for (const draw of sparks) draw(); } };
}

/** An answer begins with its name, or with words of its own before a colon. @param {string} text @param {string} name @returns {[string, string]} */
function name_and_rest(text, name) {
    const end = name !== "" && text.startsWith(name) ? name.length : text.includes(": ") ? text.indexOf(": ") : text.length;
    return [text.slice(0, end), text.slice(end).replace(/^[,:]? */, "")];
}

/** @param {App} app */
function four_answers({ model }) {
    const { kernel, block, source, memory, leader, culprit } = model.answers;
    const chain = culprit?.block.src[0] ?? [];
    const [led, kernel_rest] = name_and_rest(kernel.text, leader?.name ?? "");
    const [held, block_rest] = name_and_rest(block.text.replace("No block stalls much: ", ""), culprit ? `${culprit.kernel.name}/${culprit.block.name}` : "");
    const placed = chain.length > 0 && ["stalls", "loop"].includes(source.rule);
    /** @param {string} question @param {import("./dom.js").Child} answer @param {import("./dom.js").Child | import("./dom.js").Child[]} detail */
    const card = (question, answer, detail) => element("div", null, element("dt", null, question), element("dd", { class: "answer" }, answer), element("dd", null, detail));
    return element("dl", { class: "card answers" },
        card("Which kernel took the time?", leader && led === leader.name ? view_link(address_of({ view: "timeline" }), safe_name(led)) : safe_name(led), safe_name(kernel_rest)),
        card("Which block holds it up?", culprit && held.endsWith(`/${culprit.block.name}`) ? block_link(culprit) : safe_name(held), safe_name(block_rest)),
        card("On which line?", placed ? place_link(chain[0]) || "Unknown" : safe_name(source.text),
            !placed ? "" : chain.length > 1 ? ["inlined into ", place_link(chain[chain.length - 1])] : safe_name(chain[0][0])),
        card("Is memory the reason?", safe_name(memory.text), culprit ? safe_name(culprit.sentence.text) : ""));
}

/** One bar of the span. @param {App} app */
function where_it_went({ model }) {
    const { span, kernel_time, transfer_only } = model.head.run;
    const started = model.kernels.filter((k) => !k.kernel.autorun);
    const alone = started.reduce((sum, k) => sum + k.kernel.alone, 0);
    const pieces = /** @type {[string, string, number][]} */ ([
        ...started.map((k) => [`k${k.number % 8}`, `${safe_name(k.name)} alone`, k.kernel.alone]),
        ["several", "several kernels", kernel_time - alone],
        ["transfer", "transfers alone", transfer_only],
        ["nothing", "nothing ran", span - kernel_time - transfer_only],
    ]).filter(([, , time]) => time > 0 && span > 0);
    const bar = element("div", { class: "spans", role: "img", "aria-label": pieces.map(([, name, time]) => `${name} ${percent_text(percent_of(time, span))}`).join(", ") });
    const legend = box("legend");
    for (const [look, name, time] of pieces) {
        const percent = 100 * time / span;
        const text = `${name} ${percent_text(percent)}`;
        const fits = percent > 9 && look !== "nothing";
        const piece = element("span", { class: `${look}${fits ? "" : " short"}`, title: text }, fits && text);
        piece.style.flex = `${time} 0 0`;
        bar.appendChild(piece);
        if (!fits) legend.appendChild(element("span", null, mark(look), name + " ", bold(percent_text(percent))));
    }
    return element("section", null, element("h2", null, span > 0 ? `Where ${time_text(span, model.unit)} went` : "Nothing ran"), bar, legend);
}

/** @param {App} app @param {ModelKernel[]} kernels */
function kernel_table({ model }, kernels) {
    const { unit } = model;
    const share = (/** @type {ModelKernel} */ k) => percent_of(k.kernel.union, model.head.run.span);
    const time = (/** @type {number | null} */ value) => time_text(value, unit);
    return make_table({ title: "Kernels", rows: kernels, sort: 5, limit: 20, columns: [
        name_column("Kernel", (k) => k.name, (k) => kernel_name(k, true)),
        name_column("Source", (k) => `${k.kernel.file}:${k.kernel.line}`, (k) => place_link([k.kernel.file, k.kernel.line, 0])),
        number_column("Calls", "", (k) => k.kernel.invocations.n, count_text),
        { name: "Share of the run", unit: "%", value: share, cell: (k) => {
            const all = share(k) ?? 0;
            const alone = percent_of(k.kernel.alone, model.head.run.span) ?? 0;
            return share_bar([[`k${k.number % 8}`, alone], [`k${k.number % 8} faint`, all - alone]], `${percent_text(all)}, alone ${percent_text(alone)}`);
        } },
        number_column("", "%", share, percent_text, { cell: (k) => bold(percent_text(share(k))) }),
        number_column("Total", unit, (k) => k.kernel.total, time),
        number_column("Median", unit, (k) => k.kernel.median, time),
        number_column("Shortest – longest", unit, (k) => k.kernel.longest, time, { cell: (k) => `${time(k.kernel.shortest)} – ${time(k.kernel.longest)}` }),
        { name: "What holds it up", look: "wide", value: (k) => k.culprit ? `${k.culprit.block.name}: ${k.culprit.sentence.text}` : "", cell: (k) => culprit_text(k.culprit) },
    ] });
}

/** @param {App} app */
function block_table({ model }) {
    return make_table({ title: "Worst blocks, by time lost to stalls", rows: model.ranking, limit: 8, columns: [
        name_column("Block", (b) => b.block.name, (b) => block_link(b)),
        name_column("Kernel", (b) => b.kernel.name, (b) => kernel_name(b.kernel)),
        name_column("Kind", (b) => b.kind),
        name_column("Source", (b) => b.block.src[0]?.[0]?.slice(0, 2).join(":") ?? "", (b) => place_link(b.block.src[0]?.[0])),
        { ...number_column("Stalled, valid, idle", "% stalled", (b) => b.facts.stall, percent_text), look: "", cell: (b) => shares_bar(b.facts) },
        number_column("Stall", "%", (b) => b.facts.stall, percent_text, { hint: "share of the cycles in which the block was stalled" }),
        number_column("Lost", model.fact_unit, (b) => b.facts.lost, (v) => time_text(v, model.fact_unit), { hint: "time that the block was stalled, at most: parallel blocks stall at the same time" }),
        { name: "Why", look: "wide", value: (b) => b.sentence.text, cell: (b) => sentence_text(b.sentence) },
    ] });
}

/** The greatest valid share of a kernel's blocks. @param {ModelKernel} kernel */
export function busiest_block(kernel) {
    return kernel.blocks.reduce((/** @type {import("./model.js").ModelBlock | null} */ best, b) =>
        is_known(b.facts.valid) && (!best || b.facts.valid > Number(best.facts.valid)) ? b : best, null);
}

/** @param {ModelKernel[]} kernels */
function autorun_table(kernels) {
    const facts_of = (/** @type {ModelKernel} */ k) => (k.culprit ?? busiest_block(k))?.facts ?? {};
    return make_table({ title: "Kernels that run by themselves", rows: kernels, columns: [
        name_column("Kernel", (k) => k.name, (k) => kernel_name(k, true)),
        { ...number_column("Stalled, valid, idle while it worked", "% stalled", (k) => facts_of(k).stall, percent_text), look: "", cell: (k) => shares_bar(facts_of(k)) },
        number_column("Valid", "%", (k) => facts_of(k).valid, percent_text),
        number_column("Waiting", "%", (k) => k.kernel.waiting, percent_text, { hint: "share of its time in which it had no work" }),
        { name: "What holds it up", look: "wide", value: (k) => k.culprit?.sentence.text ?? "", cell: (k) => culprit_text(k.culprit) },
    ] });
}

/** Bytes that blocks read and wrote. @param {App["model"]} model @param {string} memory @returns {[number | null, number | null]} */
export function moved_bytes(model, memory) {
    const blocks = model.kernels.flatMap((k) => k.blocks).filter((b) => b.block.mem === memory && is_known(b.facts.moved));
    const sum = (/** @type {boolean} */ writes) => blocks.filter((b) => (b.block.rw === "write") === writes).reduce((s, b) => s + Number(b.facts.moved), 0);
    return blocks.length > 0 ? [sum(false), sum(true)] : [null, null];
}

/** @param {App} app @param {(() => void)[]} sparks */
function memory_table({ model }, sparks) {
    return make_table({ title: "Memories", rows: model.head.memories, columns: [
        name_column("Memory", (m) => m.name, (m) => view_link(address_of({ view: "memory", names: [m.name] }), safe_name(m.name))),
        { ...number_column("Bandwidth over the run", "MB/s", (m) => m.mean, bandwidth_text), look: "", cell: (m) => spark(m, sparks) },
        number_column("Mean", "MB/s", (m) => m.mean, bandwidth_text),
        number_column("Of peak", "%", (m) => percent_of(m.mean, m.peak), percent_text),
        number_column("Greatest", "MB/s", (m) => m.max, bandwidth_text),
        number_column("Peak", "MB/s", (m) => m.peak, bandwidth_text),
        number_column("Read, written", "B read", (m) => moved_bytes(model, m.name)[0], bytes_text, { cell: (m) => moved_bytes(model, m.name).map(bytes_text).join(" · ") }),
    ] });
}

/** @param {import("./types.d.ts").Memory} memory @param {(() => void)[]} sparks */
function spark(memory, sparks) {
    const canvas = picture(`Bandwidth of ${safe_name(memory.name)} over the run`);
    canvas.className = "spark";
    sparks.push(() => {
        const height = 26;
        const { pen, width } = canvas_pen(canvas, height);
        const { bins } = memory;
        const top = Math.max(memory.peak ?? 0, bins.reduce((a, b) => Math.max(a, b), 0)) || 1;
        pen.fillStyle = colour("memory");
        for (let x = 0; x < width && bins.length > 0; ++x) {
            const from = Math.floor(x / width * bins.length);
            const to = Math.max(from + 1, Math.floor((x + 1) / width * bins.length));
            const mean = bins.slice(from, to).reduce((a, b) => a + b, 0) / (to - from);
            pen.fillRect(x, height - mean / top * (height - 4), 1, mean / top * (height - 4));
        }
        pen.strokeStyle = colour("peak");
        pen.setLineDash([2, 2]);
        pen.beginPath();
        pen.moveTo(0, 3.5);
        pen.lineTo(width, 3.5);
        if (memory.peak) pen.stroke();
        pen.setLineDash([]);
    });
    return canvas;
}

/** @param {App} app */
function transfer_table({ model }) {
    const { unit } = model;
    /** @typedef {[string, number, number, number]} Total */
    const share = (/** @type {Total} */ [, , , time]) => percent_of(time, model.head.run.span);
    return make_table({ title: "Transfers", rows: model.head.transfers.totals, sort: 3, columns: [
        { name: "Kind", look: "name code", value: ([kind]) => kind },
        number_column("Queue", "", ([, queue]) => queue, String),
        number_column("Count", "", ([, , count]) => count, count_text),
        number_column("Total", unit, ([, , , time]) => time, (v) => time_text(v, unit)),
        { name: "Share of the run", unit: "%", value: share, cell: (t) => share_bar([["transfer", share(t) ?? 0]], percent_text(share(t))) },
        number_column("", "%", share, percent_text, { cell: (t) => bold(percent_text(share(t))) }),
    ] });
}

/** @param {App} app */
function notes_card({ model }) {
    const { notes } = model.head;
    return notes.length > 0 && element("section", { class: "card" }, box("card-head", element("h2", null, "Notes")),
        element("ul", { class: "notes" }, notes.map((note) => element("li", null, safe_name(note)))));
}
