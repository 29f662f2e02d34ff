#include <deckmanager/DataTextEditor.h>

#include <tarn/keywords/IKeywordSyntax.h>

#include "keywords/DataTextEdit.h"

namespace Tarn::Fjel::Core::DeckManager {

namespace {

template <class Change>
DataTextEditor::Result ResultOf(std::string_view text, const Change& change)
{
    DataTextEditor::Result result;
    try {
        result.text = change();
        result.outcome = result.text == text ? DataTextEditor::Outcome::Unchanged : DataTextEditor::Outcome::Done;
    } catch (DataTextEdit::Obstacle& obstacle) {
        result.outcome = obstacle.outcome;
        result.reason = std::move(obstacle.reason);
    }
    return result;
}

} // namespace

DataTextEditor::Value DataTextEditor::Value::YesNo(bool value)
{
    Value made(Kind::YesNo);
    made.m_integer = value ? 1 : 0;
    return made;
}

DataTextEditor::Value DataTextEditor::Value::Integer(int value)
{
    Value made(Kind::Integer);
    made.m_integer = value;
    return made;
}

DataTextEditor::Value DataTextEditor::Value::Real(double value)
{
    Value made(Kind::Real);
    made.m_real = value;
    return made;
}

DataTextEditor::Value DataTextEditor::Value::String(std::string value)
{
    Value made(Kind::String);
    made.m_string = std::move(value);
    return made;
}

DataTextEditor::Value DataTextEditor::Value::Text(std::string text)
{
    Value made(Kind::Text);
    made.m_string = std::move(text);
    return made;
}

DataTextEditor::DataTextEditor(const Keywords::IKeywordSyntax& syntax, std::string name)
    : DataTextEditor(syntax, std::move(name), Settings())
{
}

DataTextEditor::DataTextEditor(const Keywords::IKeywordSyntax& syntax, std::string name, Settings settings)
    : m_syntax(&syntax), m_name(name.empty() ? syntax.GetName() : std::move(name)), m_settings(std::move(settings))
{
}

DataTextEditor::Result DataTextEditor::Set(std::string_view text, const Path& path, const Value& value) const
{
    return ResultOf(text, [&] { return DataTextEdit(*m_syntax, m_name, m_settings, text).Set(path, value); });
}

DataTextEditor::Result DataTextEditor::InsertElement(std::string_view text, const Path& list, int index,
                                                     const Value& value) const
{
    return ResultOf(
        text, [&] { return DataTextEdit(*m_syntax, m_name, m_settings, text).InsertElement(list, index, value); });
}

DataTextEditor::Result DataTextEditor::InsertRecord(std::string_view text, const Path& list, int index,
                                                    const std::vector<Value>& values) const
{
    return ResultOf(
        text, [&] { return DataTextEdit(*m_syntax, m_name, m_settings, text).InsertRecord(list, index, values); });
}

DataTextEditor::Result DataTextEditor::Remove(std::string_view text, const Path& path) const
{
    return ResultOf(text, [&] { return DataTextEdit(*m_syntax, m_name, m_settings, text).Remove(path); });
}

} // namespace Tarn::Fjel::Core::DeckManager
