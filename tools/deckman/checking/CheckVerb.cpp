#include <algorithm>
#include <exception>
#include <memory>
#include <new>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

#include <deckmanager/DeckInconsistencyInfo.h>
#include <deckmanager/IKeyword.h>
#include <deckmanager/IKeywordFile.h>
#include <deckmanager/KeywordText.h>
#include <deckmanager/KeywordVariables.h>
#include <deckmanager/ReadKeywordData.h>
#include <fmt/format.h>
#include <tarn/keywords/DataAccessUtils.h>
#include <tarn/keywords/IKeywordData.h>
#include <tarn/keywords/IKeywordListData.h>
#include <tarn/keywords/IKeywordRecordData.h>
#include <tarn/keywords/IKeywordSyntax.h>
#include <tarn/keywords/KeywordKind.h>
#include <tarn/service/FileStatus.h>
#include <tarn/service/Log.h>
#include <tarn/service/LogEnabler.h>
#include <tarn/service/MessageCapper.h>
#include <tarn/service/Strings.h>

#include "checking/CheckReport.h"
#include "checking/GridSizes.h"
#include "checking/TextCheck.h"
#include "command/Verbs.h"
#include "output/Nearest.h"
#include "session/DeckLines.h"
#include "session/DeckSession.h"
#include "session/DeckWalk.h"
#include "session/FileTree.h"
#include "session/Schedule.h"
#include "session/Sections.h"

namespace Deckman {

namespace {

using Service::Log;
namespace Keywords = Tarn::Fjel::Core::Keywords;
using Keywords::KeywordKind;

const std::string& FileNameOf(const DeckManager::IKeyword& keyword)
{
    return keyword.GetFile()->GetFileName().GetFullName();
}

/// What to tell with a name that leads to no file where quotes are the reason: without single ones it ends at a blank
/// or a slash.
std::string_view QuotesHint(const DeckManager::IKeyword& include)
{
    const DeckManager::KeywordText text(include);
    std::string_view name = Service::Trimmed(text.Data());
    name = name.substr(0, name.find('\n'));
    const std::size_t slash = name.find('/');
    const bool goesOn = slash != std::string_view::npos && slash + 1 < name.size() && Service::IsAlnum(name[slash + 1]);
    return name.starts_with('"') || (!name.starts_with('\'') && goesOn) ? " Its name needs single quotes." : "";
}

/// The keyword opens a block of keywords up to ENDACTIO.
bool IsAction(const Keywords::IKeywordSyntax& syntax)
{
    const Keywords::IKeywordSyntax* end = syntax.IsScopeStart() ? syntax.GetScopeEndSyntax() : nullptr;
    return end != nullptr && end->GetName() == "ENDACTIO";
}

/// The nearest names are looked for so often and no more: among many words that takes a while.
constexpr int mostHints = 1000;

/// One check of one deck.
class Check
{
public:
    Check(DeckSession& session, const Options& options, Output& out)
        : m_session(session), m_options(options), m_out(out), m_report(session, out, options.json), m_text(session)
    {
    }

    void Run();

private:
    void LoadFiles();
    void CheckSectionKeywords();
    void CheckSimulator();
    void CheckPairs();
    void TellSwallowedEnd();
    void CheckTimes();
    void Survey();
    void GatherQuantities(const DeckManager::IKeyword& udq);
    bool IsQuantity(const Messages::Message& message) const;
    bool AddHints(const Messages::Message& message, std::string& text);
    void ReadAllData();
    void ReadData(const DeckManager::IKeyword& keyword, SectionType section);
    void CheckSize(const DeckManager::IKeyword& keyword, const Keywords::IKeywordData& data);
    void CheckImport(const DeckManager::IKeyword& import, const Keywords::IKeywordData& data);
    void CheckInclude(const DeckManager::IKeyword& include);
    void Add(const DeckManager::IKeyword& keyword, int severity, std::string_view text);

