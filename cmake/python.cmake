# The interpreter to build against, and `corvantis::python_abi`, through which every room sees it.
#
# The system's interpreter is taken unless Python3_ROOT_DIR names another: a python3 that merely comes first on PATH (a
# version manager, a virtual environment) usually has no development files and must not decide what is linked.
if(NOT Python3_ROOT_DIR AND NOT WIN32)
  set(Python3_ROOT_DIR /usr)
endif()
set(Python3_FIND_STRATEGY LOCATION)
set(Python3_FIND_UNVERSIONED_NAMES FIRST)
set(Python3_FIND_VIRTUALENV STANDARD)
find_package(Python3 3.9 REQUIRED COMPONENTS Interpreter Development.Embed)
message(STATUS "Python interpreter: ${Python3_EXECUTABLE} (${Python3_VERSION})")
message(STATUS "Python library:     ${Python3_LIBRARIES}")
message(STATUS "Python headers:     ${Python3_INCLUDE_DIRS}")

add_library(corvantis_python_abi INTERFACE)
add_library(corvantis::python_abi ALIAS corvantis_python_abi)
target_compile_definitions(corvantis_python_abi INTERFACE Py_LIMITED_API=0x03090000)
target_include_directories(corvantis_python_abi SYSTEM INTERFACE ${Python3_INCLUDE_DIRS})

if(NOT WIN32)
  # libpython3.so holds nothing but the name of the real interpreter library. What is linked against it records only
  # "libpython3.so", so a search path with another Python's libpython3.so selects that Python for the same binary.
  # The linker therefore never sees the definitions: undefined symbols are allowed at link time and, to notice a
  # missing one at once instead of at its first call, all are bound when the file is loaded.
  add_library(corvantis_python_stub SHARED ${PROJECT_SOURCE_DIR}/cmake/empty.cpp)
  set_target_properties(corvantis_python_stub PROPERTIES OUTPUT_NAME python3
    LIBRARY_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/${CORVANTIS_MODULE_DIR}
    INSTALL_RPATH "" INSTALL_RPATH_USE_LINK_PATH ON)
  target_link_options(corvantis_python_stub PRIVATE -Wl,--no-as-needed)
  target_link_libraries(corvantis_python_stub PRIVATE Python3::Python)
  target_link_options(corvantis_python_abi INTERFACE -Wl,--no-as-needed -Wl,--allow-shlib-undefined -Wl,-z,now)
  target_link_libraries(corvantis_python_abi INTERFACE corvantis_python_stub)
endif()
