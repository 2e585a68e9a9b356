// Calls the library from JavaScript. MUB_LIBRARY and MUB_API are the paths of the installed files.
import assert from "node:assert/strict";
import test from "node:test";
import { load } from "./mub.mjs";

const mub = load({ library: process.env.MUB_LIBRARY, api: process.env.MUB_API });

function withHash(use) {
  const hash = mub.make("mub_hash");
  mub.mub_hash_init(hash, 1, 0);
  try {
    return use(hash);
  } finally {
    mub.mub_hash_term(hash);
    mub.free(hash);
  }
}

function* entries(hash) {
  const bucket = [0];
  let address = mub.mub_hash_entry_first(hash, bucket);
  for (; address !== null; address = mub.mub_hash_entry_next(hash, bucket, address)) {
    const { key_offset, key_length, value } = mub.read(address, "mub_hash_entry");
    yield [mub.bytes(mub.read(hash, "mub_hash").keys.data, key_offset, key_length).toString(), value];
  }
}

const insert = (hash, key, value) => mub.mub_hash_insert(hash, Buffer.from(key), key.length, value);

test("every described function is declared", () => {
  assert.ok(mub.description.functions.length > 800);
  for (const { name } of mub.description.functions) assert.equal(typeof mub[name], "function", name);
});

test("texts are returned as strings", () => assert.equal(mub.mub_version(), mub.description.version));

test("a hash table stores, finds, lists and removes keys with 64-bit values", () =>
  withHash((hash) => {
    const expected = new Map(Array.from({ length: 1000 }, (_, i) => [`key ${i}`, 0xfedcba9876543210n + BigInt(i)]));
    for (const [key, value] of expected) assert.equal(insert(hash, key, value), 1);
    assert.equal(insert(hash, "key 7", 99), 0);
    assert.equal(Number(mub.read(hash, "mub_hash").count), expected.size);
    assert.equal(mub.mub_hash_get(hash, Buffer.from("key 7"), 5), expected.get("key 7"));
    assert.equal(mub.mub_hash_remove(hash, Buffer.from("key 999"), 7), expected.get("key 999"));
    expected.delete("key 999");
    assert.deepEqual(new Map(entries(hash)), expected);
  }));

test("null is rejected unless the parameter is nullable", () =>
  withHash((hash) => {
    assert.throws(() => mub.mub_hash_get(null, Buffer.from("key"), 3), /mub_hash_get: table may not be null/);
    assert.equal(mub.mub_hash_insert(hash, null, 0, 1), 1);
    assert.equal(mub.mub_hash_find(hash, Buffer.from(""), 0), 1);
    mub.mub_hash_free(hash, null, 0, null);
  }));

test("callbacks are called with words, and pointers to numbers receive results", () => {
  const array = mub.make("mub_arrayd");
  mub.mub_arrayd_init(array, 0);
  [30, 10, 20].forEach((value, key) => mub.mub_arrayd_append(array, key, value));
  const compare = mub.callback("mub_compare_fn", (a, b) => Number(a) - Number(b));
  mub.mub_arrayd_qsort_x(array, 1, compare);
  mub.release(compare);
  const key = [0];
  assert.deepEqual([0, 1, 2].map((i) => [Number(mub.mub_arrayd_get_at(array, i, key)), key[0]]),
    [[10, 1], [20, 2], [30, 0]]);
  mub.mub_arrayd_term(array);
  mub.free(array);
});
