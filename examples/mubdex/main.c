/* mubdex indexes the words of texts: the main example of the library. */
#define _POSIX_C_SOURCE 200809L

#include <errno.h>
#include <stdbool.h>
#include <stdio.h>
#include <string.h>
#include <time.h>
#include <unistd.h>

#include "answers.h"
#include "corpus.h"
#include "dot.h"
#include "options.h"
#include "query.h"
#include "report.h"
#include "word_index.h"

static char standard_input[] = "-";

/* The texts and their index. */
typedef struct program {
  bool keeps_text; /* whether the task prints lines of the texts */
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
    case RESULT_TRUNCATED:
      return "the index is truncated";
    case RESULT_DAMAGED:
      return "not an index, or damaged";
    default:
      return "done";
  }
}

/* Only on a terminal; the line is overwritten. */
static void show_progress(int64_t bytes_read) {
  const int64_t step = 16 << 20;
  if (bytes_read % step != 0) return;
  fprintf(stderr, "\rmubdex: %lld MiB read", (long long)(bytes_read >> 20));
}

static void clear_progress(void) { fputs("\r\033[K", stderr); }

static mubdex_result add_text(program *state, const char *name, reader *in) {
  mubdex_result result = corpus_add_file(&state->texts, name, in->file);
  if (result != RESULT_OK) return result;
  if (!state->keeps_text) return index_add_text(&state->index, in);
  const int64_t first_line = corpus_line_count(&state->texts);
  result = corpus_read(&state->texts, in);
  if (result != RESULT_OK) return result;
  return index_add_lines(&state->index, &state->texts, first_line) ? RESULT_OK : RESULT_NO_MEMORY;
}

static mubdex_result add_file(program *state, const char *name, FILE *file) {
  const bool on_terminal = isatty(STDERR_FILENO) != 0;
  reader in;
  reader_init(&in, file, on_terminal ? show_progress : NULL);
  const mubdex_result result = add_text(state, name, &in);
  const int reading_error = errno;
  reader_term(&in);
  if (on_terminal) clear_progress();
  errno = reading_error;
  return result == RESULT_KNOWN ? RESULT_OK : result;
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
  mubdex_result result = read_file(&bytes, file);
  if (result == RESULT_OK) result = index_load(index, &bytes);
  const int status = result == RESULT_OK ? EXIT_DONE : fail(name, reason_of(result));
  mub_stream_term(&bytes);
  fclose(file);
  return status;
}

static int write_bytes(const program *state, const char *name, const void *bytes, int64_t count) {
  if (corpus_has_file(&state->texts, name)) return fail(name, "would overwrite one of the texts");
  FILE *file = fopen(name, "wb");
  if (file == NULL) return fail(name, strerror(errno));
  const bool written = fwrite(bytes, 1, (size_t)count, file) == (size_t)count;
  /* Writing buffered bytes may fail only here. */
  if (fclose(file) != 0 || !written) return fail(name, strerror(errno));
  return EXIT_DONE;
}

static int save_index(const program *state, const char *name) {
  mub_stream bytes;
  mub_stream_init(&bytes);
  const int status = index_save(&state->index, &bytes) ? write_bytes(state, name, bytes.data, bytes.length)
                                                       : fail(name, reason_of(RESULT_NO_MEMORY));
  mub_stream_term(&bytes);
  return status;
}

static int save_utf16(const program *state, const char *name) {
  vocabulary words;
  mub_wchar text;
  mub_wchar_init(&text);
  const bool made =
      vocabulary_init(&words) && vocabulary_fill(&words, &state->index) && vocabulary_utf16(&words, &text);
  const int status = made ? write_bytes(state, name, text.data, text.length * (int64_t)sizeof *text.data)
                          : fail(name, reason_of(RESULT_NO_MEMORY));
  mub_wchar_term(&text);
  vocabulary_term(&words);
  return status;
}

static double seconds_since(const struct timespec *start) {
  struct timespec now;
  clock_gettime(CLOCK_MONOTONIC, &now);
  return (double)(now.tv_sec - start->tv_sec) + (double)(now.tv_nsec - start->tv_nsec) * 1e-9;
}

