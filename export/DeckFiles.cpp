#include "export/DeckFiles.h"

#include <unordered_set>
#include <vector>

#include "files/FileReferencingKeyword.h"
#include "files/KeywordFile.h"
#include "files/KeywordGDFILE.h"
#include "files/KeywordINCLUDE.h"
#include "files/KeywordORDGRID.h"
#include "text/KeywordFileReader.h"
#include <tarn/service/FileName.h>
#include <tarn/service/FileStatus.h>

namespace Tarn::Fjel::Core::DeckManager {

DeckFiles::DeckFiles(const KeywordFile& file, const Context& context)
{
    KeywordFile& top = file.DataFile();
    std::unordered_set<const KeywordFile*> seen{&top};
    std::vector<KeywordFile*> waiting{&top};
    while (!waiting.empty()) {
        KeywordFile& next = *waiting.back();
        waiting.pop_back();
        Add(next.GetFileName());
        for (const std::shared_ptr<IKeyword>& keyword : next.DiskList()) {
            const FileReferencingKeyword* reference = FileReferencingKeyword::From(keyword.get());
            if (reference == nullptr) continue;
            if (KeywordFile* included = KeywordFile::IncludedFileOf(reference)) {
                if (seen.insert(included).second) waiting.push_back(included);
            }
            const auto addAll = [this](const std::vector<Service::FileName>& files) {
                for (const Service::FileName& grid : files)
                    Add(grid);
            };
            if (const auto* gdfile = dynamic_cast<const KeywordGDFILE*>(reference)) addAll(gdfile->GridFiles(context));
            if (const auto* ordgrid = dynamic_cast<const KeywordORDGRID*>(reference))
                addAll(ordgrid->GridFiles(context));
        }
    }
}

void DeckFiles::Add(const Service::FileName& name)
{
    const Service::FileStatus status = Service::FileStatus::Of(name);
    if (status.Exists()) m_files.emplace(status.device, status.inode);
    m_names.insert(name.CanonicalName());
}

bool DeckFiles::Contains(const Service::FileName& name) const
{
    const Service::FileStatus status = Service::FileStatus::Of(name);
    if (status.Exists() && m_files.count({status.device, status.inode}) != 0) return true;
    return m_names.count(name.CanonicalName()) != 0;
}

} // namespace Tarn::Fjel::Core::DeckManager
