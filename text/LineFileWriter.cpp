#include "text/LineFileWriter.h"

#include <deckmanager/LineEnds.h>
#include <tarn/service/FileStream.h>

namespace Tarn::Fjel::Core::DeckManager {

LineFileWriter::LineFileWriter() : ForwardingLineWriter(LineStreamWriter::Target::CrLfFile) {}

LineFileWriter::~LineFileWriter()
{
    Close();
}

bool LineFileWriter::Open(const std::string& path, bool append, std::size_t bufferSize)
{
    return OpenAs(path, append ? Start::AtEnd : Start::Empty, bufferSize);
}

bool LineFileWriter::OpenNew(const std::string& path, std::size_t bufferSize)
{
    return OpenAs(path, Start::New, bufferSize);
}

bool LineFileWriter::OpenAs(const std::string& path, Start start, std::size_t bufferSize)
{
    Close();
    m_failureReason.clear();
    LineEnd lineEnd = LineEnd::CrLf;
    if (LineEnds::GetPolicy() == LineEnds::Policy::Keep) lineEnd = FirstLineEnd(path).value_or(PlatformLineEnd());

    using Mode = Service::FileOutputStream::Mode;
    auto file = std::make_unique<Service::FileOutputStream>(bufferSize > 0 ? bufferSize : DefaultBufferSize);
    const bool append = start == Start::AtEnd;
    const Mode mode = append ? Mode::AppendExisting : start == Start::New ? Mode::New : Mode::Truncate;
    if (!file->Open(path, mode)) {
        NoteFailure(*file);
        return false;
    }
    m_begin = append ? static_cast<std::int64_t>(file->tellp()) : 0;
    m_lines.Attach(std::move(file), LineStreamWriter::Target::CrLfFile);
    m_lines.SetLineEnd(lineEnd);
    m_path = path;
    return true;
}

bool LineFileWriter::Close()
{
    Service::FileOutputStream* const file = File();
    if (!file) return true;
    m_lines.FlushLine();
    const bool written = file->Close();
    if (!written) NoteFailure(*file);
    m_lines.Detach();
    m_path.clear();
    return written;
}

void LineFileWriter::StartSyncEarly()
{
    if (Service::FileOutputStream* const file = File()) file->StartSyncEarly();
}

bool LineFileWriter::Sync()
{
    Service::FileOutputStream* const file = File();
    if (!file) return false;
    m_lines.FlushLine();
    if (file->good() && file->Sync()) return true;
    NoteFailure(*file);
    return false;
}

void LineFileWriter::TakeBackLineEnd()
{
    m_lines.FlushLine();
    const auto size = static_cast<std::int64_t>(BytesOf(GetLineEnd()).size());
    if (!IsGood() || m_lines.IsLineOpen() || m_lines.Written() < size) return;
    if (File()->Truncate(Tell() - size)) m_lines.NoteLineEndTakenBack();
}

Service::FileOutputStream* LineFileWriter::File() const
{
    return static_cast<Service::FileOutputStream*>(m_lines.Attached());
}

void LineFileWriter::NoteFailure(const Service::FileOutputStream& file)
{
    m_failureReason = file.LastError().message();
}

} // namespace Tarn::Fjel::Core::DeckManager
