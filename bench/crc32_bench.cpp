// CRC-32 against libraries with fast implementations.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <string>

#include "bench_support.h"
#include "mub_stream.h"

#ifdef MUB_PEER_ZLIB
#include <zlib.h>
#endif
#ifdef MUB_PEER_LIBDEFLATE
#include <libdeflate.h>
#endif
#ifdef MUB_PEER_ISAL
#include <isa-l/crc.h>
#endif

namespace {

template <class Crc>
void crc32(benchmark::State &state, Crc crc) {
  const auto bytes = mub_bench::random_text(state.range(0), 256, 4);
  for (auto _ : state) {
    benchmark::DoNotOptimize(crc(reinterpret_cast<const unsigned char *>(bytes.data()), bytes.size()));
  }
  state.SetBytesProcessed(state.iterations() * state.range(0));
}

template <class Crc>
void add(const char *who, Crc crc) {
  mub_bench::add_sizes("crc32", who, [crc](benchmark::State &state) { crc32(state, crc); },
                       {64, 1024, 1 << 20});
}

[[maybe_unused]] const bool registered = [] {
  add("mub", [](const unsigned char *bytes, size_t size) {
    return mub_stream_crc32(bytes, static_cast<int64_t>(size));
  });
#ifdef MUB_PEER_ZLIB
  add("zlib",
      [](const unsigned char *bytes, size_t size) { return ::crc32(0, bytes, static_cast<unsigned>(size)); });
#endif
#ifdef MUB_PEER_LIBDEFLATE
  add("libdeflate", [](const unsigned char *bytes, size_t size) { return libdeflate_crc32(0, bytes, size); });
#endif
#ifdef MUB_PEER_ISAL
  add("isa-l", [](const unsigned char *bytes, size_t size) { return crc32_gzip_refl(0, bytes, size); });
#endif
  return true;
}();

}  // namespace
