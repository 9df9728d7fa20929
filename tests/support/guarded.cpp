#include "tests/support/guarded.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <string>

#include "tests/support/system.h"

#ifdef SANITIZED
#include <sanitizer/asan_interface.h>
#else
#define ASAN_POISON_MEMORY_REGION(bytes, size) (static_cast<void>(bytes), static_cast<void>(size))
#define ASAN_UNPOISON_MEMORY_REGION(bytes, size) (static_cast<void>(bytes), static_cast<void>(size))
#endif

namespace {

constexpr uint8_t kPattern = 0xA5;

// Mappings of this size and below are kept for the next bytes that need as many pages.
constexpr size_t kKept = 1 << 16;

std::vector<uint8_t*>& kept(size_t accessible) {
    static std::map<size_t, std::vector<uint8_t*>> mappings;
    return mappings[accessible];
}

std::string two_digits(uint8_t byte) {
    char text[3];
    std::snprintf(text, sizeof text, "%02x", byte);
    return text;
}

uint32_t seed_of_run() {
    static const uint32_t number = [] {
        const auto given = uint32_t(std::max(1, GTEST_FLAG_GET(random_seed)));
        std::printf("Random numbers: --gtest_random_seed=%u\n", given);
        return given;
    }();
    return number;
}

}  // namespace

Random::Random() : std::minstd_rand(seed_of_run()) {}

size_t rounds(size_t all) {
    static const size_t every = [] {
        const char* asked = std::getenv("SWEEP_EVERY");
        return asked ? std::stoul(asked) : 1;
    }();
    return (all + every - 1) / every;
}

GuardedBytes::GuardedBytes(size_t size, Side side) : size_(size) {
    const size_t page = page_size();
    accessible_ = std::max<size_t>(1, (size + page - 1) / page) * page;
    std::vector<uint8_t*>& mappings = kept(accessible_);
    if (mappings.empty()) {
        pages_ = map_guarded(accessible_);
    } else {
        pages_ = mappings.back();
        mappings.pop_back();
        std::fill(pages_, pages_ + accessible_, uint8_t(0));
    }
    data_ = side == kStart ? pages_ : pages_ + accessible_ - size;
    std::fill(pages_, data_, kPattern);
    std::fill(data_ + size, pages_ + accessible_, kPattern);
    set_touchable_around(false);
}

GuardedBytes::GuardedBytes(size_t size, Side side, Random& random) : GuardedBytes(size, side) {
    for (uint8_t& byte : bytes()) byte = uint8_t(random() >> 8);
}

GuardedBytes::GuardedBytes(const std::vector<uint8_t>& bytes, Side side) : GuardedBytes(bytes.size(), side) {
    std::ranges::copy(bytes, data_);
}

GuardedBytes::~GuardedBytes() {
    set_touchable_around(true);
    if (accessible_ <= kKept) {
        kept(accessible_).push_back(pages_);
    } else {
        unmap_guarded(pages_, accessible_);
    }
}

void GuardedBytes::set_touchable_around(bool touchable) const {
    if (touchable) {
        ASAN_UNPOISON_MEMORY_REGION(pages_, accessible_);
    } else {
        ASAN_POISON_MEMORY_REGION(pages_, size_t(data_ - pages_));
        ASAN_POISON_MEMORY_REGION(data_ + size_, size_t(pages_ + accessible_ - data_) - size_);
    }
}

testing::AssertionResult GuardedBytes::untouched_around() const {
    set_touchable_around(true);
    const testing::AssertionResult result = pattern_is_there();
    set_touchable_around(false);
    return result;
}

testing::AssertionResult GuardedBytes::pattern_is_there() const {
    for (const uint8_t* at = pages_; at < pages_ + accessible_; ++at) {
        if (at == data_) at += size_;
        if (at < pages_ + accessible_ && *at != kPattern) {
            return testing::AssertionFailure() << "the byte at offset " << at - data_ << ", outside the "
                                               << size_ << " bytes, became " << two_digits(*at);
        }
    }
    return testing::AssertionSuccess();
}

testing::AssertionResult same_bytes(std::span<const uint8_t> actual, std::span<const uint8_t> expected) {
    if (actual.size() != expected.size()) {
        return testing::AssertionFailure() << actual.size() << " bytes instead of " << expected.size();
    }
    if (std::ranges::equal(actual, expected)) return testing::AssertionSuccess();
    testing::AssertionResult result = testing::AssertionFailure() << "these bytes differ:";
    int shown = 0;
    for (size_t i = 0; i < actual.size() && shown < 12; ++i) {
        if (actual[i] == expected[i]) continue;
        result << "\n  offset " << i << ": " << two_digits(actual[i]) << " instead of "
               << two_digits(expected[i]);
        ++shown;
    }
    return result;
}

std::vector<uint8_t> hex(std::string_view text) {
    std::vector<uint8_t> bytes;
    for (size_t i = 0; i + 1 < text.size(); i += text[i] == ' ' ? 1u : 2u) {
        if (text[i] != ' ') bytes.push_back(uint8_t(std::stoi(std::string(text.substr(i, 2)), nullptr, 16)));
    }
    return bytes;
}
