# Installs the library (with its SONAME link), the headers under include/zelCommonTypes/,
# a CMake package with exported targets and a pkg-config file.
include(CMakePackageConfigHelpers)

set(ZELCT_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/zelCommonTypes)

install(TARGETS zelCommonTypes EXPORT zelCommonTypesTargets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT dev)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/
    DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/zelCommonTypes COMPONENT dev)
install(EXPORT zelCommonTypesTargets NAMESPACE zelCommonTypes::
    DESTINATION ${ZELCT_CMAKE_DIR} COMPONENT dev)

# The check library, when the tool's engine is built: a component of the same package
# (find_package(zelCommonTypes COMPONENTS check)), with a pkg-config file of its own.
if(TARGET zelCommonTypesCheck)
    install(TARGETS zelCommonTypesCheck EXPORT zelCommonTypesCheckTargets
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT check NAMELINK_COMPONENT dev)
    install(EXPORT zelCommonTypesCheckTargets NAMESPACE zelCommonTypes::
        DESTINATION ${ZELCT_CMAKE_DIR} COMPONENT dev)
endif()

configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/zelCommonTypesConfig.cmake.in
    ${PROJECT_BINARY_DIR}/zelCommonTypesConfig.cmake INSTALL_DESTINATION ${ZELCT_CMAKE_DIR})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/zelCommonTypesConfigVersion.cmake
    VERSION ${PROJECT_VERSION} COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/zelCommonTypesConfig.cmake
              ${PROJECT_BINARY_DIR}/zelCommonTypesConfigVersion.cmake
              ${PROJECT_SOURCE_DIR}/cmake/zelCommonTypesJsonCpp.cmake
    DESTINATION ${ZELCT_CMAKE_DIR} COMPONENT dev)

# Relative to the .pc file, so that an installed tree can be moved (staging, dpkg --root).
file(RELATIVE_PATH ZELCT_PC_TO_PREFIX ${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_LIBDIR}/pkgconfig
     ${CMAKE_INSTALL_PREFIX})
string(REGEX REPLACE "/$" "" ZELCT_PC_TO_PREFIX "${ZELCT_PC_TO_PREFIX}")
configure_file(${PROJECT_SOURCE_DIR}/cmake/zelCommonTypes.pc.in
    ${PROJECT_BINARY_DIR}/zelCommonTypes.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/zelCommonTypes.pc
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT dev)

if(TARGET zelCommonTypesCheck)
    get_target_property(ZELCT_CHECK_VERSION zelCommonTypesCheck VERSION)
    configure_file(${PROJECT_SOURCE_DIR}/cmake/zelCommonTypesCheck.pc.in
        ${PROJECT_BINARY_DIR}/zelCommonTypesCheck.pc @ONLY)
    install(FILES ${PROJECT_BINARY_DIR}/zelCommonTypesCheck.pc
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT dev)
endif()
