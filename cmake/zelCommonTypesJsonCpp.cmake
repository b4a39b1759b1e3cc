# Provides the target JsonCpp::JsonCpp: from jsoncpp's own CMake package where it is
# installed, else through pkg-config. Used by the build and by the installed package.
if(NOT TARGET JsonCpp::JsonCpp)
    find_package(jsoncpp CONFIG QUIET)
endif()
if(NOT TARGET JsonCpp::JsonCpp)
    find_package(PkgConfig REQUIRED)
    pkg_check_modules(ZELCT_JSONCPP REQUIRED IMPORTED_TARGET jsoncpp)
    add_library(JsonCpp::JsonCpp INTERFACE IMPORTED)
    set_target_properties(JsonCpp::JsonCpp PROPERTIES
        INTERFACE_LINK_LIBRARIES PkgConfig::ZELCT_JSONCPP)
endif()
