// The layout of the public records.
#ifndef MUB_CORE_LAYOUT_H
#define MUB_CORE_LAYOUT_H

namespace mub {

// The interface promises sizes and offsets where pointers have 8 bytes. Elsewhere records are laid out as the
// machine's compilers lay out the same declarations.
constexpr bool laid_out(bool as_promised) { return sizeof(void *) != 8 || as_promised; }

}  // namespace mub

#endif
