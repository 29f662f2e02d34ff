#include "cache/CacheTable.h"
#include "cache/CacheForm.h"
#include "files/DirectoryManager.h"
#include "tests/support/FailingFileSystem.h"
#include "tests/support/LogRecorder.h"
#include "tests/support/TempDir.h"
#include "tests/support/UnprivilegedUser.h"
#include <tarn/service/Serializer.h>

#include <unistd.h>

namespace {

using namespace Tarn::Fjel::Core;
using namespace Tarn::Fjel::Core::DeckManager;
using CacheFile = CacheTable::CacheFile;
using TestSupport::FailingFileSystem;
using TestSupport::TempDir;

constexpr const char* const Marker = "project/deck_cache_xml.lock";
constexpr const char* const Table = "project/sub/DeckCache.ptd";

CacheEntry EntryOf(const std::vector<std::string>& names)
{
    CacheEntry entry;
    entry.settings = "1.0 \xc3\xa9 skip1";
    entry.sections = "a-b";
    long long position = 0;
    for (const std::string& name : names) {
        CacheEntry::CacheValue& value = entry.values.emplace_back();
        value.name = name;
        value.pos = position;
        value.size = 3'000'000'000;
        position += value.size;
    }
    return entry;
}

std::string TextOf(const CacheEntry& entry)
{
    std::string text = entry.stamp.ToString() + " " + std::to_string(entry.length);
    text += " " + entry.settings + " " + entry.sections;
    for (const CacheEntry::CacheValue& value : entry.values)
        text += " " + value.name + "@" + std::to_string(value.pos) + "+" + std::to_string(value.size);
    return text;
}

/// In both forms.
class CacheTableTest : public testing::TestWithParam<bool>
{
protected:
    CacheTableTest()
    {
        if (IsBinary()) m_directory.Write(Marker, "");
        m_directory.Write("project/sub/a.inc", "RUNSPEC\n");
        m_directory.Write("project/sub/deep/b.inc", "GRID\nPORO\n");
    }

    static bool IsBinary() { return GetParam(); }

    std::string Stored(const std::string& relativeName) const
    {
        CacheFile table;
        table.Load(m_manager, "sub");
        CacheEntry entry;
        return table.GetEntry(m_directory.Path(relativeName), entry) ? TextOf(entry) : "";
    }

    /// Two entries on disk.
    void Fill() const
    {
        CacheFile table;
        table.Load(m_manager, "sub");
        table.SetEntry(m_directory.Path("project/sub/a.inc"), EntryOf({"RUNSPEC"}));
        table.SetEntry(m_directory.Path("project/sub/deep/b.inc"), EntryOf({"GRID", "PORO"}));
        table.Save();
        EXPECT_FALSE(table.IsDirty());
    }

