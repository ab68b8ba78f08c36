// SPDX-License-Identifier: Apache-2.0
// Makes a page of the viewer from reports: small and plain, what the program's writer is held against.
//
//   node make_page.mjs REPORT -o PAGE [--base REPORT] [--source DIR] [--time-unit UNIT] [--template FILE]

import { execFileSync } from "node:child_process";
import { createHash } from "node:crypto";
import { existsSync, lstatSync, mkdtempSync, readFileSync, realpathSync, rmSync, statSync, writeFileSync } from "node:fs";
import { tmpdir } from "node:os";
import { basename, dirname, join, sep } from "node:path";
import { fileURLToPath } from "node:url";
import { deflateRawSync } from "node:zlib";
import { make_head } from "./head.mjs";
import { read_report } from "./report.mjs";

export const top = join(dirname(fileURLToPath(import.meta.url)), "../../..");
const largest_source = 2 * 2 ** 20;
const largest_chunk = 4 * 2 ** 20;

/** The page without data, as the build joins it. */
export function joined_template() {
    const folder = mkdtempSync(join(tmpdir(), "viewer-"));
    const output = join(folder, "page.html");
    execFileSync("cmake", [`-DOUTPUT=${output}`, "-P", join(top, "viewer/join.cmake")]);
    const text = readFileSync(output, "utf8");
    rmSync(folder, { recursive: true });
    return text;
}

/** JSON in which no text can end its element. */
export function safe_json(value) {
    return JSON.stringify(value).replace(/[<>&\u2028\u2029]/g, (c) => "\\u" + c.charCodeAt(0).toString(16).padStart(4, "0"));
}

/** Adds the text of each file that the report names, if it lies below the folder. */
function add_sources(page, folder) {
    const files = new Set();
    for (const kernel of page.head.kernels) {
        files.add(kernel.file);
        for (const block of kernel.blocks) for (const chain of block.src) for (const [file] of chain) files.add(file);
    }
    const root = realpathSync(folder);
    for (const file of [...files].filter((f) => f && !f.startsWith("/"))) {
        const path = join(root, file);
        if (!existsSync(path)) continue;
        const real = realpathSync(path);
        if (!real.startsWith(root + sep) || !lstatSync(real).isFile() || statSync(real).size > largest_source) continue;
        page.head.sources[file] = page.chunks.length;
        page.chunks.push(deflateRawSync(readFileSync(real), { level: 6 }).toString("base64"));
    }
}

function rows_of_metrics() {
    const text = readFileSync(join(top, "profile/model/metric_table.cpp"), "utf8");
    const row = /\{Metric::\w+,\s*"(\w+)",\s*MetricScope::(\w+),\s*MetricUnit::(\w+),\s*Better::(\w+),\s*"[^"]*"\}/g;
    return Object.fromEntries([...text.matchAll(row)].map(([, name, , unit, better]) => [name, [unit, better]]));
}

export function make_part(report, name, options = {}) {
    const page = make_head(read_report(report), name, options.time_unit);
    if (options.source) add_sources(page, options.source);
    return page;
}

/** The text of a page. `part` and `base` are of make_part. */
export function make_page(part, { base, template = joined_template(), rules = readFileSync(join(top, "profile/rules.json"), "utf8") } = {}) {
    const elements = [];
    for (const [prefix, page] of [["d", part], ["b", base]]) {
        page?.chunks.forEach((text, i) => {
            if (text.length > largest_chunk) throw new Error("a chunk is too long");
            elements.push(`<script type="text/plain" id="${prefix}${i}">${text}</script>\n`);
        });
    }
    const digest = (hex) => Buffer.from(hex, "hex").toString("base64");
    const title = part.head.run.report.replace(/[&<>"]/g, (c) => `&#${c.charCodeAt(0)};`);
    const places = { title, head: safe_json(part.head), base: base ? safe_json(base.head) : "", metrics: safe_json(rows_of_metrics()),
        rules: safe_json(JSON.parse(rules)), chunks: elements.join("") };
    return template.replace(/@(title|head|base|metrics|rules|chunks)@|@sha256:([0-9a-f]{64})@/g, (_, place, hex) => place ? places[place] : digest(hex));
}

export function sha256(text) {
    return createHash("sha256").update(text, "utf8").digest("base64");
}

function main(args) {
    const options = { reports: [] };
    for (let i = 0; i < args.length; ++i) {
        if (args[i] === "-o") options.output = args[++i];
        else if (args[i].startsWith("--")) options[args[i].slice(2).replaceAll("-", "_")] = args[++i];
        else options.reports.push(args[i]);
    }
    const read = (file, more) => make_part(JSON.parse(readFileSync(file, "latin1")), basename(file), more);
    const part = read(options.reports[0], options);
    const base = options.base && read(options.base, { time_unit: options.time_unit });
    writeFileSync(options.output, make_page(part, { base, template: options.template && readFileSync(options.template, "utf8") }));
}

if (process.argv[1] === fileURLToPath(import.meta.url)) main(process.argv.slice(2));
