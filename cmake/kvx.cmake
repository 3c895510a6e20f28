# Settings of all targets (language, warnings, arithmetic, sanitizers, output folders) and functions for tests.

set(CMAKE_C_STANDARD 11)
set(CMAKE_CXX_STANDARD 17)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_CXX_COMPILE_OPTIONS_PIE -fPIC) # because programs share precompiled headers with libraries
set(CMAKE_C_VISIBILITY_PRESET hidden)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)

# Libraries and programs lie directly in the build folder, under fixed names.
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR})
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR})
set(CMAKE_BUILD_RPATH_USE_ORIGIN ON)
set(CMAKE_BUILD_RPATH "$ORIGIN")

add_compile_options(-Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Wunused -Werror
                    -Wno-four-char-constants -fblocks -ffp-contract=off)
if(CMAKE_LIBRARY_ARCHITECTURE STREQUAL "i386-linux-gnu" OR KVX_MAC)
  add_compile_options(-msse3 -mfpmath=sse)   # SSE and not x87, because results must be bit-identical
endif()
if(KVX_MAC)
  add_compile_options(-Wno-deprecated-declarations) # later system headers deprecate functions of 10.6
endif()

if(KVX_SANITIZE)
  add_compile_options(-fsanitize=${KVX_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${KVX_SANITIZE})
  if(KVX_SANITIZE MATCHES "thread")
    # The blocks run-time calls these two functions, which a program with the sanitizer does not export by default.
    add_link_options(LINKER:--export-dynamic-symbol=__tsan_ignore_thread_begin
                     LINKER:--export-dynamic-symbol=__tsan_ignore_thread_end)
  endif()
endif()
if(KVX_FUZZ)
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()

set(KVX_PLUGIN_FOLDERS plugin coreaudio player auplayer soundstream listener)

if(NOT KVX_MAC)
  find_package(Threads REQUIRED)
  find_package(PkgConfig REQUIRED)
endif()

# kvx_package(NAME PACKAGE…): make the target kvx::NAME for pkg-config packages, if no other folder has made it.
function(kvx_package name)
  if(TARGET kvx::${name})
    return()
  endif()
  pkg_check_modules(${name} REQUIRED IMPORTED_TARGET GLOBAL ${ARGN})
  add_library(kvx::${name} ALIAS PkgConfig::${name})
endfunction()

# kvx::blocks: the blocks run-time, which is part of the system on a Mac. Its 64-bit and 32-bit packages cannot be
# installed together, so `scripts/setup --all` unpacks the 64-bit package into the build folder.
add_library(kvx_blocks INTERFACE)
add_library(kvx::blocks ALIAS kvx_blocks)
if(NOT KVX_MAC)
  find_library(KVX_BLOCKS_RUNTIME BlocksRuntime
               HINTS ${PROJECT_SOURCE_DIR}/build/blocks-amd64/usr/lib/${CMAKE_LIBRARY_ARCHITECTURE})
  if(NOT KVX_BLOCKS_RUNTIME)
    message(FATAL_ERROR "The blocks run-time is missing for ${CMAKE_LIBRARY_ARCHITECTURE}: run scripts/setup --all")
  endif()
  target_link_libraries(kvx_blocks INTERFACE ${KVX_BLOCKS_RUNTIME})
endif()

# Tests and their child processes run with suppressions of sanitizer reports about third-party libraries.
if(KVX_SANITIZE MATCHES "thread")
  set(KVX_TEST_SANITIZERS "TSAN_OPTIONS=set:suppressions=${PROJECT_SOURCE_DIR}/tests/thread_leaks_of_others.txt:print_suppressions=0")
else()
  set(KVX_TEST_SANITIZERS "LSAN_OPTIONS=set:suppressions=${PROJECT_SOURCE_DIR}/tests/leaks_of_others.txt:print_suppressions=0")
endif()

# kvx_precompile(TARGET HEADERS…): precompile these headers for all sources of the target.
function(kvx_precompile target)
  target_precompile_headers(${target} PRIVATE ${ARGN})
  target_compile_options(${target} PRIVATE "SHELL:-Xclang -fno-pch-timestamp") # no timestamp, so that equal headers give an equal file
endfunction()

# kvx_test_library(NAME STATIC|OBJECT SOURCES … [LIBRARIES …]): a library of sources that several test programs share.
# A program links only the used parts of a STATIC library, and all objects of an OBJECT library, such as a spy.
function(kvx_test_library name type)
  cmake_parse_arguments(arg "" "" "SOURCES;LIBRARIES" ${ARGN})
  add_library(${name} ${type} ${arg_SOURCES})
  target_link_libraries(${name} PUBLIC ${arg_LIBRARIES})
  target_precompile_headers(${name} REUSE_FROM kvx_test_headers)
endfunction()

# kvx_test(NAME [EXPORTS] SOURCES … [LIBRARIES …] [LOCK name]): one GoogleTest program. CTest runs each test in a separate
# process, so that process-wide state is fresh, and never runs two tests with the same LOCK at once. With EXPORTS,
# functions of the program replace functions of shared libraries. Tests play to the simulated device by default.
function(kvx_test name)
  cmake_parse_arguments(arg "EXPORTS" "LOCK" "SOURCES;LIBRARIES" ${ARGN})
  add_executable(${name} ${arg_SOURCES})
  target_link_libraries(${name} PRIVATE ${arg_LIBRARIES} testsupport kvx::gtest_main Threads::Threads)
  target_precompile_headers(${name} REUSE_FROM kvx_test_headers)
  set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/tests
                                           BUILD_RPATH "$ORIGIN/.." ENABLE_EXPORTS ${arg_EXPORTS})
  # gtest_discover_tests drops empty values and splits lists, so each property has one non-empty value.
  set(properties TIMEOUT 120 ENVIRONMENT KVX_AUDIO_DEVICE=simulated
                 ENVIRONMENT_MODIFICATION ${KVX_TEST_SANITIZERS})
  if(arg_LOCK)
    list(APPEND properties RESOURCE_LOCK ${arg_LOCK} COST 100) # CTest starts tests of high COST first: this is the longest sequence
  endif()
  gtest_discover_tests(${name} DISCOVERY_MODE PRE_TEST DISCOVERY_TIMEOUT 60 PROPERTIES ${properties})
endfunction()
