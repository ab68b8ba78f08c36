// The overview: the four answers, and the tables by which they can be checked.

import { address_of } from "./address.js";
import { block_link, culprit_text, kernel_name, place_link, sentence_text, shares_bar } from "./bars.js";
import { colour, element, safe_name, share_bar, view_link } from "./dom.js";
import { bandwidth_text, bytes_text, is_known, percent_text, time_text } from "./format.js";
import { percent_of } from "./metrics.js";
import { canvas_pen, picture } from "./ruler.js";
import { make_table } from "./table.js";

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

/** The part of an answer after its name. @param {string} text @param {string} name */
function after_name(text, name) {
    return text.startsWith(name + ": ") ? text.slice(name.length + 2) : text;
}

/** @param {App} app */
function four_answers({ model }) {
    const { kernel, block, source, memory, leader, culprit } = model.answers;
    const led = kernel.rule === "kernel" && leader;
    const [first, rest] = kernel.text.includes(": ") ? [kernel.text.slice(0, kernel.text.indexOf(": ")), kernel.text.slice(kernel.text.indexOf(": ") + 2)] : [kernel.text, ""];
    const stalls = culprit && ["stalls", "loop", "little"].includes(block.rule);
    const chain = culprit?.block.src[0] ?? [];
    const placed = chain.length > 0 && ["stalls", "loop"].includes(source.rule);
    /** @param {string} question @param {import("./dom.js").Child} answer @param {import("./dom.js").Child | import("./dom.js").Child[]} detail @param {string} [look] */
    const card = (question, answer, detail, look = "") => element("div", null,
        element("dt", null, question), element("dd", { class: `answer ${look}` }, answer), element("dd", null, detail));
    return element("dl", { class: "card answers" },
        led ? card("Which kernel took the time?", view_link(address_of({ view: "timeline" }), safe_name(leader.name)), safe_name(after_name(kernel.text, leader.name)))
            : card("Which kernel took the time?", safe_name(first), safe_name(rest)),
        stalls ? card("Which block holds it up?", block_link(culprit), safe_name(block.text.slice(block.text.indexOf(culprit.block.name) + culprit.block.name.length).replace(/^[:,]? */, "")))
            : card("Which block holds it up?", safe_name(block.text.split(":")[0]), safe_name(block.text.split(": ").slice(1).join(": "))),
        placed ? card("On which line?", place_link(chain[0]) || "Unknown", chain.length > 1 ? ["inlined into ", place_link(chain[chain.length - 1])]
            : safe_name(chain[0][0]), "code") : card("On which line?", safe_name(source.text), ""),
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
    const legend = element("div", { class: "legend" });
    for (const [look, name, time] of pieces) {
        const percent = 100 * time / span;
        const text = `${name} ${percent_text(percent)}`;
        const fits = percent > 9 && look !== "nothing";
        const piece = element("span", { class: `${look}${fits ? "" : " short"}`, title: text }, fits && text);
        piece.style.flex = `${time} 0 0`;
        bar.appendChild(piece);
        if (!fits) legend.appendChild(element("span", null, element("span", { class: `mark ${look}`, "aria-hidden": "true" }), name + " ", element("b", null, percent_text(percent))));
    }
    return element("section", null, element("h2", null, span > 0 ? `Where ${time_text(span, model.unit)} went` : "Nothing ran"), bar, legend);
}

/** @param {App} app @param {ModelKernel[]} kernels */
function kernel_table({ model }, kernels) {
    const { unit } = model;
    const { span } = model.head.run;
    const time = (/** @type {(k: import("./types.d.ts").Kernel) => number | null} */ of) => ({
        unit, look: "number", value: (/** @type {ModelKernel} */ k) => of(k.kernel), cell: (/** @type {ModelKernel} */ k) => time_text(of(k.kernel), unit) });
    return make_table({ title: "Kernels", rows: kernels, sort: 5, limit: 20, search: (k) => `${k.name} ${k.kernel.file}`, columns: [
        { name: "Kernel", look: "name", value: (k) => k.name, cell: (k) => kernel_name(k, true) },
        { name: "Source", look: "name", value: (k) => `${k.kernel.file}:${k.kernel.line}`, cell: (k) => place_link([k.kernel.file, k.kernel.line, 0]) },
        { name: "Calls", look: "number", value: (k) => k.kernel.invocations.n },
        { name: "Share of the run", unit: "%", value: (k) => percent_of(k.kernel.union, span), cell: (k) => {
            const all = percent_of(k.kernel.union, span) ?? 0;
            const alone = percent_of(k.kernel.alone, span) ?? 0;
            return share_bar([[`k${k.number % 8}`, alone], [`k${k.number % 8} faint`, all - alone]], `${percent_text(all)}, alone ${percent_text(alone)}`);
        } },
        { name: "", unit: "%", look: "number", value: (k) => percent_of(k.kernel.union, span), cell: (k) => element("b", null, percent_text(percent_of(k.kernel.union, span))) },
        { name: "Total", ...time((k) => k.total) },
        { name: "Median", ...time((k) => k.median) },
        { name: "Shortest – longest", unit, look: "number", value: (k) => k.kernel.longest, cell: (k) => `${time_text(k.kernel.shortest, unit)} – ${time_text(k.kernel.longest, unit)}` },
        { name: "What holds it up", look: "wide", value: (k) => k.culprit ? `${k.culprit.block.name}: ${k.culprit.sentence.text}` : "", cell: (k) => culprit_text(k.culprit) },
    ] });
}

/** @param {App} app */
function block_table({ model }) {
    return make_table({ title: "Worst blocks, by time lost to stalls", rows: model.ranking, limit: 8, search: (b) => `${b.block.name} ${b.kernel.name} ${b.kind} ${b.sentence.text}`, columns: [
        { name: "Block", look: "name", value: (b) => b.block.name, cell: (b) => block_link(b) },
        { name: "Kernel", look: "name", value: (b) => b.kernel.name, cell: (b) => kernel_name(b.kernel) },
        { name: "Kind", value: (b) => b.kind },
        { name: "Source", look: "name", value: (b) => b.block.src[0]?.[0]?.slice(0, 2).join(":") ?? "", cell: (b) => place_link(b.block.src[0]?.[0]) },
        { name: "Stalled, valid, idle", unit: "% stalled", value: (b) => number_or_none(b.facts.stall), cell: (b) => shares_bar(b.facts) },
        { name: "Stall", unit: "%", look: "number", hint: "share of the cycles in which the block was stalled", value: (b) => number_or_none(b.facts.stall), cell: (b) => percent_text(number_or_none(b.facts.stall)) },
        { name: "Lost", unit: model.fact_unit, look: "number", hint: "time that the block was stalled, at most: parallel blocks stall at the same time", value: (b) => number_or_none(b.facts.lost), cell: (b) => time_text(number_or_none(b.facts.lost), model.fact_unit) },
        { name: "Why", look: "wide", value: (b) => b.sentence.text, cell: (b) => sentence_text(b.sentence) },
    ] });
}

/** @param {unknown} value */
export function number_or_none(value) {
    return is_known(value) ? value : null;
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
        { name: "Kernel", look: "name", value: (k) => k.name, cell: (k) => kernel_name(k, true) },
        { name: "Stalled, valid, idle while it worked", unit: "% stalled", value: (k) => number_or_none(facts_of(k).stall), cell: (k) => shares_bar(facts_of(k)) },
        { name: "Valid", unit: "%", look: "number", value: (k) => number_or_none(facts_of(k).valid), cell: (k) => percent_text(number_or_none(facts_of(k).valid)) },
        { name: "Waiting", unit: "%", look: "number", hint: "share of its time in which it had no work", value: (k) => k.kernel.waiting, cell: (k) => percent_text(k.kernel.waiting) },
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
        { name: "Memory", look: "name", value: (m) => m.name, cell: (m) => view_link(address_of({ view: "memory", names: [m.name] }), safe_name(m.name)) },
        { name: "Bandwidth over the run", unit: "MB/s", value: (m) => m.mean, cell: (m) => spark(m, sparks) },
        { name: "Mean", unit: "MB/s", look: "number", value: (m) => m.mean, cell: (m) => bandwidth_text(m.mean) },
        { name: "Of peak", unit: "%", look: "number", value: (m) => percent_of(m.mean, m.peak), cell: (m) => percent_text(percent_of(m.mean, m.peak)) },
        { name: "Greatest", unit: "MB/s", look: "number", value: (m) => m.max, cell: (m) => bandwidth_text(m.max) },
        { name: "Peak", unit: "MB/s", look: "number", value: (m) => m.peak, cell: (m) => bandwidth_text(m.peak) },
        { name: "Read, written", unit: "B read", look: "number", value: (m) => moved_bytes(model, m.name)[0], cell: (m) => moved_bytes(model, m.name).map(bytes_text).join(" · ") },
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
    const { span } = model.head.run;
    return make_table({ title: "Transfers", rows: model.head.transfers.totals, sort: 3, columns: [
        { name: "Kind", look: "name code", value: ([kind]) => kind },
        { name: "Queue", look: "number", value: ([, queue]) => queue },
        { name: "Count", look: "number", value: ([, , count]) => count },
        { name: "Total", unit, look: "number", value: ([, , , time]) => time, cell: ([, , , time]) => time_text(time, unit) },
        { name: "Share of the run", unit: "%", value: ([, , , time]) => percent_of(time, span), cell: ([, , , time]) => share_bar([["transfer", percent_of(time, span) ?? 0]], percent_text(percent_of(time, span))) },
        { name: "", unit: "%", look: "number", value: ([, , , time]) => percent_of(time, span), cell: ([, , , time]) => element("b", null, percent_text(percent_of(time, span))) },
    ] });
}

/** @param {App} app */
function notes_card({ model }) {
    const { notes } = model.head;
    return notes.length > 0 && element("section", { class: "card" }, element("div", { class: "card-head" }, element("h2", null, "Notes")),
        element("ul", { class: "notes" }, notes.map((note) => element("li", null, safe_name(note)))));
}
