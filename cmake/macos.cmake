# The toolchain on a Mac, for the preset macos. It builds only the plug-in folders, with the system's frameworks.
set(KVX_MAC ON)
set(CMAKE_OSX_ARCHITECTURES i386)
set(CMAKE_OSX_DEPLOYMENT_TARGET 10.6)
# Compile with the C++ headers of the build machine, but link the C++ library of 10.6 (docs/mac.md).
set(CMAKE_CXX_FLAGS_INIT "-stdlib=libc++")
set(CMAKE_SHARED_LINKER_FLAGS_INIT "-nostdlib++ -lstdc++")
set(CMAKE_MODULE_LINKER_FLAGS_INIT "-nostdlib++ -lstdc++")
