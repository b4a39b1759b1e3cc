# The gate of the API reference: Doxygen, with the reference's own settings, over a copy of the
# public headers. As they are, it must pass without a word; with the comment of one member
# removed (MoveAverage::minSizeReached), it must fail and name that member. So the docs target
# cannot pass a header that lacks a comment, whatever the settings come to say.
#   cmake -DDOXYGEN=... -DDOXYFILE=<build>/docs/Doxyfile -DHEADERS=<source>/include
#         -DWORK=<scratch folder> -P DocsGate.cmake
foreach(var DOXYGEN DOXYFILE HEADERS WORK)
    if(NOT DEFINED ${var})
        message(FATAL_ERROR "DocsGate.cmake: -D${var}=... is missing")
    endif()
endforeach()
if(NOT EXISTS "${DOXYGEN}")
    message(FATAL_ERROR "Doxygen is not installed (apt-get install doxygen)")
endif()

file(REMOVE_RECURSE ${WORK})
file(READ ${DOXYFILE} settings)
file(GLOB headers ${HEADERS}/*.h)

# Runs Doxygen over WORK/<name>/include into WORK/<name>/out; sets <name>_rc and <name>_log.
function(run_doxygen name)
    set(dir ${WORK}/${name})
    # Later settings replace earlier ones: the copy is read instead of the source tree.
    file(WRITE ${dir}/Doxyfile "${settings}
INPUT = ${dir}/include
INCLUDE_PATH = ${dir}/include
STRIP_FROM_PATH = ${dir}/include
STRIP_FROM_INC_PATH = ${dir}/include
OUTPUT_DIRECTORY = ${dir}/out
")
    execute_process(COMMAND ${DOXYGEN} ${dir}/Doxyfile WORKING_DIRECTORY ${dir}
        RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE err)
    set(${name}_rc ${rc} PARENT_SCOPE)
    set(${name}_log "${out}${err}" PARENT_SCOPE)
endfunction()

# The headers as they are.
file(COPY ${headers} DESTINATION ${WORK}/intact/include)
run_doxygen(intact)
if(NOT intact_rc EQUAL 0 OR NOT intact_log STREQUAL "")
    message(FATAL_ERROR "Doxygen does not pass the headers as they are (exit ${intact_rc}):\n"
                        "${intact_log}")
endif()

# The same headers, one member's comment removed.
file(COPY ${headers} DESTINATION ${WORK}/stripped/include)
set(header ${WORK}/stripped/include/MoveAverage.h)
file(READ ${header} text)
string(REGEX REPLACE "\n *///[^\n]*\n( *bool minSizeReached\\(\\);)" "\n\\1" stripped "${text}")
if(stripped STREQUAL text)
    message(FATAL_ERROR "MoveAverage.h has no comment on minSizeReached to remove")
endif()
file(WRITE ${header} "${stripped}")
run_doxygen(stripped)
set(expected "MoveAverage.h:[0-9]+: error: Member minSizeReached\\(\\) \\(function\\) ")
string(APPEND expected "of class MoveAverage is not documented")
if(stripped_rc EQUAL 0)
    message(FATAL_ERROR "Doxygen passes a header whose member has no comment:\n${stripped_log}")
endif()
if(NOT stripped_log MATCHES "${expected}")
    message(FATAL_ERROR "Doxygen failed, but not on the undocumented member:\n${stripped_log}")
endif()
message(STATUS "docs gate: the headers pass; without the comment of minSizeReached: exit "
               "${stripped_rc}, the member named")
file(REMOVE_RECURSE ${WORK})
