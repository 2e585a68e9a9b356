/* mub_mem.h: the heap pair, counted bytes and NUL-terminated strings. */
#ifndef MUB_MEM_H
#define MUB_MEM_H

#include "mub_base.h"

#ifdef __cplusplus
extern "C" {
#endif

/* mub_malloc: exactly the runtime's malloc.
 *   size   bytes
 * Returns the block, to be released with mub_free or free; NULL when memory ran out. */
MUB_API void *mub_malloc(uint64_t size);

/* mub_free: exactly the runtime's free.
 *   block   from mub_malloc or handed over by the library; NULL is harmless */
MUB_API void mub_free(void *block);

#ifdef __cplusplus
}
#endif

#endif
