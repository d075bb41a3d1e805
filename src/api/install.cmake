# Install rules: the shared library with its SONAME link, the public headers
# under include/keepcut/, a CMake package (find_package(keepcut CONFIG) gives
# keepcut::keepcut), a pkg-config file, and the command-line tool.
include(CMakePackageConfigHelpers)

file(GLOB KC_PUBLIC_HEADERS CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/src/api/keepcut*.h)
set(KC_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/keepcut)

install(TARGETS keepcut EXPORT keepcutTargets
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} NAMELINK_COMPONENT Development)
install(FILES ${KC_PUBLIC_HEADERS} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/keepcut)
install(EXPORT keepcutTargets NAMESPACE keepcut:: DESTINATION ${KC_CMAKE_DIR})

configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/keepcutConfig.cmake.in
                              ${CMAKE_BINARY_DIR}/keepcutConfig.cmake INSTALL_DESTINATION ${KC_CMAKE_DIR})
# 0.x releases promise nothing across minor versions.
write_basic_package_version_file(${CMAKE_BINARY_DIR}/keepcutConfigVersion.cmake
                                 COMPATIBILITY SameMinorVersion)
install(FILES ${CMAKE_BINARY_DIR}/keepcutConfig.cmake ${CMAKE_BINARY_DIR}/keepcutConfigVersion.cmake
        DESTINATION ${KC_CMAKE_DIR})

# The prefix is found from the .pc file's own place, so an installed tree can
# be moved (or staged with --prefix) and still be found by pkg-config.
file(RELATIVE_PATH KC_PC_UP /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
set(KC_PC_PREFIX "\${pcfiledir}/${KC_PC_UP}")
configure_file(${CMAKE_CURRENT_LIST_DIR}/keepcut.pc.in ${CMAKE_BINARY_DIR}/keepcut.pc @ONLY)
install(FILES ${CMAKE_BINARY_DIR}/keepcut.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

if(TARGET keepcut_tool)
  install(TARGETS keepcut_tool RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
endif()
