#include "checking/KeywordSource.h"

#include <algorithm>
#include <charconv>

#include <deckmanager/IKeyword.h>
#include <deckmanager/IKeywordFile.h>
#include <deckmanager/VeldaneDeckInfo.h>
#include <tarn/service/FileName.h>
#include <tarn/service/Strings.h>

namespace Deckman {

namespace DeckManager = Tarn::Fjel::Core::DeckManager;
namespace Service = Tarn::Fjel::Core::Service;

namespace {

/// Of a line of data, what lies behind is not read.
constexpr std::size_t lineLimit = 132;

/// Takes the count off a repeat such as 3*0.5. A word that is none stands for itself.
long long TakeCount(std::string_view& text)
{
    long long count = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, count);
    if (stop == text.data() || stop == end || *stop != '*' || error != std::errc() || count < 0) return 1;
    text.remove_prefix(static_cast<std::size_t>(stop - text.data()) + 1);
    return count;
}

} // namespace

bool KeywordSource::Read(const DeckManager::IKeyword& keyword)
{
    m_tokens.clear();
    m_rowEnds.clear();
    m_isCut = false;
    m_hasCommas = false;
    const long long size = keyword.GetSize();
    if (size <= 0 || keyword.GetFile() == nullptr) return false;
    const std::string& file = keyword.GetFile()->GetFileName().GetFullName();
    if (file != m_file || !m_stream) {
        m_stream = std::ifstream(file, std::ios::binary);
        m_file = file;
    }
    m_text.resize(static_cast<std::size_t>(size));
    if (!m_stream.seekg(keyword.GetPosition())) return false;
    m_stream.read(m_text.data(), size);
    m_text.resize(static_cast<std::size_t>(m_stream.gcount()));
    m_stream.clear(); // the last line of a file has no end to be read
    m_line = keyword.GetLine();
    // Single rows that are suppressed are data to some: such a text is not judged.
    return m_line > 0 && m_text.find(DeckManager::VeldaneDeckInfo::SUPPRESS_MARKER) == std::string::npos;
}

const std::vector<KeywordSource::Token>& KeywordSource::Tokens()
{
    if (m_isCut) return m_tokens;
    m_isCut = true;
    const std::string_view text = m_text;
    std::size_t begin = text.find('\n');
    for (int number = m_line + 1; begin != std::string_view::npos && ++begin < text.size(); ++number) {
        const std::size_t end = std::min(text.find('\n', begin), text.size());
        CutLine(text.substr(begin, std::min(end - begin, lineLimit)), number);
        begin = end;
        if (end == text.size()) break;
    }
    return m_tokens;
}

const std::vector<std::size_t>& KeywordSource::RowEnds()
{
    Tokens();
    return m_rowEnds;
}

void KeywordSource::CutLine(std::string_view line, int number)
{
    const std::size_t first = m_tokens.size();
    std::size_t at = 0;
    while (at < line.size()) {
        if (DeckManager::VeldaneDeckInfo::IsSpace(line[at])) {
            ++at;
            continue;
        }
        if (line[at] == ',') {
            m_hasCommas = true;
            ++at;
            continue;
        }
        if (line.substr(at).starts_with("--")) break;
        Token token{{}, number, 1, false, false, at == 0, false};
        if (line[at] == '/') {
            token.isSlash = true;
            token.text = line.substr(at, 1);
            m_rowEnds.push_back(m_tokens.size());
            m_tokens.push_back(token);
            break;
        }
        if (line[at] == '\'') {
            const std::size_t close = std::min(line.find('\'', at + 1), line.size());
            token.isQuoted = true;
            token.text = Service::Trimmed(line.substr(at + 1, close - at - 1));
            at = std::min(close + 1, line.size());
        } else {
            const std::size_t begin = at;
            bool inQuotes = false;
            for (; at < line.size(); ++at) {
                if (line[at] == '\'') inQuotes = !inQuotes;
                if (inQuotes) continue;
                if (DeckManager::VeldaneDeckInfo::IsSpace(line[at]) || line[at] == ',' || line[at] == '/') break;
                if (at > begin && line.substr(at).starts_with("--")) break;
            }
            token.text = line.substr(begin, at - begin);
            token.count = TakeCount(token.text);
        }
        m_tokens.push_back(token);
    }
    if (m_tokens.size() == first + 1) m_tokens.back().isAlone = true;
}

} // namespace Deckman
