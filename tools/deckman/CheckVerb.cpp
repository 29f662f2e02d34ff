#include <algorithm>
#include <exception>
#include <memory>
#include <new>
#include <set>
#include <string>
#include <string_view>
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

#include "CheckReport.h"
#include "DeckLines.h"
#include "DeckSession.h"
#include "DeckWalk.h"
#include "FileTree.h"
#include "Sections.h"
#include "Verbs.h"

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

/// One check of one deck.
class Check
{
public:
    Check(DeckSession& session, const Options& options, Output& out)
        : m_session(session), m_options(options), m_out(out), m_report(session, out, options.json)
    {
    }

    void Run();

private:
    void LoadFiles();
    void CheckSectionKeywords();
    void CheckSimulator();
    void GatherQuantities();
    bool IsQuantity(const Messages::Message& message) const;
    void ReadAllData();
    void ReadData(const DeckManager::IKeyword& keyword);
    void CheckInclude(const DeckManager::IKeyword& include);
    void Add(const DeckManager::IKeyword& keyword, int severity, std::string_view text);

    DeckSession& m_session;
    const Options& m_options;
    Output& m_out;
    CheckReport m_report;
    std::unique_ptr<DeckLines> m_lines;
    std::set<std::string, std::less<>> m_quantities; ///< which the user defined; in capitals
};

void Check::Run()
{
    LoadFiles();
    // Not the reading alone: each walk tries anew to open what could not be opened, and says so.
    const Messages::Diversion diversion(m_session.Log(), [this](const Messages::Message& message) {
        if (!message.file.empty() && m_lines->IsHidden(message.file, message.line)) return;
        if (IsQuantity(message)) return;
        m_report.Add({message.file, message.line, m_lines->KeywordAround(message.file, message.line), message.severity,
                      message.text});
    });
    if (m_lines->KeywordCount() == 0)
        m_report.Add({m_session.TopFile().GetFullName(), -1, {}, Log::Warning, "There are no keywords in this deck."});
    CheckSectionKeywords();
    if (m_options.simulator) CheckSimulator();
    GatherQuantities();
    ReadAllData();
    m_session.Progress().Finish();
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

    for (const Told& message : told) {
        if (!message.file.empty() && m_lines->IsHidden(message.file, message.line)) continue;
        std::string_view keyword = m_lines->KeywordOn(message.file, message.line);
        if (keyword.empty()) keyword = Messages::WordOf(message.text);
        if (keyword.empty()) keyword = m_lines->KeywordAround(message.file, message.line);
        m_report.Add({message.file, message.line, keyword, message.severity, message.text});
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

/// A rate or a limit may be the name of a quantity that UDQ defines, wherever in the deck it does.
void Check::GatherQuantities()
{
    DeckWalk walk(m_session, m_options.all);
    while (walk.Next()) {
        if (walk.Keyword().GetName() != "UDQ") continue;
        const Service::LogEnabler silence(false);
        std::unique_ptr<Keywords::IKeywordData> data;
        try {
            data = DeckManager::ReadKeywordData(m_session.Keywords(), walk.Keyword());
        } catch (const std::exception&) {
            continue; // told when all data are read
        }
        if (!data || data->GetType() != Keywords::MDType::List) continue;
        const auto& records = static_cast<const Keywords::IKeywordListData&>(*data);
        for (int i = 0; i < records.GetElementCount(); ++i) {
            const auto& record = static_cast<const Keywords::IKeywordRecordData&>(records.GetContainer(i));
            m_quantities.insert(Service::Uppercased(record.GetItem(1).GetString()));
        }
    }
}

/// The message is about such a name in the place of a number.
bool Check::IsQuantity(const Messages::Message& message) const
{
    constexpr std::string_view opening = ". Item value \"";
    constexpr std::string_view closing = "\" is not valid. Must be a real number.";
    if (m_quantities.empty() || !message.text.ends_with(closing)) return false;
    const std::size_t begin = message.text.find(opening);
    if (begin == std::string_view::npos) return false;
    std::string_view value = message.text.substr(begin + opening.size());
    value.remove_suffix(closing.size());
    return m_quantities.count(Service::Uppercased(value)) != 0;
}

void Check::ReadAllData()
{
    SkipTracker skips(m_options.simulator);
    const FileTree files(m_session);
    DeckWalk walk(m_session, m_options.all);
    while (!m_out.Closed() && walk.Next()) {
        const DeckManager::IKeyword& keyword = walk.Keyword();
        if (skips.Hides(keyword)) continue;
        ReadData(keyword);
        if (walk.Kind() == KeywordKind::Include) {
            CheckInclude(keyword);
        } else if (const auto grid = files.GridLinkOf(keyword); grid && !grid->exists && !keyword.IsSuppressed()) {
            Add(keyword, Log::Warning,
                fmt::format("The grid file {} of this {} does not exist.", grid->shown, keyword.GetName()));
        }
    }
    Service::MessageCapper::instance().flush();
}

void Check::ReadData(const DeckManager::IKeyword& keyword)
{
    if (keyword.GetSyntax()->GetMetaData() == nullptr) return;
    try {
        DeckManager::ReadKeywordData(m_session.Keywords(), keyword);
    } catch (const std::bad_alloc&) {
        Add(keyword, Log::Error, "There is not enough memory for this.");
    } catch (const std::exception& exception) {
        Add(keyword, Log::Error, exception.what());
    }
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
