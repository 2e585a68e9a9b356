// Lists: adding and removing at both ends, walks, searches, clones. Keys are texts of 8 to 24 bytes.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdint>
#include <deque>
#include <list>
#include <string>
#include <utility>
#include <vector>

#include "bench_support.h"
#include "mub_list.h"

namespace {

const std::vector<std::string> &keys() {
  static const auto made = mub_bench::random_keys(100000, 1);
  return made;
}
const std::string &key_at(uint64_t i) { return keys()[i % keys().size()]; }

class MubKeyed {
 public:
  MubKeyed() { mub_list_init(&list_, 1, 0); }
  ~MubKeyed() { mub_list_term(&list_); }
  MubKeyed(const MubKeyed &) = delete;
  MubKeyed &operator=(const MubKeyed &) = delete;

  void add_head(uint64_t value) { mub_list_add_head(&list_, key(value).data(), size(value), value); }
  void add_tail(uint64_t value) { mub_list_add_tail(&list_, key(value).data(), size(value), value); }
  uint64_t remove_head() { return mub_list_remove_head(&list_); }
  uint64_t sum() {
    uint64_t sum = 0;
    for (auto *position = mub_list_get_head_position(&list_); position != nullptr;) {
      const char *bytes;
      int64_t length;
      sum += mub_list_get_next(&list_, &position, &bytes, &length) + static_cast<uint64_t>(length);
    }
    return sum;
  }
  bool find(uint64_t value) { return mub_list_find(&list_, key(value).data(), size(value)) != nullptr; }
  void copy_from(const MubKeyed &source) { mub_list_clone(&source.list_, nullptr, &list_, nullptr, nullptr); }

 private:
  static const std::string &key(uint64_t i) { return key_at(i); }
  static int64_t size(uint64_t i) { return static_cast<int64_t>(key_at(i).size()); }
  mub_list list_;
};

class StdKeyed {
 public:
  void add_head(uint64_t value) { list_.emplace_front(key_at(value), value); }
  void add_tail(uint64_t value) { list_.emplace_back(key_at(value), value); }
  uint64_t remove_head() {
    const uint64_t value = list_.front().second;
    list_.pop_front();
    return value;
  }
  uint64_t sum() {
    uint64_t sum = 0;
    for (const auto &[key, value] : list_) sum += value + key.size();
    return sum;
  }
  bool find(uint64_t value) {
    for (const auto &entry : list_) {
      if (entry.first == key_at(value)) return true;
    }
    return false;
  }
  void copy_from(const StdKeyed &source) { list_ = source.list_; }

 private:
  std::list<std::pair<std::string, uint64_t>> list_;
};

class MubBare {
 public:
  MubBare() { mub_lists_init(&list_, 1, 0); }
  ~MubBare() { mub_lists_term(&list_); }
  MubBare(const MubBare &) = delete;
  MubBare &operator=(const MubBare &) = delete;

  void add_head(uint64_t value) { mub_lists_add_head(&list_, value); }
  void add_tail(uint64_t value) { mub_lists_add_tail(&list_, value); }
  uint64_t remove_head() { return mub_lists_remove_head(&list_); }
  uint64_t remove_tail() { return mub_lists_remove_tail(&list_); }
  uint64_t sum() {
    uint64_t sum = 0;
    for (const auto *entry = list_.head; entry != nullptr; entry = entry->next) sum += entry->value;
    return sum;
  }
  bool find(uint64_t value) { return mub_lists_find_at(&list_, value) != nullptr; }
  void copy_from(const MubBare &source) { mub_lists_clone(&source.list_, nullptr, &list_, nullptr, nullptr); }

 private:
  mub_lists list_;
};

class MubUnrolled {
 public:
  MubUnrolled() { mub_listx_init(&list_, 1, 0); }
  ~MubUnrolled() { mub_listx_term(&list_); }
  MubUnrolled(const MubUnrolled &) = delete;
  MubUnrolled &operator=(const MubUnrolled &) = delete;

  void add_head(uint64_t value) { mub_listx_add_head(&list_, value); }
  void add_tail(uint64_t value) { mub_listx_add_tail(&list_, value); }
  uint64_t remove_head() { return mub_listx_remove_head(&list_); }
  uint64_t remove_tail() { return mub_listx_remove_tail(&list_); }
  uint64_t sum() {
    uint64_t sum = 0;
    for (const auto *block = list_.head; block != nullptr; block = block->next) {
      for (int64_t i = 0; i < block->count; ++i) sum += block->values[i];
    }
    return sum;
  }

