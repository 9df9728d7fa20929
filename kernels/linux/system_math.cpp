// The two functions whose newer versions in glibc differ from the first ones in how they report errors only:
// bound to the first ones, the bundle loads on every glibc since 2.17. Other C libraries have one version of
// each.
#include <features.h>

#if defined(__GLIBC__) && (defined(__x86_64__) || defined(__i386__) || defined(__aarch64__))
#if defined(__x86_64__)
#define FIRST_VERSION "GLIBC_2.2.5"
#elif defined(__i386__)
#define FIRST_VERSION "GLIBC_2.0"
#else
#define FIRST_VERSION "GLIBC_2.17"
#endif

extern "C" {
double first_log(double x);
float first_expf(float x);
__asm__(".symver first_log, log@" FIRST_VERSION);
__asm__(".symver first_expf, expf@" FIRST_VERSION);

double log(double x);
float expf(float x);
double log(double x) { return first_log(x); }
float expf(float x) { return first_expf(x); }
}
#endif
