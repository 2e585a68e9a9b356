/* mubdex: an index of the words of a text, as a model of how to use the library. */
#define _POSIX_C_SOURCE 200809L

#include <errno.h>
#include <stdbool.h>
#include <stdio.h>
#include <string.h>
#include <time.h>
#include <unistd.h>

#include "answers.h"
#include "corpus.h"
#include "query.h"
#include "report.h"
#include "word_index.h"

/* Part of every Debian system. */
static char default_text[] = "/usr/share/common-licenses/GPL-3";

static const char USAGE[] =
    "usage: mubdex [--json | --lines WORD | --prefix PREFIX | --range A..B | --outline | --query QUERY]\n"
    "              [--load INDEX] [--save INDEX] [FILE...]\n"
    "\n"
    "Counts the words of the files, letters folded to lower case, and prints the most frequent ones.\n"
    "A FILE of - is standard input; without a file the text is /usr/share/common-licenses/GPL-3. A file that "
    "is\n"
    "given twice, also by another name, is read once.\n"
    "\n"
    "  --json           print one JSON object\n"
    "  --lines WORD     print the lines that hold the word, in any case of letters\n"
    "  --prefix PREFIX  print the words that begin with it, in byte order\n"
    "  --range A..B     print the words from A to B, and those that begin with B; either may be missing\n"
    "  --outline        print the numbered headings\n"
    "  --query QUERY    print the lines that answer it: words, AND, OR, NOT and parentheses, as in\n"
    "                   'free AND (software OR program) NOT warranty'\n"
    "  --save INDEX     write the counts to a file\n"
    "  --load INDEX     start from saved counts, which know of no lines; then files are optional\n"
    "  --help           print this\n"
    "\n"
    "Exit status: 0 done, 1 a file could not be read, written or trusted, 2 wrong usage.\n";

enum { EXIT_DONE = 0, EXIT_FAILED = 1, EXIT_USAGE = 2 };

/* What to print, and the option that asks for it. */
typedef enum task {
  TASK_REPORT,
  TASK_JSON,
  TASK_LINES,
  TASK_PREFIX,
  TASK_RANGE,
  TASK_OUTLINE,
  TASK_QUERY
} task;

static const char *const TASK_OPTIONS[] = {NULL,      "--json",    "--lines", "--prefix",
                                           "--range", "--outline", "--query"};

enum { TASKS = sizeof TASK_OPTIONS / sizeof TASK_OPTIONS[0] };

typedef struct mubdex_options {
  const char *load;
  const char *save;
  task task;
  const char *argument; /* of the task, when it takes one */
  char **files;
  int file_count;
} mubdex_options;

/* What is read, and what is known of it. */
typedef struct program {
  corpus texts;
  word_index index;
  query query;
} program;

static int fail(const char *name, const char *reason) {
  fprintf(stderr, "mubdex: %s: %s\n", name, reason);
  return EXIT_FAILED;
}

static const char *reason_of(mubdex_result result) {
  switch (result) {
    case RESULT_NO_MEMORY:
      return "out of memory";
    case RESULT_READ_ERROR:
      return strerror(errno);
    case RESULT_CUT_SHORT:
      return "the index is cut short";
    case RESULT_DAMAGED:
      return "this is no index, or a damaged one";
    default:
      return "done";
  }
}

/* Shown on a terminal only, and rewritten in place. */
static void show_progress(int64_t bytes_read) {
  const int64_t step = 16 << 20;
  if (bytes_read % step != 0) return;
  fprintf(stderr, "\rmubdex: %lld MiB read", (long long)(bytes_read >> 20));
}

static void clear_progress(void) { fputs("\r\033[K", stderr); }

static mubdex_result add_file(program *state, const char *name, FILE *file) {
  const int64_t first_line = corpus_line_count(&state->texts);
  const bool on_terminal = isatty(STDERR_FILENO) != 0;
  const mubdex_result result = corpus_add(&state->texts, name, file, on_terminal ? show_progress : NULL);
  const int reading_error = errno;
  if (on_terminal) clear_progress();
  errno = reading_error;
  if (result != RESULT_OK) return result;
  return index_add_lines(&state->index, &state->texts, first_line) ? RESULT_OK : RESULT_NO_MEMORY;
}

static int read_text(program *state, const char *name) {
  const bool from_stdin = strcmp(name, "-") == 0;
  FILE *file = from_stdin ? stdin : fopen(name, "rb");
  if (file == NULL) return fail(name, strerror(errno));
  const mubdex_result result = add_file(state, name, file);
  const int status = result == RESULT_OK ? EXIT_DONE : fail(name, reason_of(result));
  if (!from_stdin) fclose(file);
  return status;
}

