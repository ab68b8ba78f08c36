// SPDX-License-Identifier: Apache-2.0
// The run as the views show it: kernels and blocks with their facts and sentences, the ranking, culprits, teams and
// the four answers. docs/metrics.md has the rules.

import { Clock } from "./columns.js";
import { kernel_facts, kind_of } from "./facts.js";
import { is_known, nanoseconds } from "./format.js";
import { clock_of } from "./metrics.js";
import { judge } from "./rules.js";
import { SeriesStore } from "./series.js";

/** @typedef {import("./types.d.ts").Head} Head */
/** @typedef {import("./types.d.ts").Facts} Facts */
/** @typedef {import("./rules.js").RuleTable} RuleTable */
/** @typedef {import("./rules.js").Sentence} Sentence */
/**
 * @typedef {object} ModelBlock
 * @property {ModelKernel} kernel
 * @property {number} number in its kernel
 * @property {import("./types.d.ts").Block} block
 * @property {string} kind
 * @property {Facts} facts of the whole run
 * @property {Sentence} sentence of the whole run
 * @property {number | null} rank_time the time by which it is ranked, as lost is
 */
/**
 * @typedef {object} ModelKernel
 * @property {number} number
 * @property {import("./types.d.ts").Kernel} kernel
 * @property {string} name
 * @property {Clock} clock
 * @property {ModelBlock[]} blocks
 * @property {ModelBlock | null} culprit
 */
/** @typedef {{kernel: Sentence, block: Sentence, source: Sentence, memory: Sentence, leader: ModelKernel | null, culprit: ModelBlock | null}} Answers */

export class Model {
    /** @param {Head} head @param {RuleTable} rules @param {SeriesStore} store @param {() => void} changed called when data has come */
    constructor(head, rules, store, changed) {
        this.head = head;
        this.rules = rules;
        this.store = store;
        this.clock = clock_of(head.run.fmax);
        this.unit = head.run.unit;
        /** The unit of facts that are times: nanoseconds, if those are known. */
        this.fact_unit = nanoseconds(this.unit) ? "ns" : "";
        /** @type {ModelKernel[]} */
        this.kernels = head.kernels.map((kernel, number) => ({ number, kernel, name: kernel.name,
            clock: new Clock(store, kernel, changed), blocks: [], culprit: null }));
        for (const kernel of this.kernels) kernel.blocks = this.blocks_of(kernel);
        for (const kernel of this.kernels) this.add_stages(kernel);
        for (const kernel of this.kernels) for (const block of kernel.blocks) this.judge_block(block);
        /** All blocks, the one that lost most first. */
        this.ranking = this.kernels.flatMap((kernel) => kernel.blocks).sort(before);
        for (const kernel of this.kernels) kernel.culprit = this.culprit_of(kernel);
        this.answers = this.answer();
    }

    /** @param {ModelKernel} kernel */
    blocks_of(kernel) {
        const { kernel: data } = kernel;
        const facts = kernel_facts(this.head, this.clock, data, {
            sums: data.blocks.map((block) => block.sums), cycles: data.cycles_total, samples: data.n,
            invocations: data.invocations.n, others: data.blocks.map((block) => block.facts),
        });
        return data.blocks.map((block, number) => /** @type {ModelBlock} */ ({ kernel, number, block, kind: kind_of(block),
            facts: { ...facts[number], time_unit_known: this.fact_unit !== "" },
            sentence: { rule: "", tone: "none", text: "" }, rank_time: null }));
    }

    /** The kernels that ran beside this one for at least half of its time, and itself. @param {ModelKernel} kernel */
    team_of(kernel) {
        return [kernel, ...kernel.kernel.with.map((number) => this.kernels[number]).filter(Boolean)];
    }

