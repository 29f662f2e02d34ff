#pragma once

#include <string>

#include "text/ForwardingLineWriter.h"

namespace Tarn::Fjel::Core::Service {
class FileOutputStream;
}

namespace Tarn::Fjel::Core::DeckManager {

/// Writes lines into a file.
class LineFileWriter final : public ForwardingLineWriter
{
public:
    static constexpr std::size_t DefaultBufferSize = 65536;

    LineFileWriter();
    /// Closes; who needs to know whether all was written calls `Close` before.
    ~LineFileWriter() override;

    /// Closes what was open and opens `path`: an existing file at its end, or an empty one. False if it can't be
    /// opened. Lines end with CR LF; where files keep their own line ends, as those of the file that was there, else as
    /// the platform has them. `bufferSize` in bytes.
    bool Open(const std::string& path, bool append, std::size_t bufferSize = DefaultBufferSize);
    /// Likewise a file of which there is none yet: false where anything stands there.
    bool OpenNew(const std::string& path, std::size_t bufferSize = DefaultBufferSize);
    /// Writes what is left and closes. False when something could not be written, now or before. Nothing happens, and
    /// true comes back, when no file is open.
    bool Close();
    /// The file will end with Sync, which then has little to wait for. To be called when it is open.
    void StartSyncEarly();
    /// Writes what is left and waits until all is on the disk; false when that fails.
    bool Sync();

    /// Takes the line end back that was written last, unless the last line is open already; it is written again when
    /// anything follows. REQUIRES: what was written last is no copy.
    void TakeBackLineEnd();

    /// The position in the file behind what was written, in bytes. What is in hand doesn't count.
    std::int64_t Tell() const { return m_begin + m_lines.Written(); }
    /// A file is open and has taken all so far.
    bool IsGood() const { return m_lines.IsGood(); }
    /// Empty when no file is open.
    const std::string& GetPath() const { return m_path; }
    /// What made the last operation fail, in words of the platform; empty when nothing did.
    const std::string& FailureReason() const { return m_failureReason; }

    /// As those of `LineStreamWriter`.
    void SetLineEnd(LineEnd lineEnd) { m_lines.SetLineEnd(lineEnd); }
    LineEnd GetLineEnd() const { return m_lines.GetLineEnd(); }
    void SetLeavesLastLineOpen(bool value) { m_lines.SetLeavesLastLineOpen(value); }
    void EndOpenLine() { m_lines.EndOpenLine(); }
    void GoOnBehindOpenLine() { m_lines.GoOnBehindOpenLine(); }
    void ContinueOpenLine() { m_lines.ContinueOpenLine(); }

private:
    enum class Start
    {
        Empty,
        AtEnd,
        New,
    };
    bool OpenAs(const std::string& path, Start start, std::size_t bufferSize);
    Service::FileOutputStream* File() const;
    void NoteFailure(const Service::FileOutputStream& file);

    std::string m_path;
    std::string m_failureReason;
    std::int64_t m_begin = 0; ///< where the file ended when it was opened
};

} // namespace Tarn::Fjel::Core::DeckManager
