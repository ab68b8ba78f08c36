// SPDX-License-Identifier: Apache-2.0
// The frame: reads the data of the page, shows a view for each address, and lets all views share one stretch.

import { address_of, parse_address } from "./address.js";
import { place_after } from "./columns.js";
import { announce, bold, box, button, element, fill, safe_name, second } from "./dom.js";
import { time_text } from "./format.js";
import { show_keys, start_keys } from "./keys.js";
import { Model } from "./model.js";
import { Stretch } from "./range.js";
import { plain_table, show_window } from "./samples.js";
import { make_search } from "./search.js";
import { bytes_of_base64, chunks_of_page, inflate_in_browser, SeriesStore } from "./series.js";
import { Tracks } from "./stretch_facts.js";
import { copy_tools, table_row } from "./table.js";
import { start_theme } from "./theme.js";
import { step_block, view_block } from "./view_block.js";
import { view_compare } from "./view_compare.js";
import { view_memory } from "./view_memory.js";
import { view_overview } from "./view_overview.js";
import { view_source } from "./view_source.js";
import { view_timeline } from "./view_timeline.js";

/** @typedef {{root: import("./dom.js").Child[], draw: (what: Set<string>) => void}} View */

const format_number = 1;
const zoom_step = 0.6;
const pan_step = 0.2;
/** @type {[string, string, (app: App, names: string[]) => View][]} */
const views = [
    ["overview", "Overview", view_overview], ["timeline", "Timeline", view_timeline], ["block", "Blocks", view_block],
    ["source", "Source", view_source], ["memory", "Memory", view_memory], ["compare", "Comparison", view_compare],
];

export class App {
    /** @param {import("./types.d.ts").Head} head @param {import("./types.d.ts").Head | null} base @param {import("./rules.js").RuleTable} rules */
    constructor(head, base, rules) {
        this.changed = () => this.redraw("data");
        this.model = new Model(head, rules, new SeriesStore(head.series, chunks_of_page("d")), this.changed);
        this.base = base && new Model(base, rules, new SeriesStore(base.series, chunks_of_page("b")), this.changed);
        this.tracks = new Tracks();
        this.base_tracks = this.base && new Tracks();
        this.stretch = new Stretch(head.run.span);
        this.fragment = "";
        this.place = parse_address("");
        /** @type {View | null} */
        this.view = null;
        /** @type {Set<string>} what has changed since the last frame */
        this.waiting = new Set();
        this.fault = element("div", { class: "banner hidden", role: "alert" });
    }

    start() {
        this.theme = start_theme(() => this.redraw("data"), () => this.view?.draw(new Set(["data"])));
        this.search = make_search(this);
        this.main = element("main", { id: "view", tabindex: "-1" });
        this.tabs = element("nav", { class: "tabs", "aria-label": "Views" });
        const { reduced } = this.model.head.run;
        fill(/** @type {HTMLElement} */ (document.getElementById("page")), this.top_bar(), this.fault,
            reduced > 1 && box("banner", `Each point stands for ${reduced} samples; every peak is kept.`), this.main);
        document.getElementById("wait")?.remove();
        this.stretch.listeners.add((what) => {
            if (what === "stretch") this.forget_invocation();
            this.redraw(what);
            if (what !== "cursor") this.follow_address();
        });
        addEventListener("hashchange", () => this.show(location.hash));
        new ResizeObserver(() => this.redraw("data")).observe(this.main);
        this.start_keys();
        this.show(location.hash);
    }

    top_bar() {
        const { run } = this.model.head;
        const facts = [run.board, this.model.clock ? `${this.model.clock} MHz` : "", run.span > 0 ? time_text(run.span, this.model.unit) : ""].filter(Boolean);
        const name = (/** @type {string} */ report) => safe_name(report.replace(/\.json$/, ""));
        const theme_button = button({ title: "Automatic, light, dark (T)", onclick: () => this.next_theme() }, this.theme?.name() ?? "");
        this.theme_button = theme_button;
        return element("header", { class: "top" },
            box("run-name", bold(name(run.report)), this.base && ` against ${name(this.base.head.run.report)}`, second(safe_name(facts.join(" · ")))),
            this.tabs ?? null, this.search?.place, theme_button, button({ "aria-label": "Keys", onclick: show_keys }, "?"));
    }

