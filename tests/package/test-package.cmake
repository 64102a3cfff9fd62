# Installs the build into a prefix of its own and uses it from there as others would: through
# find_package, through pkg-config, and with the program that the README shows.

function(run)
  list(JOIN ARGN " " line)
  message("+ ${line}")
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE result)
  if(NOT result EQUAL 0)
    message(FATAL_ERROR "Failed (${result}): ${line}")
  endif()
endfunction()

set(prefix "${WORK_DIR}/prefix")
file(REMOVE_RECURSE "${WORK_DIR}")
file(MAKE_DIRECTORY "${WORK_DIR}")
run("${CMAKE_COMMAND}" --install "${BUILD_DIR}" --config "${CONFIG}" --prefix "${prefix}")

# An installed header that only the source tree can satisfy would go unnoticed if the prefix lay
# inside the include path; moving it also proves that nothing holds on to the original place.
file(RENAME "${prefix}" "${WORK_DIR}/moved")
set(prefix "${WORK_DIR}/moved")

# The shared library finds its resources from where it lies; an archive cannot.
if(NOT SHARED)
  set(ENV{QZ_BUNDLE_PATH} "${prefix}/${DATADIR}")
endif()

run("${CMAKE_COMMAND}" -S "${CONSUMER_DIR}" -B "${WORK_DIR}/build" -G "${GENERATOR}"
  "-DCMAKE_BUILD_TYPE=${CONFIG}"
  "-DCMAKE_CXX_COMPILER=${COMPILER}"
  "-DCMAKE_CXX_FLAGS=${FLAGS}"
  "-DCMAKE_PREFIX_PATH=${prefix}"
  "-DQZ_EXPECTED_VERSION=${VERSION}")
run("${CMAKE_COMMAND}" --build "${WORK_DIR}/build" --config "${CONFIG}")
run("${WORK_DIR}/build/platform-consumer")
run("${WORK_DIR}/build/consumer")

set(ENV{PKG_CONFIG_PATH} "${prefix}/${LIBDIR}/pkgconfig:$ENV{PKG_CONFIG_PATH}")
execute_process(COMMAND "${PKG_CONFIG}" --cflags --libs qzfoundation
  OUTPUT_VARIABLE pc_flags OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
separate_arguments(pc_flags UNIX_COMMAND "${pc_flags}")
separate_arguments(flags UNIX_COMMAND "${FLAGS}")
run("${COMPILER}" -std=c++20 ${flags} "${CONSUMER_DIR}/main.cpp" -o "${WORK_DIR}/pc-consumer"
  ${pc_flags} "-Wl,-rpath,${prefix}/${LIBDIR}")
run("${WORK_DIR}/pc-consumer")

# The program in the README, as a reader would copy it, prints what the README says it prints.
function(fenced_block text fence out)
  string(FIND "${text}" "```${fence}\n" start)
  if(start EQUAL -1)
    message(FATAL_ERROR "The README has no ${fence} block.")
  endif()
  string(LENGTH "```${fence}\n" length)
  math(EXPR start "${start} + ${length}")
  string(SUBSTRING "${text}" ${start} -1 rest)
  string(FIND "${rest}" "```" end)
  string(SUBSTRING "${rest}" 0 ${end} rest)
  set(${out} "${rest}" PARENT_SCOPE)
endfunction()

file(READ "${README}" readme)
fenced_block("${readme}" cpp program)
fenced_block("${readme}" text expected)
file(WRITE "${WORK_DIR}/readme.cpp" "${program}")
run("${COMPILER}" -std=c++20 ${flags} "${WORK_DIR}/readme.cpp" -o "${WORK_DIR}/readme"
  ${pc_flags} "-Wl,-rpath,${prefix}/${LIBDIR}")
execute_process(COMMAND "${WORK_DIR}/readme" OUTPUT_VARIABLE printed COMMAND_ERROR_IS_FATAL ANY)
if(NOT printed STREQUAL expected)
  message(FATAL_ERROR "The README promises:\n${expected}\nIts program prints:\n${printed}")
endif()
