# cmake -DPROGRAM=... -DEXPECTED=... [-DARGUMENTS=...] [-DEMULATOR=...] -P compare_output.cmake
execute_process(COMMAND ${EMULATOR} "${PROGRAM}" ${ARGUMENTS} RESULT_VARIABLE status OUTPUT_VARIABLE output)
string(REPLACE "\r\n" "\n" output "${output}")
file(READ "${EXPECTED}" expected)
if(NOT status EQUAL 0 OR NOT output STREQUAL expected)
  message(FATAL_ERROR "ended with ${status} and printed\n${output}instead of\n${expected}")
endif()
