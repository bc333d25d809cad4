# Windows on x86-64 from Linux; what is built runs under Wine.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(CMAKE_C_COMPILER x86_64-w64-mingw32-gcc-posix)
set(CMAKE_CXX_COMPILER x86_64-w64-mingw32-g++-posix)
set(CMAKE_RC_COMPILER x86_64-w64-mingw32-windres)
set(CMAKE_FIND_ROOT_PATH /usr/x86_64-w64-mingw32)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
# A host that loads the library should need nothing beside it.
set(CMAKE_SHARED_LINKER_FLAGS_INIT "-static")
set(CMAKE_EXE_LINKER_FLAGS_INIT "-static")
# Wine keeps its Windows in the build folder and runs without a display, an installer, a debugger or anything on the
# desktop.
find_program(ORVIK_WINE NAMES wine wine64 NO_CMAKE_FIND_ROOT_PATH)
if(ORVIK_WINE)
  set(CMAKE_CROSSCOMPILING_EMULATOR
      "${CMAKE_COMMAND};-E;env;WINEPREFIX=${CMAKE_BINARY_DIR}/wine;WINEDEBUG=-all"
      "WINEDLLOVERRIDES=mscoree,mshtml,winedbg.exe,winemenubuilder.exe=;${ORVIK_WINE}")
endif()
