#include "export/SuffixCopy.h"

#include <algorithm>
#include <utility>

#include "files/KeywordFile.h"
#include "files/KeywordFileWriter.h"
#include "files/KeywordINCLUDE.h"
#include "files/SourceFile.h"
#include "text/LineFileWriter.h"
#include "text/LineStringWriter.h"
#include <deckmanager/ExportOptions.h>
#include <deckmanager/ExportReport.h>
#include <tarn/keywords/DataAccessUtils.h>
#include <tarn/service/FileName.h>
#include <tarn/service/Log.h>

namespace Tarn::Fjel::Core::DeckManager {

using Service::FileName;
using Service::Log;

SuffixCopy::SuffixCopy(const KeywordFile& top, const Context& context, const ExportOptions& options,
                       const Manner& manner, Rename rename, ExportReport* report)
    : m_context(context), m_options(options), m_manner(manner), m_rename(std::move(rename)), m_report(report),
      m_deckFiles(top, context), m_staged(m_deckFiles)
{
}

std::string SuffixCopy::Run(KeywordFile& top, std::vector<std::string>& failed)
{
    const std::optional<std::string> name = Begin(top);
    bool written = name.has_value();
    while (written && !m_waiting.empty() && !(m_manner.allOrNone && !m_failed.empty())) {
        KeywordFile& next = *std::exchange(m_waiting.front(), nullptr);
        m_waiting.pop_front();
        written = WriteFile(next, m_names[&next]);
    }
    if (m_manner.allOrNone && !m_failed.empty()) written = false;
    if (written && !m_options.planOnly && !m_staged.PutInPlace()) written = Fail(*name);
    failed.insert(failed.end(), m_failed.begin(), m_failed.end());
    return written ? *name : std::string();
}

bool SuffixCopy::Fail(const std::string& name)
{
    const Log::Place place(name, -1);
    Log::SendLogMessage(m_staged.Failure(), Log::Error);
    m_failed.push_back(name);
    return false;
}

bool SuffixCopy::Fail(const std::string& name, const std::string& reason)
{
    m_staged.Fail(name, reason);
    return Fail(name);
}

std::optional<std::string> SuffixCopy::Begin(KeywordFile& file)
{
    const auto [found, isNew] = m_names.try_emplace(&file);
    if (isNew) {
        const std::string name = m_rename(file.GetFileName().GetFullName());
        const FileName target(name);
        if (m_options.planOnly ? m_staged.Accepts(target) : m_staged.Reserve(target)) {
            found->second = name;
            m_waiting.push_back(&file);
            if (m_report != nullptr) {
                m_report->files.push_back(
                    {ExportReport::Action::Written, file.GetFileName().GetFullName(), name, nullptr});
            }
        } else {
            Fail(name);
        }
    }
    if (found->second.empty()) return std::nullopt;
    return found->second;
}

bool SuffixCopy::WriteFile(KeywordFile& file, const std::string& name)
{
    LineFileWriter writer;
    if (!m_options.planOnly && !m_staged.Open(writer, FileName(name))) return Fail(name);
    LineFileWriter* const target = m_options.planOnly ? nullptr : &writer;
    KeywordFileWriter::WriteFile(
        file, target, m_manner.whole, m_context, [this](SourceFile& source, const Keyword& keyword) {
            if (const KeywordINCLUDE* include = KeywordINCLUDE::From(&keyword); include && !include->IsCommentedOut())
                WriteInclude(source, *include);
            else
                source.WriteKeyword(keyword, m_context, m_options.simulator);
        });
    return m_options.planOnly || m_staged.Close(writer) || Fail(name);
}

void SuffixCopy::WriteInclude(SourceFile& source, const KeywordINCLUDE& include)
{
    KeywordFile* file = include.IncludedFile();
    const bool bringsSomething = include.BringsSomething();
    if (!bringsSomething && !(m_manner.whole && ClosesRing(include))) {
        // No file is made for it; the copy looks for it where the deck does.
        if (file != nullptr || m_manner.whole)
            source.WriteKeyword(include, m_context, m_options.simulator);
        else
            source.LeaveOut(include, m_context);
        if (m_report != nullptr) {
            if (const std::optional<FileName> missing = include.MissingFile(m_context))
                m_report->files.push_back({ExportReport::Action::Missing, missing->GetFullName(), {}, &include});
        }
        return;
    }
    const auto name =
        Keywords::DataAccessUtils::GetINCLUDEFileName(const_cast<KeywordINCLUDE&>(include).GetData(m_context));
    std::optional<std::string> text = name ? include.TextWithName(m_rename(*name), m_context) : std::nullopt;
    if (!text)
        Fail(m_rename(include.NamedFile(m_context).GetFullName()), "its name cannot stand in a deck");
    else if (bringsSomething && !Begin(*file))
        text.reset();
    if (text) {
        source.WriteReference(include, *text, m_context);
        if (m_report != nullptr && m_options.planOnly) {
            LineStringWriter changed;
            include.WriteWithText(changed, *text, m_context);
            m_report->changes.push_back({&include, changed.TakeText()});
        }
    } else {
        source.LeaveOut(include, m_context);
    }
}

/// Under its old name it would close none in the copy, and bring the deck's own files in.
bool SuffixCopy::ClosesRing(const KeywordINCLUDE& include) const
{
    const std::string named = include.NamedFile(m_context).CanonicalName();
    return std::any_of(m_names.begin(), m_names.end(), [&](const auto& begun) {
        return !begun.second.empty() && begun.first->GetFileName().CanonicalName() == named;
    });
}

} // namespace Tarn::Fjel::Core::DeckManager
