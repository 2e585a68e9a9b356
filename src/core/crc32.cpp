#include "core/crc32.h"

#include <algorithm>
#include <cctype>

namespace mub {
namespace {

constexpr uint32_t kPolynomial = 0xEDB88320;

struct ByteTable {
  uint32_t entries[256];
};

constexpr ByteTable make_byte_table() {
  ByteTable table{};
  for (uint32_t i = 0; i < 256; ++i) {
    uint32_t crc = i;
    for (int bit = 0; bit < 8; ++bit) crc = (crc >> 1) ^ ((crc & 1) != 0 ? kPolynomial : 0);
    table.entries[i] = crc;
  }
  return table;
}

constexpr ByteTable kByteTable = make_byte_table();

}  // namespace

uint32_t crc_register(uint32_t crc, const void *bytes, int64_t length) {
  const auto *byte = static_cast<const uint8_t *>(bytes);
  for (int64_t i = 0; i < length; ++i) crc = (crc >> 8) ^ kByteTable.entries[(crc ^ byte[i]) & 0xFF];
  return crc;
}

uint32_t key_hash(const void *bytes, int64_t length) { return crc_register(0, bytes, length); }

uint32_t key_hash_nocase(const void *bytes, int64_t length) {
  const auto *byte = static_cast<const uint8_t *>(bytes);
  uint8_t lowered[64];
  uint32_t crc = 0;
  for (int64_t done = 0; done < length;) {
    const int64_t count = std::min<int64_t>(length - done, sizeof lowered);
    for (int64_t i = 0; i < count; ++i) lowered[i] = static_cast<uint8_t>(std::tolower(byte[done + i]));
    crc = crc_register(crc, lowered, count);
    done += count;
  }
  return crc;
}

}  // namespace mub
