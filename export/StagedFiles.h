#pragma once

#include <cstddef>
#include <string>
#include <unordered_map>
#include <vector>

#include "files/MadeDirectories.h"
#include <tarn/service/FileName.h>

namespace Tarn::Fjel::Core::DeckManager {

class DeckFiles;
class LineFileWriter;

/// The files that one export writes. Each is written beside its target; when all are whole, all take their places.
/// Until then, and when that fails, what stood at the targets still stands there, and nothing else is left behind.
///
/// A target that exists and is neither a file nor a directory (a pipe, a device) is written to at once.
class StagedFiles
{
public:
    /// `deckFiles` outlives the object: none of them is written over.
    explicit StagedFiles(const DeckFiles& deckFiles) : m_deckFiles(deckFiles) {}
    ~StagedFiles();
    StagedFiles(const StagedFiles&) = delete;
    StagedFiles& operator=(const StagedFiles&) = delete;

    /// Makes the directory with all above it. What was made goes again if the export fails.
    bool MakeDirectory(const Service::Directory& directory);

    /// Begins a file: opens `writer`. One that replaces another will be on the disk when it is closed, and with `sync`
    /// any: to wait for each of a thousand new files would take longer than to write them. False when the target is a
    /// file of the deck, is a directory, or can't be written; `Failure` says why.
    bool Open(LineFileWriter& writer, const Service::FileName& target, bool sync = false);
    /// The target could be begun, and no other file goes there: nothing is done for it.
    bool Accepts(const Service::FileName& target);
    /// Takes the place of a file that is written later, by a further `Open`. False when another file has it.
    bool Reserve(const Service::FileName& target);
    /// Ends a file. False when it could not be written whole.
    bool Close(LineFileWriter& writer);
    /// A file that is copied as it is.
    bool Copy(const Service::FileName& from, const Service::FileName& target);
    /// A file that was begun is not wanted after all.
    void Drop(const Service::FileName& target);

    /// Puts all files in their places, or none.
    bool PutInPlace();

    /// Whoever writes a file has a reason of its own why that can't be done. Always false.
    bool Fail(const std::string& file, const std::string& reason);
    /// Why the last operation failed, for the user. Names the file.
    const std::string& Failure() const { return m_failure; }
    /// The last operation failed because it must not be done, and not because it can't.
    bool IsRefusal() const { return m_isRefusal; }

private:
    struct File
    {
        std::string asked;   ///< the target by its canonical name
        std::string target;  ///< links resolved
        std::string written; ///< beside the target; the target itself for what is written at once
        std::string aside;   ///< where the old file is kept while the files change places
        bool replaces = false;
        bool syncs = false; ///< it is on the disk when it is closed
        bool dropped = false;
        bool inPlace = false;

        bool IsBeside() const { return written != target; }
    };

    File* Find(const Service::FileName& target);
    bool IsFree(const Service::FileName& target);
    File* Begin(const Service::FileName& target);
    bool Exchange(File& file);
    bool TakeBack();

    const DeckFiles& m_deckFiles;
    std::vector<File> m_files;
    std::unordered_map<std::string, std::size_t> m_byTarget;  ///< by `asked`
    std::unordered_map<std::string, std::size_t> m_byWritten; ///< by `written`
    MadeDirectories m_directories;                            ///< for this export
    std::string m_failure;
    bool m_isRefusal = false;
    bool m_done = false;
};

} // namespace Tarn::Fjel::Core::DeckManager
