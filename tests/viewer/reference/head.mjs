// SPDX-License-Identifier: Apache-2.0
// The head of a page, by the contract of docs/viewer.md, worked out plainly from a report.

import { column_texts, list, utf8 } from "./report.mjs";
import { SeriesWriter } from "./encoder.mjs";
import { other_facts } from "./facts.mjs";
import { Steps } from "./memory_use.mjs";
import { common_length, length_of, quantile, union_of } from "./times.mjs";

const metrics = ["valid", "stall", "idle", "requests", "bandwidth", "efficiency", "fill", "max_fill", "hits", "unaligned", "burst"];
const shares = new Set(["valid", "stall", "idle"]);
const measured_by = { valid: 0, stall: 1, idle: 2, requests: 3, efficiency: 3 };
const num_bins = 1024;

/** A number that counts, or NaN. */
function number(text) {
    return text === undefined || text === "-0" || !Number.isFinite(Number(text)) ? NaN : Number(text);
}

/** The numbers of a kernel's columns, and for each sample its time, length and run type. */
export function measure(run, kernel) {
    const n = kernel.times.length;
    kernel.n = n;
    kernel.c = kernel.cycles.map(number);
    kernel.types = new Array(n);
    kernel.begins = new Array(n);
    kernel.invocations.forEach((invocation, k) => {
        const end = kernel.invocations[k + 1]?.first ?? n;
        for (let i = invocation.first; i < end; ++i) {
            kernel.types[i] = invocation.type;
            kernel.begins[i] = i === invocation.first ? invocation.start : kernel.times[i - 1];
        }
    });
    kernel.has_shared = kernel.invocations.some((i) => i.type >= 0);
    for (const block of kernel.blocks) {
        block.texts = {};
        block.values = {};
        for (const name of metrics) {
            const texts = column_texts(block, name, n);
            if (texts) Object.assign(block.texts, { [name]: texts }), block.values[name] = texts.map(number);
        }
    }
    for (const port of kernel.ports) {
        port.texts = Object.fromEntries(["bw", "rburst", "wburst"].map((name) => [name, column_texts(port, name, n) ?? new Array(n).fill(undefined)]));
        port.values = Object.fromEntries(Object.entries(port.texts).map(([name, texts]) => [name, texts.map(number)]));
    }
    kernel.covered = union_of(kernel.autorun ? active_intervals(kernel) : kernel.invocations.map((i) => [i.start, i.end]));
}

/** An autorun kernel runs while one of its blocks works in at least 1 % of the cycles. */
function active_intervals(kernel) {
    const valid = kernel.blocks.map((b) => b.values.valid).filter(Boolean);
    kernel.active = kernel.c.map((c, i) => valid.some((values) => values[i] >= 0.01 * c && values[i] > 0));
    const all = kernel.times.reduce((sum, time, i) => sum + time - kernel.begins[i], 0);
    const intervals = kernel.times.map((time, i) => [kernel.begins[i], time]).filter((_, i) => kernel.active[i]);
    kernel.waiting = all > 0 ? 100 - 100 * length_of(union_of(intervals.map((i) => [...i]))) / all : null;
    return intervals;
}

/** The weight of a sample in the sums of a metric; 0 if it doesn't count. */
export function weight_of(kernel, block, metric, i) {
    const value = block.values[metric][i];
    const c = kernel.c[i];
    if (!(value >= 0) || !(c > 0)) return 0;
    const needed = measured_by[metric] ?? (metric === "bandwidth" && block.kind === "channel" ? 3 : undefined);
    if (kernel.has_shared && needed !== undefined && kernel.types[i] !== needed) return 0;
    const requests = block.values.requests?.[i] ?? 0;
    const stall = block.values.stall?.[i] ?? 0;
    if (["bandwidth", "efficiency", "fill"].includes(metric) && (requests < 0 || stall < 0)) return 0;
    if (metric === "bandwidth") return c;
    if (metric === "efficiency") return (block.values.bandwidth?.[i] || 0) * c;
    if (metric === "fill") return requests + stall;
    return 1;
}

