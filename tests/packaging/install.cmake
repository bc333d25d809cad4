# Install BUILD to FOLDER/installed, and once more to a place from which the whole prefix is then moved to FOLDER/moved.
cmake_minimum_required(VERSION 3.25)
file(REMOVE_RECURSE "${FOLDER}")
foreach(place IN ITEMS installed first)
  execute_process(COMMAND "${CMAKE_COMMAND}" --install "${BUILD}" --prefix "${FOLDER}/${place}" OUTPUT_QUIET
                  COMMAND_ERROR_IS_FATAL ANY)
endforeach()
file(RENAME "${FOLDER}/first" "${FOLDER}/moved")
