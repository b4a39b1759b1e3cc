# Warnings for every target of the project; errors when ZELCT_WARNINGS_AS_ERRORS is on (CI).
function(zelct_set_warnings target)
    target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wformat=2
                                             -Wnon-virtual-dtor)
    if(CMAKE_SYSTEM_PROCESSOR MATCHES "^arm")
        # GCC notes an ABI change of GCC 7.1 on every vector insert; nothing we can act on.
        target_compile_options(${target} PRIVATE -Wno-psabi)
    endif()
    if(ZELCT_WARNINGS_AS_ERRORS)
        target_compile_options(${target} PRIVATE -Werror)
    endif()
endfunction()
