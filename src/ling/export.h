// LING_API: marks what libling exports; everything else in the library is hidden.
#pragma once

#if defined(_WIN32)
#if defined(LING_BUILD)
#define LING_API __declspec(dllexport)
#else
#define LING_API __declspec(dllimport)
#endif
#else
#define LING_API __attribute__((visibility("default")))
#endif
