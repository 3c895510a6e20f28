# The variables that a user of the preset macos-cross must set. This file runs before project(), so that CMake prints only
# the message if a variable is wrong.
set(KVX_MAC_SDK "" CACHE PATH "The SDK of the oldest supported system, MacOSX10.6.sdk")
set(KVX_LD64 "" CACHE FILEPATH "A linker for 32-bit Mach-O, ld64")
set(KVX_LIBCXX_HEADERS /usr/lib/llvm-14/include/c++/v1 CACHE PATH "The C++ library's headers; those of 10.6 predate C++17")
option(KVX_MAC_EARLY_SDK "The SDK lacks dispatch_get_global_queue, as the first ones of 10.6 do" OFF)
set(kvx_mac_runtime usr/lib/libstdc++.6.0.9.dylib usr/lib/libgcc_s.10.5.dylib)

function(refuse text)
  message(FATAL_ERROR " ${text}") # the blank keeps the message on one line
endfunction()

if(NOT KVX_MAC_SDK)
  refuse("KVX_MAC_SDK is not set: add -DKVX_MAC_SDK=FOLDER with the folder of MacOSX10.6.sdk")
endif()
foreach(library IN LISTS kvx_mac_runtime)
  if(NOT EXISTS ${KVX_MAC_SDK}/${library})
    refuse("KVX_MAC_SDK=${KVX_MAC_SDK}: ${library} is missing there; give the folder of a whole MacOSX10.6.sdk")
  endif()
endforeach()
if(NOT KVX_LD64)
  refuse("KVX_LD64 is not set: add -DKVX_LD64=PROGRAM with the path of a linker for 32-bit Mach-O")
elseif(NOT EXISTS ${KVX_LD64} OR IS_DIRECTORY ${KVX_LD64})
  refuse("KVX_LD64=${KVX_LD64}: no such program; give the path of a linker for 32-bit Mach-O")
endif()
if(NOT EXISTS ${KVX_LIBCXX_HEADERS}/cstddef)
  refuse("KVX_LIBCXX_HEADERS=${KVX_LIBCXX_HEADERS}: no C++ headers there; install the package libc++-14-dev")
endif()
