# What `cmake --install` puts in place, so that users write find_package(Oak).

include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set(oak_installed oak_shell oak_base oak_platform oak_framework oak_namespace)
foreach(optional oak_threading oak_coordination oak_views oak_navigation oak_hosted oak_preview
    oak_operations oak_testkit)
  if(TARGET ${optional})
    list(APPEND oak_installed ${optional})
  endif()
endforeach()

install(TARGETS ${oak_installed} EXPORT OakTargets
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
  INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})

# Headers keep their folders: users include "oak/namespace/OakItemIdList.h" as we do.
install(DIRECTORY ${PROJECT_SOURCE_DIR}/oak DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
  FILES_MATCHING PATTERN "*.h" PATTERN "*.inc" PATTERN "*.rc" PATTERN "*.manifest")
if(TARGET oak_testkit)
  install(DIRECTORY ${PROJECT_SOURCE_DIR}/testkit DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
    FILES_MATCHING PATTERN "*.h")
endif()

set(oak_package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/Oak)
install(EXPORT OakTargets NAMESPACE Oak:: DESTINATION ${oak_package_dir})
configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/OakConfig.cmake.in
  ${PROJECT_BINARY_DIR}/OakConfig.cmake INSTALL_DESTINATION ${oak_package_dir})
# Nothing is promised between minor versions before 1.0.
write_basic_package_version_file(${PROJECT_BINARY_DIR}/OakConfigVersion.cmake
  COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/OakConfig.cmake ${PROJECT_BINARY_DIR}/OakConfigVersion.cmake
  DESTINATION ${oak_package_dir})
