// Fields of a fixed width, read and written one after another in a buffer that may be too short.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstring>
#include <string>

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

template <class Fields>
void add(const char *who) {
  mub_bench::add_sizes("write_fields", who, write<Fields>, {1000, 100000});
  mub_bench::add_sizes("read_fields", who, read<Fields>, {1000, 100000});
}

[[maybe_unused]] const bool registered = [] {
  add<MubFields>(mub_bench::kMub);
  if (mub_bench::kHasPeers) add<StdFields>("memcpy");
  return true;
}();

}  // namespace
