// SPDX-License-Identifier: Apache-2.0
// Elements without markup. A name from a report becomes a text node and nothing else, with control and
// bidirectional characters made visible.

// C0 and C1 controls, marks that turn the direction of text, and characters that have no width.
const harmful = /[\u0000-\u001f\u007f-\u009f\u00ad\u061c\u200b-\u200f\u2028-\u202e\u2060-\u2069\ufeff\ufff9-\ufffb]/g;

/** The name with each harmful character as ⟨U+202E⟩. @param {string} name */
export function safe_name(name) {
    return name.replace(harmful, (c) => "⟨U+" + c.charCodeAt(0).toString(16).toUpperCase().padStart(4, "0") + "⟩");
}

/** @typedef {Node | string | number | null | undefined | false} Child */

/**
 * An element. Properties that begin with "on" are listeners; `class`, `text` and attributes are set as such.
 * @template {keyof HTMLElementTagNameMap} T
 * @param {T} tag
 * @param {Record<string, any> | null} [properties]
 * @param {...(Child | Child[])} children
 * @returns {HTMLElementTagNameMap[T]}
 */
export function element(tag, properties, ...children) {
    const made = document.createElement(tag);
    for (const [key, value] of Object.entries(properties ?? {})) {
        if (value === undefined || value === null || value === false) continue;
        if (key.startsWith("on")) made.addEventListener(key.slice(2), value);
        else if (key === "class") made.className = value;
        else made.setAttribute(key, value === true ? "" : String(value));
    }
    append(made, children);
    return made;
}

/** A box of the page. @param {string} look its class @param {...(Child | Child[])} children */
export function box(look, ...children) {
    return element("div", { class: look }, ...children);
}

/** @param {Record<string, any>} properties @param {...(Child | Child[])} children */
export function button(properties, ...children) {
    return element("button", { type: "button", ...properties }, ...children);
}

/** A square in a colour; what it stands for is beside it. @param {string} look */
export function mark(look) {
    return element("span", { class: `mark ${look}`, "aria-hidden": "true" });
}

/** Text that stands back. @param {...(Child | Child[])} children */
export function second(...children) {
    return element("span", { class: "second" }, ...children);
}

/** @param {...(Child | Child[])} children */
export function bold(...children) {
    return element("b", null, ...children);
}

/** @param {Node} parent @param {(Child | Child[])[]} children */
export function append(parent, children) {
    for (const child of children.flat()) {
        if (child === null || child === undefined || child === false) continue;
        parent.appendChild(child instanceof Node ? child : document.createTextNode(String(child)));
    }
}

/** @param {Element} parent @param {...(Child | Child[])} children */
export function fill(parent, ...children) {
    parent.replaceChildren();
    append(parent, children);
}

/**
 * A link to a view of the page.
 * @param {string} address @param {Child | Child[]} content @param {string} [look]
 */
export function view_link(address, content, look) {
    return element("a", { href: address, class: look }, content);
}

/** A square in a kernel's colour; its name always stands beside it. @param {number} number of the kernel */
export function kernel_mark(number) {
    return mark(`k${number % 8}`);
}

/**
 * A bar of shares, one piece after the other; what passes 100 % is cut at the frame.
 * @param {[string, number][]} pieces class and percent @param {string} label
 */
export function share_bar(pieces, label) {
    const bar = element("span", { class: "bar", role: "img", "aria-label": label });
    let left = 0;
    for (const [look, percent] of pieces) {
        if (!(percent > 0) || left >= 100) continue;
        const piece = element("span", { class: look });
        piece.style.width = `${Math.min(percent, 100 - left)}%`;
        bar.appendChild(piece);
        left += percent;
    }
    return bar;
}

/** The colours of the theme, by the names of the style's variables. @type {Map<string, string>} */
const colours = new Map();

/** @param {string} name without its dashes */
export function colour(name) {
    let value = colours.get(name);
    if (value === undefined) {
        value = getComputedStyle(document.documentElement).getPropertyValue("--" + name).trim();
        colours.set(name, value);
    }
    return value;
}

export function forget_colours() {
    colours.clear();
}

/** A function that does the work once it hasn't been called for a moment: while one zooms, only charts are drawn. @param {() => void} work */
export function after_rest(work) {
    let timer = 0;
    return () => {
        clearTimeout(timer);
        timer = window.setTimeout(work, 70);
    };
}

/** Says something to a screen reader, and for a while on the page. @param {string} text */
export function announce(text) {
    const place = document.getElementById("status");
    if (!place) return;
    fill(place, text);
    place.classList.add("shown");
    setTimeout(() => place.classList.remove("shown"), 2500);
}
