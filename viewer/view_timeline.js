// SPDX-License-Identifier: Apache-2.0
// The timeline: what ran when, in lanes; below it what ran in the selected stretch.

import { block_link, kernel_name } from "./bars.js";
import { place_after } from "./columns.js";
import { after_rest, bold, box, button, element, fill, kernel_mark, mark, safe_name, second } from "./dom.js";
import { bandwidth_text, count_text, is_known, percent_text, time_text } from "./format.js";
import { draw_area, draw_invocations, draw_memory, draw_transfers, stack_transfers } from "./lanes.js";
import { percent_of } from "./metrics.js";
import { draw_ruler, make_plot, picture, ruler_height } from "./ruler.js";
import { make_table, name_column, number_column } from "./table.js";
import { busiest_block } from "./view_overview.js";

/** @typedef {import("./page.js").App} App */
/** @typedef {import("./model.js").ModelKernel} ModelKernel */
/** @typedef {{kernel?: ModelKernel, name: import("./dom.js").Child[], detail: string, height: number, label: string, draw: (canvas: HTMLCanvasElement) => void}} Lane */
/** @typedef {{start: number, end: number, level: number, name: string, queue: number}} Transfer */
/** @typedef {{autorun: boolean, mark: import("./dom.js").Child, name: string, count: number, time: number, stall: import("./dom.js").Child[], stall_text: string}} Row */

const name_width = 184;
const most_kernels = 40;

/** @param {App} app */
export function view_timeline(app) {
    const { model, stretch } = app;
    const place = box("lanes");
    const ruler = picture("Ruler of time");
    const selected = second();
    const plot = () => ({ left: name_width, width: Math.max(1, place.clientWidth - name_width) });
    const { surface, overlay, update } = make_plot(stretch, model.unit, plot, "Lanes of the timeline: arrow keys move the cursor", (steps) => {
        stretch.point(Math.min(stretch.to, Math.max(stretch.from, (stretch.cursor ?? stretch.from) + steps * (stretch.to - stretch.from) / 200)));
    });
    const queues = new Queues(app);
    /** @type {{lane: Lane, canvas: HTMLCanvasElement}[]} */
    let drawn = [];
    let shows_all = false;
    const build = () => {
        const { groups, hidden } = lanes_of(app, queues, shows_all);
        drawn = [];
        const rows = groups.filter(([, lanes]) => lanes.length > 0).flatMap(([title, lanes]) => [
            box("lane lane-group", box("lane-name", title), element("div", null)),
            ...lanes.map((lane) => {
                const canvas = picture(lane.label);
                drawn.push({ lane, canvas });
                return box("lane", box("lane-name", lane.name, second(lane.detail)), canvas);
            })]);
        fill(place, box("lane", box("lane-name"), ruler), rows,
            hidden > 0 && button({ onclick: () => { shows_all = true; build(); app.changed(); } }, `Show all: ${hidden} more kernels`));
    };
    build();
    // A double click selects the invocation.
    surface.addEventListener("dblclick", (event) => {
        const under = document.elementFromPoint(event.clientX, event.clientY);
        const clock = drawn.find(({ canvas }) => canvas === under)?.lane.kernel?.clock;
        const k = clock && stretch.cursor !== null ? place_after(clock.start, stretch.cursor) - 1 : -1;
        if (clock && k >= 0 && Number(stretch.cursor) <= clock.end[k]) stretch.select(clock.start[k], clock.end[k]);
    });
    surface.append(place, overlay);
    const below = new StretchTable(app, queues);
    const update_below = after_rest(() => below.update());
    const root = [
        box("view-head", element("h1", null, bold("Timeline")), selected,
            box("tools hint", keys_hint("W", "S"), "zoom", keys_hint("A", "D"), "pan", keys_hint("F"), "fit", keys_hint("R"), "zoom to selection")),
        element("section", { class: "card", "aria-label": "Lanes" }, surface),
        below.root,
    ];
    return {
        root,
        draw(/** @type {Set<string>} */ what) {
            if (what.has("stretch") || what.has("data")) {
                if (queues.is_new()) build();
                for (const { lane, canvas } of drawn) lane.draw(canvas);
            }
            if (what.size > Number(what.has("cursor"))) draw_ruler(ruler, stretch, model.unit, { left: 0, width: plot().width });
            update();
            const chosen = stretch.selection;
            fill(selected, chosen ? `Selected: ${time_text(chosen[1] - chosen[0], model.unit)}, from ${time_text(chosen[0], model.unit)}`
                : stretch.is_whole() ? "The whole run" : `${time_text(stretch.to - stretch.from, model.unit)}, from ${time_text(stretch.from, model.unit)}`);
            if (what.has("stretch") || what.has("selection") || what.has("data")) update_below();
        },
    };
}

