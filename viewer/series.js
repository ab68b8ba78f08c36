// SPDX-License-Identifier: Apache-2.0
// Series: the values of one metric of one block, over all invocations. They lie in the page as chunks of text,
// which are decoded when a view asks for them; the last 64 MiB of numbers are kept.

export const chunk_values = 2 ** 18;
const kept_bytes = 64 * 2 ** 20;
const mark_texts = ["", "nan", "inf", "-inf", "-0", "-nan"];

/** @param {string} text base64 */
export function bytes_of_base64(text) {
    const raw = atob(text);
    const bytes = new Uint8Array(raw.length);
    for (let i = 0; i < raw.length; ++i) bytes[i] = raw.charCodeAt(i);
    return bytes;
}

/** What the browser has for packed data. @param {Uint8Array<ArrayBuffer>} packed @returns {Promise<Uint8Array>} */
export async function inflate_in_browser(packed) {
    // A Blob's stream would take the bytes through another process.
    const { body } = /** @type {{body: ReadableStream<BufferSource>}} */ (new Response(packed));
    return new Uint8Array(await new Response(body.pipeThrough(new DecompressionStream("deflate-raw"))).arrayBuffer());
}

/**
 * The numbers of a chunk.
 * @param {Uint8Array} planes byte 0 of each value, then byte 1 of each, and so on
 * @param {number} count @param {number} encoding width, plus 10 if values are plain and not differences
 * @param {number} digits decimals
 */
export function decode_planes(planes, count, encoding, digits) {
    const plain = encoding >= 10;
    const width = encoding % 10;
    if (width > 8 || planes.length !== width * count) {
        throw new Error(`a chunk of ${count} values has ${planes.length} bytes, not ${width * count}`);
    }
    const values = new Float64Array(count);
    const scale = 10 ** digits;
    let last = 0;
    for (let i = 0; i < count; ++i) {
        let low = 0;
        let high = 0;
        for (let k = Math.min(width, 4) - 1; k >= 0; --k) low = (low << 8) | planes[k * count + i];
        for (let k = width - 1; k >= 4; --k) high = high * 256 + planes[k * count + i];
        // Half of the 64 bits, put together as a double: exact below 2^53.
        const half = high * 0x80000000 + (low >>> 1);
        const step = low & 1 ? -half - 1 : half;
        last = plain ? step : last + step;
        values[i] = last / scale;
    }
    return values;
}

/**
 * @typedef {object} SeriesTable columns of the table of series in the head
 * @property {number[]} n
 * @property {number[]} chunk
 * @property {number[]} digits
 * @property {number[][]} enc
 * @property {(number | null)[]} min
 * @property {(number | null)[]} max
 * @property {Record<string, [number, number, number][]>} marks
 * @property {Record<string, number[]>} pyramid
 * @property {Record<string, number[]>} [peaks] where a value is of several samples: least, greatest less least, counts
 */

/** All series of a run. */
export class SeriesStore {
    /**
     * @param {SeriesTable} table
     * @param {(chunk: number) => Promise<Uint8Array<ArrayBuffer>>} packed_chunk the bytes of a chunk
     * @param {(packed: Uint8Array<ArrayBuffer>) => Promise<Uint8Array>} [inflate]
     */
    constructor(table, packed_chunk, inflate = inflate_in_browser) {
        this.table = table;
        this.packed_chunk = packed_chunk;
        this.inflate = inflate;
        /** @type {Map<string, Float64Array>} the chunk that was used last stands last */
        this.kept = new Map();
        this.kept_size = 0;
        /** @type {Map<string, Promise<Float64Array>>} */
        this.under_way = new Map();
        /** Why a chunk could not be read; empty if all could. */
        this.fault = "";
    }

    /** @param {number} id */
    length(id) {
        return id >= 0 ? (this.table.n[id] ?? 0) : 0;
    }

    /** The runs of places that hold no number. @param {number} id */
    marks(id) {
        return this.table.marks[id] ?? [];
    }