static int print(const char *text, int64_t length) {
  const bool printed = length == 0 || fwrite(text, 1, (size_t)length, stdout) == (size_t)length;
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

static mub_char view_of(const char *text) {
  return (mub_char){(char *)(uintptr_t)text, (int64_t)strlen(text)};
}

/* Splits "A..B"; false if it is not a range. */
static bool parse_range(const char *text, mub_char *first, mub_char *last) {
  mub_stringx range;
  const mub_char whole = view_of(text);
  mub_stringx_init(&range);
  mub_stringx_copy_char(&range, &whole);
  const int64_t dots = mub_stringx_find(&range, "..", 2);
  if (dots < 0) return false;
  mub_stringx_left_char(&range, dots, first);
  mub_stringx_mid_char(&range, dots + 2, whole.length - dots - 2, last);
  return true;
}

static bool answer(program *state, const mubdex_options *options, double seconds, mub_string *out) {
  const char *source = options->file_count > 0 ? options->files[0] : options->load;
  const report_options report = {source, options->argument, seconds};
  mub_char first, last;
  switch (options->task) {
    case TASK_JSON:
      return report_json(&state->index, &report, out);
    case TASK_TEMPLATE:
      return report_template(&state->index, &report, out);
    case TASK_LINES:
      return answer_word(&state->index, &state->texts, options->argument, out);
    case TASK_PREFIX:
      first = view_of(options->argument);
      return answer_range(state, first, first, out);
    case TASK_RANGE:
      return parse_range(options->argument, &first, &last) && answer_range(state, first, last, out);
    case TASK_OUTLINE:
      return answer_headings(state, out);
    case TASK_QUERY:
      return answer_query(state, out);
    case TASK_DOT:
      return dot_picture(options->argument)(&state->index, out);
    default:
      return report_text(&state->index, &report, out);
  }
}

static int print_answer(program *state, const mubdex_options *options, double seconds) {
  mub_string out;
  mub_string_init(&out);
  const bool made = answer(state, options, seconds, &out);
  const int status = made ? print(out.data, out.length) : fail("report", reason_of(RESULT_NO_MEMORY));
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
  if (status == EXIT_DONE && options->utf16 != NULL) status = save_utf16(state, options->utf16);
  return status;
}

/* Checks the argument of the task before any file is read. */
static int check_argument(program *state, const mubdex_options *options) {
  const char *argument = options->argument;
  mub_char first, last;
  if (options->task == TASK_LINES) {
    const mub_char word = view_of(argument);
    if (word.length == 0 || word_at_start(&word) < word.length) return usage_error("not a word:", argument);
  }
  if (options->task == TASK_RANGE && !parse_range(argument, &first, &last)) {
    return usage_error("not a range A..B:", argument);
  }
  if (options->task == TASK_DOT && dot_picture(argument) == NULL) {
    return usage_error("unknown picture:", argument);
  }
  if (options->task != TASK_QUERY || query_parse(&state->query, argument)) return EXIT_DONE;
  if (state->query.expected == NULL) return fail("query", reason_of(RESULT_NO_MEMORY));
  fprintf(stderr, "mubdex: %s\n%*s^ column %d: expected %s\n", argument, (int)state->query.fault + 7, "",
          (int)state->query.fault, state->query.expected);
  return EXIT_USAGE;
}

static int start(program *state, const mubdex_options *options) {
  const int checked = check_argument(state, options);
  return checked == EXIT_DONE ? run(state, options) : checked;
}

/* Whether the task looks up the lines of words. */
static bool needs_lines(const mubdex_options *options) {
  return options->task == TASK_LINES || options->task == TASK_QUERY;
}

int main(int argc, char **argv) {
  char *default_files[] = {standard_input};
  mubdex_options options;
  const int parsed = parse_options(argc, argv, &options);
  if (parsed != EXIT_DONE) return parsed;
  if (options.task == TASK_HELP) return print(HELP, (int64_t)strlen(HELP));
  if (options.task == TASK_VERSION) return print(VERSION, (int64_t)strlen(VERSION));
  if (options.file_count == 0 && options.load == NULL) {
    options.files = default_files;
    options.file_count = 1;
  }
  program state;
  state.keeps_text = needs_lines(&options) || options.task == TASK_OUTLINE;
  const bool has_texts = corpus_init(&state.texts);
  const bool has_index = index_init(&state.index, needs_lines(&options));
  const bool has_query = query_init(&state.query);
  const int status = has_texts && has_index && has_query ? start(&state, &options)
                                                         : fail("index", reason_of(RESULT_NO_MEMORY));
  query_term(&state.query);
  index_term(&state.index);
  corpus_term(&state.texts);
  return status;
}
