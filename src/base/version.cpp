// The version of the library, for programs that are compiled with other headers.
#include "mub_base.h"

extern "C" {

const char *mub_version() { return MUB_VERSION; }

int mub_version_number() { return MUB_VERSION_NUMBER; }
}
