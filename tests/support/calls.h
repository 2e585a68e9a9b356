// The functions of the kinds of one family behind one face: call<kInsert>(record, key, value) calls that of the record's
// kind. A kind has them in a tuple, kFunctions, in the order of the family's enumeration, and `passed` says for arguments
// that kinds take in different ways, such as keys, what is passed for them.
#ifndef MUB_TESTS_SUPPORT_CALLS_H
#define MUB_TESTS_SUPPORT_CALLS_H

#include <cstdint>
#include <string>
#include <string_view>
#include <tuple>

namespace mub_test {

inline int64_t size_of(std::string_view bytes) { return static_cast<int64_t>(bytes.size()); }

// Everything is passed as it is.
struct Passing {
  template <class Arg>
  static auto passed(Arg arg) {
    return std::tuple(arg);
  }
};

// Byte strings are passed with their lengths.
struct PassingBytes : Passing {
  using Passing::passed;
  static auto passed(std::string_view bytes) { return std::tuple(bytes.data(), size_of(bytes)); }
  static auto passed(const std::string &bytes) { return passed(std::string_view(bytes)); }
};

template <int kOperation, class Kind, class Record, class... Args>
auto call_of(Record *record, const Args &...args) {
  return std::apply(std::get<kOperation>(Kind::kFunctions),
                    std::tuple_cat(std::tuple(record), Kind::passed(args)...));
}

}  // namespace mub_test

#endif