    DeckSession& m_session;
    const Options& m_options;
    Output& m_out;
    CheckReport m_report;
    std::unique_ptr<DeckLines> m_lines;
    std::set<std::string, std::less<>> m_quantities; ///< which the user defined; in capitals
    TextCheck m_text;
    GridSizes m_grid;
    /// Keywords of which something was told, or whose data hold references: what follows from them says nothing new.
    std::unordered_set<const DeckManager::IKeyword*> m_doubtful;
    std::string_view m_mutedFile; ///< that of the keyword that is read
    int m_mutedFrom = 0;          ///< from this line on its messages are of another's data; 0: nowhere
    int m_toldOfKeyword = 0;      ///< messages of its reading
    int m_quantityHints = 0;      ///< how many messages have named the nearest quantities
    int m_hintedRow = 0;          ///< the first line of the row of which the last hint was
};

void Check::Run()
{
    LoadFiles();
    // Not the reading alone: each walk tries anew to open what could not be opened, and says so.
    const Messages::Diversion diversion(m_session.Log(), [this](const Messages::Message& message) {
        if (!message.file.empty() && m_lines->IsHidden(message.file, message.line)) return;
        if (m_mutedFrom > 0 && message.line >= m_mutedFrom && message.file == m_mutedFile) return;
        if (IsQuantity(message)) return;
        ++m_toldOfKeyword;
        std::string text(message.text);
        if (!AddHints(message, text)) return;
        m_report.Add(
            {message.file, message.line, m_lines->KeywordAround(message.file, message.line), message.severity, text});
    });
    if (m_lines->KeywordCount() == 0)
        m_report.Add({m_session.TopFile().GetFullName(), -1, {}, Log::Warning, "There are no keywords in this deck."});
    CheckSectionKeywords();
    if (m_options.simulator) CheckSimulator();
    CheckPairs();
    Survey();
    ReadAllData();
    CheckTimes();
    m_report.Finish(m_lines->KeywordCount(), m_lines->FileCount());
    m_session.Log().Count(m_report.Warnings(), m_report.Errors());
}

/// What the scan says waits until it is known which lines of the files belong to the deck.
void Check::LoadFiles()
{
    struct Told
    {
        std::string file;
        int line;
        int severity;
        std::string text;
    };
    std::vector<Told> told;
    const Messages::Diversion diversion(m_session.Log(), [&told](const Messages::Message& message) {
        told.push_back({std::string(message.file), message.line, message.severity, std::string(message.text)});
    });
    m_lines = std::make_unique<DeckLines>(m_session, m_options.simulator, m_options.all);
    m_lines->NameFiles([this](const std::string& name) { m_report.AddFile(name); });
    // Binds the sizes of the deck to its own keywords once, and not for each keyword anew.
    m_session.Keywords().GetFiles();

    std::unordered_map<std::string, std::string> hints;
    for (const Told& message : told) {
        if (!message.file.empty() && m_lines->IsHidden(message.file, message.line)) continue;
        std::string_view keyword = m_lines->KeywordOn(message.file, message.line);
        if (keyword.empty()) keyword = Messages::WordOf(message.text);
        if (keyword.empty()) keyword = m_lines->KeywordAround(message.file, message.line);
        std::string text = message.text;
        // A table of numbers in the wrong place may be thousands of words, of which each comes often.
        if (text.ends_with(" is not recognized.")) {
            const auto [hint, isNew] = hints.try_emplace(std::string(Messages::WordOf(text)));
            if (isNew && hints.size() < static_cast<std::size_t>(mostHints))
                hint->second = NearestKeywordHint(hint->first);
            text += hint->second;
        }
        m_report.Add({message.file, message.line, keyword, message.severity, text});
    }
}

void Check::CheckSectionKeywords()
{
    std::string message;
    const bool recurring = !m_session.Keywords().CheckSections(message);
    bool told = false;
    SectionType last = SectionType::None;
    std::vector<SectionType> seen;
    DeckWalk walk(m_session, m_options.all);
    while (walk.Next()) {
        if (walk.Kind() != KeywordKind::Section) continue;
        const SectionType section = walk.Section();
        if (std::find(seen.begin(), seen.end(), section) != seen.end()) {
            // One message names them all.
            if (recurring && !std::exchange(told, true)) Add(walk.Keyword(), Log::Warning, message);
        } else if (last != SectionType::None && section < last) {
            Add(walk.Keyword(), Log::Warning,
                fmt::format("The section {} stands behind {}.", NameOf(section), NameOf(last)));
        }
        seen.push_back(section);
        if (last == SectionType::None || section > last) last = section;
    }
}

void Check::CheckSimulator()
{
    DeckManager::DeckInconsistencyInfo unknown;
    m_session.Deck().IsValidForSimulator(*m_options.simulator, &unknown, SectionType::None);
    const int number = *m_options.simulator == Tarn::Fjel::Core::Keywords::SimulatorType::S100 ? 100 : 300;
    for (const DeckManager::IKeyword* keyword : unknown.Keywords())
        Add(*keyword, Log::Warning,
            fmt::format("Keyword {} is not known to the simulator {}.", keyword->GetName(), number));
}

/// What opens a region or a block and what closes it come in pairs. An ENDSKIP that is read as data closes nothing, and
/// what is skipped is not looked at: a deck may lose its rest that way without another word.
void Check::CheckPairs()
{
    std::vector<const DeckManager::IKeyword*> skips;
    const DeckManager::IKeyword* action = nullptr;
    const auto noEnd = [this](const DeckManager::IKeyword* head, std::string_view end) {
        if (head != nullptr) Add(*head, Log::Error, fmt::format("This {} has no {}.", head->GetName(), end));
    };
    SkipTracker hidden(m_options.simulator);
    DeckWalk walk(m_session, m_options.all);
    while (walk.Next()) {
        const DeckManager::IKeyword& keyword = walk.Keyword();
        const std::string& name = keyword.GetName();
        const bool isHidden = hidden.Hides(keyword);
        if (name == "SKIP" || name == "SKIP100" || name == "SKIP300") {
            skips.push_back(&keyword);
        } else if (walk.Kind() == KeywordKind::EndSkip) {
            if (skips.empty())
                Add(keyword, Log::Warning, fmt::format("This {} has no SKIP ahead of it.", name));
            else
                skips.pop_back();
        } else if (isHidden || keyword.IsSuppressed()) {
            continue;
        } else if (name == "ENDACTIO") {
            if (action == nullptr) Add(keyword, Log::Warning, "This ENDACTIO has no action ahead of it.");
            action = nullptr;
        } else if (IsAction(*keyword.GetSyntax())) {
            noEnd(action, "ENDACTIO");
            action = &keyword;
        }
    }
    noEnd(action, "ENDACTIO");
    if (!skips.empty()) {
        noEnd(skips.back(), "ENDSKIP");
        TellSwallowedEnd();
    }
}

/// An ENDSKIP that stands in the deck, and is data of a keyword of its region.
void Check::TellSwallowedEnd()
{
    SkipTracker hidden(m_options.simulator);
    DeckWalk walk(m_session, m_options.all);
    while (walk.Next()) {
        if (!hidden.Hides(walk.Keyword())) continue;
        m_text.FindSwallowed(walk.Keyword(), walk.Section(), [&](const TextCheck::Fault& fault) {
            m_report.Add(
                {FileNameOf(walk.Keyword()), fault.line, walk.Keyword().GetName(), fault.severity, fault.text});
        });
    }
}

/// The faults of the deck's times, where they don't follow from what was told already.
void Check::CheckTimes()
{
    const Service::LogEnabler silence(false); // what reading has to say was told
    const Schedule schedule(m_session, m_options.all);
    for (const Schedule::Fault& fault : schedule.Faults()) {
        if (fault.keyword == nullptr || m_doubtful.count(fault.keyword) != 0) continue;
        m_report.Add({FileNameOf(*fault.keyword), m_text.LineOfRecord(*fault.keyword, fault.element),
                      fault.keyword->GetName(), fault.isError ? Log::Error : Log::Warning, fault.text});
    }
}

void Check::Survey()
{
    DeckWalk walk(m_session, m_options.all);
    while (walk.Next()) {
        if (walk.Section() == SectionType::RUNSPEC) m_text.NotePresent(walk.Keyword().GetName());
        if (walk.Keyword().GetName() == "UDQ")
            GatherQuantities(walk.Keyword());
        else
            m_grid.Survey(m_session, walk.Keyword());
    }
}

/// A rate or a limit may be the name of a quantity that UDQ defines, wherever in the deck it does.
void Check::GatherQuantities(const DeckManager::IKeyword& udq)
{
    const Service::LogEnabler silence(false);
    std::unique_ptr<Keywords::IKeywordData> data;
    try {
        data = DeckManager::ReadKeywordData(m_session.Keywords(), udq);
    } catch (const std::exception&) {
        return; // told when all data are read
    }
    if (!data || data->GetType() != Keywords::MDType::List) return;
    const auto& records = static_cast<const Keywords::IKeywordListData&>(*data);
    for (int i = 0; i < records.GetElementCount(); ++i) {
        const auto& record = static_cast<const Keywords::IKeywordRecordData&>(records.GetContainer(i));
        m_quantities.insert(Service::Uppercased(record.GetItem(1).GetString()));
    }
}

/// The message is about the name of a quantity in the place of a number.
bool Check::IsQuantity(const Messages::Message& message) const
{
    const Messages::BadValue value = Messages::BadValueOf(message.text);
    return value.IsForNumber() && m_quantities.count(Service::Uppercased(value.word)) != 0;
}

/// Says what would be right where that can be told from what stands around. False for a message that only follows from
/// the one before.
bool Check::AddHints(const Messages::Message& message, std::string& text)
{
    // A row that goes on from the line before has too many words because that line has no "/".
    if (message.file == m_mutedFile) {
        if (const auto row = m_text.RowAhead(message.line)) {
            if (m_hintedRow == row->first) return false;
            m_hintedRow = row->first;
            text +=
                fmt::format("{} Is a \"/\" missing at the end of line {}?", text.ends_with('.') ? "" : ".", row->last);
            return true;
        }
    }
    const Messages::BadValue value = Messages::BadValueOf(message.text);
    if (!value.word.empty() && message.file == m_mutedFile) {
        const std::string_view item = m_text.ItemAt(message.line, value.word, value.wanted);
        if (!item.empty()) text += fmt::format(" It stands for {}.", item);
    }
    if (const std::string word = Service::Uppercased(value.word); value.IsForNumber() && Messages::IsQuantityName(word))
    {
        text += fmt::format(" No UDQ defines {}.", word);
        if (m_quantityHints++ < mostHints) {
            const std::vector<std::string_view> known(m_quantities.begin(), m_quantities.end());
            text += NearestHint(word, known);
        }
    }
    return true;
}

void Check::ReadAllData()
{
    SkipTracker skips(m_options.simulator);
    const FileTree files(m_session);
    DeckWalk walk(m_session, m_options.all);
    while (!m_out.Closed() && walk.Next()) {
        const DeckManager::IKeyword& keyword = walk.Keyword();
        if (skips.Hides(keyword)) continue;
        ReadData(keyword, walk.Section());
        if (walk.Kind() == KeywordKind::Include) {
            CheckInclude(keyword);
        } else if (const auto grid = files.GridLinkOf(keyword); grid && !grid->exists && !keyword.IsSuppressed()) {
            Add(keyword, Log::Warning,
                fmt::format("The grid file {} of this {} does not exist.", grid->shown, keyword.GetName()));
        }
    }
    Service::MessageCapper::instance().flush();
}

void Check::ReadData(const DeckManager::IKeyword& keyword, SectionType section)
{
    const auto take = [&](const TextCheck::Fault& fault) {
        m_doubtful.insert(&keyword);
        m_report.Add({FileNameOf(keyword), fault.line, keyword.GetName(), fault.severity, fault.text});
    };
    std::unique_ptr<Keywords::IKeywordData> data;
    if (keyword.GetSyntax()->GetMetaData() != nullptr) {
        m_mutedFile = FileNameOf(keyword);
        m_mutedFrom = m_text.FindSwallowed(keyword, section, take);
        m_hintedRow = 0;
        m_toldOfKeyword = 0;
        DeckManager::KeywordVariables variables;
        try {
            data = DeckManager::ReadKeywordData(m_session.Keywords(), keyword, &variables);
        } catch (const std::bad_alloc&) {
            Add(keyword, Log::Error, "There is not enough memory for this.");
        } catch (const std::exception& exception) {
            Add(keyword, Log::Error, exception.what());
        }
        if (!data || m_toldOfKeyword > 0 || m_mutedFrom > 0 || variables.HasVariables()) {
            m_doubtful.insert(&keyword);
        } else if (!keyword.IsSuppressed()) {
            m_text.Look(*data, take);
            CheckSize(keyword, *data);
            if (keyword.GetName() == "IMPORT") CheckImport(keyword, *data);
        }
        m_mutedFrom = 0;
        m_mutedFile = {};
    }
    if (!keyword.IsSuppressed()) m_grid.Pass(keyword, section, data.get());
}

/// An array that the catalogue gives a size, or one for each region.
void Check::CheckSize(const DeckManager::IKeyword& keyword, const Keywords::IKeywordData& data)
{
    if (data.GetType() != Keywords::MDType::List) return;
    const auto& list = static_cast<const Keywords::IKeywordListData&>(data);
    if (list.GetElementType() == Keywords::MDType::List) {
        for (int i = 0; i < list.GetElementCount(); ++i) {
            const auto& values = static_cast<const Keywords::IKeywordListData&>(list.GetContainer(i));
            if (values.GetElementCount() > 0) CheckSize(keyword, values);
        }
        return;
    }
    const std::string* expression = list.GetListMD()->GetSizeExpression();
    if (expression == nullptr || list.GetListMD()->GetTermination() != Keywords::Termination::Slash) return;
    const int count = list.GetElementCount();
    std::string complaint = m_grid.Complaint(*expression, count);
    if (const auto size = expression->starts_with("grid:") ? std::nullopt : m_text.SizeOf(*expression);
        size && *size > 0 && *size != count)
        complaint = fmt::format("{} asks for {}", TextCheck::SourceOf(*expression), *size);
    if (!complaint.empty()) {
        Add(keyword, Log::Error,
            fmt::format("{} has {} value{}, and {}.", keyword.GetName(), count, count == 1 ? "" : "s", complaint));
    }
}

void Check::CheckImport(const DeckManager::IKeyword& import, const Keywords::IKeywordData& data)
{
    if (data.GetType() != Keywords::MDType::Record) return;
    const auto& record = static_cast<const Keywords::IKeywordRecordData&>(data);
    const std::string name(record.GetItem(0).GetString());
    try {
        Service::FileName file(name);
        if (file.IsSet() && file.MakeComplete(m_session.TopFile().GetDirectory()) && file.FileExists()) return;
    } catch (const std::exception&) {
        // A text that can't be a path names no file.
    }
    Add(import, Log::Warning, fmt::format("The file {} of this IMPORT does not exist.", name));
}

/// What the load takes in silence: it goes on without the file.
void Check::CheckInclude(const DeckManager::IKeyword& include)
{
    if (const DeckManager::IKeywordFile* file = m_session.Keywords().GetIncludedFile(&include)) {
        const Service::FileStatus status = Service::FileStatus::Of(file->GetFileName());
        if (!status.Exists() && !status.isUnknown) {
            Add(include, Log::Warning,
                fmt::format("The file {} of this INCLUDE does not exist.{}", m_session.Shown(file->GetFileName()),
                            QuotesHint(include)));
        }
        return;
    }
    DeckManager::KeywordVariables variables;
    const auto data = DeckManager::ReadKeywordData(m_session.Keywords(), include, &variables);
    if (variables.HasVariables()) {
        Add(include, Log::Warning,
            fmt::format("The INCLUDE path \"{}\" holds a name that nothing gives a value.{}",
                        WrittenIncludeName(include), QuotesHint(include)));
    } else if (!Tarn::Fjel::Core::Keywords::DataAccessUtils::GetINCLUDEFileName(data.get())) {
        Add(include, Log::Error, "This INCLUDE names no file.");
    }
}

void Check::Add(const DeckManager::IKeyword& keyword, int severity, std::string_view text)
{
    m_report.Add({FileNameOf(keyword), keyword.GetLine(), keyword.GetName(), severity, text});
}

} // namespace

ExitStatus RunCheck(DeckSession& session, const Options& options, Output& out)
{
    Check(session, options, out).Run();
    return Done;
}

} // namespace Deckman
