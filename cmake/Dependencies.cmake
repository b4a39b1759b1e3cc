# jsoncpp: Debian ships a CMake package; fall back to pkg-config where it is missing.
include(GNUInstallDirs)
find_package(jsoncpp CONFIG QUIET)
if(NOT TARGET JsonCpp::JsonCpp)
    find_package(PkgConfig REQUIRED)
    pkg_check_modules(JSONCPP REQUIRED IMPORTED_TARGET jsoncpp)
    add_library(JsonCpp::JsonCpp INTERFACE IMPORTED)
    set_target_properties(JsonCpp::JsonCpp PROPERTIES INTERFACE_LINK_LIBRARIES PkgConfig::JSONCPP)
endif()
