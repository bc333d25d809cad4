# What `cmake --install` puts where: the library with its headers, the files by which CMake and pkg-config find it, and
# orvik. No installed file names the place it was installed to, so the whole folder may be moved.
#
# Components are those of the Debian packages: runtime, development, orvik.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

function(orvik_install_library)
  set_target_properties(orvikbase PROPERTIES EXPORT_NAME orvikbase)
  install(TARGETS orvikbase orvikbase_static EXPORT OrvikBaseTargets
          RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT runtime
          LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT development
          ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development)
  install(DIRECTORY "${PROJECT_SOURCE_DIR}/include/orvikbase" DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
          COMPONENT development)
  orvik_install_cmake_package()
  orvik_install_pkg_config()
endfunction()

function(orvik_install_cmake_package)
  set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/OrvikBase)
  install(EXPORT OrvikBaseTargets NAMESPACE OrvikBase:: DESTINATION ${package_dir} COMPONENT development)
  configure_package_config_file("${PROJECT_SOURCE_DIR}/cmake/OrvikBaseConfig.cmake.in"
                                "${PROJECT_BINARY_DIR}/OrvikBaseConfig.cmake" INSTALL_DESTINATION ${package_dir})
  write_basic_package_version_file("${PROJECT_BINARY_DIR}/OrvikBaseConfigVersion.cmake" COMPATIBILITY SameMajorVersion)
  install(FILES "${PROJECT_BINARY_DIR}/OrvikBaseConfig.cmake" "${PROJECT_BINARY_DIR}/OrvikBaseConfigVersion.cmake"
          DESTINATION ${package_dir} COMPONENT development)
endfunction()

function(orvik_install_pkg_config)
  set(pc_prefix "${CMAKE_INSTALL_PREFIX}")
  if(NOT IS_ABSOLUTE "${CMAKE_INSTALL_LIBDIR}")
    file(RELATIVE_PATH up "/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/")
    string(REGEX REPLACE "/$" "" up "${up}")
    set(pc_prefix "\${pcfiledir}/${up}")
  endif()
  set(pc_libdir "\${prefix}")
  set(pc_includedir "\${prefix}")
  cmake_path(APPEND pc_libdir "${CMAKE_INSTALL_LIBDIR}")
  cmake_path(APPEND pc_includedir "${CMAKE_INSTALL_INCLUDEDIR}")
  configure_file("${PROJECT_SOURCE_DIR}/cmake/orvikbase.pc.in" "${PROJECT_BINARY_DIR}/orvikbase.pc" @ONLY)
  install(FILES "${PROJECT_BINARY_DIR}/orvikbase.pc" DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig
          COMPONENT development)
endfunction()

# A program that finds the library beside itself.
function(orvik_install_program target)
  if(UNIX AND NOT APPLE)
    file(RELATIVE_PATH library_dir "${CMAKE_INSTALL_FULL_BINDIR}" "${CMAKE_INSTALL_FULL_LIBDIR}")
    set_target_properties(${target} PROPERTIES INSTALL_RPATH "$ORIGIN/${library_dir}")
  endif()
  install(TARGETS ${target} RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT orvik)
endfunction()
