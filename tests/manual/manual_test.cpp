// The manual says what happens: its examples are run, its declarations are those that the bundle registers,
// and its links lead somewhere.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cctype>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <regex>
#include <set>
#include <string_view>

#include "tests/support/bundle_test.h"

namespace fs = std::filesystem;

namespace {

const fs::path kRoot = SOURCE_DIR;
const fs::path kManual = kRoot / "docs/manual";

std::string read(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

std::vector<fs::path> pages() {
    std::vector<fs::path> found = {kRoot / "README.md", kRoot / "SECURITY.md"};
    for (const auto& entry : fs::recursive_directory_iterator(kRoot / "docs")) {
        if (entry.path().extension() == ".md") found.push_back(entry.path());
    }
    return found;
}

// A fenced block: its word ("vb", "sh", "output" ...), its text and the line on which it begins.
struct Fenced {
    std::string word;
    std::string text;
    int line;
};

std::vector<Fenced> fenced_blocks(const std::string& page) {
    std::vector<Fenced> blocks;
    std::istringstream lines(page);
    bool inside = false;
    int number = 0;
    for (std::string line; std::getline(lines, line);) {
        ++number;
        if (line.starts_with("```")) {
            inside = !inside;
            if (inside) blocks.push_back({line.substr(3), "", number});
        } else if (inside) {
            blocks.back().text += line + '\n';
        }
    }
    return blocks;
}

// The page without its fenced blocks.
std::string prose(const std::string& page) { return std::regex_replace(page, std::regex("```[^`]*```"), ""); }

std::string replaced(std::string text, std::string_view what, std::string_view by) {
    for (size_t at = 0; (at = text.find(what, at)) != text.npos; at += by.size())
        text.replace(at, what.size(), by);
    return text;
}

// What a page's commands leave in out/ goes into a folder of the test's own.
class Commands {
 public:
    Commands() { fs::create_directories(folder_); }
    ~Commands() { fs::remove_all(folder_); }

    // What the commands print in the repository's root, with the status of a run that fails.
    std::string run(const std::string& commands, const std::string& input = "") const {
        std::ofstream(folder_ / ".in", std::ios::binary) << input;
        const std::string whole = "cd '" + kRoot.string() + "' && {\n" + commands + "\n} <'" +
                                  (folder_ / ".in").string() + "' >'" + (folder_ / ".out").string() +
                                  "' 2>&1";
        const int status = std::system(whole.c_str());  // NOLINT(cert-env33-c): the tests' own commands
        std::string output = read(folder_ / ".out");
        if (status != 0) output += "exit status " + std::to_string(WEXITSTATUS(status)) + "\n";
        return output;
    }

    // The same for commands as a page shows them.
    std::string run_shown(std::string commands) const {
        const std::string folder = folder_.string() + '/';
        for (const std::string before : {" ", ">"})
            commands = replaced(commands, before + "out/", before + folder);
        return replaced(run(replaced(commands, "build/release/bin/minihost", "'" MINIHOST_PROGRAM "'")),
                        folder, "out/");
    }

 private:
    fs::path folder_ = fs::temp_directory_path() / ("manual" + std::to_string(getpid()));
};

// What minihost prints when it runs the bundle.
std::string run(const std::string& arguments, const std::string& input) {
    return Commands().run("'" MINIHOST_PROGRAM "' --plugin '" MINIHOST_BUNDLE "' " + arguments, input);
}

// Every script is followed by what it prints; so is every command that starts minihost with something to run.
TEST(Manual, ExamplesPrintWhatThePagesShow) {
    int run_examples = 0;
    for (const fs::path& page : pages()) {
        const std::vector<Fenced> blocks = fenced_blocks(read(page));
        for (size_t i = 0; i < blocks.size(); ++i) {
            const bool script = blocks[i].word == "vb";
            const std::string& text = blocks[i].text;
            const bool command =
                blocks[i].word == "sh" && (text.starts_with("./run examples/") ||
                                           text.starts_with("build/release/bin/minihost --json -e"));
            if (!script && !command) continue;
            SCOPED_TRACE(testing::Message() << page.string() << ':' << blocks[i].line);
            ASSERT_TRUE(i + 1 < blocks.size() && blocks[i + 1].word == "output") << "shows no output";
            const std::string arguments =
                script ? "-" : text.substr(text.find(' '), text.size() - text.find(' ') - 1);
            EXPECT_EQ(run(arguments, script ? text : ""), blocks[i + 1].text);
            ++run_examples;
        }
    }
    EXPECT_GE(run_examples, 49) << "each member has an example";
}

// Times and addresses are others in each run.
std::string without_chance(const std::string& output) {
    const std::string no_times =
        std::regex_replace(output, std::regex(R"( in \d+\.\d s, )"), " in a moment, ");
    return std::regex_replace(no_times, std::regex("0x[0-9a-f]+"), "an address");
}

// The page holds the example's source, and each of its commands is followed by what it prints.
TEST(Manual, TheGuideToChecksDoesWhatItShows) {
    const std::vector<Fenced> blocks = fenced_blocks(read(kManual / "guide-check.md"));
    const Commands commands;
    int compared = 0;
    for (size_t i = 0; i < blocks.size(); ++i) {
        SCOPED_TRACE(testing::Message() << "guide-check.md:" << blocks[i].line);
        if (blocks[i].word == "cpp") {
            EXPECT_EQ(blocks[i].text, read(kRoot / "examples/bundle/sum.cpp"));
        }
        if (blocks[i].word != "sh") continue;
        ASSERT_TRUE(i + 1 < blocks.size() && blocks[i + 1].word == "output") << "shows no output";
        EXPECT_EQ(without_chance(commands.run_shown(blocks[i].text)), without_chance(blocks[i + 1].text));
        ++compared;
    }
    EXPECT_GE(compared, 8);
}

// The declarations of each entry of the manual, by the member's name.
std::map<std::string, std::vector<std::string>> documented() {
    std::map<std::string, std::vector<std::string>> entries;
    for (const auto& file : fs::directory_iterator(kManual)) {
        if (file.path().extension() != ".md") continue;
        std::istringstream lines(prose(read(file.path())));
        std::string name;
        for (std::string line; std::getline(lines, line);) {
            if (line.starts_with("## ")) name = line.substr(3);
            const bool declaration = line.size() > 2 && line.front() == '`' && line.back() == '`' &&
                                     line.compare(1, name.size(), name) == 0;
            if (!name.empty() && declaration) entries[name].push_back(line.substr(1, line.size() - 2));
        }
    }
    return entries;
}

class ManualOfBundle : public BundleTest {};

TEST_F(ManualOfBundle, DeclaresWhatIsRegistered) {
    start();
    std::map<std::string, std::vector<std::string>> registered;
    for (const REALclassDefinition* record : host().registered_classes()) {
        for (const minihost::Method& method : host().find_class(record->name)->methods) {
            registered[method.declaration.name].push_back(method.declaration.text);
        }
        const auto* properties = static_cast<const REALproperty*>(record->properties);
        for (int32_t i = 0; i < record->propertyCount; ++i) {
            registered[properties[i].name] = {std::string(properties[i].name) + " as " + properties[i].type};
        }
    }
    for (const minihost::Method& method : host().globals()) {
        registered[method.declaration.name].push_back(method.declaration.text);
    }
    EXPECT_EQ(documented(), registered);
}

// The anchors of a page's headings, as GitHub and pandoc form them.
std::set<std::string> anchors(const std::string& page) {
    std::set<std::string> found;
    std::istringstream lines(prose(page));
    for (std::string line; std::getline(lines, line);) {
        if (!line.starts_with("#")) continue;
        std::string anchor;
        for (const char c : line.substr(line.find(' ') + 1)) {
            if (std::isalnum(static_cast<unsigned char>(c)) || c == '_' || c == '-') {
                anchor += char(std::tolower(static_cast<unsigned char>(c)));
            } else if (c == ' ') {
                anchor += '-';
            }
        }
        found.insert(anchor);
    }
    return found;
}

TEST(Manual, LinksLeadSomewhere) {
    const std::regex link(R"(\]\(([^)\s]+)\))");
    for (const fs::path& page : pages()) {
        const std::string text = prose(read(page));
        for (std::sregex_iterator at(text.begin(), text.end(), link), end; at != end; ++at) {
            const std::string target = (*at)[1];
            if (target.starts_with("http")) continue;
            const size_t hash = target.find('#');
            const fs::path file = hash == 0 ? page : page.parent_path() / target.substr(0, hash);
            EXPECT_TRUE(fs::exists(file)) << page << " links to " << target;
            if (hash != std::string::npos && fs::exists(file)) {
                EXPECT_TRUE(anchors(read(file)).contains(target.substr(hash + 1)))
                    << page << " links to " << target;
            }
        }
    }
}

}  // namespace
