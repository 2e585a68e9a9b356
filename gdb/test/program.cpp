// Fills objects of the C++ types with the content that gdb_test.py expects, and calls stop().
#include <mub.hpp>

namespace {

struct article {
  int price;
  mub::string name;
};

mub::hash_of<article> articles;
mub::btreed_of<float> weights;
mub::stringx view(std::string_view("a value").substr(2));
mub::arrayt numbers;
mub::hash *volatile pointer;

}  // namespace

__attribute__((noinline)) void stop() { __asm__ volatile("" ::: "memory"); }

int main() {
  mub::hash table;
  table.insert("key", 3);
  pointer = &table;
  articles.emplace("pear", 7, mub::string("Conference"));
  weights.insert(2, 0.5F);
  numbers.push_back(9);
  stop();
}
