# Installation, in three components: `runtime`, what running compiled COBOL takes; `dev`, what compiling against the
# library takes; `cobol`, the front end. What the rooms install themselves goes to `runtime`
# (CMAKE_INSTALL_DEFAULT_COMPONENT_NAME).
include(CMakePackageConfigHelpers)

# Shared objects keep their execute bit, which Debian's CMake takes away: the library can be run, too.
kvr2_install(kvr2 EXPORT kvr2Targets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
    PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

# The library looks for its catalog under usr/share/locale beside the directory "lib" that it stands in, and counts a
# "usr" before "lib" as part of that: prefix /usr gives /usr/share/locale, any other PREFIX/usr/share/locale.
install(CODE "
    set(catalogs \"\${CMAKE_INSTALL_PREFIX}/usr/share/locale\")
    if(\"\${CMAKE_INSTALL_PREFIX}\" MATCHES \"(^|/)usr/?$\")
        set(catalogs \"\${CMAKE_INSTALL_PREFIX}/share/locale\")
    endif()
    file(INSTALL DESTINATION \"\${catalogs}\" TYPE DIRECTORY FILES \"${CMAKE_BINARY_DIR}/usr/share/locale/\")")

install(DIRECTORY include/kvr2 DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT dev FILES_MATCHING PATTERN "*.h")
install(DIRECTORY examples/ DESTINATION ${CMAKE_INSTALL_DATADIR}/kvr2/examples COMPONENT dev USE_SOURCE_PERMISSIONS)
install(FILES README.md DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT dev)
# What operators read goes with the library; what compiler writers read, with the headers.
install(FILES docs/messages.md docs/statuses.md docs/environment.md docs/files.md DESTINATION ${CMAKE_INSTALL_DOCDIR}/docs)
install(FILES docs/abi.md docs/entries.md docs/hacking.md DESTINATION ${CMAKE_INSTALL_DOCDIR}/docs COMPONENT dev)
install(FILES docs/cobol.md DESTINATION ${CMAKE_INSTALL_DOCDIR}/docs COMPONENT cobol)

# find_package(kvr2 CONFIG) gives the target kvr2::kvr2; pkg-config knows the library as kvr2.
set(KVR2_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/kvr2)
install(EXPORT kvr2Targets NAMESPACE kvr2:: DESTINATION ${KVR2_CMAKE_DIR} COMPONENT dev)
configure_package_config_file(cmake/kvr2Config.cmake.in ${CMAKE_BINARY_DIR}/kvr2Config.cmake INSTALL_DESTINATION ${KVR2_CMAKE_DIR})
write_basic_package_version_file(${CMAKE_BINARY_DIR}/kvr2ConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_BINARY_DIR}/kvr2Config.cmake ${CMAKE_BINARY_DIR}/kvr2ConfigVersion.cmake DESTINATION ${KVR2_CMAKE_DIR} COMPONENT dev)

# pkg-config leaves out directories of the system only where it knows them by their names; elsewhere the prefix is where
# the file is, so that an installation can move.
set(KVR2_PC_PREFIX /usr)
configure_file(cmake/kvr2.pc.in ${CMAKE_BINARY_DIR}/pkgconfig/system/kvr2.pc @ONLY)
set(KVR2_PC_PREFIX "\${pcfiledir}/../..")
configure_file(cmake/kvr2.pc.in ${CMAKE_BINARY_DIR}/pkgconfig/relocatable/kvr2.pc @ONLY)
install(CODE "
    set(kind relocatable)
    if(\"\${CMAKE_INSTALL_PREFIX}\" MATCHES \"^/usr/?$\")
        set(kind system)
    endif()
    file(INSTALL DESTINATION \"\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_LIBDIR}/pkgconfig\" TYPE FILE
        FILES \"${CMAKE_BINARY_DIR}/pkgconfig/\${kind}/kvr2.pc\")" COMPONENT dev)
