#include "text/LineStringWriter.h"

#include <sstream>

namespace Tarn::Fjel::Core::DeckManager {

namespace {

std::ostringstream& TextOf(const LineStreamWriter& lines)
{
    return static_cast<std::ostringstream&>(*lines.Attached());
}

} // namespace

LineStringWriter::LineStringWriter() : ForwardingLineWriter(LineStreamWriter::Target::Text)
{
    m_lines.Attach(std::make_unique<std::ostringstream>(std::ios::ate), LineStreamWriter::Target::Text);
}

LineStringWriter::~LineStringWriter() = default;

std::string LineStringWriter::GetText() const
{
    return TextOf(m_lines).str();
}

std::string LineStringWriter::TakeText()
{
    std::string text = std::move(TextOf(m_lines)).str();
    SetText({});
    return text;
}

void LineStringWriter::SetText(const std::string& text)
{
    TextOf(m_lines).str(text);
    m_lines.StartOver(text.empty() || text.back() == '\n');
}

} // namespace Tarn::Fjel::Core::DeckManager
