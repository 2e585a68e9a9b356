// What runs programs: a world of records of one family, of each kind several, and the steps that a program
// takes in it.
//
// A step is an exported function with the roles of its parameters: step<op::insert, Self<R>, Key<R>,
// Value<R>>(world, f) lets each role draw its arguments, calls f, and hands the roles and the result to
// check(), which a family overloads for its operations. Then every record of the world is compared with its
// model. steps.py writes the steps.
//
// A role is a struct with
//   Role(World &)        draws it
//   arguments()          a tuple of what the function takes for it
//   fits                 if there, false when there is nothing to draw: the step is left out then
#ifndef MUB_TESTS_INTERPRETER_MACHINE_H
#define MUB_TESTS_INTERPRETER_MACHINE_H

#include <gtest/gtest.h>

#include <cstdint>
#include <optional>
#include <string_view>
#include <thread>
#include <tuple>
#include <type_traits>
#include <vector>

#include "interpreter/program.h"
#include "support/fuse.h"

namespace mub_test {

// A family's world of records of a kind.
template <class R>
struct WorldOf;

// The result of a function that has none.
struct None {};

// What a driver does to a run: step `step` is that of the function `function`, and of its allocations those
// after `allowed` are refused.
struct Refusals {
  int64_t step = -1;
  int64_t function = 0;
  int64_t allowed = 0;
  Blow blow = Blow::kOnce;
};

// Whether another thread reads at the same time as the test, which a build with ThreadSanitizer watches.
#if defined(MUB_TWO_READERS)
inline constexpr bool kHasTwoReaders = true;
#else
inline constexpr bool kHasTwoReaders = false;
#endif

// A thread that ends with its scope.
struct Thread : std::thread {
  using std::thread::thread;
  ~Thread() {
    if (joinable()) join();
  }
};

// Operations are types that steps.py writes: whether one is one of some, and whether its name has a part.
template <class Op, class... Ops>
concept OneOf = (std::is_same_v<Op, Ops> || ...);
template <class Op>
consteval bool named(std::string_view part) {
  return Op::kName.find(part) != std::string_view::npos;
}

// What every world has.
struct World {
  World(Program drawn, Refusals refused) : program(drawn), refusals(refused) {}

  // Calls a function of the library; under the fuse when it is this step's turn.
  auto call(auto call_it) {
    failed = false;
    if (steps != refusals.step) return call_it();
    arm_fuse(refusals.allowed, refusals.blow);
    if constexpr (std::is_void_v<decltype(call_it())>) {
      call_it();
      end_refusals();
    } else {
      auto result = call_it();
      end_refusals();
      return result;
    }
  }
  void end_refusals() {
    failed = disarm_fuse();
    was_refused |= failed;
  }
  // Calls what only reads, and lets another reader do the same at the same time.
  auto read_by_all(auto call_it) {
    const Thread reader = kHasTwoReaders ? Thread(call_it) : Thread();
    return call_it();
  }

  // Takes a number into what the run has come to, which is the same on every machine.
  void mix(int64_t number) { trace = (trace ^ static_cast<uint64_t>(number)) * 0x100000001B3u; }

  Program program;
  Refusals refusals;
  uint64_t trace = 0xCBF29CE484222325u;
  int64_t steps = 0;
  bool failed = false;       // an allocation of the last call was refused
  bool was_refused = false;  // one was in some call of the run
};

// An exported function as a step of a world; how often it was reached.
template <class W>
struct Step {
  const char *name;
  void (*take)(W &);
  int64_t reached = 0;
};

// Roles, drawn one after another: bases are made in their order.
template <size_t, class Role>
struct Held {
  explicit Held(auto &world) : role(world) {}
  Role role;
};
template <class, class...>
struct RoleSet;
template <size_t... kIndexes, class... Roles>
struct RoleSet<std::index_sequence<kIndexes...>, Roles...> : Held<kIndexes, Roles>... {
  explicit RoleSet(auto &world) : Held<kIndexes, Roles>(world)... {}
  // Calls `use` with all of them.
  auto with(auto use) { return use(static_cast<Held<kIndexes, Roles> &>(*this).role...); }
};

template <class Role>
bool fits(const Role &role) {
  if constexpr (requires { role.fits; }) return role.fits;
  return true;
}

// A step only reads when its function takes its record, the first parameter, as const, and no role stands for
// another record that it writes.
template <class Role>
inline constexpr bool kIsWritten = false;
template <class First, class...>
inline constexpr bool kTakesConst = std::is_const_v<std::remove_pointer_t<First>>;

template <class Op, class... Roles, class W, class Result, class... Params>
void step(W &world, Result (*function)(Params...)) {
  using Drawn = RoleSet<std::index_sequence_for<Roles...>, Roles...>;
  const auto apply = [&](auto &...role) { return std::apply(function, std::tuple_cat(role.arguments()...)); };
  constexpr bool kIsRead = kTakesConst<Params...> && !(kIsWritten<Roles> || ...);
  std::optional<Drawn> others;  // the second reader has results of its own
  if constexpr (kHasTwoReaders && kIsRead) {
    const Program start = world.program;
    others.emplace(world);
    world.program = start;
  }
  Drawn(world).with([&](auto &...role) {
    if (!(fits(role) && ...)) return;
    const auto call = [&] {
      if constexpr (kHasTwoReaders && kIsRead) {
        const Thread reader([&] { others->with(apply); });
        return apply(role...);
      } else {
        return apply(role...);
      }
    };
    if constexpr (std::is_void_v<Result>) {
      world.call(call);
      check(Op{}, world, role..., None{});
    } else {
      const Result result = world.call(call);
      // Machines differ in how far apart two texts are.
      if constexpr (named<Op>("cmp")) {
        world.mix((result > 0) - (result < 0));
      } else if constexpr (std::is_integral_v<Result> && std::is_signed_v<Result>) {
        world.mix(static_cast<int64_t>(result));
      }
      check(Op{}, world, role..., result);
    }
  });
}

// Runs a program to its end, or to the first difference.
template <class W>
void run(W &world, std::vector<Step<W>> &steps) {
  world.compare();
  while (!world.program.is_at_end() && !::testing::Test::HasFatalFailure()) {
    const int64_t drawn = world.program.below(static_cast<int64_t>(steps.size()));
    const bool is_chosen = world.steps == world.refusals.step;
    Step<W> &next = steps[static_cast<size_t>(is_chosen ? world.refusals.function : drawn)];
    SCOPED_TRACE(::testing::Message() << "step " << world.steps << ", " << next.name);
    ++next.reached;
    next.take(world);
    world.compare();
    ++world.steps;
    if (::testing::Test::HasFailure()) return;
  }
}

}  // namespace mub_test

#endif
