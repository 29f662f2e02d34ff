#include "export/DeckFiles.h"

#include <unordered_set>
#include <vector>

#include "files/GridFileKeyword.h"
#include "files/KeywordFile.h"
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
            if (const auto* gridFiles = dynamic_cast<const GridFileKeyword*>(reference)) {
                for (const Service::FileName& grid : gridFiles->GridFiles(context))
                    Add(grid);
            }
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
