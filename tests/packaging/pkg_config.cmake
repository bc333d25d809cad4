# Compile the consumers with what pkg-config says of the library under PREFIX, shared and static, and run them.
# CC, CXX: compilers. SOURCE: folder of the consumers. FOLDER: where the programs go.
cmake_minimum_required(VERSION 3.25)
file(GLOB_RECURSE pc "${PREFIX}/*/orvikbase.pc")
if(NOT pc)
  message(FATAL_ERROR "no orvikbase.pc under ${PREFIX}")
endif()
cmake_path(GET pc PARENT_PATH pc_dir)
set(ENV{PKG_CONFIG_PATH} "${pc_dir}")
file(MAKE_DIRECTORY "${FOLDER}")

function(ask_pkg_config result)
  execute_process(COMMAND pkg-config ${ARGN} orvikbase OUTPUT_VARIABLE answer OUTPUT_STRIP_TRAILING_WHITESPACE
                  COMMAND_ERROR_IS_FATAL ANY)
  separate_arguments(answer UNIX_COMMAND "${answer}")
  set(${result} "${answer}" PARENT_SCOPE)
endfunction()

ask_pkg_config(cflags --cflags)
ask_pkg_config(shared --libs)
ask_pkg_config(libdir --variable=libdir)
ask_pkg_config(static --static --libs-only-l)
list(TRANSFORM static REPLACE "^-lorvikbase$" "${libdir}/liborvikbase.a")

function(build_and_run compiler standard source linkage)
  cmake_path(GET source FILENAME name)
  set(program "${FOLDER}/${name}.${linkage}")
  execute_process(COMMAND "${compiler}" ${standard} ${cflags} "${source}" -o "${program}" ${${linkage}}
                  COMMAND_ERROR_IS_FATAL ANY)
  set(ENV{LD_LIBRARY_PATH} "")
  if(linkage STREQUAL "shared")
    set(ENV{LD_LIBRARY_PATH} "${libdir}")
  endif()
  execute_process(COMMAND "${program}" OUTPUT_VARIABLE said COMMAND_ERROR_IS_FATAL ANY)
  if(NOT said MATCHES "OrvikBase 4\\.[0-9]+, burst of 512 samples")
    message(FATAL_ERROR "${program} said: ${said}")
  endif()
endfunction()

foreach(linkage IN ITEMS shared static)
  build_and_run("${CC}" -std=c99 "${SOURCE}/consumer.c" ${linkage})
  build_and_run("${CXX}" -std=c++20 "${SOURCE}/consumer.cpp" ${linkage})
endforeach()
