# What the build makes of a machine without npm, or without network: an orvik that says so, unless the page is asked for.
#
#   cmake -DSCRIPT= -DSOURCE= -DFOLDER= -P built_without_page.cmake
function(build_page wanted npm)
  file(REMOVE_RECURSE "${FOLDER}")
  execute_process(COMMAND "${CMAKE_COMMAND}" "-DWANTED=${wanted}" "-DNODE=${CMAKE_COMMAND}" "-DNPM=${npm}" "-DSOURCE=${SOURCE}"
                          "-DFOLDER=${FOLDER}/page" "-DOUTPUT=${FOLDER}/page.cpp" -P "${SCRIPT}"
                  RESULT_VARIABLE status OUTPUT_VARIABLE log ERROR_VARIABLE log)
  set(text "")
  if(EXISTS "${FOLDER}/page.cpp")
    file(READ "${FOLDER}/page.cpp" text)
  endif()
  set(status "${status}" PARENT_SCOPE)
  set(log "${log}" PARENT_SCOPE)
  set(text "${text}" PARENT_SCOPE)
endfunction()

function(fail what)
  message(FATAL_ERROR "${what}; status ${status}\n${log}\n${text}")
endfunction()

function(expect_reason wanted npm reason)
  build_page(${wanted} "${npm}")
  if(NOT status EQUAL 0)
    fail("${wanted} must build with npm '${npm}'")
  endif()
  if(NOT text MATCHES "${reason}")
    fail("the program must say: ${reason}")
  endif()
endfunction()

function(expect_stop npm reason)
  build_page(ON "${npm}")
  if(status EQUAL 0 OR NOT text STREQUAL "")
    fail("ON must not build with npm '${npm}'")
  endif()
  if(NOT log MATCHES "${reason}")
    fail("the build must say: ${reason}")
  endif()
endfunction()

find_program(failing false REQUIRED) # npm as it ends without network

expect_reason(OFF "" "built with ORVIK_REPORT=OFF. Build it again with -DORVIK_REPORT=ON")
expect_reason(AUTO "" "node and npm were not found")
expect_reason(AUTO "${failing}" "npm could not fetch the page's parts")
expect_stop("" "node and npm were not found")
expect_stop("${failing}" "npm could not fetch the page's parts")
