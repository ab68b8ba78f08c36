// SPDX-License-Identifier: Apache-2.0
// The convention by which the page's modules are joined without a bundler.

import assert from "node:assert/strict";
import { readdirSync, readFileSync } from "node:fs";
import { join } from "node:path";
import test from "node:test";
import { joined_template, make_page, make_part, sha256, top } from "./reference/make_page.mjs";

const folder = join(top, "viewer");
const order = readFileSync(join(folder, "join.cmake"), "utf8").match(/set\(modules([^)]*)\)/)[1].trim().split(/\s+/);
const text_of = (name) => readFileSync(join(folder, `${name}.js`), "utf8");
const import_line = /^import \{ [\w, ]+ \} from "\.\/(\w+)\.js";$/;
const declaration = /^(?:export )?(?:async )?(?:function|class|const|let) (\w+)/gm;

test("the list of modules has each module once", () => {
    const files = readdirSync(folder).filter((f) => f.endsWith(".js")).map((f) => f.slice(0, -3));
    assert.deepEqual([...order].sort(), files.sort());
});

test("an import is one line of plain names", () => {
    for (const name of order) {
        for (const line of text_of(name).split("\n").filter((l) => /^\s*import\b/.test(l))) assert.match(line, import_line, name);
    }
});

test("export stands only in front of a declaration", () => {
    for (const name of order) {
        for (const line of text_of(name).split("\n").filter((l) => /\bexport\b/.test(l) && !/^\s*(?:\/\/|\*|\/\*)/.test(l))) {
            assert.match(line, /^export (?:async )?(?:function|class|const|let) \w+/, name);
        }
    }
});

test("no two modules declare the same name", () => {
    const owners = new Map();
    for (const name of order) {
        for (const [, declared] of text_of(name).matchAll(declaration)) {
            assert.equal(owners.get(declared), undefined, `${declared} is in ${owners.get(declared)} and ${name}`);
            owners.set(declared, name);
        }
    }
});

test("names that are imported are exported there", () => {
    for (const name of order) {
        for (const [, names, from] of text_of(name).matchAll(/^import \{ ([\w, ]+) \} from "\.\/(\w+)\.js";$/gm)) {
            for (const wanted of names.split(", ")) {
                assert.match(text_of(from), new RegExp(`^export (?:async )?(?:function|class|const|let) ${wanted}\\b`, "m"), `${name} wants ${wanted} of ${from}`);
            }
        }
    }
});

test("nothing turns text into markup or code, or asks a network", () => {
    const forbidden = /\b(?:innerHTML|outerHTML|insertAdjacentHTML|createContextualFragment|eval|fetch|XMLHttpRequest|WebSocket|importScripts)\b|document\.write|new Function|setAttribute\("style"/;
    for (const name of order) assert.doesNotMatch(text_of(name), forbidden, name);
});

test("the joined page has its places once, its digests, and no early end of script or style", () => {
    const page = joined_template();
    for (const place of ["title", "head", "base", "metrics", "rules", "chunks"]) assert.equal(page.split(`@${place}@`).length, 2, place);
    const script = page.match(/<script type="module" async>([\s\S]*?)<\/script>/)[1];
    const style = page.match(/<style>([\s\S]*?)<\/style>/)[1];
    assert.ok(page.includes(`script-src 'sha256-@sha256:${Buffer.from(sha256(script), "base64").toString("hex")}@'`));
    assert.ok(page.includes(`style-src 'sha256-@sha256:${Buffer.from(sha256(style), "base64").toString("hex")}@'`));
    assert.match(script, /start_page\(\);\s*$/, "the script reaches its end");
    assert.doesNotMatch(script, /^\s*(?:import|export)\b/m);
    assert.ok(!style.includes("</"));
});

/** Whether the parenthesis of a loop that begins on the line is followed by a semicolon. */
function has_empty_loop(line) {
    const head = /^\s*(?:for|while) /.exec(line);
    let depth = 0;
    for (let i = head ? head[0].length : line.length; i < line.length; ++i) {
        depth += Number(line[i] === "(") - Number(line[i] === ")");
        if (depth === 0) return line[i + 1] === ";";
    }
    return false;
}

test("no text has an operator between blanks, or blanks inside of braces, which are dropped", () => {
    for (const name of order) {
        const code = text_of(name).replace(/\/\*\*[^*]*\*\/|^ *\/\/.*$|^ *\*.*$/gm, "").replaceAll("\\\"", "");
        for (const line of code.split("\n")) {
            const texts = [...line.matchAll(/"[^"]*"/g), ...line.replace(/\$\{[^{}]*\}/g, "x").matchAll(/`[^`]*`/g)];
            for (const [text] of texts) assert.doesNotMatch(text, / (?:=>|===|!==|&&|\|\||\?\?|>=|<=|=|[+*/?:<>-]) |\{ | \}|\) \{|(?:if|for|while) \(|, [a-z_.0-9]+\)|[{,] ?[a-z_]+: |, (?:[[{(]|[a-z_0-9]+[[(.])|[\])], |\) [a-z]+[ (.;]|(?:const|return) [[{]/, `${name}: ${line}`);
            assert.equal((line.match(/`/g) ?? []).length % 2, 0, `${name}: a text that goes on in the next line: ${line}`);
            assert.ok(!has_empty_loop(line), `${name}: a loop without a body, whose ; may be dropped: ${line}`);
            assert.doesNotMatch(line, / (?:\+ \+|- -|\/ \/)/, `${name}: without blanks this is another operator: ${line}`);
        }
    }
});

test("a page without samples is at most 160 KB", () => {
    const page = make_page(make_part({ versions: {}, kernels: { nodes: "" }, boards: { nodes: "" }, memtransfers: { nodes: "" }, run_info: { nodes: "" } }, "empty.json"));
    assert.ok(Buffer.byteLength(page) <= 160 * 1024, `${Buffer.byteLength(page)} bytes`);
});
