#include "export/ExporterUtil.h"

#include <optional>
#include <utility>

#include "export/DeckFiles.h"
#include "export/StagedFiles.h"
#include "files/ExportedFileMap.h"
#include "files/FileReferencingKeyword.h"
#include "files/KeywordFile.h"
#include "files/KeywordFileWriter.h"
#include "files/SourceFile.h"
#include "keywords/ForceRewrite.h"
#include "text/LineFileWriter.h"
#include "text/LineStringWriter.h"
#include <deckmanager/Context.h>
#include <deckmanager/ExportReport.h>
#include <deckmanager/IDeckKeywords.h>
#include <tarn/keywords/IKeywordSyntax.h>
#include <tarn/service/FileName.h>
#include <tarn/service/FileStatus.h>
#include <tarn/service/Log.h>

namespace Tarn::Fjel::Core::DeckManager {

using Keywords::SimulatorType;
using Service::FileName;
using Service::Log;

namespace {

void Tell(const FileName& file, const std::string& text)
{
    const Log::Place place(file.GetFullName(), -1);
    Log::SendLogMessage(text, Log::Error);
}

std::string TextOf(const Keyword& keyword, const std::string& dataText, const Context& context)
{
    LineStringWriter writer;
    keyword.WriteWithText(writer, dataText, context);
    return writer.TakeText();
}

/// One run of `ExporterUtil::Export`.
class TreeExport
{
public:
    TreeExport(const DeckFiles& deckFiles, const Context& context, ExportedFileMap& fileMap,
               const ExportOptions& options, ExportReport* report)
        : m_staged(deckFiles), m_context(context), m_fileMap(fileMap), m_options(options), m_report(report)
    {
    }

    bool Run(KeywordFile& file, const FileName& target)
    {
        m_directory = target.GetDirectory();
        // Whether the directory is there shows when the file is opened.
        if (!m_options.planOnly && !m_staged.MakeDirectory(m_directory)) m_madeNoDirectory = m_staged.Failure();
        if (!WriteKeywordFile(file, file.GetFileName(), target, true)) return false;
        while (const std::optional<ExportedFileMap::Waiting> next = m_fileMap.TakeNext()) {
            const bool done = next->file != nullptr ? WriteKeywordFile(*next->file, next->from, next->to, false)
                                                    : CopyFile(next->from, next->to);
            if (!done) return false;
        }
        if (m_report != nullptr) {
            for (const ExportedFileMap::Missing& missing : m_fileMap.MissingFiles()) {
                m_report->files.push_back(
                    {ExportReport::Action::Missing, missing.name.GetFullName(), {}, missing.keyword});
            }
        }
        if (m_options.planOnly || m_staged.PutInPlace()) return true;
        Tell(target, m_staged.Failure());
        return false;
    }

private:
    bool WriteKeywordFile(KeywordFile& file, const FileName& from, const FileName& to, bool isFirst)
    {
        if (m_options.planOnly) {
            if (!m_staged.Accepts(to)) return Fail(to, m_staged.Failure());
            if (isFirst) m_fileMap.Add(from, to);
            Note(ExportReport::Action::Written, from, to);
            return ExporterUtil::WriteForExport(file, nullptr, {m_directory, m_fileMap}, m_context, m_options.simulator,
                                                m_report)
                .ok;
        }
        LineFileWriter writer;
        if (!m_staged.Open(writer, to)) {
            if (m_staged.IsRefusal()) return Fail(to, m_staged.Failure());
            Tell(to, "ExporterUtil::Export(): Fails to open output file:" + to.GetFullName());
            if (m_report != nullptr)
                m_report->failure = m_madeNoDirectory.empty() ? m_staged.Failure() : m_madeNoDirectory;
            return false;
        }
        if (isFirst) m_fileMap.Add(from, to);
        Note(ExportReport::Action::Written, from, to);
        const FileWriteResult result =
            ExporterUtil::WriteForExport(file, &writer, {m_directory, m_fileMap}, m_context, m_options.simulator);
        if (!m_staged.Close(writer)) return Fail(to, m_staged.Failure());
        return result.ok;
    }

    bool CopyFile(const FileName& from, const FileName& to)
    {
        if (to.FileExists()) {
            Note(ExportReport::Action::Kept, from, to);
            return true;
        }
        Note(ExportReport::Action::Written, from, to);
        return m_options.planOnly || m_staged.Copy(from, to) || Fail(to, m_staged.Failure());
    }

    void Note(ExportReport::Action action, const FileName& from, const FileName& to)
    {
        if (m_report != nullptr) m_report->files.push_back({action, from.GetFullName(), to.GetFullName(), nullptr});
    }

    static bool Fail(const FileName& file, const std::string& text)
    {
        Tell(file, text);
        return false;
    }

    StagedFiles m_staged;
    const Context& m_context;
    ExportedFileMap& m_fileMap;
    const ExportOptions& m_options;
    ExportReport* m_report;
    Service::Directory m_directory;
    std::string m_madeNoDirectory;
};

} // namespace

bool ExporterUtil::Export(KeywordFile& file, const FileName& target, const Context& context, ExportedFileMap& fileMap,
                          SimulatorType simulator)
{
    ExportOptions options;
    options.simulator = simulator;
    return Export(file, target, context, fileMap, options, nullptr);
}

bool ExporterUtil::Export(KeywordFile& file, const FileName& target, const Context& context, ExportedFileMap& fileMap,
                          const ExportOptions& options, ExportReport* report)
{
    const ForceRewrite::Scope rewrite(options.forceRewrite || ForceRewrite::IsOn());
    const DeckFiles deckFiles(file, context);
    return TreeExport(deckFiles, context, fileMap, options, report).Run(file, target);
}

FileWriteResult ExporterUtil::WriteForExport(KeywordFile& file, LineFileWriter* writer, const ExportTarget& target,
                                             const Context& context, SimulatorType simulator, ExportReport* report)
{
    const auto writeKeyword = [&](SourceFile& source, const Keyword& keyword) {
        const Keywords::IKeywordSyntax& syntax = *keyword.GetSyntax();
        if (simulator != SimulatorType::Any && !syntax.IsNameValidForSimulator(simulator, keyword.GetName())) {
            source.LeaveOut(keyword, context);
            if (report != nullptr) report->changes.push_back({&keyword, {}});
            return;
        }
        const FileReferencingKeyword* reference = FileReferencingKeyword::From(&keyword);
        std::optional<std::string> name;
        if (reference != nullptr && !keyword.IsCommentedOut())
            name = reference->NameInCopy(target.directory, context, target.fileMap);
        const std::optional<std::string> text = name ? reference->TextWithName(*name, context) : std::nullopt;
        if (!text) {
            source.WriteKeyword(keyword, context, simulator);
            return;
        }
        source.WriteReference(*reference, *text, context);
        if (report != nullptr) report->changes.push_back({&keyword, TextOf(keyword, *text, context)});
    };
    return KeywordFileWriter::WriteFile(file, writer, true, context, writeKeyword);
}

Context ExporterUtil::ContextOf(const IDeckKeywords& keywords)
{
    // An alias is known when the file that holds it is loaded.
    keywords.GetFiles();
    Context context = keywords.GetDataFile()->AsKeywordFile()->RootContext();
    context.Bind(&keywords);
    return context;
}

} // namespace Tarn::Fjel::Core::DeckManager
