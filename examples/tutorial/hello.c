/* The first program of the tutorial. */
#include <stdio.h>

#include "mub.h"

int main(void) {
  mub_string greeting;
  mub_string_init(&greeting);
  mub_string_format(&greeting, "libmub %s says: %d containers", MUB_VERSION, 3);
  mub_string_append(&greeting, ", one header", -1);
  printf("%s\n", greeting.data != NULL ? greeting.data : "out of memory");
  mub_string_term(&greeting);
  return 0;
}
