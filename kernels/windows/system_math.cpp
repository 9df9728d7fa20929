// The functions of the C library that every Windows has, under the names by which the kernels call them:
// mingw-w64 would give them functions of its own. On 32-bit x86 that library has most of them for doubles
// only, and its headers make the others of these.
#define SYSTEM(type) extern "C" __declspec(dllimport) type

SYSTEM(double) system_log(double x) __asm__("log");
extern "C" double log(double x) { return system_log(x); }

#ifdef __x86_64__
SYSTEM(float) system_sinf(float x) __asm__("sinf");
SYSTEM(float) system_cosf(float x) __asm__("cosf");
SYSTEM(float) system_expf(float x) __asm__("expf");
SYSTEM(float) system_atan2f(float y, float x) __asm__("atan2f");
extern "C" float sinf(float x) { return system_sinf(x); }
extern "C" float cosf(float x) { return system_cosf(x); }
extern "C" float expf(float x) { return system_expf(x); }
extern "C" float atan2f(float y, float x) { return system_atan2f(y, x); }
#else
SYSTEM(double) system_sin(double x) __asm__("sin");
SYSTEM(double) system_cos(double x) __asm__("cos");
SYSTEM(double) system_exp(double x) __asm__("exp");
SYSTEM(double) system_atan2(double y, double x) __asm__("atan2");
extern "C" float sinf(float x) { return float(system_sin(double(x))); }
extern "C" float cosf(float x) { return float(system_cos(double(x))); }
extern "C" float expf(float x) { return float(system_exp(double(x))); }
extern "C" float atan2f(float y, float x) { return float(system_atan2(double(y), double(x))); }
#endif
