// SPDX-License-Identifier: Apache-2.0
// Charts over time: shares of cycles stacked, and lines with the band between least and greatest of each pixel.

import { Track } from "./columns.js";
import { colour } from "./dom.js";
import { is_known, round_places } from "./format.js";
import { range_of } from "./pyramid.js";
import { Stretch } from "./range.js";
import { canvas_pen, time_places } from "./ruler.js";

export const axis_width = 64;
export const right_margin = 12;

/** @typedef {import("./pixels.js").PixelMap} PixelMap */
/** @typedef {{least: Float64Array, mean: Float64Array, greatest: Float64Array}} PixelValues NaN where nothing is known */

/**
 * What a chart shows.
 * @typedef {object} ChartData
 * @property {Track[]} tracks stacked from the bottom, or one line
 * @property {string[]} looks colour names of the tracks
 * @property {PixelMap | undefined} map of the ours
 * @property {Track} [base] drawn dashed below ours
 * @property {PixelMap} [base_map]
 * @property {boolean} stacked
 * @property {number} top of the y axis
 * @property {(value: number) => string} text of its values
 * @property {{value: number, name: string} | undefined} [limit] a dashed line
 * @property {number[]} [bins] means over the run, instead of tracks
 */

/**
 * Least, mean and greatest of each pixel; nothing while values are loaded.
 * @param {Track} track @param {PixelMap} map @returns {PixelValues | undefined}
 */
export function pixel_values(track, map) {
    const window = track.window(map.step, map.from, map.to);
    if (!window) return undefined;
    const { level, offset } = window;
    // A last level may stand for a coarser step than the map's.
    const factor = map.step / level.step;
    const width = map.first.length;
    const values = { least: new Float64Array(width).fill(NaN), mean: new Float64Array(width).fill(NaN), greatest: new Float64Array(width).fill(NaN) };
    for (let x = 0; x < width; ++x) {
        if (map.first[x] < 0) continue;
        if (x > 0 && map.first[x] === map.first[x - 1] && map.last[x] === map.last[x - 1]) {
            values.least[x] = values.least[x - 1];
            values.mean[x] = values.mean[x - 1];
            values.greatest[x] = values.greatest[x - 1];
            continue;
        }
        const from = Math.floor(map.first[x] * factor) - offset;
        const range = range_of(level, from, Math.max(from + 1, Math.ceil(map.last[x] * factor) - offset));
        if (range.least === Infinity) continue;
        values.least[x] = range.least;
        values.greatest[x] = range.greatest;
        values.mean[x] = range.weight > 0 ? range.sum / range.weight : (range.least + range.greatest) / 2;
    }
    return values;
}

/**
 * The axes, and what is drawn inside of them.
 * @param {HTMLCanvasElement} canvas @param {number} height @param {Stretch} stretch @param {ChartData} data
 */
export function draw_chart(canvas, height, stretch, data) {
    const { pen, width } = canvas_pen(canvas, height);
    const plot = { left: axis_width, top: 6, width: width - axis_width - right_margin, height: height - 12 };
    if (plot.width < 10) return;
    const y_of = (/** @type {number} */ value) => plot.top + plot.height * (1 - Math.min(1, Math.max(0, value / (data.top || 1))));
    draw_grid(pen, plot, stretch, data, y_of);
    if (data.bins) {
        draw_filled(pen, plot, bins_on_pixels(data.bins, stretch.span, stretch, Math.round(plot.width)), data.looks[0], y_of);
    } else if (data.map) {
        if (data.stacked) draw_stack(pen, plot, data, data.map, y_of);
        else draw_lines(pen, plot, data, data.map, y_of);
    }
    if (data.limit && data.limit.value <= data.top) draw_limit(pen, plot, data.limit, y_of);
}

/**
 * @typedef {{left: number, top: number, width: number, height: number}} Box
 * @param {CanvasRenderingContext2D} pen @param {Box} plot @param {Stretch} stretch @param {ChartData} data @param {(v: number) => number} y_of
 */
