// SPDX-License-Identifier: Apache-2.0
// Keys: they do nothing while a text field has the focus, or with Ctrl, Alt or Meta.

import { box, element } from "./dom.js";
import { show_window } from "./samples.js";

/** What the window "?" lists. */
const key_texts = /** @type {[string, string][]} */ ([
    ["W S", "zoom in and out at the cursor"], ["1 to 6", "views"],
    ["A D", "pan"], ["/", "search kernels, blocks, files"],
    ["F", "whole run"], ["J K", "next, previous block of the ranking"],
    ["R", "selection fills the view"], ["[ ]", "previous, next invocation"],
    ["drag", "select"], ["T", "automatic, light, dark"],
    ["Shift+drag, Shift+wheel", "pan"], ["?", "this list"],
    ["Ctrl+wheel", "zoom"], ["Esc", "close, then clear the selection"],
    ["← →", "on a chart: the cursor by a sample"], ["Shift+← →", "by ten"],
]);

export function show_keys() {
    show_window("Keys", box("key-list", key_texts.flatMap(([key, text]) => [element("kbd", null, key), element("span", null, text)])));
}

/** @param {EventTarget | null} target */
function is_text_field(target) {
    return target instanceof HTMLElement && (target.isContentEditable || /^(?:INPUT|TEXTAREA|SELECT)$/.test(target.tagName));
}

/** @param {Record<string, () => void>} actions by key, letters in lower case */
export function start_keys(actions) {
    document.addEventListener("keydown", (event) => {
        if (event.ctrlKey || event.altKey || event.metaKey || is_text_field(event.target)) return;
        // An open window has its own keys.
        if (document.querySelector("dialog[open]")) return;
        const action = actions[event.key.length === 1 ? event.key.toLowerCase() : event.key];
        if (!action) return;
        action();
        event.preventDefault();
    });
}
