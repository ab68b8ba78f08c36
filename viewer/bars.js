// SPDX-License-Identifier: Apache-2.0
// Bars and links that several views show of a block or kernel.

import { block_address, source_address } from "./address.js";
import { element, kernel_mark, safe_name, second, share_bar, view_link } from "./dom.js";
import { is_known, percent_text } from "./format.js";
import { place_text } from "./model.js";

/** @typedef {import("./model.js").ModelBlock} ModelBlock */
/** @typedef {import("./model.js").ModelKernel} ModelKernel */

/** Stalled, valid, idle. @param {import("./types.d.ts").Facts} facts */
export function shares_bar(facts) {
    const pieces = /** @type {[string, unknown][]} */ ([["stalled", facts.stall], ["valid", facts.valid], ["idle", facts.idle]]);
    const known = /** @type {[string, number][]} */ (pieces.filter(([, value]) => is_known(value)));
    const label = known.map(([name, value]) => `${name} ${percent_text(value)}`).join(", ") || "nothing counted";
    return share_bar(known, label);
}

/** @param {ModelBlock} block @param {string} [look] */
export function block_link(block, look) {
    return view_link(block_address(block.kernel.name, block.block.name), safe_name(block.block.name), look);
}

/** @param {ModelKernel} kernel @param {boolean} [as_link] */
export function kernel_name(kernel, as_link = false) {
    const name = safe_name(kernel.name);
    const first = kernel.culprit;
    return [kernel_mark(kernel.number), as_link && first ? view_link(block_address(kernel.name, first.block.name), name) : name];
}

/** The place in the sources, as a link. @param {[string, number, number] | undefined} place */
export function place_link(place) {
    return place && place[0] !== "" && view_link(source_address(place[0], place[1]), safe_name(place_text(place)), "code");
}

/** The sentence in the look of its tone. @param {import("./rules.js").Sentence} sentence */
export function sentence_text(sentence) {
    const look = sentence.tone === "cause" ? "cause" : sentence.tone === "symptom" ? "" : sentence.tone === "good" ? "good" : "second";
    return element("span", { class: look }, safe_name(sentence.text));
}

/** The sentence after the name of its block: "load_x waits for ...". @param {ModelBlock | null} block */
export function culprit_text(block) {
    if (!block) return "–";
    const { text } = block.sentence;
    return [element("code", null, safe_name(block.block.name)), " ", second(safe_name(text.charAt(0).toLowerCase() + text.slice(1)))];
}
