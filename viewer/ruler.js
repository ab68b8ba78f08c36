// SPDX-License-Identifier: Apache-2.0
// The ruler of time above charts and lanes; selection and cursor, which lie over all of them; and canvases.

import { box, colour, element, fill } from "./dom.js";
import { round_places, ruler_texts, time_text } from "./format.js";
import { put_hands_on, Stretch } from "./range.js";

export const ruler_height = 26;
const small_font = "11.5px Inter, 'Segoe UI', system-ui, sans-serif";

/**
 * A canvas in device pixels, sized by its place on the page, with its pen in CSS pixels.
 * @param {HTMLCanvasElement} canvas @param {number} height
 */
export function canvas_pen(canvas, height) {
    const ratio = window.devicePixelRatio || 1;
    const width = canvas.clientWidth;
    if (canvas.width !== Math.round(width * ratio) || canvas.height !== Math.round(height * ratio)) {
        canvas.width = Math.round(width * ratio);
        canvas.height = Math.round(height * ratio);
        canvas.style.height = `${height}px`;
    }
    const pen = /** @type {CanvasRenderingContext2D} */ (canvas.getContext("2d"));
    pen.setTransform(ratio, 0, 0, ratio, 0, 0);
    pen.clearRect(0, 0, width, height);
    pen.font = small_font;
    return { pen, width, ratio };
}

/** @param {string} label */
export function picture(label) {
    return element("canvas", { role: "img", "aria-label": label });
}

/** Places of the lines of time. @param {Stretch} stretch @param {number} width */
export function time_places(stretch, width) {
    return round_places(stretch.from, stretch.to, Math.max(2, width / 130));
}

/** The middle of what is seen of a selection. @param {[number, number]} selection @param {Stretch} stretch */
function middle_of([from, to], stretch) {
    return (Math.max(from, stretch.from) + Math.min(to, stretch.to)) / 2;
}

/** @param {HTMLCanvasElement} canvas @param {Stretch} stretch @param {string} unit @param {{left: number, width: number}} plot */
export function draw_ruler(canvas, stretch, unit, plot) {
    const { pen, width } = canvas_pen(canvas, ruler_height);
    if (!(plot.width > 0)) return;
    const { step, places } = time_places(stretch, plot.width);
    pen.fillStyle = colour("second");
    pen.strokeStyle = colour("strong");
    pen.textAlign = "center";
    const chosen = stretch.selection;
    // The length of the selection stands in their line.
    const taken = chosen ? plot.left + (middle_of(chosen, stretch) - stretch.from) / (stretch.to - stretch.from) * plot.width : -Infinity;
    ruler_texts(places, step, unit).forEach((text, i) => {
        const x = plot.left + (places[i] - stretch.from) / (stretch.to - stretch.from) * plot.width;
        const half = pen.measureText(text).width / 2;
        if (x + half < width && x - half > 0 && Math.abs(x - taken) > half + 32) pen.fillText(text, x, 16);
        pen.beginPath();
        pen.moveTo(x, 21);
        pen.lineTo(x, ruler_height);
        pen.stroke();
    });
}

/**
 * A place for charts below one ruler: the hands work on it, and selection and cursor lie over it.
 * @param {Stretch} stretch @param {string} unit @param {() => {left: number, width: number}} plot in pixels of the surface
 * @param {string} label @param {(samples: number) => void} step_cursor moves the cursor by samples
 */
export function make_plot(stretch, unit, plot, label, step_cursor) {
    const selection = box("selection hidden");
    const length = box("length hidden");
    const cursor = box("cursor hidden");
    const at_cursor = box("length at hidden");
    const surface = element("div", { class: "plot", tabindex: "0", role: "group", "aria-label": label });
    const overlay = element("div", { class: "overlay", "aria-hidden": "true" }, selection, cursor, length, at_cursor);
    put_hands_on(surface, stretch, plot);
    surface.addEventListener("keydown", (event) => {
        const direction = event.key === "ArrowLeft" ? -1 : event.key === "ArrowRight" ? 1 : 0;
        if (direction === 0 || event.target !== surface || event.ctrlKey || event.altKey || event.metaKey) return;
        step_cursor(direction * (event.shiftKey ? 10 : 1));
        event.preventDefault();
    });
    const place = (/** @type {number} */ time) => {
        const { left, width } = plot();
        return left + (time - stretch.from) / (stretch.to - stretch.from) * width;
    };
    const update = () => {
        const { left, width } = plot();
        const chosen = stretch.selection;
        const a = chosen ? Math.max(left, place(chosen[0])) : 0;
        const b = chosen ? Math.min(left + width, place(chosen[1])) : -1;
        selection.classList.toggle("hidden", b < a);
        length.classList.toggle("hidden", b < a);
        if (chosen && b >= a) {
            selection.style.transform = `translateX(${a}px)`;
            selection.style.width = `${Math.max(1, b - a)}px`;
            length.style.left = `${place(middle_of(chosen, stretch))}px`;
            fill(length, time_text(chosen[1] - chosen[0], unit));
        }
        const at = stretch.cursor;
        const seen = at !== null && at >= stretch.from && at <= stretch.to;
        cursor.classList.toggle("hidden", !seen);
        at_cursor.classList.toggle("hidden", !seen);
        if (!seen) return;
        cursor.style.transform = `translateX(${place(at)}px)`;
        at_cursor.style.left = `${place(at)}px`;
        fill(at_cursor, time_text(at, unit));
    };
    return { surface, overlay, update };
}
