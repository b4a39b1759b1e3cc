# Debian packages: libzelcommontypes1 (library), libzelcommontypescheck1 (the check library,
# which daemons that do not check never install), libzelcommontypes-dev (headers, CMake and
# pkg-config files of both, the API reference of cmake/Docs.cmake) and zelct (the tool), each with its
# copyright file and changelog, the binaries stripped and their debug symbols in -dbgsym
# packages found by build-id, and the dependencies on shared libraries computed by
# dpkg-shlibdeps. The board's flash holds the stripped packages alone.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME zelcommontypes)
set(CPACK_PACKAGE_VENDOR "Zel")
set(CPACK_PACKAGE_CONTACT "Zel device software team <device-software@zel.invalid>")
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_DESCRIPTION}")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL runtime check dev tool)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION libs)
if(CMAKE_CROSSCOMPILING AND CMAKE_SYSTEM_PROCESSOR MATCHES "^arm")
    set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE armhf)
endif()

set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# zelct links the library of this very build, which no installed package describes yet.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR})
# A shlibs file for the library (ldconfig trigger with it): packages built against it depend
# on at least this version.
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
set(CPACK_DEBIAN_DEBUGINFO_PACKAGE ON)

set(_zelct_exact "(= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME libzelcommontypes1)
set(CPACK_DEBIAN_CHECK_PACKAGE_NAME libzelcommontypescheck1)
set(CPACK_DEBIAN_CHECK_PACKAGE_DEPENDS "libzelcommontypes1 ${_zelct_exact}")
set(CPACK_DEBIAN_DEV_PACKAGE_NAME libzelcommontypes-dev)
set(CPACK_DEBIAN_DEV_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEV_PACKAGE_DEPENDS
    "libzelcommontypes1 ${_zelct_exact}, libzelcommontypescheck1 ${_zelct_exact}, libjsoncpp-dev (>= 1.9.5)")
set(CPACK_DEBIAN_TOOL_PACKAGE_NAME zelct)
set(CPACK_DEBIAN_TOOL_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_TOOL_PACKAGE_DEPENDS "libzelcommontypes1 ${_zelct_exact}")
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION "Common data types of the media-over-IP device (library)")
set(CPACK_COMPONENT_CHECK_DESCRIPTION "Common data types of the media-over-IP device (document check library)")
set(CPACK_COMPONENT_DEV_DESCRIPTION "Common data types of the media-over-IP device (development files)")
set(CPACK_COMPONENT_TOOL_DESCRIPTION "zelct: checks and explains device JSON documents")

# The changelog as Debian keeps a native package's (gzip -9n: no name, no time, so every build
# writes the same bytes), and the copyright file, in each package's documentation folder.
set(_zelct_changelog ${PROJECT_BINARY_DIR}/packaging/changelog.gz)
add_custom_command(OUTPUT ${_zelct_changelog}
    COMMAND ${CMAKE_COMMAND} -E make_directory ${PROJECT_BINARY_DIR}/packaging
    COMMAND sh -c "gzip -9nc '${PROJECT_SOURCE_DIR}/packaging/changelog' > '${_zelct_changelog}'"
    DEPENDS ${PROJECT_SOURCE_DIR}/packaging/changelog
    VERBATIM)
add_custom_target(zelct_changelog ALL DEPENDS ${_zelct_changelog})
foreach(_component runtime check dev tool)
    string(TOUPPER ${_component} _upper)
    install(FILES ${PROJECT_SOURCE_DIR}/packaging/copyright ${_zelct_changelog}
        DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${CPACK_DEBIAN_${_upper}_PACKAGE_NAME}
        COMPONENT ${_component})
endforeach()
include(CPack)
