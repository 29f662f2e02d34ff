#include "tests/support/FailingFileSystem.h"
#include "tests/support/TempDir.h"

#include <tarn/service/FileStream.h>

#include <algorithm>
#include <cerrno>
#include <functional>
#include <random>
#include <utility>
#include <vector>

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace Tarn::Fjel::Core::Service {
namespace {

namespace fs = std::filesystem;
using TestSupport::FailingFileSystem;
using TestSupport::TempDir;
using Call = FailingFileSystem::Call;
using Mode = FileOutputStream::Mode;

std::string SomeBytes(std::size_t size)
{
    std::mt19937 random(3);
    std::string bytes(size, '\0');
    for (char& c : bytes)
        c = static_cast<char>(random() % 5 == 0 ? '\n' : random());
    return bytes;
}

TEST(FileInputStream, ReadsLikeAStandardStreamWhateverTheBufferSize)
{
    const TempDir temp;
    const std::string path = temp.Write("f", SomeBytes(5000));
    for (const std::size_t bufferSize : {1u, 7u, 64u, 4096u, 65536u}) {
        std::ifstream expected(path, std::ios::binary);
        FileInputStream actual(path, bufferSize);
        std::mt19937 random(static_cast<unsigned>(bufferSize));
        for (int step = 0; step < 4000; ++step) {
            const int size = static_cast<int>(random() % 300);
            std::string text[2];
            std::istream* streams[2] = {&expected, &actual};
            const auto choice = random() % 6;
            const std::int64_t target = static_cast<std::int64_t>(random() % 5200);
            for (int i = 0; i < 2; ++i) {
                std::istream& stream = *streams[i];
                switch (choice) {
                case 0:
                    text[i].resize(static_cast<std::size_t>(size));
                    stream.read(text[i].data(), size);
                    text[i].resize(static_cast<std::size_t>(stream.gcount()));
                    break;
                case 1:
                    std::getline(stream, text[i]);
                    break;
                case 2:
                    text[i] = static_cast<char>(stream.get());
                    break;
                case 3:
                    stream.ignore(size);
                    break;
                case 4:
                    stream.clear();
                    stream.seekg(target);
                    break;
                default:
                    stream.clear();
                    stream.seekg(-size, target % 2 != 0 ? std::ios::cur : std::ios::end);
                }
            }
            ASSERT_EQ(text[0], text[1]) << step;
            ASSERT_EQ(expected.rdstate(), actual.rdstate()) << step;
            ASSERT_EQ(expected.tellg(), actual.tellg()) << step;
        }
    }
}

TEST(FileInputStream, ALargeReadIsOneCallAndASeekIsNone)
{
    const TempDir temp;
    const std::string bytes = SomeBytes(1000000);
    const FailingFileSystem calls;
    FileInputStream stream(temp.Write("f", bytes));
    std::string text(900000, '\0');
    stream.read(text.data(), 900000);
    EXPECT_EQ(calls.Count(Call::Read), 1);
    EXPECT_EQ(text, bytes.substr(0, 900000));

    stream.seekg(500000);
    stream.seekg(10);
    EXPECT_EQ(stream.tellg(), 10);
    stream.get();
    EXPECT_EQ(calls.Count(Call::Read), 2);
    stream.seekg(60000); // still in the buffer
    EXPECT_EQ(static_cast<char>(stream.get()), bytes[60000]);
    EXPECT_EQ(calls.Count(Call::Read), 2);
    EXPECT_EQ(calls.Count(Call::Seek), 0);
}

TEST(FileInputStream, RefusesWhatCannotBeRead)
{
    const TempDir temp;
    FileInputStream stream;
    for (const std::string& path : {temp.Path(), temp.Path("missing"), std::string()}) {
        EXPECT_FALSE(stream.Open(path)) << path;
        EXPECT_TRUE(stream.fail());
        EXPECT_FALSE(stream.IsOpen());
        EXPECT_TRUE(stream.LastError());
        EXPECT_EQ(stream.get(), EOF);
    }
    EXPECT_TRUE(stream.Open(temp.Write("f", "a")));
    EXPECT_EQ(stream.get(), 'a');
    EXPECT_EQ(stream.Status().size, 1);
    fs::remove(temp.Path("f"));
    EXPECT_TRUE(stream.Status().IsRegularFile()) << "the file that is read, whatever its name";
    stream.Close();
    EXPECT_FALSE(stream.Status().Exists());
}

TEST(FileInputStream, AnErrorIsNotTheEndOfTheFile)
{
    const TempDir temp;
    const std::string path = temp.Write("f", std::string(1000, 'x'));
    for (const std::size_t bufferSize : {100u, 65536u}) {
        FailingFileSystem failing;
        FileInputStream stream(path, bufferSize);
        failing.FailAt(bufferSize == 100 ? 3 : 1, {Call::Read}, EIO);
        std::string text;
        std::getline(stream, text);
        EXPECT_TRUE(stream.bad());
        EXPECT_EQ(stream.LastError().value(), EIO);
    }
}

TEST(FileInputStream, APipeIsReadInOrder)
{
    const TempDir temp;
    ASSERT_EQ(mkfifo(temp.Path("pipe").c_str(), 0600), 0);
    const pid_t child = fork();
    if (child == 0) {
        FileOutputStream out(temp.Path("pipe"), Mode::Truncate);
        out << "one\ntwo\n";
        _exit(out.Close() ? 0 : 1);
    }
    FileInputStream stream(temp.Path("pipe"));
    std::string line;
    std::getline(stream, line);
    EXPECT_EQ(line, "one");
    std::getline(stream, line);
    EXPECT_EQ(line, "two");
    EXPECT_EQ(stream.get(), EOF);
    EXPECT_FALSE(stream.bad());
    int status = -1;
    waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
}

TEST(FileOutputStream, WritesThroughEveryBufferSizeAndTellsWhereItIs)
{
    const TempDir temp;
    const std::string bytes = SomeBytes(3000);
    for (const std::size_t bufferSize : {1u, 10u, 4096u}) {
        FileOutputStream stream(temp.Path("f"), Mode::Truncate, bufferSize);
        std::mt19937 random(11);
        for (std::size_t at = 0; at < bytes.size();) {
            ASSERT_EQ(stream.tellp(), static_cast<std::streamoff>(at));
            const std::size_t size = std::min<std::size_t>(random() % 25, bytes.size() - at);
            stream.write(bytes.data() + at, static_cast<std::streamsize>(size));
            at += size;
            if (at < bytes.size()) stream.put(bytes[at++]);
        }
        EXPECT_TRUE(stream.Sync());
        EXPECT_EQ(stream.Status().size, 3000);
        EXPECT_TRUE(stream.Close());
        EXPECT_TRUE(stream.Close());
        EXPECT_EQ(temp.Read("f"), bytes);
    }
}

TEST(FileOutputStream, ModesKeepToWhatIsThere)
{
    const TempDir temp;
    const std::string path = temp.Path("f");
    FileOutputStream stream;
    EXPECT_FALSE(stream.Open(path, Mode::AppendExisting)) << "nothing is made";
    EXPECT_FALSE(temp.Exists("f"));
    EXPECT_TRUE(stream.Open(path, Mode::New));
    stream << "abc";
    EXPECT_TRUE(stream.Open(path, Mode::AppendExisting)) << "closes first";
    EXPECT_EQ(stream.tellp(), 3);
    stream << "def";
    EXPECT_TRUE(stream.Truncate(4));
    EXPECT_EQ(stream.tellp(), 4);
    stream << "x";
    stream.seekp(1);
    stream << "B";
    EXPECT_TRUE(stream.Close());
    EXPECT_EQ(temp.Read("f"), "aBcdx");
    EXPECT_FALSE(stream.Open(path, Mode::New));
    EXPECT_EQ(temp.Read("f"), "aBcdx");
    EXPECT_TRUE(stream.Open(path, Mode::Truncate));
    EXPECT_EQ(temp.Read("f"), "");
    stream.Close();
    for (const Mode mode : {Mode::Truncate, Mode::AppendExisting, Mode::New}) {
        EXPECT_FALSE(stream.Open(temp.Path(), mode));
        EXPECT_TRUE(stream.fail());
    }
}

TEST(FileOutputStream, AFullDiskShowsAtTheLatestWhenItIsClosed)
{
    const TempDir temp;
    const std::string path = temp.Path("f");
    for (const std::int64_t limit : {0, 5, 9}) {
        FailingFileSystem failing;
        failing.LimitSpace(limit);
        FileOutputStream stream(path, Mode::Truncate);
        stream << "0123456789";
        EXPECT_TRUE(stream.good()) << "still in the buffer";
        EXPECT_FALSE(stream.Close());
        EXPECT_TRUE(stream.bad());
        EXPECT_EQ(stream.LastError().value(), ENOSPC);
        EXPECT_EQ(temp.Read("f"), std::string("0123456789").substr(0, static_cast<std::size_t>(limit)));
    }
    FailingFileSystem failing;
    FileOutputStream stream(path, Mode::Truncate, 4);
    failing.FailAt(1, {Call::Write}, EIO); // once only: a later write must not leave a hole
    stream << "0123456789";
    EXPECT_TRUE(stream.bad());
    stream.clear();
    stream << "more";
    EXPECT_TRUE(stream.bad());
    EXPECT_FALSE(stream.Close());
    EXPECT_EQ(temp.Read("f"), "");

    for (const Call call : {Call::Close, Call::Sync}) {
        FileOutputStream other(path, Mode::Truncate);
        other << "x";
        failing.FailAt(1, {call}, EIO);
        EXPECT_FALSE(call == Call::Close ? other.Close() : other.Sync());
        EXPECT_TRUE(other.bad());
    }
}

/// Lies between a copy and the disk, and does something to the source after the first piece.
class ChangedSource : public FailingFileSystem
{
public:
    explicit ChangedSource(std::function<void()> change) : m_change(std::move(change)) {}

    std::int64_t CopyRange(int from, std::int64_t offset, int to, std::size_t size, ErrorCode& error) override
    {
        const std::int64_t count = FailingFileSystem::CopyRange(from, offset, to, size, error);
        if (count > 0) Change();
        return count;
    }
    std::int64_t ReadAt(int handle, void* data, std::size_t size, std::int64_t offset, ErrorCode& error) override
    {
        const std::int64_t count = FailingFileSystem::ReadAt(handle, data, size, offset, error);
        Change();
        return count;
    }

private:
    void Change()
    {
        if (const auto change = std::exchange(m_change, {})) change();
    }

    std::function<void()> m_change;
};

class FileCopyTest : public testing::Test
{
protected:
    /// What `written`, then `size` bytes at `offset` of the source and "end" come to in a file.
    void Copy(const std::string& written, std::int64_t offset, std::int64_t size)
    {
        FileInputStream source(m_path);
        source.seekg(2);
        FileOutputStream target(m_temp.Path("to"), Mode::Truncate);
        target << written;
        const std::int64_t there = static_cast<std::int64_t>(m_bytes.size());
        const std::int64_t expected = std::max<std::int64_t>(std::min(offset + size, there) - offset, 0);
        ASSERT_EQ(target.CopyFrom(source, offset, size), expected);
        ASSERT_EQ(target.tellp(), static_cast<std::streamoff>(written.size()) + expected);
        target << "end";
        ASSERT_TRUE(target.Close());
        const std::string part =
            m_bytes.substr(static_cast<std::size_t>(std::min(offset, there)), static_cast<std::size_t>(expected));
        ASSERT_TRUE(m_temp.Read("to") == written + part + "end") << "the bytes differ";
        ASSERT_EQ(static_cast<char>(source.get()), m_bytes[2]) << "the source has moved";
    }

    TempDir m_temp;
    std::string m_bytes = SomeBytes(1000000);
    std::string m_path = m_temp.Write("f", m_bytes);
};

TEST_F(FileCopyTest, IsTheSameByEveryRoad)
{
    const std::vector<std::pair<std::int64_t, std::int64_t>> ranges = {
        {0, 1000000},    {0, 4096},         {0, 0},      {5, 1},      {4096, 700000}, {4100, 700001},
        {65537, 131072}, {300000, 5000000}, {999999, 1}, {1000000, 1}};
    for (const std::size_t written : {0u, 1u, 4u, 4096u, 4100u, 70000u}) {
        for (const auto& [offset, size] : ranges) {
            SCOPED_TRACE(testing::Message() << written << " bytes, then " << size << " at " << offset);
            const std::string ahead(written, 'w');
            Copy(ahead, offset, size);
            FailingFileSystem system;
            for (const std::size_t most : {0u, 5000u, 100000u}) {
                system.LimitCopies(most);
                Copy(ahead, offset, size);
                if (HasFatalFailure()) return;
            }
        }
    }
}

TEST_F(FileCopyTest, TheSystemCopiesWhereItCanAndElseMemoryGoesOn)
{
    FailingFileSystem system;
    Copy("", 4096, 900000);
    EXPECT_EQ(system.Count(Call::Write), 1) << "the end";
    EXPECT_EQ(system.Count(Call::CopyRange), 1);
    Copy("abc", 4099, 900000);
    EXPECT_EQ(system.Count(Call::CopyRange), 2);
    const int copies = system.Count(Call::CopyRange);
    Copy("", 4099, 900000);
    EXPECT_EQ(system.Count(Call::CopyRange), copies) << "no pages line up";
    for (const int error : {EXDEV, EINVAL, ENOSYS, EOPNOTSUPP, EPERM, EBADF, EIO}) {
        for (const int n : {1, 3}) {
            system.FailAt(n, {Call::CopyRange}, error, true);
            system.LimitCopies(100000);
            Copy("", 0, 900000);
            EXPECT_TRUE(system.HasFailed());
        }
    }
}

TEST_F(FileCopyTest, ASourceThatEndsOrFailsGivesLess)
{
    for (const std::int64_t offset : {0, 7}) {
        for (const std::size_t most : {0u, 50000u}) {
            m_temp.Write("f", m_bytes);
            ChangedSource system([this] { fs::resize_file(m_path, 60000); });
            system.LimitCopies(most);
            FileInputStream source(m_path);
            FileOutputStream target(m_temp.Path("to"), Mode::Truncate);
            const std::int64_t copied = target.CopyFrom(source, offset, 900000);
            EXPECT_LT(copied, 70000);
            EXPECT_TRUE(target.good());

            // A read that fails is not the end of the file.
            m_temp.Write("f", m_bytes);
            const ReadWatch reading;
            system.FailAt(2, {Call::Read, Call::CopyRange}, EIO, true);
            EXPECT_LT(target.CopyFrom(source, offset, 900000), 900000);
            EXPECT_TRUE(target.good());
            EXPECT_TRUE(reading.SawFailure());
        }
    }
}

TEST_F(FileCopyTest, AFullDiskFailsTheTarget)
{
    for (const std::int64_t offset : {0, 7}) {
        for (const std::int64_t limit : {0, 5, 70000, 300000}) {
            FailingFileSystem system;
            system.LimitSpace(limit);
            FileInputStream source(m_path);
            FileOutputStream target(m_temp.Path("to"), Mode::Truncate);
            EXPECT_LE(target.CopyFrom(source, offset, 900000), limit);
            EXPECT_TRUE(target.bad());
            EXPECT_EQ(target.LastError().value(), ENOSPC);
            system.Pass();
            EXPECT_EQ(target.CopyFrom(source, 0, 10), 0) << "no later write leaves a hole";
            EXPECT_FALSE(target.Close());
            EXPECT_EQ(fs::file_size(m_temp.Path("to")), static_cast<std::uintmax_t>(limit));
            EXPECT_EQ(m_temp.Read("to"), m_bytes.substr(static_cast<std::size_t>(offset), m_temp.Read("to").size()));
        }
    }
}

TEST_F(FileCopyTest, WhatIsToBeSyncedStartsEarly)
{
    for (const std::int64_t offset : {0, 7}) {
        FailingFileSystem system;
        fs::resize_file(m_path, 20000000);
        FileInputStream source(m_path);
        FileOutputStream target(m_temp.Path("to"), Mode::Truncate);
        target.CopyFrom(source, offset, 19000000);
        EXPECT_EQ(system.Count(Call::StartSync), 0);
        target.Open(m_temp.Path("to"), Mode::Truncate);
        target.StartSyncEarly();
        target.CopyFrom(source, offset, 19000000);
        EXPECT_EQ(system.Count(Call::StartSync), 2);
        for (int i = 0; i < 10; ++i)
            target << std::string(1000000, 'x');
        EXPECT_EQ(system.Count(Call::StartSync), 3);

        system.FailAt(1, {Call::StartSync}, EIO);
        target.CopyFrom(source, offset, 19000000);
        EXPECT_TRUE(target.bad()) << "what the disk has refused may not be there";
        target.clear();
        EXPECT_FALSE(target.Sync());
    }
}

} // namespace
} // namespace Tarn::Fjel::Core::Service
