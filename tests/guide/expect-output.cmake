# Runs PROGRAM, and fails unless it ends with 0 and prints what is in the file EXPECTED.
execute_process(COMMAND "${PROGRAM}" OUTPUT_VARIABLE printed RESULT_VARIABLE status)
file(READ "${EXPECTED}" expected)
# How many seconds something takes is the machine's affair.
foreach(text printed expected)
  string(REGEX REPLACE " :[0-9][0-9](\\.[0-9]+)?" " :00" ${text} "${${text}}")
endforeach()
if(NOT status EQUAL 0 OR NOT printed STREQUAL expected)
  message(FATAL_ERROR "status ${status}, printed:\n${printed}expected:\n${expected}")
endif()
