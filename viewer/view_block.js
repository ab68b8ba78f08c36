// SPDX-License-Identifier: Apache-2.0
// A block: its sentence and facts, and all that was measured of it on one axis of time.

import { block_address } from "./address.js";
import { block_link, place_link, shares_bar } from "./bars.js";
import { axis_top, axis_width, draw_chart, right_margin } from "./chart.js";
import { place_after, Track } from "./columns.js";
import { after_rest, bold, box, button, element, fill, kernel_mark, mark, safe_name, second, view_link } from "./dom.js";
import { bandwidth_text, count_text, is_known, percent_text, time_text } from "./format.js";
import { same_kernel } from "./pairs.js";
import { pixels_of } from "./pixels.js";
import { judge } from "./rules.js";
import { draw_ruler, make_plot, picture } from "./ruler.js";
import { show_samples } from "./samples.js";
import { stretch_facts } from "./stretch_facts.js";

/** @typedef {import("./page.js").App} App */
/** @typedef {import("./model.js").ModelBlock} ModelBlock */
/** @typedef {import("./types.d.ts").Facts} Facts */
/**
 * @typedef {object} Plotted a chart on the page
 * @property {string} title
 * @property {string} note
 * @property {string[]} metrics stacked, or one
 * @property {string[]} looks
 * @property {number} height
 * @property {(value: number) => string} text
 * @property {number} [top]
 */

const stats_width = 150;
const few_samples = 10;
const most_listed = 400;

/** The charts that a block can have, in their order. @param {ModelBlock} block @returns {Plotted[]} */
function charts_of(block) {
    const memory = block.block.mem;
    /** @type {Plotted[]} */
    const all = [
        { title: "Share of cycles", note: "dots: most stalled sample of the pixel; numbers: stalled", metrics: ["stall", "valid", "idle"], looks: ["stalled", "valid", "idle"], height: 118, text: percent_text, top: 100 },
        { title: "Bandwidth", note: memory ? `of ${safe_name(memory)}` : block.block.kind === "channel" ? "of its channel" : "of global memory", metrics: ["bandwidth"], looks: ["memory"], height: 96, text: bandwidth_text },
        { title: "Requested, of what moved", note: "", metrics: ["efficiency"], looks: ["valid"], height: 76, text: percent_text },
        { title: "Words in its channel", note: "mean of a sample", metrics: ["fill"], looks: ["memory"], height: 76, text: count_text },
        { title: "Most words in its channel", note: "", metrics: ["max_fill"], looks: ["memory"], height: 64, text: count_text },
        { title: "Words in a burst", note: "", metrics: ["burst"], looks: ["write"], height: 76, text: count_text },
        { title: "Cache hits in a sample", note: "", metrics: ["hits"], looks: ["valid"], height: 64, text: count_text },
        { title: "Unaligned accesses in a sample", note: "", metrics: ["unaligned"], looks: ["stalled"], height: 64, text: count_text },
        { title: "Requests in a sample", note: "", metrics: ["requests"], looks: ["second"], height: 76, text: count_text },
    ];
    const has = (/** @type {string} */ metric) => is_known(block.block.series[metric]) && block.block.series[metric] >= 0;
    const counted = (/** @type {string} */ metric) => has(metric) && (block.block.sums[metric]?.[0] ?? 0) > 0;
    return all.map((chart) => {
        const kept = chart.metrics.map((m, i) => ({ m, look: chart.looks[i] })).filter(({ m }) => chart.metrics.length > 1 ? has(m) : counted(m));
        const note = chart.metrics.length > 1 && !kept.some(({ m }) => m === "stall") ? "numbers: valid" : chart.note;
        return { ...chart, note, metrics: kept.map(({ m }) => m), looks: kept.map(({ look }) => look) };
    }).filter((chart) => chart.metrics.length > 0);
}

