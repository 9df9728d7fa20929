#include "minihost/platform/program.h"

#include <fcntl.h>
#include <io.h>
// The second one needs the first.
// clang-format off
#include <windows.h>
#include <shellapi.h>
// clang-format on

#include <cstdlib>
#include <string>
#include <vector>

namespace minihost::platform {
namespace {

// The terminal's encodings belong to it, and not to the program.
UINT input_before = 0;
UINT output_before = 0;

void restore_encodings() {
    SetConsoleCP(input_before);
    SetConsoleOutputCP(output_before);
}

void (*interrupted)(int) = nullptr;

BOOL WINAPI on_control(DWORD event) {
    if (event != CTRL_C_EVENT) return FALSE;
    interrupted(int(event));
    return TRUE;
}

HANDLE handle_of(std::FILE* stream) {
    // NOLINTNEXTLINE(performance-no-int-to-ptr): handles are kept as numbers
    return reinterpret_cast<HANDLE>(_get_osfhandle(_fileno(stream)));
}

std::string utf8(const wchar_t* text) {
    const int size = WideCharToMultiByte(CP_UTF8, 0, text, -1, nullptr, 0, nullptr, nullptr);
    std::string bytes(size_t(size), '\0');
    WideCharToMultiByte(CP_UTF8, 0, text, -1, bytes.data(), size, nullptr, nullptr);
    return bytes;
}

}  // namespace

void begin_program(int& argc, char**& argv) {
    for (std::FILE* stream : {stdin, stdout, stderr}) _setmode(_fileno(stream), _O_BINARY);
    input_before = GetConsoleCP();
    output_before = GetConsoleOutputCP();
    std::atexit(restore_encodings);
    SetConsoleCP(CP_UTF8);
    SetConsoleOutputCP(CP_UTF8);

    // They stay as long as the program runs.
    static std::vector<std::string> texts;
    static std::vector<char*> arguments;
    wchar_t** wide = CommandLineToArgvW(GetCommandLineW(), &argc);
    for (int i = 0; i < argc; ++i) texts.push_back(utf8(wide[i]));
    for (std::string& text : texts) arguments.push_back(text.data());
    arguments.push_back(nullptr);
    LocalFree(wide);
    argv = arguments.data();
}

std::filesystem::path program_file() {
    std::wstring name(32768, L'\0');
    name.resize(GetModuleFileNameW(nullptr, name.data(), DWORD(name.size())));
    return name;
}

bool is_terminal(std::FILE* stream) {
    DWORD mode = 0;
    return GetConsoleMode(handle_of(stream), &mode) != 0;
}

std::optional<int> terminal_columns(std::FILE* stream) {
    CONSOLE_SCREEN_BUFFER_INFO screen = {};
    if (GetConsoleScreenBufferInfo(handle_of(stream), &screen) == 0) return std::nullopt;
    return screen.srWindow.Right - screen.srWindow.Left + 1;
}

void on_interrupt(void (*handler)(int)) {
    interrupted = handler;
    SetConsoleCtrlHandler(on_control, TRUE);
}

}  // namespace minihost::platform
