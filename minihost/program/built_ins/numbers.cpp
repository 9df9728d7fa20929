#include <algorithm>
#include <chrono>
#include <cmath>

#include "minihost/program/built_ins/table.h"

namespace minihost {
namespace {

template <double function(double)>
Value real(Runtime&, const ObjectRef&, Arguments arguments) {
    return function(std::get<double>(arguments[0]));
}

template <class Number>
Value absolute(Runtime&, const ObjectRef&, Arguments arguments) {
    const auto value = std::get<Number>(arguments[0]);
    if constexpr (std::is_integral_v<Number>) {
        // The smallest number has no positive counterpart.
        if (value == std::numeric_limits<Number>::min()) {
            throw CallError("the result of Abs is outside " +
                            range_text(sizeof value == 4 ? kInteger : kInt64));
        }
    }
    return value < 0 ? -value : value;
}

template <class Number>
Value smaller(Runtime&, const ObjectRef&, Arguments arguments) {
    return std::min(std::get<Number>(arguments[0]), std::get<Number>(arguments[1]));
}

template <class Number>
Value larger(Runtime&, const ObjectRef&, Arguments arguments) {
    return std::max(std::get<Number>(arguments[0]), std::get<Number>(arguments[1]));
}

Value microseconds(Runtime&, const ObjectRef&, Arguments) {
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::duration<double, std::micro>(now).count();
}

}  // namespace

Rows number_functions() {
    return {
        {"Sqrt(value as Double) as Double", real<std::sqrt>},
        {"Sin(angle as Double) as Double", real<std::sin>},
        {"Cos(angle as Double) as Double", real<std::cos>},
        {"Exp(value as Double) as Double", real<std::exp>},
        {"Log(value as Double) as Double", real<std::log>},
        {"Floor(value as Double) as Double", real<std::floor>},
        {"Abs(value as Integer) as Integer", absolute<int32_t>},
        {"Abs(value as Int64) as Int64", absolute<int64_t>},
        {"Abs(value as Double) as Double", absolute<double>},
        {"Min(a as Integer, b as Integer) as Integer", smaller<int32_t>},
        {"Min(a as Int64, b as Int64) as Int64", smaller<int64_t>},
        {"Min(a as Double, b as Double) as Double", smaller<double>},
        {"Max(a as Integer, b as Integer) as Integer", larger<int32_t>},
        {"Max(a as Int64, b as Int64) as Int64", larger<int64_t>},
        {"Max(a as Double, b as Double) as Double", larger<double>},
        {"Microseconds as Double", microseconds},
    };
}

}  // namespace minihost
