// mub_hash: hash_table.h with byte-string keys.
#include "bytes/bytes.h"
#include "containers/key_store.h"
#include "crc32/crc32.h"
#include "hash/batch_get.h"
#include "hash/hash_table.h"
#include "hash/hash_table_clone.h"
#include "hash/verify.h"

namespace mub {
namespace {

// Not inlined, to keep the code of the exact comparison short.
__attribute__((noinline)) bool same_ignoring_case(const uint8_t *stored, ByteKey key) {
  return bytes::icompare(stored, key.length, key.bytes, key.length) == 0;
}

}  // namespace

// Byte-string keys in the table's key stream, hashed by key_hash() (crc32.h).
template <>
struct Policy<mub_hash> : PackedKeys<mub_hash> {
  using Entry = mub_hash_entry;
  static constexpr bool kClearsNewEntries = false;
  // In smaller tables, batches and single look-ups take the same time (map_hit_batch).
  static constexpr int64_t kBatchedFrom = 0x1000;

  static uint64_t hash(const mub_hash &table, Key key) {
    return table.nocase == 0 ? key_hash(key.bytes, key.length) : key_hash_nocase(key.bytes, key.length);
  }
  static uint64_t stored_hash(const Entry &entry) { return entry.hash; }

  static bool same_key(const mub_hash &table, const Entry &entry, Key key) {
    if (entry.key_length != key.length) return false;
    const Key stored = key_of(table, entry);
    if (stored.length != key.length) return false;
    return table.nocase == 0 ? bytes::equal(stored.bytes, key.bytes, key.length)
                             : same_ignoring_case(stored.bytes, key);
  }
  static bool matches(const mub_hash &table, const Entry &entry, uint64_t hash, Key key) {
    return entry.hash == hash && same_key(table, entry, key);
  }
  static bool may_match(const Entry &entry, uint64_t hash, Key key) {
    return entry.hash == hash && entry.key_length == key.length;
  }

  // Failure does not matter here: an insertion fails if there is no room for its own key.
  static void reserve_keys(mub_hash &table, int64_t size_bytes) {
    buffer::expand(table.keys, size_bytes);
    close_keys(table);
  }

  static void store_hash(Entry &entry, uint64_t hash) { entry.hash = static_cast<uint32_t>(hash); }

  static void erase_key(mub_hash &table, Entry &entry) {
    const uint32_t offset = entry.key_offset;
    const uint32_t length = entry.key_length;
    PackedKeys::cut_key(table, entry, [&](keys::Range cut) { lower_offsets(table, cut); });
    // cut_key() resets the fields during the pass over the pool. They are restored here, because callers of
    // mub_hash_remove_t() still read them.
    entry.key_offset = offset;
    entry.key_length = length;
  }

  // Called after one entry was unlinked and before `count` is lowered.
  static void lower_offsets(mub_hash &table, keys::Range cut) {
    const bool pool_has_only_items = hash_table::pool_has_only_entries(table, 1);
    keys::lower_offsets<Entry>(table.entry_pool, pool_has_only_items, cut,
                               [&](auto lower) { hash_table::for_each(table, lower); });
  }

  template <class Use>
  static Entry *with_pinned(const mub_hash &table, Key key, Use use) {
    const PinnedBytes pinned = buffer::pinned(table.keys, key.bytes, key.length);
    return pinned.failed() ? nullptr : use({bytes::as_bytes(pinned.bytes()), key.length});
  }
};

}  // namespace mub

using namespace mub;

