// SPDX-License-Identifier: Apache-2.0
// Search over kernels, blocks, files and memories.

import { address_of, block_address, source_address } from "./address.js";
import { box, element, fill, safe_name, second } from "./dom.js";
import { source_files } from "./view_source.js";

const most_found = 30;

/** @typedef {{name: string, kind: string, address: string}} Found */

/** All that can be found. @param {import("./model.js").Model} model @returns {Found[]} */
export function all_names(model) {
    return [
        ...model.kernels.map((k) => ({ name: k.name, kind: "kernel", address: k.culprit ? block_address(k.name, k.culprit.block.name) : address_of({ view: "timeline" }) })),
        ...model.ranking.map((b) => ({ name: b.block.name, kind: `block of ${b.kernel.name}`, address: block_address(b.kernel.name, b.block.name) })),
        ...[...source_files(model).keys()].map((file) => ({ name: file, kind: "file", address: source_address(file, 0) })),
        ...model.head.memories.map((m) => ({ name: m.name, kind: "memory", address: address_of({ view: "memory", names: [m.name] }) })),
    ];
}

/** Names that have all words; those that begin with the first one come first. @param {Found[]} names @param {string} text */
export function find_names(names, text) {
    const words = text.toLowerCase().split(/\s+/).filter(Boolean);
    if (words.length === 0) return [];
    const found = names.filter(({ name, kind }) => words.every((word) => `${name} ${kind}`.toLowerCase().includes(word)));
    const rank = (/** @type {Found} */ one) => one.name.toLowerCase().startsWith(words[0]) ? 0 : one.name.toLowerCase().includes(words[0]) ? 1 : 2;
    return found.map((one, i) => ({ one, i })).sort((a, b) => rank(a.one) - rank(b.one) || a.i - b.i).map(({ one }) => one).slice(0, most_found);
}

/** The field of the frame, with a list below it. @param {import("./page.js").App} app */
export function make_search(app) {
    /** @type {Found[] | undefined} */
    let names;
    /** @type {Found[]} */
    let found = [];
    let chosen = 0;
    const list = element("div", { class: "found hidden", role: "listbox", id: "found", "aria-label": "Found" });
    const input = element("input", { type: "search", placeholder: "Search   /", "aria-label": "Search kernels, blocks, files", role: "combobox", "aria-expanded": "false", "aria-controls": "found", "aria-autocomplete": "list" });
    const close = () => {
        list.classList.add("hidden");
        input.setAttribute("aria-expanded", "false");
        input.removeAttribute("aria-activedescendant");
    };
    const open = (/** @type {Found | undefined} */ one) => {
        if (!one) return;
        close();
        input.value = "";
        input.blur();
        app.go(one.address);
    };
    const show = () => {
        names ??= all_names(app.model);
        found = find_names(names, input.value);
        chosen = Math.min(chosen, Math.max(0, found.length - 1));
        if (input.value.trim() === "") return close();
        fill(list, found.map((one, i) => element("div", { role: "option", id: `found${i}`, "aria-selected": String(i === chosen), onpointerdown: (/** @type {Event} */ e) => { e.preventDefault(); open(one); } },
            safe_name(one.name), second(safe_name(one.kind)))), found.length === 0 && element("div", { role: "option", "aria-selected": "false" }, "Nothing has that name"));
        list.classList.remove("hidden");
        input.setAttribute("aria-expanded", "true");
        if (found.length > 0) input.setAttribute("aria-activedescendant", `found${chosen}`);
        list.children[chosen]?.scrollIntoView({ block: "nearest" });
    };
    input.addEventListener("input", () => { chosen = 0; show(); });
    input.addEventListener("blur", close);
    input.addEventListener("keydown", (event) => {
        if (event.key === "ArrowDown" || event.key === "ArrowUp") {
            chosen = Math.min(found.length - 1, Math.max(0, chosen + (event.key === "ArrowDown" ? 1 : -1)));
            show();
            event.preventDefault();
        } else if (event.key === "Enter") open(found[chosen]);
        else if (event.key === "Escape") { input.value = ""; close(); input.blur(); event.stopPropagation(); }
    });
    return { place: box("search", input, list), input };
}
