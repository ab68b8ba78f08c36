// SPDX-License-Identifier: Apache-2.0
// A report as kernels, blocks and samples: nodes of one kernel put together, names put together of their bytes.

/** The text whose characters are bytes of UTF-8. */
export function utf8(text) {
    return new TextDecoder().decode(Uint8Array.from(String(text), (c) => c.charCodeAt(0) & 255));
}

/** An array of the report, which is "" where it is empty. */
export function list(value) {
    return Array.isArray(value) ? value : [];
}

function call_chain(place) {
    const chain = [];
    for (let p = place; p; p = list(p.callsite)[0]) chain.push([utf8(p.filename), Number(p.line), Number(p.column_num ?? 0)]);
    return chain;
}

// Keys of the report by the names of series.
const block_keys = {
    valid: "occupancy_samples", stall: "stall_samples", idle: "idle_samples", requests: "activity_samples",
    bandwidth: "bandwidth_samples", efficiency: "bandwidth_eff_samples", fill: "average_channel_depth_samples",
    max_fill: "max_channel_depth_samples", hits: "cache_hit_samples", unaligned: "non_aligned_access_samples",
    burst: "average_burst_size",
};
const port_keys = { bw: "global_used_bw", rburst: "avg_read_burst", wburst: "avg_write_burst" };

function block_of(node) {
    const details = node.module_inst_details || {};
    const rw = ["read", "write"].includes(details.operation_type) ? details.operation_type : "";
    const kind = details.mem_type === "__loop" ? "loop" : details.mem_type === "__global" ? "global" : rw ? "channel" : "other";
    return { name: utf8(node.name), kind, rw, mem: utf8(details.global_mem_name ?? ""), coalesced: details.coalesced_memory === "true",
        src: list(node.sourcefiles).map(call_chain), parts: [], entries: [] };
}

function port_of(node) {
    const dir = node.read_only === "true" ? "r" : node.write_only === "true" ? "w" : "rw";
    return { mem: utf8(node.name), interface: utf8(node.interface), port: utf8(node.port), dir, parts: [] };
}

/** Adds an invocation's arrays to its block or port: for each series the texts, by the number of its first sample. */
function add_arrays(owner, keys, source, first, num_samples) {
    const part = { first, num_samples, texts: {} };
    for (const [name, key] of Object.entries(keys)) if (source[key] !== undefined) part.texts[name] = list(source[key]);
    owner.parts.push(part);
}

function add_children(kernel, node, first) {
    for (const child of list(node.children)) {
        if (child.type === "extmem") {
            const made = port_of(child);
            const same = kernel.ports.find((p) => p.mem === made.mem && p.interface === made.interface && p.port === made.port);
            if (!same) kernel.ports.push(made);
            add_arrays(same ?? made, port_keys, child, first, Number(node.num_samples));
        } else {
            const made = block_of(child);
            const same = kernel.blocks.find((b) => b.name === made.name);
            if (!same) kernel.blocks.push(made);
            add_arrays(same ?? made, block_keys, child.module_inst_details || {}, first, Number(node.num_samples));
        }
    }
}

/** Kernels in the order of their first nodes, those that run by themselves last. Times are numbers after `start`. */
export function read_report(report) {
    const nodes = list(report.kernels?.nodes);
    const transfers = list(report.memtransfers?.nodes);
    const times = [...nodes, ...transfers].flatMap((n) => [n.start_time, n.end_time ?? n.start_time]).map((t) => BigInt(t));
    const start = times.length ? times.reduce((a, b) => b < a ? b : a) : 0n;
    const end = times.length ? times.reduce((a, b) => b > a ? b : a) : 0n;
    const relative = (text) => Number(BigInt(text) - start);
    const kernels = new Map();
    for (const node of nodes) {
        const place = node.sourcefile ?? {};
        const key = JSON.stringify([node.name, node.compute_unit, place.filename, place.line]);
        if (!kernels.has(key)) kernels.set(key, { name: utf8(node.name), cu: Number(node.compute_unit), file: utf8(place.filename ?? ""),
            line: Number(place.line ?? 0), autorun: node.is_autorun === "true", invocations: [], times: [], cycles: [], devices: [], queues: [], blocks: [], ports: [] });
        const kernel = kernels.get(key);
        const first = kernel.times.length;
        const begin = relative(node.start_time);
        const stamps = list(node.sample_timestamps).map(relative);
        const last = kernel.invocations[kernel.invocations.length - 1];
        if (last?.start === begin) last.end = Math.max(last.end, relative(node.end_time ?? node.start_time));
        else kernel.invocations.push({ start: begin, end: relative(node.end_time ?? node.start_time), first, type: Number(node.shared_counter_run_type) });
        kernel.times.push(...stamps);
        const cycles = list(node.total_cycles_between_samples);
        for (let i = 0; i < stamps.length; ++i) {
            kernel.cycles.push(cycles.length > stamps.length ? undefined : cycles[i]);
            kernel.devices.push(list(node.device_ids)[i]);
            kernel.queues.push(list(node.command_queue_id)[i]);
        }
        add_children(kernel, node, first);
    }
    const all = [...kernels.values()];
    return { report, start: String(start), span: Number(end - start), relative,
        kernels: [...all.filter((k) => !k.autorun), ...all.filter((k) => k.autorun)], transfers,
        board: list(report.boards?.nodes)[0] ?? {}, fmax: list(report.run_info?.nodes)[0]?.fmax ?? "0.0" };
}

/** The texts of a series over all samples of its kernel; undefined where there is none. */
export function column_texts(owner, name, n) {
    const texts = new Array(n).fill(undefined);
    let found = false;
    for (const part of owner.parts) {
        const values = part.texts[name];
        if (!values) continue;
        found = true;
        // Bursts line up only where each sample has one.
        if (name === "burst" && values.length !== part.num_samples) continue;
        for (let i = 0; i < Math.min(values.length, part.num_samples); ++i) texts[part.first + i] = values[i];
    }
    return found ? texts : undefined;
}