    /** Stages of the team that worked, and whose channels hardly stall. @param {ModelKernel} kernel */
    add_stages(kernel) {
        const free = this.team_of(kernel).slice(1).filter((other) => {
            const stall = channel_stall(other);
            const worked = other.blocks.some((b) => b.block.kind === "channel" && Number(b.facts.valid) > 0);
            return is_known(stall) && stall < this.rules.thresholds.stall_free && worked;
        });
        // Stages that were started come first.
        free.sort((a, b) => Number(a.kernel.autorun) - Number(b.kernel.autorun));
        const stage = free.reduce((/** @type {ModelKernel | null} */ best, other) =>
            !best || (best.kernel.autorun === other.kernel.autorun && time_at_work(other) > time_at_work(best)) ? other : best, null);
        for (const block of kernel.blocks.filter((b) => b.block.kind === "channel")) {
            block.facts.free_stages = free.length;
            block.facts.stage = stage?.name ?? "";
        }
    }

    /** @param {ModelBlock} block */
    judge_block(block) {
        block.sentence = judge(this.rules, this.rules.rules, block.facts, block.kind);
        const { lost, net, valid } = block.facts;
        block.rank_time = is_known(lost) ? lost : null;
        if (block.sentence.rule !== "loop-interval") return;
        // The time beyond a cycle for each iteration and beyond all stalls.
        const share = is_known(net) && is_known(valid) ? (net - 1) * valid / 100 : null;
        const cycles = block.block.sums.valid?.[2];
        if (share !== null && this.clock && this.fact_unit && is_known(cycles)) block.rank_time = share * cycles / this.clock * 1000;
        else block.rank_time = share === null ? null : share * block.kernel.kernel.total;
    }

    /** @param {ModelKernel} kernel */
    culprit_of(kernel) {
        const ranked = this.ranking.filter((block) => block.kernel === kernel);
        return ranked.find((block) => is_known(block.facts.stall) && block.facts.stall >= this.rules.thresholds.stall_worth)
            ?? ranked.find((block) => block.sentence.rule === "loop-interval") ?? ranked[0] ?? null;
    }

    /** The stage that the others wait for: the longest, less what its channels stall. Autorun kernels lead if no other ran. @returns {ModelKernel | null} */
    leader() {
        const started = this.kernels.filter((k) => !k.kernel.autorun);
        return (started.length > 0 ? started : this.kernels).reduce((/** @type {ModelKernel | null} */ best, kernel) =>
            !best || time_at_work(kernel) > time_at_work(best) ? kernel : best, null);
    }

    /** @param {ModelKernel} leader */
    team_culprit(leader) {
        const culprits = this.ranking.filter((block) => this.team_of(leader).some((kernel) => kernel.culprit === block));
        const first = culprits[0] ?? null;
        if (first?.sentence.tone !== "symptom") return first;
        const least = Number(first.rank_time) * this.rules.thresholds.cause_part / 100;
        return culprits.find((block) => block.sentence.tone === "cause" && is_known(block.rank_time) && block.rank_time >= least) ?? first;
    }

    /** @returns {Answers} */
    answer() {
        const leader = this.leader();
        const culprit = leader ? this.team_culprit(leader) : null;
        const facts = { ...culprit?.facts, ...this.run_facts(leader, culprit) };
        const rule = culprit?.sentence.rule ?? "";
        const asked = (/** @type {string} */ question) =>
            judge(this.rules, this.rules.answers[question] ?? [], facts, culprit?.kind ?? "", rule);
        return { kernel: asked("kernel"), block: asked("block"), source: asked("source"), memory: asked("memory"), leader, culprit };
    }

