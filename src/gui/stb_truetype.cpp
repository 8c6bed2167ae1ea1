// The one place where stb_truetype is compiled. It is not our code: no warnings from it.
#pragma GCC diagnostic ignored "-Wconversion"
#pragma GCC diagnostic ignored "-Wshadow"
#define STB_TRUETYPE_IMPLEMENTATION
#include <stb/stb_truetype.h>
