// SPDX-License-Identifier: Apache-2.0
// Pages that the browser tests look at: all samples, and reports with hostile names and odd values.

import { execFileSync } from "node:child_process";
import { mkdtempSync, readdirSync, readFileSync, rmSync, writeFileSync } from "node:fs";
import { tmpdir } from "node:os";
import { join } from "node:path";
import { joined_template, make_page, make_part, top } from "./reference/make_page.mjs";

export const sample_names = readdirSync(join(top, "samples"), { withFileTypes: true }).filter((d) => d.isDirectory()).map((d) => d.name);
const template = joined_template();

export function sample_report(name) {
    return JSON.parse(readFileSync(join(top, "samples", name, "expected_report.json"), "latin1"));
}

export const hostile_names = ["</script><script>document.title='run'</script>", "<img src=x onerror=\"document.title='run'\">", "\" onload='x' & <b>",
    "\u202eevil\u2066\u200b", "\u0000\u0007\u001b[31m", "{{constructor}}${alert(1)}", "@head@ @chunks@", "__proto__", "=1+1", "%2F/../?#"];

/** Bytes of UTF-8 as the report has them: a character for each byte. */
function as_bytes(text) {
    return Buffer.from(text, "utf8").toString("latin1");
}

const texts = (values) => values.map(String);

const json_type = "Corvane Profiler JSON";

/** A report in which each place that has a name has this one. */
export function hostile_report(name) {
    const n = as_bytes(name);
    const place = { filename: n, line: "3", column_num: "1", callsite: [{ filename: n, line: "9", column_num: "2" }] };
    const block = (kind, rw, more) => ({ type: "moduleinst", name: n + kind, sourcefiles: [place], module_inst_details: { ...(kind ? { mem_type: kind } : {}), ...(rw ? { operation_type: rw } : {}),
        occupancy_samples: texts([50, 60]), stall_samples: texts([40, 30]), idle_samples: texts([10, 10]), activity_samples: texts([50, 60]), ...more, coalesced_memory: "false" } });
    const kernel = { type: "kernel", name: n, compute_unit: "0", sourcefile: { filename: n, line: "3" }, device_ids: ["0", "0"], command_queue_id: ["1", "1"], start_time: "100", end_time: "1100",
        num_samples: "2", shared_counter_run_type: "-1", sample_timestamps: ["600", "1100"], total_cycles_between_samples: ["100", "100"], is_autorun: "false", children: [
            { type: "extmem", name: n, interface: n, port: n, global_used_bw: texts([1000, 2000]), avg_write_burst: texts([2, 3]), avg_read_burst: texts([4, 5]) },
            block("__global", "read", { bandwidth_samples: texts([1000, 2000]), bandwidth_eff_samples: texts([1, 0.5]), cache_hit_samples: texts([1, 2]), global_mem_name: n, average_burst_size: texts([2, 3]) }),
            block("", "write", { average_channel_depth_samples: texts([3.25, 4.5]), max_channel_depth_samples: texts([8, 8]), bandwidth_samples: texts([10, 20]) })] };
    return { json_type, versions: { profiler_json_version: n, zanx_version: n }, kernels: { nodes: [kernel] },
        boards: { nodes: [{ type: "board", board_type: n, children: [{ type: "globalmem", global_memory_name: n, max_theoretical_globalmem_bw: "5000", max_burst_count: "16" }] }] },
        memtransfers: { nodes: [{ type: "memtransfers", type_transfer: n, device_id: "0", command_queue_id: "2", start_time: "0", end_time: "80" }] }, channels: { nodes: "" },
        run_info: { nodes: [{ type: "runinfo", fmax: "200.0" }] } };
}

