# Reads rooms.txt into one list of folders a kind: KVR2_LIBRARY_ROOMS, KVR2_COMPANION_ROOMS,
# KVR2_PROGRAM_ROOMS. A room whose folder has no CMakeLists.txt holds headers only, or is not built
# yet. A folder with a CMakeLists.txt that the list does not name is an error.
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/cmake/rooms.txt)
file(STRINGS ${CMAKE_SOURCE_DIR}/cmake/rooms.txt rows REGEX "^[a-z]")
set(named messages) # data, not sources
foreach(row IN LISTS rows)
    string(REGEX MATCH "^([a-z/]+): +([a-z]+):" matched "${row}")
    if(NOT matched)
        message(FATAL_ERROR "cmake/rooms.txt: this is no room: ${row}")
    endif()
    set(room ${CMAKE_MATCH_1})
    string(TOUPPER ${CMAKE_MATCH_2} kind)
    list(APPEND named ${room})
    if(EXISTS ${CMAKE_SOURCE_DIR}/${room}/CMakeLists.txt)
        list(APPEND KVR2_${kind}_ROOMS ${room})
    endif()
endforeach()

file(GLOB folders RELATIVE ${CMAKE_SOURCE_DIR} ${CMAKE_SOURCE_DIR}/*/CMakeLists.txt ${CMAKE_SOURCE_DIR}/companions/*/CMakeLists.txt)
foreach(folder IN LISTS folders)
    get_filename_component(room ${folder} DIRECTORY)
    if(NOT room MATCHES "^build" AND NOT room IN_LIST named)
        message(FATAL_ERROR "${room}/ has a CMakeLists.txt and is not in cmake/rooms.txt")
    endif()
endforeach()
