# Puts the report's page together and writes it, or the reason why there is none, as C++.
#
#   cmake -DWANTED=AUTO|ON|OFF -DNODE= -DNPM= -DSOURCE= -DFOLDER= -DOUTPUT= -P build_page.cmake
cmake_minimum_required(VERSION 3.25)

function(write_missing reason)
  file(WRITE "${OUTPUT}" "// Written by the build.\n#include \"report/page.hpp\"\n\nnamespace orvik {\n
std::string_view reportPage() { return {}; }
std::string_view reportPageMissing() {\n    return \"${reason}\";\n}\n\n} // namespace orvik\n")
endfunction()

function(give_up reason log)
  if(WANTED STREQUAL "ON")
    message(FATAL_ERROR "${log}\nThe report's page cannot be built: ${reason}. Configure with -DORVIK_REPORT=OFF to build orvik "
                        "without it.")
  endif()
  message("orvik is built without its report: ${reason}")
  write_missing("${reason}. Build it again where node, npm and npm's registry are in reach, with -DORVIK_REPORT=ON")
endfunction()

if(WANTED STREQUAL "OFF")
  write_missing("it was built with ORVIK_REPORT=OFF. Build it again with -DORVIK_REPORT=ON; that needs node and npm")
  return()
endif()
if(NOT NODE OR NOT NPM)
  give_up("node and npm were not found when it was built" "")
  return()
endif()

file(COPY "${SOURCE}/" DESTINATION "${FOLDER}")
file(SHA256 "${FOLDER}/package-lock.json" wanted)
set(installed "")
if(EXISTS "${FOLDER}/installed.sha256")
  file(READ "${FOLDER}/installed.sha256" installed)
endif()
if(NOT installed STREQUAL wanted)
  execute_process(COMMAND "${NPM}" ci --ignore-scripts --no-audit --no-fund --fetch-retry-mintimeout=1000
                          --fetch-retry-maxtimeout=10000
                  WORKING_DIRECTORY "${FOLDER}" RESULT_VARIABLE status OUTPUT_VARIABLE log ERROR_VARIABLE log)
  if(NOT status EQUAL 0)
    give_up("npm could not fetch the page's parts when it was built" "${log}")
    return()
  endif()
  file(WRITE "${FOLDER}/installed.sha256" "${wanted}")
endif()
execute_process(COMMAND "${NODE}" build.mjs "${OUTPUT}" WORKING_DIRECTORY "${FOLDER}" RESULT_VARIABLE status
                OUTPUT_VARIABLE log ERROR_VARIABLE log)
if(NOT status EQUAL 0)
  message(FATAL_ERROR "${log}\nThe report's page cannot be put together.")
endif()