function draw_grid(pen, plot, stretch, data, y_of) {
    pen.strokeStyle = colour("rule");
    pen.lineWidth = 1;
    pen.beginPath();
    for (const time of time_places(stretch, plot.width).places) {
        const x = Math.round(plot.left + (time - stretch.from) / (stretch.to - stretch.from) * plot.width) + 0.5;
        pen.moveTo(x, plot.top);
        pen.lineTo(x, plot.top + plot.height);
    }
    pen.fillStyle = colour("second");
    pen.textAlign = "right";
    pen.textBaseline = "middle";
    for (const value of round_places(0, data.top, plot.height > 60 ? 3 : 2).places) {
        const y = Math.round(y_of(value)) + 0.5;
        pen.moveTo(plot.left, y);
        pen.lineTo(plot.left + plot.width, y);
        pen.fillText(axis_text(data.text(value)), plot.left - 8, y);
    }
    pen.stroke();
    pen.textBaseline = "alphabetic";
}

/** Shares on top of each other, and a dot where a sample of the pixel stalled far more than the rest of it. @param {CanvasRenderingContext2D} pen @param {Box} plot @param {ChartData} data @param {PixelMap} map @param {(v: number) => number} y_of */
function draw_stack(pen, plot, data, map, y_of) {
    const width = map.first.length;
    const scale = plot.width / width;
    const below = new Float64Array(width);
    data.tracks.forEach((track, k) => {
        const values = pixel_values(track, map);
        if (!values) return;
        pen.fillStyle = colour(data.looks[k]);
        for (let x = 0; x < width;) {
            const share = values.mean[x];
            if (!(share > 0)) { ++x; continue; }
            let end = x + 1;
            while (end < width && values.mean[end] === share && below[end] === below[x]) ++end;
            const y = y_of(below[x] + share);
            pen.fillRect(plot.left + x * scale, y, (end - x) * scale + 0.3, y_of(below[x]) - y);
            for (; x < end; ++x) below[x] += share;
        }
    });
    draw_base(pen, plot, data, y_of);
    const stalls = data.looks[0] === "stalled" ? pixel_values(data.tracks[0], map) : undefined;
    if (!stalls) return;
    pen.fillStyle = colour("ink");
    for (let x = 0; x < width; ++x) {
        if (stalls.greatest[x] > stalls.mean[x] + 3) pen.fillRect(plot.left + x * scale - 0.5, y_of(stalls.greatest[x]) - 0.75, 1.5, 1.5);
    }
}

/** @param {CanvasRenderingContext2D} pen @param {Box} plot @param {ChartData} data @param {PixelMap} map @param {(v: number) => number} y_of */
function draw_lines(pen, plot, data, map, y_of) {
    draw_base(pen, plot, data, y_of);
    data.tracks.forEach((track, k) => {
        const values = pixel_values(track, map);
        pen.fillStyle = pen.strokeStyle = colour(data.looks[k]);
        draw_band(pen, plot, values, y_of);
        draw_line(pen, plot, values, y_of);
    });
}

/** The base's line, dashed. @param {CanvasRenderingContext2D} pen @param {Box} plot @param {ChartData} data @param {(v: number) => number} y_of */
function draw_base(pen, plot, data, y_of) {
    if (!data.base || !data.base_map) return;
    pen.strokeStyle = colour(data.stacked ? "ink" : "base");
    pen.setLineDash([4, 3]);
    draw_line(pen, plot, pixel_values(data.base, data.base_map), y_of);
    pen.setLineDash([]);
}

/** From least to greatest. @param {CanvasRenderingContext2D} pen @param {Box} plot @param {PixelValues | undefined} values @param {(v: number) => number} y_of */
function draw_band(pen, plot, values, y_of) {
    if (!values) return;
    const scale = plot.width / values.mean.length;
    pen.globalAlpha = 0.25;
    for (let x = 0; x < values.mean.length; ++x) {
        if (!(values.greatest[x] > values.least[x])) continue;
        const y = y_of(values.greatest[x]);
        pen.fillRect(plot.left + x * scale, y, scale, Math.max(1, y_of(values.least[x]) - y));
    }
    pen.globalAlpha = 1;
}

