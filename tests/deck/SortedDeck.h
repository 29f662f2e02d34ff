#pragma once

#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "files/KeywordFile.h"
#include "tests/deck/RuledTable.h"
#include "tests/support/TestDeck.h"
#include <deckmanager/IDeckKeywordsEditor.h>
#include <deckmanager/IKeyword.h>
#include <tarn/keywords/KeywordKind.h>

namespace TestSupport {

/// A deck of keywords to sort, written in short: a text names the keywords of a file with blanks between, "I1" for an
/// INCLUDE of the file at 1, and "A:7" for an A with 7 as its data.
class SortedDeck
{
    using KeywordFile = Decks::KeywordFile;
    using KeywordFileIterator = Decks::KeywordFileIterator;

public:
    explicit SortedDeck(const std::vector<std::string>& files)
    {
        TestDeck::Texts texts;
        for (std::size_t i = 0; i < files.size(); ++i)
            texts.emplace_back(NameOf(i), TextOf(files[i]));
        m_deck = std::make_unique<TestDeck>(texts);
        m_deck->Walk(true);
        m_fileCount = files.size();
    }

    /// Each file in short.
    std::vector<std::string> Files() const
    {
        std::vector<std::string> files;
        for (std::size_t i = 0; i < m_fileCount; ++i) {
            const KeywordFile& file = File(i);
            std::string& text = files.emplace_back();
            for (KeywordFileIterator place = file.Begin(); place != file.End(); ++place)
                text += (text.empty() ? "" : " ") + InShort(**place);
        }
        return files;
    }

    KeywordFile& File(std::size_t i) const { return m_deck->File(NameOf(i)); }
    Decks::IDeckKeywordsEditor& Editor() const { return *m_deck->Manager().GetEditor(&m_deck->Deck()); }
    TestDeck& Deck() const { return *m_deck; }

    static std::string NameOf(std::size_t file) { return file == 0 ? "TOP.DATA" : "F" + std::to_string(file) + ".INC"; }

    /// The text that a short one stands for.
    static std::string TextOf(const std::string& inShort)
    {
        std::string text;
        std::istringstream words(inShort);
        for (std::string word; words >> word;) {
            const std::string name = word.substr(0, word.find(':'));
            if (name.size() == 2 && name[0] == 'I') {
                text += "INCLUDE\n'F" + name.substr(1) + ".INC' /\n";
            } else if (name == "TITLE") {
                text += "TITLE\nA title\n";
            } else {
                text += name + "\n";
                if (name.size() == 1) text += (name == word ? "0" : word.substr(2)) + " /\n";
            }
        }
        return text;
    }

private:
    std::string InShort(const Decks::IKeyword& keyword) const
    {
        const std::string& name = keyword.GetName();
        if (name != "INCLUDE" && name.size() > 1) return name;
        const std::string data = *m_deck->Keywords().GetDataText(&keyword);
        if (name == "INCLUDE") return "I" + data.substr(2, 1);
        const std::string number = data.substr(0, data.find(' '));
        return number == "0" ? name : name + ":" + number;
    }

    std::unique_ptr<TestDeck> m_deck;
    std::size_t m_fileCount = 0;
};

} // namespace TestSupport
