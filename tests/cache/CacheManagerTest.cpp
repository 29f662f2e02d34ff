#include "cache/CacheManager.h"
#include "cache/CacheEntry.h"
#include "cache/CacheManagerNoProjDir.h"
#include "files/DirectoryManager.h"
#include "files/KeywordFile.h"
#include "tests/support/TempDir.h"
#include <deckmanager/KeywordFileManager.h>
#include <tarn/service/FileStatus.h>
#include <tarn/service/FileSystem.h>

#include <cstdio>
#include <filesystem>

namespace {

using namespace Tarn::Fjel::Core;
using namespace Tarn::Fjel::Core::DeckManager;
using Service::FileStatus;

class CacheManagerTest : public testing::Test
{
protected:
    CacheManagerTest()
    {
        for (const char* name : {"project/top.DATA", "project/sub/a.inc", "project/other/b.inc", "outside/c.inc"})
            m_directory.Write(name, "RUNSPEC\n");
    }

    std::shared_ptr<KeywordFile> File(const std::string& relativeName)
    {
        return m_files.GetKeywordFile(m_directory.File(relativeName), false);
    }

    static CacheEntry Entry(const std::string& name)
    {
        CacheEntry entry;
        entry.stamp = Service::Time(1999, 1, 1);
        entry.length = 77;
        entry.values.emplace_back().name = name;
        return entry;
    }

    bool IsTrusted(CacheManager& cache, const std::string& relativeName)
    {
        CacheEntry entry;
        return cache.GetCacheEntry(*File(relativeName), entry);
    }

    void Shift(const std::string& relativeName, long long milliseconds)
    {
        const std::string path = m_directory.Path(relativeName);
        Service::FileSystem::ErrorCode error;
        Service::FileSystem::Instance().SetTimeLastModified(
            path, FileStatus::Of(path).modifiedNanoseconds + milliseconds * 1'000'000, error);
    }

    void Rename(const std::string& from, const std::string& to) const
    {
        ASSERT_EQ(std::rename(m_directory.Path(from).c_str(), m_directory.Path(to).c_str()), 0);
    }

