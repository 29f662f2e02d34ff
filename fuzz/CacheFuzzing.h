#pragma once

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <string_view>

#include <unistd.h>

#include "cache/CacheForm.h"
#include "files/KeywordFile.h"
#include <deckmanager/Environment.h>
#include <deckmanager/IKeyword.h>
#include <deckmanager/KeywordFileManager.h>
#include <tarn/service/BinaryForm.h>
#include <tarn/service/FileName.h>
#include <tarn/service/FileSystem.h>
#include <tarn/service/Log.h>

/// What the targets of the two forms of a cache share: a project of two small files whose cache file is the input.
namespace CacheFuzzing {

using namespace Tarn::Fjel::Core;
using namespace Tarn::Fjel::Core::DeckManager;

inline void Require(bool condition, int line = __builtin_LINE())
{
    if (condition) return;
    std::fprintf(stderr, "line %d: not so\n", line);
    std::abort();
}

class Project
{
public:
    explicit Project(CacheForm::Kind kind)
        : m_path(std::filesystem::temp_directory_path() / ("fuzz_cache_" + std::to_string(getpid())))
    {
        std::filesystem::remove_all(m_path);
        std::filesystem::create_directories(m_path);
        if (kind == CacheForm::Kind::Binary) Write("deck_cache_xml.lock", "");
        Write("TOP.DATA", "RUNSPEC\nOIL -- Generated\nINCLUDE\n'a.inc' /\nSKIP\nGAS\nENDSKIP\nPORO\n 1 /\nEDIT\n");
        Write("a.inc", "--@@@WATER\nGRID\n");
        Service::FileSystem::ErrorCode error;
        for (const char* leaf : {"TOP.DATA", "a.inc"}) {
            Service::FileSystem::Instance().SetTimeLastModified(Path(leaf), 1'577'836'800'000'000'000, error);
        }
        Service::Log::SetHandler([](std::string_view, int) {});
        Environment::Instance().EnableSKIPENDSKIP(true, Keywords::SimulatorType::S100);
        m_scanned = Load("");
    }
    ~Project() { std::filesystem::remove_all(m_path); }

    /// Loads the deck with these bytes as its cache, and once more with what that load has saved. Bytes that are no
    /// whole cache file give what a scan gives.
    void Try(std::string_view bytes, bool isWhole) const
    {
        Write("DeckCache.ptd", bytes);
        const std::string list = Load(m_path.string());
        Require(isWhole || list == m_scanned);
        Require(Load(m_path.string()) == list);
    }

private:
    std::string Path(const char* leaf) const { return (m_path / leaf).string(); }

    void Write(const char* leaf, std::string_view text) const
    {
        std::ofstream stream(m_path / leaf, std::ios::binary);
        stream.write(text.data(), static_cast<std::streamsize>(text.size()));
    }

    std::string Load(const std::string& project) const
    {
        KeywordFileManager manager(project);
        std::string list;
        for (const char* leaf : {"TOP.DATA", "a.inc"}) {
            const std::shared_ptr<KeywordFile> file = manager.GetKeywordFile(Service::FileName(Path(leaf)), true);
            long long end = 0;
            for (KeywordFileIterator place = file->Begin(); place != file->End(); ++place) {
                Require(place->GetPosition() >= end && place->GetSize() >= 0);
                end = place->GetPosition() + place->GetSize();
                const std::string text = *place->GetText();
                Require(place->GetSize() == 0 || text.find(place->GetName()) < 6);
                list += place->GetName() + "@" + std::to_string(place->GetPosition()) + "+" +
                        std::to_string(place->GetSize()) + (place->IsGenerated() ? " tagged" : "") +
                        (place->IsSuppressed() ? " suppressed\n" : "\n");
            }
            Require(end <= file->FileSize());
        }
        return list;
    }

    std::filesystem::path m_path;
    std::string m_scanned;
};

} // namespace CacheFuzzing
