# Makes the Debian packages, unpacks them side by side, and uses them as others would.
function(run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE result)
  if(NOT result EQUAL 0)
    list(JOIN ARGN " " line)
    message(FATAL_ERROR "Failed (${result}): ${line}")
  endif()
endfunction()

file(REMOVE_RECURSE "${WORK_DIR}")
file(MAKE_DIRECTORY "${WORK_DIR}/root")
run("${CPACK}" --config "${BUILD_DIR}/CPackConfig.cmake" -C "${CONFIG}" -B "${WORK_DIR}"
  -D CPACK_DEBIAN_COMPRESSION_TYPE=gzip)
file(GLOB packages "${WORK_DIR}/libqzfoundation[0-9]*.deb")
file(GLOB development "${WORK_DIR}/libqzfoundation-dev*.deb")
list(APPEND packages ${development})
list(LENGTH packages count)
if(NOT count EQUAL 2)
  message(FATAL_ERROR "Not two packages: ${packages}")
endif()

foreach(package IN LISTS packages)
  execute_process(COMMAND "${DPKG_DEB}" --field "${package}" Package Version Depends
    OUTPUT_VARIABLE fields COMMAND_ERROR_IS_FATAL ANY)
  message("${fields}")
  if(package MATCHES "libqzfoundation-dev_" AND
     NOT fields MATCHES "Depends: libqzfoundation[0-9]+ \\(= ${VERSION}\\)")
    message(FATAL_ERROR "The development package goes with any version of the libraries")
  endif()
  run("${DPKG_DEB}" --extract "${package}" "${WORK_DIR}/root")
  # The run-time package comes first, and holds nothing for compiling.
  if(NOT package MATCHES "-dev_" AND EXISTS "${WORK_DIR}/root/usr/include")
    message(FATAL_ERROR "There are headers in the run-time package")
  endif()
endforeach()

run("${CMAKE_COMMAND}" -S "${CONSUMER_DIR}" -B "${WORK_DIR}/build" -G "${GENERATOR}"
  "-DCMAKE_BUILD_TYPE=${CONFIG}" "-DCMAKE_CXX_COMPILER=${COMPILER}"
  "-DCMAKE_PREFIX_PATH=${WORK_DIR}/root/usr" "-DQZ_EXPECTED_VERSION=${VERSION}")
run("${CMAKE_COMMAND}" --build "${WORK_DIR}/build" --config "${CONFIG}")
run("${WORK_DIR}/build/consumer")
run("${WORK_DIR}/root/usr/bin/qzplist" --help)
