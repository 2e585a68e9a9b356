/**
 * @defgroup hpp mub.hpp: the C++ interface
 *
 * Owning types over the C records, header-only and for C++17, in namespace `mub`.
 *
 *     mub::hash words;
 *     if (!words.insert("the", 1)) …                 false: the key was present, or memory ran out
 *     for (auto [key, value] : words) value += 1;    key is a std::string_view, value a reference
 *     mub_hash_update(words.c(), "the", -1, 2);      c() is the record, for everything else
 *     mub::btree_of<std::string> names;              a map to objects of any type
 *
 * The types of all headers follow the rules of @ref base_hpp "mub_base.hpp".
 */
#ifndef MUB_HPP
#define MUB_HPP

#include "mub.h"
#include "mub_array.hpp"
#include "mub_base.hpp"
#include "mub_bits.hpp"
#include "mub_btree.hpp"
#include "mub_hash.hpp"
#include "mub_list.hpp"
#include "mub_pool.hpp"
#include "mub_text.hpp"
#include "mub_tree.hpp"
#include "mub_typed.hpp"

#endif
