#include "tests/support/FailingFileSystem.h"
#include "tests/support/TempDir.h"
#include "tests/support/UnprivilegedUser.h"

#include <tarn/service/Directory.h>
#include <tarn/service/FileName.h>

#include <boost/filesystem/exception.hpp>

#include <cerrno>

namespace Tarn::Fjel::Core::Service {
namespace {

namespace fs = std::filesystem;
using boost::filesystem::filesystem_error;
using TestSupport::FailingFileSystem;
using TestSupport::TempDir;

std::vector<std::string> Relative(const TempDir& temp, const std::vector<std::string>& names)
{
    std::vector<std::string> relative;
    for (const std::string& name : names) {
        EXPECT_TRUE(name.starts_with(temp.Path() + "/")) << name;
        relative.push_back(name.substr(temp.Path().size() + 1));
    }
    return relative;
}

using Names = std::vector<std::string>;

TEST(DirectoryOnDisk, CreateTellsWhetherItExistsAfterwards)
{
    const TempDir temp;
    temp.Write("file", "");
    EXPECT_TRUE(Directory(temp.Path("a/b/c")).Create());
    EXPECT_TRUE(Directory(temp.Path("a/b/c")).Create());
    EXPECT_FALSE(Directory(temp.Path("file")).Create());
    EXPECT_FALSE(Directory(temp.Path("file/x")).Create());
    EXPECT_FALSE(Directory().Create());
    EXPECT_EQ(temp.Listing(), "a/ a/b/ a/b/c/ file");
    const TestSupport::CurrentDirectoryGuard current(temp.Path());
    EXPECT_TRUE(Directory("r/s").Create());
    EXPECT_TRUE(temp.Exists("r/s"));
    EXPECT_TRUE(temp.File("n/leaf.inc").Create()) << "the folder of a file name";
    EXPECT_TRUE(Directory(temp.Path("n")).IsDirectory());

    FailingFileSystem failing;
    failing.FailAt(2, {FailingFileSystem::Call::MakeDirectory}, ENOSPC);
    EXPECT_FALSE(Directory(temp.Path("x/y/z")).Create());
}

TEST(DirectoryOnDisk, FindHasFourForms)
{
    const TempDir temp;
    for (const char* name : {"b.GRID", "a.EGRID", "a.grid", "aXEGRID", "sub/c.inc", "sub/deep/d.inc", "z.txt"}) {
        temp.Write(name, "");
    }
    fs::create_symlink("a.EGRID", temp.Path("l.FGRID"));
    fs::create_directory_symlink(".", temp.Path("sub/ring"));
    fs::create_symlink("nowhere", temp.Path("dangling.GRID"));
    const Directory dir = temp.Dir();
    const auto find = [&](const char* pattern, bool a, bool b, bool c, bool d, bool e) {
        return Relative(temp, dir.Find(pattern, a, b, c, d, e));
    };

    EXPECT_EQ(find("^a.F?E?GRID$", 1, 1, 0, 1, 0), (Names{"a.EGRID", "aXEGRID"}));
    EXPECT_EQ(find("^a\\.F?E?GRID$", 1, 0, 0, 1, 0), (Names{"a.EGRID"})) << "an anchored pattern is an expression";
    EXPECT_EQ(find("?.*GRID", 1, 0, 0, 1, 0), (Names{"a.EGRID", "b.GRID", "l.FGRID"}));
    EXPECT_EQ(find("", 0, 1, 1, 0, 0), (Names{"sub"}));
    EXPECT_EQ(find("", 0, 1, 0, 1, 1),
              (Names{"a.EGRID", "a.grid", "aXEGRID", "b.GRID", "l.FGRID", "sub/c.inc", "sub/deep/d.inc", "z.txt"}));
    EXPECT_EQ(find("GRID", 1, 1, 0, 1, 0), Names{}) << "an expression matches the whole leaf";
    EXPECT_EQ(find("(", 1, 1, 0, 1, 0), Names{}) << "a broken expression matches nothing";
    EXPECT_EQ(find("**", 1, 0, 1, 1, 0).size(), 7u);
    EXPECT_EQ(Relative(temp, Directory(temp.Path("sub")).FindSubdirectories()), (Names{"sub/deep", "sub/ring"}));
    EXPECT_TRUE(Directory(temp.Path("missing")).FindFilesBelow().empty());
    EXPECT_TRUE(Directory().FindFilesBelow().empty());

    const TestSupport::CurrentDirectoryGuard current(temp.Path());
    EXPECT_EQ(Directory("sub").FindFilesByPattern("*.inc"), Names{temp.Path("sub/c.inc")}) << "complete names";
}

TEST(DirectoryOnDisk, DeleteFollowsNoLinks)
{
    const TempDir temp;
    temp.Write("outside/keep.inc", "x");
    temp.Write("dir/a/b/c.inc", "x");
    fs::create_directory_symlink("../outside", temp.Path("dir/link"));
    fs::create_symlink("nowhere", temp.Path("dir/dangling"));
    fs::create_directory_symlink("outside", temp.Path("alias"));

    EXPECT_TRUE(Directory(temp.Path("dir")).Delete());
    EXPECT_TRUE(Directory(temp.Path("alias")).Delete());
    EXPECT_TRUE(Directory(temp.Path("missing")).Delete());
    EXPECT_EQ(temp.Listing(), "outside/ outside/keep.inc");
    const TestSupport::CurrentDirectoryGuard current(temp.Path("outside"));
    EXPECT_FALSE(Directory("/").Delete() || Directory().Delete() || Directory(".").Delete() ||
                 Directory("..").Delete());
    EXPECT_EQ(temp.Listing(), "outside/ outside/keep.inc");
}

TEST(DirectoryOnDisk, DeleteContentKeepsTheDirectory)
{
    const TempDir temp;
    const auto fill = [&] {
        temp.Write("dir/a.inc", "");
        temp.Write("dir/b.txt", "");
        temp.Write("dir/c.inc/d", "");
    };
    fill();
    EXPECT_TRUE(Directory(temp.Path("dir")).DeleteContent("", false));
    EXPECT_EQ(temp.Listing(), "dir/");
    fill();
    EXPECT_TRUE(Directory(temp.Path("dir")).DeleteContent("*.inc", true));
    EXPECT_EQ(temp.Listing(), "dir/ dir/b.txt dir/c.inc/ dir/c.inc/d");
    EXPECT_TRUE(Directory(temp.Path("dir")).DeleteContent("?.inc"));
    EXPECT_EQ(temp.Listing(), "dir/ dir/b.txt");
    EXPECT_FALSE(Directory(temp.Path("missing")).DeleteContent());
    EXPECT_FALSE(Directory().DeleteContent());

    temp.Write("dir/locked/x", "");
    fs::permissions(temp.Path("dir/locked"), fs::perms::owner_read | fs::perms::owner_exec);
    const TestSupport::UnprivilegedUser user(temp);
    EXPECT_FALSE(Directory(temp.Path("dir")).DeleteContent()) << "something was left";
    EXPECT_EQ(temp.Listing(), "dir/ dir/locked/ dir/locked/x");
}

TEST(DirectoryOnDisk, CopyToKeepsTextsModesTimesAndLinks)
{
    const TempDir temp;
    temp.Write("from/a.inc", "text a");
    temp.Write("from/sub/b.inc", std::string(700000, 'b'));
    fs::create_directory(temp.Path("from/empty"));
    fs::create_symlink("a.inc", temp.Path("from/link"));
    fs::create_directory_symlink("..", temp.Path("from/sub/up"));
    fs::permissions(temp.Path("from/a.inc"), fs::perms::owner_read);
    fs::permissions(temp.Path("from/sub"), fs::perms::owner_read | fs::perms::owner_exec);
    FileSystem::ErrorCode error;
    for (const char* name : {"from/a.inc", "from/sub", "from"}) {
        FileSystem::Instance().SetTimeLastModified(temp.Path(name), 1500000000123456789, error);
    }
    temp.Write("to/old.inc", "old");
    temp.Write("to/a.inc", "another text");

    {
        const TestSupport::UnprivilegedUser user(temp);
        Directory(temp.Path("from")).CopyTo(Directory(temp.Path("to")));
    }
    EXPECT_EQ(temp.Read("to/a.inc"), "text a");
    EXPECT_EQ(temp.Read("to/sub/b.inc"), std::string(700000, 'b'));
    EXPECT_EQ(temp.Read("to/old.inc"), "old");
    EXPECT_TRUE(fs::is_directory(temp.Path("to/empty")));
    EXPECT_EQ(fs::read_symlink(temp.Path("to/link")), "a.inc");
    EXPECT_EQ(fs::read_symlink(temp.Path("to/sub/up")), "..");
    for (const char* name : {"", "/a.inc", "/sub", "/sub/b.inc"}) {
        const FileStatus from = FileStatus::Of(temp.Path("from") + name);
        const FileStatus to = FileStatus::Of(temp.Path("to") + name);
        EXPECT_EQ(from.modifiedNanoseconds, to.modifiedNanoseconds) << name;
        EXPECT_EQ(from.mode, to.mode) << name;
    }
}

TEST(DirectoryOnDisk, CopyToThrowsWhenItCannotCopyEverything)
{
    const TempDir temp;
    temp.Write("from/a.inc", "a");
    temp.Write("from/sub/b.inc", "b");
    fs::create_directory_symlink("from/sub", temp.Path("alias"));
    const Directory from(temp.Path("from"));
    EXPECT_THROW(Directory(temp.Path("missing")).CopyTo(Directory(temp.Path("to"))), filesystem_error);
    EXPECT_THROW(from.CopyTo(Directory(temp.Path("from/sub/to"))), filesystem_error);
    EXPECT_THROW(from.CopyTo(Directory(temp.Path("alias/to"))), filesystem_error);
    EXPECT_THROW(from.CopyTo(Directory()), filesystem_error);
    EXPECT_NO_THROW(from.CopyTo(Directory(temp.Path("from/"))));
    EXPECT_EQ(temp.Listing(), "alias from/ from/a.inc from/sub/ from/sub/b.inc");

    // Each step of it in turn.
    using Call = FailingFileSystem::Call;
    for (int n = 1;; ++n) {
        FailingFileSystem failing;
        failing.FailAt(n, {Call::Open, Call::Read, Call::Write, Call::Close, Call::SetMode, Call::SetTime}, EIO);
        failing.LimitCopies(n % 2 == 0 ? 0 : 1);
        bool thrown = false;
        try {
            from.CopyTo(Directory(temp.Path("to" + std::to_string(n))));
        } catch (const filesystem_error&) {
            thrown = true;
        }
        if (!failing.HasFailed()) {
            EXPECT_FALSE(thrown);
            EXPECT_GT(n, 10);
            break;
        }
        // The close of a file that was only read loses nothing.
        EXPECT_TRUE(thrown || failing.FirstFailed() == Call::Close) << n;
    }
    EXPECT_EQ(temp.Read("from/a.inc") + temp.Read("from/sub/b.inc"), "ab");
}

} // namespace
} // namespace Tarn::Fjel::Core::Service
