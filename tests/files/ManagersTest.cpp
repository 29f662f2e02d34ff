#include "cache/CacheEntry.h"
#include "files/DirectoryManager.h"
#include "files/DirectoryManagerNoProjDir.h"
#include "files/FileTagState.h"
#include "files/KeywordFactory.h"
#include "tests/support/DeckTest.h"
#include "text/LineStringReader.h"
#include <tarn/service/Exception.h>
#include <tarn/service/Serializer.h>
#include <tarn/service/XMLInputSerializer.h>
#include <tarn/service/XMLOutputSerializer.h>

// What stands around the keyword files: their managers, the makers of their keywords, what is kept of them.

namespace {

using namespace DeckTests;
using Service::Directory;

class ManagersTest : public testing::Test
{
protected:
    TestSupport::CleanEnvironment m_environment;
    TestSupport::LogRecorder m_log;
};

TEST_F(ManagersTest, ProjectDirectoryMustBeACompletePathAndNoFile)
{
    const TempDir directory;
    directory.Write("file", "x");
    for (const std::string& path : {std::string("relative/path"), directory.Path("file")}) {
        EXPECT_EQ(Thrown<DeckManagerException>([&] { DirectoryManager manager{Directory(path)}; }),
                  "DeckManager project dir must be a complete path and can not be a file.")
            << path;
    }

    DirectoryManager manager{Directory(directory.Path("project"))};
    EXPECT_TRUE(directory.Exists("project"));
    EXPECT_EQ(manager.ProjectDirName(), directory.Path("project"));
    EXPECT_EQ(manager.CacheDir().Name(), directory.Path("project/Cache__"));
    EXPECT_FALSE(directory.Exists("project/Cache__"));
    EXPECT_TRUE(manager.SetProjectDir(Directory(directory.Path("other/place"))));
    EXPECT_EQ(manager.CacheDir().Name(), directory.Path("other/place/Cache__"));
    EXPECT_THROW(manager.SetProjectDir(Directory("nowhere")), DeckManagerException);
    EXPECT_EQ(manager.ProjectDirName(), directory.Path("other/place"));
}

TEST_F(ManagersTest, TemporaryProjectMayFailAndIsCleared)
{
    const TempDir directory;
    directory.Write("file", "x");
    DirectoryManager manager{Directory(directory.Path("project"))};
    EXPECT_FALSE(manager.TempProjectDir().IsSet());
    EXPECT_TRUE(manager.SetTempProjectDir(Directory(directory.Path("temp"))));
    EXPECT_TRUE(directory.Exists("temp"));
    for (const std::string& path : {std::string("relative"), directory.Path("file")}) {
        EXPECT_FALSE(manager.SetTempProjectDir(Directory(path)));
        EXPECT_EQ(manager.TempProjectDirName(), directory.Path("temp"));
    }
    manager.SetTempProjectDir(Directory());
    EXPECT_FALSE(manager.TempProjectDir().IsSet());
    EXPECT_EQ(manager.TempProjectDirName(), "");

    DirectoryManagerNoProjDir none;
    EXPECT_FALSE(none.SetProjectDir(Directory(directory.Path("project"))));
    EXPECT_FALSE(none.SetTempProjectDir(Directory(directory.Path("temp"))));
    EXPECT_FALSE(none.ProjectDir().IsSet() || none.CacheDir().IsSet() || none.TempProjectDir().IsSet());
    EXPECT_EQ(none.ProjectDirName() + none.TempProjectDirName(), "");
}

TEST_F(ManagersTest, NamesOfFiles)
{
    const TempDir directory;
    directory.Write("a.inc", "OIL\n");
    directory.Write("folder/x", "");
    const TestSupport::CurrentDirectoryGuard guard(directory.Path());
    KeywordFileManager manager("");
    EXPECT_FALSE(manager.HasProjectDir());
    const std::shared_ptr<KeywordFile> file = manager.GetKeywordFile(Service::FileName("a.inc"), true);
    EXPECT_EQ(file->GetFileName().GetFullName(), directory.Path("a.inc"));
    // The first to ask says whether the file knows variables.
    EXPECT_EQ(manager.GetKeywordFile(directory.File("folder/../a.inc"), false), file);
    EXPECT_TRUE(file->UsesVariables());

    EXPECT_EQ(manager.GetKeywordFile(Service::FileName(), true), nullptr);
    EXPECT_TRUE(m_log.Empty());
    EXPECT_EQ(manager.GetKeywordFile(directory.File("folder"), true), nullptr);
    EXPECT_EQ(m_log.Texts(3), std::vector<std::string>{"The file \"" + directory.Path("folder") + "\" is not a file."});
    EXPECT_EQ(manager.Files().size(), 1u);

    // A rename that someone else did.
    EXPECT_THROW(manager.KeywordFileMoved(*file, directory.File("b.inc")), DeckManagerException);
    EXPECT_EQ(file->GetFileName().GetFileName(), "a.inc");
    std::filesystem::rename(directory.Path("a.inc"), directory.Path("b.inc"));
    manager.KeywordFileMoved(*file, directory.File("b.inc"));
    EXPECT_EQ(manager.FindKeywordFile(directory.File("b.inc")), file);
    EXPECT_EQ(manager.FindKeywordFile(directory.File("a.inc")), nullptr);
    EXPECT_EQ((*file->Begin())->GetName(), "OIL");

    // By the name of a link, and by relative ones, which mean what they mean now.
    std::filesystem::create_directory_symlink(directory.Path(), directory.Path("link"));
    std::filesystem::rename(directory.Path("b.inc"), directory.Path("c.inc"));
    EXPECT_EQ(manager.FindKeywordFile(directory.File("link/b.inc")), file);
    EXPECT_EQ(manager.FindKeywordFile(Service::FileName("b.inc")), file);
    EXPECT_EQ(manager.FindKeywordFile(directory.File("link/c.inc")), nullptr);
    manager.KeywordFileMoved(*file, Service::FileName("c.inc"));
    EXPECT_EQ(file->GetFileName().GetFullName(), directory.Path("c.inc"));
    manager.MoveKeywordFile(*file, Service::FileName("folder/d.inc"));
    EXPECT_EQ(file->GetFileName().GetFullName(), directory.Path("folder/d.inc"));
    EXPECT_TRUE(directory.Exists("folder/d.inc"));
}

TEST_F(ManagersTest, FilesMoveWithTheirKeywords)
{
    const TempDir directory;
    directory.Write("a.inc", "OIL\nGAS\n");
    directory.Write("taken.inc", "WATER\n");
    KeywordFileManager manager("");
    const std::shared_ptr<KeywordFile> file = manager.GetKeywordFile(directory.File("a.inc"), false);
    const IKeyword* first = *file->Begin();
    EXPECT_EQ(Thrown<DeckManagerException>([&] { manager.MoveKeywordFile(*file, directory.File("taken.inc")); }),
              "KeywordFile::MoveKeywordFile can not move to an existing file/directory");
    EXPECT_FALSE(file->MoveKeywordFile(directory.File("a.inc")));

    manager.MoveKeywordFile(*file, directory.File("b.inc"));
    EXPECT_EQ(directory.Listing(), "b.inc taken.inc");
    EXPECT_EQ(*file->Begin(), first);
    EXPECT_EQ(*first->GetText(), "OIL\n");
    EXPECT_EQ(manager.FindKeywordFile(directory.File("b.inc")), file);
    EXPECT_EQ(manager.FindKeywordFile(directory.File("a.inc")), nullptr);

    // A file that isn't there yet only takes the name.
    const std::shared_ptr<KeywordFile> missing = manager.GetKeywordFile(directory.File("missing.inc"), false);
    manager.MoveKeywordFile(*missing, directory.File("other.inc"));
    EXPECT_EQ(manager.FindKeywordFile(directory.File("other.inc")), missing);
    EXPECT_FALSE(directory.Exists("other.inc"));
}

TEST_F(ManagersTest, KeywordsAreMadeUnderNamesThatTheirSyntaxTakes)
{
    const auto made = [](const std::string& syntax, const std::string& name, bool validate) {
        const std::unique_ptr<Keyword> keyword =
            KeywordFactory::Create(SyntaxOf(syntax), false, name, validate, nullptr, nullptr, -1, -1);
        return keyword ? keyword->GetName() : "refused";
    };
    EXPECT_EQ(made("PORO", "", true), "PORO");
    EXPECT_EQ(made("PORO", "  ", true), "PORO");
    EXPECT_EQ(made("PORO", "poro", true), "PORO");
    EXPECT_EQ(made("PORO", "PERMX", true), "refused");
    EXPECT_EQ(made("PORO", "PERMX", false), "PERMX");
    EXPECT_EQ(made("INCLUDE", "ANYTHING", true), "ANYTHING");

    for (const char* name : {"PORO", "INCLUDE", "GDFILE", "ORDGRID"}) {
        const std::unique_ptr<Keyword> keyword =
            KeywordFactory::Create(SyntaxOf(name), false, "", true, nullptr, nullptr, -1, -1);
        EXPECT_EQ(keyword->GetLine(), -1);
        EXPECT_EQ(keyword->GetPosition(), 0);
        EXPECT_EQ(keyword->GetDiskFile(), nullptr);
        EXPECT_TRUE(keyword->GetText()->starts_with(keyword->GetName() + "\n")) << *keyword->GetText();
        EXPECT_FALSE(keyword->IsGenerated() || keyword->IsInGeneratedFile() || keyword->IsDirty());
    }

    const auto refusal = [](auto create) {
        return Thrown<DeckManagerException>(
            [&] { create(SyntaxOf("PORO"), false, "", nullptr, nullptr, -1, -1, nullptr); });
    };
    EXPECT_EQ(refusal(&KeywordFactory::CreateINCLUDE), "KeywordFactory::CreateINCLUDE: only accepts INCLUDE syntax");
    EXPECT_EQ(refusal(&KeywordFactory::CreateGDFILE), "KeywordFactory::CreateGDFILE: only accepts GDFILE syntax");
    EXPECT_EQ(refusal(&KeywordFactory::CreateORDGRID), "KeywordFactory::CreateORDGRID: only accepts ORDGRID syntax");
}

TEST_F(ManagersTest, TagBlocksOfFiles)
{
    struct Case
    {
        const char* what;
        std::string text;
        bool tagged;
        long long behind;
    };
    Environment::Instance().SetCustomFileGeneratedTag("ABC");
    const std::string tag = Environment::Instance().GetFileGeneratedTag() + "\n";
    const auto size = static_cast<long long>(tag.size());
    const std::vector<Case> cases = {
        {"nothing", "", false, 0},
        {"blank lines only", "\n \n\t\n", false, 0},
        {"no tag", "-- words\nRUNSPEC\n", false, 0},
        {"the plain tag, where the host has a word of its own", "-- Generated\nRUNSPEC\n", false, 0},
        {"a tag", tag + "-- words\n", true, size},
        {"the old tag", "--!!! Program generated\nRUNSPEC\n", true, 24},
        {"two tags with a blank line between, indented", tag + "\n  " + tag + "\nRUNSPEC\n", true, 2 * size + 3},
        {"a tag and nothing else", tag, true, size},
        {"a tag behind other text", "-- words\n" + tag, false, 0},
    };
    for (const Case& test : cases) {
        SCOPED_TRACE(test.what);
        LineStringReader reader(test.text);
        FileTagState state;
        state.Set(true);
        state.Read(reader);
        EXPECT_EQ(state.GetValue(), test.tagged);
        EXPECT_FALSE(state.IsChanged());
        EXPECT_EQ(reader.Tell(), test.behind);
    }
}

TEST_F(ManagersTest, ChangedTagOfAFileGoesBackToWhatItWas)
{
    FileTagState state;
    EXPECT_FALSE(state.Set(false));
    EXPECT_FALSE(state.IsChanged());
    EXPECT_FALSE(state.Set(true));
    EXPECT_TRUE(state.Set(false));
    EXPECT_FALSE(state.Set(true));
    EXPECT_TRUE(state.IsChanged());
    state.Restore();
    EXPECT_FALSE(state.GetValue() || state.IsChanged());
}

TEST_F(ManagersTest, ANumberThatIsNoneIsADamagedEntryAndNotAPosition)
{
    CacheEntry entry;
    entry.values.emplace_back().pos = 12345;
    std::stringstream stream;
    {
        Service::XMLOutputSerializer output(stream, "deck");
        Service::Serializer serializer(output);
        serializer.SerializeImpl(entry, "y");
        output.Finish();
    }
    std::string text = stream.str();
    text.replace(text.find("12345"), 5, "12x45");
    std::istringstream damaged(text);
    Service::XMLInputSerializer input(damaged, "deck");
    Service::Serializer serializer(input);
    EXPECT_THROW(serializer.SerializeImpl(entry, "y"), Service::Exception);
}

} // namespace
