// Fields of a fixed width and packed integers, read and written one after another in a buffer that may be too
// short.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "bench_support.h"
#include "mub_stream.h"

namespace {

// A record is a field of 4 bytes and one of 8.
constexpr int64_t kRecordBytes = 12;

class MubFields {
 public:
  explicit MubFields(int64_t bytes) {
    mub_stream_init(&stream_);
    mub_stream_expand(&stream_, bytes);
    mub_stream_shrink(&stream_, bytes);
  }
  ~MubFields() { mub_stream_term(&stream_); }
  MubFields(const MubFields &) = delete;
  MubFields &operator=(const MubFields &) = delete;

  void put(uint32_t number) { mub_stream_set_dword(&stream_, &position_, number); }
  void put_long(int64_t number) { mub_stream_set_lword(&stream_, &position_, number); }
  uint32_t take() { return mub_stream_get_dword(&stream_, &position_); }
  int64_t take_long() { return mub_stream_get_lword(&stream_, &position_); }
  void rewind() { position_ = 0; }

 private:
  mub_stream stream_;
  int64_t position_ = 0;
};

class StdFields {
 public:
  explicit StdFields(int64_t bytes) : bytes_(static_cast<size_t>(bytes), 0) {}
  void put(uint32_t number) { write(number); }
  void put_long(int64_t number) { write(number); }
  uint32_t take() { return read<uint32_t>(); }
  int64_t take_long() { return read<int64_t>(); }
  void rewind() { position_ = 0; }

 private:
  template <class Number>
  void write(Number number) {
    if (bytes_.size() - position_ >= sizeof number) std::memcpy(&bytes_[position_], &number, sizeof number);
    position_ += sizeof number;
  }
  template <class Number>
  Number read() {
    Number number = 0;
    if (bytes_.size() - position_ >= sizeof number) std::memcpy(&number, &bytes_[position_], sizeof number);
    position_ += sizeof number;
    return number;
  }

  std::string bytes_;
  size_t position_ = 0;
};

template <class Fields>
void write(benchmark::State &state) {
  Fields fields(state.range(0) * kRecordBytes);
  for (auto _ : state) {
    fields.rewind();
    for (int64_t i = 0; i < state.range(0); ++i) {
      fields.put(static_cast<uint32_t>(i));
      fields.put_long(i);
    }
    benchmark::ClobberMemory();
  }
}

template <class Fields>
void read(benchmark::State &state) {
  Fields fields(state.range(0) * kRecordBytes);
  for (auto _ : state) {
    fields.rewind();
    int64_t sum = 0;
    for (int64_t i = 0; i < state.range(0); ++i) {
      sum += fields.take();
      sum += fields.take_long();
    }
    benchmark::DoNotOptimize(sum);
  }
}

class MubPacked {
 public:
  explicit MubPacked(int64_t count) {
    mub_stream_init(&stream_);
    mub_stream_expand(&stream_, 9 * count);
    mub_stream_shrink(&stream_, 9 * count);
  }
  ~MubPacked() { mub_stream_term(&stream_); }
  MubPacked(const MubPacked &) = delete;
  MubPacked &operator=(const MubPacked &) = delete;

  void put(uint64_t number) { mub_stream_deflate_lword(&stream_, &position_, number); }
  uint64_t take() { return static_cast<uint64_t>(mub_stream_inflate_lword(&stream_, &position_)); }
  void rewind() { position_ = 0; }

 private:
  mub_stream stream_;
  int64_t position_ = 0;
};

// Seven bits in each byte, the lowest first.
class Leb128 {
 public:
  explicit Leb128(int64_t count) : bytes_(static_cast<size_t>(10 * count), 0) {}
  void put(uint64_t number) {
    for (; number >= 0x80; number >>= 7) add_byte(number | 0x80);
    add_byte(number);
  }
  uint64_t take() {
    uint64_t number = 0;
    for (int shift = 0; position_ < bytes_.size(); shift += 7) {
      const auto byte = static_cast<uint8_t>(bytes_[position_++]);
      number |= uint64_t{byte & 0x7Fu} << shift;
      if (byte < 0x80) break;
    }
    return number;
  }
  void rewind() { position_ = 0; }

 private:
  void add_byte(uint64_t byte) {
    if (position_ < bytes_.size()) bytes_[position_++] = static_cast<char>(byte);
  }
  std::string bytes_;
  size_t position_ = 0;
};

// Numbers of 1 to kBits bits, all equally frequent.
template <int kBits>
std::vector<uint64_t> numbers(int64_t count) {
  std::mt19937_64 random(1);
  std::vector<uint64_t> numbers(static_cast<size_t>(count));
  for (uint64_t &number : numbers) number = random() >> (63 - random() % kBits);
  return numbers;
}

template <class Packed, int kBits>
void pack(benchmark::State &state) {
  const auto values = numbers<kBits>(state.range(0));
  Packed packed(state.range(0));
  for (auto _ : state) {
    packed.rewind();
    for (const uint64_t value : values) packed.put(value);
    benchmark::ClobberMemory();
  }
}

template <class Packed, int kBits>
void unpack(benchmark::State &state) {
  Packed packed(state.range(0));
  for (const uint64_t value : numbers<kBits>(state.range(0))) packed.put(value);
  for (auto _ : state) {
    packed.rewind();
    uint64_t sum = 0;
    for (int64_t i = 0; i < state.range(0); ++i) sum += packed.take();
    benchmark::DoNotOptimize(sum);
  }
}

template <class Packed>
void add_packed(const char *who) {
  mub_bench::add_sizes("unpack_numbers", who, unpack<Packed, 64>, {1000000});
  mub_bench::add_sizes("unpack_small_numbers", who, unpack<Packed, 7>, {1000000});
  mub_bench::add_sizes("pack_numbers", who, pack<Packed, 64>, {1000000});
  mub_bench::add_sizes("pack_small_numbers", who, pack<Packed, 7>, {1000000});
}

template <class Fields>
void add(const char *who) {
  mub_bench::add_sizes("write_fields", who, write<Fields>, {1000, 100000});
  mub_bench::add_sizes("read_fields", who, read<Fields>, {1000, 100000});
}

[[maybe_unused]] const bool registered = [] {
  add<MubFields>(mub_bench::kMub);
  add_packed<MubPacked>(mub_bench::kMub);
  if (!mub_bench::kHasPeers) return true;
  add<StdFields>("memcpy");
  add_packed<Leb128>("LEB128");
  return true;
}();

}  // namespace
