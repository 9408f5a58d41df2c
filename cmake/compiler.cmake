# Language level, warnings and sanitizers, the same for every target of the project.
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

if(NOT CMAKE_BUILD_TYPE)
  set(CMAKE_BUILD_TYPE RelWithDebInfo)
endif()
# Line tables are enough for readable stack traces and cost far less to build and link than full debug information.
set(CMAKE_CXX_FLAGS_RELWITHDEBINFO "-O2 -g1 -DNDEBUG")

add_compile_options(-Wall -Wextra -Wpedantic -Wshadow)
if(CMAKE_CXX_COMPILER_ID STREQUAL GNU)
  # GCC 12 takes an atomic reached through a handle that was just checked for a write behind a null pointer.
  add_compile_options(-Wno-stringop-overflow)
endif()
if(LING_WERROR)
  add_compile_options(-Werror)
endif()

if(LING_SANITIZE)
  # Undefined behaviour ends the program: a report that scrolls by in a passing test is a report nobody reads.
  add_compile_options(-fsanitize=${LING_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${LING_SANITIZE})
endif()
