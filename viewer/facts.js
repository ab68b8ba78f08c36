// SPDX-License-Identifier: Apache-2.0
// The facts that rules look at: the metrics of a block, and what stands around it in its kernel and its memory. The
// sums of the whole run don't hold all of them, so the head has the others (`facts` of a block).

import { is_known } from "./format.js";
import { counted_shares, metrics_of, percent_of } from "./metrics.js";

/** @typedef {import("./types.d.ts").Head} Head */
/** @typedef {import("./types.d.ts").Kernel} Kernel */
/** @typedef {import("./types.d.ts").Block} Block */
/** @typedef {import("./types.d.ts").Sums} Sums */
/** @typedef {import("./types.d.ts").Facts} Facts */

const shared_names = ["valid cycles", "stalls", "idle cycles", "requests"];

/** "global read", "channel write", "loop". @param {Block} block */
export function kind_of(block) {
    return block.rw === "" ? block.kind : `${block.kind} ${block.rw}`;
}

/**
 * What facts of a kernel's blocks are worked out from: the whole run, or a stretch of it.
 * @typedef {object} Measured
 * @property {Record<string, Sums>[]} sums of each block
 * @property {number | null} cycles of all samples
 * @property {number} samples
 * @property {number} invocations
 * @property {Facts[]} others of each block: facts that sums don't hold
 */

/** @param {Head} head @param {number | undefined} id */
function greatest_of(head, id) {
    return id === undefined || id < 0 ? null : (head.series.max[id] ?? null);
}

/**
 * The facts of all blocks of a kernel, without those that depend on other kernels.
 * @param {Head} head @param {number | null} clock @param {Kernel} kernel @param {Measured} measured @returns {Facts[]}
 */
export function kernel_facts(head, clock, kernel, measured) {
    const stalls = measured.sums.reduce((sum, sums) => sum + (sums.stall?.[0] ?? 0), 0);
    const blocks = kernel.blocks.map((block, number) => {
        const memory = head.memories.find((m) => m.name === block.mem);
        const counted = counted_shares(block.sums);
        const metrics = metrics_of(block, measured.sums[number], {
            clock, unit: head.run.unit, cycles: measured.cycles, kernel_stalls: stalls, memory,
            max_fill: greatest_of(head, block.series.max_fill),
            bandwidth_max: greatest_of(head, block.series.bandwidth),
            burst_max: block.burst ? block.burst[3] : null,
        }, counted);
        const own = known_only({ ...metrics, ...measured.others[number] });
        const others = block.kind === "global" ? { max_burst: memory?.max_burst || null, memory: block.mem || "global memory",
            lower_bound: memory?.lower_bound ?? false, ...bank_facts(memory) } : {};
        return { ...own, counted: is_known(own.stall), ...others };
    });
    return add_neighbours(kernel, clock, measured, blocks);
}

/** Missing values of the head don't hide what sums say. @param {Facts} facts @returns {Facts} */
function known_only(facts) {
    return Object.fromEntries(Object.entries(facts).filter(([, value]) => value !== null && value !== undefined));
}

/** The interface that carries most. @param {import("./types.d.ts").Memory | undefined} memory @returns {Facts} */
function bank_facts(memory) {
    if (!memory || memory.interfaces.length === 0) return {};
    const all = memory.interfaces.reduce((sum, [, bytes]) => sum + bytes, 0);
    const [, bytes, use] = memory.interfaces.reduce((most, one) => one[1] > most[1] ? one : most);
    if (memory.lower_bound) return { interfaces: memory.interfaces.length };
    return { interfaces: memory.interfaces.length, bank_share: percent_of(bytes, all), bank_use: use };
}

/** What is left of memory and port, of the one that is used more. @param {Facts} facts @returns {Facts} */
function free_facts({ memory_use, port_use, lower_bound }) {
    if (lower_bound === true || !is_known(memory_use)) return {};
    return { free_memory: Math.max(0, 100 - memory_use), free: Math.max(0, 100 - Math.max(memory_use, is_known(port_use) ? port_use : 0)) };
}

/**
 * What a block's kernel and its other blocks add.
 * @param {Kernel} kernel @param {number | null} clock @param {Measured} measured @param {Facts[]} blocks
 */
function add_neighbours(kernel, clock, measured, blocks) {
    const types = kernel.types.filter((type) => type >= 0);
    const is_loop = kernel.blocks.map((block) => block.kind === "loop");
    const loops = blocks.map((facts, i) => is_loop[i] && is_known(facts.valid) ? facts.valid : 0);
    const innermost = loops.reduce((best, valid, i) => valid > (loops[best] ?? 0) ? i : best, -1);
    const beside = blocks.filter((_, i) => !is_loop[i]);
    const worst = most(beside, "stall");
    const counted = beside.length > 0 && beside.every((other) => other.counted === true);
    return blocks.map((facts, i) => {
        const { valid } = measured.sums[i];
        const per_invocation = measured.invocations > 0 ? 1 / measured.invocations : NaN;
        return {
            ...facts,
            ...free_facts(facts),
            kernel: kernel.name,
            shared: types.length > 0,
            shared_stall: types.includes(1),
            what: listed(types.map((type) => shared_names[type] ?? "others")),
            autorun: kernel.autorun,
            innermost: i === innermost,
            counted: is_loop[i] ? counted : facts.counted,
            kernel_stall: worst?.stall,
            stalling_block: worst ? kernel.blocks[blocks.indexOf(worst)].name : "",
            kernel_valid: most(beside.filter((other) => other !== facts), "valid")?.valid,
            loops_valid: loops.reduce((sum, share) => sum + share, 0),
            samples: measured.samples,
            clock,
            iterations: is_loop[i] && valid ? valid[0] * per_invocation : null,
            invocation_cycles: valid ? valid[2] * per_invocation : null,
        };
    });
}

/** "a, b and c". @param {string[]} names */
function listed(names) {
    return names.length > 1 ? `${names.slice(0, -1).join(", ")} and ${names[names.length - 1]}` : names.join("");
}

/** The facts with the greatest number of that name. @param {Facts[]} list @param {string} name @returns {Facts | null} */
function most(list, name) {
    /** @type {Facts | null} */
    let found = null;
    for (const facts of list) {
        if (is_known(/** @type {number} */ (facts[name])) && (!found || Number(facts[name]) > Number(found[name]))) found = facts;
    }
    return found;
}
