#include <deckmanager/Exporter.h>

#include <functional>
#include <utility>

#include "export/DeckFiles.h"
#include "export/ExporterUtil.h"
#include "export/FlatFile.h"
#include "export/StagedFiles.h"
#include "export/SuffixCopy.h"
#include "files/ExportedFileMap.h"
#include "files/KeywordFile.h"
#include "keywords/ForceRewrite.h"
#include "text/LineFileWriter.h"
#include <deckmanager/Context.h>
#include <deckmanager/IDeckKeywords.h>
#include <deckmanager/KeywordFileIterator.h>
#include <deckmanager/KeywordIterator.h>
#include <tarn/service/FileName.h>
#include <tarn/service/Log.h>
#include <tarn/service/Strings.h>

namespace Tarn::Fjel::Core::DeckManager {

using Keywords::SimulatorType;
using Service::FileName;
using Service::Log;

namespace {

KeywordFile& TopFile(const IDeckKeywords& keywords)
{
    return *keywords.GetDataFile()->AsKeywordFile();
}

bool Refuse(const FileName& target, const StagedFiles& staged)
{
    const Log::Place place(target.GetFullName(), -1);
    Log::SendLogMessage(staged.Failure(), Log::Error);
    return false;
}

/// One file, made whole by `write`.
bool WriteFlat(const IDeckKeywords& keywords, const FileName& target, const FlatFile::Manner& manner,
               const ExportOptions& options, ExportReport* report, const std::function<bool(FlatFile&)>& write)
{
    const ForceRewrite::Scope rewrite(options.forceRewrite || ForceRewrite::IsOn());
    const Context context = ExporterUtil::ContextOf(keywords);
    const DeckFiles deckFiles(TopFile(keywords), context);
    StagedFiles staged(deckFiles);
    if (options.planOnly) {
        if (!staged.Accepts(target)) return Refuse(target, staged);
        FlatFile flat(keywords, nullptr, context, manner, report);
        return write(flat);
    }
    if (!staged.MakeDirectory(target.GetDirectory())) return Refuse(target, staged);
    LineFileWriter writer;
    if (!staged.Open(writer, target, true)) return Refuse(target, staged);
    FlatFile flat(keywords, &writer, context, manner, report);
    write(flat);
    return (staged.Close(writer) && staged.PutInPlace()) || Refuse(target, staged);
}

/// From `Begin` to `End`, into the folder of the top file.
bool WriteDeck(const IDeckKeywords& keywords, const std::string& name)
{
    FileName target(name);
    target = TopFile(keywords).GetFileName().GetDirectory();
    return WriteFlat(keywords, target, {}, {}, nullptr,
                     [&](FlatFile& flat) { return flat.Write(keywords.Begin(), keywords.End()); });
}

} // namespace

bool Exporter::ExportToSingleFile(const IDeckKeywords& keywords, const std::string& name)
{
    return !Service::AllBlanks(name) && WriteDeck(keywords, name);
}

bool Exporter::ExportToSingleFile(const IDeckKeywords& keywords, const KeywordFileIterator& begin,
                                  const KeywordFileIterator& end, const std::string& name, SimulatorType simulator)
{
    if (Service::AllBlanks(name)) return false;
    return WriteFlat(keywords, FileName(name), {simulator, false}, {}, nullptr,
                     [&](FlatFile& flat) { return flat.WriteRange(begin, end); });
}

bool Exporter::ExportToSingleFile(const IDeckKeywords& keywords, const KeywordIterator& begin,
                                  const KeywordIterator& end, const std::string& name, SimulatorType simulator)
{
    if (Service::AllBlanks(name)) return false;
    return WriteFlat(keywords, FileName(name), {simulator, false}, {}, nullptr,
                     [&](FlatFile& flat) { return flat.Write(begin, end); });
}

bool Exporter::ExportToSingleFile(const IDeckKeywords& keywords, const KeywordIterator& begin,
                                  const KeywordIterator& end, const std::string& name, const ExportOptions& options,
                                  ExportReport* report)
{
    if (Service::AllBlanks(name)) return false;
    FileName target(name);
    target.MakeComplete(Service::Directory::Current());
    const bool done = WriteFlat(keywords, target, {options.simulator, true}, options, report,
                                [&](FlatFile& flat) { return flat.Write(begin, end); });
    if (report != nullptr) {
        for (ExportReport::File& file : report->files) {
            if (file.action == ExportReport::Action::Written) file.to = target.GetFullName();
        }
    }
    return done;
}

std::string Exporter::ExportToSingleFileSuffix(const IDeckKeywords& keywords, const std::string& suffix)
{
    const std::string name = InsertSuffix(TopFile(keywords).GetFileName().GetFullName(), suffix);
    return !Service::AllBlanks(name) && WriteDeck(keywords, name) ? name : std::string();
}

std::string Exporter::CopyToSameDir(const IDeckKeywords& keywords, const std::string& suffix,
                                    std::vector<std::string>& failed)
{
    return CopyFile(keywords, TopFile(keywords), suffix, failed);
}

std::string Exporter::CopyFile(const IDeckKeywords& keywords, const IKeywordFile& file, const std::string& suffix,
                               std::vector<std::string>& failed)
{
    const Context context = ExporterUtil::ContextOf(keywords);
    const ExportOptions options;
    auto& top = const_cast<KeywordFile&>(static_cast<const KeywordFile&>(file));
    const auto rename = [&](const std::string& name) { return InsertSuffix(name, suffix); };
    return SuffixCopy(top, context, options, {}, rename, nullptr).Run(top, failed);
}

std::string Exporter::CopyToSameDir(const IDeckKeywords& keywords, const std::string& suffix,
                                    const ExportOptions& options, ExportReport* report)
{
    const ForceRewrite::Scope rewrite(options.forceRewrite || ForceRewrite::IsOn());
    const Context context = ExporterUtil::ContextOf(keywords);
    KeywordFile& top = TopFile(keywords);
    const auto rename = [&](const std::string& name) {
        const std::size_t separator = name.find_last_of("/\\");
        const std::size_t leaf = separator == std::string::npos ? 0 : separator + 1;
        return name.substr(0, leaf) + InsertSuffix(name.substr(leaf), suffix);
    };
    std::vector<std::string> failed;
    return SuffixCopy(top, context, options, {true, true}, rename, report).Run(top, failed);
}

bool Exporter::CopyToDirectory(const IDeckKeywords& keywords, const std::string& directory, const std::string& fileName,
                               const ExportOptions& options, ExportReport* report)
{
    KeywordFile& top = TopFile(keywords);
    const Service::Directory target(directory);
    if (!target.IsComplete() || target == top.GetFileName().GetDirectory()) return false;
    FileName name(target, Service::AllBlanks(fileName) ? top.GetFileName().GetFileName() : fileName);
    name = target;
    ExportedFileMap fileMap;
    return ExporterUtil::Export(top, name, ExporterUtil::ContextOf(keywords), fileMap, options, report);
}

std::string Exporter::InsertSuffix(const std::string& name, const std::string& suffix)
{
    const std::size_t dot = name.rfind('.');
    const std::size_t end = dot == std::string::npos ? name.size() : dot;
    return name.substr(0, end) + suffix + name.substr(end);
}

} // namespace Tarn::Fjel::Core::DeckManager
