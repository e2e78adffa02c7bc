# Debian packages, made by `cpack -G DEB` in the build directory: libkvr2 (runtime) and libkvr2-dev.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME libkvr2)
set(CPACK_PACKAGE_CONTACT "The libkvr2 maintainers")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_DESCRIPTION}")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL runtime dev)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION libs)

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME libkvr2)
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION "The library, its messages, the sort engine, the file-system modules and kvr2-gdg.")
# The companions need the library that is in the package itself.
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_BINARY_DIR}/lib)
# The tracebacks of a fatal signal name source lines through addr2line, core files are made by gcore; both are missed without harm.
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SUGGESTS "binutils, gdb")

set(CPACK_DEBIAN_DEV_PACKAGE_NAME libkvr2-dev)
set(CPACK_COMPONENT_DEV_DESCRIPTION "Headers, CMake and pkg-config files, documentation, examples.")
set(CPACK_DEBIAN_DEV_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEV_PACKAGE_DEPENDS "libkvr2 (= ${PROJECT_VERSION})")
include(CPack)