function sums_of(kernel, block, metric) {
    const sums = [0, 0, 0, 0];
    for (let i = 0; i < kernel.n; ++i) {
        const weight = weight_of(kernel, block, metric, i);
        const value = block.values[metric][i];
        if (value < 0 || !(kernel.c[i] > 0)) ++sums[3];
        if (weight > 0) sums[0] += value * weight, sums[1] += weight, sums[2] += kernel.c[i];
    }
    return sums.map((x) => Number(x.toPrecision(15)));
}

function add_block_pyramid(series, kernel, block, metric, id, digits) {
    const values = block.values[metric];
    const weights = values.map((_, i) => weight_of(kernel, block, metric, i));
    const shown = values.map((v, i) => weights[i] > 0 ? (shares.has(metric) ? Math.round(v / kernel.c[i] * 10000) : v) : NaN);
    const missing = weights.some((w) => w === 0);
    series.add_pyramid(id, shown, values.map((v, i) => weights[i] > 0 ? v * weights[i] : 0),
        missing ? (shares.has(metric) ? weights.map((w, i) => w > 0 ? kernel.c[i] : 0) : weights) : undefined, digits);
}

function block_head(run, series, kernel, block) {
    const ids = {};
    const sums = {};
    for (const metric of metrics) {
        if (!block.texts[metric]) continue;
        ids[metric] = series.add(block.texts[metric], shares.has(metric) ? "share" : metric);
        sums[metric] = sums_of(kernel, block, metric);
        add_block_pyramid(series, kernel, block, metric, ids[metric], series.table.digits[ids[metric]]);
    }
    const entries = block.parts.flatMap((part) => part.texts.burst ?? []).map(number).filter((v) => v > 0);
    const burst = entries.length ? [entries.length, entries.reduce((a, b) => a + b) / entries.length, entries.reduce((a, b) => Math.min(a, b)), entries.reduce((a, b) => Math.max(a, b))] : undefined;
    return { name: block.name, kind: block.kind, rw: block.rw, mem: block.mem, coalesced: block.coalesced, src: block.src,
        series: ids, sums, ...(burst ? { burst } : {}), facts: other_facts(run, kernel, block) };
}

function port_head(run, series, kernel, port) {
    const add = (name) => {
        const id = series.add(port.texts[name], name);
        const values = port.values[name];
        series.add_pyramid(id, values, values.map((v, i) => v > 0 && kernel.c[i] > 0 ? v * (name === "bw" ? kernel.c[i] : 1) : 0), undefined, series.table.digits[id]);
        return id;
    };
    const bw = port.values.bw;
    const good = bw.map((v, i) => v >= 0 && kernel.c[i] > 0 ? i : -1).filter((i) => i >= 0);
    const cycles = good.reduce((sum, i) => sum + kernel.c[i], 0);
    const product = good.reduce((sum, i) => sum + bw[i] * kernel.c[i], 0);
    const mean = (values) => { const g = values.filter((v) => v > 0); return g.length ? g.reduce((a, b) => a + b) / g.length : null; };
    return { mem: port.mem, interface: port.interface, port: port.port, dir: port.dir, mean: cycles > 0 ? product / cycles : null,
        max: good.length ? good.reduce((most, i) => Math.max(most, bw[i]), 0) : null, bytes: run.clock ? product / run.clock : null,
        read_burst: mean(port.values.rburst), write_burst: mean(port.values.wburst), bw: add("bw"), rburst: add("rburst"), wburst: add("wburst") };
}

