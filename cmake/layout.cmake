# Where files stand. The build tree has the layout of an installation, so the command finds the module in both by one
# relative path, and run paths are relative to the file that carries them:
#
#   bin/ling                          the command
#   lib/libling.so                    the runtime
#   lib/corvantis/corvantis_python.so the language module
#   lib/corvantis/libpython3.so       names the interpreter library (see python.cmake)
set(CORVANTIS_MODULE_DIR ${CMAKE_INSTALL_LIBDIR}/corvantis)
if(WIN32)
  # Windows looks for libraries beside the program that needs them.
  set(CMAKE_INSTALL_LIBDIR ${CMAKE_INSTALL_BINDIR})
  set(CORVANTIS_MODULE_DIR ${CMAKE_INSTALL_BINDIR})
endif()

set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/${CMAKE_INSTALL_BINDIR})
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/${CMAKE_INSTALL_LIBDIR})

if(NOT WIN32)
  # New dynamic tags: LD_LIBRARY_PATH goes before the recorded path, which is how another interpreter is chosen.
  add_link_options(-Wl,--enable-new-dtags)
  set(CMAKE_BUILD_RPATH_USE_ORIGIN ON)
endif()
file(RELATIVE_PATH CORVANTIS_LIB_FROM_BIN ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR})
file(RELATIVE_PATH CORVANTIS_MODULE_FROM_BIN ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_PREFIX}/${CORVANTIS_MODULE_DIR})
set(CMAKE_INSTALL_RPATH "\$ORIGIN/${CORVANTIS_LIB_FROM_BIN}")
