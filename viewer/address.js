// SPDX-License-Identifier: Apache-2.0
// The address of what is shown: `#/block/KERNEL/BLOCK?r=A-B&s=A-B&i=N`. A copied link shows the same.

/**
 * @typedef {object} Place
 * @property {string} view
 * @property {string[]} names after the view
 * @property {[number, number] | null} stretch
 * @property {[number, number] | null} selection
 * @property {number | null} invocation
 */

export const view_names = ["overview", "timeline", "block", "source", "memory", "compare"];

/** @param {string | null} text @returns {[number, number] | null} */
function parse_stretch(text) {
    const match = /^(\d+(?:\.\d+)?)-(\d+(?:\.\d+)?)$/.exec(text ?? "");
    if (!match) return null;
    const [from, to] = [Number(match[1]), Number(match[2])];
    return from < to ? [from, to] : null;
}

/** @param {string} text */
function decoded(text) {
    try {
        return decodeURIComponent(text);
    } catch {
        return text;
    }
}

/** What can't be read is left out; an unknown view is the overview. @param {string} fragment @returns {Place} */
export function parse_address(fragment) {
    const [path, query = ""] = fragment.replace(/^#?\/?/, "").split("?", 2);
    const [view, ...names] = path.split("/").map(decoded);
    const options = new URLSearchParams(query);
    const invocation = Number(options.get("i"));
    return {
        view: view_names.includes(view) ? view : "overview",
        names: view_names.includes(view) ? names : [],
        stretch: parse_stretch(options.get("r")),
        selection: parse_stretch(options.get("s")),
        invocation: Number.isSafeInteger(invocation) && invocation > 0 ? invocation : null,
    };
}

/** @param {[number, number]} stretch */
function stretch_text([from, to]) {
    const text = (/** @type {number} */ time) => String(Number(Math.max(0, time).toFixed(3)));
    return `${text(from)}-${text(to)}`;
}

/** @param {Partial<Place> & {view: string}} place */
export function address_of({ view, names = [], stretch, selection, invocation }) {
    const options = [];
    if (stretch) options.push("r=" + stretch_text(stretch));
    if (selection) options.push("s=" + stretch_text(selection));
    if (invocation) options.push("i=" + invocation);
    const path = [view, ...names].map(encodeURIComponent).join("/");
    return `#/${path}${options.length ? "?" + options.join("&") : ""}`;
}

/** @param {string} kernel @param {string} block */
export function block_address(kernel, block) {
    return address_of({ view: "block", names: [kernel, block] });
}

/** @param {string} file @param {number} line */
export function source_address(file, line) {
    return address_of({ view: "source", names: [file, String(line)] });
}