function kernel_head(run, series, kernel) {
    const { invocations, n } = kernel;
    const lengths = invocations.map((i) => i.end - i.start);
    const union = length_of(kernel.covered);
    const others = union_of(run.kernels.filter((k) => k !== kernel && !k.autorun).flatMap((k) => k.covered.map((i) => [...i])));
    const anything = union_of([...run.started, ...run.transfer_intervals].map((i) => [...i]));
    let gaps = 0;
    for (let k = 0; k + 1 < invocations.length; ++k) {
        const gap = [[invocations[k].end, invocations[k + 1].start]];
        if (gap[0][1] > gap[0][0]) gaps += length_of(gap) - common_length(gap, anything);
    }
    const cycles = series.add(kernel.cycles.map(String).map((t) => t === "undefined" ? undefined : t), "cycles");
    series.add_pyramid(cycles, kernel.c, kernel.c.map((c) => c > 0 ? c : 0), undefined, 0);
    const time = series.add(kernel.times.map(String), "time");
    series.add_pyramid(time, kernel.times, kernel.times, undefined, 0);
    const good = kernel.c.filter((c) => c > 0);
    return { name: kernel.name, cu: kernel.cu, file: kernel.file, line: kernel.line, autorun: kernel.autorun,
        types: [...new Set(invocations.map((i) => i.type))].filter((t) => t >= 0).sort(), n, total: lengths.reduce((a, b) => a + b, 0), union,
        alone: union - common_length(kernel.covered, others), median: quantile(lengths, 0.5), p95: quantile(lengths, 0.95),
        shortest: quantile(lengths, 0), longest: quantile(lengths, 1), gaps, waiting: kernel.waiting ?? null,
        with: run.kernels.map((k, i) => k !== kernel && union > 0 && beside(k, kernel) ? i : -1).filter((i) => i >= 0),
        cycles_total: good.length ? good.reduce((a, b) => a + b) : null, mem: memory_means(run, kernel),
        invocations: { n: invocations.length, ...Object.fromEntries(["start", "end", "first", "type"].map((key) => [key, series.add(invocations.map((i) => String(i[key])), key)])) },
        time, cycles, device: series.add(kernel.devices, "device"), queue: series.add(kernel.queues, "queue"),
        blocks: kernel.blocks.map((block) => block_head(run, series, kernel, block)),
        ports: kernel.ports.map((port) => port_head(run, series, kernel, port)) };
}

/** Both ran at the same time for half of their times or more. */
function beside(x, y) {
    return 2 * common_length(x.covered, y.covered) >= Math.max(length_of(x.covered), length_of(y.covered));
}

function memory_means(run, kernel) {
    const length = length_of(kernel.covered);
    const result = {};
    for (const memory of run.memories) {
        const bytes = kernel.covered.reduce((sum, [a, b]) => sum + memory.steps.bytes_in(a, b), 0);
        if (bytes > 0 && length > 0) result[memory.name] = bytes / (length * run.ns) * 1000;
    }
    return result;
}

/** Bytes of a kernel on a memory, for each of its samples: by ports, or by accesses. */
function add_traffic(run, memory, kernel) {
    const sources = memory.by === "ports" ? kernel.ports.filter((p) => p.mem === memory.name).map((p) => p.values.bw)
        : kernel.blocks.filter((b) => b.kind === "global" && b.mem === memory.name).map((b) => b.values.bandwidth);
    const own = new Steps();
    for (const values of sources) {
        values?.forEach((v, i) => {
            if (!(v > 0) || !(kernel.c[i] > 0) || !run.clock) return;
            const bytes = v * kernel.c[i] / run.clock;
            own.add(kernel.begins[i], kernel.times[i], bytes);
            memory.steps.add(kernel.begins[i], kernel.times[i], bytes);
        });
    }
    memory.of_kernel.set(kernel, own.finish());
}

function measure_memories(run) {
    const nodes = list(run.board.children);
    const uses_ports = run.kernels.some((k) => k.ports.length > 0);
    const unnamed = run.kernels.some((k) => k.blocks.some((b) => b.kind === "global" && b.mem === "" && run.num_memories > 1));
    run.memories = nodes.map((node) => {
        const name = utf8(node.global_memory_name);
        const named = run.kernels.some((k) => k.blocks.some((b) => b.mem === name && b.values.bandwidth));
        return { name, peak: number(node.max_theoretical_globalmem_bw) || null, max_burst: Number(node.max_burst_count ?? 0),
            by: uses_ports ? "ports" : named ? "accesses" : "none", lower_bound: unnamed && !uses_ports, steps: new Steps(), of_kernel: new Map() };
    });
    for (const memory of run.memories) {
        for (const kernel of run.kernels) add_traffic(run, memory, kernel);
        memory.steps.finish();
    }
}

