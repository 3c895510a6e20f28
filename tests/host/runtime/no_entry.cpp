// A shared library that lacks the entry point of a plug-in.
extern "C" __attribute__((visibility("default"))) int notAnEntryPoint() { return 0; }
