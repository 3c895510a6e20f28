# The Mac itself: the plug-in folders only, against the system's frameworks. It cannot be tried on Linux.
set(KVX_MAC ON)
set(CMAKE_OSX_ARCHITECTURES i386)
set(CMAKE_OSX_DEPLOYMENT_TARGET 10.6)
# New headers, old library: see docs/mac.md.
set(CMAKE_CXX_FLAGS_INIT "-stdlib=libc++")
set(CMAKE_SHARED_LINKER_FLAGS_INIT "-nostdlib++ -lstdc++")
set(CMAKE_MODULE_LINKER_FLAGS_INIT "-nostdlib++ -lstdc++")
