# What `cmake --install` adds beside the libraries, their headers and
# zoldump: a CMake package (find_package(zol CONFIG) gives zol::zol, and
# zol::json with the component json) and the pkg-config files zol and
# zol-json. Both find the tree relative to their own place, so the
# installed tree may be moved.
include(CMakePackageConfigHelpers)

set(ZOL_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/zol)

install(EXPORT zolTargets NAMESPACE zol:: DESTINATION ${ZOL_CMAKE_DIR})
install(EXPORT zolJsonTargets NAMESPACE zol:: DESTINATION ${ZOL_CMAKE_DIR})
configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/zolConfig.cmake.in
  ${PROJECT_BINARY_DIR}/zolConfig.cmake
  INSTALL_DESTINATION ${ZOL_CMAKE_DIR})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/zolConfigVersion.cmake
  VERSION ${PROJECT_VERSION}
  COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/zolConfig.cmake ${PROJECT_BINARY_DIR}/zolConfigVersion.cmake
  DESTINATION ${ZOL_CMAKE_DIR})

# The prefix seen from the directory of the .pc files.
file(RELATIVE_PATH ZOL_PC_TO_PREFIX /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
string(REGEX REPLACE "/$" "" ZOL_PC_TO_PREFIX "${ZOL_PC_TO_PREFIX}")
foreach(pc zol zol-json)
  configure_file(${CMAKE_CURRENT_LIST_DIR}/${pc}.pc.in ${PROJECT_BINARY_DIR}/${pc}.pc @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/${pc}.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
endforeach()
