#include "files/KeywordFileWriter.h"

#include <optional>
#include <utility>

#include "files/KeywordFile.h"
#include "files/SourceFile.h"
#include "keywords/Keyword.h"
#include "text/KeywordFileReader.h"
#include "text/LineEnd.h"
#include "text/LineFileWriter.h"
#include <deckmanager/ILineReader.h>
#include <deckmanager/KeywordFileIterator.h>
#include <deckmanager/LineEnds.h>

namespace Tarn::Fjel::Core::DeckManager {

using Keywords::SimulatorType;

namespace {

void Prepare(LineFileWriter& writer, SourceFile& source)
{
    KeywordFileWriter::KeepLineEnds(writer, source);
    // A file's missing last line end stays missing.
    writer.SetLeavesLastLineOpen(true);
}

FileWriteResult WriteList(SourceFile& source, LineFileWriter* writer, bool withHead, const Context& context,
                          const KeywordFileWriter::WriteKeyword& writeKeyword)
{
    FileWriteResult result;
    KeywordFile& file = source.File();
    if (writer != nullptr) Prepare(*writer, source);
    const auto tell = [&]() -> std::int64_t { return writer != nullptr ? writer->Tell() : 0; };
    if (withHead || source.IsAllHead() || source.HasDataInHead()) source.CopyHead(false);
    if (!source.IsAllHead()) {
        source.FlushOpen();
        const std::int64_t headerSize = source.HeadSize() - file.HeaderBegin();
        if (withHead && headerSize > 0) {
            result.headerBegin = tell() - headerSize;
            result.headerEnd = tell() - 1;
        }
    }
    const KeywordFileIterator end = file.End();
    for (KeywordFileIterator place = file.Begin(); place != end; ++place) {
        if (writer != nullptr && !writer->IsGood()) return result;
        const auto& keyword = static_cast<const Keyword&>(**place);
        source.ComeTo(place, context);
        writeKeyword(source, keyword);
        if (source.IsLastOnDisk(keyword) && source.GapSize(keyword) > 0) {
            source.Flush();
            result.tailBegin = tell();
        }
        source.CopyGap(keyword);
    }
    result.ok = true;
    return result;
}

bool EndsInOpenLine(ILineReader& reader, std::int64_t size)
{
    std::string last;
    reader.ReadRange(size - 1, size - 1, last);
    return last != "\n";
}

/// False when the writer has failed.
bool Continue(SourceFile& source, LineFileWriter& writer, const Context& context, std::vector<WrittenExtent>& extents)
{
    Prepare(writer, source);
    const std::int64_t size = writer.Tell();
    if (ILineReader* reader = source.Reader(); reader != nullptr && EndsInOpenLine(*reader, size))
        writer.GoOnBehindOpenLine();

    const KeywordFile& file = source.File();
    const KeywordFileContents::List& written = file.DiskList();
    if (!written.empty()) {
        const Keyword& last = KeywordFileContents::AsKeyword(written.back());
        const std::int64_t lastEnd = last.Position() + last.Size();
        // Where its extent reaches the end of the text, it goes on to what follows now.
        extents.push_back({&last, last.Position(), lastEnd < size ? lastEnd : -1});
    }
    const KeywordFileIterator end = file.End();
    KeywordFileIterator place = file.Begin();
    for (std::size_t i = 0; i < written.size(); ++i)
        ++place;
    if (!written.empty() && place != end) {
        const Keyword& last = KeywordFileContents::AsKeyword(written.back());
        source.EndData(last);
        source.NoteWritten(last);
    }
    for (; place != end; ++place) {
        if (!writer.IsGood()) return false;
        source.ComeTo(place, context);
        source.WriteKeyword(static_cast<const Keyword&>(**place), context, SimulatorType::Any);
    }
    return true;
}

} // namespace

FileWriteResult KeywordFileWriter::WriteFile(KeywordFile& file, LineFileWriter* writer, bool withHead,
                                             const Context& context, const WriteKeyword& writeKeyword)
{
    SourceFile source(file, writer);
    FileWriteResult result = WriteList(source, writer, withHead, context, writeKeyword);
    if (!result.ok) return result;
    source.ComeTo(file.End(), context);
    source.Flush();
    result.ok = writer == nullptr || writer->IsGood();
    return result;
}

FileWriteResult KeywordFileWriter::WriteForCommit(KeywordFile& file, LineFileWriter& writer, const Context& context,
                                                  bool partial, bool continuing)
{
    std::vector<WrittenExtent> extents;
    SourceFile source(file, &writer, &extents);
    FileWriteResult result;
    if (continuing) {
        result.ok = Continue(source, writer, context, extents);
    } else {
        result = WriteList(source, &writer, true, context, [&](SourceFile&, const Keyword& keyword) {
            source.WriteKeyword(keyword, context, SimulatorType::Any);
        });
    }
    if (!result.ok) return result;
    if (!partial)
        continuing ? source.WriteRest() : source.ComeTo(file.End(), context);
    else if (file.Rest() == nullptr)
        result.rest = source.RestOfList(context);
    else if (!continuing)
        source.WriteBlocksAhead(nullptr, context);
    // What was written afresh there has ended its line.
    if (!continuing && result.rest.empty() && source.EndsInOpenLine()) writer.TakeBackLineEnd();
    source.EndLastExtent();
    result.ok = writer.IsGood();
    result.extents = std::move(extents);
    return result;
}

void KeywordFileWriter::KeepLineEnds(LineFileWriter& writer, SourceFile& source)
{
    if (LineEnds::GetPolicy() != LineEnds::Policy::Keep) return;
    std::optional<LineEnd> lineEnd;
    if (ILineReader* reader = source.Reader()) lineEnd = FirstLineEnd(*reader);
    if (!lineEnd) lineEnd = FirstLineEnd(source.File().DataFile().FileReader()->GetPath());
    writer.SetLineEnd(lineEnd.value_or(PlatformLineEnd()));
}

} // namespace Tarn::Fjel::Core::DeckManager
