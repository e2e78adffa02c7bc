# Debian packages, made by `cpack -G DEB` in the build directory: libkvr2 (what running programs need), libkvr2-dev
# (headers) and kvr2-cobol (the front end).
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME libkvr2)
set(CPACK_PACKAGE_CONTACT "libkvr2 maintainers <maintainers@kvr2.invalid>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_DESCRIPTION}")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL runtime dev cobol)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION libs)
set(debian ${CMAKE_SOURCE_DIR}/cmake/debian)

# The version of each symbol, for packages that need this one.
set(symbols ${CMAKE_BINARY_DIR}/debian/symbols)
file(MAKE_DIRECTORY ${CMAKE_BINARY_DIR}/debian)
execute_process(COMMAND python3 ${debian}/symbols.py ${KVR2_MAP} ${PROJECT_VERSION} ${symbols} COMMAND_ERROR_IS_FATAL ANY)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${KVR2_MAP} ${debian}/symbols.py)

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME libkvr2)
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION "What compiled COBOL programs run on: the library, its messages,
the sort engine, the file-system modules, and commands for operators.")
# The companions need the library that is in the package itself.
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_BINARY_DIR}/lib)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA ${symbols} ${debian}/triggers)
# The tracebacks of a fatal signal name source lines through addr2line, core files are made by gcore; both are missed without harm.
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SUGGESTS "binutils, gdb")

set(CPACK_DEBIAN_DEV_PACKAGE_NAME libkvr2-dev)
set(CPACK_COMPONENT_DEV_DESCRIPTION "What compiling against the library takes: headers, CMake and pkg-config
files, documentation, examples.")
set(CPACK_DEBIAN_DEV_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEV_PACKAGE_DEPENDS "libkvr2 (= ${PROJECT_VERSION}), libc6-dev")
set(CPACK_DEBIAN_DEV_PACKAGE_SUGGESTS "python3:any") # one example makes its data with it

set(CPACK_DEBIAN_COBOL_PACKAGE_NAME kvr2-cobol)
set(CPACK_COMPONENT_COBOL_DESCRIPTION "kvrcob compiles COBOL programs to native ones, by way of C and the
system's C compiler.")
set(CPACK_DEBIAN_COBOL_PACKAGE_SECTION devel)
set(CPACK_DEBIAN_COBOL_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_COBOL_PACKAGE_DEPENDS "libkvr2-dev (= ${PROJECT_VERSION}), gcc | c-compiler")

# Each package has the changelog, and says to lintian what is so on purpose.
set(changelog ${CMAKE_BINARY_DIR}/debian/changelog.gz)
execute_process(COMMAND gzip -9nc ${debian}/changelog OUTPUT_FILE ${changelog} COMMAND_ERROR_IS_FATAL ANY)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${debian}/changelog)
foreach(component runtime dev cobol)
    string(TOUPPER ${component} upper)
    set(package ${CPACK_DEBIAN_${upper}_PACKAGE_NAME})
    install(FILES ${changelog} DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${package} COMPONENT ${component})
    if(EXISTS ${debian}/${package}.lintian-overrides)
        install(FILES ${debian}/${package}.lintian-overrides DESTINATION ${CMAKE_INSTALL_DATADIR}/lintian/overrides
            RENAME ${package} COMPONENT ${component})
    endif()
endforeach()
include(CPack)
