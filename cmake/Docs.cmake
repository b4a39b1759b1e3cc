# The API reference of the public headers (include/), made by Doxygen: target docs, HTML in
# <build>/docs/html, installed with the headers (component dev) into the documentation folder
# of libzelcommontypes-dev. Every public class, function, enumeration, type and field must be
# documented: any Doxygen warning fails the target (docs/Doxyfile.in says what is checked).
#
# The pages are plain HTML and CSS. Doxygen copies its JavaScript (jQuery, the dynamic
# sections, the menu data) whatever the settings; the header of docs/header.html loads none of
# it, and the target removes the files, so that no package carries a JavaScript library.
#
# Configuring needs no Doxygen, so that builds of these presets that only want the library or
# the tool (scripts/bench-memory.sh) work without it; building the target then fails and says
# what to install.
find_package(Doxygen)

set(ZELCT_DOCS_OUTPUT ${PROJECT_BINARY_DIR}/docs)
set(ZELCT_DOCS_HEADER ${PROJECT_SOURCE_DIR}/docs/header.html)
configure_file(${PROJECT_SOURCE_DIR}/docs/Doxyfile.in ${ZELCT_DOCS_OUTPUT}/Doxyfile @ONLY)
set(_zelct_docs_stamp ${ZELCT_DOCS_OUTPUT}/html.stamp)

if(DOXYGEN_FOUND)
    file(GLOB _zelct_public_headers CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/include/*.h)
    # The stamp is written only when Doxygen succeeded, so a failed run is run again by the
    # next build even though it left pages behind; the pages of the last run are removed
    # first, so no page of a class that is gone stays.
    add_custom_command(OUTPUT ${_zelct_docs_stamp}
        COMMAND ${CMAKE_COMMAND} -E rm -rf ${ZELCT_DOCS_OUTPUT}/html ${_zelct_docs_stamp}
        COMMAND Doxygen::doxygen ${ZELCT_DOCS_OUTPUT}/Doxyfile
        COMMAND ${CMAKE_COMMAND} -E rm -f ${ZELCT_DOCS_OUTPUT}/html/jquery.js
                ${ZELCT_DOCS_OUTPUT}/html/dynsections.js ${ZELCT_DOCS_OUTPUT}/html/menudata.js
        COMMAND ${CMAKE_COMMAND} -E touch ${_zelct_docs_stamp}
        DEPENDS ${_zelct_public_headers} ${ZELCT_DOCS_OUTPUT}/Doxyfile ${ZELCT_DOCS_HEADER}
        WORKING_DIRECTORY ${ZELCT_DOCS_OUTPUT}
        COMMENT "API reference (Doxygen, warnings as errors)"
        VERBATIM)
    add_custom_target(docs DEPENDS ${_zelct_docs_stamp})
else()
    message(STATUS "Doxygen not found: the target docs will fail (apt-get install doxygen)")
    add_custom_target(docs
        COMMAND ${CMAKE_COMMAND} -E echo "docs: Doxygen is not installed (apt-get install doxygen)"
        COMMAND ${CMAKE_COMMAND} -E false
        VERBATIM)
endif()

# Not part of the default build: the target is built on purpose (scripts/test.sh and
# scripts/packages.sh do). An install without it stops and names the command.
install(CODE "
    if(NOT EXISTS \"${_zelct_docs_stamp}\")
        message(FATAL_ERROR \"The API reference is not built: \"
                            \"cmake --build ${PROJECT_BINARY_DIR} --target docs\")
    endif()" COMPONENT dev)
install(DIRECTORY ${ZELCT_DOCS_OUTPUT}/html/
    DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/libzelcommontypes-dev/html COMPONENT dev)
# Registered with doc-base, as Debian's packages register their HTML manuals, under the name
# debhelper would give it (package.document).
install(FILES ${PROJECT_SOURCE_DIR}/packaging/doc-base
    DESTINATION ${CMAKE_INSTALL_DATADIR}/doc-base
    RENAME libzelcommontypes-dev.libzelcommontypes-dev-api COMPONENT dev)
