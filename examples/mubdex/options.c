#include "options.h"

#include <stdbool.h>
#include <stdio.h>
#include <string.h>

static const char USAGE[] =
    "usage: mubdex [--json | --template TEXT | --lines WORD | --prefix PREFIX | --range A..B | --outline |\n"
    "               --query QUERY | --dot PICTURE] [--load INDEX] [--save INDEX] [--utf16 WORDS] [FILE...]\n"
    "\n"
    "Counts the words of the files, ignoring the case of letters, and prints the most frequent ones.\n"
    "A FILE named - is standard input. Without a FILE, reads /usr/share/common-licenses/GPL-3. A file that "
    "is\n"
    "given more than once, under any name, is read once.\n"
    "\n"
    "  --json           print one JSON object\n"
    "  --template TEXT  print TEXT for each of the most frequent words, with the word in place of the first\n"
    "                   question mark and its count in place of the second: 'word ? occurs ? times'\n"
    "  --lines WORD     print the lines that contain WORD, ignoring case\n"
    "  --prefix PREFIX  print the words that begin with PREFIX, in byte order\n"
    "  --range A..B     print the words from A to B, and those that begin with B; A or B may be empty\n"
    "  --outline        print the numbered headings\n"
    "  --query QUERY    print the lines that match QUERY: words, AND, OR, NOT and parentheses, as in\n"
    "                   'free AND (software OR program) NOT warranty'\n"
    "  --dot PICTURE    print a picture of a container in memory for Graphviz (--dot hash | dot -Tsvg). "
    "PICTURE\n"
    "                   is hash: the table of the words; btree: the words in byte order; or pool: the pool "
    "of\n"
    "                   that tree's records after the words that occur only once were removed\n"
    "  --save INDEX     save the counts to a file\n"
    "  --load INDEX     start with saved counts, which have no lines; then FILE is optional\n"
    "  --utf16 WORDS    write the words in byte order to a file, in UTF-16, one per line\n"
    "  --help           print this help\n"
    "\n"
    "Exit status: 0 if successful, 1 if a file cannot be read or written or is damaged, 2 for wrong usage.\n";

static const char *const TASK_OPTIONS[] = {
    [TASK_HELP] = "--help",       [TASK_JSON] = "--json",     [TASK_TEMPLATE] = "--template",
    [TASK_LINES] = "--lines",     [TASK_PREFIX] = "--prefix", [TASK_RANGE] = "--range",
    [TASK_OUTLINE] = "--outline", [TASK_QUERY] = "--query",   [TASK_DOT] = "--dot",
};

enum { TASKS = sizeof TASK_OPTIONS / sizeof TASK_OPTIONS[0] };

void print_usage(void) { fputs(USAGE, stdout); }

int usage_error(const char *problem, const char *argument) {
  fprintf(stderr, "mubdex: %s %s\n%s", problem, argument, USAGE);
  return EXIT_USAGE;
}

static task task_of(const char *option) {
  for (int i = 1; i < TASKS; i++) {
    if (strcmp(option, TASK_OPTIONS[i]) == 0) return (task)i;
  }
  return TASK_REPORT;
}

static bool takes_argument(task wanted) {
  return wanted != TASK_HELP && wanted != TASK_JSON && wanted != TASK_OUTLINE;
}

/* Where to store the argument of an option that names a file; NULL for other options. */
static const char **file_of(const char *option, mubdex_options *options) {
  if (strcmp(option, "--load") == 0) return &options->load;
  if (strcmp(option, "--save") == 0) return &options->save;
  return strcmp(option, "--utf16") == 0 ? &options->utf16 : NULL;
}

/* Parses argv[*i] and its argument, if any; *i moves to the last one used. */
static int parse_option(int argc, char **argv, int *i, mubdex_options *options) {
  const char *option = argv[*i];
  const char **argument = file_of(option, options);
  if (argument == NULL) {
    const task wanted = task_of(option);
    if (wanted == TASK_REPORT) return usage_error("unknown option", option);
    if (options->task != TASK_REPORT) return usage_error("cannot be combined with another task:", option);
    options->task = wanted;
    if (!takes_argument(wanted)) return EXIT_DONE;
    argument = &options->argument;
  }
  if (++*i == argc) return usage_error("missing argument of", option);
  *argument = argv[*i];
  return EXIT_DONE;
}

int parse_options(int argc, char **argv, mubdex_options *options) {
  bool only_files = false;
  int status = EXIT_DONE;
  *options = (mubdex_options){TASK_REPORT, NULL, NULL, NULL, NULL, argv, 0};
  for (int i = 1; i < argc && status == EXIT_DONE; i++) {
    if (only_files || argv[i][0] != '-' || argv[i][1] == '\0') {
      options->files[options->file_count++] = argv[i];
    } else if (strcmp(argv[i], "--") == 0) {
      only_files = true;
    } else {
      status = parse_option(argc, argv, &i, options);
    }
  }
  return status;
}
