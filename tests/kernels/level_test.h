// Tests of kernels run once for each instruction-set level, held against the plain one.
#pragma once

#include <gtest/gtest.h>

#include "kernels/levels.h"
#include "tests/support/guarded.h"

class LevelTest : public testing::TestWithParam<kernels::Level> {
 protected:
    void SetUp() override {
        if (!GetParam().runs_here())
            GTEST_SKIP() << "NOT TESTED: this machine cannot run " << GetParam().name;
    }
    static const kernels::Kernels& fast() { return *GetParam().kernels; }
    static const kernels::Kernels& plain() { return *kernels::levels().back().kernels; }
};

// All levels but the plain one.
inline std::span<const kernels::Level> fast_levels() {
    return kernels::levels().first(kernels::levels().size() - 1);
}

#define LEVEL_TESTS(suite, levels)                                    \
    class suite : public LevelTest {};                                \
    INSTANTIATE_TEST_SUITE_P(Level, suite, testing::ValuesIn(levels), \
                             [](const auto& test) { return std::string(test.param.name); })
