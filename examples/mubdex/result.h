/* The results of functions that read and write. */
#ifndef MUBDEX_RESULT_H
#define MUBDEX_RESULT_H

typedef enum mubdex_result {
  RESULT_OK,
  RESULT_KNOWN, /* nothing to do: the file was read before */
  RESULT_NO_MEMORY,
  RESULT_READ_ERROR, /* see errno */
  RESULT_TRUNCATED,
  RESULT_DAMAGED
} mubdex_result;

#endif
