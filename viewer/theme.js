// SPDX-License-Identifier: Apache-2.0
// Light, dark, or as the system is.

import { forget_colours } from "./dom.js";

const themes = ["auto", "light", "dark"];
let chosen_theme = "auto";

function stored_theme() {
    try {
        return localStorage.getItem("theme") ?? "auto";
    } catch {
        return "auto"; // pages from the file system may have no storage
    }
}

function is_dark() {
    return chosen_theme === "dark" || (chosen_theme === "auto" && matchMedia("(prefers-color-scheme: dark)").matches);
}

/**
 * Shows the theme, now and when the system changes; paper is white.
 * @param {() => void} changed @param {() => void} draw_now charts, before the page is printed
 */
export function start_theme(changed, draw_now) {
    const show = () => {
        document.documentElement.classList.toggle("dark", is_dark());
        forget_colours();
        changed();
    };
    chosen_theme = themes.includes(stored_theme()) ? stored_theme() : "auto";
    matchMedia("(prefers-color-scheme: dark)").addEventListener("change", show);
    addEventListener("beforeprint", () => {
        document.documentElement.classList.remove("dark");
        forget_colours();
        draw_now();
    });
    addEventListener("afterprint", show);
    show();
    return {
        name: () => chosen_theme[0].toUpperCase() + chosen_theme.slice(1),
        next() {
            chosen_theme = themes[(themes.indexOf(chosen_theme) + 1) % themes.length];
            try {
                localStorage.setItem("theme", chosen_theme);
            } catch {
                // The choice then holds until the page is closed.
            }
            show();
        },
    };
}