/** @param {App} app @param {string[]} names of kernel and block */
export function view_block(app, [kernel_name = "", block_name = ""]) {
    const { model } = app;
    const block = model.find_block(kernel_name, block_name) ?? (kernel_name === "" ? model.answers.culprit ?? model.ranking[0] : null);
    const side = block_list(app, block);
    if (!block) {
        const text = model.ranking.length === 0 ? "This profile has no blocks with counters." : `This profile has no block ${safe_name(block_name)} in ${safe_name(kernel_name)}.`;
        return { root: [element("h1", { class: "unseen" }, "Blocks"), box("with-side", side, element("p", null, text))], draw: () => {} };
    }
    const page = new BlockPage(app, block);
    return { root: [box("with-side", side, page.root)], draw: (/** @type {Set<string>} */ what) => page.draw(what) };
}

/** All blocks by kernel, in the order of the ranking. @param {App} app @param {ModelBlock | null} shown */
function block_list({ model }, shown) {
    const list = element("div", null);
    const show = (/** @type {string} */ wanted) => {
        const found = model.ranking.filter((b) => `${b.block.name} ${b.kernel.name}`.toLowerCase().includes(wanted.toLowerCase()));
        const blocks = found.filter((b, i) => i < most_listed || b === shown);
        const kernels = [...new Set(blocks.map((b) => b.kernel))];
        fill(list, kernels.flatMap((kernel) => [
            element("h2", null, kernel_mark(kernel.number), safe_name(kernel.name)),
            ...blocks.filter((b) => b.kernel === kernel).map((b) => element("a", { href: block_address(kernel.name, b.block.name), "aria-current": b === shown ? "page" : null },
                element("span", null, safe_name(b.block.name)), shares_bar(b.facts))),
        ]), found.length > blocks.length && second(`${found.length - blocks.length} more: filter to see them`));
    };
    show("");
    const filter = element("input", { type: "search", placeholder: "Filter blocks", "aria-label": "Filter blocks", oninput: () => show(filter.value) });
    return element("nav", { class: "card side", "aria-label": "Blocks", tabindex: "0" }, filter, list);
}

/** @param {Facts} facts @param {ModelBlock} block @param {string} unit of facts @returns {[string, string][]} */
function fact_rows(facts, block, unit) {
    const n = (/** @type {string} */ name) => is_known(facts[name]) ? Number(facts[name]) : null;
    const of = (/** @type {string} */ name, /** @type {string} */ most) => is_known(facts[most]) ? `${count_text(n(name))} of ${count_text(n(most))}` : count_text(n(name));
    const rows = /** @type {[string, string, boolean][]} */ ([
        ["Kind", block.kind + (block.block.coalesced ? ", coalesced" : ""), true],
        ["Stall", percent_text(n("stall")), block.block.kind !== "loop"],
        ["Valid", percent_text(n("valid")), true],
        ["Idle", percent_text(n("idle")), block.block.kind !== "loop"],
        ["Lost, at most", time_text(n("lost"), unit), n("lost") !== null],
        ["Cycles an iteration", count_text(n("iteration")), block.block.kind === "loop"],
        ["Without stalls", count_text(n("net")), block.block.kind === "loop"],
        ["Bandwidth", bandwidth_text(n("bandwidth")), n("bandwidth") !== null],
        ["Requested", percent_text(n("efficiency")), n("efficiency") !== null],
        ["Burst", `${of("burst", "max_burst")} words`, n("burst") !== null],
        ["Cache hits", percent_text(n("hits")), n("hits") !== null],
        ["Unaligned", percent_text(n("unaligned")), n("unaligned") !== null],
        ["Channel holds", `${of("fill", "max_fill")} words`, n("fill") !== null],
        ["Use of its memory", percent_text(n("memory_use")), n("memory_use") !== null],
    ]);
    return rows.filter(([, , shown]) => shown).map(([name, text]) => [name, text]);
}

