# Manual pages and completions. Pages are compressed when they are built, as packages want them.

# kvr2_manual(SOURCE COMPONENT): a page that somebody wrote, NAME.SECTION.
function(kvr2_manual source component)
    get_filename_component(name ${source} NAME)
    string(REGEX REPLACE ".*\\." "" section ${name})
    set(output ${CMAKE_BINARY_DIR}/man/${name}.gz)
    add_custom_command(OUTPUT ${output}
        COMMAND ${CMAKE_COMMAND} -E make_directory ${CMAKE_BINARY_DIR}/man
        COMMAND sh -c "gzip -9nc ${CMAKE_CURRENT_SOURCE_DIR}/${source} >${output}"
        DEPENDS ${source} VERBATIM)
    add_custom_target(manual_${name} ALL DEPENDS ${output})
    set_property(GLOBAL APPEND PROPERTY KVR2_MANUALS manual_${name})
    install(FILES ${output} DESTINATION ${CMAKE_INSTALL_MANDIR}/man${section} COMPONENT ${component})
endfunction()

# kvr2_manual_of(DOCUMENT NAME COMPONENT SUMMARY): a page of section 7 that says what docs/DOCUMENT.md says.
function(kvr2_manual_of document name component summary)
    set(output ${CMAKE_BINARY_DIR}/man/${name}.7.gz)
    set(source ${CMAKE_SOURCE_DIR}/docs/${document}.md)
    add_custom_command(OUTPUT ${output}
        COMMAND ${CMAKE_COMMAND} -E make_directory ${CMAKE_BINARY_DIR}/man
        COMMAND python3 ${CMAKE_SOURCE_DIR}/scripts/man_page.py ${source} ${name} 7 ${summary} ${PROJECT_VERSION} ${output}
        DEPENDS ${source} ${CMAKE_SOURCE_DIR}/scripts/man_page.py VERBATIM)
    add_custom_target(manual_${name} ALL DEPENDS ${output})
    set_property(GLOBAL APPEND PROPERTY KVR2_MANUALS manual_${name})
    install(FILES ${output} DESTINATION ${CMAKE_INSTALL_MANDIR}/man7 COMPONENT ${component})
endfunction()

# kvr2_completion(SOURCE COMMAND COMPONENT): what bash completes after COMMAND.
function(kvr2_completion source command component)
    install(FILES ${source} DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions RENAME ${command} COMPONENT ${component})
endfunction()
