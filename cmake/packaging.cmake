# Debian packages: what a program needs to run, what a developer needs to build one, and the host program.
set(runtime_package liborvikbase${PROJECT_VERSION_MAJOR})
set(development_package liborvikbase-dev)

foreach(pair IN ITEMS runtime:${runtime_package} development:${development_package} orvik:orvik)
  string(REPLACE ":" ";" pair "${pair}")
  list(GET pair 0 component)
  list(GET pair 1 package)
  install(FILES "${PROJECT_SOURCE_DIR}/LICENSE" DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${package} RENAME copyright
          COMPONENT ${component} EXCLUDE_FROM_ALL)
endforeach()
set(docs "${PROJECT_SOURCE_DIR}/docs")
install(FILES "${docs}/conventions.md" "${docs}/accuracy.md"
        DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${development_package} COMPONENT development EXCLUDE_FROM_ALL)
# What a person with a deployment reads, and the formats.
install(FILES "${docs}/getting-started.md" "${docs}/choosing-a-method.md" "${docs}/reading-results.md"
              "${docs}/commands.md" "${docs}/report.md" "${docs}/input-layouts.md" "${docs}/burst-file.md"
              "${docs}/result-file.md" "${docs}/simulate.md" "${docs}/conventions.md" "${docs}/accuracy.md"
        DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/orvik COMPONENT orvik EXCLUDE_FROM_ALL)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME orvikbase)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "") # every package has a summary of its own
set(CPACK_PACKAGE_CONTACT "OrvikBase developers <developers@orvikbase.invalid>" CACHE STRING "Maintainer of the packages")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_COMPONENTS_ALL runtime development)
if(ORVIK_HOST)
  list(APPEND CPACK_COMPONENTS_ALL orvik)
endif()

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "${PROJECT_BINARY_DIR}/src")
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME ${runtime_package})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_RUNTIME_DESCRIPTION "directional wave processing of acoustic current meter bursts
Computes height, periods, directions, spreads and spectra of ocean waves from
bursts of pressure, slanted-beam velocity and acoustic surface track. This
package holds the shared library.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME ${development_package})
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "${runtime_package} (= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_DEVELOPMENT_DESCRIPTION "directional wave processing - development files
Headers, static library, and the files by which CMake and pkg-config find the
OrvikBase library.")

set(CPACK_DEBIAN_ORVIK_PACKAGE_NAME orvik)
set(CPACK_DEBIAN_ORVIK_PACKAGE_SECTION science)
set(CPACK_DEBIAN_ORVIK_PACKAGE_DEPENDS "${runtime_package} (>= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_ORVIK_DESCRIPTION "simulate, process and show wave bursts in netCDF files
Host program of the OrvikBase library: turns bursts of acoustic current meters
into directional wave parameters and spectra, and simulates such bursts in
seas that are known.")

include(CPack)
