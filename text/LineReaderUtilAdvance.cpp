// The part of the scanner that steps over lines: the data of keywords, and the lines around them.

#include <deckmanager/LineReaderUtil.h>

#include <deckmanager/DeckManagerException.h>
#include <deckmanager/Environment.h>
#include <deckmanager/VeldaneDeckInfo.h>
#include <tarn/keywords/IKeywordSyntax.h>
#include <tarn/keywords/KeywordKind.h>
#include <tarn/keywords/KeywordRecordMDUtil.h>
#include <tarn/keywords/KeywordUtils.h>
#include <tarn/keywords/Metadata.h>
#include <tarn/service/Log.h>
#include <tarn/service/Strings.h>

#include "text/KnownSyntax.h"
#include "text/LineSource.h"
#include "text/LineStreamReader.h"
#include "text/TagRecognisers.h"

namespace Tarn::Fjel::Core::DeckManager {

using Keywords::IKeywordListMD;
using Keywords::IKeywordMapMD;
using Keywords::IKeywordMD;
using Keywords::IKeywordRawTextMD;
using Keywords::IKeywordRecordMD;
using Keywords::IKeywordSyntax;
using Keywords::KeywordRecordMDUtil;
using Keywords::MDType;
using Keywords::Termination;

namespace {

/// Words that could be taken for keywords: options and strings.
bool IsTextual(MDType type)
{
    return type == MDType::Option || type == MDType::RestOfLine || type == MDType::String;
}

/// Whether the line, which has a comment's head, counts as data: a suppressed line whose rest is no comment.
bool IsLiveSuppressedLine(std::string_view text)
{
    return VeldaneDeckInfo::BeginsWithSuppressMarker(text) && Environment::Instance().KeywordSuppressionEnabled() &&
           !VeldaneDeckInfo::BeginsWithCommentMarker(VeldaneDeckInfo::SkipSuppressMarker(text));
}

void ConsumeRecord(const IKeywordRecordMD& record, ILineReader& reader)
{
    if (record.GetItemCount() < 1 || KeywordRecordMDUtil::HasNestedContainer(record)) return;
    const MDType first = Keywords::KeywordUtils::GetMDType(record.GetItemMD(0));
    if (!KeywordRecordMDUtil::HasStringType(record) && first != MDType::Option) return;
    if (record.GetTermination() == Termination::Slash) {
        LineReaderUtil::AdvanceToNextTerminatedLine(reader);
        return;
    }
    LineSource source(reader);
    std::string_view line;
    if (first == MDType::RestOfLine)
        source.Next(line);
    else
        source.NextData(line, nullptr, true);
}

void ConsumeTerminatedList(const IKeywordMD& element, ILineReader& reader)
{
    if (IsTextual(element.GetType())) {
        LineReaderUtil::AdvanceToNextTerminatedLine(reader);
        return;
    }
    if (element.GetType() != MDType::Record) return;
    const auto& record = static_cast<const IKeywordRecordMD&>(element);
    if (KeywordRecordMDUtil::AllNumeric(record)) return;
    if (record.GetTermination() == Termination::Slash)
        LineReaderUtil::AdvanceToNextLineStartedWithTermination(reader);
    else if (!KeywordRecordMDUtil::HasNestedContainer(record))
        LineReaderUtil::AdvanceToNextTerminatedLine(reader);
}

void ConsumeList(const IKeywordListMD& list, ILineReader& reader)
{
    const IKeywordMD& element = *list.GetElementMD();
    if (list.GetTermination() == Termination::Slash) {
        ConsumeTerminatedList(element, reader);
    } else if (element.GetType() == MDType::List) {
        const auto& inner = static_cast<const IKeywordListMD&>(element);
        if (inner.GetTermination() == Termination::Slash && IsTextual(inner.GetElementMD()->GetType()))
            LineReaderUtil::AdvanceToNextTerminatedLine(reader);
    }
}

void ConsumeRawText(const IKeywordRawTextMD& rawText, ILineReader& reader)
{
    std::string terminator;
    rawText.GetTerminator(terminator);
    if (terminator.empty()) return;
    LineSource source(reader);
    std::string_view line;
    while (source.Next(line)) {
        if (line.starts_with(terminator)) return;
    }
}

} // namespace

const IKeywordSyntax* LineReaderUtil::GetACTIONXSyntax()
{
    static KnownSyntax actionx("ACTIONX");
    return actionx.Get();
}

const IKeywordSyntax* LineReaderUtil::GetENDSCALESyntax()
{
    static KnownSyntax endscale("ENDSCALE");
    return endscale.Get();
}

const IKeywordSyntax* LineReaderUtil::GetEOSSyntax()
{
    static KnownSyntax eos("EOS");
    return eos.Get();
}

const IKeywordSyntax* LineReaderUtil::GetPATHSSyntax()
{
    static KnownSyntax paths("PATHS");
    return paths.Get();
}

void LineReaderUtil::ConsumeDataLines(const IKeywordSyntax* syntax, ILineReader& reader)
{
    const IKeywordMD* md = syntax ? syntax->GetMetaData() : nullptr;
    if (!md) return;

    if (syntax == GetPATHSSyntax() && !Environment::Instance().PATHSSupport()) {
        const std::string text = syntax->GetName() + " is not supported";
        Service::Log::SendLogMessage(text, Service::Log::Error);
        throw DeckManagerException(text);
    }
    if (syntax->GetKind() == Keywords::KeywordKind::Include) {
        LineSource source(reader);
        std::string_view line;
        source.NextData(line, nullptr, true);
        return;
    }
    if (syntax == GetENDSCALESyntax()) return;
    if (syntax == GetEOSSyntax()) AdvanceToNextTerminatedLine(reader);
    if (syntax == GetACTIONXSyntax()) {
        ConsumeDataLinesACTIONX(reader);
        return;
    }

    switch (md->GetType()) {
    case MDType::Map:
        if (static_cast<const IKeywordMapMD*>(md)->GetTermination() == Termination::Slash)
            AdvanceToNextTerminatedLine(reader);
        break;
    case MDType::Record:
        ConsumeRecord(static_cast<const IKeywordRecordMD&>(*md), reader);
        break;
    case MDType::List:
        ConsumeList(static_cast<const IKeywordListMD&>(*md), reader);
        break;
    case MDType::RawText:
        ConsumeRawText(static_cast<const IKeywordRawTextMD&>(*md), reader);
        break;
    default:
        break;
    }
}

void LineReaderUtil::AdvanceToNextTerminatedLine(ILineReader& reader)
{
    std::string_view line;
    LineStreamReader* lines = reader.Lines();
    if (!lines) {
        LineSource source(reader);
        while (source.NextData(line, nullptr, true)) {
            if (IsTerminated(line)) return;
        }
        return;
    }
    // Most lines hold no terminator, so that is asked before what kind of line it is.
    while (lines->NextLineView(line, nullptr)) {
        if (!IsTerminated(line)) continue;
        const std::string_view text = Service::TrimmedLeft(line);
        if (VeldaneDeckInfo::BeginsWithCommentMarker(text) && !IsLiveSuppressedLine(text)) continue;
        return;
    }
}

void LineReaderUtil::AdvanceToNextLineStartedWithTermination(ILineReader& reader)
{
    std::string_view line;
    LineStreamReader* lines = reader.Lines();
    if (!lines) {
        LineSource source(reader);
        while (source.NextData(line, nullptr, true)) {
            if (IsTerminationOnly(line)) return;
        }
        return;
    }
    // A comment doesn't begin with a terminator, unless a suppress marker stands ahead of that.
    while (lines->NextLineView(line, nullptr)) {
        if (line.empty()) continue;
        if (line.front() == VeldaneDeckInfo::DASH) {
            if (!IsLiveSuppressedLine(line)) continue;
            line = VeldaneDeckInfo::SkipSuppressMarker(line);
        }
        if (IsTerminationOnly(line)) return;
    }
}

void LineReaderUtil::AdvanceToNextDoubleTermination(ILineReader& reader)
{
    LineSource source(reader);
    std::string_view line;
    bool terminated = false;
    while (source.NextData(line, nullptr, true)) {
        if (terminated && IsTerminationOnly(line)) return;
        terminated = IsTerminated(line);
    }
}

void LineReaderUtil::ConsumeDataLinesACTIONX(ILineReader& reader)
{
    AdvanceToNextDoubleTermination(reader);
}

bool LineReaderUtil::AdvanceToDataLine(ILineReader* reader, long long pos, long long size)
{
    if (!reader || pos < 0 || size < 1) return false;
    reader->Seek(pos, 0);
    LineSource source(*reader);
    std::string_view line;
    if (!source.Next(line)) return false;
    long long dataPos = 0;
    if (!source.NextData(line, &dataPos, true)) return false;
    if (dataPos > pos + size - 1) return false;
    reader->Seek(dataPos, 0);
    return true;
}

bool LineReaderUtil::AdvanceToNonTagLine(ILineReader* reader, long long pos, long long size, bool* sawTag,
                                         bool skipBlank)
{
    if (sawTag) *sawTag = false;
    if (!reader || pos < 0 || size < 1) return false;
    reader->Seek(pos, 0);
    LineSource source(*reader);
    std::string_view line;
    if (!source.Next(line)) return false;
    const bool onKeywordLine = sawTag && ContainsKeywordTag(line);
    const bool result = AdvanceToNextNonTagLine(reader, pos + size - 1, sawTag, nullptr, skipBlank);
    if (sawTag && onKeywordLine) *sawTag = true;
    return result;
}

bool LineReaderUtil::AdvanceToNextNonTagLine(ILineReader* reader, long long lastPos, bool* sawTag, std::string* tagLine,
                                             bool skipBlank)
{
    if (sawTag) *sawTag = false;
    if (tagLine) tagLine->clear();
    if (!reader) return false;

    LineSource source(*reader);
    std::string_view line;
    long long pos = 0;
    long long first = -1;
    bool seenTag = false;
    while (source.Next(line, &pos)) {
        if (lastPos >= 0 && pos > lastPos) break;
        const bool blank = Service::AllBlanks(line);
        if (skipBlank && blank) continue;
        if (first == -1) first = pos;
        if (IsKeywordTagLine(line) || IsFileTagLine(line)) {
            seenTag = true;
            if (sawTag) *sawTag = true;
            if (tagLine) tagLine->assign(line);
            continue;
        }
        if (seenTag) {
            reader->Seek(pos, 0);
            return true;
        }
        if (!blank) {
            reader->Seek(first, 0);
            return true;
        }
    }
    if (!seenTag && first >= 0) {
        reader->Seek(first, 0);
        return true;
    }
    return false;
}

bool LineReaderUtil::NextLineIsSuppressed(ILineReader* reader, long long pos)
{
    if (!reader || pos < 0) return false;
    reader->Seek(pos, 0);
    std::string line;
    if (!reader->ReadNextLine(line, nullptr, false)) return false;
    return VeldaneDeckInfo::BeginsWithSuppressMarker(Service::TrimmedLeft(line));
}

} // namespace Tarn::Fjel::Core::DeckManager
