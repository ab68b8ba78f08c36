// SPDX-License-Identifier: Apache-2.0
// Two runs beside each other: what became shorter, what became longer, and what holds it up now.

import { block_link, culprit_text, kernel_name, sentence_text } from "./bars.js";
import { bold, box, element, safe_name, second } from "./dom.js";
import { change_text, count_text, is_known, percent_text, time_text } from "./format.js";
import { percent_of } from "./metrics.js";
import { change_of, compare } from "./pairs.js";
import { make_table, name_column, number_column } from "./table.js";

/** @typedef {import("./page.js").App} App */
/** @typedef {import("./model.js").ModelBlock} ModelBlock */
/** @typedef {import("./model.js").ModelKernel} ModelKernel */
/** @typedef {import("./pairs.js").Pair<ModelKernel>} KernelPair */
/** @typedef {import("./pairs.js").Pair<ModelBlock> & {change: number | null}} BlockPair */

/** @param {App} app */
export function view_compare(app) {
    const { base, model } = app;
    if (!base) return { root: [element("h1", { class: "unseen" }, "Comparison"), element("p", null, "This page has no run to compare with.")], draw: () => {} };
    const found = compare(base, model);
    const root = [
        box("view-head", element("h1", null, bold("Comparison")),
            second("base ", bold(safe_name(base.head.run.report)), " → now ", bold(safe_name(model.head.run.report)))),
        span_card(base, model, found.less.length, found.more.length),
        kernel_pairs(app, found.kernels),
        found.less.length > 0 && block_pairs(app, "Blocks that lose less", found.less),
        found.more.length > 0 && block_pairs(app, "Blocks that lose more", found.more),
        memory_pairs(found.memories),
    ];
    return { root, draw: () => {} };
}

/** @param {App["model"]} base @param {App["model"]} model @param {number} less @param {number} more */
function span_card(base, model, less, more) {
    const [was, now] = [base.head.run.span, model.head.run.span];
    const change = percent_of(now - was, was);
    const look = !is_known(change) || change === 0 ? "" : change < 0 ? "good" : "cause";
    return element("section", { class: "card" }, element("p", { class: "change" },
        element("span", { class: "arrow" }, `${time_text(was, base.unit)} → ${time_text(now, model.unit)}`),
        element("span", null, element("b", { class: look }, change_text(change, percent_text)), " of the whole run; ", bold(less), ` block${less === 1 ? "" : "s"} lose less time to stalls, `, bold(more), " lose more. Changes below a thousandth of the base's span are left out.")));
}

/** A bar to the left for less, to the right for more. @param {number | null} change @param {number} most */
function change_bar(change, most) {
    const bar = element("span", { class: "bar", role: "img", "aria-label": change === null ? "no change known" : change < 0 ? "less" : change > 0 ? "more" : "the same" });
    if (change === null || !(most > 0)) return bar;
    // A small change is a thin line.
    const half = change === 0 ? 0 : Math.max(1, 50 * Math.abs(change) / most);
    const gap = element("span", null);
    gap.style.width = `${change < 0 ? 50 - half : 50}%`;
    const piece = element("span", { class: change < 0 ? "valid" : "stalled" });
    piece.style.width = `${half}%`;
    bar.append(gap, piece);
    return bar;
}

/** @param {{was: unknown, now: unknown}} pair */
function presence(pair) {
    return pair.was && pair.now ? "" : pair.now ? " (new)" : " (gone)";
}

