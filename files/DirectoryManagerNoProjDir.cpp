#include "files/DirectoryManagerNoProjDir.h"

#include <tarn/service/Directory.h>

namespace Tarn::Fjel::Core::DeckManager {

namespace {

const Service::Directory& NoDirectory()
{
    static const Service::Directory directory;
    return directory;
}

const std::string& NoName()
{
    static const std::string name;
    return name;
}

} // namespace

const Service::Directory& DirectoryManagerNoProjDir::ProjectDir() const
{
    return NoDirectory();
}
const std::string& DirectoryManagerNoProjDir::ProjectDirName() const
{
    return NoName();
}
const Service::Directory& DirectoryManagerNoProjDir::CacheDir() const
{
    return NoDirectory();
}
const std::string& DirectoryManagerNoProjDir::TempProjectDirName() const
{
    return NoName();
}
const Service::Directory& DirectoryManagerNoProjDir::TempProjectDir() const
{
    return NoDirectory();
}

} // namespace Tarn::Fjel::Core::DeckManager
