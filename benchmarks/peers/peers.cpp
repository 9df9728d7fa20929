#include "benchmarks/peers/peers.h"

// The libraries' headers are not written for this project's warnings.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wold-style-cast"
#ifdef HAVE_STRINGZILLA
#include <stringzilla/stringzilla.h>
#endif
#ifdef HAVE_ISAL
#include <isa-l.h>
#endif
#ifdef HAVE_VOLK
#include <volk/volk.h>
#endif
#ifdef HAVE_OPENCV
#include <opencv2/core.hpp>
#endif
#pragma GCC diagnostic pop

namespace bench::peers {

#ifdef HAVE_STRINGZILLA
namespace {
sz_cptr_t chars(const uint8_t* bytes) { return reinterpret_cast<sz_cptr_t>(bytes); }
sz_ptr_t chars(uint8_t* bytes) { return reinterpret_cast<sz_ptr_t>(bytes); }
size_t index(const char* found, const uint8_t* data) {
    return found ? size_t(found - chars(data)) : SIZE_MAX;
}
}  // namespace
FindByte* const stringzilla_find_byte = [](const uint8_t* data, size_t n, uint8_t value) {
    return index(sz_find_byte(chars(data), n, chars(&value)), data);
};
Find* const stringzilla_find = [](const uint8_t* haystack, size_t n, const uint8_t* needle, size_t m) {
    return index(sz_find(chars(haystack), n, chars(needle), m), haystack);
};
bool (*const stringzilla_equal)(const uint8_t*, const uint8_t*,
                                size_t) = [](const uint8_t* first, const uint8_t* second, size_t n) {
    return sz_equal(chars(first), chars(second), n) == sz_true_k;
};
void (*const stringzilla_copy)(uint8_t*, const uint8_t*, size_t) = [](uint8_t* destination,
                                                                      const uint8_t* source, size_t n) {
    sz_copy(chars(destination), chars(source), n);
};
void (*const stringzilla_move)(uint8_t*, const uint8_t*, size_t) = [](uint8_t* destination,
                                                                      const uint8_t* source, size_t n) {
    sz_move(chars(destination), chars(source), n);
};
void (*const stringzilla_fill)(uint8_t*, size_t, uint8_t) = [](uint8_t* data, size_t n, uint8_t value) {
    sz_fill(chars(data), n, value);
};
void (*const stringzilla_lookup)(uint8_t*, size_t, const uint8_t (&)[256]) = [](uint8_t* data, size_t n,
                                                                                const uint8_t (&table)[256]) {
    sz_lookup(chars(data), n, chars(data), chars(table));
};
#else
FindByte* const stringzilla_find_byte = nullptr;
Find* const stringzilla_find = nullptr;
bool (*const stringzilla_equal)(const uint8_t*, const uint8_t*, size_t) = nullptr;
void (*const stringzilla_copy)(uint8_t*, const uint8_t*, size_t) = nullptr;
void (*const stringzilla_move)(uint8_t*, const uint8_t*, size_t) = nullptr;
void (*const stringzilla_fill)(uint8_t*, size_t, uint8_t) = nullptr;
void (*const stringzilla_lookup)(uint8_t*, size_t, const uint8_t (&)[256]) = nullptr;
#endif

#ifdef HAVE_MEMCHR_CRATE
extern "C" size_t memchr_crate_byte(const uint8_t* data, size_t n, uint8_t value);
extern "C" size_t memchr_crate_bytes(const uint8_t* haystack, size_t n, const uint8_t* needle, size_t m);
FindByte* const memchr_crate_find_byte = memchr_crate_byte;
Find* const memchr_crate_find = memchr_crate_bytes;
#else
FindByte* const memchr_crate_find_byte = nullptr;
Find* const memchr_crate_find = nullptr;
#endif

#ifdef HAVE_ISAL
bool (*const isal_all_zero)(const uint8_t*, size_t) = [](const uint8_t* data, size_t n) {
    return isal_zero_detect(const_cast<uint8_t*>(data), n) == 0;
};
#else
bool (*const isal_all_zero)(const uint8_t*, size_t) = nullptr;
#endif

#ifdef HAVE_VOLK
Update* const volk_swap16 = [](uint8_t* data, size_t n) {
    volk_16u_byteswap(reinterpret_cast<uint16_t*>(data), unsigned(n / 2));
};
Update* const volk_swap32 = [](uint8_t* data, size_t n) {
    volk_32u_byteswap(reinterpret_cast<uint32_t*>(data), unsigned(n / 4));
};
#else
Update* const volk_swap16 = nullptr;
Update* const volk_swap32 = nullptr;
#endif

#ifdef HAVE_OPENCV
namespace {

cv::Mat row(const uint8_t* data, size_t bytes, int type = CV_8U) {
    return {1, int(bytes) / CV_ELEM_SIZE(type), type, const_cast<uint8_t*>(data)};
}

template <int Type>
void minimum(uint8_t* destination, const uint8_t* first, const uint8_t* second, size_t n) {
    cv::Mat result = row(destination, n, Type);
    cv::min(row(first, n, Type), row(second, n, Type), result);
}

template <int Type>
void maximum(uint8_t* destination, const uint8_t* first, const uint8_t* second, size_t n) {
    cv::Mat result = row(destination, n, Type);
    cv::max(row(first, n, Type), row(second, n, Type), result);
}

template <int Type>
void scale(uint8_t* samples, size_t bytes, double factor) {
    cv::Mat all = row(samples, bytes, Type);
    all.convertTo(all, Type, factor);
}

}  // namespace
Update* const opencv_invert = [](uint8_t* data, size_t n) {
    cv::Mat all = row(data, n);
    cv::bitwise_not(all, all);
};
Update* const opencv_reverse = [](uint8_t* data, size_t n) {
    cv::Mat all = row(data, n);
    cv::flip(all, all, 1);
};
Combine* const opencv_minimum[8] = {minimum<CV_8U>, minimum<CV_8S>,  minimum<CV_16U>, minimum<CV_16S>,
                                    nullptr,        minimum<CV_32S>, nullptr,         nullptr};
Combine* const opencv_maximum[8] = {maximum<CV_8U>, maximum<CV_8S>,  maximum<CV_16U>, maximum<CV_16S>,
                                    nullptr,        maximum<CV_32S>, nullptr,         nullptr};
void (*const opencv_scale8)(uint8_t*, size_t, double) = scale<CV_8U>;
void (*const opencv_scale16)(uint8_t*, size_t, double) = scale<CV_16U>;
#else
Update* const opencv_invert = nullptr;
Update* const opencv_reverse = nullptr;
Combine* const opencv_minimum[8] = {};
Combine* const opencv_maximum[8] = {};
void (*const opencv_scale8)(uint8_t*, size_t, double) = nullptr;
void (*const opencv_scale16)(uint8_t*, size_t, double) = nullptr;
#endif

}  // namespace bench::peers