    next_theme() {
        this.theme?.next();
        if (this.theme_button) fill(this.theme_button, this.theme?.name());
        announce(`Theme: ${this.theme?.name()}`);
    }

    /** Shows what an address names. @param {string} fragment */
    show(fragment) {
        const place = parse_address(fragment);
        this.fragment = fragment;
        // The number of an invocation is its kernel's.
        if (place.view === "block" && this.place.names[0] !== place.names[0]) this.stretch.invocation = null;
        const same = this.view && place.view === this.place.view && place.names.join("/") === this.place.names.join("/");
        this.place = place;
        const { stretch } = this;
        if (place.stretch) [stretch.from, stretch.to] = [Math.max(0, place.stretch[0]), Math.min(stretch.span, place.stretch[1])];
        if (!(stretch.to > stretch.from)) [stretch.from, stretch.to] = [0, stretch.span];
        if (place.selection) stretch.selection = place.selection;
        if (place.invocation) stretch.invocation = place.invocation;
        if (!same) this.build();
        if (place.invocation && !place.stretch) this.show_invocation(place.invocation);
        this.redraw("stretch");
        this.follow_address();
    }

    build() {
        const { view, names } = this.place;
        const [, title, make] = views.find(([name]) => name === view) ?? views[0];
        document.title = `${title} – ${safe_name(this.model.head.run.report)}`;
        this.view = make(this, names);
        const main = /** @type {HTMLElement} */ (this.main);
        fill(main, this.view.root);
        if (view !== "source") scrollTo(0, 0);
        // What had the focus may be gone.
        if (document.activeElement === document.body) main.focus({ preventScroll: true });
        const tabs = views.filter(([name]) => name !== "compare" || this.base);
        if (this.tabs) fill(this.tabs, tabs.map(([name, text]) => element("a", { href: this.address(name), "aria-current": name === view ? "page" : null }, text)));
    }

    /** The address of a view with the stretch, selection and invocation of now. @param {string} view @param {string[]} [names] */
    address(view, names = []) {
        const { stretch } = this;
        return address_of({ view, names, stretch: stretch.is_whole() ? null : [stretch.from, stretch.to], selection: stretch.selection, invocation: stretch.invocation });
    }

    /** @param {string} address */
    go(address) {
        location.hash = address;
    }

    /** The address follows, but not faster than browsers allow. */
    follow_address() {
        clearTimeout(this.address_timer);
        this.address_timer = setTimeout(() => {
            // A link that was followed just now is shown first.
            if (location.hash !== this.fragment) return;
            history.replaceState(null, "", this.address(this.place.view, this.place.names));
            this.fragment = location.hash;
            for (const tab of this.tabs?.querySelectorAll("a") ?? []) {
                const [name] = views.find(([, title]) => title === tab.textContent) ?? ["overview"];
                tab.setAttribute("href", this.address(name));
            }
        }, 200);
    }

    /** Draws what has changed with the next frame. @param {string} what */
    redraw(what) {
        this.waiting.add(what);
        if (this.frame) return;
        this.frame = requestAnimationFrame(() => {
            this.frame = 0;
            const changes = this.waiting;
            this.waiting = new Set();
            this.view?.draw(changes);
            const fault = this.model.store.fault || this.base?.store.fault;
            this.fault.classList.toggle("hidden", !fault);
            if (fault) fill(this.fault, `Not all of the data could be read: ${fault}.`);
        });
    }

    /** The text of a source file; null if it isn't in the page. @param {string} file */
    async source_text(file) {
        const chunk = Object.hasOwn(this.model.head.sources, file) ? this.model.head.sources[file] : -1;
        if (chunk < 0) return null;
        return new TextDecoder().decode(await inflate_in_browser(await this.model.store.packed_chunk(chunk)));
    }

    /** The times of the kernel whose invocations one steps through. */
    stepped_clock() {
        const block = this.model.find_block(this.place.names[0] ?? "", this.place.names[1] ?? "") ?? this.model.answers.culprit;
        return (block?.kernel ?? this.model.answers.leader)?.clock;
    }

