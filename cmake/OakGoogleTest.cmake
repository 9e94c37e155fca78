# GTest::gmock_main, from the system's package or, where that was built for another system, from
# the sources that Debian's package "googletest" installs.

if(TARGET GTest::gmock_main)
  return()
endif()
if(NOT CMAKE_CROSSCOMPILING)
  find_package(GTest)
endif()
if(NOT TARGET GTest::gmock_main)
  set(OAK_GOOGLETEST_SOURCE /usr/src/googletest CACHE PATH "Sources of GoogleTest")
  if(NOT EXISTS ${OAK_GOOGLETEST_SOURCE}/CMakeLists.txt)
    message(FATAL_ERROR "GoogleTest is missing: install libgtest-dev and libgmock-dev or set "
      "OAK_GOOGLETEST_SOURCE to its sources (package googletest)")
  endif()
  set(INSTALL_GTEST OFF CACHE BOOL "" FORCE)
  set(gtest_force_shared_crt ON CACHE BOOL "" FORCE)
  add_subdirectory(${OAK_GOOGLETEST_SOURCE} ${PROJECT_BINARY_DIR}/googletest EXCLUDE_FROM_ALL SYSTEM)
  if(NOT TARGET GTest::gmock_main)
    add_library(GTest::gmock_main ALIAS gmock_main)
  endif()
endif()
