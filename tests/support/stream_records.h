// A stream that a test owns.
#ifndef MUB_TESTS_SUPPORT_STREAM_RECORDS_H
#define MUB_TESTS_SUPPORT_STREAM_RECORDS_H

#include <cstdint>
#include <string>

#include "mub_stream.h"
#include "support/calls.h"

namespace mub_test {

struct Stream : mub_stream {
  explicit Stream(const std::string &text = {}) {
    mub_stream_init(this);
    mub_stream_append(this, text.data(), size_of(text));
  }
  ~Stream() { mub_stream_term(this); }
  Stream(const Stream &) = delete;
  Stream &operator=(const Stream &) = delete;

  std::string text() const { return {reinterpret_cast<const char *>(data), static_cast<size_t>(length)}; }
  // The whole block: what is spare, and the byte behind the capacity.
  std::string block() const {
    return {reinterpret_cast<const char *>(data), static_cast<size_t>(capacity + 1)};
  }
};

}  // namespace mub_test

#endif
