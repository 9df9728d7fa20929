// The rules themselves.
#include <math.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "kernels/table.h"
#include "kernels/words.h"

namespace kernels::plain {
namespace {

#include "kernels/plain/bits.h"
#include "kernels/plain/copy.h"
#include "kernels/plain/expand.h"
#include "kernels/plain/fill.h"
#include "kernels/plain/gather.h"
#include "kernels/plain/gather_bits.h"
#include "kernels/plain/groups.h"
#include "kernels/plain/minmax.h"
#include "kernels/plain/mirror.h"
#include "kernels/plain/polar.h"
#include "kernels/plain/scale.h"
#include "kernels/plain/search.h"

}  // namespace

#include "kernels/levels/entries.h"

}  // namespace kernels::plain
