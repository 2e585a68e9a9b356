// How checks of invariants report: with a sentence that names the broken invariant, or nullptr if all hold.
// The sentences are literals, because a check neither allocates nor writes.
#ifndef MUB_BASE_FAULT_H
#define MUB_BASE_FAULT_H

namespace mub {

using Fault = const char *;

// The result of an exported check, which stores the fault for its caller.
inline int report(Fault fault, const char **what) {
  if (what != nullptr) *what = fault;
  return fault == nullptr ? 1 : 0;
}

}  // namespace mub

#endif
