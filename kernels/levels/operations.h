// All fast forms, inside the namespace of a level that has set up its vectors.
#include "kernels/fast/ends.h"
//
#include "kernels/fast/copy.h"
#include "kernels/fast/expand.h"
#include "kernels/fast/fill.h"
#include "kernels/fast/gather.h"
#include "kernels/fast/gather_bits.h"
#include "kernels/fast/groups.h"
#include "kernels/fast/minmax.h"
#include "kernels/fast/mirror.h"
#include "kernels/fast/polar.h"
#include "kernels/fast/scale.h"
#include "kernels/fast/search.h"