    TestSupport::TempDir m_directory;
    KeywordFileManager m_files{""};
    DirectoryManager m_directories{Service::Directory(m_directory.Path("project"))};
};

TEST_F(CacheManagerTest, AnEntryIsTrustedByTimeAndSizeOfTheFile)
{
    CacheManager cache(m_directories);
    CacheEntry entry;
    EXPECT_FALSE(cache.GetCacheEntry(*File("project/sub/a.inc"), entry));
    EXPECT_TRUE(cache.SetCacheEntry(*File("project/sub/a.inc"), Entry("OIL")));
    ASSERT_TRUE(cache.GetCacheEntry(*File("project/sub/a.inc"), entry));
    EXPECT_EQ(entry.stamp, m_directory.File("project/sub/a.inc").TimeLastModified());
    EXPECT_EQ(entry.length, 8);
    EXPECT_EQ(entry.values.at(0).name, "OIL");

    Shift("project/sub/a.inc", 1);
    EXPECT_FALSE(IsTrusted(cache, "project/sub/a.inc"));
    Shift("project/sub/a.inc", -5000);
    EXPECT_TRUE(IsTrusted(cache, "project/sub/a.inc"));
    const std::int64_t time = FileStatus::Of(m_directory.Path("project/sub/a.inc")).modifiedMilliseconds;
    m_directory.Write("project/sub/a.inc", "RUNSPEC\n\n");
    Shift("project/sub/a.inc", time - FileStatus::Of(m_directory.Path("project/sub/a.inc")).modifiedMilliseconds);
    EXPECT_FALSE(IsTrusted(cache, "project/sub/a.inc"));
    m_directory.File("project/sub/a.inc").GetDirectory().DeleteContent();
    EXPECT_FALSE(IsTrusted(cache, "project/sub/a.inc"));
    // The entry of a file that isn't there is never trusted.
    EXPECT_TRUE(cache.SetCacheEntry(*File("project/sub/a.inc"), Entry("OIL")));
    EXPECT_FALSE(IsTrusted(cache, "project/sub/a.inc"));
}

TEST_F(CacheManagerTest, TablesLieInTheFoldersThatTheyServe)
{
    m_directory.Write("temp/sub/t.inc", "OIL\n");
    ASSERT_TRUE(m_directories.SetTempProjectDir(Service::Directory(m_directory.Path("temp"))));
    const auto names = {"project/top.DATA", "project/sub/a.inc", "project/other/b.inc", "outside/c.inc",
                        "temp/sub/t.inc"};
    {
        CacheManager cache(m_directories);
        for (const char* name : names)
            cache.SetCacheEntry(*File(name), Entry("OIL"));
        cache.SaveCacheTable();
    }
    EXPECT_EQ(m_directory.Listing(),
              "outside/ outside/c.inc project/ project/DeckCache.ptd project/other/ project/other/DeckCache.ptd "
              "project/other/b.inc project/sub/ project/sub/DeckCache.ptd project/sub/a.inc project/top.DATA temp/ "
              "temp/sub/ temp/sub/t.inc");
    CacheManager cache(m_directories);
    for (const char* name : names)
        EXPECT_TRUE(IsTrusted(cache, name)) << name;

    // Whoever doesn't save leaves nothing.
    CacheManager other(m_directories);
    other.FlushCache();
    EXPECT_TRUE(IsTrusted(other, "project/sub/a.inc"));
}

TEST_F(CacheManagerTest, AMovedEntryTakesTimeAndSizeFromTheNewName)
{
    for (const char* target : {"project/sub/moved.inc", "project/other/moved.inc", "outside/moved.inc"}) {
        SCOPED_TRACE(target);
        CacheManager cache(m_directories);
        cache.SetCacheEntry(*File("project/sub/a.inc"), Entry("OIL"));
        cache.MoveCacheEntry(m_directory.File("project/sub/a.inc"), m_directory.File("project/sub/a.inc"));
        EXPECT_TRUE(IsTrusted(cache, "project/sub/a.inc"));

        Rename("project/sub/a.inc", target);
        Shift(target, 60'000); // a copy to another file system may not keep the time
        cache.MoveCacheEntry(m_directory.File("project/sub/a.inc"), m_directory.File(target));
        CacheEntry entry;
        EXPECT_TRUE(cache.GetCacheEntry(*File(target), entry));
        EXPECT_EQ(entry.stamp, m_directory.File(target).TimeLastModified());
        EXPECT_FALSE(IsTrusted(cache, "project/sub/a.inc"));
        Rename(target, "project/sub/a.inc");
    }

    // Without an entry, and for a file of another size, nothing moves.
    CacheManager cache(m_directories);
    cache.SetCacheEntry(*File("project/sub/a.inc"), Entry("OIL"));
    cache.MoveCacheEntry(m_directory.File("project/sub/none.inc"), m_directory.File("project/other/b.inc"));
    EXPECT_FALSE(IsTrusted(cache, "project/other/b.inc"));
    m_directory.Write("project/other/b.inc", "RUNSPEC\nOIL\n");
    cache.MoveCacheEntry(m_directory.File("project/sub/a.inc"), m_directory.File("project/other/b.inc"));
    EXPECT_FALSE(IsTrusted(cache, "project/other/b.inc"));
}

TEST_F(CacheManagerTest, ADeletedFolderTakesItsTableAlong)
{
    CacheManager cache(m_directories);
    for (const char* name : {"project/sub/a.inc", "project/other/b.inc", "project/top.DATA"})
        cache.SetCacheEntry(*File(name), Entry("OIL"));
    for (const char* name : {"project/sub/deeper", "elsewhere/sub", "project", "PROJECT/sub"})
        cache.DirectoryDeleted(Service::Directory(m_directory.Path(name)));
    cache.DirectoryDeleted(Service::Directory());
    cache.DirectoryDeleted(Service::Directory("sub"));
    EXPECT_TRUE(IsTrusted(cache, "project/sub/a.inc"));
    cache.DirectoryDeleted(Service::Directory(m_directory.Path("project/sub")));
    EXPECT_FALSE(IsTrusted(cache, "project/sub/a.inc"));
    EXPECT_TRUE(IsTrusted(cache, "project/other/b.inc"));
    EXPECT_TRUE(IsTrusted(cache, "project/top.DATA"));
    cache.SaveCacheTable();
    EXPECT_FALSE(m_directory.Exists("project/sub/DeckCache.ptd"));
}

TEST_F(CacheManagerTest, AFlushEmptiesWhatIsLoaded)
{
    {
        CacheManager cache(m_directories);
        for (const char* name : {"project/sub/a.inc", "project/other/b.inc"})
            cache.SetCacheEntry(*File(name), Entry("OIL"));
        cache.SaveCacheTable();
    }
    m_directory.Write("project/Cache__/x/y", "old");
    CacheManager cache(m_directories);
    EXPECT_TRUE(IsTrusted(cache, "project/sub/a.inc"));
    cache.FlushCache();
    EXPECT_FALSE(IsTrusted(cache, "project/sub/a.inc"));
    EXPECT_TRUE(m_directory.Exists("project/Cache__"));
    EXPECT_FALSE(m_directory.Exists("project/Cache__/x"));
    cache.SaveCacheTable();

    CacheManager next(m_directories);
    EXPECT_FALSE(IsTrusted(next, "project/sub/a.inc"));
    EXPECT_TRUE(IsTrusted(next, "project/other/b.inc"));

    // What a link leads to isn't the cache's to empty.
    std::filesystem::remove(m_directory.Path("project/Cache__"));
    std::filesystem::create_directory_symlink(m_directory.Path("outside"), m_directory.Path("project/Cache__"));
    next.FlushCache();
    EXPECT_TRUE(m_directory.Exists("outside/c.inc"));
}

TEST_F(CacheManagerTest, WithoutAProjectNothingIsKept)
{
    CacheManagerNoProjDir cache;
    CacheEntry entry;
    EXPECT_FALSE(cache.SetCacheEntry(*File("project/sub/a.inc"), Entry("OIL")));
    EXPECT_FALSE(cache.GetCacheEntry(*File("project/sub/a.inc"), entry));
    cache.SaveCacheTable();
    EXPECT_FALSE(m_directory.Exists("project/sub/DeckCache.ptd"));
}

TEST_F(CacheManagerTest, AMoveByTheManagerOfFilesTakesTheEntryAlong)
{
    KeywordFileManager files(m_directory.Path("project"));
    const std::shared_ptr<KeywordFile> file = files.GetKeywordFile(m_directory.File("project/sub/a.inc"), true);
    file->Begin();
    files.MoveKeywordFile(*file, m_directory.File("project/other/moved.inc"));
    CacheEntry entry;
    EXPECT_TRUE(files.GetCacheEntry(*file, entry));

    // A file that someone has changed meanwhile stays one that must be scanned.
    m_directory.Write("project/other/moved.inc", "GRID\n  \n");
    Shift("project/other/moved.inc", 1000);
    files.MoveKeywordFile(*file, m_directory.File("project/sub/back.inc"));
    EXPECT_FALSE(files.GetCacheEntry(*file, entry));

    // The same for a file that someone else has moved.
    for (const bool isChanged : {false, true}) {
        const std::string name = isChanged ? "project/changed.inc" : "project/kept.inc";
        file->Reload();
        file->Begin();
        const Service::FileName before = file->GetFileName();
        if (isChanged) {
            m_directory.Write("project/kept.inc", "EDIT\n  \n");
            Shift("project/kept.inc", 60'000);
        }
        std::filesystem::rename(before.GetFullName(), m_directory.Path(name));
        files.KeywordFileMoved(*file, m_directory.File(name));
        EXPECT_EQ(files.GetCacheEntry(*file, entry), !isChanged);
    }
}

} // namespace