    /**
     * The values of a chunk if they are at hand, else nothing; marked places are NaN.
     * @param {number} id @param {number} chunk counted within the series
     */
    ready(id, chunk) {
        const key = `${id}/${chunk}`;
        const values = this.kept.get(key);
        if (values) {
            this.kept.delete(key);
            this.kept.set(key, values);
        }
        return values;
    }

    /** @param {number} id @param {number} chunk @returns {Promise<Float64Array>} */
    load(id, chunk) {
        const key = `${id}/${chunk}`;
        const values = this.ready(id, chunk);
        if (values) return Promise.resolve(values);
        let promise = this.under_way.get(key);
        if (!promise) {
            promise = this.decode(id, chunk).then((made) => this.keep(key, made));
            promise.catch((error) => { this.fault = String(error.message ?? error); })
                .finally(() => this.under_way.delete(key));
            this.under_way.set(key, promise);
        }
        return promise;
    }

    /**
     * The values from place `from` to before `to`, put together of their chunks.
     * @param {number} id @param {number} [from] @param {number} [to]
     */
    async values(id, from = 0, to = this.length(id)) {
        const first = Math.floor(from / chunk_values);
        if (from < to && first === Math.floor((to - 1) / chunk_values)) {
            const values = await this.load(id, first);
            return values.subarray(from - first * chunk_values, to - first * chunk_values);
        }
        const all = new Float64Array(Math.max(0, to - from));
        for (let chunk = first; chunk * chunk_values < to; ++chunk) {
            const values = await this.load(id, chunk);
            const begin = chunk * chunk_values;
            const part = values.subarray(Math.max(0, from - begin), Math.min(values.length, to - begin));
            all.set(part, Math.max(from, begin) - from);
        }
        return all;
    }

    /** How the report writes a place that holds no number; nothing for numbers. @param {number} id @param {number} place */
    mark_text(id, place) {
        const run = this.marks(id).find(([from, count]) => place >= from && place < from + count);
        return run && mark_texts[run[2]];
    }

    /** The same of all places from `first` to before `last` that hold none. @param {number} id @param {number} first @param {number} last */
    marked_places(id, first, last) {
        const texts = new Map();
        for (const [from, count, code] of this.marks(id)) {
            for (let i = Math.max(first, from); i < Math.min(last, from + count); ++i) texts.set(i, mark_texts[code]);
        }
        return texts;
    }

    /** @param {string} key @param {Float64Array} values */
    keep(key, values) {
        this.kept.set(key, values);
        this.kept_size += values.byteLength;
        for (const [oldest, old] of this.kept) {
            if (this.kept_size <= kept_bytes || oldest === key) break;
            this.kept.delete(oldest);
            this.kept_size -= old.byteLength;
        }
        return values;
    }

    /** @param {number} id @param {number} chunk */
    async decode(id, chunk) {
        const begin = chunk * chunk_values;
        const count = Math.min(chunk_values, this.table.n[id] - begin);
        const encoding = this.table.enc[id][chunk];
        const first = this.table.chunk[id];
        const width = encoding % 10;
        const planes = width === 0 ? new Uint8Array(0) : await this.inflate(await this.packed_chunk(first + chunk));
        const values = decode_planes(planes, count, encoding, this.table.digits[id]);
        for (const [from, length] of this.marks(id)) {
            if (from < begin + count && from + length > begin) {
                values.fill(NaN, Math.max(0, from - begin), Math.min(count, from + length - begin));
            }
        }
        return values;
    }
}

/**
 * Reads chunks of the page: the text of the elements d0, d1, ... A chunk that the browser hasn't reached is waited for.
 * @param {string} prefix d, or b for the base
 */
export function chunks_of_page(prefix) {
    /** @type {Promise<void> | undefined} */
    let parsed;
    return async (/** @type {number} */ chunk) => {
        let place = document.getElementById(prefix + chunk);
        // An element without a next one may be half read.
        if (document.readyState === "loading" && !place?.nextElementSibling) {
            parsed ??= new Promise((done) => document.addEventListener("DOMContentLoaded", () => done(), { once: true }));
            await parsed;
            place = document.getElementById(prefix + chunk);
        }
        if (!place) throw new Error("a part of this page is missing; the file was cut");
        return bytes_of_base64((place.textContent ?? "").trim());
    };
}
