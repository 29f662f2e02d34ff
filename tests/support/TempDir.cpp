#include "tests/support/TempDir.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <vector>

namespace fs = std::filesystem;

namespace TestSupport {

TempDir::TempDir()
{
    std::string name = (fs::temp_directory_path() / "deck-test-XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("cannot make a temporary directory");
    m_path = fs::canonical(name).string();
}

TempDir::~TempDir()
{
    std::error_code ignored;
    for (fs::recursive_directory_iterator it(m_path, ignored), end; it != end; it.increment(ignored)) {
        if (it->is_directory(ignored) && !it->is_symlink(ignored)) {
            fs::permissions(it->path(), fs::perms::owner_all, fs::perm_options::add, ignored);
        }
    }
    fs::remove_all(m_path, ignored);
}

std::string TempDir::Path(std::string_view relativePath) const
{
    return m_path + "/" + std::string(relativePath);
}

Tarn::Fjel::Core::Service::FileName TempDir::File(std::string_view relativePath) const
{
    return Tarn::Fjel::Core::Service::FileName(Path(relativePath));
}

std::string TempDir::Write(std::string_view relativePath, std::string_view text) const
{
    const std::string name = Path(relativePath);
    fs::create_directories(fs::path(name).parent_path());
    std::ofstream stream(name, std::ios::binary | std::ios::trunc);
    stream.write(text.data(), static_cast<std::streamsize>(text.size()));
    stream.close();
    if (!stream) throw std::runtime_error("cannot write " + name);
    return name;
}

std::string TempDir::Read(std::string_view relativePath) const
{
    std::ifstream stream(Path(relativePath), std::ios::binary);
    if (!stream) throw std::runtime_error("cannot read " + Path(relativePath));
    return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

bool TempDir::Exists(std::string_view relativePath) const
{
    return fs::exists(fs::symlink_status(Path(relativePath)));
}

std::string TempDir::Listing() const
{
    std::vector<std::string> names;
    for (const auto& entry : fs::recursive_directory_iterator(m_path)) {
        const bool directory = entry.is_directory() && !entry.is_symlink();
        names.push_back(entry.path().lexically_relative(m_path).string() + (directory ? "/" : ""));
    }
    std::sort(names.begin(), names.end());
    std::string listing;
    for (const std::string& name : names)
        listing += (listing.empty() ? "" : " ") + name;
    return listing;
}

CurrentDirectoryGuard::CurrentDirectoryGuard(const std::string& path) : m_previous(fs::current_path().string())
{
    fs::current_path(path);
}

CurrentDirectoryGuard::~CurrentDirectoryGuard()
{
    std::error_code ignored;
    fs::current_path(m_previous, ignored);
}

} // namespace TestSupport
