# Build the Debian packages of SOURCE in FOLDER as ./dev package does, and check what they hold and ask for.
cmake_minimum_required(VERSION 3.25)
execute_process(COMMAND "${CMAKE_COMMAND}" --preset package -S . -B "${FOLDER}" WORKING_DIRECTORY "${SOURCE}" OUTPUT_QUIET
                COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND "${CMAKE_COMMAND}" --build "${FOLDER}" COMMAND_ERROR_IS_FATAL ANY OUTPUT_QUIET)
set(made "${FOLDER}/packages")
file(REMOVE_RECURSE "${made}")
execute_process(COMMAND "${CPACK}" --config "${FOLDER}/CPackConfig.cmake" -B "${made}" OUTPUT_QUIET
                COMMAND_ERROR_IS_FATAL ANY)

function(open_package name)
  file(GLOB package "${made}/${name}_${VERSION}_*.deb")
  list(LENGTH package count)
  if(NOT count EQUAL 1)
    message(FATAL_ERROR "wanted one package ${name} of version ${VERSION}, found '${package}'")
  endif()
  execute_process(COMMAND dpkg-deb -c "${package}" OUTPUT_VARIABLE contents COMMAND_ERROR_IS_FATAL ANY)
  execute_process(COMMAND dpkg-deb -f "${package}" OUTPUT_VARIABLE fields COMMAND_ERROR_IS_FATAL ANY)
  set(contents "${contents}" PARENT_SCOPE)
  set(fields "${fields}" PARENT_SCOPE)
endfunction()

function(must_match what text)
  foreach(pattern IN LISTS ARGN)
    if(NOT text MATCHES "${pattern}")
      message(FATAL_ERROR "${what}: nothing matches '${pattern}' in\n${text}")
    endif()
  endforeach()
endfunction()

function(must_not_match what text pattern)
  if(text MATCHES "${pattern}")
    message(FATAL_ERROR "${what}: '${CMAKE_MATCH_0}' does not belong in\n${text}")
  endif()
endfunction()

string(REGEX MATCH "^[0-9]+" major "${VERSION}")
set(libdir "\\./usr/lib/[^/\n]+-linux-gnu[^/\n]*")
set(doc "\\./usr/share/doc")

open_package(liborvikbase${major})
must_match("runtime" "${contents}" "${libdir}/liborvikbase\\.so\\.${major} -> liborvikbase\\.so\\.${VERSION}\n"
           "${libdir}/liborvikbase\\.so\\.${VERSION}\n" "${doc}/liborvikbase${major}/copyright\n")
must_not_match("runtime" "${contents}" "[^\n]*(/include/|\\.a\n|\\.so ->|/bin/)")
must_match("runtime" "${fields}" "Depends: [^\n]*libc6 " "Maintainer: OrvikBase" "Section: libs\n"
           "Description: directional wave processing")

open_package(liborvikbase-dev)
must_match("development" "${contents}" "/usr/include/orvikbase/orvikbase\\.h\n" "/usr/include/orvikbase/ov_types\\.h\n"
           "/usr/include/orvikbase/orvikbase\\.hpp\n"
           "${libdir}/liborvikbase\\.so -> liborvikbase\\.so\\.${major}\n" "${libdir}/liborvikbase\\.a\n"
           "${libdir}/cmake/OrvikBase/OrvikBaseConfig\\.cmake\n" "${libdir}/pkgconfig/orvikbase\\.pc\n"
           "${doc}/liborvikbase-dev/copyright\n")
must_not_match("development" "${contents}" "[^\n]*(/bin/|\\.so\\.${VERSION}\n)")
must_match("development" "${fields}" "Depends: [^\n]*liborvikbase${major} \\(= ${VERSION}\\)" "Section: libdevel\n")

open_package(orvik)
must_match("orvik" "${contents}" "-rwxr-xr-x [^\n]*\\./usr/bin/orvik\n" "${doc}/orvik/copyright\n" "${doc}/orvik/getting-started\\.md\n"
           "${doc}/orvik/report\\.md\n" "${doc}/orvik/input-layouts\\.md\n" "${doc}/orvik/reading-results\\.md\n")
must_not_match("orvik" "${contents}" "[^\n]*(/lib/|/include/)")
must_match("orvik" "${fields}" "Depends: [^\n]*liborvikbase${major} " "Depends: [^\n]*libnetcdf" "Section: science\n")

# Unpacked, the program runs with the library beside it, and names no place of the build to look for it.
set(root "${FOLDER}/unpacked")
file(REMOVE_RECURSE "${root}")
file(GLOB packages "${made}/*.deb")
foreach(package IN LISTS packages)
  execute_process(COMMAND dpkg-deb -x "${package}" "${root}" COMMAND_ERROR_IS_FATAL ANY)
endforeach()
file(GLOB library_dir "${root}/usr/lib/*-linux-gnu*")
set(ENV{LD_LIBRARY_PATH} "${library_dir}")
execute_process(COMMAND "${root}/usr/bin/orvik" --version OUTPUT_VARIABLE said COMMAND_ERROR_IS_FATAL ANY)
must_match("orvik --version" "${said}" "orvik ${VERSION} \\(OrvikBase ")
execute_process(COMMAND "${OBJDUMP}" -p "${root}/usr/bin/orvik" OUTPUT_VARIABLE headers COMMAND_ERROR_IS_FATAL ANY)
must_match("orvik's headers" "${headers}" "NEEDED +liborvikbase\\.so\\.${major}\n")
must_not_match("orvik's headers" "${headers}" "R(UN)?PATH[^\n]*")