    /** @param {ModelKernel | null} leader @param {ModelBlock | null} culprit @returns {Facts} */
    run_facts(leader, culprit) {
        const { span, kernel_time, transfer_only } = this.head.run;
        const autorun = this.kernels.filter((k) => k.kernel.autorun).map((k) => k.kernel.union);
        const nothing = Math.max(0, span - Math.max(kernel_time, ...autorun) - transfer_only);
        const ran = leader?.kernel.union ?? 0;
        const part = (/** @type {number} */ time) => span > 0 ? 100 * time / span : null;
        const factor = nanoseconds(this.unit) ?? 1;
        const kernel = leader?.kernel;
        const chains = culprit?.block.src ?? [];
        return {
            host_longest: nothing > ran && nothing >= transfer_only,
            transfers_longest: transfer_only > ran && transfer_only > nothing,
            reprogramming_share: reprogramming_share(this.head),
            nothing_share: part(nothing),
            transfer_share: part(transfer_only),
            lead_autorun: kernel?.autorun ?? false,
            kernel: kernel?.name ?? "",
            invocations: kernel?.invocations.n ?? null,
            busy: kernel ? part(kernel.union) : null,
            kernel_total: kernel ? kernel.total * factor : null,
            kernel_time: kernel && is_known(kernel.median) ? kernel.median * factor : null,
            gap: kernel && is_known(kernel.gaps) && kernel.invocations.n > 1 ? kernel.gaps * factor / (kernel.invocations.n - 1) : null,
            gaps_share: kernel && is_known(kernel.gaps) && kernel.total > 0 ? 100 * kernel.gaps / kernel.total : null,
            has_culprit: culprit !== null,
            culprit: culprit ? `${culprit.kernel.name}/${culprit.block.name}` : "",
            unknown_blocks: leader ? unknown_blocks(this.team_of(leader), this.rules.thresholds.stall_worth) : 0,
            place: chains.length > 0 ? whole_place(chains[0][0]) : "",
            caller: chains.length > 0 && chains[0].length > 1 ? whole_place(chains[0][chains[0].length - 1]) : "",
            more_places: chains.length > 1 ? chains.length - 1 : null,
            time_unit_known: this.fact_unit !== "",
        };
    }

    /** Times as the head has them, for facts in nanoseconds. @param {number | null} time */
    ticks(time) {
        return is_known(time) ? time / (nanoseconds(this.unit) ?? 1) : null;
    }

    /** @param {string} kernel @param {string} block */
    find_block(kernel, block) {
        return this.ranking.find((b) => b.kernel.name === kernel && b.block.name === block) ?? null;
    }
}

/** Blocks that wait for work come last, then those whose time isn't known. @param {ModelBlock} a @param {ModelBlock} b */
function before(a, b) {
    const idle = Number(a.sentence.rule === "waits-for-work") - Number(b.sentence.rule === "waits-for-work");
    return idle || (b.rank_time ?? -1) - (a.rank_time ?? -1);
}

/** The greatest stall of a kernel's channels; null if it has none or one isn't known. @param {ModelKernel} kernel @returns {number | null} */
function channel_stall(kernel) {
    const stalls = kernel.blocks.filter((b) => b.block.kind === "channel").map((b) => b.facts.stall);
    return stalls.length > 0 && stalls.every(is_known) ? Math.max(...stalls) : null;
}

/** @param {ModelKernel} kernel */
function time_at_work(kernel) {
    return kernel.kernel.union * (1 - (channel_stall(kernel) ?? 0) / 100);
}

/** Blocks that may stall unseen; those of a kernel of loops alone count, too. @param {ModelKernel[]} team @param {number} stall_worth */
function unknown_blocks(team, stall_worth) {
    return team.reduce((sum, kernel) => {
        const only_loops = kernel.blocks.every((b) => b.block.kind === "loop");
        return sum + kernel.blocks.filter((b) => (only_loops || b.block.kind !== "loop") && !is_known(b.facts.stall)
            && (is_known(b.facts.valid) ? b.facts.valid : 0) < 100 - stall_worth).length;
    }, 0);
}

/** @param {Head} head */
function reprogramming_share(head) {
    const all = head.transfers.totals.reduce((sum, [, , , time]) => sum + time, 0);
    const own = head.transfers.totals.reduce((sum, [type, , , time]) => sum + (type === ".reprogram" ? time : 0), 0);
    return all > 0 ? 100 * own / all : null;
}

/** "device/include/sad.h:6". @param {[string, number, number]} place */
function whole_place([file, line]) {
    return file === "" || line <= 0 ? file : `${file}:${line}`;
}

/** "sad.h:6". @param {[string, number, number]} place */
export function place_text([file, line]) {
    return `${file.slice(file.lastIndexOf("/") + 1)}:${line}`;
}
