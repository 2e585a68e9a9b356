#ifndef MUB_STREAM_H
#define MUB_STREAM_H

#include "mub_base.h"
#include "mub_string.h"

typedef struct mub_stream {
  uint8_t *data;
  int64_t length;
  int64_t capacity;
} mub_stream;

#endif