extern "C" {

mub_hash *mub_hash_init(mub_hash *table, int with_entry_pool, int with_value_pool) {
  hash_table::init(*table, with_entry_pool, with_value_pool);
  return table;
}

void mub_hash_term(mub_hash *table) { hash_table::term(*table); }

void mub_hash_swap(mub_hash *a, mub_hash *b) { hash_table::swap(*a, *b); }

mub_hash *mub_hash_clone(const mub_hash *source, mub_pool *source_user_pool, mub_hash *destination,
                         mub_pool *destination_user_pool, mub_clone_fn callback) {
  return hash_table::clone(*source, *destination, {source_user_pool, destination_user_pool, callback});
}

int mub_hash_verify(const mub_hash *table, const char **what) {
  return report(hash_table::verify(*table), what);
}

int64_t mub_hash_memory_bytes(const mub_hash *table) { return hash_table::memory_bytes(*table); }

uint64_t mub_hash_key(const void *key, int64_t length, int nocase) {
  const ByteKey measured = measured_key(key, length);
  return nocase == 0 ? key_hash(measured.bytes, measured.length)
                     : key_hash_nocase(measured.bytes, measured.length);
}

int mub_hash_cmp(const void *a, int64_t a_length, const void *b, int64_t b_length) {
  return bytes::equal(a, a_length, b, b_length) ? 1 : 0;
}

int mub_hash_set(mub_hash *table, const void *key, int64_t length, uint64_t *value_out, mub_init_fn init) {
  return hash_table::set(*table, measured_key(key, length), *value_out, init);
}

uint64_t mub_hash_get(const mub_hash *table, const void *key, int64_t length) {
  return hash_table::get(*table, measured_key(key, length));
}

int64_t mub_hash_get_many(const mub_hash *table, const void *const *keys, const int64_t *lengths,
                          int64_t count, uint64_t *values_out) {
  return hash_table::get_many(*table, measured_keys(keys, lengths), count, values_out);
}

int mub_hash_insert(mub_hash *table, const void *key, int64_t length, uint64_t value) {
  return hash_table::insert_value(*table, measured_key(key, length), value);
}

uint64_t mub_hash_update(mub_hash *table, const void *key, int64_t length, uint64_t value) {
  return hash_table::update(*table, measured_key(key, length), value);
}

int mub_hash_find(const mub_hash *table, const void *key, int64_t length) {
  return hash_table::find(*table, measured_key(key, length)) != nullptr ? 1 : 0;
}

uint64_t mub_hash_remove(mub_hash *table, const void *key, int64_t length) {
  return hash_table::remove(*table, measured_key(key, length));
}

mub_hash *mub_hash_free(mub_hash *table, const void *key, int64_t length, mub_free_fn release) {
  return hash_table::free(*table, measured_key(key, length), release);
}

void mub_hash_remove_all(mub_hash *table) { hash_table::remove_all(*table); }

void mub_hash_free_all(mub_hash *table, mub_free_fn release) { hash_table::free_all(*table, release); }

void mub_hash_remove_all_entry(mub_hash *table) { hash_table::remove_all_entry(*table); }

void mub_hash_free_all_entry(mub_hash *table, mub_free_fn release) {
  hash_table::free_all_entry(*table, release);
}

int mub_hash_entry_set(mub_hash *table, const void *key, int64_t length, mub_hash_entry **entry_out) {
  int inserted;
  *entry_out = hash_table::insert(*table, measured_key(key, length), inserted);
  return inserted;
}

mub_hash_entry *mub_hash_entry_get(const mub_hash *table, const void *key, int64_t length) {
  return hash_table::find(*table, measured_key(key, length));
}

mub_hash_entry *mub_hash_entry_first(const mub_hash *table, int64_t *bucket_out) {
  return hash_table::entry_first(*table, *bucket_out);
}

mub_hash_entry *mub_hash_entry_next(const mub_hash *table, int64_t *bucket_io, const mub_hash_entry *entry) {
  return hash_table::entry_next(*table, *bucket_io, *entry);
}

mub_hash_entry *mub_hash_entry_new(mub_hash *table, int64_t bucket, uint32_t, const void *key, int64_t length,
                                   int *inserted_out) {
  return hash_table::entry_new(*table, bucket, raw_key(key, length), *inserted_out);
}

mub_hash_entry *mub_hash_entry_find(const mub_hash *table, int64_t bucket, uint32_t hash_value,
                                    const void *key, int64_t length) {
  return hash_table::find_in(*table, bucket, hash_value, raw_key(key, length));
}

mub_hash_entry *mub_hash_entry_remove(mub_hash *table, int64_t bucket, uint32_t hash_value, const void *key,
                                      int64_t length) {
  return hash_table::unlink(*table, bucket, hash_value, raw_key(key, length));
}

void mub_hash_expand(mub_hash *table) { hash_table::expand(*table); }

mub_hash_entry *mub_hash_insert_t(mub_hash *table, const void *key, int64_t length, int *inserted_out) {
  return hash_table::insert(*table, measured_key(key, length), *inserted_out);
}

mub_hash_entry *mub_hash_find_t(const mub_hash *table, const void *key, int64_t length) {
  return length < 0 ? nullptr : hash_table::find(*table, raw_key(key, length));
}

mub_hash_entry *mub_hash_remove_t(mub_hash *table, const void *key, int64_t length) {
  return length < 0 ? nullptr : hash_table::detach(*table, raw_key(key, length));
}

void mub_hash_adjust_t(mub_hash *table, uint32_t offset, int64_t length) {
  const keys::Range cut = {offset, static_cast<uint32_t>(length)};
  hash_table::for_each(*table, [&](mub_hash_entry &entry) { keys::lower_offset(entry, cut); });
}
}
