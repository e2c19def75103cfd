# Installation: libraries, public headers, a CMake package (find_package(oxa),
# targets oxa::oxa_vml_avx and oxa::oxa_service) and a pkg-config file (oxa.pc).
include(CMakePackageConfigHelpers)

install(TARGETS oxa_vml_avx oxa_service EXPORT oxaTargets
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
        RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(DIRECTORY include/oxa DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(EXPORT oxaTargets NAMESPACE oxa:: DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/oxa)

configure_package_config_file(cmake/oxaConfig.cmake.in
  ${CMAKE_CURRENT_BINARY_DIR}/oxaConfig.cmake
  INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/oxa)
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/oxaConfigVersion.cmake
  COMPATIBILITY SameMinorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/oxaConfig.cmake
              ${CMAKE_CURRENT_BINARY_DIR}/oxaConfigVersion.cmake
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/oxa)

file(RELATIVE_PATH OXA_PC_UP "/p/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/p")
configure_file(cmake/oxa.pc.in ${CMAKE_CURRENT_BINARY_DIR}/oxa.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/oxa.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
