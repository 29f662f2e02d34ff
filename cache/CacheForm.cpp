#include "cache/CacheForm.h"

#include <cerrno>
#include <sstream>

#include <fmt/format.h>

#include <tarn/service/BinaryForm.h>
#include <tarn/service/BinaryInputSerializer.h>
#include <tarn/service/BinaryOutputSerializer.h>
#include <tarn/service/Exception.h>
#include <tarn/service/FileStream.h>
#include <tarn/service/FileSystem.h>
#include <tarn/service/Serializer.h>
#include <tarn/service/XMLInputSerializer.h>
#include <tarn/service/XMLOutputSerializer.h>

namespace Tarn::Fjel::Core::DeckManager::CacheForm {

namespace {

using Service::FileSystem;

constexpr const char* const rootName = "deck";

/// A comment of XML, so that the whole stays a document.
std::string ChecksumLine(std::string_view text)
{
    return fmt::format("<!-- {:016x} -->\n", Service::BinaryForm::Checksum(text));
}

void ReadThrough(Service::ISerializerImpl& impl, Service::ISerializable& value)
{
    Service::Serializer serializer(impl);
    value.Serialize(serializer);
}

/// Makes a file that nobody has yet, beside `path`.
int OpenScratch(const std::string& path, std::string& name)
{
    constexpr int most = 100; // those of other processes, and what a process left that was killed
    int handle = -1;
    for (int i = 1; i <= most && handle < 0; ++i) {
        FileSystem::ErrorCode error;
        name = fmt::format("{}.new{}", path, i);
        handle = FileSystem::Instance().Open(name, FileSystem::OpenMode::WriteNew, error);
        if (handle < 0 && error.value() != EEXIST) break;
    }
    return handle;
}

} // namespace

std::string WithChecksum(std::string text)
{
    return text + ChecksumLine(text);
}

void FromBytes(std::string bytes, Kind kind, Service::ISerializable& value)
{
    if (kind == Kind::Xml) {
        const std::size_t lineSize = ChecksumLine({}).size();
        if (bytes.size() < lineSize) throw Service::Exception("The cache file is damaged.");
        const std::string checksum = bytes.substr(bytes.size() - lineSize);
        bytes.resize(bytes.size() - lineSize);
        if (checksum != ChecksumLine(bytes)) throw Service::Exception("The cache file is damaged.");
    }
    std::istringstream stream(std::move(bytes));
    if (kind == Kind::Xml) {
        Service::XMLInputSerializer input(stream, rootName);
        ReadThrough(input, value);
    } else {
        Service::BinaryInputSerializer input(stream);
        ReadThrough(input, value);
    }
}

std::string ToBytes(Kind kind, Service::ISerializable& value)
{
    std::ostringstream stream;
    if (kind == Kind::Binary) {
        Service::BinaryOutputSerializer output(stream);
        ReadThrough(output, value);
        output.Finish();
        return std::move(stream).str();
    }
    Service::XMLOutputSerializer output(stream, rootName);
    ReadThrough(output, value);
    output.Finish();
    return WithChecksum(std::move(stream).str());
}

void Read(const std::string& path, Kind kind, Service::ISerializable& value)
{
    Service::FileInputStream stream(path);
    if (!stream) throw Service::Exception("The cache file cannot be opened.");
    std::ostringstream bytes;
    // An empty file gives no characters, which the inserter takes for a failure of its own.
    bytes << stream.rdbuf();
    if (stream.bad()) throw Service::Exception("The cache file cannot be read.");
    FromBytes(std::move(bytes).str(), kind, value);
}

/// Without waiting for the disk: what a crash of the machine leaves half written is found out by its checksum.
bool Write(const std::string& path, Kind kind, Service::ISerializable& value)
{
    const std::string bytes = ToBytes(kind, value);
    std::string scratch;
    const int handle = OpenScratch(path, scratch);
    if (handle < 0) return false;

    FileSystem& fileSystem = FileSystem::Instance();
    FileSystem::ErrorCode error;
    const bool written = fileSystem.WriteAll(handle, bytes.data(), bytes.size(), error);
    const bool closed = fileSystem.Close(handle, error);
    if (written && closed && fileSystem.Rename(scratch, path, error)) return true;
    fileSystem.Unlink(scratch, error);
    return false;
}

} // namespace Tarn::Fjel::Core::DeckManager::CacheForm
