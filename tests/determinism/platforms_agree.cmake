# cmake -DSOURCE=... -DWORK=... -DGENERATOR=... -DFOREIGN=... -DEMULATOR=... -P platforms_agree.cmake
# FOREIGN is burst_values for another platform, EMULATOR (a list) runs it here. Builds the same program for this machine
# and compares what both write.
function(run)
  execute_process(COMMAND ${ARGV} WORKING_DIRECTORY "${WORK}" RESULT_VARIABLE status OUTPUT_VARIABLE output
                  ERROR_VARIABLE errors)
  if(NOT status EQUAL 0)
    string(JOIN " " line ${ARGV})
    message(FATAL_ERROR "${line}\nended with ${status}\n${output}${errors}")
  endif()
  set(output "${output}" PARENT_SCOPE)
endfunction()

file(MAKE_DIRECTORY "${WORK}")
run("${CMAKE_COMMAND}" -S "${SOURCE}" -B native -G "${GENERATOR}" -DCMAKE_BUILD_TYPE=Release -DCMAKE_C_COMPILER=gcc
    -DCMAKE_CXX_COMPILER=g++ -DORVIK_DEVELOPER=ON -DORVIK_HOST=OFF)
run("${CMAKE_COMMAND}" --build native --target burst_values compare_values)
file(REMOVE "${WORK}/native.values" "${WORK}/foreign.values")
# Names without folders: the foreign platform may write paths in another way.
run(native/tests/determinism/burst_values native.values)
run(${EMULATOR} "${FOREIGN}" foreign.values)
run(native/tests/determinism/compare_values native.values foreign.values)
message("${output}")
