// Changes items in any text of any keyword of the catalogue. The first line names the keyword; where it names none, its
// first bytes choose one. The second line is the edit: a letter for what is done, numbers for the path, and a value
// behind a colon. The rest is the text.

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include <deckmanager/Context.h>
#include <deckmanager/DataTextEditor.h>

#include "fuzz/LooseData.h"
#include "keywords/DeserializeState.h"

using namespace Tarn::Fjel::Core;
using namespace Tarn::Fjel::Core::DeckManager;
using Fuzz::ChooseSyntax;
using Fuzz::EmptyDeck;

namespace {

void Require(bool condition)
{
    if (!condition) std::abort();
}

/// "s 0 3" is a path of two numbers; a minus stands for the end of a list.
DataTextEditor::Path PathOf(std::string_view words)
{
    DataTextEditor::Path path;
    int number = -1;
    for (const char c : words) {
        if (c >= '0' && c <= '9') {
            number = (number < 0 ? 0 : number % 1000) * 10 + (c - '0');
        } else if (number >= 0 || c == '-') {
            path.emplace_back(number);
            number = -1;
        }
    }
    if (number >= 0) path.emplace_back(number);
    return path;
}

void Check(const DataTextEditor::Result& result)
{
    Require(result.IsDone() == result.reason.empty());
    Require(result.IsDone() || result.text.empty());
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    DeserializeState::DefaultLimits() = {1000, 1000, 100000, 10};
    std::string_view input(reinterpret_cast<const char*>(data), size);
    const Keywords::IKeywordSyntax* const syntax = ChooseSyntax(input);
    const std::size_t lineEnd = std::min(input.find('\n'), input.size());
    const std::string_view edit = input.substr(0, lineEnd);
    const std::string_view text = input.substr(std::min(lineEnd + 1, input.size()));
    const std::size_t colon = std::min(edit.find(':'), edit.size());
    DataTextEditor::Path path = PathOf(edit.substr(0, colon));
    const auto value = DataTextEditor::Value::Text(std::string(edit.substr(std::min(colon + 1, edit.size()))));

    const EmptyDeck deck;
    DataTextEditor::Settings settings;
    settings.context = Context(&deck);
    settings.allowsVariables = edit.starts_with('v');
    const DataTextEditor editor(*syntax, syntax->GetName(), settings);
    const DataTextEditor::Result set = editor.Set(text, path, value);
    Check(set);
    // What is there already isn't put there again.
    if (set.IsDone()) Require(editor.Set(set.text, path, value).outcome == DataTextEditor::Outcome::Unchanged);
    Check(editor.Remove(text, path));
    int index = -1;
    if (!path.empty()) {
        index = path.back().index;
        path.pop_back();
    }
    Check(editor.InsertElement(text, path, index, value));
    Check(editor.InsertRecord(text, path, index, {value, value}));
    return 0;
}
