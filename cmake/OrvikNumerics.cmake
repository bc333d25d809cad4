# The same burst must give the same bytes with every compiler and at every optimisation level. Contracted
# multiply-adds and fast-math break that, so the first is switched off for the library and everything that tests it,
# and the second is refused: switching it off again would still leave the start-up code that flushes small numbers to
# zero in the program.
string(JOIN "|" orvikFastMath "-ffast-math" "-Ofast" "-funsafe-math-optimizations" "-fassociative-math"
       "-freciprocal-math" "-ffinite-math-only" "/fp:fast")
get_directory_property(orvikDirectoryOptions COMPILE_OPTIONS) # of a project that this one is part of
foreach(flags IN ITEMS "${CMAKE_CXX_FLAGS}" "${CMAKE_C_FLAGS}" "${CMAKE_CXX_FLAGS_RELEASE}" "${CMAKE_CXX_FLAGS_DEBUG}"
        "${CMAKE_CXX_FLAGS_RELWITHDEBINFO}" "${CMAKE_CXX_FLAGS_MINSIZEREL}" "${orvikDirectoryOptions}")
  if(flags MATCHES "${orvikFastMath}")
    message(FATAL_ERROR "Results must not depend on the build: remove fast-math from the compiler flags (${flags}).")
  endif()
endforeach()

add_library(orvik_numerics INTERFACE)
if(MSVC)
  target_compile_options(orvik_numerics INTERFACE /fp:precise)
else()
  target_compile_options(orvik_numerics INTERFACE -ffp-contract=off -fno-fast-math)
  # With AVX, GCC 12 drops the rounding to single precision of a double that it has packed with its neighbours and widens
  # again at once: a sum kept in a float then ends with the digits of a double. Loops it vectorises keep the rounding.
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    target_compile_options(orvik_numerics INTERFACE -fno-tree-slp-vectorize)
  endif()
  if(CMAKE_SIZEOF_VOID_P EQUAL 4 AND CMAKE_SYSTEM_PROCESSOR MATCHES "i[3-6]86|x86")
    target_compile_options(orvik_numerics INTERFACE -msse2 -mfpmath=sse)
  endif()
endif()

if(ORVIK_SANITIZE)
  add_compile_options(-fsanitize=${ORVIK_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${ORVIK_SANITIZE})
endif()

# A fuzzer follows the branches of the library that its inputs reach.
if(ORVIK_FUZZ)
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()
