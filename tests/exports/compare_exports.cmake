# The library exports what exports.txt lists: no more (an internal routine that leaks becomes part of the interface) and
# no less (a host that was built against it no longer starts). The header declares the same, and the C program of this
# folder calls it all.
#
# -DNM= -DLIBRARY= -DLIST= -DHEADER= -DCALLER=, and for Windows -DOBJDUMP= -DIMPORT_LIBRARY=

function(expect_same name here listed)
  set(extra ${here})
  list(REMOVE_ITEM extra ${listed})
  set(absent ${listed})
  list(REMOVE_ITEM absent ${here})
  if(extra)
    message(SEND_ERROR "${name}: not in the list: ${extra}")
  endif()
  if(absent)
    message(SEND_ERROR "${name}: listed but not there: ${absent}")
  endif()
endfunction()

file(STRINGS "${LIST}" listed)
set(sorted ${listed})
list(SORT sorted COMPARE STRING)
list(REMOVE_DUPLICATES sorted)
list(LENGTH listed count)
if(NOT listed STREQUAL sorted OR count EQUAL 0)
  message(SEND_ERROR "${LIST} is empty, not sorted or names something twice.")
endif()

# `variable` becomes the names that `pattern` finds at the line ends of what a command prints.
function(names_printed variable pattern)
  execute_process(COMMAND ${ARGN} OUTPUT_VARIABLE output COMMAND_ERROR_IS_FATAL ANY)
  string(REGEX MATCHALL "${pattern}\n" names "${output}")
  list(TRANSFORM names REPLACE "^.* ([^ \n]+)\n$" "\\1")
  set(${variable} "${names}" PARENT_SCOPE)
endfunction()

if(IMPORT_LIBRARY)
  names_printed(exported "\t\\[ *[0-9]+\\]( \\+base\\[ *[0-9]+\\] +[0-9a-f]+)? [^ \n]+" "${OBJDUMP}" -p "${LIBRARY}")
  names_printed(importable " T [^ \n]+" "${NM}" "${IMPORT_LIBRARY}")
  expect_same("${IMPORT_LIBRARY}" "${importable}" "${listed}")
else()
  names_printed(exported " [^ \n]+" "${NM}" -D --defined-only "${LIBRARY}")
endif()
expect_same("${LIBRARY}" "${exported}" "${listed}")

file(READ "${HEADER}" header)
string(REGEX MATCHALL "OV_API [^(;\n]*[ *](OV|VELTA)[A-Za-z0-9_]+\\(" declared "${header}")
list(TRANSFORM declared REPLACE "^.*[ *]([A-Za-z0-9_]+)\\($" "\\1")
expect_same("${HEADER}" "${declared}" "${listed}")

file(READ "${CALLER}" caller)
string(REGEX MATCHALL "(OV|VELTA)[A-Za-z0-9_]+\\(" called "${caller}")
list(TRANSFORM called REPLACE "\\($" "")
list(REMOVE_DUPLICATES called)
expect_same("${CALLER}" "${called}" "${listed}")
