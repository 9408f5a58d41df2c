# Installs the build tree into an empty directory and moves it, builds a project that only knows find_package(ling),
# and runs both that project's program and the installed command: nothing may depend on where it was built.
file(REMOVE_RECURSE ${WORK})

function(run)
  execute_process(COMMAND ${ARGN} COMMAND_ECHO STDOUT COMMAND_ERROR_IS_FATAL ANY)
endfunction()

run(${CMAKE_COMMAND} --install ${BUILD} --prefix ${WORK}/staged)
file(RENAME ${WORK}/staged ${WORK}/installed)

set(flags "")
if(SANITIZE)
  set(flags -DCMAKE_CXX_FLAGS=-fsanitize=${SANITIZE})
endif()
run(${CMAKE_COMMAND} -G Ninja -S ${CMAKE_CURRENT_LIST_DIR} -B ${WORK}/consumer -DCMAKE_PREFIX_PATH=${WORK}/installed
  -DCMAKE_CXX_COMPILER=${COMPILER} ${flags})
run(${CMAKE_COMMAND} --build ${WORK}/consumer)
run(${WORK}/consumer/consumer)

if(EXISTS ${WORK}/installed/bin/ling)
  run(${WORK}/installed/bin/ling --version)
endif()
file(GLOB_RECURSE module ${WORK}/installed/*/corvantis_python.so)
if(EXISTS ${WORK}/installed/bin/ling AND module)
  run(${WORK}/installed/bin/ling eval "40 + 2")
endif()
