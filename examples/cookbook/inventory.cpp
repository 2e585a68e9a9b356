/* Keep an inventory in C++: objects in hash tables and in ordered maps, without a cast.
 *
 * The maps own their values: hash_of<article> stores objects with strings in its value pool, btree_of<int>
 * stores numbers in its records, and hashx_of<std::unique_ptr<reservation>> deletes what they point to. */
#include <cstdio>
#include <memory>
#include <new>

#include "mub.hpp"

namespace {

//! [types]
struct article {
  mub::string name;
  std::int64_t cents;
  int stock;
};

struct reservation {
  mub::string customer;
  mub::string code;
  int pieces;
};

struct inventory {
  mub::hash_of<article> articles;                            // by code
  mub::btree_of<int> shelves;                                // pieces per shelf, in the order of shelves
  mub::hashx_of<std::unique_ptr<reservation>> reservations;  // by number
};
//! [types]

int width(std::string_view text) { return static_cast<int>(text.size()); }

//! [add]
// False if the code is known, or memory ran out.
bool add(inventory &shop, std::string_view code, std::string_view name, std::int64_t cents, int stock) {
  mub::string copy(name);  // empty if memory ran out
  return copy == name && shop.articles.emplace(code, std::move(copy), cents, stock).inserted;
}
//! [add]

//! [store]
// Puts pieces of an article on a shelf. A new shelf starts with 0 pieces.
bool store(inventory &shop, std::string_view code, std::string_view shelf, int pieces) {
  article *stored = shop.articles.find(code);
  if (stored == nullptr) return false;
  int *count = shop.shelves.emplace(shelf, 0).value;
  if (count == nullptr) return false;
  *count += pieces;
  stored->stock += pieces;
  return true;
}
//! [store]

//! [reserve]
// The reserved pieces are no longer in stock. The map takes the std::unique_ptr, which deletes the
// reservation when its entry is removed. Without memory the result is false, too.
bool reserve(inventory &shop, std::uint64_t number, std::string_view customer, std::string_view code,
             int pieces) {
  article *wanted = shop.articles.find(code);
  if (wanted == nullptr || wanted->stock < pieces) return false;
  std::unique_ptr<reservation> made(new (std::nothrow)
                                        reservation{mub::string(customer), mub::string(code), pieces});
  if (made == nullptr || made->customer != customer || made->code != code) return false;
  if (!shop.reservations.insert(number, std::move(made))) return false;
  wanted->stock -= pieces;
  return true;
}

// Cancels all reservations of a customer.
int cancel(inventory &shop, std::string_view customer) {
  int cancelled = 0;
  for (auto it = shop.reservations.begin(); it != shop.reservations.end();) {
    const reservation &found = *it->value;
    if (found.customer != customer) {
      ++it;
      continue;
    }
    if (article *reserved = shop.articles.find(found.code)) reserved->stock += found.pieces;
    it = shop.reservations.erase(it);
    ++cancelled;
  }
  return cancelled;
}
//! [reserve]

//! [report]
// A btree sorts the codes of the articles; its values are pointers to objects, which do not move.
void print_articles(const inventory &shop) {
  mub::btree_of<const article *> sorted;
  for (auto [code, found] : shop.articles) {
    if (!sorted.insert(code, &found)) std::fputs("  an article is missing: out of memory\n", stderr);
  }
  std::int64_t total = 0;
  for (auto [code, found] : sorted) {
    std::printf("  %-6.*s %-12s %3d at %3d.%02d\n", width(code), code.data(), found->name.c_str(),
                found->stock, static_cast<int>(found->cents / 100), static_cast<int>(found->cents % 100));
    total += found->stock * found->cents;
  }
  std::printf("  worth %d.%02d\n", static_cast<int>(total / 100), static_cast<int>(total % 100));
}

// The shelves whose names begin with a letter are a range of keys.
void print_aisle(const inventory &shop, char aisle) {
  const char first[] = {aisle, '\0'}, next[] = {static_cast<char>(aisle + 1), '\0'};
  const auto end = shop.shelves.lower_bound(next);
  for (auto it = shop.shelves.lower_bound(first); it != end; ++it)
    std::printf("  %.*s: %d\n", width(it->key), it->key.data(), it->value);
}
//! [report]

//! [names]
// Strings and views compare with each other and with literals, and += appends.
mub::string names_of_sold_out(const inventory &shop) {
  mub::string names;
  for (auto [code, found] : shop.articles) {
    if (found.stock > 0) continue;
    if (!names.empty()) names += ", ";
    names += found.name;
  }
  return names;
}
//! [names]

}  // namespace

//! [main]
int main() {
  inventory shop;
  const bool is_filled = add(shop, "T-10", "teapot", 2450, 0) && add(shop, "C-04", "cup", 680, 0) &&
                         add(shop, "S-01", "sugar bowl", 1190, 1) && !add(shop, "C-04", "mug", 900, 0);
  const bool is_stored = store(shop, "C-04", "B2", 24) && store(shop, "T-10", "A1", 3) &&
                         store(shop, "C-04", "A2", 6) && !store(shop, "X-99", "A3", 1);
  const bool is_reserved = reserve(shop, 1, "Ada", "C-04", 6) && reserve(shop, 2, "Ben", "T-10", 3) &&
                           reserve(shop, 3, "Ada", "S-01", 1) && !reserve(shop, 4, "Cleo", "T-10", 1);
  if (!is_filled || !is_stored || !is_reserved) {
    std::fputs("inventory: out of memory\n", stderr);
    return 1;
  }

  std::puts("articles:");
  print_articles(shop);
  std::printf("sold out: %s\n", names_of_sold_out(shop).c_str());
  std::puts("aisle A:");
  print_aisle(shop, 'A');

  std::printf("Ada cancels %d reservations\n", cancel(shop, "Ada"));
  shop.articles.erase("T-10");
  print_articles(shop);
}
//! [main]
