#include "keywords/KeywordTextSplitter.h"

#include <deckmanager/Environment.h>
#include <deckmanager/LineReaderUtil.h>
#include <tarn/service/Strings.h>

#include "text/LineStreamReader.h"

namespace Tarn::Fjel::Core::DeckManager {

namespace {

/// From the keyword tag on, where the line bears one.
std::string_view TagOf(std::string_view keywordLine)
{
    const std::size_t tag = keywordLine.find(Environment::Instance().GetKeywordGeneratedTag());
    return tag == std::string_view::npos ? std::string_view() : Service::TrimmedRight(keywordLine.substr(tag));
}

} // namespace

bool SplitKeywordText(std::string_view text, std::string& name, std::string& dataText, std::string& tagText,
                      std::string* ahead)
{
    name.clear();
    dataText.clear();
    tagText.clear();
    if (text.empty()) return false;

    LineStreamReader lines;
    lines.AttachText(text);
    long long linePos = 0;
    while (name.empty()) {
        if (!LineReaderUtil::ReadNextValidLineAsKeyword(lines, name, &linePos, false, nullptr, nullptr)) return false;
    }
    lines.Seek(linePos, 0);
    std::string_view line;
    lines.NextLineView(line, nullptr);
    const std::string lineTag(TagOf(line));
    if (ahead != nullptr) ahead->assign(text.substr(0, static_cast<std::size_t>(linePos)));

    // Blank lines ahead of the data stay: that of a title is the title.
    const long long last = static_cast<long long>(text.size()) - 1;
    if (LineReaderUtil::AdvanceToNextNonTagLine(&lines, last, nullptr, &tagText, false)) {
        const auto dataBegin = static_cast<std::size_t>(lines.Tell());
        if (dataBegin < text.size()) dataText.assign(Service::TrimmedRight(text.substr(dataBegin)));
    }
    if (tagText.empty()) tagText = lineTag;
    return true;
}

} // namespace Tarn::Fjel::Core::DeckManager
