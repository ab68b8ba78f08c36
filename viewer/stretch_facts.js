// SPDX-License-Identifier: Apache-2.0
// Facts of a kernel's blocks over a selected stretch: the sums of its samples, and what follows from them. What only
// the program can know of the whole run is left out, so a sentence of a stretch says less rather than too much.

import { block_column, Track } from "./columns.js";
import { kernel_facts } from "./facts.js";
import { is_known } from "./format.js";

/** @typedef {import("./types.d.ts").Facts} Facts */
/** @typedef {import("./types.d.ts").Sums} Sums */
/** @typedef {import("./model.js").Model} Model */
/** @typedef {import("./model.js").ModelKernel} ModelKernel */

const metric_names = ["valid", "stall", "idle", "requests", "bandwidth", "efficiency", "fill", "hits", "unaligned"];
const share_names = new Set(["valid", "stall", "idle"]);
/** More blocks than this, and only those that are shown are worked out. */
const most_blocks = 100;

/** The tracks of a model's blocks and ports, made once. */
export class Tracks {
    constructor() {
        /** @type {Map<string, Track>} */
        this.made = new Map();
    }

    /** @param {ModelKernel} kernel @param {number} block its number @param {string} metric */
    of_block(kernel, block, metric) {
        const column = block_column(kernel.kernel, kernel.kernel.blocks[block], metric);
        return column && this.make(kernel, column);
    }

    /** @param {ModelKernel} kernel @param {number} port its number */
    of_port(kernel, port) {
        const id = kernel.kernel.ports[port].bw;
        return this.make(kernel, { id, weights: [kernel.kernel.cycles].filter((c) => c >= 0), metric: "bandwidth", shared: false });
    }

    /** @param {ModelKernel} kernel @param {{id: number, weights: number[], metric: string, shared: boolean}} column */
    make(kernel, column) {
        const key = `${kernel.number}/${column.id}/${column.metric}/${column.weights.join()}`;
        let track = this.made.get(key);
        if (!track) this.made.set(key, track = new Track(kernel.clock, column));
        return track;
    }
}

/** @param {Model} model @param {Tracks} tracks @param {ModelKernel} kernel @param {number} block @param {[number, number]} samples @returns {Promise<Record<string, Sums>>} */
async function block_sums(model, tracks, kernel, block, samples) {
    /** @type {Record<string, Sums>} */
    const sums = {};
    await Promise.all(metric_names.map(async (metric) => {
        const track = tracks.of_block(kernel, block, metric);
        if (!track) return;
        const { sum, weight, cycles } = await track.sums(...samples);
        // A share's track is weighted by cycles, in percent.
        sums[metric] = share_names.has(metric) ? [sum / 100, weight > 0 ? 1 : 0, weight, 0]
            : [sum / track.scale, weight, cycles, 0];
    }));
    return sums;
}

/** The mean use of the block's memory over the stretch, weighted by its stalls, in parts of the memory's bins. @param {Model} model @param {Tracks} tracks @param {ModelKernel} kernel @param {number} number @param {[number, number]} stretch */
async function memory_use(model, tracks, kernel, number, stretch) {
    const memory = model.head.memories.find((m) => m.name === kernel.kernel.blocks[number].mem);
    const stalls = tracks.of_block(kernel, number, "stall");
    if (!memory || !memory.peak || memory.bins.length === 0 || !stalls) return null;
    const width = model.head.run.span / memory.bins.length;
    const first = Math.max(0, Math.floor(stretch[0] / width));
    const last = Math.min(memory.bins.length, Math.ceil(stretch[1] / width));
    let stalled = 0;
    let used = 0;
    let plain = 0;
    for (let k = first; k < last; ++k) {
        const samples = await kernel.clock.samples(Math.max(stretch[0], k * width), Math.min(stretch[1], (k + 1) * width));
        const { sum } = await stalls.sums(...samples);
        stalled += sum;
        used += sum * memory.bins[k];
        plain += memory.bins[k];
    }
    const mean = stalled > 0 ? used / stalled : last > first ? plain / (last - first) : NaN;
    return Number.isFinite(mean) ? 100 * mean / memory.peak : null;
}

/** The use of the port that all of the block's traffic takes, of what it can carry at the clock. @param {Model} model @param {Tracks} tracks @param {ModelKernel} kernel @param {number} number @param {[number, number]} samples */
async function port_use(model, tracks, kernel, number, samples) {
    const { mem } = kernel.kernel.blocks[number];
    const { port, clock_reach } = kernel.blocks[number].facts;
    const found = kernel.kernel.ports.findIndex((p) => p.mem === mem && p.port === port);
    const limit = Number(clock_reach) / 100 * Number(model.head.memories.find((m) => m.name === mem)?.peak);
    if (found < 0 || !(limit > 0)) return null;
    const { mean } = await tracks.of_port(kernel, found).summary(...samples);
    return is_known(mean) ? Math.min(100, 100 * mean / limit) : null;
}

