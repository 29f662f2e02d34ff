#include "tests/support/FailingFileSystem.h"
#include "tests/support/TempDir.h"
#include "tests/support/UnprivilegedUser.h"

#include <tarn/service/FileUtils.h>

#include <boost/filesystem/exception.hpp>

#include <cerrno>
#include <regex>

#include <sys/wait.h>
#include <unistd.h>

namespace Tarn::Fjel::Core::Service {
namespace {

namespace fs = std::filesystem;
using boost::filesystem::filesystem_error;
using TestSupport::FailingFileSystem;
using TestSupport::TempDir;
using Call = FailingFileSystem::Call;

TEST(FileUtils, CopyReplacesOnlyWhenTold)
{
    const TempDir temp;
    temp.Write("a", "text a");
    temp.Write("b", "old b");
    fs::permissions(temp.Path("a"), fs::perms::owner_read | fs::perms::owner_write | fs::perms::owner_exec);
    fs::permissions(temp.Path("b"), fs::perms::owner_read | fs::perms::owner_write | fs::perms::group_read);
    const auto copy = [&](const char* from, const char* to, bool replace) {
        return FileUtils::Copy(temp.File(from), temp.File(to), replace);
    };
    EXPECT_FALSE(copy("a", "b", false));
    EXPECT_EQ(temp.Read("b"), "old b");
    EXPECT_TRUE(copy("a", "b", true));
    EXPECT_EQ(temp.Read("b"), "text a");
    EXPECT_EQ(FileStatus::Of(temp.Path("b")).mode, 0640u) << "an existing file keeps its mode";
    EXPECT_TRUE(copy("a", "new", false));
    EXPECT_EQ(temp.Read("new"), "text a");
    EXPECT_EQ(FileStatus::Of(temp.Path("new")).mode, 0700u);

    fs::create_symlink("a", temp.Path("link"));
    EXPECT_TRUE(copy("a", "a", true));
    EXPECT_TRUE(copy("link", "a", true));
    EXPECT_TRUE(copy("a", "link", true));
    EXPECT_EQ(temp.Read("a"), "text a") << "a copy onto the same file does nothing";
    temp.Write("c", "text c");
    EXPECT_TRUE(copy("c", "link", true));
    EXPECT_TRUE(fs::is_symlink(temp.Path("link"))) << "a link is written through";
    EXPECT_EQ(temp.Read("a"), "text c");

    fs::create_directory(temp.Path("dir"));
    EXPECT_FALSE(copy("missing", "d", true));
    EXPECT_FALSE(copy("dir", "d", true));
    EXPECT_FALSE(copy("a", "dir", true));
    EXPECT_FALSE(copy("a", "no/such/folder", true));
    EXPECT_EQ(temp.Listing(), "a b c dir/ link new");
}

TEST(FileUtils, StreamCopiesAppendOrReplace)
{
    const TempDir temp;
    const std::string large = std::string(200000, 'x') + '\0' + "\r\n";
    const auto copy = [&](const std::string& text, const char* to, bool append, bool replace) {
        std::istringstream stream(text);
        return FileUtils::Copy(stream, temp.File(to), append, replace);
    };
    EXPECT_TRUE(copy(large, "a", false, false));
    EXPECT_EQ(temp.Read("a"), large);
    EXPECT_FALSE(copy("y", "a", false, false));
    EXPECT_TRUE(copy("y", "a", true, false));
    EXPECT_EQ(temp.Read("a"), large + "y");
    EXPECT_TRUE(copy("", "a", false, true));
    EXPECT_EQ(temp.Read("a"), "");
    EXPECT_TRUE(copy("new", "b", true, false)) << "nothing there to append to";
    EXPECT_EQ(temp.Read("b"), "new");

    std::istringstream rest("skip this;keep this");
    rest.seekg(10);
    EXPECT_TRUE(FileUtils::Copy(rest, temp.File("a"), false, true));
    EXPECT_EQ(temp.Read("a"), "keep this");
    std::istringstream broken("x");
    broken.setstate(std::ios::badbit);
    EXPECT_FALSE(FileUtils::Copy(broken, temp.File("a"), false, true));
    EXPECT_EQ(temp.Read("a"), "keep this");
    EXPECT_EQ(temp.Listing(), "a b");
}

/// Every call of a replacing copy is made to fail in turn, once and for good.
TEST(FileUtils, ACopyThatFailsLosesNoText)
{
    const TempDir temp;
    const std::string oldText(1000, 'o');
    const std::string newText(600000, 'n');
    temp.Write("from", newText);
    for (const bool forever : {false, true}) {
        for (const bool append : {false, true}) {
            for (int n = 1;; ++n) {
                temp.Write("to", oldText);
                FailingFileSystem failing;
                failing.FailAt(n, {}, ENOSPC, forever);
                std::istringstream stream(newText);
                const bool done = append ? FileUtils::Copy(stream, temp.File("to"), true, true)
                                         : FileUtils::Copy(temp.File("from"), temp.File("to"), true);
                const bool failed = failing.HasFailed();
                failing.Pass();
                const std::string text = temp.Read("to");
                if (done) {
                    EXPECT_TRUE(text == (append ? oldText + newText : newText)) << n;
                } else if (text != oldText) {
                    // Where even cutting back or putting back fails, the old text is still there.
                    EXPECT_TRUE(forever) << n << (append ? " append" : "");
                    EXPECT_TRUE(append ? text.starts_with(oldText) : temp.Exists("to.copy2")) << n;
                }
                if (!forever) {
                    EXPECT_EQ(temp.Listing(), "from to") << n << (append ? " append" : "");
                }
                for (const char* left : {"to.copy1", "to.copy2"})
                    fs::remove(temp.Path(left));
                if (!failed) {
                    EXPECT_TRUE(done);
                    break;
                }
                ASSERT_LT(n, 200);
            }
        }
    }
}

TEST(FileUtils, WhereARenameIsRefusedTheTextIsReplacedInPlace)
{
    const TempDir temp;
    temp.Write("from", "new text");
    temp.Write("to", "old");
    FailingFileSystem failing;
    failing.FailAt(1, {Call::Rename}, EBUSY, true);
    EXPECT_TRUE(FileUtils::Copy(temp.File("from"), temp.File("to"), true));
    EXPECT_EQ(temp.Read("to"), "new text");
    EXPECT_EQ(temp.Listing(), "from to");

    // The folder takes no new file either, but the old one may be written.
    failing.Pass();
    temp.Write("locked/to", "old");
    temp.Write("from", "newer text");
    fs::permissions(temp.Path("locked"), fs::perms::owner_read | fs::perms::owner_exec);
    const TestSupport::UnprivilegedUser user(temp);
    EXPECT_TRUE(FileUtils::Copy(temp.File("from"), temp.File("locked/to"), true));
    EXPECT_EQ(temp.Read("locked/to"), "newer text");
}

TEST(FileUtils, AProcessThatDiesWhileCopyingLeavesTheOldTextOrTheNew)
{
    const TempDir temp;
    temp.Write("from", std::string(300000, 'n'));
    for (int n = 1; n < 100; ++n) {
        temp.Write("to", "old");
        const pid_t child = fork();
        if (child == 0) {
            FailingFileSystem failing;
            failing.ExitAt(n, FailingFileSystem::Changes(), 7);
            _exit(FileUtils::Copy(temp.File("from"), temp.File("to"), true) ? 0 : 1);
        }
        int status = -1;
        waitpid(child, &status, 0);
        const std::string text = temp.Read("to");
        EXPECT_TRUE(text == "old" || text == std::string(300000, 'n')) << n;
        fs::remove(temp.Path("to.copy1"));
        if (WEXITSTATUS(status) == 0) {
            EXPECT_GT(n, 4);
            return;
        }
        EXPECT_EQ(WEXITSTATUS(status), 7);
    }
    FAIL() << "never came to an end";
}

TEST(FileUtils, RemoveAndRename)
{
    const TempDir temp;
    temp.Write("a", "a");
    temp.Write("b", "b");
    fs::create_directory(temp.Path("dir"));
    fs::create_symlink("nowhere", temp.Path("link"));
    EXPECT_TRUE(FileUtils::Remove(temp.File("link")));
    EXPECT_FALSE(FileUtils::Remove(temp.File("link")));
    EXPECT_FALSE(FileUtils::Remove(temp.File("dir"))) << "never a directory";
    FileUtils::Rename(temp.File("a"), temp.File("b"));
    EXPECT_EQ(temp.Listing(), "b dir/");
    EXPECT_EQ(temp.Read("b"), "a");
    EXPECT_THROW(FileUtils::Rename(temp.File("missing"), temp.File("c")), filesystem_error);
    EXPECT_THROW(FileUtils::Rename(temp.File("b"), temp.File("dir")), filesystem_error);
    EXPECT_TRUE(FileUtils::Remove(temp.File("b")));

    temp.Write("locked/a", "a");
    fs::permissions(temp.Path("locked"), fs::perms::owner_read | fs::perms::owner_exec);
    const TestSupport::UnprivilegedUser user(temp);
    EXPECT_THROW(FileUtils::Remove(temp.File("locked/a")), filesystem_error);
}

TEST(FileUtils, FileNameRenameCrossesFileSystems)
{
    const TempDir temp;
    temp.Write("a", "text");
    FailingFileSystem failing;
    failing.FailAt(1, {Call::Rename}, EXDEV);
    FileName::Rename(temp.File("a"), temp.File("b"));
    EXPECT_EQ(temp.Listing(), "b");
    EXPECT_EQ(temp.Read("b"), "text");

    failing.FailAt(1, {Call::Rename, Call::Write, Call::CopyRange}, EXDEV, true);
    EXPECT_THROW(FileName::Rename(temp.File("b"), temp.File("c")), filesystem_error);
    failing.Pass();
    EXPECT_EQ(temp.Listing(), "b");
    FileName::Rename(temp.File("b"), temp.File("c"));
    EXPECT_THROW(FileName::Rename(temp.File("b"), temp.File("c")), filesystem_error);
    EXPECT_EQ(temp.Read("c"), "text");
}

TEST(FileUtils, UniqueNamesPassByWhatIsTaken)
{
    const TempDir temp;
    EXPECT_EQ(FileUtils::ConstructUniqueName(temp.File("a.inc")).GetFullName(), temp.Path("a.inc"));
    temp.Write("a.inc", "");
    temp.Write("a_1.inc", "");
    fs::create_symlink("nowhere", temp.Path("a_2.inc"));
    EXPECT_EQ(FileUtils::ConstructUniqueName(temp.File("a.inc")).GetFullName(), temp.Path("a_3.inc"));
    const auto isTaken = [](const FileName& name) { return name.GetRootName() != "a_7"; };
    EXPECT_EQ(FileUtils::ConstructUniqueName(temp.File("a.inc"), isTaken).GetFullName(), temp.Path("a_7.inc"));
    temp.Write("noext", "");
    EXPECT_EQ(FileUtils::ConstructUniqueName(temp.File("noext")).GetFileName(), "noext_1");
}

TEST(FileUtils, IsAsciiLooksAtTheFirstBytesOnly)
{
    const TempDir temp;
    const auto isText = [&](std::string_view text, std::int64_t count) {
        temp.Write("f", text);
        return FileUtils::IsAscii(temp.File("f"), count);
    };
    EXPECT_TRUE(isText("", 2500));
    EXPECT_TRUE(isText("PORO\r\n\t1 2 /\f\v caf\xe9 \xc3\xa9", 2500));
    EXPECT_FALSE(isText(std::string_view("a\0b", 3), 2500));
    EXPECT_FALSE(isText("\x1b[0m", 2500));
    EXPECT_FALSE(isText("\x7f", 2500));
    EXPECT_TRUE(isText(std::string(2500, 'x') + '\0', 2500));
    EXPECT_FALSE(isText(std::string(2499, 'x') + '\0', 2500));
    EXPECT_FALSE(isText(std::string(5000, 'x') + '\1', 10000));
    EXPECT_FALSE(FileUtils::IsAscii(temp.File("missing"), 10));
    EXPECT_FALSE(FileUtils::IsAscii(FileName(temp.Path()), 10));
}

TEST(FileUtils, AnEscapedTextMatchesItself)
{
    const std::string text = "CASE(1)+[a].{2}^$|*?\\-x";
    EXPECT_TRUE(std::regex_match(text, std::regex(FileUtils::EscapeExpression(text))));
    EXPECT_EQ(FileUtils::EscapeExpression("CASE_1"), "CASE_1");
}

TEST(FileSystem, ModeAndOwnerGoAlongAsFarAsTheProcessMay)
{
    const TempDir temp;
    const std::string like = temp.Write("like", "");
    const std::string file = temp.Write("file", "");
    FileSystem& system = FileSystem::Instance();
    FileSystem::ErrorCode error;
    ASSERT_TRUE(system.SetMode(like, 06754, error));
    EXPECT_TRUE(system.CopyModeAndOwner(FileStatus::Of(like), file, error));
    EXPECT_EQ(FileStatus::Of(file).mode, 06754u);

    FileStatus others = FileStatus::Of(like);
    others.owner = 12345;
    others.group = 12345;
    const TestSupport::UnprivilegedUser user(temp);
    EXPECT_TRUE(system.CopyModeAndOwner(others, file, error));
    EXPECT_EQ(FileStatus::Of(file).mode, 0754u) << "rights that speak of the old owner stay behind";
}

} // namespace
} // namespace Tarn::Fjel::Core::Service
