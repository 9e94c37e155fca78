# What all that ctest starts has in common.

enable_testing()

# Tests see a home of their own: desktop, documents and trash are those of HOME. Under Wine
# tools/wine_env sets it.
set(OAK_TEST_ENVIRONMENT)
if(NOT WIN32)
  set(oak_test_home ${PROJECT_BINARY_DIR}/home)
  file(MAKE_DIRECTORY ${oak_test_home})
  set(OAK_TEST_ENVIRONMENT "HOME=${oak_test_home}" "XDG_CONFIG_HOME=${oak_test_home}/.config"
    "XDG_DATA_HOME=${oak_test_home}/.local/share" "XDG_CACHE_HOME=${oak_test_home}/.cache"
    "LC_ALL=C.UTF-8")
endif()
