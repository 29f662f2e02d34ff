#pragma once

#include "files/FileWriteResult.h"
#include <deckmanager/ExportOptions.h>
#include <tarn/keywords/SimulatorType.h>
#include <tarn/service/Directory.h>

namespace Tarn::Fjel::Core::Service {
class FileName;
}

namespace Tarn::Fjel::Core::DeckManager {

class Context;
class ExportedFileMap;
class IDeckKeywords;
class KeywordFile;
class LineFileWriter;
class StagedFiles;
struct ExportReport;

/// What an export hands down to each keyword.
struct ExportTarget
{
    Service::Directory directory;
    ExportedFileMap& fileMap;
};

/// Writes the text of keyword files.
class ExporterUtil
{
public:
    ExporterUtil() = delete;

    /// Writes a file, and each that it includes, into the folder of `target`, and notes in `fileMap` which file became
    /// which. False, told at severity 3, when one of them can't be written; then none is.
    static bool Export(KeywordFile& file, const Service::FileName& target, const Context& context,
                       ExportedFileMap& fileMap, Keywords::SimulatorType simulator);
    /// The same with a report, which may be null.
    static bool Export(KeywordFile& file, const Service::FileName& target, const Context& context,
                       ExportedFileMap& fileMap, const ExportOptions& options, ExportReport* report);

    /// Writes one file for a copy of its deck: tag, header, keywords, tail. Files that come along wait in the map of
    /// `target`. `writer` null: only that.
    static FileWriteResult WriteForExport(KeywordFile& file, LineFileWriter* writer, const ExportTarget& target,
                                          const Context& context, Keywords::SimulatorType simulator,
                                          ExportReport* report = nullptr);

    /// The context for the deck's data: it knows the path aliases.
    static Context ContextOf(const IDeckKeywords& keywords);
};

} // namespace Tarn::Fjel::Core::DeckManager
