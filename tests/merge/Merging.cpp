#include "tests/merge/Merging.h"

#include <stdexcept>

namespace MergeTests {

namespace {

constexpr std::size_t tagColumn = 37;
constexpr const char* tag = "-- Generated";

} // namespace

std::string WithTags(const std::string& text)
{
    std::string tagged;
    std::size_t lineBegin = 0;
    for (const char c : text) {
        if (c == '~') {
            const std::size_t size = tagged.size() - lineBegin;
            tagged.append(size == 0 ? 0 : tagColumn - size, ' ').append(tag);
            continue;
        }
        tagged += c;
        if (c == '\n') lineBegin = tagged.size();
    }
    return tagged;
}

std::string WithoutTags(const std::string& text)
{
    std::string plain;
    for (std::size_t at = 0; at < text.size();) {
        if (text.compare(at, std::string(tag).size(), tag) == 0) {
            while (!plain.empty() && plain.back() == ' ')
                plain.pop_back();
            plain += '~';
            at += std::string(tag).size();
        } else {
            plain += text[at++];
        }
    }
    return plain;
}

TwoDecks::TwoDecks(const Texts& oldFiles, const Texts& newFiles) : m_manager(DeckManagerFactory::Create())
{
    LineEnds::SetPolicy(LineEnds::Policy::Keep);
    for (const auto& [name, text] : oldFiles)
        m_directory.Write("old/" + name, WithTags(text));
    for (const auto& [name, text] : newFiles)
        m_directory.Write("new/" + name, WithTags(text));
    m_old = m_manager->ImportDeck("Old", m_directory.Path("old/" + oldFiles.front().first), false, true, false);
    m_new = m_manager->ImportDeck("New", m_directory.Path("new/" + newFiles.front().first), false, true, false);
    if (m_old == nullptr || m_new == nullptr) throw std::runtime_error("The test decks can't be opened");
}

bool TwoDecks::MergeUserKeywords()
{
    return m_manager->GetEditor(m_new)->MergeUserKeywords(*m_old, replaced, excluded, includeNames, &report);
}

void TwoDecks::MergeComments()
{
    m_manager->GetEditor(m_new)->MergeComments(*m_old, excluded, includeNames, &report);
}

std::string TwoDecks::Text(const std::string& name) const
{
    return TextsOf({{name, ""}}).front();
}

std::vector<std::string> TwoDecks::TextsOf(const Texts& files) const
{
    const std::string directory = m_directory.Path("copy");
    if (!m_new->GetDeckKeywords()->ExportToDirectory(directory, Keywords::SimulatorType::Any, false))
        throw std::runtime_error("The merged deck can't be written");
    std::vector<std::string> texts;
    for (const auto& file : files)
        texts.push_back(WithoutTags(m_directory.Read("copy/" + file.first)));
    return texts;
}

std::string TwoDecks::Replaced() const
{
    std::string names;
    for (const KeywordIterator& position : replaced)
        names += (names.empty() ? "" : " ") + position->GetName();
    return names;
}

} // namespace MergeTests
