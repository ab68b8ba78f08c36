// SPDX-License-Identifier: Apache-2.0
// Sets of intervals, and quantiles by nearest rank.

/** The union of intervals, sorted and apart. */
export function union_of(intervals) {
    const sorted = intervals.filter(([a, b]) => b > a).sort((x, y) => x[0] - y[0]);
    const result = [];
    for (const [from, to] of sorted) {
        const last = result[result.length - 1];
        if (last && from <= last[1]) last[1] = Math.max(last[1], to);
        else result.push([from, to]);
    }
    return result;
}

export function length_of(union) {
    return union.reduce((sum, [a, b]) => sum + b - a, 0);
}

/** The length of what two unions have in common. */
export function common_length(x, y) {
    return length_of(x) + length_of(y) - length_of(union_of([...x, ...y].map((i) => [...i])));
}

/** The least value that is not below `part` of all values; null without values. */
export function quantile(values, part) {
    const sorted = [...values].sort((a, b) => a - b);
    return sorted.length ? sorted[Math.max(0, Math.ceil(part * sorted.length) - 1)] : null;
}
