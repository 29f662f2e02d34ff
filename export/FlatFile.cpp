#include "export/FlatFile.h"

#include <algorithm>
#include <string>

#include "files/IteratorAccess.h"
#include "files/IteratorPath.h"
#include "files/KeywordFile.h"
#include "files/KeywordFileWriter.h"
#include "files/KeywordINCLUDE.h"
#include "files/SourceFile.h"
#include "text/LineFileWriter.h"
#include "text/TagRecognisers.h"
#include <deckmanager/Context.h>
#include <deckmanager/Environment.h>
#include <deckmanager/ExportReport.h>
#include <deckmanager/IDeckKeywords.h>
#include <deckmanager/ILineReader.h>
#include <deckmanager/LineReaderUtil.h>
#include <deckmanager/VeldaneDeckInfo.h>
#include <tarn/keywords/IKeywordSyntax.h>
#include <tarn/keywords/KeywordKind.h>
#include <tarn/service/Strings.h>

namespace Tarn::Fjel::Core::DeckManager {

using Keywords::KeywordKind;

namespace {

/// A process may hold only so many files open.
constexpr std::size_t mostOpenFiles = 32;

/// Ahead of a tag line that would say something of keywords that it doesn't stand for.
constexpr std::string_view separator = "--\n";

const Keyword& KeywordAt(const KeywordFileIterator& position)
{
    return static_cast<const Keyword&>(**position);
}

int KindOf(const Keyword& keyword)
{
    return keyword.GetSyntax()->GetKind();
}

bool IsTagLine(std::string_view line)
{
    return IsKeywordTagLine(line) || IsFileTagLine(line);
}

/// A user's remark as a comment line, which must not say more than that: no tag, no mark of a suppressed line. Empty
/// for none.
std::string RemarkLine(std::string_view remark)
{
    remark = Service::Trimmed(remark);
    if (remark.empty()) return {};
    const bool isComment = VeldaneDeckInfo::BeginsWithCommentMarker(remark) && !IsTagLine(remark) &&
                           VeldaneDeckInfo::SkipSuppressMarker(remark).size() == remark.size();
    std::string line;
    if (!isComment) line.append(VeldaneDeckInfo::COMMENT_MARKER).append(" ");
    return line.append(remark) + "\n";
}

/// What stands behind a name: the comment behind the terminator, or all of it where other words come first.
std::string_view RemarkBehind(std::string_view rest)
{
    const std::size_t end = std::min(rest.find(VeldaneDeckInfo::COMMENT_MARKER), rest.size());
    const std::size_t terminator = rest.find(VeldaneDeckInfo::TERMINATION_TOKEN);
    const bool isTerminated = terminator < end;
    if (!Service::AllBlanks(rest.substr(0, isTerminated ? terminator : end))) return rest;
    return isTerminated ? rest.substr(terminator + 1) : rest.substr(end);
}

/// What a user has put beside a tag, ahead of it or behind it.
std::string WordsBesideTag(std::string_view line)
{
    std::string_view tag = Environment::Instance().GetKeywordGeneratedTag();
    if (tag.empty() || line.find(tag) == std::string_view::npos) tag = OldGeneratedTag;
    const std::size_t at = line.find(tag);
    if (at == std::string_view::npos) return std::string(line);
    std::string words(Service::TrimmedRight(line.substr(0, at)));
    const std::string_view behind = Service::Trimmed(line.substr(at + tag.size()));
    if (!words.empty() && !behind.empty()) words += ' ';
    return words.append(behind);
}

} // namespace

FlatFile::FlatFile(const IDeckKeywords& keywords, LineFileWriter* writer, const Context& context, const Manner& manner,
                   ExportReport* report)
    : m_keywords(keywords), m_writer(writer), m_context(context), m_manner(manner), m_report(report)
{
}

FlatFile::~FlatFile() = default;

bool FlatFile::Write(const KeywordIterator& begin, const KeywordIterator& end)
{
    Open(begin);
    FindStop(begin, end);
    while (!m_levels.empty()) {
        if (m_writer != nullptr && !m_writer->IsGood()) return false;
        if (m_stop && m_levels.back().position == *m_stop) {
            m_levels.back().source->Flush();
            break;
        }
        Step();
    }
    m_levels.clear();
    return m_writer == nullptr || m_writer->IsGood();
}

bool FlatFile::WriteRange(const KeywordFileIterator& begin, const KeywordFileIterator& end)
{
    KeywordFile* file = IteratorAccess::File(begin);
    if (file == nullptr) return true;
    SourceFile source(*file, m_writer);
    if (m_writer != nullptr) {
        KeywordFileWriter::KeepLineEnds(*m_writer, source);
        m_writer->SetLeavesLastLineOpen(true);
    }
    const KeywordFileIterator fileEnd = file->End();
    KeywordFileIterator place = begin;
    if (place.AtBeforeBegin()) ++place;
    if (place != file->Begin()) source.SkipBlocksAhead();
    for (; place != end && place != fileEnd; ++place) {
        if (m_writer != nullptr && !m_writer->IsGood()) return false;
        const Keyword& keyword = KeywordAt(place);
        source.ComeTo(place, m_context);
        if (KindOf(keyword) == KeywordKind::Include && !keyword.IsCommentedOut() && !keyword.IsSuppressed())
            source.LeaveOut(keyword, m_context);
        else
            source.WriteKeyword(keyword, m_context, m_manner.simulator);
        source.CopyGap(keyword);
    }
    if (place == fileEnd) source.ComeTo(place, m_context);
    source.Flush();
    return m_writer == nullptr || m_writer->IsGood();
}

/// Comes to the first place of the walk, which may lie deep down.
void FlatFile::Open(const KeywordIterator& begin)
{
    KeywordFile* top = IteratorAccess::TopFile(begin);
    if (top == nullptr) return;
    const IteratorPath::Places places = IteratorPath::Of(begin);
    const bool isBegin = begin == m_keywords.Begin();
    for (const KeywordFileIterator& place : places) {
        Push(*IteratorAccess::File(place), place);
        if (place.AtBeforeBegin()) ++m_levels.back().position;
        if (!isBegin) m_levels.back().source->SkipBlocksAhead();
        // An INCLUDE around the range is left when the range goes on behind it.
        if (m_levels.size() < places.size()) m_levels.back().source->ComeTo(place, m_context);
        if (m_writer != nullptr && m_levels.size() == 1) {
            KeywordFileWriter::KeepLineEnds(*m_writer, *m_levels.back().source);
            m_writer->SetLeavesLastLineOpen(true);
        }
    }
    if (isBegin)
        WriteHead(*m_levels.back().source);
    else if (m_manner.whole)
        WriteComment(begin);
}

/// The comment above the first keyword of a range lies in what stands ahead of it.
void FlatFile::WriteComment(const KeywordIterator& begin)
{
    if (*begin == nullptr || m_writer == nullptr) return;
    m_writer->WriteText(m_keywords.GetComment(begin, false));
}

void FlatFile::FindStop(const KeywordIterator& begin, const KeywordIterator& end)
{
    const KeywordFile* top = IteratorAccess::TopFile(begin);
    const auto isPassedBy = [](const KeywordFileIterator& place) {
        return IteratorAccess::File(place)->WalkEnd() < place;
    };
    bool comesThere = top != nullptr && IteratorAccess::TopFile(end) == top && !(end < begin);
    if (comesThere) {
        const IteratorPath::Places places = IteratorPath::Of(end);
        comesThere = std::none_of(places.begin(), places.end(), isPassedBy);
    }
    const KeywordIterator& deckEnd = m_keywords.End();
    if (!comesThere && !(begin < deckEnd)) return;
    const KeywordFileIterator stop = IteratorAccess::CurrentFileIter(comesThere ? end : deckEnd);
    // The end of the walk is come to by leaving the top file.
    if (IteratorAccess::File(stop) == top && stop == top->WalkEnd()) return;
    m_stop = stop;
}

void FlatFile::Push(KeywordFile& file, const KeywordFileIterator& position)
{
    if (m_levels.size() >= mostOpenFiles) m_levels[m_levels.size() - mostOpenFiles].source->PutAside();
    const bool isBehindEnd = file.WalkEnd() < position;
    m_levels.push_back(
        {std::make_unique<SourceFile>(file, m_writer), position, isBehindEnd ? file.End() : file.WalkEnd()});
    // What the including file goes on with.
    if (m_levels.size() > 1) m_levels.back().source->GoesOn();
    if (m_report != nullptr) {
        m_report->files.push_back({ExportReport::Action::Written, file.GetFileName().GetFullName(), {}, nullptr});
    }
}

void FlatFile::Enter(KeywordFile& file)
{
    Push(file, file.Begin());
    WriteHead(*m_levels.back().source);
}

/// A file tag speaks for its file, which is only a part of this one: in front, it would speak for all of it. Behind a
/// keyword without data a tag line would be the keyword's.
void FlatFile::WriteHead(SourceFile& source)
{
    const bool isTop = m_levels.size() == 1;
    if (!m_manner.whole && !source.IsAllHead() && !source.HasDataInHead()) return;
    bool tagSaysTooMuch = source.BeginsWithTag();
    if (tagSaysTooMuch) tagSaysTooMuch = isTop ? !AllFilesAreTagged() : IsBareKeywordAhead();
    source.CopyHead(!isTop, tagSaysTooMuch ? separator : std::string_view());
    if (source.HeadSize() > 0) NoteWritten(nullptr);
}

bool FlatFile::AllFilesAreTagged() const
{
    const std::set<IKeywordFile*> files = m_keywords.GetFiles();
    return std::all_of(files.begin(), files.end(), [](IKeywordFile* file) {
        return file->AsKeywordFile()->IsFileTagged() || file->Begin() == file->End();
    });
}

void FlatFile::NoteWritten(const Keyword* keyword)
{
    m_last = keyword;
    m_lastSource = keyword != nullptr ? m_levels.back().source.get() : nullptr;
    m_endsBare = false;
}

/// The text ends with the line of a keyword, or its tag lines.
bool FlatFile::IsBareKeywordAhead()
{
    if (m_last == nullptr) return m_endsBare;
    if (!m_last->HasValidExtent() || m_last->Reader() != m_lastSource->File().FileReader()) return false;
    ILineReader* reader = m_lastSource->Reader();
    return reader != nullptr &&
           (!LineReaderUtil::AdvanceToNonTagLine(reader, m_last->Position(), m_last->Size(), nullptr, true) ||
            reader->Tell() >= m_last->Position() + m_last->Size());
}

void FlatFile::Step()
{
    Level& level = m_levels.back();
    if (level.position == level.end) {
        Leave();
        return;
    }
    const Keyword& keyword = KeywordAt(level.position);
    level.source->ComeTo(level.position, m_context);
    if (const KeywordINCLUDE* include = KeywordINCLUDE::From(&keyword)) {
        if (!PassInclude(*include)) return;
    } else {
        level.source->WriteKeyword(keyword, m_context, m_manner.simulator);
        NoteWritten(&keyword);
    }
    StepOn(keyword);
}

void FlatFile::StepOn(const Keyword& keyword)
{
    Level& level = m_levels.back();
    if (level.source->GapSize(keyword) > 0) NoteWritten(nullptr);
    level.source->CopyGap(keyword);
    ++level.position;
}

bool FlatFile::PassInclude(const KeywordINCLUDE& include)
{
    SourceFile& source = *m_levels.back().source;
    const auto stay = [&] {
        source.WriteKeyword(include, m_context, m_manner.simulator);
        NoteWritten(nullptr);
        return true;
    };
    if (include.IsCommentedOut() || include.IsSuppressed()) return stay();
    if (!include.BringsSomething()) {
        if (m_report != nullptr) {
            if (const std::optional<Service::FileName> missing = include.MissingFile(m_context))
                m_report->files.push_back({ExportReport::Action::Missing, missing->GetFullName(), {}, &include});
        }
        if (m_manner.whole) return stay();
        HandOn(include);
        return true;
    }
    if (m_report != nullptr) m_report->changes.push_back({&include, {}});
    if (m_manner.whole) WriteCommentsOn(include);
    source.Flush();
    Enter(*include.IncludedFile());
    return false;
}

/// The comments in the keyword's own text: that goes, and they are the user's.
void FlatFile::WriteCommentsOn(const Keyword& include)
{
    SourceFile& source = *m_levels.back().source;
    source.Flush();
    ILineReader* reader =
        include.HasValidExtent() && include.Reader() == source.File().FileReader() ? source.Reader() : nullptr;
    if (reader == nullptr) return;
    // What else stands in the extent is handed on as it is.
    const long long end = include.Position() + include.OwnSize(m_context);
    if (!reader->Seek(include.Position(), 0)) return;
    std::string comments;
    std::string line;
    bool nameSeen = false;
    for (bool isFirst = true; reader->Tell() < end && reader->ReadNextLine(line, nullptr, true); isFirst = false) {
        const std::string_view text = Service::Trimmed(line);
        if (isFirst) {
            std::string_view remark = text;
            while (!remark.empty() && !VeldaneDeckInfo::IsSpace(remark.front()))
                remark.remove_prefix(1);
            comments += RemarkLine(WordsBesideTag(remark));
        } else if (VeldaneDeckInfo::BeginsWithCommentMarker(text)) {
            if (IsTagLine(text))
                comments += RemarkLine(WordsBesideTag(text));
            else
                comments.append(line) += '\n';
        } else if (!text.empty()) {
            const auto [at, size] =
                nameSeen ? std::pair<std::size_t, std::size_t>() : FileReferencingKeyword::NameToken(text);
            nameSeen = true;
            comments += RemarkLine(RemarkBehind(text.substr(at + size)));
        }
    }
    if (comments.empty() || m_writer == nullptr) return;
    m_writer->WriteText(comments);
    NoteWritten(nullptr);
}

/// An INCLUDE is left out: what stands behind its own text is not its own.
void FlatFile::HandOn(const Keyword& keyword)
{
    SourceFile& source = *m_levels.back().source;
    source.Flush();
    const std::int64_t before = m_writer != nullptr ? m_writer->Tell() : 0;
    source.LeaveOut(keyword, m_context);
    if (m_writer != nullptr && m_writer->Tell() != before) NoteWritten(nullptr);
}

/// The walk has come to the end of a file.
void FlatFile::Leave()
{
    Level& level = m_levels.back();
    const KeywordFileIterator fileEnd = level.source->File().End();
    if (m_manner.whole && level.position != fileEnd) {
        // Nothing behind an ENDINC counts. In the top file it may stay so, elsewhere something follows that does.
        if (m_levels.size() > 1) {
            level.source->CopyRestAsComments(KeywordAt(level.position));
            NoteWritten(nullptr);
        } else {
            for (; level.position != fileEnd; ++level.position) {
                level.source->ComeTo(level.position, m_context);
                level.source->WriteKeyword(KeywordAt(level.position), m_context, m_manner.simulator);
                level.source->CopyGap(KeywordAt(level.position));
            }
        }
    }
    if (level.position == fileEnd) level.source->ComeTo(fileEnd, m_context);
    level.source->Flush();
    if (m_lastSource == level.source.get()) {
        const bool endsBare = IsBareKeywordAhead();
        NoteWritten(nullptr);
        m_endsBare = endsBare;
    }
    m_levels.pop_back();
    if (m_levels.empty()) return;
    const Keyword& include = KeywordAt(m_levels.back().position);
    HandOn(include);
    StepOn(include);
}

} // namespace Tarn::Fjel::Core::DeckManager
