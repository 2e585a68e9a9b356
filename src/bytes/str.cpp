#include <strings.h>

#include <cstring>

#include "base/alloc.h"
#include "bytes/bytes.h"
#include "bytes/text_span.h"
#include "mub_mem.h"

namespace mub {
namespace {

// Allocates a string of `length` characters: those of `source` before its NUL, then NULs.
char *duplicate(const char *source, int64_t length) {
  if (length == INT64_MAX) return nullptr;
  auto *copy = static_cast<char *>(allocate(length + 1, 1));
  if (copy == nullptr) return nullptr;
  const size_t text = strnlen(source, static_cast<size_t>(length));
  std::memcpy(copy, source, text);
  std::memset(copy + text, 0, static_cast<size_t>(length) + 1 - text);
  return copy;
}

void keep_only(char *string, int64_t start, int64_t length) {
  if (start > 0) std::memmove(string, string + start, static_cast<size_t>(length));
  string[length] = 0;
}

// Compares two strings of which at least one is NULL; NULL sorts first.
int compare_null(const char *a, const char *b) { return (a != nullptr) - (b != nullptr); }

}  // namespace
}  // namespace mub

extern "C" {

void mub_str_dup(char **string, const char *source, int64_t length) {
  char *copy = nullptr;
  if (source != nullptr) {
    copy = mub::duplicate(source, mub::measured(source, length));
    if (copy == nullptr) return;
  }
  mub::release(*string);
  *string = copy;
}

void mub_str_trim(char *string, int64_t length) {
  if (string == nullptr) return;
  // A negative length is not measured: nothing is left.
  const mub::span::Trimmed kept = mub::span::trimmed(string, length);
  if (kept.starts_with_nul || (length > 0 && kept.length == length)) return;
  mub::keep_only(string, kept.start, kept.length);
}

int64_t mub_str_chr(const char *string, int character) {
  return string == nullptr ? -1 : mub::bytes::index_of(std::strchr(string, character), string);
}

int64_t mub_str_rchr(const char *string, int character) {
  return string == nullptr ? -1 : mub::bytes::index_of(std::strrchr(string, character), string);
}

int64_t mub_str_str(const char *haystack, const char *needle) {
  if (haystack == nullptr || needle == nullptr) return -1;
  return mub::bytes::index_of(std::strstr(haystack, needle), haystack);
}

int mub_str_cmp(const char *a, const char *b) {
  return a == nullptr || b == nullptr ? mub::compare_null(a, b) : std::strcmp(a, b);
}

int mub_str_icmp(const char *a, const char *b) {
  return a == nullptr || b == nullptr ? mub::compare_null(a, b) : strcasecmp(a, b);
}
}