static int load_index(word_index *index, const char *name) {
  FILE *file = fopen(name, "rb");
  if (file == NULL) return fail(name, strerror(errno));
  mub_stream bytes;
  mub_stream_init(&bytes);
  mubdex_result result = read_file(&bytes, file, NULL);
  if (result == RESULT_OK) result = index_load(index, &bytes);
  const int status = result == RESULT_OK ? EXIT_DONE : fail(name, reason_of(result));
  mub_stream_term(&bytes);
  fclose(file);
  return status;
}

static int write_bytes(const char *name, const mub_stream *bytes) {
  FILE *file = fopen(name, "wb");
  if (file == NULL) return fail(name, strerror(errno));
  const size_t length = (size_t)bytes->length;
  const bool written = fwrite(bytes->data, 1, length, file) == length;
  /* Buffered bytes may meet the full disk only now. */
  if (fclose(file) != 0 || !written) return fail(name, strerror(errno));
  return EXIT_DONE;
}

static int save_index(const program *state, const char *name) {
  mub_stream bytes;
  if (corpus_has_file(&state->texts, name)) return fail(name, "this is one of the texts");
  mub_stream_init(&bytes);
  const bool saved = index_save(&state->index, &bytes);
  const int status = saved ? write_bytes(name, &bytes) : fail(name, reason_of(RESULT_NO_MEMORY));
  mub_stream_term(&bytes);
  return status;
}

static double seconds_since(const struct timespec *start) {
  struct timespec now;
  clock_gettime(CLOCK_MONOTONIC, &now);
  return (double)(now.tv_sec - start->tv_sec) + (double)(now.tv_nsec - start->tv_nsec) * 1e-9;
}

static int print(const mub_string *out) {
  const size_t length = (size_t)out->length;
  const bool printed = length == 0 || fwrite(out->data, 1, length, stdout) == length;
  return printed && fflush(stdout) == 0 ? EXIT_DONE : fail("standard output", strerror(errno));
}

static bool answer_range(const program *state, mub_char first, mub_char last, mub_string *out) {
  vocabulary words;
  const bool done = vocabulary_init(&words) && vocabulary_fill(&words, &state->index) &&
                    answer_words(&words, &first, &last, out);
  vocabulary_term(&words);
  return done;
}

static bool answer_headings(const program *state, mub_string *out) {
  outline headings;
  const bool done = outline_init(&headings) && outline_fill(&headings, &state->texts) &&
                    answer_outline(&headings, &state->texts, out);
  outline_term(&headings);
  return done;
}

static bool answer_query(program *state, mub_string *out) {
  mub_bits lines;
  mub_bits_init(&lines);
  const bool done = query_answer(&state->query, &state->index, corpus_line_count(&state->texts), &lines) &&
                    answer_lines(&lines, &state->texts, out);
  mub_bits_term(&lines);
  return done;
}

static mub_char view_of(const char *text, int64_t length) {
  return (mub_char){(char *)(uintptr_t)text, length};
}

static bool answer(program *state, const mubdex_options *options, double seconds, mub_string *out) {
  const char *source = options->file_count > 0 ? options->files[0] : options->load;
  const char *argument = options->argument;
  const int64_t length = argument == NULL ? 0 : (int64_t)strlen(argument);
  const int64_t dots = options->task == TASK_RANGE ? mub_str_str(argument, "..") : 0;
  switch (options->task) {
    case TASK_JSON:
      return report_json(&state->index, source, seconds, out);
    case TASK_LINES:
      return answer_word(&state->index, &state->texts, argument, out);
    case TASK_PREFIX:
      return answer_range(state, view_of(argument, length), view_of(argument, length), out);
    case TASK_RANGE:
      return answer_range(state, view_of(argument, dots), view_of(argument + dots + 2, length - dots - 2),
                          out);
    case TASK_OUTLINE:
      return answer_headings(state, out);
    case TASK_QUERY:
      return answer_query(state, out);
    default:
      return report_text(&state->index, source, seconds, out);
  }
}

static int print_answer(program *state, const mubdex_options *options, double seconds) {
  mub_string out;
  mub_string_init(&out);
  const bool made = answer(state, options, seconds, &out);
  const int status = made ? print(&out) : fail("report", reason_of(RESULT_NO_MEMORY));
  mub_string_term(&out);
  return status;
}

static int run(program *state, const mubdex_options *options) {
  struct timespec start;
  clock_gettime(CLOCK_MONOTONIC, &start);
  int status = options->load != NULL ? load_index(&state->index, options->load) : EXIT_DONE;
  for (int i = 0; i < options->file_count && status == EXIT_DONE; i++) {
    status = read_text(state, options->files[i]);
  }
  if (status == EXIT_DONE) status = print_answer(state, options, seconds_since(&start));
  if (status == EXIT_DONE && options->save != NULL) status = save_index(state, options->save);
  return status;
}

