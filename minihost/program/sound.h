// Sounds as files that every player plays.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace minihost {

// Signed 16-bit samples in the processor's byte order, one for each channel, `rate` times a second.
struct Sound {
    std::string samples;
    int channels;
    int rate;
};

// The sound of a file's bytes: WAV, AIFF, AU and what else libsndfile reads. Nothing for other files.
std::optional<Sound> sound_of(std::string_view file);

// A WAV file's bytes; nothing for a sound that no such file holds.
std::optional<std::string> wav(std::string_view samples, int channels, int rate);

}  // namespace minihost
