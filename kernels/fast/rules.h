// The plain rules that fast forms fall back to.
namespace rule {
#include "kernels/plain/bits.h"
//
#include "kernels/plain/expand.h"
#include "kernels/plain/gather_bits.h"
}  // namespace rule
