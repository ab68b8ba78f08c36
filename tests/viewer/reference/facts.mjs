// SPDX-License-Identifier: Apache-2.0
// Facts of a block that sums don't hold: how busy its memory was while it stalled, who else used that, and so on.

import { common_length, length_of, union_of } from "./times.mjs";
import { weight_of } from "./head.mjs";

function total(n, of) {
    let sum = 0;
    for (let i = 0; i < n; ++i) sum += of(i) || 0;
    return sum;
}

function active_facts(run, kernel, block, active) {
    const facts = {};
    const cycles = total(kernel.n, (i) => active[i] && kernel.c[i] > 0 ? kernel.c[i] : 0);
    if (!(cycles > 0)) return facts;
    for (const name of ["valid", "stall", "idle"]) {
        if (block.values[name]) facts[name] = 100 * total(kernel.n, (i) => active[i] && weight_of(kernel, block, name, i) > 0 ? block.values[name][i] : 0) / cycles;
    }
    if (block.kind === "loop" && facts.valid > 0) {
        const stalls = kernel.blocks.reduce((sum, b) => sum + total(kernel.n, (i) => active[i] && b.values.stall ? b.values.stall[i] : 0), 0);
        const iterations = facts.valid / 100 * cycles;
        Object.assign(facts, { iteration: cycles / iterations, net: Math.max(1, (cycles - stalls) / iterations) });
    }
    if (facts.stall !== undefined && run.clock && run.unit) facts.lost = facts.stall / 100 * cycles / run.clock * 1000;
    return facts;
}

/** The share of its memory's peak that was used while the block stalled; without stalls while its kernel ran. */
function memory_use(run, kernel, block, memory) {
    if (!memory || memory.by === "none" || !memory.peak || !run.clock) return undefined;
    const peak = memory.peak * run.ns / 1000;
    const stall = (i) => weight_of(kernel, block, "stall", i) > 0 ? block.values.stall[i] : 0;
    const stalled = block.values.stall ? total(kernel.n, stall) : 0;
    const used = (from, to) => to > from ? memory.steps.bytes_in(from, to) / (to - from) / peak : 0;
    if (stalled > 0) return 100 * total(kernel.n, (i) => stall(i) && stall(i) * used(kernel.begins[i], kernel.times[i])) / stalled;
    const bytes = kernel.covered.reduce((sum, [a, b]) => sum + memory.steps.bytes_in(a, b), 0);
    return length_of(kernel.covered) > 0 ? 100 * bytes / length_of(kernel.covered) / peak : undefined;
}

/** Width of an access in bytes. */
function access_bytes(run, kernel, block) {
    const { bandwidth, efficiency, requests } = block.values;
    if (!bandwidth || !efficiency || !requests || !run.clock) return 0;
    const good = (i) => weight_of(kernel, block, "efficiency", i) > 0 && requests[i] > 0;
    const bytes = total(kernel.n, (i) => good(i) ? efficiency[i] * bandwidth[i] * kernel.c[i] / run.clock : 0);
    const count = total(kernel.n, (i) => good(i) ? requests[i] : 0);
    return count > 0 ? bytes / count : 0;
}

/** The port that all of the block's traffic takes. */
function port_of(kernel, block) {
    const found = kernel.ports.filter((p) => p.mem === block.mem && (p.dir === "rw" || p.dir === block.rw[0]));
    return found.length === 1 ? found[0] : undefined;
}

function moved(run, kernel, block) {
    if (!block.values.bandwidth || !run.clock) return 0;
    return total(kernel.n, (i) => weight_of(kernel, block, "bandwidth", i) > 0
        ? block.values.bandwidth[i] * Math.floor(kernel.c[i] * 1000 / run.clock) / 1000 : 0);
}

function port_facts(run, kernel, block, memory, all_bytes) {
    const port = port_of(kernel, block);
    const beside = kernel.blocks.filter((b) => b.kind === "global" && b.mem === block.mem);
    const width = Math.max(0, ...beside.map((b) => access_bytes(run, kernel, b)));
    if (!port || !(width > 0)) return {};
    const good = (i) => port.values.bw[i] >= 0 && kernel.c[i] > 0;
    const cycles = total(kernel.n, (i) => good(i) ? kernel.c[i] : 0);
    const mean = cycles > 0 ? total(kernel.n, (i) => good(i) ? port.values.bw[i] * kernel.c[i] : 0) / cycles : undefined;
    const sharers = beside.filter((b) => port_of(kernel, b) === port && all_bytes > 0 && moved(run, kernel, b) >= 0.2 * all_bytes);
    const other = sharers.filter((b) => b !== block).sort((a, b) => moved(run, kernel, b) - moved(run, kernel, a))[0];
    const use = mean === undefined ? undefined : 100 * mean / (run.clock * width);
    // More than a port can carry: its width isn't that of the widest access.
    if (use > 100) return { port: port.port };
    return { port: port.port, port_use: use, clock_reach: memory.peak ? 100 * run.clock * width / memory.peak : undefined,
        port_sharers: sharers.includes(block) ? sharers.length : undefined, sharer: sharers.includes(block) ? other?.name : undefined };
}

