// Roles shared by all families: out parameters and callbacks.
#ifndef MUB_TESTS_INTERPRETER_ROLES_H
#define MUB_TESTS_INTERPRETER_ROLES_H

#include <cstring>
#include <functional>
#include <memory>
#include <tuple>
#include <type_traits>
#include <vector>

#include "interpreter/machine.h"
#include "mub.h"

namespace mub_test {

// Reads a field of a block that was returned to its pool.
template <class T>
__attribute__((no_sanitize("address"))) T peek(const T &field) {
  return field;
}

// The arguments of the callbacks in the last call. Global, as callbacks have no context.
inline std::vector<uint64_t> seen;
inline bool is_callback_given;
inline void note(uint64_t value) { seen.push_back(value); }
// An initialiser also records the caller's out value at the time of the call, or else the record's count.
inline const uint64_t *out_value;
inline uint64_t out_value_seen;
inline void note_init(uint64_t value) {
  out_value_seen = *out_value;
  note(value);
}
inline void note_clone(const mub_pool_chunk *, uint64_t source, mub_pool *, uint64_t copy, mub_pool *) {
  seen.push_back(source);
  seen.push_back(copy);
}

// A value drawn by a function object or by a member of the world.
template <class T, auto kDraw>
struct Drawn {
  template <class W>
  explicit Drawn(W &world) : value(std::invoke(kDraw, world)) {}
  auto arguments() const { return std::tuple(value); }
  T value;
};
template <class T>
struct Out {
  template <class W>
  explicit Out(W &) : value(std::make_unique<T>()) {
    std::memset(value.get(), 77, sizeof(T));
    if constexpr (std::is_same_v<T, uint64_t>) out_value = value.get();
  }
  auto arguments() const { return std::tuple(value.get()); }
  std::unique_ptr<T> value;
};
// A callback that records its arguments, or NULL.
template <class Function, Function kNote>
struct Callback {
  template <class W>
  explicit Callback(W &world) : is_given(!world.program.one_in(4)) {
    is_callback_given = is_given;
    seen.clear();
  }
  auto arguments() const { return std::tuple(is_given ? kNote : Function{nullptr}); }
  bool is_given;
};
using Init = Callback<mub_init_fn, note_init>;
using Free = Callback<mub_free_fn, note>;
using Cloner = Callback<mub_clone_fn, note_clone>;
// A user pool for a clone, or NULL. It may also be a pool that the destination owns, which the clone must not
// change.
template <int kIndex>
struct UserPool {
  explicit UserPool(auto &world) : pool(world.program.one_in(2) ? &world.users[kIndex] : nullptr) {
    if (kIndex == 0 || !world.program.one_in(3)) return;
    std::vector<mub_pool *> pools = {&world.users[0]};
    world.peer->add_own_pools(pools);
    pool = world.program.one_of(pools);
  }
  auto arguments() const { return std::tuple(pool); }
  mub_pool *pool;
};

// The library finds a record intact, or not.
void expect_intact(auto verify, const auto &record, bool is_intact = true) {
  const char *what = "not set";
  ASSERT_EQ(verify(&record, &what), is_intact ? 1 : 0) << (what != nullptr ? what : "");
  ASSERT_EQ(what == nullptr, is_intact);
}

}  // namespace mub_test

#endif
