// A shared library that is no bundle: it lacks the entry point. For Windows it calls the library that not
// every bundle needs; what is not called is not needed there.
#ifdef _WIN32
extern "C" __declspec(dllimport) unsigned timeGetTime();
#else
static unsigned timeGetTime() { return 1; }
#endif

extern "C" __attribute__((visibility("default"))) int no_entry_point() { return int(timeGetTime()); }
