/* The vocabulary as UTF-16: a byte order mark, then one word per line. */
#include "unicode.h"
#include "vocabulary.h"

/* A byte becomes at most one unit. The capacity is reserved first, so that no append can fail. */
static bool append_word(mub_wchar *out, mub_char word) {
  if (!mub_wchar_expand(out, out->length + word.length + 1)) return false;
  while (word.length > 0) {
    uint32_t code;
    uint16_t units[2];
    const int64_t size = utf8_decode(word.data, word.length, &code);
    mub_wchar_append(out, units, utf16_encode(code, units));
    word.data += size == 0 ? 1 : size;
    word.length -= size == 0 ? 1 : size;
  }
  mub_wchar_append_char(out, '\n');
  return true;
}

bool vocabulary_utf16(const vocabulary *v, mub_wchar *out) {
  mub_wchar_copy_char(out, BYTE_ORDER_MARK);
  if (mub_wchar_is_empty(out)) return false;
  MUB_EACH_BTREE(&v->words, node) {
    if (!append_word(out, vocabulary_word(v, node))) return false;
  }
  return true;
}
