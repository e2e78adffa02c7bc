# Installation. Shared objects keep their execute bit, which Debian's CMake takes away: the library can be run, too.
install(TARGETS kvr2
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
    PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
install(DIRECTORY include/kvr2 DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} FILES_MATCHING PATTERN "*.h")

# The library looks for its catalog under usr/share/locale beside the directory "lib" that it stands in, and counts a
# "usr" in front of "lib" as part of that: prefix /usr gives /usr/share/locale, any other PREFIX/usr/share/locale.
install(CODE "
    set(catalogs \"\${CMAKE_INSTALL_PREFIX}/usr/share/locale\")
    if(\"\${CMAKE_INSTALL_PREFIX}\" MATCHES \"(^|/)usr/?$\")
        set(catalogs \"\${CMAKE_INSTALL_PREFIX}/share/locale\")
    endif()
    file(INSTALL DESTINATION \"\${catalogs}\" TYPE DIRECTORY FILES \"${CMAKE_BINARY_DIR}/usr/share/locale/\")")
