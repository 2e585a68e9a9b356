// Counts the distinct words of standard input, and the occurrences of "the".
#include <iostream>
#include <string>

#include "mub.h"

int main() {
  mub_hash words;
  mub_hash_init(&words, 1, 0);
  for (std::string word; std::cin >> word;) {
    mub_hash_entry *entry = nullptr;
    mub_hash_entry_set(&words, word.data(), static_cast<int64_t>(word.size()), &entry);
    if (entry == nullptr) return 1;
    entry->value++;
  }
  std::cout << words.count << " words, \"the\" " << mub_hash_get(&words, "the", -1) << " times\n";
  mub_hash_term(&words);
}