/** @param {...string} keys */
function keys_hint(...keys) {
    return keys.map((key) => element("kbd", null, key));
}

/** Transfers by queue, loaded once. */
class Queues {
    /** @param {App} app */
    constructor({ model, changed }) {
        const { transfers } = model.head;
        /** @type {Map<number, {transfers: Transfer[], levels: number}>} */
        this.by_queue = new Map([...new Set(transfers.totals.map(([, queue]) => queue))].sort((a, b) => a - b).map((queue) => [queue, { transfers: [], levels: 1 }]));
        this.fresh = false;
        if (transfers.n > 0) this.load(model).then(changed, changed);
    }

    /** @param {App["model"]} model */
    async load(model) {
        const { types, type, queue, start, end } = model.head.transfers;
        const [kinds, numbers, starts, ends] = await Promise.all([type, queue, start, end].map((id) => model.store.values(id)));
        starts.forEach((time, i) => {
            const name = safe_name(types[kinds[i]] ?? "").replace(/^\.(mem_transfer_)?/, "");
            this.by_queue.get(numbers[i])?.transfers.push({ start: time, end: ends[i], level: 0, name, queue: numbers[i] });
        });
        for (const lane of this.by_queue.values()) {
            lane.transfers.sort((a, b) => a.start - b.start);
            lane.levels = stack_transfers(lane.transfers);
        }
        this.fresh = true;
    }

    /** Whether transfers have come since the last call. */
    is_new() {
        const fresh = this.fresh;
        this.fresh = false;
        return fresh;
    }
}

/** @param {App} app @param {Queues} queues @param {boolean} shows_all @returns {{groups: [string, Lane[]][], hidden: number}} */
function lanes_of(app, queues, shows_all) {
    const { model } = app;
    const started = model.kernels.filter((k) => !k.kernel.autorun).sort((a, b) => b.kernel.total - a.kernel.total);
    const shown = shows_all ? started : started.slice(0, most_kernels);
    return { hidden: started.length - shown.length, groups: [
        ["Kernels", shown.map((kernel) => invocation_lane(app, kernel))],
        ["Run by themselves", model.kernels.filter((k) => k.kernel.autorun).map((kernel) => area_lane(app, kernel))],
        ["Transfers", [...queues.by_queue].map(([queue, lane]) => transfer_lane(app, queue, lane))],
        ["Memories", model.head.memories.map((memory) => memory_lane(app, memory))],
    ] };
}

/** The block of a kernel that stalls most. @param {ModelKernel} kernel */
function most_stalled(kernel) {
    return kernel.blocks.reduce((/** @type {import("./model.js").ModelBlock | null} */ best, b) =>
        is_known(b.facts.stall) && b.facts.stall > Number(best?.facts.stall ?? 0) ? b : best, null);
}

/** @param {App} app @param {ModelKernel} kernel @returns {Lane} */
function invocation_lane({ model, stretch, tracks }, kernel) {
    const worst = most_stalled(kernel);
    const stalls = worst ? tracks.of_block(kernel, worst.number, "stall") : undefined;
    const name = safe_name(kernel.name);
    const detail = `${kernel.kernel.invocations.n} × ${time_text(kernel.kernel.median, model.unit)}`;
    return { kernel, name: [kernel_name(kernel, true)[1]], detail, height: 35, label: `${name}: ${detail}`,
        draw: (canvas) => draw_invocations(canvas, 35, stretch, kernel.clock, stalls, { look: `k${kernel.number % 8}`, name, unit: model.unit }) };
}

/** @param {App} app @param {ModelKernel} kernel @returns {Lane} */
function area_lane({ stretch, tracks }, kernel) {
    const block = busiest_block(kernel);
    const valid = block ? tracks.of_block(kernel, block.number, "valid") : undefined;
    const detail = block ? `valid ${percent_text(Number(block.facts.valid))} while it works` : "no counters";
    return { name: [kernel_name(kernel, true)[1]], detail, height: 33, label: `${safe_name(kernel.name)}: ${detail}`,
        draw: (canvas) => draw_area(canvas, 33, stretch, kernel.clock, valid, `k${kernel.number % 8}`) };
}

