// The installed package: what a host gets when it asks CMake or pkg-config for the library.

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include <sys/wait.h>

#include <fmt/format.h>
#include <gtest/gtest.h>

#include "tests/support/TempDir.h"

namespace {

using TestSupport::TempDir;

const std::string fieldDeck = DECK_SOURCE_DIR "/examples/decks/field/FIELD.DATA";

struct CommandResult
{
    int status = -1;
    std::string output; ///< standard output and standard error
};

CommandResult Execute(const std::string& command)
{
    CommandResult result;
    std::FILE* pipe = popen((command + " 2>&1").c_str(), "r");
    if (!pipe) return result;
    char buffer[4096];
    for (std::size_t count; (count = std::fread(buffer, 1, sizeof buffer, pipe)) > 0;)
        result.output.append(buffer, count);
    const int status = pclose(pipe);
    result.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return result;
}

#define ASSERT_COMMAND(command)                                                                                        \
    do {                                                                                                               \
        const CommandResult ran = Execute(command);                                                                    \
        ASSERT_EQ(ran.status, 0) << (command) << "\n" << ran.output;                                                   \
    } while (false)

class InstalledPackage : public testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_COMMAND(fmt::format("cmake --install '{}' --prefix '{}'", DECK_BINARY_DIR, Prefix()));
    }

    std::string Prefix() const { return m_directory.Path("prefix"); }
    std::string SanitizerFlags() const { return DECK_IS_SANITIZED ? "-fsanitize=address,undefined" : ""; }

    TempDir m_directory;
};

/// What walk_deck says of the field deck, whichever way it was built.
void ExpectWalk(const std::string& program)
{
    const CommandResult walk = Execute(fmt::format("'{}' '{}'", program, fieldDeck));
    EXPECT_EQ(walk.status, 0) << walk.output;
    EXPECT_EQ(walk.output.find("keywords: "), 0u) << walk.output;
    EXPECT_NE(walk.output.find("\ngrid: 20 x 15 x 6\n"), std::string::npos) << walk.output;
    EXPECT_NE(walk.output.find("\nwell: HR-P1, keyword at line 9\n"), std::string::npos) << walk.output;
    EXPECT_NE(walk.output.find("\nwell: HR-P6, keyword at line 8\n"), std::string::npos) << walk.output;

    const CommandResult missing = Execute(fmt::format("'{}' /no/such/deck.data", program));
    EXPECT_EQ(missing.status, 3) << missing.output;
}

TEST_F(InstalledPackage, AHostFindsItWithCMake)
{
    const std::string build = m_directory.Path("host");
    ASSERT_COMMAND(fmt::format("cmake -S '{}/examples/hosts' -B '{}' -G Ninja -DCMAKE_BUILD_TYPE=Debug "
                               "-DCMAKE_PREFIX_PATH='{}' -DCMAKE_CXX_COMPILER='{}' -DCMAKE_CXX_FLAGS='{}' "
                               "&& cmake --build '{}'",
                               DECK_SOURCE_DIR, build, Prefix(), DECK_CXX_COMPILER, SanitizerFlags(), build));
    ExpectWalk(build + "/walk_deck");
}

TEST_F(InstalledPackage, AHostFindsItWithPkgConfig)
{
    const std::string program = m_directory.Path("walk_deck");
    const std::string query =
        fmt::format("PKG_CONFIG_PATH='{}/{}/pkgconfig' pkg-config", Prefix(), DECK_INSTALL_LIBDIR);
    ASSERT_COMMAND(fmt::format("'{}' -std=c++20 {} $({} --cflags tarn-deckmanager) -o '{}' "
                               "'{}/examples/hosts/walk_deck.cpp' $({} --libs tarn-deckmanager)",
                               DECK_CXX_COMPILER, SanitizerFlags(), query, program, DECK_SOURCE_DIR, query));
    ExpectWalk(program);
}

TEST_F(InstalledPackage, TheToolRunsFromItsNewPlace)
{
    const CommandResult tool = Execute(fmt::format("'{}/bin/deckman' ls '{}' --json", Prefix(), fieldDeck));
    EXPECT_EQ(tool.status, 0) << tool.output;
    EXPECT_NE(tool.output.find("\"name\":\"WELSPECS\""), std::string::npos) << tool.output;
}

TEST_F(InstalledPackage, DocumentsAndExamplesLieAsInTheSources)
{
    const std::string docs = Prefix() + "/share/doc/tarn-deckmanager";
    const std::string readme = DECK_SOURCE_DIR "/README.md";
    ASSERT_COMMAND(fmt::format("cmp '{}' '{}/README.md' && diff -r '{}/docs' '{}/docs' && diff -r '{}/examples' "
                               "'{}/examples'",
                               readme, docs, DECK_SOURCE_DIR, docs, DECK_SOURCE_DIR, docs));
}

