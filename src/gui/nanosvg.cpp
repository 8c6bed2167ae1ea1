// The one place where nanosvg is compiled. It is not our code: no warnings from it.
#pragma GCC diagnostic ignored "-Wconversion"
#pragma GCC diagnostic ignored "-Wshadow"
#define NANOSVG_IMPLEMENTATION
#define NANOSVGRAST_IMPLEMENTATION
#include "gui/nanosvg_import.h"
