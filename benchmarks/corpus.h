// Bytes to search in: the same ones in every run.
#pragma once

#include <cstdint>
#include <string>

namespace bench {

// n bytes of "text" (English words as often as in English), "dna" (four letters), "logs" (a server's lines)
// or "random" (all bytes alike).
std::string corpus(const std::string& kind, size_t n, uint32_t seed);

// The haystack, with bytes changed to others of its own so that the needle does not occur.
std::string without(std::string haystack, const std::string& needle);

// The words of Fibonacci, a b ab..: full of repetitions without being periodic.
std::string fibonacci(size_t n);

}  // namespace bench
