# What every target of the tree shares: language, warnings, arithmetic, sanitizers, output folders.

set(CMAKE_C_STANDARD 11)
set(CMAKE_CXX_STANDARD 17)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_C_VISIBILITY_PRESET hidden)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)

# Artefacts stand at the top of the build folder, under fixed names.
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR})
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR})
set(CMAKE_BUILD_RPATH_USE_ORIGIN ON)
set(CMAKE_BUILD_RPATH "$ORIGIN")

add_compile_options(-Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Wunused -Werror
                    -Wno-four-char-constants -fblocks -ffp-contract=off)
if(CMAKE_LIBRARY_ARCHITECTURE STREQUAL "i386-linux-gnu" OR KVX_MAC)
  add_compile_options(-msse3 -mfpmath=sse)   # never x87: results must be the same to the last bit
endif()
if(KVX_MAC)
  add_compile_options(-Wno-deprecated-declarations) # the platform's calls of 10.6 are deprecated in later headers
endif()

if(KVX_SANITIZE)
  add_compile_options(-fsanitize=${KVX_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${KVX_SANITIZE})
  if(KVX_SANITIZE MATCHES "thread")
    # What the library calls where blocks are copied; programs hold these two and do not offer them.
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

# kvx_package(NAME PACKAGE…): an imported target kvx::NAME for packages that pkg-config knows. Several folders may ask.
function(kvx_package name)
  if(TARGET kvx::${name})
    return()
  endif()
  pkg_check_modules(${name} REQUIRED IMPORTED_TARGET GLOBAL ${ARGN})
  add_library(kvx::${name} ALIAS PkgConfig::${name})
endfunction()

# kvx::blocks: the run-time of blocks, part of the system on a Mac. Here its 64-bit form cannot be installed beside
# the 32-bit one, so `scripts/setup --all` unpacks it into the build folder.
add_library(kvx_blocks INTERFACE)
add_library(kvx::blocks ALIAS kvx_blocks)
if(NOT KVX_MAC)
  find_library(KVX_BLOCKS_RUNTIME BlocksRuntime
               HINTS ${PROJECT_SOURCE_DIR}/build/blocks-amd64/usr/lib/${CMAKE_LIBRARY_ARCHITECTURE})
  if(NOT KVX_BLOCKS_RUNTIME)
    message(FATAL_ERROR "The run-time of blocks is missing for ${CMAKE_LIBRARY_ARCHITECTURE}: run scripts/setup --all")
  endif()
  target_link_libraries(kvx_blocks INTERFACE ${KVX_BLOCKS_RUNTIME})
endif()

# Sanitizer suppressions for tests and their child processes: leaks of third-party libraries.
if(KVX_SANITIZE MATCHES "thread")
  set(KVX_TEST_SANITIZERS "TSAN_OPTIONS=set:suppressions=${PROJECT_SOURCE_DIR}/tests/thread_leaks_of_others.txt:print_suppressions=0")
else()
  set(KVX_TEST_SANITIZERS "LSAN_OPTIONS=set:suppressions=${PROJECT_SOURCE_DIR}/tests/leaks_of_others.txt:print_suppressions=0")
endif()

# kvx_test(NAME SOURCES … [LIBRARIES …] [LABELS label] [TIMEOUT seconds] [LOCK what]): one GoogleTest program; CTest
# runs each of its tests in a process of its own, so that process-wide state starts fresh; those that name the same
# LOCK run one at a time. They play to the simulated
# device, unless they say otherwise.
function(kvx_test name)
  cmake_parse_arguments(arg "" "TIMEOUT;LABELS;LOCK" "SOURCES;LIBRARIES" ${ARGN})
  if(NOT arg_TIMEOUT)
    set(arg_TIMEOUT 120)
  endif()
  add_executable(${name} ${arg_SOURCES})
  target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR})
  target_link_libraries(${name} PRIVATE ${arg_LIBRARIES} kvx::gtest_main Threads::Threads)
  target_compile_definitions(${name} PRIVATE KVX_SOURCE_DIR="${PROJECT_SOURCE_DIR}"
                                             KVX_BINARY_DIR="${CMAKE_BINARY_DIR}")
  set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/tests
                                           BUILD_RPATH "$ORIGIN/..")
  # The discovery drops empty values and takes lists apart: one value each, and none that is empty.
  set(properties TIMEOUT ${arg_TIMEOUT} ENVIRONMENT KVX_AUDIO_DEVICE=simulated
                 ENVIRONMENT_MODIFICATION ${KVX_TEST_SANITIZERS})
  if(arg_LABELS)
    list(APPEND properties LABELS ${arg_LABELS})
  endif()
  if(arg_LOCK)
    list(APPEND properties RESOURCE_LOCK ${arg_LOCK})
  endif()
  gtest_discover_tests(${name} DISCOVERY_MODE PRE_TEST DISCOVERY_TIMEOUT 60 PROPERTIES ${properties})
endfunction()
