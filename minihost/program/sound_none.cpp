#include "minihost/program/files.h"
#include "minihost/program/sound.h"

namespace minihost {
namespace {

[[noreturn]] void fail() {
    throw FileError("this minihost was built without libsndfile: it reads no sounds");
}

}  // namespace

std::optional<Sound> sound_of(std::string_view) { fail(); }
std::optional<std::string> wav(std::string_view, int, int) { fail(); }

}  // namespace minihost
