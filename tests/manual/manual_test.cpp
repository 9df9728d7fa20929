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
    std::vector<fs::path> found = {kRoot / "README.md"};
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

// What minihost prints, in the repository's root, with the status of a run that fails.
std::string run(const std::string& arguments, const std::string& input) {
    const fs::path folder = fs::temp_directory_path() / ("manual" + std::to_string(getpid()));
    fs::create_directories(folder);
    std::ofstream(folder / "in", std::ios::binary) << input;
    const std::string command =
        "cd '" + kRoot.string() + "' && '" MINIHOST_PROGRAM "' --plugin '" MINIHOST_BUNDLE "' " + arguments +
        " <'" + (folder / "in").string() + "' >'" + (folder / "out").string() + "' 2>&1";
    const int status = std::system(command.c_str());  // NOLINT(cert-env33-c): the tests' own commands
    std::string output = read(folder / "out");
    if (status != 0) output += "exit status " + std::to_string(WEXITSTATUS(status)) + "\n";
    fs::remove_all(folder);
    return output;
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
