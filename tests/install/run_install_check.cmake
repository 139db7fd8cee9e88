# Installs the built library into a scratch prefix, then configures, builds and runs the
# consumer project against it. Inputs: BUILD_DIR, SOURCE_DIR, WORK_DIR, CONFIG.
file(REMOVE_RECURSE ${WORK_DIR})
set(prefix ${WORK_DIR}/prefix)

function(run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE rc)
  if(NOT rc EQUAL 0)
    list(JOIN ARGN " " text)
    message(FATAL_ERROR "failed (${rc}): ${text}")
  endif()
endfunction()

run(${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${prefix} --config ${CONFIG})
run(${CMAKE_COMMAND} -S ${SOURCE_DIR} -B ${WORK_DIR}/build -DCMAKE_PREFIX_PATH=${prefix}
    -DCMAKE_BUILD_TYPE=${CONFIG})
run(${CMAKE_COMMAND} --build ${WORK_DIR}/build)
run(${WORK_DIR}/build/gkgeom_consumer)
run(${WORK_DIR}/build/gkgeom_consumer_pkgconfig)
