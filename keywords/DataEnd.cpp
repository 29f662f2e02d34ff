#include "keywords/DataEnd.h"

#include "text/LineStringReader.h"
#include <deckmanager/LineReaderUtil.h>
#include <deckmanager/VeldaneDeckInfo.h>
#include <tarn/keywords/IKeywordRawTextMD.h>
#include <tarn/keywords/IKeywordRecordMD.h>
#include <tarn/keywords/IKeywordSyntax.h>
#include <tarn/keywords/KeywordUtils.h>

namespace Tarn::Fjel::Core::DeckManager {

using Keywords::IKeywordMD;
using Keywords::MDType;

namespace {

/// A scan of the data of that text goes on into the line behind it.
bool IsOpen(const Keywords::IKeywordSyntax& syntax, const std::string& text)
{
    LineStringReader lines(text + "X\n");
    LineReaderUtil::ConsumeDataLines(&syntax, lines);
    return lines.Tell() > static_cast<long long>(text.size());
}

std::string LineAtEnd(const IKeywordMD* metadata)
{
    std::string line(1, VeldaneDeckInfo::TERMINATION);
    const MDType type = Keywords::KeywordUtils::GetMDType(metadata);
    if (type == MDType::RawText) {
        static_cast<const Keywords::IKeywordRawTextMD*>(metadata)->GetTerminator(line);
    } else if (type == MDType::Record) {
        // The line of a title, whatever stands in it.
        const auto& record = *static_cast<const Keywords::IKeywordRecordMD*>(metadata);
        if (record.GetItemCount() > 0 && Keywords::KeywordUtils::GetMDType(record.GetItemMD(0)) == MDType::RestOfLine)
            line.clear();
    }
    return line + "\n";
}

} // namespace

std::string MissingDataEnd(const Keywords::IKeywordSyntax& syntax, std::string_view text)
{
    // Of most keywords no scan takes anything for data.
    if (syntax.GetMetaData() == nullptr || !IsOpen(syntax, {})) return {};
    std::string whole(text);
    if (!whole.empty() && whole.back() != '\n') whole += '\n';
    if (!IsOpen(syntax, whole)) return {};
    const std::string line = LineAtEnd(syntax.GetMetaData());
    // Where a list ends with a terminator of its own, the last of its records may lack one, too.
    constexpr int mostLines = 3;
    std::string lines;
    for (int i = 0; i < mostLines; ++i) {
        lines += line;
        if (!IsOpen(syntax, whole + lines)) return lines;
    }
    return {};
}

} // namespace Tarn::Fjel::Core::DeckManager
