/* Parse settings from a text without copying any of it.
 *
 * A mub_stringx is a view of part of a text that is owned elsewhere. Splitting and trimming a view allocates
 * nothing, so nothing can fail and nothing needs to be released. */
#include <inttypes.h>
#include <stdio.h>
#include <stdlib.h>

#include "mub.h"

static const char SETTINGS[] =
    "# a server\n"
    "name   = north wing\n"
    "port=8080\n"
    "\n"
    "ratio  =  0.75  \n"
    "no equals sign here\n";

/* Splits the text before `separator` from `rest`, or all of `rest` if there is none; drops the separator. */
static mub_stringx cut(mub_stringx *rest, char separator) {
  mub_stringx front = *rest;
  const int64_t at = mub_stringx_find_char(rest, separator);
  mub_stringx_left(&front, at < 0 ? rest->length : at);
  mub_stringx_mid(rest, front.length + 1, rest->length);
  return front;
}

static void print(const mub_stringx *name, const mub_stringx *value) {
  printf("%.*s: ", (int)name->length, name->text + name->start);
  if (mub_stringx_is_long(value))
    printf("the integer %" PRId64 "\n", mub_stringx_get_long(value));
  else if (mub_stringx_is_float(value))
    printf("the number %g\n", mub_stringx_get_float(value));
  else
    printf("the text \"%.*s\"\n", (int)value->length, value->text + value->start);
}

int main(void) {
  mub_stringx rest = {SETTINGS, 0, sizeof SETTINGS - 1};
  int number = 0;
  while (rest.length > 0) {
    mub_stringx line = cut(&rest, '\n');
    number++;
    mub_stringx_trim(&line);
    if (line.length == 0 || mub_stringx_get_at(&line, 0) == '#') continue;
    if (mub_stringx_find_char(&line, '=') < 0) {
      printf("line %d is no setting\n", number);
      continue;
    }
    mub_stringx name = cut(&line, '=');
    mub_stringx_trim(&name);
    mub_stringx_trim(&line);
    print(&name, &line);
  }
  return EXIT_SUCCESS;
}
