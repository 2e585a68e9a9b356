/* mubdex: an index of the words of a text, as a model of how to use the library. */
#define _POSIX_C_SOURCE 200809L

#include <errno.h>
#include <stdbool.h>
#include <stdio.h>
#include <string.h>
#include <time.h>
#include <unistd.h>

#include "report.h"
#include "word_index.h"

/* Part of every Debian system. */
static char default_text[] = "/usr/share/common-licenses/GPL-3";

static const char USAGE[] =
    "usage: mubdex [--json] [--load INDEX] [--save INDEX] [FILE...]\n"
    "\n"
    "Counts the words of the files, letters folded to lower case, and prints the most frequent ones.\n"
    "A FILE of - is standard input; without a file the text is /usr/share/common-licenses/GPL-3.\n"
    "\n"
    "  --save INDEX   write the index to a file\n"
    "  --load INDEX   start from a saved index; then files are optional\n"
    "  --json         print one JSON object\n"
    "  --help         print this\n"
    "\n"
    "Exit status: 0 done, 1 a file could not be read, written or trusted, 2 wrong usage.\n";

enum { EXIT_DONE = 0, EXIT_FAILED = 1, EXIT_USAGE = 2 };

typedef struct mubdex_options {
  const char *load;
  const char *save;
  bool json;
  char **files;
  int file_count;
} mubdex_options;

static int fail(const char *name, const char *reason) {
  fprintf(stderr, "mubdex: %s: %s\n", name, reason);
  return EXIT_FAILED;
}

static const char *reason_of(index_result result) {
  switch (result) {
    case INDEX_NO_MEMORY:
      return "out of memory";
    case INDEX_READ_ERROR:
      return strerror(errno);
    case INDEX_CUT_SHORT:
      return "the index is cut short";
    case INDEX_DAMAGED:
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

static int read_text(word_index *index, const char *name) {
  const bool from_stdin = strcmp(name, "-") == 0;
  FILE *file = from_stdin ? stdin : fopen(name, "rb");
  if (file == NULL) return fail(name, strerror(errno));
  const bool on_terminal = isatty(STDERR_FILENO) != 0;
  const index_result result = index_read_text(index, file, on_terminal ? show_progress : NULL);
  const int reading_error = errno;
  if (on_terminal) clear_progress();
  if (!from_stdin) fclose(file);
  errno = reading_error;
  return result == INDEX_OK ? EXIT_DONE : fail(name, reason_of(result));
}

static index_result read_bytes(FILE *file, mub_stream *bytes) {
  const int64_t block = 1 << 16;
  for (;;) {
    const int64_t length = bytes->length;
    if (!mub_stream_expand(bytes, length + block)) return INDEX_NO_MEMORY;
    const size_t got = fread(bytes->data + length, 1, (size_t)block, file);
    mub_stream_shrink(bytes, length + (int64_t)got);
    if (ferror(file)) return INDEX_READ_ERROR;
    if (feof(file)) return INDEX_OK;
  }
}

static int load_index(word_index *index, const char *name) {
  FILE *file = fopen(name, "rb");
  if (file == NULL) return fail(name, strerror(errno));
  mub_stream bytes;
  mub_stream_init(&bytes);
  index_result result = read_bytes(file, &bytes);
  if (result == INDEX_OK) result = index_load(index, &bytes);
  const int status = result == INDEX_OK ? EXIT_DONE : fail(name, reason_of(result));
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

static int save_index(const word_index *index, const char *name) {
  mub_stream bytes;
  mub_stream_init(&bytes);
  const bool saved = index_save(index, &bytes);
  const int status = saved ? write_bytes(name, &bytes) : fail(name, reason_of(INDEX_NO_MEMORY));
  mub_stream_term(&bytes);
  return status;
}

static double seconds_since(const struct timespec *start) {
  struct timespec now;
  clock_gettime(CLOCK_MONOTONIC, &now);
  return (double)(now.tv_sec - start->tv_sec) + (double)(now.tv_nsec - start->tv_nsec) * 1e-9;
}

static int print_report(const word_index *index, const mubdex_options *options, double seconds) {
  const char *source = options->file_count > 0 ? options->files[0] : options->load;
  mub_string out;
  mub_string_init(&out);
  const bool made = (options->json ? report_json : report_text)(index, source, seconds, &out);
  int status = made ? EXIT_DONE : fail("report", reason_of(INDEX_NO_MEMORY));
  if (made &&
      (fwrite(out.data, 1, (size_t)out.length, stdout) != (size_t)out.length || fflush(stdout) != 0)) {
    status = fail("standard output", strerror(errno));
  }
  mub_string_term(&out);
  return status;
}

static int run(word_index *index, const mubdex_options *options) {
  struct timespec start;
  clock_gettime(CLOCK_MONOTONIC, &start);
  int status = options->load != NULL ? load_index(index, options->load) : EXIT_DONE;
  for (int i = 0; i < options->file_count && status == EXIT_DONE; i++) {
    status = read_text(index, options->files[i]);
  }
  if (status == EXIT_DONE) status = print_report(index, options, seconds_since(&start));
  if (status == EXIT_DONE && options->save != NULL) status = save_index(index, options->save);
  return status;
}

static int usage_error(const char *problem, const char *argument) {
  fprintf(stderr, "mubdex: %s %s\n%s", problem, argument, USAGE);
  return EXIT_USAGE;
}

/* Sorts the arguments into options and files, the files moved to the front of argv. Returns EXIT_DONE, EXIT_USAGE,
 * or -1 when help was printed. */
static int parse(int argc, char **argv, mubdex_options *options) {
  bool only_files = false;
  options->files = argv;
  for (int i = 1; i < argc; i++) {
    const char *argument = argv[i];
    const bool is_save = strcmp(argument, "--save") == 0;
    if (only_files || argument[0] != '-' || argument[1] == '\0') {
      options->files[options->file_count++] = argv[i];
    } else if (strcmp(argument, "--") == 0) {
      only_files = true;
    } else if (strcmp(argument, "--json") == 0) {
      options->json = true;
    } else if (strcmp(argument, "--help") == 0) {
      fputs(USAGE, stdout);
      return -1;
    } else if (is_save || strcmp(argument, "--load") == 0) {
      if (++i == argc) return usage_error("a file name is missing after", argument);
      *(is_save ? &options->save : &options->load) = argv[i];
    } else {
      return usage_error("unknown option", argument);
    }
  }
  return EXIT_DONE;
}

int main(int argc, char **argv) {
  char *default_files[] = {default_text};
  mubdex_options options = {NULL, NULL, false, NULL, 0};
  const int parsed = parse(argc, argv, &options);
  if (parsed != EXIT_DONE) return parsed < 0 ? EXIT_DONE : parsed;
  if (options.file_count == 0 && options.load == NULL) {
    options.files = default_files;
    options.file_count = 1;
  }
  word_index index;
  const int status = index_init(&index) ? run(&index, &options) : fail("index", reason_of(INDEX_NO_MEMORY));
  index_term(&index);
  return status;
}
