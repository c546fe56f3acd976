include(CMakePackageConfigHelpers)

install(TARGETS kfpgeny8 kfpcore EXPORT kfpgenTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  PUBLIC_HEADER DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(EXPORT kfpgenTargets NAMESPACE kfpgen::
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/kfpgen)
configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/kfpgenConfig.cmake.in
  ${CMAKE_CURRENT_BINARY_DIR}/kfpgenConfig.cmake
  INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/kfpgen)
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/kfpgenConfigVersion.cmake
  VERSION ${PROJECT_VERSION} COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/kfpgenConfig.cmake
              ${CMAKE_CURRENT_BINARY_DIR}/kfpgenConfigVersion.cmake
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/kfpgen)
configure_file(${CMAKE_CURRENT_LIST_DIR}/kfpgen.pc.in ${CMAKE_CURRENT_BINARY_DIR}/kfpgen.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/kfpgen.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
