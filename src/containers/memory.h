// The heap memory that containers have in common: their key streams, and the pools that they own.
#ifndef MUB_CONTAINERS_MEMORY_H
#define MUB_CONTAINERS_MEMORY_H

#include <cstdint>
#include <type_traits>

#include "bytes/unit_buffer.h"
#include "containers/container_pools.h"
#include "pool/pool.h"

namespace mub {

template <class Container, class = void>
constexpr bool kHasKeyStream = false;
template <class Container>
constexpr bool kHasKeyStream<Container, std::void_t<decltype(Container::keys)>> = true;

template <class Container>
int64_t key_stream_bytes(const Container &container) {
  if constexpr (kHasKeyStream<Container>) return buffer::memory_bytes(container.keys);
  return 0;
}

template <class Field>
int64_t owned_pool_bytes(const Field &field) {
  return field.is_owned() ? int64_t{sizeof(mub_pool)} + pool::memory_bytes(*field.pool) : 0;
}

template <class Container>
int64_t pools_and_keys_bytes(const Container &container) {
  int64_t bytes = key_stream_bytes(container);
  for (const auto &field : pools_of(container)) bytes += owned_pool_bytes(field);
  return bytes;
}

}  // namespace mub

#endif