/** @param {App} app @param {KernelPair[]} pairs */
function kernel_pairs({ model }, pairs) {
    const { unit } = model;
    const total = (/** @type {ModelKernel | null} */ k) => k?.kernel.total ?? null;
    const change = (/** @type {KernelPair} */ p) => change_of(total(p.was), total(p.now));
    const most = Math.max(0, ...pairs.map((p) => Math.abs(change(p) ?? 0)));
    const time = (/** @type {number | null} */ value) => time_text(value, unit);
    return make_table({ title: "Kernels", rows: pairs.sort((a, b) => Math.abs(change(b) ?? Infinity) - Math.abs(change(a) ?? Infinity)), limit: 30, columns: [
        name_column("Kernel", (p) => (p.now ?? p.was)?.name ?? "", (p) => [...kernel_name(/** @type {ModelKernel} */ (p.now ?? p.was), p.now !== null), presence(p)]),
        number_column("Calls, base", "", (p) => p.was?.kernel.invocations.n, count_text),
        number_column("now", "", (p) => p.now?.kernel.invocations.n, count_text),
        number_column("Median, base", unit, (p) => p.was?.kernel.median, time), number_column("now", unit, (p) => p.now?.kernel.median, time),
        number_column("Total, base", unit, (p) => total(p.was), time), number_column("now", unit, (p) => total(p.now), time),
        { name: "", unit, value: change, cell: (p) => change_bar(change(p), most) },
        number_column("Change", unit, change, time, { cell: (p) => bold(change_text(change(p), time)) }),
        number_column("%", "", (p) => percent_of(change(p), total(p.was)), (v) => change_text(v, percent_text)),
        { name: "What holds it up: base, now", look: "wide", value: (p) => p.now?.culprit?.sentence.text ?? "", cell: (p) => held_up(p) },
    ] });
}

/** Then and now, or once if that is the same. @param {KernelPair} pair */
function held_up({ was, now }) {
    const before = was?.culprit ?? null;
    const after = now?.culprit ?? null;
    if (before?.sentence.rule === after?.sentence.rule && before?.block.name === after?.block.name) return culprit_text(after);
    return [before && box("second", "was: ", culprit_text(before)), after && element("div", null, culprit_text(after))];
}

/** @param {App} app @param {string} title @param {BlockPair[]} pairs */
function block_pairs({ model }, title, pairs) {
    const unit = model.fact_unit;
    const time = (/** @type {number | null} */ value) => time_text(value, unit);
    const lost = (/** @type {ModelBlock | null} */ b) => is_known(b?.facts.lost) ? Number(b?.facts.lost) : null;
    const change = (/** @type {BlockPair} */ p) => p.change ?? (p.now ? lost(p.now) : -Number(lost(p.was)));
    const most = Math.max(0, ...pairs.map((p) => Math.abs(change(p) ?? 0)));
    const either = (/** @type {BlockPair} */ p) => /** @type {ModelBlock} */ (p.now ?? p.was);
    return make_table({ title, rows: pairs, limit: 20, columns: [
        name_column("Block", (p) => either(p).block.name, (p) => [p.now ? block_link(p.now) : safe_name(either(p).block.name), presence(p)]),
        name_column("Kernel", (p) => either(p).kernel.name),
        number_column("Stall, base", "%", (p) => p.was?.facts.stall, percent_text), number_column("now", "%", (p) => p.now?.facts.stall, percent_text),
        number_column("Lost, base", unit, (p) => lost(p.was), time), number_column("now", unit, (p) => lost(p.now), time),
        { name: "", unit, value: change, cell: (p) => change_bar(change(p), most) },
        number_column("Change", unit, change, time, { cell: (p) => bold(change_text(change(p), time)) }),
        number_column("%", "", (p) => percent_of(p.change, lost(p.was)), (v) => change_text(v, percent_text)),
        { name: "Why, now", look: "wide", value: (p) => p.now?.sentence.text ?? "", cell: (p) => p.now ? sentence_text(p.now.sentence) : "" },
    ] });
}

/** @param {import("./pairs.js").Pair<import("./types.d.ts").Memory>[]} pairs */
function memory_pairs(pairs) {
    const use = (/** @type {import("./types.d.ts").Memory | null} */ m) => percent_of(m?.mean, m?.peak);
    return pairs.length > 0 && make_table({ title: "Memories", rows: pairs, columns: [
        name_column("Memory", (p) => ((p.now ?? p.was)?.name ?? "") + presence(p)),
        number_column("Of peak, base", "%", (p) => use(p.was), percent_text), number_column("now", "%", (p) => use(p.now), percent_text),
        number_column("Change", "points", (p) => change_of(use(p.was), use(p.now)), (v) => change_text(v, (x) => percent_text(x).replace("%", "\u202fpoints"))),
        number_column("At 70% or more, base", "% of the run", (p) => p.was?.full, percent_text), number_column("now", "% of the run", (p) => p.now?.full, percent_text),
    ] });
}
