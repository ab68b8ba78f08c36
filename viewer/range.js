// SPDX-License-Identifier: Apache-2.0
// The stretch of time that all views share, what is selected in it, and the hands on it.

/** A stretch shorter than this looks like a point. */
const shortest = 1e-3;

export class Stretch {
    /** @param {number} span of the run */
    constructor(span) {
        this.span = span > 0 ? span : 1;
        this.from = 0;
        this.to = this.span;
        /** @type {[number, number] | null} */
        this.selection = null;
        /** Where the pointer is; null if it is nowhere. @type {number | null} */
        this.cursor = null;
        /** The invocation that is shown, counted from 1; null: the whole run. @type {number | null} */
        this.invocation = null;
        /** @type {Set<(what: "stretch" | "selection" | "cursor") => void>} */
        this.listeners = new Set();
    }

    /** @param {"stretch" | "selection" | "cursor"} what */
    changed(what) {
        for (const listener of this.listeners) listener(what);
    }

    is_whole() {
        return this.from <= 0 && this.to >= this.span;
    }

    /** Shows a stretch, cut at the ends of the run. @param {number} from @param {number} to */
    show(from, to) {
        const length = Math.min(this.span, Math.max(to - from, shortest));
        this.from = Math.min(Math.max(0, from), this.span - length);
        this.to = this.from + length;
        this.changed("stretch");
    }

    show_all() {
        this.invocation = null;
        this.show(0, this.span);
    }

    /** Zooms in with a factor below 1, around a place or the middle. @param {number} factor @param {number | null} [around] */
    zoom(factor, around = this.cursor) {
        const centre = around !== null && around >= this.from && around <= this.to ? around : (this.from + this.to) / 2;
        const length = Math.min(this.span, Math.max(shortest, (this.to - this.from) * factor));
        const part = (centre - this.from) / (this.to - this.from);
        this.show(centre - part * length, centre + (1 - part) * length);
    }

    /** @param {number} part of what is shown, negative to the left */
    pan(part) {
        const move = (this.to - this.from) * part;
        this.show(this.from + move, this.to + move);
    }

    /** @param {number} a @param {number} b */
    select(a, b) {
        const from = Math.max(0, Math.min(a, b));
        const to = Math.min(this.span, Math.max(a, b));
        this.selection = to - from > 0 ? [from, to] : null;
        this.changed("selection");
    }

    clear_selection() {
        this.selection = null;
        this.changed("selection");
    }

    show_selection() {
        if (!this.selection) return;
        const [from, to] = this.selection;
        this.show(from, to);
    }

    /** @param {number | null} time */
    point(time) {
        if (time === this.cursor) return;
        this.cursor = time;
        this.changed("cursor");
    }
}

/**
 * Mouse, wheel and touch on a chart: drag selects, with Shift it pans; the wheel zooms with Ctrl and pans with Shift or
 * sideways, as touch pads do.
 * @param {HTMLElement} surface @param {Stretch} stretch
 * @param {() => {left: number, width: number}} plot where time runs, in pixels of the surface
 */
export function put_hands_on(surface, stretch, plot) {
    const time_at = (/** @type {MouseEvent} */ event) => {
        const { left, width } = plot();
        const x = event.clientX - surface.getBoundingClientRect().left - left;
        return stretch.from + Math.min(1, Math.max(0, x / width)) * (stretch.to - stretch.from);
    };
    /** @type {{time: number, x: number, pans: boolean} | null} */
    let drag = null;
    surface.addEventListener("pointerdown", (event) => {
        // Buttons and links on the surface keep their clicks.
        if (event.button !== 0 || (event.target instanceof Element && event.target.closest("button, a"))) return;
        drag = { time: time_at(event), x: event.clientX, pans: event.shiftKey };
        surface.setPointerCapture(event.pointerId);
    });
    surface.addEventListener("pointermove", (event) => {
        if (drag?.pans) {
            stretch.pan((drag.x - event.clientX) / plot().width);
            drag.x = event.clientX;
        } else if (drag && Math.abs(event.clientX - drag.x) > 3) {
            stretch.select(drag.time, time_at(event));
        }
        stretch.point(time_at(event));
    });
    const stop = () => { drag = null; };
    surface.addEventListener("pointerup", (event) => {
        const clicked = drag && !drag.pans && Math.abs(event.clientX - drag.x) <= 3;
        stop();
        if (clicked && stretch.selection) stretch.clear_selection();
    });
    surface.addEventListener("pointercancel", stop);
    surface.addEventListener("pointerleave", () => stretch.point(null));
    surface.addEventListener("wheel", (event) => {
        const sideways = event.shiftKey ? event.deltaY || event.deltaX : event.deltaX;
        if (event.ctrlKey) stretch.zoom(1.0015 ** event.deltaY, time_at(event));
        else if (event.shiftKey || Math.abs(event.deltaX) > Math.abs(event.deltaY)) stretch.pan(sideways / plot().width);
        else return;
        event.preventDefault();
    }, { passive: false });
}
