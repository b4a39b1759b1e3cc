# Warnings for every target of the project; errors when ZELCT_WARNINGS_AS_ERRORS is on (CI).
function(zelct_set_warnings target)
    target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wformat=2
                                             -Wnon-virtual-dtor)
    if(ZELCT_WARNINGS_AS_ERRORS)
        target_compile_options(${target} PRIVATE -Werror)
    endif()
endfunction()
