// SPDX-License-Identifier: Apache-2.0
// Memories: bandwidth over time against the peak, who uses their ports, and how.

import { block_link, kernel_name } from "./bars.js";
import { axis_top, axis_width, draw_chart, right_margin } from "./chart.js";
import { bold, box, button, element, fill, safe_name, second, share_bar } from "./dom.js";
import { bandwidth_text, bytes_text, count_text, is_known, percent_text } from "./format.js";
import { percent_of } from "./metrics.js";
import { draw_ruler, make_plot, picture } from "./ruler.js";
import { make_table, name_column, number_column } from "./table.js";

/** @typedef {import("./page.js").App} App */
/** @typedef {import("./types.d.ts").Memory} Memory */

const memory_stats_width = 150;
const memory_height = 140;
/** @type {Record<string, string>} */
const directions = { r: "read", w: "write", rw: "read, write" };

/** @param {App} app @param {string[]} names of a memory, which then comes first */
export function view_memory(app, [wanted = ""]) {
    const { model } = app;
    const memories = [...model.head.memories].sort((a, b) => Number(b.name === wanted) - Number(a.name === wanted));
    const parts = memories.map((memory) => memory_part(app, memory));
    const root = [
        box("view-head", element("h1", null, bold("Memories"))),
        ...parts.map(({ root: part }) => part),
        memories.length === 0 && element("p", null, "The board of this profile names no global memory."),
    ];
    return { root, draw: (/** @type {Set<string>} */ what) => { for (const part of parts) part.draw(what); } };
}

/** @param {App} app @param {Memory} memory */
function memory_part(app, memory) {
    const { stretch, model } = app;
    const ruler = picture("Ruler of time");
    const canvas = picture(`Bandwidth of ${safe_name(memory.name)} over time`);
    const stats = element("dl", { class: "stats" });
    const plot = () => ({ left: axis_width, width: Math.max(1, surface.clientWidth - memory_stats_width - axis_width - right_margin) });
    const { surface, overlay, update } = make_plot(stretch, model.unit, plot, `Chart of ${safe_name(memory.name)}: arrow keys move the cursor`, (n) =>
        stretch.point(Math.min(stretch.to, Math.max(stretch.from, (stretch.cursor ?? stretch.from) + n * stretch.span / Math.max(1, memory.bins.length)))));
    const source = memory.by === "ports" ? "all ports of all kernels" : memory.by === "accesses" ? "accesses that name it" : "no traffic is known";
    surface.append(box("ruler-row", ruler, element("span", null)),
        box("chart-head", element("h2", null, safe_name(memory.name)), second(`${source}; peak ${bandwidth_text(memory.peak)}`),
            box("tools", button({ "aria-label": `Bandwidth of ${safe_name(memory.name)} as table`, onclick: () => app.show_bins(memory) }, "as table"))),
        box("chart-body", canvas, stats), overlay);
    const root = element("section", { class: "block", "aria-label": safe_name(memory.name) },
        box("card", surface), element("p", { class: "sentence" }, sentence_of(memory)),
        box("pair", port_table(app, memory), access_table(app, memory)));
    return { root, draw: (/** @type {Set<string>} */ what) => {
        if (what.size > Number(what.has("cursor"))) draw_ruler(ruler, stretch, model.unit, plot());
        if (what.has("stretch") || what.has("data")) {
            draw_chart(canvas, memory_height, stretch, { tracks: [], looks: ["memory"], map: undefined, stacked: false, bins: memory.bins,
                top: axis_top(Math.max(memory.peak ?? 0, memory.max ?? 0)), text: bandwidth_text,
                limit: memory.peak ? { value: memory.peak, name: `peak ${bandwidth_text(memory.peak)}` } : undefined });
        }
        update();
        show_stats(app, memory, stats);
    } };
}

