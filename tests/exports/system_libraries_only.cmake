# The library needs nothing beside it but what is part of Windows.
#
# -DOBJDUMP= -DLIBRARY=
execute_process(COMMAND "${OBJDUMP}" -p "${LIBRARY}" OUTPUT_VARIABLE headers COMMAND_ERROR_IS_FATAL ANY)
string(REGEX MATCHALL "DLL Name: [^\n]+" needed "${headers}")
list(TRANSFORM needed REPLACE "DLL Name: " "")
set(foreign ${needed})
list(REMOVE_ITEM foreign KERNEL32.dll msvcrt.dll)
if(foreign OR NOT needed)
  message(FATAL_ERROR "${LIBRARY} needs ${needed}: only KERNEL32.dll and msvcrt.dll are expected.")
endif()