    /** From the invocation that is shown, or the one in the middle. @param {number} steps */
    async step_invocation(steps) {
        const { stretch } = this;
        const clock = await this.stepped_clock()?.load();
        const near = clock ? place_after(clock.start, (stretch.from + stretch.to) / 2) : 0;
        this.show_invocation(stretch.is_whole() ? 1 : (stretch.invocation ?? near) + steps);
    }

    /** What one has moved away from isn't shown any more. */
    forget_invocation() {
        const { stretch } = this;
        const k = Number(stretch.invocation) - 1;
        const clock = this.stepped_clock();
        if (stretch.is_whole() || (clock?.is_ready && (clock.start[k] >= stretch.to || clock.end[k] <= stretch.from))) stretch.invocation = null;
    }

    /** Shows an invocation of the block's kernel. @param {number} number counted from 1 */
    async show_invocation(number) {
        const clock = await this.stepped_clock()?.load();
        if (!clock || clock.start.length === 0) return;
        const { stretch } = this;
        const k = Math.min(clock.start.length, Math.max(1, number)) - 1;
        const margin = 0.04 * (clock.end[k] - clock.start[k]);
        stretch.invocation = k + 1;
        stretch.show(clock.start[k] - margin, clock.end[k] + margin);
    }

    /** The bins of a memory as a table. @param {import("./types.d.ts").Memory} memory */
    show_bins(memory) {
        const width = this.stretch.span / Math.max(1, memory.bins.length);
        const rows = memory.bins.map((rate, k) => [k * width, (k + 1) * width, rate]).filter(([from, to]) => to > this.stretch.from && from < this.stretch.to);
        const { unit } = this.model;
        const columns = [
            { name: "From", unit, look: "number", value: (/** @type {number[]} */ r) => r[0], cell: (/** @type {number[]} */ r) => time_text(r[0], unit) },
            { name: "To", unit, look: "number", value: (/** @type {number[]} */ r) => r[1], cell: (/** @type {number[]} */ r) => time_text(r[1], unit) },
            { name: "Mean", unit: "MB/s", look: "number", value: (/** @type {number[]} */ r) => r[2] },
        ];
        const title = `Bandwidth of ${safe_name(memory.name)}`;
        show_window(title, box("stepper", copy_tools(title, columns, () => rows)), plain_table(columns, element("tbody", null, rows.map((row) => table_row(columns, row)))));
    }

    start_keys() {
        const { stretch } = this;
        const escape = () => { if (stretch.selection) stretch.clear_selection(); };
        const go_view = (/** @type {string} */ view) => () => { if (view !== "compare" || this.base) this.go(this.address(view)); };
        start_keys({
            w: () => stretch.zoom(zoom_step), s: () => stretch.zoom(1 / zoom_step), a: () => stretch.pan(-pan_step), d: () => stretch.pan(pan_step),
            f: () => stretch.show_all(), r: () => stretch.show_selection(), t: () => this.next_theme(), "?": show_keys, "/": () => this.search?.input.focus(), Escape: escape,
            j: () => step_block(this, 1), k: () => step_block(this, -1), "[": () => { this.step_invocation(-1); }, "]": () => { this.step_invocation(1); },
            ...Object.fromEntries(views.map(([name], i) => [String(i + 1), go_view(name)])),
        });
    }
}

/** The JSON of an element; null if that is empty. @param {string} id */
function json_of(id) {
    const text = document.getElementById(id)?.textContent ?? "";
    return text.trim() === "" ? null : JSON.parse(text);
}

/** @param {string} text */
function say(text) {
    document.getElementById("wait")?.remove();
    fill(/** @type {HTMLElement} */ (document.getElementById("page")), element("p", { class: "plain", role: "alert" }, text));
}

function start_page() {
    if (typeof DecompressionStream === "undefined") return; // the sentence for old browsers stays
    let head;
    let base;
    let rules;
    try {
        [head, base, rules] = [json_of("head"), json_of("base"), json_of("rules")];
    } catch {
        return say("This page can't be read: it was cut or changed. Make it again.");
    }
    if (!head || !rules) return say("This page has no data. Make it again.");
    if (head.format !== format_number) return say("This page was made by another version of the program than its script. Make it again.");
    new App(head, base, rules).start();
}

if (typeof document !== "undefined") start_page();