    TempDir m_directory;
    TestSupport::LogRecorder m_log;
    DirectoryManager m_manager{Service::Directory(m_directory.Path("project"))};
};

TEST_P(CacheTableTest, EntriesOutliveTheProcess)
{
    Fill();
    EXPECT_EQ(m_directory.Read(Table).substr(0, 4), IsBinary() ? "TFSB" : "<?xm");
    const std::string time = m_directory.File("project/sub/a.inc").TimeLastModified().ToString();
    EXPECT_EQ(Stored("project/sub/a.inc"), time + " 8 1.0 \xc3\xa9 skip1 a-b RUNSPEC@0+3000000000");
    EXPECT_THAT(Stored("project/sub/deep/b.inc"), testing::EndsWith("GRID@0+3000000000 PORO@3000000000+3000000000"));
    EXPECT_EQ(Stored("project/sub/none.inc"), "");

    CacheFile table;
    table.Load(m_manager, "sub");
    EXPECT_EQ(table.UsesXml(), !IsBinary());
    table.Clear();
    EXPECT_TRUE(table.IsDirty());
    table.Save();
    EXPECT_EQ(Stored("project/sub/a.inc"), "");
    EXPECT_TRUE(m_directory.Exists(Table));

    // An entry without keywords is one all the same.
    table.SetEntry(m_directory.Path("project/sub/a.inc"), CacheEntry());
    table.Save();
    EXPECT_EQ(Stored("project/sub/a.inc"), time + " 8  ");
    EXPECT_TRUE(m_log.Empty());
}

TEST_P(CacheTableTest, AnythingButAWholeFileOfThisFormIsAnEmptyTable)
{
    Fill();
    const std::string good = m_directory.Read(Table);
    const auto expectEmpty = [&](const std::string& what) {
        CacheFile table;
        table.Load(m_manager, "sub");
        CacheEntry entry;
        EXPECT_FALSE(table.FindEntry(m_directory.Path("project/sub/a.inc"), entry)) << what;
        EXPECT_FALSE(table.IsDirty()) << what;
    };
    for (std::size_t i = 0; i < good.size(); ++i) {
        for (const int change : {0x01, 0x20, 0xff}) {
            std::string bad = good;
            bad[i] = static_cast<char>(bad[i] ^ change);
            m_directory.Write(Table, bad);
            expectEmpty("byte " + std::to_string(i) + " changed");
        }
        m_directory.Write(Table, good.substr(0, i));
        expectEmpty(std::to_string(i) + " bytes");
    }
    m_directory.Write(Table, good + "\n");
    expectEmpty("a byte more");

    // The marker comes or goes: the file is of the other form.
    m_directory.Write(Table, good);
    EXPECT_NE(Stored("project/sub/a.inc"), "");
    if (IsBinary()) {
        unlink(m_directory.Path(Marker).c_str());
    } else {
        m_directory.Write(Marker, "");
    }
    expectEmpty("other form");
    EXPECT_TRUE(m_log.Empty());
}

/// A table of the next version.
struct LaterTable : Service::ISerializable
{
    void Serialize(Service::Serializer& serializer) override
    {
        int version = 2;
        std::string other = "something else";
        serializer.SerializeImpl(version, "version");
        serializer.SerializeImpl(other, "other");
    }
};

TEST_P(CacheTableTest, AnotherVersionStaysEmptyUntilSomethingIsStored)
{
    LaterTable later;
    ASSERT_TRUE(
        CacheForm::Write(m_directory.Path(Table), IsBinary() ? CacheForm::Kind::Binary : CacheForm::Kind::Xml, later));
    const std::string before = m_directory.Read(Table);
    CacheFile table;
    table.Load(m_manager, "sub");
    EXPECT_FALSE(table.IsDirty());
    table.Save();
    EXPECT_EQ(m_directory.Read(Table), before);
    table.SetEntry(m_directory.Path("project/sub/a.inc"), EntryOf({"OIL"}));
    table.Save();
    EXPECT_NE(Stored("project/sub/a.inc"), "");
}

TEST_P(CacheTableTest, WhatCantBeWrittenStaysInMemoryAndTheDiskAsItWas)
{
    Fill();
    const std::string before = m_directory.Read(Table);
    const std::string listing = m_directory.Listing();
    const std::string name = m_directory.Path("project/sub/a.inc");
    CacheFile table;
    table.Load(m_manager, "sub");
    table.SetEntry(name, EntryOf({"WATER"}));
    {
        FailingFileSystem disk;
        for (int n = 1;; ++n) {
            disk.FailAt(n,
                        {FailingFileSystem::Call::Open, FailingFileSystem::Call::Write, FailingFileSystem::Call::Close,
                         FailingFileSystem::Call::Rename},
                        EIO);
            table.Save();
            if (!disk.HasFailed()) break;
            EXPECT_TRUE(table.IsDirty()) << n;
            EXPECT_EQ(m_directory.Read(Table), before) << n;
            EXPECT_EQ(m_directory.Listing(), listing) << n;
        }
        EXPECT_FALSE(table.IsDirty());
        table.SetEntry(name, EntryOf({"GAS"}));
        for (const int space : {0, 1, 50}) {
            disk.LimitSpace(space);
            table.Save();
            EXPECT_TRUE(table.IsDirty()) << space;
        }
    }
    EXPECT_THAT(Stored("project/sub/a.inc"), testing::HasSubstr("WATER"));
    EXPECT_EQ(m_directory.Listing(), listing);

    // A directory in its place, then a folder that has gone.
    unlink(m_directory.Path(Table).c_str());
    m_directory.Write(std::string(Table) + "/inner", "");
    table.Save();
    EXPECT_TRUE(table.IsDirty());
    EXPECT_EQ(Stored("project/sub/a.inc"), "");
    m_directory.File("project/sub/a.inc").GetDirectory().Delete();
    table.Save();
    EXPECT_TRUE(table.IsDirty());
    CacheEntry entry;
    EXPECT_TRUE(table.FindEntry(name, entry));
    EXPECT_FALSE(m_directory.Exists("project/sub"));
    EXPECT_TRUE(m_log.Empty());
}

TEST_P(CacheTableTest, WithoutPermissionItIsEmptyAndNotWritten)
{
    Fill();
    const TestSupport::UnprivilegedUser user(m_directory);
    chmod(m_directory.Path(Table).c_str(), 0);
    EXPECT_EQ(Stored("project/sub/a.inc"), "");
    chmod(m_directory.Path("project/sub").c_str(), 0555);
    CacheFile table;
    table.Load(m_manager, "sub");
    table.SetEntry(m_directory.Path("project/sub/a.inc"), EntryOf({"OIL"}));
    table.Save();
    EXPECT_TRUE(table.IsDirty());
    chmod(m_directory.Path("project/sub").c_str(), 0755);
    table.Save();
    EXPECT_FALSE(table.IsDirty());
    EXPECT_NE(Stored("project/sub/a.inc"), "");
    EXPECT_TRUE(m_log.Empty());
}

TEST_P(CacheTableTest, ProcessesThatSaveAtOnceLeaveOneWholeFile)
{
    const std::string name = m_directory.Path("project/sub/a.inc");
    std::vector<pid_t> children;
    for (int child = 0; child < 4; ++child) {
        children.push_back(fork());
        if (children.back() != 0) continue;
        CacheFile table;
        table.Load(m_manager, "sub");
        for (int round = 0; round < 50; ++round) {
            table.SetEntry(name, EntryOf(std::vector<std::string>(100, "KW" + std::to_string(child))));
            table.Save();
        }
        _exit(0);
    }
    bool seen = false;
    for (int round = 0; round < 200; ++round) {
        const bool isWhole = !Stored("project/sub/a.inc").empty();
        EXPECT_TRUE(isWhole || !seen) << round;
        seen = seen || isWhole;
    }
    for (const pid_t child : children) {
        int status = -1;
        waitpid(child, &status, 0);
        EXPECT_EQ(status, 0);
    }
    EXPECT_NE(Stored("project/sub/a.inc"), "");
    EXPECT_THAT(m_directory.Listing(), testing::Not(testing::HasSubstr(".new")));
}

INSTANTIATE_TEST_SUITE_P(Forms, CacheTableTest, ::testing::Bool(),
                         [](const auto& form) { return form.param ? "Binary" : "XML"; });

TEST(CacheKeys, SayInWhichTableAFileIsAndUnderWhatName)
{
    const TempDir directory;
    DirectoryManager manager{Service::Directory(directory.Path("project"))};
    ASSERT_TRUE(manager.SetTempProjectDir(Service::Directory(directory.Path("temp"))));
    CacheTable tables(manager);
    struct Case
    {
        const char* name;
        const char* tableKey;
        const char* entryKey; ///< null: the whole name
    };
    const Case cases[] = {
        {"project/a.inc", "", "a.inc"},
        {"project/sub/a.inc", "sub", "a.inc"},
        {"project/sub/x/a.inc", "sub", "x/a.inc"},
        {"project/.git/x/a.inc", "", ".git/x/a.inc"},
        {"project/sub/.x/a.inc", "sub", ".x/a.inc"},
        {"project/a b/c.inc", "a b", "c.inc"},
        {"temp/a.inc", "", "a.inc"},
        {"temp/sub/x/a.inc", "sub", "x/a.inc"},
        {"other/sub/a.inc", "", nullptr},
        {"project2/sub/a.inc", "", nullptr}, // no file of the project, though its name begins alike
        {"project.DATA", "", nullptr},
    };
    for (const Case& test : cases) {
        const std::string name = directory.Path(test.name);
        const std::string tableKey = tables.TableKeyOf(name);
        EXPECT_EQ(tableKey, test.tableKey) << name;
        EXPECT_EQ(tables.GetOrLoad(tableKey).EntryKeyOf(name), test.entryKey != nullptr ? test.entryKey : name) << name;
    }

    // A project that takes up all of the file system.
    DirectoryManager all{Service::Directory("/")};
    EXPECT_EQ(CacheTable(all).TableKeyOf("/sub/x/a.inc"), "sub");
    EXPECT_EQ(CacheTable(all).GetOrLoad("").EntryKeyOf("/a.inc"), "a.inc");
}

TEST(CacheForms, AnEntryOfTheBinaryFormIsSmall)
{
    CacheFile table;
    const TempDir directory;
    directory.Write("deck_cache_xml.lock", "");
    const DirectoryManager manager{Service::Directory(directory.Path())};
    table.Load(manager, "");
    CacheEntry entry;
    constexpr int count = 10000;
    long long position = 0;
    for (int i = 0; i < count; ++i) {
        CacheEntry::CacheValue& value = entry.values.emplace_back();
        value.name = "KEYWORD" + std::to_string(i % 10);
        value.pos = position;
        value.size = 100'000'000 + i; // a text of a terabyte
        position += value.size;
    }
    table.SetEntry(directory.Path("a.inc"), entry);
    table.Save();
    const std::string bytes = directory.Read("DeckCache.ptd");
    EXPECT_LE(bytes.size(), 24u * count + 10 * 8 + 200);
    EXPECT_EQ(bytes.find("KEYWORD7"), bytes.rfind("KEYWORD7"));
}

} // namespace
