// A shared library without the entry point of a plug-in.
extern "C" __attribute__((visibility("default"))) int notAnEntryPoint() { return 0; }
