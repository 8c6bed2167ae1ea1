// nanosvg as this system sees it: the declarations of the parser and of the rasterizer.
#pragma once

// The copy of nanosvg in Debian's SDL_image marks its comparison functions with SDL's calling convention.
#ifndef SDLCALL
#define SDLCALL
#endif

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <nanosvg.h>
#include <nanosvgrast.h>
