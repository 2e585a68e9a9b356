// The key of containers whose entries have none.
#ifndef MUB_CORE_NO_KEY_H
#define MUB_CORE_NO_KEY_H

namespace mub {

struct NoKey {};

}  // namespace mub

#endif
