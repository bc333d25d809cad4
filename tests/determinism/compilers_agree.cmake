# cmake -DSOURCE=... -DWORK=... -DGENERATOR=... -P compilers_agree.cmake
# Builds burst_digest with each compiler at each level and compares what the programs print.

# One entry: C compiler, C++ compiler, flags.
set(builds "gcc|g++|-O0" "gcc|g++|-O3" "gcc|g++|-O3 -march=native" "clang|clang++|-O0" "clang|clang++|-O3")

function(run)
  execute_process(COMMAND ${ARGV} RESULT_VARIABLE status OUTPUT_VARIABLE output ERROR_VARIABLE errors)
  if(NOT status EQUAL 0)
    string(JOIN " " line ${ARGV})
    message(FATAL_ERROR "${line}\nended with ${status}\n${output}${errors}")
  endif()
  set(output "${output}" PARENT_SCOPE)
endfunction()

foreach(build IN LISTS builds)
  string(REPLACE "|" ";" parts "${build}")
  list(GET parts 0 c)
  list(GET parts 1 cxx)
  list(GET parts 2 flags)
  string(MAKE_C_IDENTIFIER "${cxx}${flags}" name)
  run("${CMAKE_COMMAND}" -S "${SOURCE}" -B "${WORK}/${name}" -G "${GENERATOR}"
      -DCMAKE_BUILD_TYPE=Release "-DCMAKE_C_COMPILER=${c}" "-DCMAKE_CXX_COMPILER=${cxx}"
      "-DCMAKE_C_FLAGS_RELEASE=${flags}" "-DCMAKE_CXX_FLAGS_RELEASE=${flags}"
      -DORVIK_DEVELOPER=ON -DORVIK_HOST=OFF)
  run("${CMAKE_COMMAND}" --build "${WORK}/${name}" --target burst_digest)
  run("${WORK}/${name}/tests/determinism/burst_digest")
  message("${cxx} ${flags}:\n${output}")
  if(NOT DEFINED first)
    set(first "${output}")
    set(firstName "${cxx} ${flags}")
  elseif(NOT output STREQUAL first)
    message(SEND_ERROR "${cxx} ${flags} computes other bytes than ${firstName}: compare the lines above")
  endif()
endforeach()
