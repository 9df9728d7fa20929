// The static data of a loaded image, which can be put back.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace fuzz {

class Image {
 public:
    // The one in which the address lies.
    explicit Image(const void* address);

    std::vector<uint8_t> data() const;
    void put_back(std::span<const uint8_t> data) const;

    // The part of it that differs between some states, and all that was zero when it was loaded: what
    // changes.
    Image changing(std::span<const std::vector<uint8_t>> states) const;

 private:
    Image() = default;

    std::vector<std::span<uint8_t>> parts_;
    std::vector<std::span<uint8_t>> zero_parts_;
};

}  // namespace fuzz
