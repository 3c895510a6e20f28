# The toolchain of the preset x86_64-tsan. The thread sanitizer needs 64 bits.
set(CMAKE_C_COMPILER clang)
set(CMAKE_CXX_COMPILER clang++)
set(CMAKE_LIBRARY_ARCHITECTURE x86_64-linux-gnu)
set(ENV{PKG_CONFIG_LIBDIR} /usr/lib/x86_64-linux-gnu/pkgconfig:/usr/share/pkgconfig)
