#include "tests/support/FailingFileSystem.h"
#include "tests/support/TempDir.h"

#include <tarn/service/FileStream.h>

#include <cerrno>
#include <random>

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

} // namespace
} // namespace Tarn::Fjel::Core::Service
