// An arena: what the library allocates while it is open lies in one mapping, which can then be made
// read-only.
#ifndef MUB_TESTS_SUPPORT_ARENA_H
#define MUB_TESTS_SUPPORT_ARENA_H

#include <cstddef>
#include <new>

namespace mub_test {

// One at a time. The program is linked with --wrap for malloc and free; blocks of the arena are never reused,
// and go with it.
class Arena {
 public:
  Arena();
  ~Arena();
  Arena(const Arena &) = delete;
  Arena &operator=(const Arena &) = delete;

  // A T whose constructor allocates in the arena; it is not destroyed.
  template <class T>
  T *make() {
    open();
    T *made = new (allocate(sizeof(T))) T;
    close();
    return made;
  }
  void make_read_only();

  static void *allocate(size_t size);

 private:
  static void open();
  static void close();
};

}  // namespace mub_test

#endif
