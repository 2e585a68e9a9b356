/* mub.h: the whole C interface. Each header also stands alone. The C++ types are in mub.hpp. */
#ifndef MUB_H
#define MUB_H

#include "mub_array.h"
#include "mub_base.h"
#include "mub_bits.h"
#include "mub_btree.h"
#include "mub_char.h"
#include "mub_each.h"
#include "mub_hash.h"
#include "mub_list.h"
#include "mub_mem.h"
#include "mub_pool.h"
#include "mub_stream.h"
#include "mub_string.h"
#include "mub_tree.h"
#include "mub_wchar.h"

#endif
