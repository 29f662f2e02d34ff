#pragma once

#include <string>

namespace Tarn::Fjel::Core::Service {
class FileName;
}

namespace Tarn::Fjel::Core::DeckManager {

class LineFileWriter;

/// The file beside a deck file that takes the deck file's new text, until it takes its place. `data.inc` has
/// `data_inc__.tmp`, in the folder in which the text really lies, where `data.inc` is a link.
///
/// The object doesn't remove its file when it goes.
class TemporaryText
{
public:
    /// None.
    TemporaryText() = default;
    TemporaryText(TemporaryText&& other) noexcept;
    TemporaryText& operator=(TemporaryText&& other) noexcept;
    ~TemporaryText();

    /// Opens `writer` on a new file beside `file`, under a name like that one where it is taken: what stands there may
    /// be another process's. None when that can't be done.
    static TemporaryText Open(LineFileWriter& writer, const Service::FileName& file);
    /// The same for a file that is to replace this one, which stays readable until `Replace`.
    TemporaryText OpenNext(LineFileWriter& writer) const;
    /// A file could be made there; nothing is left behind.
    static bool CanOpen(const Service::FileName& file);

    bool IsSet() const { return !m_path.empty(); }
    const std::string& Path() const { return m_path; }

    /// Removes the file; then there is none.
    void Remove();
    /// Forgets the file, which stays.
    void Forget();
    /// Cuts what was written behind `size` bytes. Tells nothing when that fails.
    void CutBack(long long size) const;
    /// Goes over to a file of `OpenNext`, under this one's name if it can be had.
    void Replace(TemporaryText&& next);
    /// Waits until the file is on the disk; false when that fails.
    bool Sync(std::string& reason) const;
    /// Puts the file in the place of `file`, with the mode and, where the process may, the owner of the old one: in one
    /// step, or on a file system that refuses that, by a copy. Then there is none. False when neither can be done, with
    /// the reason in words of the platform: then `file` is as it was.
    bool PutInPlace(const Service::FileName& file, std::string& reason);

private:
    explicit TemporaryText(std::string path);
    static TemporaryText OpenAt(LineFileWriter& writer, const std::string& path);

    std::string m_path;
};

} // namespace Tarn::Fjel::Core::DeckManager
