# The toolchain for a Mac library on Linux: clang compiles with the user's 10.6 SDK, and a custom command in
# plugin/CMakeLists.txt links the objects with the user's Mach-O linker.
set(KVX_MAC ON)
set(CMAKE_SYSTEM_NAME Generic)
set(CMAKE_SYSTEM_PROCESSOR i386)
set(CMAKE_C_COMPILER clang)
set(CMAKE_CXX_COMPILER clang++)
set(CMAKE_TRY_COMPILE_TARGET_TYPE STATIC_LIBRARY) # because CMake has no linker for its trial programs
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES KVX_MAC_SDK KVX_LIBCXX_HEADERS)
set(CMAKE_C_FLAGS_INIT "-target i386-apple-macosx10.6 -isysroot \"${KVX_MAC_SDK}\"")
set(CMAKE_CXX_FLAGS_INIT "${CMAKE_C_FLAGS_INIT} -nostdinc++ -isystem \"${KVX_LIBCXX_HEADERS}\" -fno-constant-cfstrings")