#if !DECK_IS_SANITIZED
TEST_F(InstalledPackage, WhatTheGuideShowsCompiles)
{
    std::ifstream guide(DECK_SOURCE_DIR "/docs/guide.md");
    std::string program;
    bool isCode = false;
    int pieces = 0;
    for (std::string line; std::getline(guide, line);) {
        if (line == "```cpp" || line == "```") {
            isCode = line == "```cpp";
            pieces += isCode ? 1 : 0;
        } else if (isCode) {
            program += line + "\n";
        }
    }
    EXPECT_GT(pieces, 15);
    ASSERT_COMMAND(fmt::format("'{}' -std=c++20 -fsyntax-only -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Werror "
                               "-I'{}/include' '{}'",
                               DECK_CXX_COMPILER, Prefix(), m_directory.Write("guide.cpp", program)));
}

TEST_F(InstalledPackage, EveryHeaderCompilesAlone)
{
    const std::string include = Prefix() + "/include";
    std::vector<std::string> headers;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(include))
        if (entry.path().extension() == ".h")
            headers.push_back(std::filesystem::relative(entry.path(), include).string());
    std::sort(headers.begin(), headers.end());
    ASSERT_GT(headers.size(), 50u);

    // Each included twice, into a file of its own; the compiler names the header that doesn't pass.
    for (std::size_t i = 0; i < headers.size(); ++i)
        m_directory.Write(fmt::format("alone/{:03}.cpp", i),
                          fmt::format("#include <{0}>\n#include <{0}>\n", headers[i]));
    ASSERT_COMMAND(fmt::format("printf '%s\\n' '{}'/alone/*.cpp | xargs -n 1 -P 2 '{}' -std=c++20 -fsyntax-only -Wall "
                               "-Wextra -Wpedantic -Wshadow -Wconversion -Werror -I'{}'",
                               m_directory.Path(), DECK_CXX_COMPILER, include));
}

/// The Debian package, unpacked into a root of its own: what is in there is all that it has.
TEST(DebianPackage, WorksFromACleanRoot)
{
    if (Execute("command -v dpkg-deb && command -v dpkg-shlibdeps && command -v file").status != 0)
        GTEST_SKIP() << "dpkg-dev or file is not installed";
    const TempDir directory;
    ASSERT_COMMAND(fmt::format("cpack -G DEB --config '{}/CPackConfig.cmake' -B '{}'", DECK_BINARY_DIR,
                               directory.Path("packages")));
    const std::string root = directory.Path("root");
    const std::string package = fmt::format("'{}'/tarn-deckmanager_*.deb", directory.Path("packages"));
    ASSERT_COMMAND(fmt::format("dpkg-deb -x {} '{}'", package, root));

    const CommandResult depends = Execute(fmt::format("dpkg-deb -f {} Depends", package));
    for (const char* library : {"libc6", "libstdc++6", "libboost-filesystem", "libfmt", "libpugixml", "libre2"})
        EXPECT_NE(depends.output.find(library), std::string::npos) << library << " of " << depends.output;
    // All that the tool needs at run time is in the root or in a package that it depends on.
    const CommandResult libraries = Execute(fmt::format("ldd '{}/usr/bin/deckman'", root));
    EXPECT_EQ(libraries.output.find("not found"), std::string::npos) << libraries.output;
    EXPECT_EQ(libraries.output.find(DECK_BINARY_DIR), std::string::npos) << libraries.output;

    const std::string share = root + "/usr/share";
    ASSERT_COMMAND(fmt::format("grep -q '^.SH SYNOPSIS' '{0}/man/man1/deckman.1' && "
                               "grep -q complete '{0}/bash-completion/completions/deckman' "
                               "'{0}/fish/vendor_completions.d/deckman.fish' && "
                               "grep -q compdef '{0}/zsh/vendor-completions/_deckman'",
                               share));
    const std::string examples = root + "/usr/share/doc/tarn-deckmanager/examples";
    ASSERT_COMMAND(fmt::format("cd '{}/decks' && '{}/usr/bin/deckman' check field/FIELD.DATA", examples, root));
    const std::string build = directory.Path("host");
    ASSERT_COMMAND(fmt::format("cmake -S '{}/hosts' -B '{}' -G Ninja -DCMAKE_PREFIX_PATH='{}/usr' "
                               "-DCMAKE_CXX_COMPILER='{}' && cmake --build '{}'",
                               examples, build, root, DECK_CXX_COMPILER, build));
    ExpectWalk(build + "/walk_deck");
}
#endif

} // namespace
