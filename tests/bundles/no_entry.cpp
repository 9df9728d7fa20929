// A shared library that is no bundle: it lacks the entry point.
extern "C" __attribute__((visibility("default"))) int no_entry_point() { return 1; }