class BlockPage {
    /** @param {App} app @param {ModelBlock} block */
    constructor(app, block) {
        this.app = app;
        this.block = block;
        this.turn = 0;
        const { model, stretch } = app;
        this.sentence = element("p", { class: "sentence", "aria-live": "polite" });
        this.facts = element("dl", { class: "facts" });
        this.stepper = box("tools stepper");
        this.ruler = picture("Ruler of time");
        this.plots = charts_of(block).map((chart) => this.make_chart(chart));
        const plot = () => ({ left: axis_width, width: Math.max(1, this.surface.clientWidth - stats_width - axis_width - right_margin) });
        const { surface, overlay, update } = make_plot(stretch, model.unit, plot, `Charts of ${safe_name(block.block.name)}: arrow keys move the cursor by a sample`, (n) => this.step_cursor(n));
        this.plot = plot;
        this.surface = surface;
        this.update_overlay = update;
        surface.append(box("ruler-row", this.ruler, element("span", null)), ...this.plots.map(({ place }) => place), overlay);
        this.root = element("article", { class: "block" },
            box("view-head", element("h1", null, kernel_mark(block.kernel.number), second(safe_name(block.kernel.name) + " /", " "), bold(safe_name(block.block.name))),
                chain_links(block), app.base && second("dashed: base"), this.stepper),
            this.sentence, this.facts, this.plots.length > 0 ? element("section", { class: "card", "aria-label": "Charts" }, surface)
                : element("p", { class: "second" }, "Nothing was counted for this block."));
        this.base = this.base_block();
        this.has_values = this.has_numbers = false;
        this.update_after_rest = after_rest(() => this.update_numbers());
        this.load();
    }

    /** Unpacks the values of all charts while the browser lays the page out. They are drawn together: each frame takes its time. */
    async load() {
        const tracks = this.plots.flatMap((plot) => plot.tracks);
        await Promise.allSettled([this.block.kernel.clock, this.base?.kernel.clock, ...tracks].map((part) => part?.load()));
        this.has_values = true;
        this.app.redraw("data");
    }

    /** The same block of the base. */
    base_block() {
        const kernel = same_kernel(this.app.base, this.block.kernel);
        return kernel?.blocks.find((b) => b.block.name === this.block.block.name) ?? null;
    }

    /** @param {Plotted} chart */
    make_chart(chart) {
        const { block, app } = this;
        const canvas = picture(`${chart.title} of ${safe_name(block.block.name)} over time; the button "as table" has its numbers`);
        canvas.style.height = `${chart.height}px`;
        const stats = element("dl", { class: "stats" });
        const tracks = chart.metrics.map((metric) => app.tracks.of_block(block.kernel, block.number, metric)).filter((t) => t !== undefined);
        const legend = chart.looks.length > 1 && element("span", { class: "legend" }, chart.looks.map((look) => element("span", null, mark(look), look)));
        const table = button({ "aria-label": `${chart.title} as table`, onclick: () => show_samples(app, block, chart.title, tracks, chart.metrics) }, "as table");
        const place = box("chart",
            box("chart-head", element("h2", null, chart.title), second(chart.note), box("tools", legend, table)),
            box("chart-body", canvas, stats));
        return { chart, canvas, stats, tracks, place };
    }

    /** The stretch that numbers and sentence are of. @returns {[number, number]} */
    judged() {
        const { selection, from, to, invocation } = this.app.stretch;
        const { clock } = this.block.kernel;
        const k = Number(invocation) - 1;
        if (selection) return selection;
        return clock.is_ready && from <= clock.start[k] && clock.end[k] <= to ? [clock.start[k], clock.end[k]] : [from, to];
    }

    /** @param {Set<string>} what */
    draw(what) {
        const redraws = what.has("stretch") || what.has("data");
        if (redraws && this.has_values) this.draw_charts();
        else if (redraws || what.has("selection")) draw_ruler(this.ruler, this.app.stretch, this.app.model.unit, this.plot());
        this.update_overlay();
        // Numbers of the first charts come with them: then no one zooms yet.
        if (redraws || what.has("selection")) this.has_numbers ? this.update_after_rest() : this.update_numbers();
        else if (what.has("cursor")) this.update_stats(true);
    }

    update_numbers() {
        this.has_numbers = this.has_values;
        this.update_words();
        this.update_stats(false);
        this.update_stepper();
    }