/** What tracks carried in MB/s times cycles. @param {(Track | undefined)[]} tracks @param {[number, number]} samples */
async function carried(tracks, samples) {
    const parts = await Promise.all(tracks.map((track) => track?.sums(...samples)));
    return parts.reduce((all, part) => all + (part?.sum ?? 0), 0);
}

/** What a kernel moved from and to a memory: by its ports if it has any there, else by its accesses. @param {Tracks} tracks @param {ModelKernel} kernel @param {string} mem @param {[number, number]} samples */
function traffic(tracks, kernel, mem, samples) {
    const { ports, blocks } = kernel.kernel;
    const of_ports = ports.flatMap((port, i) => port.mem === mem ? [tracks.of_port(kernel, i)] : []);
    return carried(of_ports.length > 0 ? of_ports
        : blocks.flatMap((b, i) => b.kind === "global" && b.mem === mem ? [tracks.of_block(kernel, i, "bandwidth")] : []), samples);
}

/** Who shares the block's port, while its kernel ran in the stretch: blocks with a good part of the memory's traffic. @param {Model} model @param {Tracks} tracks @param {import("./model.js").ModelBlock} block @param {[number, number]} samples @param {[number, number]} stretch @returns {Promise<Facts>} */
async function sharers(model, tracks, { kernel, block: { mem }, facts: { port }, number }, samples, stretch) {
    const { clock } = kernel;
    const beside = kernel.blocks.filter((other) => other.block.mem === mem && other.facts.port === port);
    if (!port || beside.length < 2 || samples[0] === samples[1] || model.head.memories.find((m) => m.name === mem)?.lower_bound) return {};
    const from = Math.max(stretch[0], clock.start[clock.invocation_of(samples[0])]);
    const to = Math.min(stretch[1], clock.end[clock.invocation_of(samples[1] - 1)]);
    const all = await Promise.all(model.kernels.map(async (other) => traffic(tracks, other, mem, other === kernel ? samples : await other.clock.samples(from, to))));
    const least = all.reduce((sum, part) => sum + part) * model.rules.thresholds.sharer / 100;
    const moved = await Promise.all(beside.map((other) => carried([tracks.of_block(kernel, other.number, "bandwidth")], samples)));
    const place = moved.reduce((best, part, i) => part >= least && beside[i].number !== number && part > (moved[best] ?? 0) ? i : best, -1);
    return { port_sharers: moved.filter((part) => part > 0 && part >= least).length, sharer: beside[place]?.block.name };
}

/**
 * The facts of one block over a stretch.
 * @param {Model} model @param {Tracks} tracks @param {ModelKernel} kernel @param {number} number of the block
 * @param {[number, number]} stretch @returns {Promise<Facts>}
 */
export async function stretch_facts(model, tracks, kernel, number, stretch) {
    const samples = await kernel.clock.samples(...stretch);
    const { blocks } = kernel.kernel;
    const all = blocks.length <= most_blocks;
    const sums = await Promise.all(blocks.map((_, i) => all || i === number ? block_sums(model, tracks, kernel, i, samples) : Promise.resolve({})));
    const cycles = await tracks.make(kernel, { id: kernel.kernel.cycles, weights: [], metric: "cycles", shared: false }).sums(...samples);
    const use = await memory_use(model, tracks, kernel, number, stretch);
    const busy = await port_use(model, tracks, kernel, number, samples);
    const shared = await sharers(model, tracks, kernel.blocks[number], samples, stretch);
    const greatest = await tracks.of_block(kernel, number, "valid")?.summary(...samples);
    const { clock } = kernel;
    const invocations = Math.max(1, clock.invocation_of(samples[1] - 1) - clock.invocation_of(samples[0]) + 1);
    const whole = kernel.blocks[number].facts;
    const facts = kernel_facts(model.head, model.clock, kernel.kernel, {
        sums, cycles: cycles.sum, samples: samples[1] - samples[0], invocations,
        others: blocks.map((_, i) => i === number ? { memory_use: use, port: whole.port, clock_reach: whole.clock_reach, port_use: busy, ...shared,
            max_valid: greatest && Number.isFinite(greatest.greatest) ? greatest.greatest : null } : {}),
    })[number];
    return { ...facts, time_unit_known: whole.time_unit_known, free_stages: whole.free_stages, stage: whole.stage };
}
