// Records that release what they own, for tests of the stream.
#ifndef MUB_TESTS_SUPPORT_STREAM_RECORDS_H
#define MUB_TESTS_SUPPORT_STREAM_RECORDS_H

#include <cstdint>
#include <string>

#include "mub_stream.h"

namespace mub_test {

inline int64_t size_of(const std::string &text) { return static_cast<int64_t>(text.size()); }

struct Stream : mub_stream {
  explicit Stream(const std::string &content = {}) {
    mub_stream_init(this);
    if (!content.empty()) mub_stream_append(this, content.data(), size_of(content));
  }
  ~Stream() { mub_stream_term(this); }
  Stream(const Stream &) = delete;
  Stream &operator=(const Stream &) = delete;

  std::string content() const { return {reinterpret_cast<const char *>(data), static_cast<size_t>(length)}; }
  // The whole block: what is spare, and the byte behind the capacity.
  std::string block() const {
    return {reinterpret_cast<const char *>(data), static_cast<size_t>(capacity + 1)};
  }
};

// A string record that owns a block, as a stream gives it away.
struct String : mub_string {
  explicit String(const std::string &content = {}) {
    *static_cast<mub_string *>(this) = {nullptr, 0, 0};
    Stream stream(content);
    mub_stream_swap_string(&stream, this);
  }
  ~String() {
    Stream stream;
    mub_stream_swap_string(&stream, this);
  }
  String(const String &) = delete;
  String &operator=(const String &) = delete;

  std::string content() const { return {data, static_cast<size_t>(length)}; }
};

}  // namespace mub_test

#endif
