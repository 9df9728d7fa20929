#include <sndfile.h>

#include <algorithm>
#include <cstring>
#include <memory>

#include "minihost/program/sound.h"

namespace minihost {
namespace {

// A file in memory.
struct Memory {
    std::string bytes;
    size_t at = 0;
};

Memory& memory(void* file) { return *static_cast<Memory*>(file); }

sf_count_t length(void* file) { return sf_count_t(memory(file).bytes.size()); }

sf_count_t tell(void* file) { return sf_count_t(memory(file).at); }

sf_count_t seek(sf_count_t offset, int whence, void* file) {
    const sf_count_t from = whence == SEEK_SET ? 0 : whence == SEEK_CUR ? tell(file) : length(file);
    if (from + offset < 0) return -1;
    memory(file).at = size_t(from + offset);
    return from + offset;
}

sf_count_t read(void* bytes, sf_count_t count, void* file) {
    const sf_count_t read = std::clamp<sf_count_t>(length(file) - tell(file), 0, count);
    std::memcpy(bytes, memory(file).bytes.data() + memory(file).at, size_t(read));
    memory(file).at += size_t(read);
    return read;
}

sf_count_t write(const void* bytes, sf_count_t count, void* file) {
    Memory& written = memory(file);
    written.bytes.resize(std::max(written.bytes.size(), written.at + size_t(count)));
    std::memcpy(written.bytes.data() + written.at, bytes, size_t(count));
    written.at += size_t(count);
    return count;
}

SF_VIRTUAL_IO memory_operations = {length, seek, read, write, tell};

using File = std::unique_ptr<SNDFILE, int (*)(SNDFILE*)>;

File open(Memory& file, int mode, SF_INFO& format) {
    return {sf_open_virtual(&memory_operations, mode, &format, &file), sf_close};
}

}  // namespace

std::optional<Sound> sound_of(std::string_view bytes) {
    Memory memory{std::string(bytes)};
    SF_INFO format = {};
    const File file = open(memory, SFM_READ, format);
    if (!file) return std::nullopt;
    sf_command(file.get(), SFC_SET_SCALE_FLOAT_INT_READ, nullptr, SF_TRUE);
    Sound sound{{}, format.channels, format.samplerate};
    // A header may promise more than the file has.
    short part[4096];
    sf_count_t count = 0;
    while ((count = sf_read_short(file.get(), part,
                                  sf_count_t(std::size(part) / size_t(format.channels)) * format.channels)) >
           0) {
        sound.samples.append(reinterpret_cast<const char*>(part), size_t(count) * sizeof *part);
    }
    return sound;
}

std::optional<std::string> wav(std::string_view samples, int channels, int rate) {
    Memory memory;
    SF_INFO format = {};
    format.channels = channels;
    format.samplerate = rate;
    format.format = SF_FORMAT_WAV | SF_FORMAT_PCM_16;
    if (!sf_format_check(&format)) return std::nullopt;
    File file = open(memory, SFM_WRITE, format);
    if (!file) return std::nullopt;
    sf_write_raw(file.get(), samples.data(), sf_count_t(samples.size()));
    file.reset();
    return memory.bytes;
}

}  // namespace minihost
