// The record layouts that the interface guarantees on machines with 8-byte pointers. Elsewhere, the
// platform's C compiler determines them.
#include <cstddef>
#include <type_traits>
#include <utility>

#include "mub.h"

namespace {

template <class... Promises>
constexpr bool all(Promises... is_kept) {
  return (is_kept && ...);
}

// The size of a record, and the offset and type of each field; of an array, those of its first and last item.
#define LAYOUT(record, size_bytes, ...)                                                 \
  static_assert(                                                                        \
      [] {                                                                              \
        using Record = record;                                                          \
        return sizeof(void *) != 8 || all(sizeof(Record) == (size_bytes), __VA_ARGS__); \
      }(),                                                                              \
      "layout of " #record)
#define AT(offset, type, field)           \
  (offsetof(Record, field) == (offset) && \
   std::is_same_v<std::remove_reference_t<decltype((std::declval<Record &>().field))>, type>)
// NOLINTBEGIN(bugprone-macro-parentheses): types cannot be parenthesised.
// Groups of fields that several records have.
#define BUFFER(type) AT(0, type *, data), AT(8, int64_t, length), AT(16, int64_t, capacity)
#define SLOTS(type, slots) AT(0, type *, slots), AT(8, int64_t, count), AT(16, int64_t, capacity)
#define POOL(offset) \
  AT(offset, mub_pool *, pool), AT((offset) + 8, uint16_t, own_pool), AT((offset) + 10, uint16_t, descending)
#define OWNED(offset, pool) AT(offset, mub_pool *, pool), AT((offset) + 8, uint16_t, owns_##pool)
#define POOLS(offset) OWNED(offset, entry_pool), OWNED((offset) + 16, value_pool)
#define THREE_POOLS(offset) \
  OWNED(offset, entry_pool), OWNED((offset) + 16, node_pool), OWNED((offset) + 32, value_pool)
#define KEY(offset) AT(offset, uint32_t, key_offset), AT((offset) + 4, uint32_t, key_length)
#define BUCKETS AT(0, mub_arrays, buckets), AT(40, int64_t, count)
#define LINKS(offset, type) AT(offset, type *, prev), AT((offset) + 8, type *, next)
#define ENDS(type) AT(0, type *, head), AT(8, type *, tail), AT(16, int64_t, count)
#define CURSOR(type) AT(0, const type *, tree), AT(8, type##_entry *, leaf), AT(16, int64_t, index)
// NOLINTEND(bugprone-macro-parentheses)

LAYOUT(mub_char, 16, AT(0, char *, data), AT(8, int64_t, length));
LAYOUT(mub_stream, 24, BUFFER(uint8_t));
LAYOUT(mub_string, 24, BUFFER(char));
LAYOUT(mub_stringx, 24, AT(0, const char *, text), AT(8, int64_t, start), AT(16, int64_t, length));
LAYOUT(mub_wchar, 24, BUFFER(uint16_t));
LAYOUT(mub_pool, 88, AT(0, int64_t, block_size), AT(8, int64_t, blocks_per_chunk),
       AT(16, int64_t, live_count), AT(24, int64_t, chunk_used), AT(32, int64_t, chunk_count),
       AT(40, int64_t, chunk_capacity), AT(48, void **, chunks), AT(56, int64_t, free_used),
       AT(64, int64_t, free_count), AT(72, int64_t, free_capacity), AT(80, void **, free_pages));
LAYOUT(mub_pool_chunk, 16, AT(0, int64_t, index), AT(8, uint64_t, base));
LAYOUT(mub_pool_iter, 32, AT(0, int64_t, chunk), AT(8, int64_t, slot), AT(16, void **, free_blocks),
       AT(24, mub_pool *, pool));
LAYOUT(mub_array_entry, 16, KEY(0), AT(8, uint64_t, value));
LAYOUT(mub_array, 64, SLOTS(mub_array_entry, entries), AT(24, mub_stream, keys), POOL(48));
LAYOUT(mub_arrayd_entry, 16, AT(0, uint32_t, key), AT(8, uint64_t, value));
LAYOUT(mub_arrayd, 40, SLOTS(mub_arrayd_entry, entries), POOL(24));
LAYOUT(mub_arrayx_entry, 16, AT(0, uint64_t, key), AT(8, uint64_t, value));
LAYOUT(mub_arrayx, 40, SLOTS(mub_arrayx_entry, entries), POOL(24));
LAYOUT(mub_arrays, 40, SLOTS(uint64_t, items), POOL(24));
LAYOUT(mub_arrayt, 64, AT(0, uint64_t, inline_items[0]), AT(24, uint64_t, inline_items[3]),
       AT(32, uint64_t *, tail), AT(40, int64_t, count), AT(48, int64_t, capacity),
       AT(56, uint16_t, descending));
LAYOUT(mub_hash_entry, 32, AT(0, mub_hash_entry *, next), AT(8, uint32_t, hash), KEY(12),
       AT(24, uint64_t, value));
LAYOUT(mub_hash, 104, BUCKETS, AT(48, mub_stream, keys), POOLS(72), AT(98, int16_t, nocase));
LAYOUT(mub_hashd_entry, 24, AT(0, mub_hashd_entry *, next), AT(8, uint32_t, key), AT(16, uint64_t, value));
LAYOUT(mub_hashd, 80, BUCKETS, POOLS(48));
LAYOUT(mub_hashx_entry, 24, AT(0, mub_hashx_entry *, next), AT(8, uint64_t, key), AT(16, uint64_t, value));
LAYOUT(mub_hashx, 80, BUCKETS, POOLS(48));
LAYOUT(mub_hasht_entry, 32, AT(0, mub_hasht_entry *, next), AT(8, uint32_t, key[0]), AT(20, uint32_t, key[3]),
       AT(24, uint64_t, value));
LAYOUT(mub_hasht, 80, BUCKETS, POOLS(48));
LAYOUT(mub_list_entry, 32, LINKS(0, mub_list_entry), KEY(16), AT(24, uint64_t, value));
LAYOUT(mub_list, 80, ENDS(mub_list_entry), AT(24, mub_stream, keys), POOLS(48));
LAYOUT(mub_lists_entry, 24, LINKS(0, mub_lists_entry), AT(16, uint64_t, value));
LAYOUT(mub_lists, 56, ENDS(mub_lists_entry), POOLS(24));
LAYOUT(mub_listx_block, 280, LINKS(0, mub_listx_block), AT(16, int64_t, count), AT(24, uint64_t, values[0]),
       AT(272, uint64_t, values[31]));
LAYOUT(mub_listx, 56, ENDS(mub_listx_block), POOLS(24));
LAYOUT(mub_tree_entry, 40, AT(0, mub_tree_entry *, parent), AT(8, mub_tree_entry *, first_child),
       LINKS(16, mub_tree_entry), AT(32, uint64_t, value));
LAYOUT(mub_tree, 80, AT(0, mub_tree_entry, root), AT(40, int64_t, count), POOLS(48));
LAYOUT(mub_bitree_entry, 40, AT(0, mub_bitree_entry *, parent), AT(8, mub_bitree_entry *, equal),
       AT(16, mub_bitree_entry *, left), AT(24, mub_bitree_entry *, right), AT(32, uint64_t, value));
LAYOUT(mub_bitree, 80, AT(0, mub_bitree_entry, root), AT(40, int64_t, count), POOLS(48));
LAYOUT(mub_btree_node, 32, KEY(0), LINKS(8, mub_btree_node), AT(24, uint64_t, value));
LAYOUT(mub_btree_entry, 64, KEY(0), AT(8, int16_t, level), AT(16, mub_btree_entry *, parent),
       AT(24, mub_arrays, children));
LAYOUT(mub_btree, 144, AT(0, mub_btree_entry, root), AT(64, int64_t, count), AT(72, mub_stream, keys),
       THREE_POOLS(96), AT(138, uint16_t, nocase));
LAYOUT(mub_btree_cursor, 24, CURSOR(mub_btree));
LAYOUT(mub_btreed_node, 32, AT(0, uint32_t, key), LINKS(8, mub_btreed_node), AT(24, uint64_t, value));
LAYOUT(mub_btreed_entry, 56, AT(0, uint32_t, key), AT(4, int16_t, level), AT(8, mub_btreed_entry *, parent),
       AT(16, mub_arrays, children));
LAYOUT(mub_btreed, 112, AT(0, mub_btreed_entry, root), AT(56, int64_t, count), THREE_POOLS(64),
       AT(108, uint32_t, key_type));
LAYOUT(mub_btreed_cursor, 24, CURSOR(mub_btreed));
LAYOUT(mub_btreex_node, 32, AT(0, uint64_t, key), LINKS(8, mub_btreex_node), AT(24, uint64_t, value));
LAYOUT(mub_btreex_entry, 64, AT(0, uint64_t, key), AT(8, int16_t, level), AT(16, mub_btreex_entry *, parent),
       AT(24, mub_arrays, children));
LAYOUT(mub_btreex, 120, AT(0, mub_btreex_entry, root), AT(64, int64_t, count), THREE_POOLS(72),
       AT(116, uint32_t, key_type));
LAYOUT(mub_btreex_cursor, 24, CURSOR(mub_btreex));
LAYOUT(mub_bits, 16, AT(0, uint8_t *, data), AT(8, uint32_t, size));

}  // namespace
