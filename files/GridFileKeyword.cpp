#include "files/GridFileKeyword.h"

#include <algorithm>
#include <utility>

#include "files/ExportedFileMap.h"
#include "keywords/TagMgrForKeyword.h"
#include "text/KeywordFileReader.h"
#include <deckmanager/Context.h>
#include <tarn/service/FileName.h>

namespace Tarn::Fjel::Core::DeckManager {

GridFileKeyword::GridFileKeyword(const Keywords::IKeywordSyntax& syntax, bool variablesAllowed, IKeywordOwner* owner,
                                 std::shared_ptr<KeywordFileReader> reader, long long position, long long size,
                                 std::string_view name, const KeywordMarks* marks)
    : FileReferencingKeyword(syntax, variablesAllowed, owner, std::move(reader), position, size, name, marks)
{
}

GridFileKeyword::~GridFileKeyword() = default;

ITagMgr& GridFileKeyword::GetTagMgr() const
{
    if (!m_tagMgr) m_tagMgr = std::make_unique<TagMgrForKeyword>(*this);
    return *m_tagMgr;
}

std::optional<std::string> GridFileKeyword::NameInCopy(const Service::Directory& directory, const Context& context,
                                                       ExportedFileMap& fileMap) const
{
    const Service::FileName name = NamedFile(context);
    const std::vector<Service::FileName> files = GridFiles(context);
    if (files.empty()) fileMap.NoteMissing(*this, name);
    if (!name.IsSet()) return std::nullopt;
    return TakeAlong(files, name.GetFileName(), directory, fileMap);
}

std::string GridFileKeyword::TakeAlong(const std::vector<Service::FileName>& files, const std::string& leaf,
                                       const Service::Directory& directory, ExportedFileMap& fileMap)
{
    const auto renamed = [&](const Service::FileName& file, int number) {
        Service::FileName target(directory, file.GetFileName());
        const std::string extension = file.GetExtension();
        if (number > 0) {
            target.SetFileName(file.GetRootName() + "_" + std::to_string(number) +
                               (extension.empty() ? "" : "." + extension));
        }
        return target;
    };
    const auto isTaken = [&](int number) {
        return std::any_of(files.begin(), files.end(), [&](const Service::FileName& file) {
            return fileMap.HasNew(renamed(file, number)) && !(fileMap.NewNameOf(file) == renamed(file, number));
        });
    };
    int number = 0;
    while (isTaken(number))
        ++number;
    for (const Service::FileName& file : files)
        fileMap.AddWaiting(nullptr, file, renamed(file, number));
    return number == 0 ? leaf : renamed(Service::FileName(leaf), number).GetFileName();
}

} // namespace Tarn::Fjel::Core::DeckManager
