# How the targets of the library are made.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
find_package(Threads REQUIRED)

# The headers cost most of the time, so sources share them. The preset linux-debug does without: it
# compiles each source by itself, which finds missing includes and suits work on one file.
set(CMAKE_UNITY_BUILD ${OAK_UNITY})
set(CMAKE_UNITY_BUILD_BATCH_SIZE 12)

# A second compilation of the same text, in any build tree, costs nothing.
find_program(OAK_CCACHE ccache)
mark_as_advanced(OAK_CCACHE)
if(OAK_CCACHE AND NOT MSVC)
  foreach(language C CXX)
    if(NOT CMAKE_${language}_COMPILER_LAUNCHER)
      set(CMAKE_${language}_COMPILER_LAUNCHER ${OAK_CCACHE})
    endif()
  endforeach()
endif()

# What every target of ours is compiled with; not exported to users.
add_library(oak_options INTERFACE)
if(MSVC)
  target_compile_options(oak_options INTERFACE /W4 /utf-8 /permissive- /Zc:preprocessor
    $<$<BOOL:${OAK_WERROR}>:/WX>)
else()
  target_compile_options(oak_options INTERFACE -Wall -Wextra -Wpedantic -Wconversion
    $<$<BOOL:${OAK_WERROR}>:-Werror>)
  # With optimisation GCC 12 takes some joined strings for overlapping copies.
  target_compile_options(oak_options INTERFACE
    $<$<AND:$<CXX_COMPILER_ID:GNU>,$<VERSION_LESS:$<CXX_COMPILER_VERSION>,13>>:-Wno-restrict>)
endif()
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  # With optimisation this compiler sees overruns in inlined std::basic_string that are none.
  target_compile_options(oak_options INTERFACE -Wno-array-bounds -Wno-stringop-overflow
    -Wno-stringop-overread -Wno-restrict)
endif()
if(OAK_SANITIZE)
  target_compile_options(oak_options INTERFACE -fsanitize=${OAK_SANITIZE} -fno-omit-frame-pointer
    -fno-sanitize-recover=all)
  target_link_options(oak_options INTERFACE -fsanitize=${OAK_SANITIZE})
endif()

# oak_sources(<variable> <folder>): the folder's sources for the system that is built for.
function(oak_sources variable folder)
  file(GLOB sources CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/${folder}/*.cpp ${PROJECT_SOURCE_DIR}/${folder}/*.h)
  foreach(part portable windows headless win32)
    if((WIN32 AND part MATCHES "^(windows|win32|headless)$") OR (NOT WIN32 AND part MATCHES "^(portable|headless)$"))
      file(GLOB more CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/${folder}/${part}/*.cpp
        ${PROJECT_SOURCE_DIR}/${folder}/${part}/*.h)
      list(APPEND sources ${more})
    endif()
  endforeach()
  set(${variable} ${sources} PARENT_SCOPE)
endfunction()

# oak_library(<name> [DEPENDS <name>...]): the static library of the folder oak/<name>.
function(oak_library name)
  cmake_parse_arguments(arg "" "" "DEPENDS" ${ARGN})
  oak_sources(sources oak/${name})
  if(NOT sources MATCHES "\\.cpp")
    # A folder of headers only still is a library that others link.
    file(WRITE ${PROJECT_BINARY_DIR}/oak_${name}.cpp.in "namespace oak {}\n")
    configure_file(${PROJECT_BINARY_DIR}/oak_${name}.cpp.in ${PROJECT_BINARY_DIR}/oak_${name}.cpp COPYONLY)
    list(APPEND sources ${PROJECT_BINARY_DIR}/oak_${name}.cpp)
  endif()
  add_library(oak_${name} STATIC ${sources})
  target_include_directories(oak_${name} PUBLIC $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>
    $<INSTALL_INTERFACE:include>)
  target_compile_features(oak_${name} PUBLIC cxx_std_20)
  target_link_libraries(oak_${name} PRIVATE $<BUILD_INTERFACE:oak_options> PUBLIC Threads::Threads)
  foreach(dep ${arg_DEPENDS})
    target_link_libraries(oak_${name} PUBLIC oak_${dep})
  endforeach()
  if(WIN32 AND name STREQUAL "base")
    # Our headers show what Windows 10 declares; users see them the same way.
    target_compile_definitions(oak_${name} PUBLIC WINVER=0x0A00 _WIN32_WINNT=0x0A00
      NTDDI_VERSION=0x0A000000)
    target_link_libraries(oak_${name} PUBLIC propsys shlwapi shell32 ole32 oleaut32 uuid user32 advapi32 mpr
      gdi32 comctl32 uxtheme)
  endif()
  set_target_properties(oak_${name} PROPERTIES EXPORT_NAME ${name})
endfunction()

# The test kit, for our tests and for those of users.
function(oak_testkit)
  oak_sources(sources testkit)
  if(NOT sources)
    return()
  endif()
  add_library(oak_testkit STATIC ${sources})
  add_library(Oak::TestKit ALIAS oak_testkit)
  target_link_libraries(oak_testkit PUBLIC oak_shell PRIVATE $<BUILD_INTERFACE:oak_options>)
  set_target_properties(oak_testkit PROPERTIES EXPORT_NAME TestKit)
endfunction()

# oak_windows_program(<target>): embeds the manifest that a program with windows needs.
function(oak_windows_program target)
  if(WIN32)
    target_sources(${target} PRIVATE ${PROJECT_SOURCE_DIR}/oak/framework/win32/Oak.rc)
    if(MSVC)
      # Its linker would add one of its own.
      target_link_options(${target} PRIVATE /MANIFEST:NO)
    endif()
  endif()
endfunction()
