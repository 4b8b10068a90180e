# Installs the plug-in below WORK, builds the host of this folder against what was installed, and
# runs it. Arguments: BUILD, SOURCE, WORK, GENERATOR, COMPILER, FLAGS.
function(step)
    execute_process(COMMAND ${ARGN} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

file(REMOVE_RECURSE "${WORK}")
step("${CMAKE_COMMAND}" --install "${BUILD}" --prefix "${WORK}/prefix" --component plugin)
step("${CMAKE_COMMAND}" -S "${SOURCE}" -B "${WORK}/host" -G "${GENERATOR}"
    "-DCMAKE_PREFIX_PATH=${WORK}/prefix" "-DCMAKE_CXX_COMPILER=${COMPILER}"
    "-DCMAKE_CXX_FLAGS=${FLAGS}")
step("${CMAKE_COMMAND}" --build "${WORK}/host")
step("${WORK}/host/outside-host")