/** The means, in steps; nothing is drawn where nothing ran. @param {CanvasRenderingContext2D} pen @param {Box} plot @param {PixelValues | undefined} values @param {(v: number) => number} y_of */
function draw_line(pen, plot, values, y_of) {
    if (!values) return;
    const scale = plot.width / values.mean.length;
    pen.lineWidth = 1.3;
    pen.beginPath();
    let drawn = false;
    for (let x = 0; x < values.mean.length; ++x) {
        const mean = values.mean[x];
        if (!is_known(mean)) { drawn = false; continue; }
        const y = y_of(mean);
        if (drawn) pen.lineTo(plot.left + x * scale, y);
        else pen.moveTo(plot.left + x * scale, y);
        drawn = true;
        while (x + 1 < values.mean.length && values.mean[x + 1] === mean) ++x;
        pen.lineTo(plot.left + (x + 1) * scale, y);
    }
    pen.stroke();
    pen.lineWidth = 1;
}

/** A line with its area. @param {CanvasRenderingContext2D} pen @param {Box} plot @param {PixelValues} values @param {string} look @param {(v: number) => number} y_of */
function draw_filled(pen, plot, values, look, y_of) {
    pen.fillStyle = pen.strokeStyle = colour(look);
    draw_line(pen, plot, values, y_of);
    pen.globalAlpha = 0.18;
    values.mean.forEach((mean, x) => {
        if (mean > 0) pen.fillRect(plot.left + x, y_of(mean), 1, y_of(0) - y_of(mean));
    });
    pen.globalAlpha = 1;
}

/** @param {CanvasRenderingContext2D} pen @param {Box} plot @param {{value: number, name: string}} limit @param {(v: number) => number} y_of */
function draw_limit(pen, plot, limit, y_of) {
    const y = Math.round(y_of(limit.value)) + 0.5;
    const width = pen.measureText(limit.name).width;
    const x = plot.left + plot.width - width - 12;
    pen.fillStyle = colour("paper");
    pen.fillRect(x - 4, y - 7, width + 8, 14);
    pen.strokeStyle = pen.fillStyle = colour("peak");
    pen.textAlign = "left";
    pen.textBaseline = "middle";
    pen.setLineDash([4, 3]);
    pen.beginPath();
    pen.moveTo(plot.left, y);
    pen.lineTo(x - 4, y);
    pen.moveTo(plot.left + plot.width - 8, y);
    pen.lineTo(plot.left + plot.width, y);
    pen.stroke();
    pen.setLineDash([]);
    pen.fillText(limit.name, x, Math.max(y, 8));
    pen.textBaseline = "alphabetic";
}

/** Round places need no zeros after the point. @param {string} text */
function axis_text(text) {
    return text.replace(/(\.\d*?)0+(?=\D|$)/, "$1").replace(/\.(?=\D|$)/, "");
}

/** An axis that ends a little above the greatest value. @param {number} greatest */
export function axis_top(greatest) {
    return greatest > 0 && Number.isFinite(greatest) ? greatest * 1.08 : 1;
}

/** A line of means over bins of the whole run, in steps. @param {number[]} bins @param {number} span @param {Stretch} stretch @param {number} width @returns {PixelValues} */
export function bins_on_pixels(bins, span, stretch, width) {
    const mean = new Float64Array(width).fill(NaN);
    const greatest = new Float64Array(width).fill(NaN);
    const per_pixel = (stretch.to - stretch.from) / span * bins.length / width;
    for (let x = 0; x < width && bins.length > 0; ++x) {
        const from = Math.min(bins.length - 1, Math.max(0, Math.floor(stretch.from / span * bins.length + x * per_pixel)));
        const to = Math.min(bins.length, Math.max(from + 1, Math.floor(stretch.from / span * bins.length + (x + 1) * per_pixel)));
        let sum = 0;
        greatest[x] = 0;
        for (let k = from; k < to; ++k) {
            sum += bins[k];
            if (bins[k] > greatest[x]) greatest[x] = bins[k];
        }
        mean[x] = sum / (to - from);
    }
    return { least: mean, mean, greatest };
}