function memory_head(run, memory) {
    // From bytes in a unit of time to MB/s.
    const rate = (bytes_per_tick) => bytes_per_tick / run.ns * 1000;
    const width = run.span / num_bins;
    const bins = [];
    for (let k = 0; run.span > 0 && k < num_bins; ++k) bins.push(Number(rate(memory.steps.bytes_in(k * width, (k + 1) * width) / width).toPrecision(6)));
    const used = memory.by !== "none" && run.clock !== null;
    const by_interface = new Map();
    for (const kernel of run.kernels) for (const port of kernel.ports) {
        if (port.mem !== memory.name) continue;
        const bytes = port.values.bw.reduce((sum, v, i) => v > 0 && kernel.c[i] > 0 ? sum + v * kernel.c[i] / run.clock : sum, 0);
        by_interface.set(port.interface, (by_interface.get(port.interface) ?? 0) + bytes);
    }
    return { name: memory.name, peak: memory.peak, max_burst: memory.max_burst, by: memory.by, bins: used ? bins : [],
        mean: used && run.span > 0 ? rate(memory.steps.bytes_in(0, run.span) / run.span) : null, max: used ? rate(memory.steps.greatest_rate()) : null,
        full: used && memory.peak && run.span > 0 ? 100 * memory.steps.time_at_least(0.7 * memory.peak * run.ns / 1000) / run.span : null,
        lower_bound: memory.lower_bound, interfaces: [...by_interface].map(([name, bytes]) => [name, bytes, null]) };
}

/** The unit of time that brings cycles at the clock near the lengths of the samples. */
function unit_of(run) {
    let cycles = 0;
    let ticks = 0;
    for (const kernel of run.kernels) kernel.c.forEach((c, i) => { if (c > 0) cycles += c, ticks += kernel.times[i] - kernel.begins[i]; });
    if (!run.clock || !(cycles > 0) || !(ticks > 0)) return ["", 1];
    const expected = cycles / run.clock * 1000 / ticks;
    return [["ns", 1], ["us", 1e3], ["ms", 1e6], ["s", 1e9]].find(([, ns]) => Math.abs(expected / ns - 1) <= 0.2) ?? ["", 1];
}

function transfers_head(run, series) {
    const types = [...new Set(run.transfers.map((t) => utf8(t.type_transfer)))];
    const totals = new Map();
    for (const t of run.transfers) {
        const key = JSON.stringify([utf8(t.type_transfer), Number(t.command_queue_id)]);
        const [count, time] = totals.get(key) ?? [0, 0];
        totals.set(key, [count + 1, time + Math.max(0, run.relative(t.end_time) - run.relative(t.start_time))]);
    }
    const add = (role, of) => series.add(run.transfers.map((t) => String(of(t))), role);
    return { types, n: run.transfers.length, type: add("type", (t) => types.indexOf(utf8(t.type_transfer))), device: add("device", (t) => t.device_id),
        queue: add("queue", (t) => t.command_queue_id), start: add("start", (t) => run.relative(t.start_time)), end: add("end", (t) => run.relative(t.end_time)),
        totals: [...totals].map(([key, [count, time]]) => [...JSON.parse(key), count, time]) };
}

/** The head, without sources, and its chunks. */
export function make_head(run, name, unit) {
    run.clock = Number(run.fmax) > 0 && Number.isFinite(Number(run.fmax)) ? Number(run.fmax) : null;
    for (const kernel of run.kernels) measure(run, kernel);
    [run.unit, run.ns] = unit ? [unit, { ns: 1, us: 1e3, ms: 1e6, s: 1e9 }[unit]] : unit_of(run);
    run.num_memories = list(run.board.children).length;
    measure_memories(run);
    run.started = union_of(run.kernels.filter((k) => !k.autorun).flatMap((k) => k.covered.map((i) => [...i])));
    run.transfer_intervals = union_of(run.transfers.map((t) => [run.relative(t.start_time), run.relative(t.end_time)]));
    const series = new SeriesWriter();
    const kernels = run.kernels.map((kernel) => kernel_head(run, series, kernel));
    const transfers = transfers_head(run, series);
    const versions = run.report.versions ?? {};
    const head = { format: 1, run: { report: name, version: utf8(versions.profiler_json_version ?? ""), zanx: utf8(versions.zanx_version ?? ""),
        fmax: run.fmax, board: utf8(run.board.board_type ?? ""), unit: run.unit, start: run.start, span: run.span, kernel_time: length_of(run.started),
        transfer_only: length_of(run.transfer_intervals) - common_length(run.transfer_intervals, run.started), values: 0, reduced: 0 },
        memories: run.memories.map((memory) => memory_head(run, memory)), kernels, transfers, series: series.table, sources: {}, notes: [] };
    head.run.values = series.num_values;
    return { head, chunks: series.chunks };
}
