// SPDX-License-Identifier: Apache-2.0
// The data contract of the page, for the type checker. docs/viewer.md has the meaning of each key.
import type { SeriesTable } from "./series.js";

/** [sum of value times weight, sum of weights, clock cycles of the samples that count, samples left out] */
export type Sums = [number, number, number, number];
/** Innermost first: [file, line, column]. */
export type Chain = [string, number, number][];
/** What rules and tables read: metrics and facts by name; what isn't known is absent or null. */
export type Facts = Record<string, number | string | boolean | string[] | null | undefined>;

export interface Block {
    name: string;
    kind: "global" | "loop" | "channel" | "other";
    rw: "" | "read" | "write";
    mem: string;
    coalesced: boolean;
    src: Chain[];
    series: Record<string, number>;
    sums: Record<string, Sums>;
    burst?: [number, number, number, number];
    /** Of the whole run: what can't be worked out from the sums. */
    facts: Facts;
}

export interface Port {
    mem: string;
    interface: string;
    port: string;
    dir: "r" | "w" | "rw";
    mean: number | null;
    max: number | null;
    bytes: number | null;
    read_burst: number | null;
    write_burst: number | null;
    bw: number;
    rburst: number;
    wburst: number;
}

export interface Kernel {
    name: string;
    cu: number;
    file: string;
    line: number;
    autorun: boolean;
    types: number[];
    n: number;
    total: number;
    union: number;
    alone: number;
    median: number | null;
    p95: number | null;
    shortest: number | null;
    longest: number | null;
    gaps: number | null;
    waiting: number | null;
    /** Numbers of kernels. */
    with: number[];
    cycles_total: number | null;
    mem: Record<string, number>;
    invocations: { n: number; start: number; end: number; first: number; type: number };
    time: number;
    cycles: number;
    device: number;
    queue: number;
    blocks: Block[];
    ports: Port[];
}

export interface Memory {
    name: string;
    peak: number | null;
    max_burst: number;
    by: "ports" | "accesses" | "none";
    bins: number[];
    mean: number | null;
    max: number | null;
    full: number | null;
    lower_bound: boolean;
    interfaces: [string, number, number | null][];
}

export interface Head {
    format: number;
    run: {
        report: string;
        version: string;
        zanx: string;
        fmax: string;
        board: string;
        unit: string;
        start: string;
        span: number;
        kernel_time: number;
        transfer_only: number;
        values: number;
        reduced: number;
    };
    memories: Memory[];
    kernels: Kernel[];
    transfers: {
        types: string[];
        n: number;
        type: number;
        device: number;
        queue: number;
        start: number;
        end: number;
        totals: [string, number, number, number][];
    };
    series: SeriesTable;
    sources: Record<string, number>;
    notes: string[];
}
