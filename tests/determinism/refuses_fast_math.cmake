# cmake -DSOURCE=... -DWORK=... -DGENERATOR=... -DFLAG=... -P refuses_fast_math.cmake
# Configuring with FLAG must stop, and say why.
execute_process(
  COMMAND "${CMAKE_COMMAND}" -S "${SOURCE}" -B "${WORK}" -G "${GENERATOR}" "-DCMAKE_CXX_FLAGS=${FLAG}"
          -DORVIK_HOST=OFF
  RESULT_VARIABLE status OUTPUT_QUIET ERROR_VARIABLE errors)
if(status EQUAL 0)
  message(FATAL_ERROR "configuring with ${FLAG} was accepted")
endif()
if(NOT errors MATCHES "must not depend on the build")
  message(FATAL_ERROR "configuring with ${FLAG} failed for another reason:\n${errors}")
endif()
