#ifndef MUB_STRING_H
#define MUB_STRING_H

#include "mub_base.h"

typedef struct mub_string {
  char *data;
  int64_t length;
  int64_t capacity;
} mub_string;

#endif
