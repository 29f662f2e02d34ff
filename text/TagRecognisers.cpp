#include "text/TagRecognisers.h"

#include <deckmanager/Environment.h>
#include <tarn/service/Strings.h>

namespace Tarn::Fjel::Core::DeckManager {

namespace {

bool BeginsWithTag(std::string_view line, std::string_view tag)
{
    const std::string_view text = Service::TrimmedLeft(line);
    return !text.empty() && (text.starts_with(OldGeneratedTag) || text.starts_with(tag));
}

} // namespace

bool IsFileTagLine(std::string_view line)
{
    return BeginsWithTag(line, Environment::Instance().GetFileGeneratedTag());
}

bool IsKeywordTagLine(std::string_view line)
{
    return BeginsWithTag(line, Environment::Instance().GetKeywordGeneratedTag());
}

bool ContainsKeywordTag(std::string_view line)
{
    return line.find(Environment::Instance().GetKeywordGeneratedTag()) != std::string_view::npos;
}

} // namespace Tarn::Fjel::Core::DeckManager
