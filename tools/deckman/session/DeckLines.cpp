#include "session/DeckLines.h"

#include <algorithm>

#include <deckmanager/IKeyword.h>
#include <deckmanager/IKeywordFile.h>
#include <tarn/keywords/IKeywordSyntax.h>
#include <tarn/keywords/KeywordKind.h>
#include <tarn/keywords/KeywordSyntaxUtils.h>
#include <tarn/service/FileName.h>

#include "session/DeckSession.h"
#include "session/DeckWalk.h"

namespace Deckman {

using Tarn::Fjel::Core::Keywords::KeywordKind;
using Tarn::Fjel::Core::Keywords::KeywordSyntaxUtils;
using Tarn::Fjel::Core::Keywords::SimulatorType;

bool SkipTracker::Hides(const DeckManager::IKeyword& keyword)
{
    const auto* const syntax = keyword.GetSyntax();
    if (syntax->GetKind() == KeywordKind::EndSkip) {
        if (m_depth > 0) --m_depth;
        return m_depth > 0;
    }
    const bool hidden = m_depth > 0;
    const bool for100 = KeywordSyntaxUtils::IsSKIP100(syntax);
    const bool for300 = KeywordSyntaxUtils::IsSKIP300(syntax);
    const bool hides = KeywordSyntaxUtils::IsSKIP(syntax) || (for100 && m_simulator == SimulatorType::S100) ||
                       (for300 && m_simulator == SimulatorType::S300);
    if (hides || (hidden && (for100 || for300))) ++m_depth;
    return hidden;
}

DeckLines::DeckLines(DeckSession& session, std::optional<SimulatorType> simulator, bool all)
{
    SkipTracker skips(simulator);
    const DeckManager::IKeywordFile* current = nullptr;
    File* lines = &Enter(session.Keywords().GetDataFile(), all);
    DeckWalk walk(session, all);
    while (walk.Next()) {
        const DeckManager::IKeyword& keyword = walk.Keyword();
        if (keyword.GetFile() != current) {
            current = keyword.GetFile();
            lines = &Enter(keyword.GetFile(), all);
        }
        if (walk.Kind() == KeywordKind::Include) {
            if (DeckManager::IKeywordFile* included = session.Keywords().GetIncludedFile(&keyword)) {
                Enter(included, all); // it may hold no keyword
            }
        }
        const bool hidden = skips.Hides(keyword);
        std::vector<std::pair<int, int>>& skipped = lines->skipped;
        const bool isOpen = !skipped.empty() && skipped.back().second == INT_MAX;
        if (isOpen && !skips.IsInside())
            skipped.back().second = keyword.GetLine();
        else if (!isOpen && skips.IsInside())
            skipped.emplace_back(keyword.GetLine() + (hidden ? 0 : 1), INT_MAX);
    }
    m_keywords = walk.Index();
    if (!all) HideBehindEnd(session);
}

DeckLines::File& DeckLines::Enter(DeckManager::IKeywordFile* file, bool all)
{
    const auto [entry, isNew] = m_files.try_emplace(file->GetFileName().GetFullName(), File{file});
    File& lines = entry->second;
    if (isNew) m_order.push_back(entry->first);
    if (!isNew || all) return lines;
    if (const DeckManager::KeywordFileIterator end = file->LogicalEnd(); end != file->End())
        lines.lastLine = end->GetLine();
    return lines;
}

/// An END in an included file ends what includes it too.
void DeckLines::HideBehindEnd(DeckSession& session)
{
    const DeckManager::IKeyword* keyword = *session.Keywords().LogicalEnd();
    while (keyword != nullptr && keyword->GetFile() != nullptr) {
        const auto lines = m_files.find(keyword->GetFile()->GetFileName().GetFullName());
        if (lines != m_files.end()) lines->second.lastLine = std::min(lines->second.lastLine, keyword->GetLine());
        keyword = session.Keywords().GetIncludingKeyword(keyword->GetFile());
    }
}

bool DeckLines::IsHidden(std::string_view file, int line) const
{
    const auto found = m_files.find(file);
    if (found == m_files.end()) return true;
    const File& lines = found->second;
    return line > lines.lastLine || std::any_of(lines.skipped.begin(), lines.skipped.end(), [line](const auto& range) {
               return line >= range.first && line < range.second;
           });
}

const std::pair<int, std::string_view>* DeckLines::LastUpTo(std::string_view file, int line)
{
    const auto found = m_files.find(file);
    if (found == m_files.end()) return nullptr;
    File& lines = found->second;
    if (lines.keywords.empty()) {
        const DeckManager::KeywordFileIterator end = lines.file->End();
        for (DeckManager::KeywordFileIterator at = lines.file->Begin(); at != end; ++at)
            lines.keywords.emplace_back(at->GetLine(), at->GetName());
    }
    const auto behind = std::upper_bound(lines.keywords.begin(), lines.keywords.end(), line,
                                         [](int value, const auto& keyword) { return value < keyword.first; });
    return behind == lines.keywords.begin() ? nullptr : &*(behind - 1);
}

std::string_view DeckLines::KeywordOn(std::string_view file, int line)
{
    const auto* const keyword = LastUpTo(file, line);
    return keyword != nullptr && keyword->first == line ? keyword->second : std::string_view();
}

std::string_view DeckLines::KeywordAround(std::string_view file, int line)
{
    const auto* const keyword = LastUpTo(file, line);
    return keyword != nullptr ? keyword->second : std::string_view();
}

long long DeckLines::FileCount() const
{
    return std::count_if(m_files.begin(), m_files.end(),
                         [](const auto& entry) { return entry.second.file->GetFileName().FileExists(); });
}

} // namespace Deckman