/** @param {Memory} memory */
function sentence_of(memory) {
    if (memory.bins.length === 0) return "The profile has no counters of its traffic.";
    const bound = memory.lower_bound ? "at least " : "";
    const part = (/** @type {number | null} */ value) => percent_text(percent_of(value, memory.peak));
    const full = is_known(memory.full) && memory.full > 0 ? `; for ${percent_text(memory.full)} of the run at 70% or more` : "";
    return memory.peak ? `${bound}${part(memory.mean)} of its peak over the run, ${bound}${part(memory.max)} at the busiest${full}.`.replace(/^a/, "A")
        : `${bandwidth_text(memory.mean)} over the run; the board states no peak.`;
}

/** @param {App} app @param {Memory} memory @param {HTMLElement} place */
function show_stats({ stretch }, memory, place) {
    const [from, to] = stretch.selection ?? [stretch.from, stretch.to];
    const n = memory.bins.length;
    const bin = (/** @type {number} */ time) => Math.min(n - 1, Math.max(0, Math.floor(time / stretch.span * n)));
    const bins = n > 0 ? memory.bins.slice(bin(from), Math.max(bin(from) + 1, Math.ceil(to / stretch.span * n))) : [];
    const here = stretch.cursor === null || n === 0 ? NaN : memory.bins[bin(stretch.cursor)];
    const rows = /** @type {[string, number][]} */ ([["min", bins.length ? Math.min(...bins) : NaN], ["mean", bins.reduce((a, b) => a + b, 0) / bins.length], ["max", bins.length ? Math.max(...bins) : NaN], ["here", here]]);
    fill(place, rows.flatMap(([name, value]) => [element("dt", null, name), element("dd", null, bandwidth_text(value))]));
}

/** @param {App} app @param {Memory} memory */
function port_table({ model }, memory) {
    const rows = model.kernels.flatMap((kernel) => kernel.kernel.ports.filter((port) => port.mem === memory.name).map((port) => ({ kernel, port })));
    const share = (/** @type {typeof rows[0]} */ r) => percent_of(r.port.mean, memory.peak);
    return make_table({ title: `Ports of ${memory.name}`, rows, sort: 5, limit: 30, columns: [
        name_column("Kernel", (r) => r.kernel.name, (r) => kernel_name(r.kernel)),
        name_column("Port", (r) => r.port.port, (r) => element("code", null, safe_name(r.port.port))),
        name_column("Direction", (r) => directions[r.port.dir]),
        { name: "Of peak", unit: "%", hint: "while its kernel ran", value: share, cell: (r) => share_bar([["memory", share(r) ?? 0]], `${percent_text(share(r))} of the peak`) },
        number_column("", "% of peak", share, percent_text, { cell: (r) => bold(percent_text(share(r))) }),
        number_column("Mean", "MB/s", (r) => r.port.mean, bandwidth_text),
        number_column("Most", "MB/s", (r) => r.port.max, bandwidth_text),
        number_column("Moved", "B", (r) => r.port.bytes, bytes_text),
        number_column("Burst r", "words", (r) => r.port.read_burst, count_text),
        number_column("w", "words", (r) => r.port.write_burst, count_text),
    ] });
}

/** @param {App} app @param {Memory} memory */
function access_table({ model }, memory) {
    const rows = model.ranking.filter((b) => b.block.kind === "global" && b.block.mem === memory.name);
    return make_table({ title: `Accesses to ${memory.name}`, rows, sort: 2, limit: 30, columns: [
        name_column("Block", (b) => b.block.name, (b) => block_link(b)),
        { name: "Does", value: (b) => b.block.rw, cell: (b) => element("span", { class: `tag ${b.block.rw}` }, b.block.rw || "access") },
        number_column("Mean", "MB/s", (b) => b.facts.bandwidth, bandwidth_text),
        number_column("Requested", "%", (b) => b.facts.efficiency, percent_text, { hint: "bytes requested, of the bytes moved" }),
        number_column("Burst", "words", (b) => b.facts.burst, count_text),
        number_column("Stall", "%", (b) => b.facts.stall, percent_text),
    ] });
}
