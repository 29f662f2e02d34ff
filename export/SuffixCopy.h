#pragma once

#include <deque>
#include <functional>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "export/DeckFiles.h"
#include "export/StagedFiles.h"
#include <deckmanager/Context.h>

namespace Tarn::Fjel::Core::DeckManager {

class Keyword;
class KeywordFile;
class KeywordINCLUDE;
class SourceFile;
struct ExportOptions;
struct ExportReport;

/// Copies the files of a deck beside themselves, under changed names.
class SuffixCopy
{
public:
    struct Manner
    {
        bool whole = false;     ///< headers too, and INCLUDE keywords that bring nothing in
        bool allOrNone = false; ///< a file that can't be written is the end of it
    };

    /// `rename` gives the new name for the full name of a file, or for a name in an INCLUDE keyword.
    using Rename = std::function<std::string(const std::string& name)>;

    SuffixCopy(const KeywordFile& top, const Context& context, const ExportOptions& options, const Manner& manner,
               Rename rename, ExportReport* report);

    /// The full name of the new top file; empty when nothing was copied. Names of files that can't be written go into
    /// `failed`.
    std::string Run(KeywordFile& top, std::vector<std::string>& failed);

private:
    /// The new name of a file that can be written under it, which then waits for that.
    std::optional<std::string> Begin(KeywordFile& file);
    bool WriteFile(KeywordFile& file, const std::string& name);
    void WriteInclude(SourceFile& source, const KeywordINCLUDE& include);
    bool ClosesRing(const KeywordINCLUDE& include) const;
    bool Fail(const std::string& name);
    bool Fail(const std::string& name, const std::string& reason);

    const Context& m_context;
    const ExportOptions& m_options;
    Manner m_manner;
    Rename m_rename;
    ExportReport* m_report;
    DeckFiles m_deckFiles;
    StagedFiles m_staged;
    std::unordered_map<KeywordFile*, std::string> m_names; ///< empty for a file that can't be written
    std::deque<KeywordFile*> m_waiting;
    std::vector<std::string> m_failed;
};

} // namespace Tarn::Fjel::Core::DeckManager
