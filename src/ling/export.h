// LING_API: marks what libling exports; everything else in the library is hidden.
// LING_LIFETIMEBOUND: marks an operation whose result is good only as long as the object it is called on; compilers
// that know the mark warn when the result outlives a temporary.
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

#define LING_LIFETIMEBOUND
#if defined(__has_cpp_attribute)
#if __has_cpp_attribute(clang::lifetimebound)
#undef LING_LIFETIMEBOUND
#define LING_LIFETIMEBOUND [[clang::lifetimebound]]
#endif
#endif
