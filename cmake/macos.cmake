# The Mac itself: the plug-in folders only, against the system's frameworks. It cannot be tried on Linux.
set(CMAKE_OSX_ARCHITECTURES i386)
set(CMAKE_OSX_DEPLOYMENT_TARGET 10.6)
