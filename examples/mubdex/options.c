#include "options.h"

#include <getopt.h>
#include <mub_base.h>
#include <stddef.h>
#include <stdio.h>

#define USAGE "usage: mubdex [TASK] [--load INDEX] [--save INDEX] [--utf16 WORDS] [FILE...]"

const char VERSION[] = "mubdex " MUB_VERSION "\n";

const char HELP[] = USAGE
    "\n"
    "\n"
    "Counts the words of the files, ignoring the case of the letters A to Z, and prints the most frequent\n"
    "ones. A FILE named - is standard input, which is also read without a FILE. A file that is given more\n"
    "than once, under any name, is read once. Texts are in ASCII or UTF-8, or in UTF-16 if they begin with\n"
    "a byte order mark.\n"
    "\n"
    "TASK is one of\n"
    "  --json           print one JSON object\n"
    "  --template TEXT  print TEXT for each of the most frequent words, with the word in place of the first\n"
    "                   question mark and its count in place of the second: 'word ? occurs ? times'\n"
    "  --lines WORD     print the lines that contain WORD, ignoring case\n"
    "  --prefix PREFIX  print the words that begin with PREFIX, in byte order\n"
    "  --range A..B     print the words from A to B, and those that begin with B; A or B may be empty\n"
    "  --outline        print the numbered headings\n"
    "  --query QUERY    print the lines that match QUERY: words, AND, OR, NOT and parentheses, as in\n"
    "                   'free AND (software OR program) NOT warranty'\n"
    "  --dot PICTURE    print a picture of a container in memory for Graphviz (--dot hash | dot -Tsvg).\n"
    "                   PICTURE is hash: the table of the words; btree: the words in byte order; or pool:\n"
    "                   the pool of that tree's records after the words that occur only once were removed\n"
    "\n"
    "With any task:\n"
    "  --save INDEX     save the counts to a file\n"
    "  --load INDEX     start with saved counts, which have no lines; then FILE is optional\n"
    "  --utf16 WORDS    write the words in byte order to a file, in UTF-16, one per line\n"
    "\n"
    "  -h, --help       print this help\n"
    "  --version        print the version\n"
    "\n"
    "Exit status: 0 if successful, 1 if a file cannot be read or written or is damaged, 2 for wrong usage.\n";

/* The values of the options that are not tasks; those of tasks are the tasks. */
enum { OPTION_LOAD = 'l', OPTION_SAVE = 's', OPTION_UTF16 = 'u' };

static const struct option OPTIONS[] = {
    {"json", no_argument, NULL, TASK_JSON},           {"template", required_argument, NULL, TASK_TEMPLATE},
    {"lines", required_argument, NULL, TASK_LINES},   {"prefix", required_argument, NULL, TASK_PREFIX},
    {"range", required_argument, NULL, TASK_RANGE},   {"outline", no_argument, NULL, TASK_OUTLINE},
    {"query", required_argument, NULL, TASK_QUERY},   {"dot", required_argument, NULL, TASK_DOT},
    {"load", required_argument, NULL, OPTION_LOAD},   {"save", required_argument, NULL, OPTION_SAVE},
    {"utf16", required_argument, NULL, OPTION_UTF16}, {"help", no_argument, NULL, 'h'},
    {"version", no_argument, NULL, TASK_VERSION},     {NULL, 0, NULL, 0},
};

static int print_usage(void) {
  fputs(USAGE "; mubdex --help explains it\n", stderr);
  return EXIT_USAGE;
}

int usage_error(const char *problem, const char *argument) {
  fprintf(stderr, "mubdex: %s %s\n", problem, argument);
  return print_usage();
}

/* Stores an option, whose argument is optarg. */
static int store_option(int option, mubdex_options *options) {
  switch (option) {
    case '?':
      return print_usage(); /* getopt_long has printed the error */
    case OPTION_LOAD:
      options->load = optarg;
      return EXIT_DONE;
    case OPTION_SAVE:
      options->save = optarg;
      return EXIT_DONE;
    case OPTION_UTF16:
      options->utf16 = optarg;
      return EXIT_DONE;
    default:
      if (options->task != TASK_REPORT) {
        fputs("mubdex: only one task is possible\n", stderr);
        return print_usage();
      }
      options->task = (task)option;
      options->argument = optarg;
      return EXIT_DONE;
  }
}

int parse_options(int argc, char **argv, mubdex_options *options) {
  int option;
  *options = (mubdex_options){TASK_REPORT, NULL, NULL, NULL, NULL, NULL, 0};
  while ((option = getopt_long(argc, argv, "h", OPTIONS, NULL)) != -1) {
    /* These need nothing else, not even correct usage of the options after them. */
    if (option == 'h' || option == TASK_VERSION) {
      options->task = option == 'h' ? TASK_HELP : TASK_VERSION;
      return EXIT_DONE;
    }
    const int status = store_option(option, options);
    if (status != EXIT_DONE) return status;
  }
  options->files = argv + optind;
  options->file_count = argc - optind;
  return EXIT_DONE;
}
