#include <vector>

#include "benchmarks/limit.h"

namespace bench {

extern const Limit kLimit16;
#ifdef __x86_64__
extern const Limit kLimit32;
extern const Limit kLimit64;
#endif

// Where 32 bytes can be had, 16 are no limit; 32 against 64 depends on size and alignment.
std::span<const Limit> limits() {
    static const std::vector<Limit> kHere = [] {
        std::vector<Limit> here;
#ifdef __x86_64__
        if (kLimit64.runs_here()) here.push_back(kLimit64);
        if (kLimit32.runs_here()) here.push_back(kLimit32);
#endif
        if (here.empty()) here.push_back(kLimit16);
        return here;
    }();
    return kHere;
}

}  // namespace bench
