include(GNUInstallDirs)
include(${CMAKE_CURRENT_LIST_DIR}/zelCommonTypesJsonCpp.cmake)
