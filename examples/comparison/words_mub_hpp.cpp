/* Counts words with the C++ types of libmub. */
#include <cstdio>
#include <cstdlib>
#include <string_view>

#include "mub.hpp"

static constexpr std::string_view kText[] = {"the", "cat", "and", "the", "dog", "and", "the", "bird"};

int main() {
  mub::hash words;

  for (const std::string_view word : kText) {
    mub_hash_entry *entry = words.emplace(word).entry;
    if (entry == nullptr) return EXIT_FAILURE;  // out of memory
    ++entry->value;
  }

  std::printf("the: %d\n", static_cast<int>(words.get("the")));
  std::printf("cow: %s\n", words.contains("cow") ? "present" : "absent");
  words.remove("and");

  int total = 0;
  for (auto [word, count] : words) total += static_cast<int>(count);
  std::printf("%d words, %d in all\n", static_cast<int>(words.size()), total);
}