static int usage_error(const char *problem, const char *argument) {
  fprintf(stderr, "mubdex: %s %s\n%s", problem, argument, USAGE);
  return EXIT_USAGE;
}

/* Where an option's argument is stored; NULL when it takes none. */
static const char **argument_of(const char *option, mubdex_options *options) {
  if (strcmp(option, "--save") == 0) return &options->save;
  if (strcmp(option, "--load") == 0) return &options->load;
  const bool takes_none = strcmp(option, "--json") == 0 || strcmp(option, "--outline") == 0;
  return options->task != TASK_REPORT && !takes_none ? &options->argument : NULL;
}

static task task_of(const char *option) {
  for (int i = 1; i < TASKS; i++) {
    if (strcmp(option, TASK_OPTIONS[i]) == 0) return (task)i;
  }
  return TASK_REPORT;
}

/* Takes the option at argv[i] in, and its argument; gives the index of the last, -1 for wrong usage. */
static int parse_option(int argc, char **argv, int i, mubdex_options *options) {
  const char *option = argv[i];
  const task wanted = task_of(option);
  const bool is_file = strcmp(option, "--save") == 0 || strcmp(option, "--load") == 0;
  if (wanted == TASK_REPORT && !is_file) return -usage_error("unknown option", option);
  if (wanted != TASK_REPORT && options->task != TASK_REPORT) {
    return -usage_error("only one of these at a time:", option);
  }
  if (wanted != TASK_REPORT) options->task = wanted;
  const char **argument = argument_of(option, options);
  if (argument == NULL) return i;
  if (i + 1 == argc) return -usage_error("something is missing after", option);
  *argument = argv[i + 1];
  return i + 1;
}

/* Sorts the arguments into options and files, the files moved to the front of argv. Returns EXIT_DONE, EXIT_USAGE,
 * or -1 when help was printed. */
static int parse(int argc, char **argv, mubdex_options *options) {
  bool only_files = false;
  options->files = argv;
  for (int i = 1; i < argc; i++) {
    if (only_files || argv[i][0] != '-' || argv[i][1] == '\0') {
      options->files[options->file_count++] = argv[i];
    } else if (strcmp(argv[i], "--") == 0) {
      only_files = true;
    } else if (strcmp(argv[i], "--help") == 0) {
      fputs(USAGE, stdout);
      return -1;
    } else if ((i = parse_option(argc, argv, i, options)) < 0) {
      return EXIT_USAGE;
    }
  }
  return EXIT_DONE;
}

/* Looks at the task's argument before any file is read. */
static int check_argument(program *state, const mubdex_options *options) {
  const mub_char argument = view_of(options->argument, 0);
  if (options->task == TASK_LINES) {
    const mub_char word = view_of(argument.data, (int64_t)strlen(argument.data));
    if (word.length == 0 || word_at_start(&word) < word.length)
      return usage_error("this is no word:", word.data);
  }
  if (options->task == TASK_RANGE && mub_str_str(argument.data, "..") < 0) {
    return usage_error("this is no range A..B:", argument.data);
  }
  if (options->task != TASK_QUERY || query_parse(&state->query, argument.data)) return EXIT_DONE;
  if (state->query.expected == NULL) return fail("query", reason_of(RESULT_NO_MEMORY));
  fprintf(stderr, "mubdex: %s\n%*s^ column %d: expected %s\n", argument.data, (int)state->query.fault + 7, "",
          (int)state->query.fault, state->query.expected);
  return EXIT_USAGE;
}

static int start(program *state, const mubdex_options *options) {
  const int checked = check_argument(state, options);
  return checked == EXIT_DONE ? run(state, options) : checked;
}

int main(int argc, char **argv) {
  char *default_files[] = {default_text};
  mubdex_options options = {NULL, NULL, TASK_REPORT, NULL, NULL, 0};
  const int parsed = parse(argc, argv, &options);
  if (parsed != EXIT_DONE) return parsed < 0 ? EXIT_DONE : parsed;
  if (options.file_count == 0 && options.load == NULL) {
    options.files = default_files;
    options.file_count = 1;
  }
  program state;
  const bool has_texts = corpus_init(&state.texts);
  const bool has_index = index_init(&state.index);
  const bool has_query = query_init(&state.query);
  const int status = has_texts && has_index && has_query ? start(&state, &options)
                                                         : fail("index", reason_of(RESULT_NO_MEMORY));
  query_term(&state.query);
  index_term(&state.index);
  corpus_term(&state.texts);
  return status;
}