 private:
  mub_listx list_;
};

template <class Sequence>
class StdValues {
 public:
  void add_head(uint64_t value) { values_.push_front(value); }
  void add_tail(uint64_t value) { values_.push_back(value); }
  uint64_t remove_head() {
    const uint64_t value = values_.front();
    values_.pop_front();
    return value;
  }
  uint64_t remove_tail() {
    const uint64_t value = values_.back();
    values_.pop_back();
    return value;
  }
  uint64_t sum() {
    uint64_t sum = 0;
    for (const uint64_t value : values_) sum += value;
    return sum;
  }
  bool find(uint64_t value) { return std::find(values_.begin(), values_.end(), value) != values_.end(); }
  void copy_from(const StdValues &source) { values_ = source.values_; }

 private:
  Sequence values_;
};

template <class List>
void fill(List &list, int64_t count) {
  for (int64_t i = 0; i < count; ++i) list.add_tail(static_cast<uint64_t>(i));
}

// Includes the release of the list.
template <class List, bool kHead>
void add(benchmark::State &state) {
  for (auto _ : state) {
    List list;
    for (int64_t i = 0; i < state.range(0); ++i) {
      kHead ? list.add_head(static_cast<uint64_t>(i)) : list.add_tail(static_cast<uint64_t>(i));
    }
    benchmark::DoNotOptimize(&list);
  }
}

// Adds a thousand values at the tail and removes as many from the head of a list of n values.
template <class List>
void queue(benchmark::State &state) {
  List list;
  fill(list, state.range(0));
  for (auto _ : state) {
    for (uint64_t i = 0; i < 1000; ++i) {
      list.add_tail(i);
      benchmark::DoNotOptimize(list.remove_head());
    }
  }
}

// Adds a thousand values at one end and removes them there.
template <class List, bool kHead>
void stack(benchmark::State &state) {
  List list;
  fill(list, state.range(0));
  for (auto _ : state) {
    for (uint64_t i = 0; i < 1000; ++i) kHead ? list.add_head(i) : list.add_tail(i);
    for (uint64_t i = 0; i < 1000; ++i) {
      benchmark::DoNotOptimize(kHead ? list.remove_head() : list.remove_tail());
    }
  }
}

template <class List>
void walk(benchmark::State &state) {
  List list;
  fill(list, state.range(0));
  for (auto _ : state) benchmark::DoNotOptimize(list.sum());
}

template <class List>
void find_last(benchmark::State &state) {
  List list;
  fill(list, state.range(0));
  for (auto _ : state) benchmark::DoNotOptimize(list.find(static_cast<uint64_t>(state.range(0) - 1)));
}

template <class List>
void clone(benchmark::State &state) {
  List list;
  fill(list, state.range(0));
  for (auto _ : state) {
    List copy;
    copy.copy_from(list);
    benchmark::DoNotOptimize(&copy);
  }
}

const std::vector<int64_t> kSizes = {1000, 100000};

template <class List>
void add_ends(const std::string &kind, const char *who) {
  mub_bench::add_sizes(kind + "_add_tail", who, add<List, false>, kSizes);
  mub_bench::add_sizes(kind + "_add_head", who, add<List, true>, kSizes);
  mub_bench::add_sizes(kind + "_walk", who, walk<List>, kSizes);
}

template <class List>
void add_queues(const std::string &kind, const char *who) {
  mub_bench::add_sizes(kind + "_queue", who, queue<List>, kSizes);
  mub_bench::add_sizes(kind + "_stack_at_tail", who, stack<List, false>, kSizes);
  mub_bench::add_sizes(kind + "_stack_at_head", who, stack<List, true>, kSizes);
}

template <class List>
void add_whole(const std::string &kind, const char *who) {
  mub_bench::add_sizes(kind + "_find_last", who, find_last<List>, kSizes);
  mub_bench::add_sizes(kind + "_clone", who, clone<List>, kSizes);
}

template <class List>
void add_keyed(const char *who) {
  add_ends<List>("list_keyed", who);
  add_whole<List>("list_keyed", who);
  // A removal processes all key bytes and offsets of the list, so its size matters.
  mub_bench::add_sizes("list_keyed_queue", who, queue<List>, {10, 100, 1000, 10000});
}

template <class List>
void add_values(const char *who) {
  add_ends<List>("list_values", who);
  add_queues<List>("list_values", who);
  add_whole<List>("list_values", who);
}

template <class List>
void add_unrolled(const char *who) {
  add_ends<List>("list_unrolled", who);
  add_queues<List>("list_unrolled", who);
}

[[maybe_unused]] const bool registered = [] {
  if (mub_bench::kIsInline) {
    mub_bench::add_sizes("list_keyed_walk", mub_bench::kMub, walk<MubKeyed>, kSizes);
    return true;
  }
  add_keyed<MubKeyed>("mub");
  add_keyed<StdKeyed>("std::list");
  add_values<MubBare>("mub");
  add_values<StdValues<std::list<uint64_t>>>("std::list");
  add_unrolled<MubUnrolled>("mub");
  add_unrolled<StdValues<std::list<uint64_t>>>("std::list");
  add_unrolled<StdValues<std::deque<uint64_t>>>("std::deque");
  return true;
}();

}  // namespace
