/* Counts words with the C++ standard library. */
#include <cstdio>
#include <string>
#include <unordered_map>

static constexpr const char *kText[] = {"the", "cat", "and", "the", "dog", "and", "the", "bird"};

int main() {
  std::unordered_map<std::string, int> words;

  for (const char *word : kText) ++words[word];

  const auto the = words.find("the");
  std::printf("the: %d\n", the == words.end() ? 0 : the->second);
  std::printf("cow: %s\n", words.count("cow") != 0 ? "present" : "absent");
  words.erase("and");

  int total = 0;
  for (const auto &[word, count] : words) total += count;
  std::printf("%d words, %d in all\n", static_cast<int>(words.size()), total);
}
