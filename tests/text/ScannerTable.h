#pragma once

#include <memory>
#include <string>
#include <vector>

#include <deckmanager/Environment.h>
#include <deckmanager/ISectionContextQuery.h>
#include <tarn/keywords/KeywordSyntaxTable.h>

namespace TestText {

/// A table with a keyword of each shape that the scanner treats in a way of its own.
inline const Tarn::Fjel::Core::Keywords::KeywordSyntaxTable& ScannerTable()
{
    static const auto table = Tarn::Fjel::Core::Keywords::KeywordSyntaxTable::FromText(R"([
{"name": "RUNSPEC", "kind": "section", "sections": "all"},
{"name": "GRID", "kind": "section", "sections": "all"},
{"name": "PROPS", "kind": "section", "sections": "all"},
{"name": "SCHEDULE", "kind": "section", "sections": "all"},
{"name": "END", "kind": "end", "sections": "all"},
{"name": "INCLUDE", "kind": "include", "sections": "all",
 "data": {"type": "record", "items": [{"name": "FILE", "type": "string"}]}},
{"name": "PATHS", "sections": ["RUNSPEC"], "data": {"type": "list", "element": {"type": "record",
 "items": [{"name": "ALIAS", "type": "string"}, {"name": "PATH", "type": "string"}]}}},
{"name": "TITLE", "sections": ["RUNSPEC"], "data": {"type": "record", "termination": "none",
 "items": [{"name": "TEXT", "type": "restOfLine"}]}},
{"name": "UNITWORD", "sections": ["RUNSPEC"], "data": {"type": "record", "termination": "none",
 "items": [{"name": "WORD", "type": "string"}]}},
{"name": "METHOD", "sections": "all", "data": {"type": "record",
 "items": [{"name": "WAY", "type": "option", "options": ["AIM", "IMPES"]}, {"name": "N", "type": "integer"}]}},
{"name": "DIMENS", "sections": ["RUNSPEC"], "data": {"type": "record", "items": [{"name": "NX", "type": "integer"}]}},
{"name": "OIL", "sections": ["RUNSPEC"]},
{"name": "PORO", "sections": ["GRID"], "data": {"type": "list", "element": {"type": "real"}}},
{"name": "WELSPECS", "sections": ["SCHEDULE"], "data": {"type": "list", "element": {"type": "record",
 "items": [{"name": "WELL", "type": "string"}, {"name": "I", "type": "integer"}]}}},
{"name": "TUNING", "sections": ["SCHEDULE"], "data": {"type": "list", "element": {"type": "record",
 "items": [{"name": "A", "type": "real"}]}}},
{"name": "ROWS", "sections": ["SCHEDULE"], "data": {"type": "list", "element": {"type": "record", "termination": "eol",
 "items": [{"name": "A", "type": "string"}]}}},
{"name": "NESTED", "sections": ["SCHEDULE"], "data": {"type": "record", "items": [{"name": "A", "type": "string"},
 {"name": "L", "type": "list", "element": {"type": "string"}}]}},
{"name": "WOPR", "sections": ["SCHEDULE"], "data": {"type": "list", "element": {"type": "string"}}},
{"name": "NAMES", "sections": "all", "data": {"type": "list", "termination": "none", "size": "2",
 "element": {"type": "list", "element": {"type": "string"}}}},
{"name": "RPTSCHED", "sections": ["SCHEDULE"], "data": {"type": "map", "entries": ["FIP", "WELLS"]}},
{"name": "RPTOPEN", "sections": ["SCHEDULE"], "data": {"type": "map", "termination": "none", "entries": ["FIP"]}},
{"name": "ENDSCALE", "sections": "all", "data": {"type": "record", "items": [{"name": "A", "type": "string"}]}},
{"name": "EOS", "sections": "all", "data": {"type": "list", "termination": "none", "size": "1",
 "element": {"type": "record", "items": [{"name": "A", "type": "string"}]}}},
{"name": "ACTIONX", "sections": ["SCHEDULE"], "data": {"type": "list", "element": {"type": "record",
 "items": [{"name": "A", "type": "string"}]}}},
{"name": "PYINPUT", "sections": "all", "data": {"type": "rawText", "terminator": "PYEND"}},
{"name": "RAWOPEN", "sections": "all", "data": {"type": "rawText"}},
{"name": "BOTH", "sections": ["PROPS"]},
{"name": "BOTH", "sections": ["SCHEDULE"]},
{"name": "TRACER*", "sections": "all"}
])");
    return *table;
}

/// A section that the test chooses; follows section keywords if told of them. Counts how often it is asked.
class FixedSection : public Tarn::Fjel::Core::DeckManager::ISectionContextQuery
{
public:
    using SectionType = Tarn::Fjel::Core::Keywords::SectionType;

    explicit FixedSection(SectionType section = SectionType::None) : m_section(section) {}

    SectionType GetSection() const override
    {
        ++m_asked;
        return m_section;
    }
    void Set(SectionType section) { m_section = section; }
    int Asked() const { return m_asked; }

private:
    SectionType m_section;
    mutable int m_asked = 0;
};

} // namespace TestText
