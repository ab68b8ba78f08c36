// SPDX-License-Identifier: Apache-2.0
import assert from "node:assert/strict";
import test from "node:test";
import { deflateRawSync, inflateRawSync } from "node:zlib";
import { bytes_of_base64, chunk_values, decode_planes, SeriesStore } from "../../viewer/series.js";
import { scaled_integer, SeriesWriter } from "./reference/encoder.mjs";

const inflate = async (packed) => new Uint8Array(inflateRawSync(packed));

function store_of(writer) {
    return new SeriesStore(writer.table, async (chunk) => bytes_of_base64(writer.chunks[chunk]), inflate);
}

test("planes are put together, low byte first, and zigzag is undone", () => {
    // u = 0, 1, 2, 3, 0x1ff stand for 0, -1, 1, -2, -256; as differences 0, -1, 0, -2, -258.
    const planes = Uint8Array.of(0, 1, 2, 3, 0xff, 0, 0, 0, 0, 1);
    assert.deepEqual([...decode_planes(planes, 5, 12, 0)], [0, -1, 1, -2, -256], "plain");
    assert.deepEqual([...decode_planes(planes, 5, 2, 0)], [0, -1, 0, -2, -258], "differences");
    assert.deepEqual([...decode_planes(planes, 5, 12, 2)], [0, -0.01, 0.01, -0.02, -2.56], "decimals");
});

test("values up to 2^53 are exact, above they are rounded", () => {
    // u = 2 * (2^53 - 1): seven bytes, fe ff ff ff ff ff 3f
    const planes = Uint8Array.of(0xfe, 0xff, 0xff, 0xff, 0xff, 0xff, 0x3f);
    assert.equal(decode_planes(planes, 1, 17, 0)[0], 2 ** 53 - 1);
    const greatest = Uint8Array.of(0xfe, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff);
    assert.equal(decode_planes(greatest, 1, 18, 0)[0], 2 ** 63);
});

test("a chunk of another length is refused", () => {
    assert.throws(() => decode_planes(new Uint8Array(9), 5, 12, 0), /a chunk of 5 values has 9 bytes, not 10/);
    assert.throws(() => decode_planes(new Uint8Array(45), 5, 9, 0), /bytes/);
});

test("width 0 says that all values are 0, and needs no text", async () => {
    const writer = new SeriesWriter();
    const id = writer.add(["0", "0", "0"]);
    assert.equal(writer.table.chunk[id], -1);
    assert.deepEqual(writer.table.enc[id], [0]);
    assert.deepEqual([...await store_of(writer).values(id)], [0, 0, 0]);
});

test("decimals of the report come back digit for digit", async () => {
    const texts = ["12.5", "0.4000053", "1.234568e+07", "-3", "0.000000001", "9007199.254740991"];
    const writer = new SeriesWriter();
    const id = writer.add(texts);
    assert.equal(writer.table.digits[id], 9);
    assert.deepEqual([...await store_of(writer).values(id)], texts.map(Number));
});

test("what is no number is NaN, and is shown as the report writes it", async () => {
    const writer = new SeriesWriter();
    const id = writer.add(["1", "nan", "nan", "-0", undefined, "inf", "2", "-inf", "-nan"]);
    assert.deepEqual(writer.table.marks[id], [[1, 2, 1], [3, 1, 4], [4, 1, 0], [5, 1, 2], [7, 1, 3], [8, 1, 5]]);
    const store = store_of(writer);
    assert.deepEqual([...await store.values(id)], [1, NaN, NaN, NaN, NaN, NaN, 2, NaN, NaN]);
    assert.deepEqual([0, 1, 2, 3, 4, 5, 6, 7, 8].map((i) => store.mark_text(id, i)), [undefined, "nan", "nan", "-0", "", "inf", undefined, "-inf", "-nan"]);
});

test("a long column has several chunks, each of which begins anew", async () => {
    const n = chunk_values + 3;
    const writer = new SeriesWriter();
    const id = writer.add(Array.from({ length: n }, (_, i) => String(1000 + i % 7)));
    assert.equal(writer.table.enc[id].length, 2);
    const store = store_of(writer);
    const ends = await store.values(id, chunk_values - 2, n);
    assert.deepEqual([...ends], [-2, -1, 0, 1, 2].map((k) => 1000 + (chunk_values + k) % 7));
});

test("equal columns are stored once; with another role they share their chunks", () => {
    const writer = new SeriesWriter();
    const first = writer.add(["1", "2", "3"], "share");
    assert.equal(writer.add(["1", "2", "3"], "share"), first);
    const other = writer.add(["1", "2", "3"], "requests");
    assert.notEqual(other, first);
    assert.equal(writer.table.chunk[other], writer.table.chunk[first]);
    assert.equal(writer.chunks.length, 1);
});

test("only the last 64 MiB are kept", async () => {
    const table = { n: [], chunk: [], digits: [], enc: [], min: [], max: [], marks: {}, pyramid: {} };
    for (let id = 0; id < 40; ++id) {
        table.n.push(chunk_values);
        table.chunk.push(id);
        table.digits.push(0);
        table.enc.push([1]);
    }
    const packed = new Uint8Array(deflateRawSync(Buffer.alloc(chunk_values)));
    let reads = 0;
    const store = new SeriesStore(table, async () => { ++reads; return packed; }, inflate);
    for (let id = 0; id < 40; ++id) await store.load(id, 0);
    // 2 MiB each: 32 of 40 fit.
    assert.equal(store.kept.size, 32);
    await store.load(39, 0);
    assert.equal(reads, 40, "the last one is still there");
    await store.load(0, 0);
    assert.equal(reads, 41, "the first one isn't");
});

test("a chunk that can't be read is a fault that is kept", async () => {
    const writer = new SeriesWriter();
    const id = writer.add(["1", "5", "2"]);
    const store = new SeriesStore(writer.table, async () => new Uint8Array([1, 2, 3]), inflate);
    await assert.rejects(store.load(id, 0));
    assert.notEqual(store.fault, "");
});

test("texts are scaled without going through floating point", () => {
    assert.equal(scaled_integer("1.234568e+07", 0), 12345680n);
    assert.equal(scaled_integer("0.4000053", 7), 4000053n);
    assert.equal(scaled_integer("-12.5", 1), -125n);
    assert.equal(scaled_integer("1.25", 1), 13n, "half is rounded away from zero");
});
