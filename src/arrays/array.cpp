#include "arrays/slot_table.h"
