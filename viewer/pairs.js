// SPDX-License-Identifier: Apache-2.0
// Two runs side by side: kernels and memories by name, blocks by kernel and name. What only one run has is listed too.

import { is_known, nanoseconds } from "./format.js";

/** @typedef {import("./model.js").Model} Model */
/** @typedef {import("./model.js").ModelKernel} ModelKernel */
/** @typedef {import("./model.js").ModelBlock} ModelBlock */
/** @template T @typedef {{key: string, was: T | null, now: T | null}} Pair */

/** Changes below this part of the base's span aren't listed. */
const least_part = 1 / 1000;

/** @template T @param {T[]} was @param {T[]} now @param {(one: T) => string} key_of @returns {Pair<T>[]} */
export function pairs_of(was, now, key_of) {
    const by_key = new Map(was.map((one) => [key_of(one), one]));
    /** @type {Pair<T>[]} */
    const pairs = now.map((one) => {
        const key = key_of(one);
        const other = by_key.get(key) ?? null;
        by_key.delete(key);
        return { key, was: other, now: one };
    });
    for (const [key, one] of by_key) pairs.push({ key, was: one, now: null });
    return pairs;
}

/** The change, if both runs have the value. @param {unknown} was @param {unknown} now */
export function change_of(was, now) {
    return is_known(was) && is_known(now) ? now - was : null;
}

/** The kernel of that name in another run. @param {Model | null} model @param {ModelKernel} kernel */
export function same_kernel(model, kernel) {
    return model?.kernels.find((other) => other.name === kernel.name && other.kernel.cu === kernel.kernel.cu) ?? null;
}

/** Kernels, blocks that lose less and more, and memories. @param {Model} base @param {Model} model */
export function compare(base, model) {
    const started = (/** @type {Model} */ m) => m.kernels.filter((k) => !k.kernel.autorun);
    const blocks = pairs_of(base.ranking, model.ranking, (b) => JSON.stringify([b.kernel.name, b.block.name]));
    const lost = (/** @type {ModelBlock | null} */ b) => b?.facts.lost;
    const least = base.head.run.span * (nanoseconds(base.unit) ?? 1) * least_part;
    const changed = blocks.map((pair) => ({ ...pair, change: change_of(lost(pair.was), lost(pair.now)) }))
        .filter(({ was, now, change }) => change === null ? !was !== !now && Number(lost(was ?? now) ?? 0) >= least : Math.abs(change) >= least);
    const size = (/** @type {{change: number | null, was: ModelBlock | null, now: ModelBlock | null}} */ p) =>
        p.change ?? (p.now ? Number(lost(p.now)) : -Number(lost(p.was)));
    return {
        kernels: pairs_of(started(base), started(model), (k) => JSON.stringify([k.name, k.kernel.cu])),
        less: changed.filter((p) => size(p) < 0).sort((a, b) => size(a) - size(b)),
        more: changed.filter((p) => size(p) > 0).sort((a, b) => size(b) - size(a)),
        memories: pairs_of(base.head.memories, model.head.memories, (m) => m.name),
    };
}
