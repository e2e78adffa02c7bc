# The library's sources in batches where the sanitizers' builds compile them: a batch is what one folder
# has, and takes two thirds of the work. The default build compiles each source by itself, for what ships
# should not depend on its neighbours, and an #include that a source lacks is noticed.
#
# These use a name of their own that another source of their folder has, too. A build that says
# "redefinition" needs a line here, or another name in the source.
set(alone
    chardata/dbcs_text dateservices/time_services dateservices/writer datetime/range_check datetime/zvk_dateTime
    decimal/float_to_decimal decimal/zoned_compare decimal/zoned_divide decimal/zoned_increment decimal/zoned_multiply
    fileio/use_procedures frame/programs/program_manager frame/run_unit/program_entry intrinsics/hex_floats
    intrinsics/numval sort/release_return verbs/national_class_tests verbs/unstring xml/recognition)

set_target_properties(kvr2_objects PROPERTIES UNITY_BUILD ON UNITY_BUILD_MODE GROUP)
get_target_property(sources kvr2_objects SOURCES)
foreach(source IN LISTS sources)
    file(RELATIVE_PATH name ${CMAKE_SOURCE_DIR} ${source})
    string(REGEX REPLACE "/[^/]*$" "" folder ${name})
    string(REPLACE / _ folder ${folder})
    string(REGEX REPLACE "[.]cpp$" "" name ${name})
    if(NOT name IN_LIST alone)
        set_source_files_properties(${source} TARGET_DIRECTORY kvr2_objects PROPERTIES UNITY_GROUP ${folder})
    endif()
endforeach()