/** @param {App} app @param {number} queue @param {{transfers: Transfer[], levels: number}} lane @returns {Lane} */
function transfer_lane({ model, stretch }, queue, lane) {
    const detail = `${lane.transfers.length} transfer${lane.transfers.length === 1 ? "" : "s"}`;
    const height = 33 + 9 * (lane.levels - 1);
    return { name: [`queue ${queue}`], detail, height, label: `Queue ${queue}: ${detail}`,
        draw: (canvas) => draw_transfers(canvas, height, stretch, lane.transfers, lane.levels, model.unit) };
}

/** @param {App} app @param {import("./types.d.ts").Memory} memory @returns {Lane} */
function memory_lane({ stretch }, memory) {
    const detail = memory.bins.length === 0 ? "no traffic is known" : `peak ${bandwidth_text(memory.peak)}`;
    return { name: [safe_name(memory.name)], detail, height: 42, label: `${safe_name(memory.name)}: ${detail}`,
        draw: (canvas) => draw_memory(canvas, 42, stretch, memory) };
}

/** What ran in the selected stretch, or in the one that is shown. */
class StretchTable {
    /** @param {App} app @param {Queues} queues */
    constructor(app, queues) {
        this.app = app;
        this.queues = queues;
        this.turn = 0;
        this.root = element("div", null);
    }

    update() {
        const { stretch, model } = this.app;
        const [from, to] = stretch.selection ?? [stretch.from, stretch.to];
        const title = stretch.selection ? "In the selected stretch" : "In the stretch shown";
        const turn = ++this.turn;
        this.rows(from, to).then((rows) => {
            if (turn !== this.turn) return;
            // What always runs comes last.
            rows.sort((a, b) => Number(a.autorun) - Number(b.autorun) || b.time - a.time);
            fill(this.root, rows.length === 0 ? second("Nothing ran.") : make_table({ title, rows, limit: 20, columns: [
                name_column("What ran", (r) => r.name, (r) => [r.mark, safe_name(r.name)]),
                number_column("Count", "", (r) => r.count, count_text),
                number_column("Time", model.unit, (r) => r.time, (v) => time_text(v, model.unit)),
                number_column("Share", "%", (r) => percent_of(r.time, to - from), percent_text),
                { name: "Worst block stalls", look: "number", value: (r) => r.stall_text, cell: (r) => r.stall },
            ] }));
        }, () => {});
    }

    /** @param {number} from @param {number} to @returns {Promise<Row[]>} */
    async rows(from, to) {
        const { model } = this.app;
        const kernels = await Promise.all(model.kernels.map((kernel) => this.kernel_row(kernel, from, to)));
        const queues = [...this.queues.by_queue].map(([queue, { transfers }]) => {
            const inside = transfers.filter((t) => t.end > from && t.start < to);
            return { autorun: false, mark: mark("transfer"), name: `queue ${queue}`, count: inside.length, time: inside.reduce((s, t) => s + Math.min(t.end, to) - Math.max(t.start, from), 0), stall: [], stall_text: "" };
        });
        return [...kernels, ...queues].filter((row) => row !== null && row.count > 0).map((row) => /** @type {Row} */ (row));
    }

    /** @param {ModelKernel} kernel @param {number} from @param {number} to @returns {Promise<Row | null>} */
    async kernel_row(kernel, from, to) {
        const clock = await kernel.clock.load();
        const first = place_after(clock.end, from);
        const last = place_after(clock.start, to);
        if (last <= first) return null;
        let time = 0;
        for (let k = first; k < last; ++k) time += Math.max(0, Math.min(clock.end[k], to) - Math.max(clock.start[k], from));
        const samples = await clock.samples(from, to);
        const worst = await this.worst(kernel, samples);
        return { autorun: kernel.kernel.autorun, mark: kernel_mark(kernel.number), name: kernel.name, count: last - first, time,
            stall: worst ? [block_link(worst.block, "second"), " ", bold(percent_text(worst.stall))] : [], stall_text: worst ? `${worst.block.block.name} ${percent_text(worst.stall)}` : "" };
    }

    /** The block that stalls most in the stretch, of the eight that stall most in the run. @param {ModelKernel} kernel @param {[number, number]} samples */
    async worst(kernel, samples) {
        // An autorun kernel that waits for work isn't held up.
        const blocks = kernel.blocks.filter((b) => is_known(b.facts.stall) && !(kernel.kernel.autorun && b.kind === "channel read")).sort((a, b) => Number(b.facts.stall) - Number(a.facts.stall)).slice(0, 8);
        const stalls = await Promise.all(blocks.map(async (block) => ({ block, stall: (await this.app.tracks.of_block(kernel, block.number, "stall")?.summary(...samples))?.mean ?? NaN })));
        return stalls.filter(({ stall }) => is_known(stall)).sort((a, b) => b.stall - a.stall)[0] ?? null;
    }
}
