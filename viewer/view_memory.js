// Memories: bandwidth over time against the peak, who uses their ports, and how.

import { block_link, kernel_name } from "./bars.js";
import { axis_top, axis_width, bins_on_pixels, draw_line, right_margin } from "./chart.js";
import { colour, element, fill, safe_name, share_bar } from "./dom.js";
import { bandwidth_text, bytes_text, count_text, is_known, percent_text, round_places } from "./format.js";
import { percent_of } from "./metrics.js";
import { canvas_pen, draw_ruler, make_plot, picture, time_places } from "./ruler.js";
import { make_table } from "./table.js";
import { number_or_none } from "./view_overview.js";

/** @typedef {import("./page.js").App} App */
/** @typedef {import("./types.d.ts").Memory} Memory */

const memory_stats_width = 150;
const memory_height = 140;
const directions = { r: "read", w: "write", rw: "read and write" };

/** @param {App} app @param {string[]} names of a memory, which then comes first */
export function view_memory(app, [wanted = ""]) {
    const { model } = app;
    const memories = [...model.head.memories].sort((a, b) => Number(b.name === wanted) - Number(a.name === wanted));
    const parts = memories.map((memory) => memory_part(app, memory));
    const root = [
        element("div", { class: "view-head" }, element("h1", null, element("b", null, "Memories"))),
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
    surface.append(element("div", { class: "ruler-row" }, ruler, element("span", null)),
        element("div", { class: "chart-head" }, element("h2", null, safe_name(memory.name)), element("span", { class: "second" }, `${source}; peak ${bandwidth_text(memory.peak)}`),
            element("div", { class: "tools" }, element("button", { type: "button", "aria-label": `Bandwidth of ${safe_name(memory.name)} as table`, onclick: () => app.show_bins(memory) }, "as table"))),
        element("div", { class: "chart-body" }, canvas, stats), overlay);
    const root = element("section", { class: "block", "aria-label": safe_name(memory.name) },
        element("div", { class: "card" }, surface), element("p", { class: "sentence" }, sentence_of(memory)),
        element("div", { class: "pair" }, port_table(app, memory), access_table(app, memory)));
    return { root, draw: (/** @type {Set<string>} */ what) => {
        if (what.has("stretch") || what.has("data")) {
            draw_ruler(ruler, stretch, model.unit, plot());
            draw_bandwidth(app, canvas, memory);
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

/** @param {App} app @param {HTMLCanvasElement} canvas @param {Memory} memory */
function draw_bandwidth({ stretch }, canvas, memory) {
    const { pen, width } = canvas_pen(canvas, memory_height);
    const plot = { left: axis_width, top: 8, width: width - axis_width - right_margin, height: memory_height - 18 };
    if (plot.width < 10) return;
    const top = axis_top(Math.max(memory.peak ?? 0, memory.bins.reduce((a, b) => Math.max(a, b), 0)));
    const y_of = (/** @type {number} */ v) => plot.top + plot.height * (1 - v / top);
    pen.strokeStyle = colour("rule");
    pen.fillStyle = colour("second");
    pen.textAlign = "right";
    pen.textBaseline = "middle";
    pen.beginPath();
    for (const time of time_places(stretch, plot.width).places) {
        const x = Math.round(plot.left + (time - stretch.from) / (stretch.to - stretch.from) * plot.width) + 0.5;
        pen.moveTo(x, plot.top);
        pen.lineTo(x, plot.top + plot.height);
    }
    for (const value of round_places(0, top, 3).places) {
        const y = Math.round(y_of(value)) + 0.5;
        pen.moveTo(plot.left, y);
        pen.lineTo(plot.left + plot.width, y);
        pen.fillText(bandwidth_text(value), plot.left - 8, y);
    }
    pen.stroke();
    pen.strokeStyle = colour("memory");
    const values = bins_on_pixels(memory.bins, stretch.span, stretch, Math.round(plot.width));
    draw_line(pen, plot, values, y_of);
    pen.fillStyle = colour("memory");
    pen.globalAlpha = 0.18;
    for (let x = 0; x < values.mean.length; ++x) if (values.mean[x] > 0) pen.fillRect(plot.left + x, y_of(values.mean[x]), 1, plot.top + plot.height - y_of(values.mean[x]));
    pen.globalAlpha = 1;
    if (memory.peak) draw_peak(pen, plot, y_of(memory.peak), `peak ${bandwidth_text(memory.peak)}`);
    pen.textBaseline = "alphabetic";
}

/** @param {CanvasRenderingContext2D} pen @param {{left: number, width: number}} plot @param {number} y @param {string} text */
function draw_peak(pen, plot, y, text) {
    const width = pen.measureText(text).width;
    pen.strokeStyle = pen.fillStyle = colour("peak");
    pen.setLineDash([4, 3]);
    pen.beginPath();
    pen.moveTo(plot.left, Math.round(y) + 0.5);
    pen.lineTo(plot.left + plot.width - width - 12, Math.round(y) + 0.5);
    pen.stroke();
    pen.setLineDash([]);
    pen.textAlign = "right";
    pen.fillText(text, plot.left + plot.width - 2, y);
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
    return make_table({ title: `Ports of ${memory.name}`, rows, sort: 5, limit: 30, columns: [
        { name: "Kernel", look: "name", value: (r) => r.kernel.name, cell: (r) => kernel_name(r.kernel) },
        { name: "Port", look: "name", value: (r) => r.port.port, cell: (r) => element("code", null, safe_name(r.port.port)) },
        { name: "Direction", value: (r) => directions[r.port.dir] },
        { name: "While its kernel ran", unit: "% of peak", value: (r) => percent_of(r.port.mean, memory.peak), cell: (r) => share_bar([["memory", percent_of(r.port.mean, memory.peak) ?? 0]], `${percent_text(percent_of(r.port.mean, memory.peak))} of the peak`) },
        { name: "Of peak", unit: "%", look: "number", value: (r) => percent_of(r.port.mean, memory.peak), cell: (r) => element("b", null, percent_text(percent_of(r.port.mean, memory.peak))) },
        { name: "Mean", unit: "MB/s", look: "number", value: (r) => r.port.mean, cell: (r) => bandwidth_text(r.port.mean) },
        { name: "Most", unit: "MB/s", look: "number", value: (r) => r.port.max, cell: (r) => bandwidth_text(r.port.max) },
        { name: "Moved", unit: "B", look: "number", value: (r) => r.port.bytes, cell: (r) => bytes_text(r.port.bytes) },
        { name: "Burst read", unit: "words", look: "number", value: (r) => r.port.read_burst, cell: (r) => count_text(r.port.read_burst) },
        { name: "written", unit: "words", look: "number", value: (r) => r.port.write_burst, cell: (r) => count_text(r.port.write_burst) },
    ] });
}

/** @param {App} app @param {Memory} memory */
function access_table({ model }, memory) {
    const rows = model.ranking.filter((b) => b.block.kind === "global" && b.block.mem === memory.name);
    const fact = (/** @type {string} */ name) => (/** @type {import("./model.js").ModelBlock} */ b) => number_or_none(b.facts[name]);
    return make_table({ title: `Accesses to ${memory.name}`, rows, sort: 2, limit: 30, columns: [
        { name: "Block", look: "name", value: (b) => b.block.name, cell: (b) => block_link(b) },
        { name: "Does", value: (b) => b.block.rw, cell: (b) => element("span", { class: `tag ${b.block.rw}` }, b.block.rw || "access") },
        { name: "Mean", unit: "MB/s", look: "number", value: fact("bandwidth"), cell: (b) => bandwidth_text(fact("bandwidth")(b)) },
        { name: "Requested", unit: "%", look: "number", hint: "bytes requested, of the bytes moved", value: fact("efficiency"), cell: (b) => percent_text(fact("efficiency")(b)) },
        { name: "Burst", unit: "words", look: "number", value: fact("burst"), cell: (b) => count_text(fact("burst")(b)) },
        { name: "Stall", unit: "%", look: "number", value: fact("stall"), cell: (b) => percent_text(fact("stall")(b)) },
    ] });
}
