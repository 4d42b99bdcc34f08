// The Windows API; the compiler's own headers have switched its min and max macros off.
#pragma once

#define WIN32_LEAN_AND_MEAN
#include <windows.h>
