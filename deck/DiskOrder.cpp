#include "deck/DiskOrder.h"

#include <algorithm>

#include "files/KeywordFile.h"
#include "keywords/Keyword.h"

namespace Tarn::Fjel::Core::DeckManager {

namespace {

bool BeginsAhead(const Keyword* keyword, const Keyword* other)
{
    return keyword->Position() < other->Position();
}

} // namespace

DiskOrder::DiskOrder(const std::vector<KeywordFile*>& files)
{
    for (const KeywordFile* file : files) {
        if (!file->IsLoaded()) continue;
        // Also those that an edit has removed since.
        for (const std::shared_ptr<IKeyword>& listed : file->DiskList()) {
            const Keyword& keyword = KeywordFileContents::AsKeyword(listed);
            if (keyword.HasValidExtent()) m_keywords[keyword.Reader().get()].push_back(&keyword);
        }
    }
    for (auto& [reader, keywords] : m_keywords) {
        std::sort(keywords.begin(), keywords.end(), BeginsAhead);
    }
}

bool DiskOrder::Knows(const Keyword& keyword) const
{
    return m_keywords.count(keyword.Reader().get()) > 0;
}

const Keyword* DiskOrder::Ahead(const Keyword& keyword) const
{
    const auto found = m_keywords.find(keyword.Reader().get());
    if (found == m_keywords.end()) return nullptr;
    const std::vector<const Keyword*>& keywords = found->second;
    const auto place = std::lower_bound(keywords.begin(), keywords.end(), &keyword, BeginsAhead);
    return place == keywords.begin() ? nullptr : *(place - 1);
}

} // namespace Tarn::Fjel::Core::DeckManager
