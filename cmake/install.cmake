# What a host developer gets: the library, its headers, a CMake package and a pkg-config file, the tools with their
# manual, and the simulator.
include(CMakePackageConfigHelpers)

install(TARGETS pyrux EXPORT pyrux-targets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
    RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(DIRECTORY include/pyrux DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} FILES_MATCHING PATTERN "*.h")
install(FILES LICENSE DESTINATION ${CMAKE_INSTALL_DOCDIR})

install(EXPORT pyrux-targets NAMESPACE pyrux:: DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/pyrux)
file(WRITE ${CMAKE_BINARY_DIR}/pyrux-config.cmake "include(\${CMAKE_CURRENT_LIST_DIR}/pyrux-targets.cmake)\n")
write_basic_package_version_file(${CMAKE_BINARY_DIR}/pyrux-config-version.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_BINARY_DIR}/pyrux-config.cmake ${CMAKE_BINARY_DIR}/pyrux-config-version.cmake
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/pyrux)

configure_file(cmake/pyrux.pc.in ${CMAKE_BINARY_DIR}/pyrux.pc @ONLY)
install(FILES ${CMAKE_BINARY_DIR}/pyrux.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

# The stand-in has hidapi's name: it goes where no loader finds it by accident.
install(TARGETS pyrux_standin
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}/pyrux/simulator NAMELINK_SKIP
    RUNTIME DESTINATION ${CMAKE_INSTALL_LIBDIR}/pyrux/simulator)

if(PYRUX_TOOLS)
    install(TARGETS pyruxctl RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
    install(FILES docs/pyruxctl.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
endif()
