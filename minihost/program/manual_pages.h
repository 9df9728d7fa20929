// The pages of docs/manual, which the build puts into the program.
#pragma once

#include <cstddef>

namespace minihost {

struct ManualPage {
    const char* name;
    const char* markdown;
};
extern const ManualPage kManualPages[];
extern const size_t kManualPageCount;

}  // namespace minihost