    draw_charts() {
        const { model, stretch, base } = this.app;
        const plot = this.plot();
        draw_ruler(this.ruler, stretch, model.unit, plot);
        const width = Math.round(plot.width);
        const map = pixels_of(this.block.kernel.clock, stretch.from, stretch.to, width);
        const moved = base && this.base ? this.base_stretch() : null;
        const base_map = moved && this.base ? pixels_of(this.base.kernel.clock, moved[0], moved[1], width) : undefined;
        for (const { chart, canvas, tracks } of this.plots) {
            const greatest = this.greatest(chart);
            const largest_burst = chart.metrics[0] === "burst" ? Number(this.block.facts.max_burst ?? 0) : 0;
            const base_track = this.base ? this.app.base_tracks?.of_block(this.base.kernel, this.base.number, chart.metrics[0]) : undefined;
            draw_chart(canvas, chart.height, stretch, { tracks, looks: chart.looks, map, base: base_track, base_map, stacked: chart.metrics.length > 1 || chart.top === 100,
                top: chart.top ?? axis_top(Math.max(greatest, largest_burst)), text: chart.text,
                limit: largest_burst > 0 ? { value: largest_burst, name: "largest burst" } : undefined });
        }
    }

    /** The greatest value of a chart's axis: of one memory's blocks all have the same. @param {Plotted} chart */
    greatest(chart) {
        const { head } = this.app.model;
        const metric = chart.metrics[0];
        const of = (/** @type {import("./types.d.ts").Block} */ b) => Number(head.series.max[b.series[metric]] ?? 0);
        const scale = metric === "efficiency" ? 100 : 1;
        const { block } = this.block;
        if (metric !== "bandwidth" || block.mem === "") return of(block) * scale;
        return head.kernels.reduce((most, k) => k.blocks.reduce((m, b) => b.mem === block.mem ? Math.max(m, of(b)) : m, most), 0);
    }

    /** The base's invocation of the same number, moved to the start of ours. @returns {[number, number] | null} */
    base_stretch() {
        const { stretch } = this.app;
        const ours = this.block.kernel.clock;
        const theirs = /** @type {ModelBlock} */ (this.base).kernel.clock;
        if (!ours.is_ready || !theirs.is_ready) return null;
        // Where several invocations are shown, each is where it was.
        const number = place_after(ours.start, stretch.to);
        if (number > theirs.start.length) return null;
        const move = number > 0 && number - place_after(ours.start, stretch.from) <= 1 ? theirs.start[number - 1] - ours.start[number - 1] : 0;
        return [stretch.from + move, stretch.to + move];
    }

    /** Sentence and facts of the run at once; those of a stretch when its values have come. */
    update_words() {
        const { model, stretch } = this.app;
        const turn = ++this.turn;
        const [from, to] = this.judged();
        if (!stretch.selection && stretch.is_whole()) {
            const { autorun, n } = this.block.kernel.kernel;
            this.show_words(this.block.facts, this.block.sentence, autorun ? "While its kernel had work" : "", n);
            return;
        }
        stretch_facts(model, this.app.tracks, this.block.kernel, this.block.number, [from, to]).then((facts) => {
            if (turn !== this.turn) return;
            const sentence = judge(model.rules, model.rules.rules, facts, this.block.kind);
            const shown = stretch.selection ? "Selected" : from !== stretch.from ? `Invocation ${stretch.invocation}` : "Shown";
            const time = `${shown}: ${time_text(to - from, model.unit)}, from ${time_text(from, model.unit)}`;
            const samples = Number(facts.samples ?? 0);
            this.show_words(facts, samples > 0 && is_known(facts.valid) ? sentence : { rule: "", tone: "none", text: "Nothing was measured in this stretch" }, time, samples);
        }, () => {});
    }

    /** @param {Facts} facts @param {import("./rules.js").Sentence} sentence @param {string} time @param {number} samples */
    show_words(facts, sentence, time, samples) {
        this.sentence.className = `sentence of-${sentence.tone}`;
        const few = samples < few_samples ? `${samples} sample${samples === 1 ? "" : "s"} only` : "";
        fill(this.sentence, safe_name(sentence.text) + ".", (time || few) && second([time, few].filter(Boolean).join("; ")));
        fill(this.facts, fact_rows(facts, this.block, this.app.model.fact_unit).map(([name, text]) => element("div", null, element("dt", null, name), element("dd", null, text))));
    }