/** Who moved the memory's bytes while the kernel ran. */
function sharing_facts(run, kernel, block, memory) {
    if (memory.lower_bound || memory.by === "none") return [{}, 0];
    const bytes_of = (steps) => kernel.covered.reduce((sum, [a, b]) => sum + steps.bytes_in(a, b), 0);
    const all = bytes_of(memory.steps);
    if (!(all > 0)) return [{}, 0];
    const facts = { own_share: 100 * bytes_of(memory.of_kernel.get(kernel)) / all };
    const others = run.kernels.filter((k) => k !== kernel).map((k) => [k.name, bytes_of(memory.of_kernel.get(k))]).sort((a, b) => b[1] - a[1]);
    const rivals = [];
    for (let sum = 0; others.length && sum <= all / 2;) {
        const [name, bytes] = others.shift();
        if (!(bytes > 0)) break;
        rivals.push(name);
        sum += bytes;
    }
    if (rivals.length) facts.rivals = rivals.length > 1 ? `${rivals.slice(0, -1).join(", ")} and ${rivals[rivals.length - 1]}` : rivals[0];
    // What was read and written is known where all ports have one direction, or by the accesses.
    let read = 0;
    let written = 0;
    for (const k of run.kernels) {
        const part = length_of(k.covered) > 0 ? common_length(k.covered, kernel.covered) / length_of(k.covered) : 0;
        for (const b of k.blocks) if (b.kind === "global" && b.mem === block.mem) b.rw === "write" ? written += part * moved(run, k, b) : read += part * moved(run, k, b);
    }
    if (read + written > 0) Object.assign(facts, { read_share: 100 * read / (read + written), write_share: 100 * written / (read + written) });
    return [facts, all];
}

/** The shortest stretch with at least half of the stalls, by the time that the kernel ran in it. */
function phase_facts(run, kernel, block) {
    if (!block.values.stall) return {};
    const length = kernel.times.map((time, i) => time - kernel.begins[i]);
    const stall = kernel.times.map((_, i) => weight_of(kernel, block, "stall", i) > 0 ? block.values.stall[i] : 0);
    const all = total(kernel.n, (i) => stall[i]);
    const ran = total(kernel.n, (i) => length[i]);
    if (!(all > 0) || !(ran > 0)) return {};
    let best = { part: Infinity, from: 0, to: 0 };
    let stalls = 0;
    let part = 0;
    for (let from = 0, to = 0; to < kernel.n; ++to) {
        stalls += stall[to];
        part += length[to];
        for (; stalls - stall[from] >= all / 2; ++from) {
            stalls -= stall[from];
            part -= length[from];
        }
        if (stalls >= all / 2 && part < best.part) best = { part, from: kernel.begins[from], to: kernel.times[to] };
    }
    const ns = run.unit ? run.ns : 1;
    return { calm_part: 100 * (1 - best.part / ran), from: best.from * ns, to: best.to * ns };
}

function burst_of(kernel, block) {
    const { burst, bandwidth } = block.values;
    if (!burst || !bandwidth) return undefined;
    const good = (i) => burst[i] > 0 && bandwidth[i] > 0 && kernel.c[i] > 0;
    const words = total(kernel.n, (i) => good(i) ? bandwidth[i] * kernel.c[i] : 0);
    const count = total(kernel.n, (i) => good(i) ? bandwidth[i] * kernel.c[i] / burst[i] : 0);
    return count > 0 ? words / count : undefined;
}

export function other_facts(run, kernel, block) {
    const memory = run.memories.find((m) => m.name === block.mem);
    const [sharing, all_bytes] = memory ? sharing_facts(run, kernel, block, memory) : [{}, 0];
    const { active } = kernel;
    const valid = kernel.c.map((c, i) => block.values.valid && weight_of(kernel, block, "valid", i) > 0 ? 100 * block.values.valid[i] / c : NaN);
    const max_valid = valid.reduce((most, v) => v > most ? v : most, -1);
    const facts = { ...(active ? active_facts(run, kernel, block, active) : {}), memory_use: memory_use(run, kernel, block, memory), ...sharing,
        ...(memory ? port_facts(run, kernel, block, memory, all_bytes) : {}), ...phase_facts(run, kernel, block),
        max_valid: max_valid < 0 ? undefined : max_valid, burst: burst_of(kernel, block), moved: moved(run, kernel, block) || undefined };
    return Object.fromEntries(Object.entries(facts).filter(([, value]) => value !== undefined)
        .map(([key, value]) => [key, typeof value === "number" ? Number(value.toPrecision(15)) : value]));
}
