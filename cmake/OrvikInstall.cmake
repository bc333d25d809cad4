# What `cmake --install` puts where: the library with its headers, and the files by which CMake and pkg-config find it.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

function(orvik_install_library)
  set_target_properties(orvikbase PROPERTIES EXPORT_NAME orvikbase)
  install(TARGETS orvikbase orvikbase_static EXPORT OrvikBaseTargets
          RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
          LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
          ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
  install(DIRECTORY "${PROJECT_SOURCE_DIR}/include/orvikbase" DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})

  set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/OrvikBase)
  install(EXPORT OrvikBaseTargets NAMESPACE OrvikBase:: DESTINATION ${package_dir})
  configure_package_config_file("${PROJECT_SOURCE_DIR}/cmake/OrvikBaseConfig.cmake.in"
                                "${PROJECT_BINARY_DIR}/OrvikBaseConfig.cmake" INSTALL_DESTINATION ${package_dir})
  write_basic_package_version_file("${PROJECT_BINARY_DIR}/OrvikBaseConfigVersion.cmake" COMPATIBILITY SameMajorVersion)
  install(FILES "${PROJECT_BINARY_DIR}/OrvikBaseConfig.cmake" "${PROJECT_BINARY_DIR}/OrvikBaseConfigVersion.cmake"
          DESTINATION ${package_dir})

  configure_file("${PROJECT_SOURCE_DIR}/cmake/orvikbase.pc.in" "${PROJECT_BINARY_DIR}/orvikbase.pc" @ONLY)
  install(FILES "${PROJECT_BINARY_DIR}/orvikbase.pc" DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
endfunction()
