# cmake -DPROGRAM=... -DWORK=... -P compare_values_test.cmake
# What compare_values accepts and what it refuses.
file(MAKE_DIRECTORY "${WORK}")

function(expect status first second)
  file(WRITE "${WORK}/first" "${first}")
  file(WRITE "${WORK}/second" "${second}")
  execute_process(COMMAND "${PROGRAM}" "${WORK}/first" "${WORK}/second" RESULT_VARIABLE ended OUTPUT_VARIABLE output)
  if(NOT ended EQUAL status)
    message(SEND_ERROR "ended with ${ended} instead of ${status} for\n${first}${second}and printed\n${output}")
  endif()
endfunction()

expect(0 "f b x 3f800000\ni b n 7\n" "f b x 3f800000\ni b n 7\n")
expect(0 "f b x 3f800000\n" "f b x 3f800002\n") # 2 ulp
expect(1 "f b x 3f800000\n" "f b x 3f800003\n") # 3 ulp
expect(0 "f b x 00000001\n" "f b x 80000001\n") # 2 ulp, through zero
expect(1 "f b x 00000001\n" "f b x 80000002\n")
expect(0 "f b x 00000000\n" "f b x 80000000\n") # zero is zero
expect(0 "f b x 7fc00000\n" "f b x 7fc00000\n") # not a number in both
expect(1 "f b x 7fc00000\n" "f b x 7f800000\n") # in one of them
expect(1 "i b n 7\n" "i b n 8\n")
expect(1 "f b x 3f800000\n" "f b y 3f800000\n")
expect(1 "f b x 3f800000\n" "f b x 3f800000 3f800000\n")
expect(1 "f b x 3f800000 3f800000\n" "f b x 3f800000\n")
expect(1 "f b x 3f800000\n" "f b x 3f800000\nf b y 3f800000\n")
expect(1 "f b x 3f800000\nf b y 3f800000\n" "f b x 3f800000\n")
expect(1 "" "")
