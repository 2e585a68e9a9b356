/* mubdex: an index of the words of a text, as a model of how to use the library. */
#define _POSIX_C_SOURCE 200809L

#include <errno.h>
#include <stdbool.h>
#include <stdio.h>
#include <string.h>
#include <time.h>
#include <unistd.h>

#include "corpus.h"
#include "report.h"
#include "word_index.h"

/* Part of every Debian system. */
static char default_text[] = "/usr/share/common-licenses/GPL-3";

static const char USAGE[] =
    "usage: mubdex [--json | --lines WORD] [--load INDEX] [--save INDEX] [FILE...]\n"
    "\n"
    "Counts the words of the files, letters folded to lower case, and prints the most frequent ones.\n"
    "A FILE of - is standard input; without a file the text is /usr/share/common-licenses/GPL-3. A file that "
    "is\n"
    "given twice, also by another name, is read once.\n"
    "\n"
    "  --lines WORD   print the lines of the files that hold the word, in any case of letters\n"
    "  --save INDEX   write the counts to a file\n"
    "  --load INDEX   start from saved counts; then files are optional\n"
    "  --json         print one JSON object\n"
    "  --help         print this\n"
    "\n"
    "Exit status: 0 done, 1 a file could not be read, written or trusted, 2 wrong usage.\n";

enum { EXIT_DONE = 0, EXIT_FAILED = 1, EXIT_USAGE = 2 };

/* What is read, and what is known of it. */
typedef struct program {
  corpus texts;
  word_index index;
} program;

typedef struct mubdex_options {
  const char *load;
  const char *save;
  const char *lines;
  bool json;
  char **files;
  int file_count;
} mubdex_options;

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

static mubdex_result read_bytes(FILE *file, mub_stream *bytes) {
  const int64_t block = 1 << 16;
  for (;;) {
    const int64_t length = bytes->length;
    if (!mub_stream_expand(bytes, length + block)) return RESULT_NO_MEMORY;
    const size_t got = fread(bytes->data + length, 1, (size_t)block, file);
    mub_stream_shrink(bytes, length + (int64_t)got);
    if (ferror(file)) return RESULT_READ_ERROR;
    if (feof(file)) return RESULT_OK;
  }
}

static int load_index(word_index *index, const char *name) {
  FILE *file = fopen(name, "rb");
  if (file == NULL) return fail(name, strerror(errno));
  mub_stream bytes;
  mub_stream_init(&bytes);
  mubdex_result result = read_bytes(file, &bytes);
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

static int print_answer(const program *state, const mubdex_options *options, double seconds) {
  const char *source = options->file_count > 0 ? options->files[0] : options->load;
  mub_string out;
  mub_string_init(&out);
  const bool made = options->lines != NULL ? report_lines(&state->index, &state->texts, options->lines, &out)
                    : options->json        ? report_json(&state->index, source, seconds, &out)
                                           : report_text(&state->index, source, seconds, &out);
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

/* The option's argument is stored here; NULL when it takes none or is unknown. */
static const char **argument_of(const char *option, mubdex_options *options) {
  if (strcmp(option, "--save") == 0) return &options->save;
  if (strcmp(option, "--load") == 0) return &options->load;
  if (strcmp(option, "--lines") == 0) return &options->lines;
  return NULL;
}

/* Sorts the arguments into options and files, the files moved to the front of argv. Returns EXIT_DONE, EXIT_USAGE,
 * or -1 when help was printed. */
static int parse(int argc, char **argv, mubdex_options *options) {
  bool only_files = false;
  options->files = argv;
  for (int i = 1; i < argc; i++) {
    const char *option = argv[i];
    const char **argument = argument_of(option, options);
    if (only_files || option[0] != '-' || option[1] == '\0') {
      options->files[options->file_count++] = argv[i];
    } else if (argument != NULL) {
      if (++i == argc) return usage_error("something is missing after", option);
      *argument = argv[i];
    } else if (strcmp(option, "--") == 0) {
      only_files = true;
    } else if (strcmp(option, "--json") == 0) {
      options->json = true;
    } else if (strcmp(option, "--help") == 0) {
      fputs(USAGE, stdout);
      return -1;
    } else {
      return usage_error("unknown option", option);
    }
  }
  if (options->lines == NULL) return EXIT_DONE;
  if (options->json) return usage_error("--json does not go with", "--lines");
  return index_is_word(options->lines) ? EXIT_DONE : usage_error("this is not one word:", options->lines);
}

int main(int argc, char **argv) {
  char *default_files[] = {default_text};
  mubdex_options options = {NULL, NULL, NULL, false, NULL, 0};
  const int parsed = parse(argc, argv, &options);
  if (parsed != EXIT_DONE) return parsed < 0 ? EXIT_DONE : parsed;
  if (options.file_count == 0 && options.load == NULL) {
    options.files = default_files;
    options.file_count = 1;
  }
  program state;
  const bool has_texts = corpus_init(&state.texts);
  const bool has_index = index_init(&state.index);
  const int status =
      has_texts && has_index ? run(&state, &options) : fail("index", reason_of(RESULT_NO_MEMORY));
  index_term(&state.index);
  corpus_term(&state.texts);
  return status;
}
