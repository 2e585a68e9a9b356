/* The command line of mubdex. */
#ifndef MUBDEX_OPTIONS_H
#define MUBDEX_OPTIONS_H

enum { EXIT_DONE = 0, EXIT_FAILED = 1, EXIT_USAGE = 2 };

/* What to print. */
typedef enum task {
  TASK_REPORT,
  TASK_JSON,
  TASK_TEMPLATE,
  TASK_LINES,
  TASK_PREFIX,
  TASK_RANGE,
  TASK_OUTLINE,
  TASK_QUERY,
  TASK_DOT,
  TASK_HELP,
  TASK_VERSION
} task;

typedef struct mubdex_options {
  task task;
  const char *argument; /* of the task, if it takes one */
  const char *load;     /* file names; NULL if not given */
  const char *save;
  const char *utf16;
  char **files;
  int file_count;
} mubdex_options;

/* Parses the options; argv may be reordered. Returns EXIT_DONE, or EXIT_USAGE after an error message. */
int parse_options(int argc, char **argv, mubdex_options *options);

/* The texts of --help and --version. */
extern const char HELP[];
extern const char VERSION[];

/* Prints an error message about an argument, and the usage in one line. Returns EXIT_USAGE. */
int usage_error(const char *problem, const char *argument);

#endif
