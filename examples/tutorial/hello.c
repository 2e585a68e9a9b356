/* The first program of the tutorial. */
#include <stdio.h>

#include "mub.h"

int main(void) {
  mub_string greeting;
  mub_string_init(&greeting);
  mub_string_format(&greeting, "hello from libmub %s", MUB_VERSION);
  mub_string_append(&greeting, ", in C", -1);
  printf("%s\n", greeting.data != NULL ? greeting.data : "out of memory");
  mub_string_term(&greeting);
  return 0;
}