    /** Least, mean, greatest, and the value at the cursor. @param {boolean} only_here */
    async update_stats(only_here) {
        const { stretch } = this.app;
        const clock = this.block.kernel.clock;
        if (!clock.is_ready) return;
        const here = stretch.cursor === null ? -1 : await this.sample_at(stretch.cursor);
        const samples = only_here ? null : await clock.samples(...this.judged());
        for (const plot of this.plots) {
            const [track] = plot.tracks;
            if (samples) plot.stats.dataset.rows = JSON.stringify(await this.summary(plot, track, samples));
            const rows = /** @type {[string, string][]} */ (JSON.parse(plot.stats.dataset.rows ?? "[]"));
            const value = here >= 0 ? track.value_at(here) : NaN;
            fill(plot.stats, [...rows, ["here", plot.chart.text(value)]].map(([name, text]) => [element("dt", null, name), element("dd", null, text)]).flat());
        }
    }

    /** @param {{chart: Plotted}} plot @param {Track} track @param {[number, number]} samples @returns {Promise<[string, string][]>} */
    async summary({ chart }, track, samples) {
        try {
            const { least, mean, greatest } = await track.summary(...samples);
            return [["min", chart.text(least)], ["mean", chart.text(mean)], ["max", chart.text(greatest)]];
        } catch (error) {
            return [["", String(/** @type {Error} */ (error).message)]];
        }
    }

    /** The sample at a time; -1 where nothing ran. @param {number} time */
    async sample_at(time) {
        const { clock } = this.block.kernel;
        const k = place_after(clock.start, time) - 1;
        if (k < 0 || time > clock.end[k]) return -1;
        const [, last] = await clock.samples(time - 1e-6, time);
        return Math.min(last - 1, clock.n - 1);
    }

    /** @param {number} samples */
    async step_cursor(samples) {
        const { stretch } = this.app;
        const { clock } = this.block.kernel;
        await clock.load();
        if (clock.n === 0) return;
        const [, last] = await clock.samples(0, stretch.cursor ?? stretch.from);
        const next = Math.min(clock.n - 1, Math.max(0, last - 1 + samples));
        const [end] = await this.app.model.store.values(this.block.kernel.kernel.time, next, next + 1);
        if (end < stretch.from || end > stretch.to) stretch.pan((end - (stretch.from + stretch.to) / 2) / (stretch.to - stretch.from));
        stretch.point(end);
    }

    update_stepper() {
        const { model, stretch } = this.app;
        const { clock } = this.block.kernel;
        const count = this.block.kernel.kernel.invocations.n;
        const shown = stretch.invocation;
        const text = shown && clock.is_ready && shown <= count ? `Invocation ${shown} of ${count}, ${time_text(clock.end[shown - 1] - clock.start[shown - 1], model.unit)}` : stretch.is_whole() ? "Whole run" : `${time_text(stretch.to - stretch.from, model.unit)} of the run`;
        fill(this.stepper, shown !== null && button({ onclick: () => stretch.show_all() }, "Whole run"),
            button({ "aria-label": "Previous invocation", onclick: () => this.app.step_invocation(-1) }, "◂"),
            element("output", null, text),
            button({ "aria-label": "Next invocation", onclick: () => this.app.step_invocation(1) }, "▸"));
    }
}

/** Where the block stands in the sources, and where that was inlined. @param {ModelBlock} block */
function chain_links(block) {
    const [chain = []] = block.block.src;
    return second(chain.flatMap((place, i) => [i > 0 ? " in " : "", place_link(place)]), block.block.src.length > 1 ? ` and ${block.block.src.length - 1} more` : "");
}

/** @param {App} app @param {number} steps in the ranking */
export function step_block(app, steps) {
    const { ranking } = app.model;
    const [kernel, block] = app.place.names;
    const shown = app.place.view === "block" ? ranking.findIndex((b) => b.kernel.name === kernel && b.block.name === block) : -1;
    const next = ranking[Math.min(ranking.length - 1, Math.max(0, shown + steps))];
    if (next) app.go(block_address(next.kernel.name, next.block.name));
}
