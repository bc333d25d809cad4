# Warnings that a developer build turns into errors. A consumer's build gets none of them.
add_library(orvik_warnings INTERFACE)
if(ORVIK_DEVELOPER AND NOT MSVC)
  target_compile_options(orvik_warnings INTERFACE -Wall -Wextra -Wconversion -Wshadow -Wpedantic -Werror)
endif()

# In the library single and double precision meet on purpose: no silent widening.
add_library(orvik_library_warnings INTERFACE)
target_link_libraries(orvik_library_warnings INTERFACE orvik_warnings)
if(ORVIK_DEVELOPER AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  target_compile_options(orvik_library_warnings INTERFACE $<$<COMPILE_LANGUAGE:CXX>:-Wdouble-promotion>)
endif()
