#include "tests/project/ProjectTree.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>

#include "files/KeywordFile.h"
#include "tests/support/Thrown.h"
#include "tests/support/WatchedManager.h"
#include "tests/text/TextGenerator.h"
#include <deckmanager/DeckManagerException.h>
#include <deckmanager/IDeckKeywords.h>
#include <deckmanager/IKeyword.h>
#include <deckmanager/KeywordFileManager.h>

namespace ProjectTests {

namespace fs = std::filesystem;
using namespace Tarn::Fjel::Core;
using namespace Tarn::Fjel::Core::DeckManager;
using TestText::TextGenerator;

namespace {

/// The name of a file with links resolved, seen from the project.
std::string Seen(const std::string& name, const std::string& projectDir)
{
    const std::string canonical = fs::weakly_canonical(name).string();
    const std::string project = fs::weakly_canonical(projectDir).string();
    return canonical.starts_with(project + "/") ? "P" + canonical.substr(project.size()) : canonical;
}

void Walk(const KeywordFile& file, const std::string& projectDir, std::set<std::string>& seen, std::ostream& out)
{
    const std::string name = Seen(file.GetFileName().GetFullName(), projectDir);
    if (!seen.insert(name).second) return;
    for (const KeywordFileIterator& include : file.GetINCLUDEKeywords()) {
        const KeywordFile* included = KeywordFile::IncludedFileOf(*include);
        const bool exists = included != nullptr && included->GetFileName().IsFile();
        out << name << ":" << include->GetLine() << " -> "
            << (exists ? Seen(included->GetFileName().GetFullName(), projectDir) : "nothing") << "\n";
        if (exists) Walk(*included, projectDir, seen, out);
    }
}

std::string Padded(TextGenerator& random, const std::string& path)
{
    if (random.Below(5) == 0) return "./" + path;
    const std::size_t slash = path.find('/', 1);
    return random.Below(5) == 0 && slash != std::string::npos ? path.substr(0, slash) + "/" + path.substr(slash) : path;
}

void LoadBelow(const KeywordFile& file, int depth)
{
    for (const KeywordFileIterator& include : file.GetINCLUDEKeywords()) {
        const KeywordFile* included = KeywordFile::IncludedFileOf(*include);
        if (included != nullptr && depth < 30) LoadBelow(*included, depth + 1);
    }
}

} // namespace

std::string Include(const std::string& path)
{
    return "INCLUDE\n '" + path + "' /\n";
}

std::string Refusal(IDeckManager& manager, const std::string& newDir)
{
    return TestSupport::Thrown<DeckManagerException>([&] { manager.MoveProjectDir(newDir, true); });
}

std::vector<KeywordIterator> KeywordsNamed(const IDeck& deck, const std::string& name)
{
    std::vector<KeywordIterator> places;
    for (KeywordIterator place = deck.GetDeckKeywords()->Begin(); *place != nullptr; ++place) {
        if (place->GetName() == name) places.push_back(place);
    }
    return places;
}

ProjectTree::ProjectTree()
{
    fs::create_directories(OldDir());
    Write("zone/proj/deck_cache_xml.lock", "");
}

void ProjectTree::WriteTop(const std::string& name, const std::string& text)
{
    Write("zone/proj/" + name, text);
    m_tops.push_back(name);
}

void ProjectTree::Generate(TextGenerator& random, int decks, int files)
{
    const std::vector<std::string> outside = {"out/o1.inc", "out/deep/o2.inc", "zone/o3.inc", "o4.inc"};
    for (const std::string& name : outside)
        Write(name, "PORO\n 1 /\n");
    const std::vector<std::string> shared = {"common/c1.inc", "common/deep/c2.inc", ".hidden/h.inc"};
    for (const std::string& name : shared)
        Write("zone/proj/" + name, "PERMX\n 1 /\nINCLUDE\n '" + m_directory.Path(outside[0]) + "' /\n");
    if (random.Below(2) == 0) {
        fs::create_directory_symlink("../common", m_directory.Path("zone/proj/common/around"));
        fs::create_directory_symlink(m_directory.Path("zone/proj/common"), m_directory.Path("zone/proj/absolute"));
        fs::create_directory_symlink("../../out", m_directory.Path("zone/proj/outwards"));
        fs::create_symlink("../../../zone/o3.inc", m_directory.Path("zone/proj/common/o.inc"));
    }

    for (int deck = 0; deck < decks; ++deck) {
        const std::string name = "D" + std::to_string(deck);
        const std::string folder = random.Below(5) == 0 ? "more/below/" + name : name;
        // The files of a deck; each may include those with a higher number.
        std::vector<std::string> members{folder + "/" + name + ".DATA"};
        for (int i = 1; i < std::max(2, files / decks); ++i) {
            members.push_back(folder + "/" + random.OneOf<std::string>({"", "inc/", "inc/deep/", ".dot/"}) + "f" +
                              std::to_string(i) + ".inc");
        }
        for (std::size_t i = 0; i < members.size(); ++i) {
            const std::string end = random.Below(3) == 0 ? "\r\n" : "\n";
            std::string text = i == 0 ? "RUNSPEC" + end + "PATHS" + end + "'IN' 'inc' /" + end + "/" + end : "";
            if (random.Below(2) == 0) text += "-- comment of " + members[i] + end;
            const auto include = [&](const std::string& path) {
                text += random.OneOf<std::string>({"INCLUDE", "INCLUDE   -- a comment", "include"}) + end;
                if (random.Below(4) == 0) text += "-- ahead of the name" + end;
                text += random.OneOf<std::string>({" ", "", "\t"}) + "'" + path + "' / behind" + end;
                if (random.Below(3) == 0) text += end + "-- above" + end;
                text += "WATER" + end;
            };
            const std::string top = m_directory.Path("zone/proj/" + folder);
            const auto named = [&](const std::string& file) {
                if (random.Below(3) == 0) return Padded(random, file);
                return Padded(random, fs::path(file).lexically_relative(top).string());
            };
            // Every file is included at least once, by the one ahead of it.
            if (i + 1 < members.size()) include(named(m_directory.Path("zone/proj/" + members[i + 1])));
            for (int more = random.Below(4); more > 0; --more) {
                switch (random.Below(7)) {
                case 0:
                    if (i + 2 < members.size())
                        include(named(
                            m_directory.Path("zone/proj/" + members[i + 2 +
                                                                    static_cast<std::size_t>(random.Below(
                                                                        static_cast<int>(members.size() - i - 2)))])));
                    break;
                case 1:
                    include(named(m_directory.Path("zone/proj/" + random.OneOf(shared))));
                    break;
                case 2:
                case 3:
                    include(named(m_directory.Path(random.OneOf(outside))));
                    break;
                case 4:
                    include(named(m_directory.Path(random.OneOf<std::string>({"none/n.inc", "zone/proj/none.inc"}))));
                    break;
                case 5:
                    include("$IN/f1.inc");
                    break;
                default:
                    include(named(m_directory.Path("zone/proj/" +
                                                   random.OneOf<std::string>({"common/around/c1.inc", "absolute/c1.inc",
                                                                              "outwards/o1.inc", "common/o.inc"}))));
                    break;
                }
            }
            if (random.Below(4) == 0 && text.ends_with('\n')) text.pop_back();
            if (i == 0)
                WriteTop(members[i], text);
            else
                Write("zone/proj/" + members[i], text);
        }
    }
}

std::string ProjectTree::IncludesOf(const std::string& projectDir) const
{
    std::ostringstream out;
    for (const std::string& top : m_tops) {
        KeywordFileManager manager("");
        std::set<std::string> seen;
        out << "deck " << top << "\n";
        Walk(*manager.GetKeywordFile(Service::FileName(projectDir + "/" + top), true), projectDir, seen, out);
    }
    return out.str();
}

std::string ProjectTree::ScannedIn(const std::string& projectDir) const
{
    TestSupport::WatchedManager manager(projectDir);
    for (const std::string& top : m_tops)
        LoadBelow(*manager.GetKeywordFile(Service::FileName(projectDir + "/" + top), true), 0);
    return manager.Scanned();
}

std::map<std::string, std::string> ProjectTree::ContentOf(const std::string& directory)
{
    std::map<std::string, std::string> content;
    if (!fs::exists(directory)) return content;
    for (const auto& entry : fs::recursive_directory_iterator(directory)) {
        const std::string name = entry.path().lexically_relative(directory).string();
        if (entry.path().filename().string().starts_with("DeckCache.ptd")) continue;
        if (entry.is_symlink()) {
            content[name] = "-> " + fs::read_symlink(entry.path()).string();
        } else if (entry.is_directory()) {
            content[name] = "/";
        } else {
            std::ifstream file(entry.path(), std::ios::binary);
            std::ostringstream text;
            text << file.rdbuf();
            content[name] = text.str();
        }
    }
    return content;
}

} // namespace ProjectTests
