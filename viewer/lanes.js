// SPDX-License-Identifier: Apache-2.0
// Lanes of the timeline: invocations as bars, shares as areas, transfers stacked, memories against their peak.

import { bins_on_pixels, pixel_values } from "./chart.js";
import { Clock, place_after, Track } from "./columns.js";
import { colour } from "./dom.js";
import { time_text } from "./format.js";
import { pixels_of } from "./pixels.js";
import { Stretch } from "./range.js";
import { canvas_pen, time_places } from "./ruler.js";

/** @typedef {CanvasRenderingContext2D} Pen */

/** A canvas with the lines of time. @param {HTMLCanvasElement} canvas @param {number} height @param {Stretch} stretch */
export function lane_pen(canvas, height, stretch) {
    const made = canvas_pen(canvas, height);
    made.pen.strokeStyle = colour("rule");
    made.pen.beginPath();
    for (const time of time_places(stretch, made.width).places) {
        const x = Math.round((time - stretch.from) / (stretch.to - stretch.from) * made.width) + 0.5;
        made.pen.moveTo(x, 0);
        made.pen.lineTo(x, height);
    }
    made.pen.stroke();
    return made;
}

/** A bar with its text, if that fits. @param {Pen} pen @param {number} x @param {number} y @param {number} width @param {number} height @param {string} look @param {string[]} texts from long to short */
function draw_bar(pen, x, y, width, height, look, texts) {
    pen.fillStyle = colour(look);
    pen.fillRect(x, y, Math.max(1, width), height);
    if (width < 36) return;
    const text = texts.find((t) => pen.measureText(t).width + 10 < width);
    if (!text) return;
    pen.fillStyle = colour(look === "transfer" ? "paper" : "on-kernel");
    pen.textAlign = "left";
    pen.textBaseline = "middle";
    pen.fillText(text, x + 6, y + height / 2 + 0.5);
    pen.textBaseline = "alphabetic";
}

/**
 * Started kernels: a bar for each invocation, and below it a strip as dark as the kernel's worst block stalls.
 * @param {HTMLCanvasElement} canvas @param {number} height @param {Stretch} stretch @param {Clock} clock
 * @param {Track | undefined} stalls @param {{look: string, name: string, unit: string}} kernel
 */
export function draw_invocations(canvas, height, stretch, clock, stalls, { look, name, unit }) {
    const { pen, width } = lane_pen(canvas, height, stretch);
    if (!clock.is_ready) {
        clock.load().catch(() => {});
        return;
    }
    const scale = width / (stretch.to - stretch.from);
    const bar = height - (stalls ? 15 : 10);
    const last = place_after(clock.start, stretch.to);
    let drawn = -1;
    for (let k = place_after(clock.end, stretch.from); k < last; ++k) {
        const from = Math.max(0, (clock.start[k] - stretch.from) * scale);
        const to = Math.min(width, (clock.end[k] - stretch.from) * scale);
        if (to < drawn + 0.5) continue;
        const time = time_text(clock.end[k] - clock.start[k], unit);
        draw_bar(pen, from, 5, to - from - (to - from > 3 ? 0.5 : 0), bar, look, [`${name} ${time}`, time]);
        drawn = to;
    }
    if (!stalls) return;
    const map = pixels_of(clock, stretch.from, stretch.to, Math.round(width));
    const values = map && pixel_values(stalls, map);
    if (!values) return;
    pen.fillStyle = colour("stalled");
    for (let x = 0; x < values.mean.length; ++x) {
        if (!(values.mean[x] > 0.5)) continue;
        pen.globalAlpha = Math.min(1, 0.1 + values.mean[x] / 70);
        pen.fillRect(x, 5 + bar, 1, 5);
    }
    pen.globalAlpha = 1;
}

/** Kernels that run by themselves: the valid share as an area. @param {HTMLCanvasElement} canvas @param {number} height @param {Stretch} stretch @param {Clock} clock @param {Track | undefined} valid @param {string} look */
export function draw_area(canvas, height, stretch, clock, valid, look) {
    const { pen, width } = lane_pen(canvas, height, stretch);
    const map = valid && pixels_of(clock, stretch.from, stretch.to, Math.round(width));
    const values = map && pixel_values(valid, map);
    if (!values) return;
    pen.fillStyle = colour(look);
    for (let x = 0; x < values.mean.length; ++x) {
        const size = Math.min(100, values.mean[x]) / 100 * (height - 6);
        if (size > 0) pen.fillRect(x, height - 2 - size, 1, size);
    }
}

/**
 * Transfers of a queue; those that overlap lie on top of each other.
 * @param {HTMLCanvasElement} canvas @param {number} height @param {Stretch} stretch
 * @param {{start: number, end: number, level: number, name: string}[]} transfers by start @param {number} levels @param {string} unit
 */
export function draw_transfers(canvas, height, stretch, transfers, levels, unit) {
    const { pen, width } = lane_pen(canvas, height, stretch);
    const scale = width / (stretch.to - stretch.from);
    const size = (height - 8) / levels;
    for (const { start, end, level, name } of transfers) {
        if (end < stretch.from || start > stretch.to) continue;
        const from = Math.max(0, (start - stretch.from) * scale);
        const to = Math.min(width, (end - stretch.from) * scale);
        const time = time_text(end - start, unit);
        draw_bar(pen, from, 4 + level * size, to - from, size - (levels > 1 ? 1 : 0), "transfer", size > 12 ? [`${name} ${time}`, time] : []);
    }
}

/** Gives each transfer a level on which no other one overlaps it, at most four. @param {{start: number, end: number, level: number}[]} transfers by start @returns {number} how many levels there are */
export function stack_transfers(transfers) {
    const ends = /** @type {number[]} */ ([]);
    for (const transfer of transfers) {
        let level = ends.findIndex((end) => end <= transfer.start);
        if (level < 0) level = Math.min(ends.length, 3);
        ends[level] = Math.max(ends[level] ?? 0, transfer.end);
        transfer.level = level;
    }
    return Math.max(1, ends.length);
}

/** A memory's bandwidth against its peak. @param {HTMLCanvasElement} canvas @param {number} height @param {Stretch} stretch @param {import("./types.d.ts").Memory} memory */
export function draw_memory(canvas, height, stretch, memory) {
    const { pen, width } = lane_pen(canvas, height, stretch);
    const values = bins_on_pixels(memory.bins, stretch.span, stretch, Math.round(width));
    const top = Math.max(memory.peak ?? 0, memory.bins.reduce((a, b) => Math.max(a, b), 0)) || 1;
    const y_of = (/** @type {number} */ value) => height - 2 - value / top * (height - 10);
    pen.fillStyle = colour("memory");
    for (let x = 0; x < values.mean.length; ++x) {
        if (values.mean[x] > 0) pen.fillRect(x, y_of(values.mean[x]), 1, height - 2 - y_of(values.mean[x]));
    }
    if (!memory.peak) return;
    pen.strokeStyle = colour("peak");
    pen.setLineDash([4, 3]);
    pen.beginPath();
    pen.moveTo(0, Math.round(y_of(memory.peak)) + 0.5);
    pen.lineTo(width, Math.round(y_of(memory.peak)) + 0.5);
    pen.stroke();
    pen.setLineDash([]);
}
