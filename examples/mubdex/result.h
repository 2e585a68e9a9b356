/* How the parts of mubdex say what went wrong. */
#ifndef MUBDEX_RESULT_H
#define MUBDEX_RESULT_H

typedef enum mubdex_result {
  RESULT_OK,
  RESULT_NO_MEMORY,
  RESULT_READ_ERROR, /* errno tells more */
  RESULT_CUT_SHORT,
  RESULT_DAMAGED
} mubdex_result;

#endif
