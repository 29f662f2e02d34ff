#pragma once

#include <algorithm>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <fmt/format.h>
#include <gtest/gtest.h>

#include "keywords/DeserializeState.h"
#include "tests/support/LogRecorder.h"
#include "tests/support/Thrown.h"
#include "text/LineStringReader.h"
#include <deckmanager/Context.h>
#include <deckmanager/DeckManagerException.h>
#include <deckmanager/Environment.h>
#include <deckmanager/IKeyword.h>
#include <deckmanager/KeywordVariables.h>
#include <tarn/keywords/IKeywordData.h>
#include <tarn/keywords/IKeywordListData.h>
#include <tarn/keywords/IKeywordListDataVariables.h>
#include <tarn/keywords/IKeywordMapData.h>
#include <tarn/keywords/IKeywordOptionMD.h>
#include <tarn/keywords/IKeywordRawTextData.h>
#include <tarn/keywords/IKeywordRecordData.h>
#include <tarn/keywords/IKeywordSyntax.h>
#include <tarn/keywords/IKeywordSyntaxTable.h>
#include <tarn/keywords/KeywordDataFactory.h>
#include <tarn/keywords/KeywordSyntaxTable.h>
#include <tarn/keywords/UnsetValue.h>
#include <tarn/service/MessageCapper.h>

namespace DataReading {

namespace Core = Tarn::Fjel::Core;
namespace DeckManager = Core::DeckManager;
using TestSupport::Thrown;

/// A keyword that stands in no file.
class LooseKeyword : public DeckManager::IKeyword
{
public:
    explicit LooseKeyword(const Core::Keywords::IKeywordSyntax* syntax, std::string name = {}, int line = -1)
        : m_syntax(syntax), m_name(name.empty() ? syntax->GetName() : std::move(name)), m_line(line)
    {
    }

    const std::string& GetName() const override { return m_name; }
    const Core::Keywords::IKeywordSyntax* GetSyntax() const override { return m_syntax; }
    std::string GetComment() const override { return {}; }
    bool IsGenerated() const override { return false; }
    bool IsInGeneratedFile() const override { return false; }
    DeckManager::IKeywordFile* GetFile() const override { return nullptr; }
    DeckManager::KeywordFile* GetDiskFile() const override { return nullptr; }
    int GetLine() const override { return m_line; }
    long long GetPosition() const override { return 0; }
    bool IsCommentedOut() const override { return false; }
    bool IsSuppressed() const override { return false; }
    std::shared_ptr<std::string> GetText() const override { return std::make_shared<std::string>(); }
    long long GetSize() const override { return 0; }

private:
    const Core::Keywords::IKeywordSyntax* m_syntax;
    std::string m_name;
    int m_line;
};

/// A table of its own is in force, made from catalogue text, until the end of the scope; then all settings are reset.
class TableInForce
{
public:
    explicit TableInForce(std::string_view json);
    ~TableInForce();

    const Core::Keywords::IKeywordSyntax* Syntax(std::string_view name) const;

private:
    std::unique_ptr<Core::Keywords::KeywordSyntaxTable> m_table;
};

/// What came of a read.
struct Outcome
{
    std::string tree;
    std::vector<std::string> messages; ///< "2 text" for a warning, "3 text" for an error
    std::unique_ptr<Core::Keywords::IKeywordData> data;
    DeckManager::KeywordVariables variables;
    long long takenEnd = -1;
    bool isComplete = true;
};

/// Reads data lines, as a keyword's held text.
Outcome ReadText(const DeckManager::IKeyword& keyword, const std::string& text, bool withVariables = false,
                 const DeckManager::Context& context = DeckManager::Context());

/// Reads the extent of a keyword in the text of a file.
Outcome ReadExtent(const DeckManager::IKeyword& keyword, const std::string& file, long long start, long long length);

/// Data in a line: records in {}, lists in [], "-" for unset, "1*" for a defaulted element, maps as NAME=value of what
/// is set, raw text in quotes with "|" for its line ends.
std::string Describe(const Core::Keywords::IKeywordData& data);

/// A table of one keyword X, valid everywhere, whose data have the shape given as catalogue JSON.
std::string TableOf(std::string_view shape);
/// Reads a text by such a table.
Outcome ReadShape(std::string_view shape, const std::string& text, bool withVariables = false);

/// A text, the data that come of it, and what is said.
struct ReadCase
{
    const char* text;
    const char* tree;
    std::vector<std::string> messages = {};
};
void ExpectReads(const DeckManager::IKeyword& keyword, const std::vector<ReadCase>& cases);
void ExpectReads(std::string_view shape, const std::vector<ReadCase>& cases);

} // namespace DataReading
