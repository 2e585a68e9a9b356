/* Fill in a template: replace {name} by the value of the name in a dictionary.
 *
 * The text is built piece by piece in one string. Appending does not report errors, so capacity is reserved,
 * and checked, beforehand. */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "mub.h"

static const char TEMPLATE[] =
    "Dear {name},\n"
    "your {things} are ready: {count} of them, {price} each.\n"
    "{} {unknown\n";

static int append(mub_string *out, const char *text, int64_t count) {
  if (!mub_string_expand(out, out->length + count)) return 0;
  mub_string_append(out, text, count);
  return 1;
}

/* A name that is not in the dictionary remains unchanged, with its braces. */
static int fill(const char *text, const mub_array *values, mub_string *out) {
  mub_stringx rest = {text, 0, (int64_t)strlen(text)};
  while (rest.length > 0) {
    const char *here = rest.text + rest.start;
    const int64_t open = mub_stringx_find_char(&rest, '{');
    const int64_t close = open < 0 ? -1 : mub_stringx_find_char_pos(&rest, '}', open);
    if (close < 0) return append(out, here, rest.length);
    const mub_array_entry *value = mub_array_entry_find(values, here + open + 1, close - open - 1);
    const char *with = value != NULL ? MUB_VALUE_AS(const char, value->value) : here + open;
    if (!append(out, here, open)) return 0;
    if (!append(out, with, value != NULL ? (int64_t)strlen(with) : close - open + 1)) return 0;
    mub_stringx_mid(&rest, close + 1, rest.length);
  }
  return 1;
}

static int define(mub_array *values, const char *name, const char *value) {
  return mub_array_insert(values, name, -1, MUB_VALUE_OF(value)) && mub_array_find(values, name, -1) != 0;
}

int main(void) {
  mub_array values; /* sorted by name: a small dictionary */
  mub_string letter, price;
  mub_array_init(&values, 0);
  mub_string_init(&letter);
  mub_string_init(&price);
  mub_string_format(&price, "%.2f", 12.5);
  int done = price.length > 0 && define(&values, "name", "Ms Rivera") && define(&values, "things", "lamps") &&
             define(&values, "count", "3") && define(&values, "price", price.data);
  done = done && fill(TEMPLATE, &values, &letter);
  if (done) fputs(letter.data, stdout);
  mub_string_term(&price);
  mub_string_term(&letter);
  mub_array_term(&values);
  return done ? EXIT_SUCCESS : EXIT_FAILURE;
}
