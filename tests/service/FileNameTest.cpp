#include "tests/support/FailingFileSystem.h"
#include "tests/support/TempDir.h"
#include "tests/support/UnprivilegedUser.h"

#include <tarn/service/FileName.h>
#include <tarn/service/FileUtils.h>

#include <boost/filesystem/exception.hpp>

#include <map>
#include <set>

namespace Tarn::Fjel::Core::Service {
namespace {

namespace fs = std::filesystem;
using boost::filesystem::filesystem_error;
using TestSupport::CurrentDirectoryGuard;
using TestSupport::TempDir;

TEST(Directory, NamesAreInNormalForm)
{
    struct Case
    {
        const char *text, *name, *leaf, *parent, *root;
        bool complete;
    };
    const Case cases[] = {
        {"", "", "", "", "", false},
        {"  ", "", "", "", "", false},
        {"a", "a", "a", "", "", false},
        {"a/b//c/./d/", "a/b/c/d", "d", "a/b/c", "", false},
        {"a\\b/c\\", "a/b/c", "c", "a/b", "", false},
        {".", ".", ".", "..", "", false},
        {"./a", "a", "a", "", "", false},
        {"a/..", ".", ".", "..", "", false},
        {"a/../../b", "../b", "b", "..", "", false},
        {"../..", "../..", "..", "../../..", "", false},
        {"/", "/", "", "", "", true},
        {"//", "/", "", "", "", true},
        {"/a", "/a", "a", "/", "", true},
        {"//a/../../b/", "/b", "b", "/", "", true},
        {"\\a\\b", "/a/b", "b", "/a", "", true},
        {"C:\\", "C:/", "", "", "C:", true},
        {"c:", "C:/", "", "", "C:", true},
        {"c:\\x\\..\\..\\y\\", "C:/y", "y", "C:/", "C:", true},
        {"c:x", "c:x", "c:x", "", "", false},
    };
    for (const Case& c : cases) {
        const Directory directory{std::string_view(c.text)};
        EXPECT_EQ(directory.Name(), c.name) << c.text;
        EXPECT_EQ(directory.LeafName(), c.leaf) << c.text;
        EXPECT_EQ(directory.Parent().Name(), c.parent) << c.text;
        EXPECT_EQ(directory.RootName(), c.root) << c.text;
        EXPECT_EQ(directory.IsComplete(), c.complete) << c.text;
        EXPECT_EQ(directory.IsSet(), *c.name != '\0') << c.text;
        EXPECT_EQ(directory.IsRelativePath(), directory.IsSet() && !c.complete) << c.text;
        EXPECT_EQ(Directory(directory.Name()).Name(), directory.Name()) << c.text;
    }
}

TEST(Directory, TextThatCannotBeAPathThrows)
{
    for (const std::string& text : {std::string("a\0b", 3), std::string(5000, '/') + "a", "x/" + std::string(256, 'a'),
                                    "d/" + std::string(300, 'a') + "/e"})
    {
        EXPECT_THROW(Directory{text}, filesystem_error);
        EXPECT_THROW(FileName{text}, filesystem_error);
        FileName name("x/y.inc");
        EXPECT_THROW(name.SetFileName(text), filesystem_error);
        EXPECT_EQ(name.GetFullName(), "x/y.inc");
    }
    EXPECT_NO_THROW(FileName(std::string(255, 'a')));
}

TEST(Directory, AppendTakesNamesAsRelative)
{
    EXPECT_EQ(Directory("/p").Append("a/b").Append("c\\").Name(), "/p/a/b/c");
    EXPECT_EQ(Directory("/p").Append("/a").Append("C:\\b").Append("").Name(), "/p/a/b");
    EXPECT_EQ(Directory("/p/q").Append("../x").Name(), "/p/x");
    EXPECT_EQ(Directory("/").Append("x").Name(), "/x");
    EXPECT_EQ(Directory().Append("x").Name(), "x");
    EXPECT_EQ(Directory("/p").Append(Directory("a/b")).Name(), "/p/a/b");
    Directory self("a");
    EXPECT_EQ(self.Append(self).Name(), "a/a");
}

TEST(Directory, MakeCompleteAndBack)
{
    struct Case
    {
        const char *name, *base, *complete;
    };
    const Case cases[] = {
        {"sub", "/p/q", "/p/q/sub"},
        {"../x", "/p/q", "/p/x"},
        {"/a", "/p", "/a"},
        {"", "/p", "/p"},
        {".", "/p", "/p"},
        {"D:\\a", "/p", "D:/a"},
        {"x", "/", "/x"},
        {"x", "C:\\d", "C:/d/x"},
        {"..", "/", "/"},
        {"..\\..\\..", "/p/q", "/"},
        {".x", "/p", "/p/.x"},
    };
    for (const Case& c : cases) {
        Directory directory{std::string_view(c.name)};
        EXPECT_TRUE(directory.MakeComplete(Directory(c.base)));
        EXPECT_EQ(directory.Name(), c.complete) << c.name;
    }
    Directory relative("a");
    EXPECT_FALSE(relative.MakeComplete(Directory()));
    EXPECT_EQ(relative.Name(), "a");
    EXPECT_TRUE(relative.MakeComplete(Directory("b")));
    EXPECT_EQ(relative.Name(), Directory::Current().Append("b/a").Name());
}

TEST(Directory, RelativePathFromIsTheWayThatAppendGoesBack)
{
    struct Case
    {
        const char *name, *base, *way;
    };
    const Case cases[] = {
        {"/p/q/r", "/p", "q/r"}, {"/p", "/p/q/r", "../.."}, {"/p/a", "/p/b", "../a"}, {"/p", "/p", "."},
        {"/pq", "/p", "../pq"},  {"/a", "/", "a"},          {"/", "/a/b", "../.."},   {"C:/a/b", "c:/a", "b"},
        {"a/b", "a/c", "../b"},  {"../x", "a", "../../x"},  {"a", ".", "a"},          {"/a", "b", nullptr},
        {"a", "/b", nullptr},    {"C:/a", "D:/a", nullptr}, {"/a", "C:/a", nullptr},  {"a", "../b", nullptr},
        {"", "/a", nullptr},     {"/a", "", nullptr},
    };
    for (const Case& c : cases) {
        const Directory directory{std::string_view(c.name)};
        const Directory base{std::string_view(c.base)};
        Directory way("unchanged");
        EXPECT_EQ(directory.RelativePathFrom(base, way), c.way != nullptr) << c.name << " from " << c.base;
        EXPECT_EQ(way.Name(), c.way != nullptr ? c.way : "unchanged");
        if (c.way != nullptr) {
            EXPECT_EQ(Directory(base).Append(way), directory) << c.name << " from " << c.base;
        }
    }
}

TEST(Directory, IsDescendantOfIsStrictAndGoesByParts)
{
    struct Case
    {
        const char *name, *outer;
        bool descendant;
    };
    const Case cases[] = {
        {"/p/q", "/p", true}, {"/p/q/r", "/p", true}, {"/p", "/p", false},  {"/pq", "/p", false},
        {"/p", "/", true},    {"/", "/", false},      {"p/q", "p", true},   {"p/q", "/p", false},
        {"", "/p", false},    {"/p", "", false},      {"p", ".", true},     {"../p", ".", false},
        {".", ".", false},    {"../..", "..", false}, {"../x", "..", true}, {"C:/a/b", "C:/", true},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(Directory(std::string_view(c.name)).IsDescendantOf(Directory(std::string_view(c.outer))),
                  c.descendant)
            << c.name << " in " << c.outer;
    }
}

TEST(FileName, TakesNamesApart)
{
    struct Case
    {
        const char *text, *folder, *leaf, *root, *extension, *full;
    };
    const Case cases[] = {
        {"", "", "", "", "", ""},
        {"CASE", "", "CASE", "CASE", "", "CASE"},
        {"CASE.DATA", "", "CASE.DATA", "CASE", "DATA", "CASE.DATA"},
        {"a.b/c.d.e", "a.b", "c.d.e", "c.d", "e", "a.b/c.d.e"},
        {"a.b/c", "a.b", "c", "c", "", "a.b/c"},
        {"sub\\a.inc", "sub", "a.inc", "a", "inc", "sub/a.inc"},
        {"/a.inc", "/", "a.inc", "a", "inc", "/a.inc"},
        {"/p/", "/p", "", "", "", "/p"},
        {"..", "..", "", "", "", ".."},
        {"p/..", ".", "", "", "", "."},
        {"./a.inc", ".", "a.inc", "a", "inc", "a.inc"},
        {".hidden", "", ".hidden", ".hidden", "", ".hidden"},
        {"a.", "", "a.", "a", "", "a."},
        {"C:\\d\\a.inc", "C:/d", "a.inc", "a", "inc", "C:/d/a.inc"},
        {"C:\\a.inc", "C:/", "a.inc", "a", "inc", "C:/a.inc"},
        {"C:", "C:/", "", "", "", "C:/"},
        {" a b.inc", "", " a b.inc", " a b", "inc", " a b.inc"},
    };
    for (const Case& c : cases) {
        const FileName name{std::string_view(c.text)};
        EXPECT_EQ(name.GetDirectory().Name(), c.folder) << c.text;
        EXPECT_EQ(name.GetFileName(), c.leaf) << c.text;
        EXPECT_EQ(name.GetRootName(), c.root) << c.text;
        EXPECT_EQ(name.GetExtension(), c.extension) << c.text;
        EXPECT_EQ(name.GetFullName(), c.full) << c.text;
        EXPECT_EQ(name.IsSet(), *c.leaf != '\0') << c.text;
    }
}

TEST(FileName, EveryWayToChangeItKeepsTheFullNameInStep)
{
    FileName name("old/a.inc");
    name = Directory("/new");
    EXPECT_EQ(name.GetFullName(), "/new/a.inc");
    name.SetExtension("DATA");
    EXPECT_EQ(name.GetFullName(), "/new/a.DATA");
    name.SetExtension(".x");
    EXPECT_EQ(name.GetFullName(), "/new/a.x");
    name.SetExtension("");
    EXPECT_EQ(name.GetFullName(), "/new/a");
    name.SetFileName("b.c");
    EXPECT_EQ(name.GetFullName(), "/new/b.c");
    name.SetFileName("/other/d.e");
    EXPECT_EQ(name.GetFullName(), "/other/d.e");
    name.Append("sub");
    EXPECT_EQ(name.GetFullName(), "/other/sub/d.e");

    // As its base class, too.
    Directory& folder = name;
    folder = Directory("rel");
    EXPECT_EQ(name.GetFullName(), "rel/d.e");
    folder.MakeComplete(Directory("/base"));
    EXPECT_EQ(name.GetFullName(), "/base/rel/d.e");
    Directory out;
    ASSERT_TRUE(folder.RelativePathFrom(Directory("/base/rel"), out));
    folder = out;
    EXPECT_EQ(name.GetFullName(), "d.e");

    FileName copy(name);
    copy = FileName("/x/y");
    FileName moved(std::move(copy));
    EXPECT_EQ(moved.GetFullName(), "/x/y");
    moved = Directory();
    EXPECT_EQ(moved.GetFullName(), "y");
    EXPECT_EQ(FileName(Directory("/d"), "s/l.inc").GetFullName(), "/d/s/l.inc");
    EXPECT_EQ(FileName(Directory("/d"), "/s/l.inc").GetFullName(), "/s/l.inc");
}

TEST(FileName, ABareLeafIsCompletedByItsFolder)
{
    FileName name("a.inc");
    EXPECT_FALSE(name.IsComplete());
    EXPECT_FALSE(name.IsRelativePath());
    EXPECT_TRUE(name.MakeComplete(Directory("/p")));
    EXPECT_EQ(name.GetFullName(), "/p/a.inc");
    EXPECT_TRUE(name.IsComplete());
}

TEST(FileName, QueriesTellFilesFromDirectories)
{
    const TempDir temp;
    temp.Write("file.inc", "12345");
    fs::create_directory(temp.Path("dir"));
    fs::create_symlink("file.inc", temp.Path("link"));
    fs::create_symlink("nowhere", temp.Path("dangling"));
    struct Case
    {
        const char* leaf;
        bool isFile, exists;
        std::int64_t length;
    };
    for (const Case& c : {Case{"file.inc", true, true, 5},
                          {"link", true, true, 5},
                          {"dangling", false, false, -1},
                          {"missing", false, false, -1},
                          {"file.inc/x", false, false, -1}})
    {
        const FileName name = temp.File(c.leaf);
        EXPECT_EQ(name.IsFile(), c.isFile) << c.leaf;
        EXPECT_EQ(name.FileExists(), c.exists) << c.leaf;
        EXPECT_EQ(name.FileAccessibleAndExists(), c.exists) << c.leaf;
        EXPECT_EQ(name.FileLength(), c.length) << c.leaf;
        EXPECT_EQ(name.TimeLastModified().IsDef(), c.exists) << c.leaf;
    }
    EXPECT_FALSE(temp.File("dir").IsFile());
    EXPECT_TRUE(temp.File("dir").FileExists());
    EXPECT_TRUE(temp.File("dir").Exists()) << "asks for the folder, not for the leaf";
    EXPECT_FALSE(FileName().FileExists() || FileName().FileAccessibleAndExists());
    EXPECT_TRUE(Directory(temp.Path("dir")).IsDirectory());
    EXPECT_TRUE(Directory(temp.Path("file.inc")).Exists());
    EXPECT_FALSE(Directory(temp.Path("file.inc")).IsDirectory());

    fs::permissions(temp.Path("file.inc"), fs::perms::none);
    const TestSupport::UnprivilegedUser user(temp);
    EXPECT_TRUE(temp.File("file.inc").FileExists());
    EXPECT_FALSE(temp.File("file.inc").FileAccessibleAndExists());
}

TEST(FileName, TheTimeOfTheLastChangeIsInWholeMilliseconds)
{
    const TempDir temp;
    const std::string path = temp.Write("a", "x");
    FileSystem::ErrorCode error;
    for (const std::int64_t nanoseconds : {1709209800123999999, 0l, -1l, -1500000001l}) {
        ASSERT_TRUE(FileSystem::Instance().SetTimeLastModified(path, nanoseconds, error));
        const std::int64_t down = nanoseconds >= 0 ? nanoseconds / 1000000 : (nanoseconds - 999999) / 1000000;
        EXPECT_EQ(FileName(path).TimeLastModified().ToMilliseconds(), down);
        EXPECT_EQ(FileStatus::Of(path).modifiedNanoseconds, nanoseconds);
    }
}

TEST(FileName, OneFileIsOneFileWhateverLeadsToIt)
{
    const TempDir temp;
    temp.Write("dir/a.inc", "x");
    temp.Write("dir/b.inc", "x");
    fs::create_directory_symlink("dir", temp.Path("alias"));
    fs::create_symlink("dir/a.inc", temp.Path("link.inc"));
    fs::create_hard_link(temp.Path("dir/a.inc"), temp.Path("hard.inc"));
    const CurrentDirectoryGuard current(temp.Path("dir"));

    const FileName a = temp.File("dir/a.inc");
    for (const FileName& same : {temp.File("dir//./a.inc"), temp.File("alias/a.inc"), temp.File("link.inc"),
                                 temp.File("dir\\x\\..\\a.inc"), FileName("a.inc"), FileName("../alias/a.inc")})
    {
        EXPECT_TRUE(a == same) << same.GetFullName();
        EXPECT_FALSE(a != same) << same.GetFullName();
        EXPECT_EQ(a.CanonicalName(), same.CanonicalName()) << same.GetFullName();
    }
    for (const FileName& other : {temp.File("dir/b.inc"), temp.File("hard.inc"), temp.File("dir/A.inc"),
                                  temp.File("dir"), FileName("x.inc"), FileName()})
    {
        EXPECT_TRUE(a != other) << other.GetFullName();
        EXPECT_NE(a.CanonicalName(), other.CanonicalName()) << other.GetFullName();
    }
    // What doesn't exist is the same where its folder is.
    EXPECT_TRUE(temp.File("dir/new/n.inc") == temp.File("alias/new/n.inc"));
    EXPECT_FALSE(temp.File("dir/new.inc") == temp.File("alias/other.inc"));
    // And a link that leads there is that file.
    fs::create_symlink("dir/new.inc", temp.Path("ahead.inc"));
    fs::create_symlink(temp.Path("ahead.inc"), temp.Path("dir/further.inc"));
    EXPECT_TRUE(temp.File("alias/further.inc") == temp.File("dir/new.inc"));
    EXPECT_EQ(temp.File("alias/further.inc").CanonicalName(), temp.Path("dir/new.inc"));
    fs::create_directory_symlink("none", temp.Path("nowhere"));
    EXPECT_TRUE(temp.File("nowhere/x.inc") == temp.File("none/x.inc"));
    fs::create_symlink("ring2", temp.Path("ring1"));
    fs::create_symlink("ring1", temp.Path("ring2"));
    EXPECT_EQ(temp.File("ring1/x").CanonicalName(), temp.Path("ring1/x"));
    EXPECT_TRUE(Directory(temp.Path("dir")) == Directory(temp.Path("alias")));
    EXPECT_TRUE(Directory(temp.Path("dir")) != temp.Dir());
    EXPECT_TRUE(Directory() == Directory());
    EXPECT_FALSE(Directory() == temp.Dir());

    TestSupport::FailingFileSystem calls;
    EXPECT_TRUE(a == temp.File("dir/a.inc"));
    EXPECT_FALSE(a == FileName());
    EXPECT_EQ(calls.Seen(), 0) << "equal names and unset ones need no system call";
}

TEST(FileName, NothingAheadOfDotDotIsDroppedBehindALink)
{
    const TempDir temp;
    temp.Write("far/away/a.inc", "far");
    temp.Write("a.inc", "near");
    fs::create_directory_symlink("far/away/deep", temp.Path("link"));
    fs::create_directory(temp.Path("far/away/deep"));

    FileName name("link/../a.inc");
    EXPECT_EQ(name.GetFullName(), "a.inc");
    name.MakeComplete(temp.Dir());
    EXPECT_EQ(name.FileLength(), 3) << "the file that the system opens under the user's own text";
    EXPECT_TRUE(name == temp.File("far/away/a.inc"));
    EXPECT_TRUE(temp.File("link/../a.inc") == name);
    EXPECT_EQ(temp.File("far/../a.inc").GetFullName(), temp.Path("a.inc"));
}

TEST(FileName, OrderIsThatOfTheNames)
{
    EXPECT_TRUE(FileName("/a/b") < FileName("/a/c"));
    EXPECT_FALSE(FileName("/a/b") < FileName("/a//b"));
    const std::set<FileName> names{FileName("b"), FileName("a"), FileName("./a")};
    EXPECT_EQ(names.size(), 2u);
    std::map<std::string, int, FileUtils::FileNameLess> byText{{"b", 1}, {"a", 2}};
    EXPECT_EQ(byText.begin()->first, "a");
    EXPECT_EQ(byText.count(std::string_view("b")), 1u);
    EXPECT_EQ(byText.count("B"), FileName::IsCaseSensitive() ? 0u : 1u);
}

} // namespace
} // namespace Tarn::Fjel::Core::Service
