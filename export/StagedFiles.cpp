#include "export/StagedFiles.h"

#include "export/DeckFiles.h"
#include "text/LineFileWriter.h"
#include <tarn/service/FileStatus.h>
#include <tarn/service/FileSystem.h>
#include <tarn/service/FileUtils.h>

namespace Tarn::Fjel::Core::DeckManager {

using Service::FileName;
using Service::FileStatus;
using Service::FileSystem;
using ErrorCode = Service::FileSystem::ErrorCode;

namespace {

/// Leaves that are longer get no longer by what is put behind them.
constexpr std::size_t mostOfLeaf = 200;

void Unlink(const std::string& path)
{
    ErrorCode ignored;
    if (!path.empty()) FileSystem::Instance().Unlink(path, ignored);
}

std::string FreeNameBeside(const FileName& target, const char* ending)
{
    FileName name = target;
    name.SetFileName(target.GetFileName().substr(0, mostOfLeaf) + ending);
    return Service::FileUtils::ConstructUniqueName(name).GetFullName();
}

} // namespace

StagedFiles::~StagedFiles()
{
    if (m_done) return;
    try {
        for (const File& file : m_files) {
            if (!file.inPlace && !file.dropped && file.IsBeside()) Unlink(file.written);
        }
        m_directories.Remove();
    } catch (...) {
        // A destructor has nobody to tell.
    }
}

bool StagedFiles::Fail(const std::string& file, const std::string& reason)
{
    m_failure = "The file " + file + " cannot be written: " + reason + ".";
    return false;
}

bool StagedFiles::MakeDirectory(const Service::Directory& directory)
{
    return m_directories.Make(directory, m_failure);
}

StagedFiles::File* StagedFiles::Find(const FileName& target)
{
    const auto found = m_byTarget.find(target.CanonicalName());
    return found == m_byTarget.end() || m_files[found->second].dropped ? nullptr : &m_files[found->second];
}

StagedFiles::File* StagedFiles::Begin(const FileName& target)
{
    if (File* begun = Find(target)) return begun;
    const auto refuse = [&](const std::string& reason) -> File* {
        Fail(target.GetFullName(), reason);
        return nullptr;
    };
    m_isRefusal = m_deckFiles.Contains(target);
    if (m_isRefusal) return refuse("it is a file of the deck");
    const FileStatus status = FileStatus::Of(target);
    if (status.IsDirectory()) return refuse("it is a directory");
    if (status.Exists() && !FileSystem::Instance().CanAccess(target.GetFullName(), true))
        return refuse("no permission to write it");
    File file;
    file.asked = target.CanonicalName();
    const bool isSpecial = status.Exists() && !status.IsRegularFile();
    // What a link names is replaced, and the link stays.
    file.target = isSpecial ? target.GetFullName() : file.asked;
    file.written = isSpecial ? file.target : FreeNameBeside(FileName(file.target), ".tmp");
    file.replaces = status.IsRegularFile();
    m_byTarget[file.asked] = m_byWritten[file.written] = m_files.size();
    m_files.push_back(std::move(file));
    return &m_files.back();
}

bool StagedFiles::Open(LineFileWriter& writer, const FileName& target, bool sync)
{
    File* file = Begin(target);
    if (file == nullptr) return false;
    if (writer.Open(file->written, false)) {
        file->syncs = file->IsBeside() && (sync || file->replaces);
        if (file->syncs) writer.StartSyncEarly();
        return true;
    }
    Drop(target);
    return Fail(target.GetFullName(), writer.FailureReason().empty() ? "it cannot be opened" : writer.FailureReason());
}

/// Two names may lead to one place.
bool StagedFiles::IsFree(const FileName& target)
{
    m_isRefusal = m_byTarget.count(target.CanonicalName()) != 0;
    return !m_isRefusal || Fail(target.GetFullName(), "another file of the export takes its place");
}

bool StagedFiles::Accepts(const FileName& target)
{
    if (!IsFree(target)) return false;
    File* file = Begin(target);
    if (file != nullptr) file->dropped = true;
    return file != nullptr;
}

bool StagedFiles::Reserve(const FileName& target)
{
    LineFileWriter writer;
    return IsFree(target) && Open(writer, target) && Close(writer);
}

bool StagedFiles::Close(LineFileWriter& writer)
{
    const File& file = m_files[m_byWritten.at(writer.GetPath())];
    const bool synced = !file.syncs || writer.Sync();
    const std::string reason = writer.FailureReason();
    if (writer.Close() && synced) return true;
    return Fail(file.target, !reason.empty() ? reason : writer.FailureReason());
}

bool StagedFiles::Copy(const FileName& from, const FileName& target)
{
    const File* file = Begin(target);
    if (file == nullptr) return false;
    if (Service::FileUtils::Copy(from, FileName(file->written), true)) return true;
    return Fail(target.GetFullName(), "the copy of " + from.GetFullName() + " failed");
}

void StagedFiles::Drop(const FileName& target)
{
    File* file = Find(target);
    if (file == nullptr) return;
    if (file->IsBeside()) Unlink(file->written);
    file->dropped = true;
}

/// One file goes to its place. Where others do too, the old one is kept: the next may fail.
bool StagedFiles::Exchange(File& file)
{
    FileSystem& files = FileSystem::Instance();
    ErrorCode error;
    const FileStatus old = files.Status(file.target, true, error);
    if (old.IsRegularFile()) {
        ErrorCode ignored;
        files.CopyModeAndOwner(old, file.written, ignored);
        if (m_files.size() > 1) {
            const std::string aside = FreeNameBeside(FileName(file.target), ".old");
            if (!files.Rename(file.target, aside, error)) return Fail(file.target, error.message());
            file.aside = aside;
        }
    }
    if (!files.Rename(file.written, file.target, error)) return Fail(file.target, error.message());
    file.inPlace = true;
    return true;
}

bool StagedFiles::TakeBack()
{
    FileSystem& files = FileSystem::Instance();
    for (File& file : m_files) {
        ErrorCode error;
        if (file.dropped) continue;
        if (!file.aside.empty()) {
            if (!files.Rename(file.aside, file.target, error))
                m_failure += "\nThe old file is kept as " + file.aside + ".";
        } else if (file.inPlace) {
            Unlink(file.target);
        }
    }
    return false;
}

bool StagedFiles::PutInPlace()
{
    for (File& file : m_files) {
        if (file.IsBeside() && !file.dropped && !Exchange(file)) return TakeBack();
    }
    m_done = true;
    std::string lastFolder;
    for (const File& file : m_files) {
        if (file.dropped) continue;
        Unlink(file.aside);
        const std::string folder = FileName(file.target).GetDirectory().Name();
        ErrorCode ignored;
        if (folder != lastFolder) FileSystem::Instance().SyncDirectory(folder, ignored);
        lastFolder = folder;
    }
    return true;
}

} // namespace Tarn::Fjel::Core::DeckManager