/** Values that are no numbers, counts of -1, and parts that are missing. */
export function odd_reports() {
    const empty = { json_type, versions: {}, kernels: { nodes: "" }, boards: { nodes: [{ board_type: "b", children: "" }] }, memtransfers: { nodes: "" }, run_info: { nodes: [{ fmax: "0.0" }] } };
    const odd = hostile_report("odd");
    const [, block, channel] = odd.kernels.nodes[0].children;
    Object.assign(block.module_inst_details, { bandwidth_samples: ["nan", "inf"], bandwidth_eff_samples: ["-inf", "-0"], stall_samples: ["-1", "-1"], activity_samples: ["-1", "4"], average_burst_size: ["2"] });
    Object.assign(channel.module_inst_details, { average_channel_depth_samples: ["-nan"], max_channel_depth_samples: "" });
    const no_clock = hostile_report("no_clock");
    no_clock.run_info.nodes[0].fmax = "0.0";
    for (const child of no_clock.kernels.nodes[0].children) if (child.module_inst_details) child.module_inst_details.bandwidth_samples = ["-0", "-0"];
    const no_samples = hostile_report("no_samples");
    Object.assign(no_samples.kernels.nodes[0], { num_samples: "0", children: "" });
    for (const key of ["device_ids", "command_queue_id", "end_time", "sample_timestamps", "total_cycles_between_samples"]) delete no_samples.kernels.nodes[0][key];
    const transfers_only = { ...hostile_report("transfers"), kernels: { nodes: "" } };
    return { empty, odd, no_clock, no_samples, transfers_only };
}

/** A report with one kernel of many samples, which drift with noise. */
export function long_report(num_samples, num_invocations = 1) {
    const report = hostile_report("long");
    const [node] = report.kernels.nodes;
    const each = Math.floor(num_samples / num_invocations);
    report.kernels.nodes = [];
    let state = 1;
    const random = () => (state = (state * 48271) % 2147483647) / 2147483647;
    for (let k = 0; k < num_invocations; ++k) {
        const start = 100 + k * (each + 50) * 500;
        const list = (of) => Array.from({ length: each }, (_, i) => String(of(k * each + i)));
        const children = structuredClone(node.children);
        for (const child of children) {
            const target = child.module_inst_details ?? child;
            for (const key of Object.keys(target)) if (Array.isArray(target[key]) && key !== "sourcefiles") target[key] = list((i) => key.startsWith("stall") ? Math.round(20 + 15 * Math.sin(i / 3000) + random() * 4) : key.endsWith("eff_samples") ? 0.75 : Math.round(40 + 5 * random()));
        }
        report.kernels.nodes.push({ ...node, start_time: String(start), end_time: String(start + each * 500), num_samples: String(each), device_ids: list(() => 0), command_queue_id: list(() => 1),
            sample_timestamps: list((i) => start + (i - k * each + 1) * 500), total_cycles_between_samples: list(() => 100), children });
    }
    return report;
}

/** The built program that makes the pages; without one the small writer of the tests does. */
export const program = process.env.ZAN_PROFILE;

/** The text of a report, whose characters are bytes. */
function report_text(report) {
    return JSON.stringify(report).replace(/[\u007f-\uffff]/g, (c) => "\\u" + c.charCodeAt(0).toString(16).padStart(4, "0"));
}

/** Writes pages to a folder of their own. */
export class PageFolder {
    constructor() {
        this.path = mkdtempSync(join(tmpdir(), "viewer-pages-"));
    }

    write(name, report, { base, source, report_name = `${name}.json`, options = [] } = {}) {
        const file = join(this.path, `${name}.html`);
        if (program) {
            const [ours, theirs] = [[report, report_name], [base, "base.json"]].map(([one, its_name]) => one && this.write_report(one, its_name));
            execFileSync(program, ["view", ours, "-o", file, ...(theirs ? ["--base", theirs] : []), ...(source ? ["--source", source] : []), ...options], { stdio: ["ignore", "ignore", "pipe"] });
            return file;
        }
        writeFileSync(file, make_page(make_part(report, report_name, { source }), { base: base && make_part(base, "base.json"), template }));
        return file;
    }

    write_report(report, name) {
        const folder = mkdtempSync(join(this.path, "report-"));
        const file = join(folder, name.replaceAll("/", "_").replaceAll("\u0000", "_"));
        writeFileSync(file, report_text(report));
        return file;
    }

    remove() {
        rmSync(this.path, { recursive: true });
    }
}
