// Asking for memory ahead of its use.
#ifndef MUB_CORE_PREFETCH_H
#define MUB_CORE_PREFETCH_H

namespace mub {

// Any address will do. The empty statement stands for an effect: calls of functions that only fetch would otherwise be
// taken for calls of functions that do nothing, and vanish.
inline void prefetch(const void *address) {
  __builtin_prefetch(address);
  __asm__ volatile("");
}

}  // namespace mub

#endif
