// Prints the index of a text: every word, in alphabetical order, with the lines that contain it.
//
//   index <text
#include <cctype>
#include <cinttypes>
#include <cstdio>

#include "mub.hpp"

namespace {

bool read_all(std::FILE *file, mub::string &text) {
  char piece[4096];
  while (const std::size_t count = std::fread(piece, 1, sizeof piece, file))
    if (!text.insert(text.size(), {piece, count})) return false;
  return true;
}

// The lines of a word: a mub_arrayt in a block of the map's value pool. It stores up to four numbers without
// a heap block.
mub_arrayt *lines_of(std::uint64_t value) { return mub::to_pointer<mub_arrayt>(value); }

bool note(mub::btree &index, std::string_view word, std::uint64_t line) {
  const auto [value, is_new] = index.set(word, [](std::uint64_t fresh) { mub_arrayt_init(lines_of(fresh)); });
  if (value == 0) return false;
  mub_arrayt *lines = lines_of(value);
  if (!is_new && mub_arrayt_get_last(lines) == line) return true;
  if (!mub_arrayt_expand(lines, lines->count + 1)) return false;  // appending does not report errors
  mub_arrayt_append(lines, line);
  return true;
}

bool make_index(mub::btree &index, std::string_view text) {
  std::uint64_t line = 1;
  for (std::size_t start = 0, end = 0; end <= text.size(); ++end) {
    if (end < text.size() && std::isalpha(static_cast<unsigned char>(text[end])) != 0) continue;
    if (end > start && !note(index, text.substr(start, end - start), line))
      return false;  // substr copies nothing
    if (end < text.size() && text[end] == '\n') ++line;
    start = end + 1;
  }
  return true;
}

void print(const mub::btree &index) {
  for (auto [word, value] : index) {
    std::printf("%.*s", static_cast<int>(word.size()), word.data());
    for (std::int64_t i = 0; i < lines_of(value)->count; ++i)
      std::printf(" %" PRIu64, mub_arrayt_get_at(lines_of(value), i));
    std::puts("");
  }
}

}  // namespace

int main() {
  mub::string text;
  mub::btree index(mub::value_blocks{sizeof(mub_arrayt)});
  index.c()->nocase = 1;  // "The" and "the" are one word, spelled as at its first occurrence
  const bool done = read_all(stdin, text) && make_index(index, text);
  if (done)
    print(index);
  else
    std::fputs("index: out of memory\n", stderr);
  index.free_all([](std::uint64_t value) { mub_arrayt_term(lines_of(value)); });  // the rest is automatic
  return done ? 0 : 1;
}
