# The library exports what exports.txt lists: no more (an internal routine that leaks becomes part of the interface) and
# no less (a host that was built against it no longer starts). The header declares the same, and the C program of this
# folder calls it all.
#
# -DNM= -DLIBRARY= -DLIST= -DHEADER= -DCALLER=

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

execute_process(COMMAND "${NM}" -D --defined-only "${LIBRARY}" OUTPUT_VARIABLE symbols COMMAND_ERROR_IS_FATAL ANY)
string(REGEX MATCHALL "[^ \n]+\n" symbols "${symbols}")
list(TRANSFORM symbols STRIP)
expect_same("${LIBRARY}" "${symbols}" "${listed}")

file(READ "${HEADER}" header)
string(REGEX MATCHALL "OV_API [^(;\n]*[ *](OV|VELTA)[A-Za-z0-9_]+\\(" declared "${header}")
list(TRANSFORM declared REPLACE "^.*[ *]([A-Za-z0-9_]+)\\($" "\\1")
expect_same("${HEADER}" "${declared}" "${listed}")

file(READ "${CALLER}" caller)
string(REGEX MATCHALL "(OV|VELTA)[A-Za-z0-9_]+\\(" called "${caller}")
list(TRANSFORM called REPLACE "\\($" "")
list(REMOVE_DUPLICATES called)
expect_same("${CALLER}" "${called}" "${listed}")
