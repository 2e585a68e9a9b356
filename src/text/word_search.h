// Searching a run of words for a pattern in time linear in both lengths, whatever the words: the two-way
// algorithm. It reads one word at a time, and so is slower than a search by vectors in all but hostile texts.
#ifndef MUB_TEXT_WORD_SEARCH_H
#define MUB_TEXT_WORD_SEARCH_H

#include <algorithm>
#include <cstdint>

#include "bytes/bytes.h"

namespace mub::wide {

// Words at any address.
template <class Word>
class Words {
 public:
  Words(const void *words, int64_t count) : bytes_(bytes::as_bytes(words)), count_(count) {}
  Word operator[](int64_t i) const { return bytes::load<Word>(bytes_ + i * int64_t{sizeof(Word)}); }
  int64_t count() const { return count_; }

 private:
  const uint8_t *bytes_;
  int64_t count_;
};

// A pattern is cut at a critical position: one whose local period is the period of the whole pattern.
struct Cut {
  int64_t left;    // length of the left part
  int64_t period;  // period of the right part
};

// The maximal suffix in the order of words, or in the opposite order.
template <class Word>
Cut greatest_suffix(const Words<Word> &pattern, bool by_opposite) {
  int64_t suffix = 0;
  int64_t period = 1;
  int64_t rival = 1;
  int64_t equal = 0;
  while (rival + equal < pattern.count()) {
    const Word of_rival = pattern[rival + equal];
    const Word of_suffix = pattern[suffix + equal];
    if (of_rival == of_suffix) {
      ++equal;
      if (equal < period) continue;
      rival += period;
    } else if ((of_rival < of_suffix) != by_opposite) {
      rival += equal + 1;
      period = rival - suffix;
    } else {
      suffix = rival++;
      period = 1;
    }
    equal = 0;
  }
  return {suffix, period};
}

template <class Word>
Cut critical_cut(const Words<Word> &pattern) {
  const Cut cut = greatest_suffix(pattern, false);
  const Cut opposite = greatest_suffix(pattern, true);
  return cut.left > opposite.left ? cut : opposite;
}

// Whether the period of the right part is that of the whole pattern.
template <class Word>
bool repeats(const Words<Word> &pattern, const Cut &cut) {
  for (int64_t i = 0; i < cut.left; ++i) {
    if (pattern[i] != pattern[i + cut.period]) return false;
  }
  return true;
}

// The first position of the pattern, which has at least one word; -1 when there is none.
template <class Word>
int64_t find_in_linear_time(const Words<Word> &text, const Words<Word> &pattern) {
  const int64_t length = pattern.count();
  const Cut cut = critical_cut(pattern);
  const bool is_periodic = repeats(pattern, cut);
  // After a match of the right part only, no shorter step can lead to a match.
  const int64_t step = is_periodic ? cut.period : std::max(cut.left, length - cut.left) + 1;
  int64_t known = 0;  // words at `position` known to match, as they did one period earlier
  for (int64_t position = 0; position <= text.count() - length;) {
    int64_t i = std::max(cut.left, known);
    while (i < length && pattern[i] == text[position + i]) ++i;
    if (i < length) {
      position += i - cut.left + 1;
      known = 0;
      continue;
    }
    i = cut.left;
    while (i > known && pattern[i - 1] == text[position + i - 1]) --i;
    if (i <= known) return position;
    position += step;
    known = is_periodic ? length - cut.period : 0;
  }
  return -1;
}

}  // namespace mub::wide

#endif
