// Strings: appending, numbers to text, searching, formatting, replacing.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "bench_support.h"
#include "mub_mem.h"
#include "mub_string.h"

namespace {

// Builds a text from n pieces of 1 to 32 bytes.
std::vector<std::string> pieces(int64_t count) {
  std::mt19937_64 random(5);
  std::vector<std::string> pieces;
  for (int64_t i = 0; i < count; ++i) pieces.push_back(std::string(1 + random() % 32, 'x'));
  return pieces;
}

void append_mub(benchmark::State &state) {
  const auto texts = pieces(state.range(0));
  for (auto _ : state) {
    mub_string string;
    mub_string_init(&string);
    for (const auto &text : texts) mub_string_append(&string, text.data(), static_cast<int64_t>(text.size()));
    benchmark::DoNotOptimize(string.data);
    mub_string_term(&string);
  }
}

void append_std(benchmark::State &state) {
  const auto texts = pieces(state.range(0));
  for (auto _ : state) {
    std::string string;
    for (const auto &text : texts) string.append(text);
    benchmark::DoNotOptimize(string.data());
  }
}

// Builds a text out of n characters.
void push_back_mub(benchmark::State &state) {
  for (auto _ : state) {
    mub_string string;
    mub_string_init(&string);
    for (int64_t i = 0; i < state.range(0); ++i) mub_string_append_char(&string, static_cast<char>(i));
    benchmark::DoNotOptimize(string.data);
    mub_string_term(&string);
  }
}

void push_back_std(benchmark::State &state) {
  for (auto _ : state) {
    std::string string;
    for (int64_t i = 0; i < state.range(0); ++i) string.push_back(static_cast<char>(i));
    benchmark::DoNotOptimize(string.data());
  }
}

// Converts numbers of all lengths to text.
std::vector<int64_t> numbers(int64_t count) {
  std::mt19937_64 random(6);
  std::vector<int64_t> numbers;
  for (int64_t i = 0; i < count; ++i) numbers.push_back(static_cast<int64_t>(random()) >> (random() % 64));
  return numbers;
}

void integer_mub(benchmark::State &state) {
  const auto values = numbers(state.range(0));
  mub_string string;
  mub_string_init(&string);
  for (auto _ : state) {
    for (const int64_t value : values) mub_string_copy_integer(&string, value);
    benchmark::DoNotOptimize(string.data);
  }
  mub_string_term(&string);
}

void integer_std(benchmark::State &state) {
  const auto values = numbers(state.range(0));
  std::string string;
  for (auto _ : state) {
    for (const int64_t value : values) string = std::to_string(value);
    benchmark::DoNotOptimize(string.data());
  }
}

// Searches a whole text of letters for four letters that do not occur in it.
template <class Find>
void find(benchmark::State &state, Find find) {
  const std::string text = mub_bench::random_text(state.range(0), 26, 7);
  const std::string wanted = "qzxQ";
  for (auto _ : state) benchmark::DoNotOptimize(find(text, wanted));
  state.SetBytesProcessed(state.iterations() * state.range(0));
}

void find_mub(benchmark::State &state) {
  find(state, [](const std::string &text, const std::string &wanted) {
    return mub_mem_str(text.data(), static_cast<int64_t>(text.size()), wanted.data(),
                       static_cast<int64_t>(wanted.size()));
  });
}

void find_memmem(benchmark::State &state) {
  find(state, [](const std::string &text, const std::string &wanted) {
    return memmem(text.data(), text.size(), wanted.data(), wanted.size());
  });
}

void find_std(benchmark::State &state) {
  find(state, [](const std::string &text, const std::string &wanted) { return text.find(wanted); });
}

// Compares two ranges of bytes that differ in their last one.
template <class Compare>
void compare(benchmark::State &state, Compare compare) {
  const std::string a = mub_bench::random_text(state.range(0), 26, 9);
  std::string b = a;
  b.back() = 'A';
  for (auto _ : state) {
    benchmark::DoNotOptimize(b.data());
    benchmark::DoNotOptimize(compare(a, b));
  }
}

void compare_mub(benchmark::State &state) {
  compare(state, [](const std::string &a, const std::string &b) {
    return mub_mem_cmp(a.data(), static_cast<int64_t>(a.size()), b.data(), static_cast<int64_t>(b.size()));
  });
}

void compare_std(benchmark::State &state) {
  compare(state, [](const std::string &a, const std::string &b) { return a.compare(b); });
}

// Formats a line with a word and two numbers, n times.
template <class Number, class Print>
void format(benchmark::State &state, const char *line, Print print) {
  const auto texts = pieces(state.range(0));
  for (auto _ : state) {
    Number number = 0;
    for (const auto &text : texts) print(line, text.c_str(), number += 1, 1000);
  }
}

template <class Number>
void format_mub(benchmark::State &state, const char *line) {
  mub_string string;
  mub_string_init(&string);
  format<Number>(state, line, [&string](const char *format, const char *text, Number part, int whole) {
    mub_string_format(&string, format, text, part, whole);
    benchmark::DoNotOptimize(string.data);
  });
  mub_string_term(&string);
}

template <class Number>
void format_snprintf(benchmark::State &state, const char *line) {
  char buffer[128];
  format<Number>(state, line, [&buffer](const char *format, const char *text, Number part, int whole) {
    benchmark::DoNotOptimize(std::snprintf(buffer, sizeof buffer, format, text, part, whole));
    benchmark::DoNotOptimize(&buffer);
  });
}

constexpr char kIntegers[] = "%s: %ld of %d\n";
constexpr char kDecimals[] = "%s: %.2f of %d\n";
void integers_mub(benchmark::State &state) { format_mub<long>(state, kIntegers); }
void integers_snprintf(benchmark::State &state) { format_snprintf<long>(state, kIntegers); }
void decimals_mub(benchmark::State &state) { format_mub<double>(state, kDecimals); }
void decimals_snprintf(benchmark::State &state) { format_snprintf<double>(state, kDecimals); }

// Replaces every "ab" in a text of eight letters, one pair in 64, by a longer text. Includes copying the
// original.
void replace_mub(benchmark::State &state) {
  const std::string text = mub_bench::random_text(state.range(0), 8, 8);
  mub_string string;
  mub_string_init(&string);
  for (auto _ : state) {
    mub_string_copy(&string, text.data(), static_cast<int64_t>(text.size()));
    benchmark::DoNotOptimize(mub_string_replace(&string, "ab", "<ab>"));
    benchmark::DoNotOptimize(string.data);
  }
  mub_string_term(&string);
  state.SetBytesProcessed(state.iterations() * state.range(0));
}

void replace_std(benchmark::State &state) {
  const std::string text = mub_bench::random_text(state.range(0), 8, 8), from = "ab", to = "<ab>";
  std::string string;
  for (auto _ : state) {
    string = text;
    std::string built;
    built.reserve(string.size());
    size_t position = 0;
    for (size_t hit; (hit = string.find(from, position)) != std::string::npos; position = hit + from.size()) {
      built.append(string, position, hit - position);
      built.append(to);
    }
    built.append(string, position);
    string.swap(built);
    benchmark::DoNotOptimize(string.data());
  }
  state.SetBytesProcessed(state.iterations() * state.range(0));
}

[[maybe_unused]] const bool registered = [] {
  using mub_bench::add_sizes;
  add_sizes("string_push_back", mub_bench::kMub, push_back_mub, {1000, 100000});
  if (mub_bench::kIsInline) return true;
  add_sizes("string_push_back", "std::string", push_back_std, {1000, 100000});
  add_sizes("string_append", "mub", append_mub, {1000, 100000});
  add_sizes("string_append", "std::string", append_std, {1000, 100000});
  add_sizes("integer_to_text", "mub", integer_mub, {1000});
  add_sizes("integer_to_text", "std::to_string", integer_std, {1000});
  add_sizes("format_integers", "mub", integers_mub, {1000});
  add_sizes("format_integers", "snprintf", integers_snprintf, {1000});
  add_sizes("format_decimals", "mub", decimals_mub, {1000});
  add_sizes("format_decimals", "snprintf", decimals_snprintf, {1000});
  add_sizes("replace_all", "mub", replace_mub, {1000, 100000, 1000000});
  add_sizes("replace_all", "std::string", replace_std, {1000, 100000, 1000000});
  add_sizes("compare", "mub", compare_mub, {64, 4096});
  add_sizes("compare", "std::string::compare", compare_std, {64, 4096});
  add_sizes("find_4_bytes", "mub", find_mub, {64, 4096, 65536, 1 << 20});
  add_sizes("find_4_bytes", "memmem", find_memmem, {64, 4096, 65536, 1 << 20});
  add_sizes("find_4_bytes", "std::string::find", find_std, {64, 4096, 65536, 1 << 20});
  return true;
}();

}  // namespace
