// What differs between the variants of a container is its policy: static functions, types and constants that
// an engine reaches through the type of the container's record. The record of each container has one, except
// mub_arrayt. It is specialised in the container's export file, or in a header if other files use it, too.
#ifndef MUB_CONTAINERS_POLICY_H
#define MUB_CONTAINERS_POLICY_H

namespace mub {

template <class Container>
struct Policy;

template <class Container>
using KeyOf = typename Policy<Container>::Key;
template <class Container>
using EntryOf = typename Policy<Container>::Entry;

}  // namespace mub

#endif
