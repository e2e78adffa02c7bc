# What `cmake --install` takes, without tests, benchmarks and examples: the target `installable`.

# kvr2_install(TARGET ...): installs it as install(TARGETS) does, and makes it part of `installable`.
function(kvr2_install target)
    install(TARGETS ${target} ${ARGN})
    set_property(GLOBAL APPEND PROPERTY KVR2_INSTALLED ${target})
endfunction()
