// Two runs beside each other: what became shorter, what became longer, and what holds it up now.

import { block_link, culprit_text, kernel_name, sentence_text } from "./bars.js";
import { element, safe_name } from "./dom.js";
import { change_text, is_known, percent_text, time_text } from "./format.js";
import { percent_of } from "./metrics.js";
import { change_of, compare } from "./pairs.js";
import { make_table } from "./table.js";

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
        element("div", { class: "view-head" }, element("h1", null, element("b", null, "Comparison")),
            element("span", { class: "second" }, "base ", element("b", null, safe_name(base.head.run.report)), " → now ", element("b", null, safe_name(model.head.run.report)))),
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
    return element("section", { class: "card" }, element("div", { class: "view-head" }, element("p", { class: "card-head" },
        element("span", { class: "arrow" }, `${time_text(was, base.unit)} → ${time_text(now, model.unit)}`),
        element("span", null, element("b", { class: look }, change_text(change, percent_text)), " of the whole run; ", element("b", null, less), ` block${less === 1 ? "" : "s"} lose less time to stalls, `, element("b", null, more), " lose more. Changes below a thousandth of the base's span are left out."))));
}

/** A bar to the left for less, to the right for more. @param {number | null} change @param {number} most */
function change_bar(change, most) {
    const bar = element("span", { class: "bar", role: "img", "aria-label": change === null ? "no change known" : change < 0 ? "less" : change > 0 ? "more" : "the same" });
    if (change === null || !(most > 0)) return bar;
    const half = 50 * Math.abs(change) / most;
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
    /** @param {string} name @param {(p: KernelPair) => number | null} value @returns {import("./table.js").Column<KernelPair>} */
    const time = (name, value) => ({ name, unit, look: "number", value, cell: (p) => time_text(value(p), unit) });
    return make_table({ title: "Kernels", rows: pairs.sort((a, b) => Math.abs(change(b) ?? Infinity) - Math.abs(change(a) ?? Infinity)), limit: 30, columns: [
        { name: "Kernel", look: "name", value: (p) => (p.now ?? p.was)?.name ?? "", cell: (p) => [...kernel_name(/** @type {ModelKernel} */ (p.now ?? p.was), p.now !== null), presence(p)] },
        { name: "Calls, base", look: "number", value: (p) => p.was?.kernel.invocations.n },
        { name: "now", look: "number", value: (p) => p.now?.kernel.invocations.n },
        time("Median, base", (p) => p.was?.kernel.median ?? null), time("now", (p) => p.now?.kernel.median ?? null),
        time("Total, base", (p) => total(p.was)), time("now", (p) => total(p.now)),
        { name: "", unit, value: change, cell: (p) => change_bar(change(p), most) },
        { name: "Change", unit, look: "number", value: change, cell: (p) => element("b", null, change_text(change(p), (v) => time_text(v, unit))) },
        { name: "%", look: "number", value: (p) => percent_of(change(p), total(p.was)), cell: (p) => change_text(percent_of(change(p), total(p.was)), percent_text) },
        { name: "What holds it up: base, now", look: "wide", value: (p) => p.now?.culprit?.sentence.text ?? "", cell: (p) => held_up(p) },
    ] });
}

/** Then and now, or once if that is the same. @param {KernelPair} pair */
function held_up({ was, now }) {
    const before = was?.culprit ?? null;
    const after = now?.culprit ?? null;
    if (before?.sentence.rule === after?.sentence.rule && before?.block.name === after?.block.name) return culprit_text(after);
    return [before && element("div", { class: "second" }, "was: ", culprit_text(before)), after && element("div", null, culprit_text(after))];
}

/** @param {App} app @param {string} title @param {BlockPair[]} pairs */
function block_pairs({ model }, title, pairs) {
    const unit = model.fact_unit;
    const fact = (/** @type {ModelBlock | null} */ b, /** @type {string} */ name) => is_known(b?.facts[name]) ? Number(b?.facts[name]) : null;
    const change = (/** @type {BlockPair} */ p) => p.change ?? (p.now ? fact(p.now, "lost") : -Number(fact(p.was, "lost")));
    const most = Math.max(0, ...pairs.map((p) => Math.abs(change(p) ?? 0)));
    const either = (/** @type {BlockPair} */ p) => /** @type {ModelBlock} */ (p.now ?? p.was);
    return make_table({ title, rows: pairs, limit: 20, columns: [
        { name: "Block", look: "name", value: (p) => either(p).block.name, cell: (p) => [p.now ? block_link(p.now) : safe_name(either(p).block.name), presence(p)] },
        { name: "Kernel", look: "name", value: (p) => either(p).kernel.name },
        { name: "Stall, base", unit: "%", look: "number", value: (p) => fact(p.was, "stall"), cell: (p) => percent_text(fact(p.was, "stall")) },
        { name: "now", unit: "%", look: "number", value: (p) => fact(p.now, "stall"), cell: (p) => percent_text(fact(p.now, "stall")) },
        { name: "Lost, base", unit, look: "number", value: (p) => fact(p.was, "lost"), cell: (p) => time_text(fact(p.was, "lost"), unit) },
        { name: "now", unit, look: "number", value: (p) => fact(p.now, "lost"), cell: (p) => time_text(fact(p.now, "lost"), unit) },
        { name: "", unit, value: change, cell: (p) => change_bar(change(p), most) },
        { name: "Change", unit, look: "number", value: change, cell: (p) => element("b", null, change_text(change(p), (v) => time_text(v, unit))) },
        { name: "%", look: "number", value: (p) => percent_of(p.change, fact(p.was, "lost")), cell: (p) => change_text(percent_of(p.change, fact(p.was, "lost")), percent_text) },
        { name: "Why, now", look: "wide", value: (p) => p.now?.sentence.text ?? "", cell: (p) => p.now ? sentence_text(p.now.sentence) : "" },
    ] });
}

/** @param {import("./pairs.js").Pair<import("./types.d.ts").Memory>[]} pairs */
function memory_pairs(pairs) {
    const use = (/** @type {import("./types.d.ts").Memory | null} */ m) => percent_of(m?.mean, m?.peak);
    return pairs.length > 0 && make_table({ title: "Memories", rows: pairs, columns: [
        { name: "Memory", look: "name", value: (p) => (p.now ?? p.was)?.name ?? "", cell: (p) => safe_name((p.now ?? p.was)?.name ?? "") + presence(p) },
        { name: "Of peak, base", unit: "%", look: "number", value: (p) => use(p.was), cell: (p) => percent_text(use(p.was)) },
        { name: "now", unit: "%", look: "number", value: (p) => use(p.now), cell: (p) => percent_text(use(p.now)) },
        { name: "Change", unit: "points", look: "number", value: (p) => change_of(use(p.was), use(p.now)), cell: (p) => change_text(change_of(use(p.was), use(p.now)), (v) => percent_text(v).replace("%", "\u202fpoints")) },
        { name: "At 70% or more, base", unit: "% of the run", look: "number", value: (p) => p.was?.full ?? null, cell: (p) => percent_text(p.was?.full) },
        { name: "now", unit: "% of the run", look: "number", value: (p) => p.now?.full ?? null, cell: (p) => percent_text(p.now?.full) },
    ] });
}
