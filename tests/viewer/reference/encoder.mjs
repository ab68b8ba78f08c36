// SPDX-License-Identifier: Apache-2.0
// Series and chunks of the page, written plainly: texts of the report to integers, planes, deflate-raw and base64.

import { deflateRawSync } from "node:zlib";

const chunk_values = 2 ** 18;
const pyramid_from = 2 ** 16;
const pyramid_step = 256;
const mark_codes = { nan: 1, inf: 2, "-inf": 3, "-0": 4, "-nan": 5 };

/** A decimal text as a whole number of units of 10^-digits, rounded away from zero. */
export function scaled_integer(text, digits) {
    const match = /^(-?)(\d*)(?:\.(\d*))?(?:e([+-]?\d+))?$/i.exec(text);
    if (!match) throw new Error(`not a number: ${text}`);
    const [, sign, whole, fraction = "", exponent = "0"] = match;
    const shift = digits + Number(exponent) - fraction.length;
    const all = BigInt(whole + fraction || "0");
    const value = shift >= 0 ? all * 10n ** BigInt(shift) : (all + 5n * 10n ** BigInt(-shift - 1)) / 10n ** BigInt(-shift);
    return sign ? -value : value;
}

/** Decimals that a text needs. */
function decimals_of(text) {
    const match = /^-?\d*(?:\.(\d*))?(?:e([+-]?\d+))?$/i.exec(text);
    return match ? Math.max(0, (match[1]?.length ?? 0) - Number(match[2] ?? 0)) : 0;
}

function packed_planes(values) {
    let bits = 0n;
    const unsigned = values.map((v) => v < 0n ? (-v << 1n) - 1n : v << 1n);
    for (const u of unsigned) bits |= u;
    let width = 0;
    while (bits >> BigInt(8 * width)) ++width;
    const planes = Buffer.alloc(width * values.length);
    unsigned.forEach((u, i) => { for (let k = 0; k < width; ++k) planes[k * values.length + i] = Number((u >> BigInt(8 * k)) & 255n); });
    return { width, packed: width ? deflateRawSync(planes, { level: 6 }) : Buffer.alloc(0) };
}

export class SeriesWriter {
    constructor() {
        this.table = { n: [], chunk: [], digits: [], enc: [], min: [], max: [], marks: {}, pyramid: {} };
        this.chunks = [];
        this.known = new Map();
        this.num_values = 0;
    }

    /**
     * Adds a column of texts; undefined is missing. Returns its number, the same for equal columns. Equal columns of
     * different roles share their chunks, but have a number each, since their pyramids differ.
     */
    add(texts, role = "") {
        const key = texts.join("\u0001") + "\u0002" + texts.length;
        const roles = this.known.get(key) ?? new Map();
        this.known.set(key, roles);
        if (!roles.has(role)) roles.set(role, roles.size > 0 ? this.copy_row(roles.values().next().value) : this.add_texts(texts));
        return roles.get(role);
    }

    copy_row(id) {
        for (const name of ["n", "chunk", "digits", "enc", "min", "max"]) this.table[name].push(this.table[name][id]);
        const copy = this.table.n.length - 1;
        if (this.table.marks[id]) this.table.marks[copy] = this.table.marks[id];
        return copy;
    }

    add_texts(texts) {
        const digits = Math.min(9, texts.reduce((most, t) => Math.max(most, t === undefined || t in mark_codes ? 0 : decimals_of(t)), 0));
        const marks = [];
        const integers = [];
        let last = 0n;
        texts.forEach((text, i) => {
            const code = text === undefined ? 0 : mark_codes[text];
            if (code === undefined) last = scaled_integer(text, digits);
            else if (marks.length && marks[marks.length - 1][2] === code && marks[marks.length - 1][0] + marks[marks.length - 1][1] === i) ++marks[marks.length - 1][1];
            else marks.push([i, 1, code]);
            integers.push(last);
        });
        const numbers = texts.filter((t) => t !== undefined && !(t in mark_codes)).map(Number);
        const id = this.add_integers(integers, digits, numbers);
        if (marks.length) this.table.marks[id] = marks;
        return id;
    }

    /** Adds a column of plain numbers with so many decimals; fewer where the integers would pass 2^53. */
    add_numbers(values, digits = 0) {
        let kept = digits;
        while (kept > 0 && values.some((v) => Math.abs(v) * 10 ** kept >= 2 ** 53)) --kept;
        return this.add_integers(values.map((v) => BigInt(Math.round(v * 10 ** kept))), kept, values);
    }

    add_integers(integers, digits, numbers) {
        const id = this.table.n.length;
        const large = integers.some((x) => x >= 2n ** 53n || x <= -(2n ** 53n));
        const encodings = [];
        const parts = [];
        for (let from = 0; from < integers.length; from += chunk_values) {
            const plain = integers.slice(from, from + chunk_values);
            const differences = plain.map((x, i) => x - (i ? plain[i - 1] : 0n));
            const a = packed_planes(differences);
            const b = packed_planes(plain);
            const use_plain = large || b.packed.length < a.packed.length;
            encodings.push((use_plain ? b : a).width + (use_plain ? 10 : 0));
            parts.push((use_plain ? b : a).packed);
        }
        const empty = parts.length === 0 || (parts.length === 1 && encodings[0] % 10 === 0);
        this.table.n.push(integers.length);
        this.table.chunk.push(empty ? -1 : this.chunks.length);
        this.table.digits.push(digits);
        this.table.enc.push(encodings);
        this.table.min.push(numbers.length ? numbers.reduce((x, y) => Math.min(x, y)) : null);
        this.table.max.push(numbers.length ? numbers.reduce((x, y) => Math.max(x, y)) : null);
        if (!empty) this.chunks.push(...parts.map((p) => p.toString("base64")));
        this.num_values += integers.length;
        return id;
    }

    /**
     * Stores the level of 256 values of a long series. `shown` is what charts show (NaN where a value doesn't count),
     * `products` value times weight, `weights` its weights if some values don't count.
     */
    add_pyramid(id, shown, products, weights, digits) {
        if (products.length < pyramid_from || this.table.pyramid[id]) return;
        const least = [];
        const range = [];
        const sums = [];
        const counted = [];
        for (let from = 0; from < products.length; from += pyramid_step) {
            const to = Math.min(products.length, from + pyramid_step);
            let low = Infinity;
            let high = -Infinity;
            let sum = 0;
            let weight = 0;
            for (let i = from; i < to; ++i) {
                if (shown[i] < low) low = shown[i];
                if (shown[i] > high) high = shown[i];
                sum += products[i];
                if (weights) weight += weights[i];
            }
            least.push(low === Infinity ? least[least.length - 1] ?? 0 : low);
            range.push(low === Infinity ? 0 : high - low);
            sums.push(sum);
            counted.push(weight);
        }
        const pyramid = [this.add_numbers(least, digits), this.add_numbers(range, digits), this.add_numbers(sums, digits)];
        if (weights) pyramid.push(this.add_numbers(counted, digits));
        this.table.pyramid[id] = pyramid;
    }
}
