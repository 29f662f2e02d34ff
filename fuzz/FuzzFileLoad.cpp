// Loads any text as the files of a deck, through the manager, and asks everything of every keyword. A line "%%% NAME"
// begins a further file; what stands ahead of the first such line is the top file. The first byte chooses the settings.

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>
#include <vector>

#include <unistd.h>

#include <deckmanager/DeckManagerException.h>
#include <deckmanager/Environment.h>
#include <deckmanager/IDeck.h>
#include <deckmanager/IDeckKeywords.h>
#include <deckmanager/IDeckManager.h>
#include <deckmanager/IKeyword.h>
#include <deckmanager/KeywordFileManager.h>
#include <tarn/service/FileName.h>
#include <tarn/service/Log.h>

#include "deck/DeckKeywords.h"
#include "files/IteratorAccess.h"
#include "files/KeywordFile.h"
#include "keywords/DeserializeState.h"
#include "keywords/Keyword.h"
#include <deckmanager/Context.h>

using namespace Tarn::Fjel::Core;
using namespace Tarn::Fjel::Core::DeckManager;

namespace {

constexpr std::string_view FileMark = "%%% ";

/// A walk shows a file once for each way that leads there, and there may be very many.
constexpr int MostSteps = 20000;

void Require(bool condition, int line = __builtin_LINE())
{
    if (condition) return;
    std::fprintf(stderr, "line %d: not so\n", line);
    std::abort();
}

/// A directory of this process, emptied for each input and removed at the end.
class Scratch
{
public:
    Scratch() : m_path(std::filesystem::temp_directory_path() / ("fuzz_file_load_" + std::to_string(getpid()))) {}
    ~Scratch() { std::filesystem::remove_all(m_path); }

    void Empty() const
    {
        std::filesystem::remove_all(m_path);
        std::filesystem::create_directories(m_path);
    }
    std::string Path(std::string_view leaf) const { return (m_path / leaf).string(); }
    void Write(std::string_view leaf, std::string_view text) const
    {
        std::ofstream stream(m_path / leaf, std::ios::binary);
        stream.write(text.data(), static_cast<std::streamsize>(text.size()));
    }

private:
    std::filesystem::path m_path;
};

/// The name behind the mark, where it is a plain one.
std::string NameOf(std::string_view line)
{
    std::string name;
    for (const char c : line.substr(0, 20)) {
        const bool isPlain = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
        if (isPlain || (c == '.' && !name.empty())) name += c;
    }
    return name;
}

void WriteFiles(const Scratch& scratch, std::string_view input)
{
    std::string name = "TOP.DATA";
    std::string text;
    for (int files = 0; files < 8;) {
        const std::size_t end = input.find('\n');
        const std::string_view line = input.substr(0, end);
        const bool begins = line.substr(0, FileMark.size()) == FileMark;
        if (begins || input.empty()) {
            if (!name.empty()) scratch.Write(name, text);
            if (input.empty()) return;
            ++files;
            name = NameOf(line.substr(FileMark.size()));
            text.clear();
        } else {
            text += input.substr(0, end == std::string_view::npos ? end : end + 1);
        }
        input.remove_prefix(end == std::string_view::npos ? input.size() : end + 1);
    }
}

void CheckKeyword(const IKeyword& given)
{
    auto& keyword = static_cast<Keyword&>(const_cast<IKeyword&>(given));
    Require(keyword.GetLine() >= 1 && keyword.GetSyntax() != nullptr && !keyword.GetName().empty());
    Require(!keyword.IsDirty());
    keyword.IsSuppressed();
    keyword.IsInGeneratedFile();
    const std::shared_ptr<std::string> whole = keyword.GetText();
    Require(static_cast<long long>(whole->size()) <= keyword.GetSize() + 1);
    const std::shared_ptr<std::string> text = keyword.GetDataText();
    Require(!text || text->size() <= whole->size());
    Require(keyword.GetComment().size() <= whole->size());
    keyword.HasVariables();
    try {
        keyword.IsGenerated();
        keyword.GetData(Context());
    } catch (const DeckManagerException&) {
        // A size that hangs on the deck, which this context doesn't have.
    }
}

void CheckFile(KeywordFile& file)
{
    const long long size = std::max(file.FileSize(), 0LL);
    long long end = 0;
    file.LoadAllTags();
    for (KeywordFileIterator place = file.Begin(); place != file.End(); ++place) {
        Require(place->GetPosition() >= end && place->GetSize() >= 0);
        end = place->GetPosition() + place->GetSize();
        Require(end <= size);
        Require(file.Find(*place) == place);
        CheckKeyword(**place);
    }
    Require(file.HeaderBegin() <= size && file.HeaderEnd() < size && file.TailBegin() <= size);
    Require(static_cast<long long>(file.HeaderText().size() + file.TailText().size()) <= size);
    Require(!file.IsModified());
    file.HasUserKeywords();
    file.SectionAt(file.End(), true);
}

/// What stands above the keywords of a file are comment lines, read from the bytes ahead of each.
void CheckComments(const DeckKeywords& view, const KeywordFile& file)
{
    bool problem = false;
    const Service::Log::Handler before = Service::Log::SetHandler(
        [&problem](std::string_view text, int) { problem = problem || text.starts_with("A problem was encountered"); });
    for (KeywordFileIterator place = file.Begin(); place != file.End(); ++place) {
        const KeywordIterator position = IteratorAccess::At(place);
        const std::string comment = view.GetComment(position, false);
        Require(static_cast<long long>(comment.size()) <= place->GetPosition());
        for (std::string_view rest = comment; !rest.empty();) {
            const std::string_view line = rest.substr(0, rest.find('\n'));
            Require(line.empty() || line.starts_with("--"));
            Require(line.size() < rest.size());
            rest.remove_prefix(line.size() + 1);
        }
        Require(view.GetComment(position, true).size() <= comment.size());
    }
    Service::Log::SetHandler(before);
    Require(!problem);
}

/// Backwards a walk is the forward walk reversed.
void CheckWalk(KeywordFile& top)
{
    std::vector<const IKeyword*> keywords;
    KeywordIterator position = IteratorAccess::Walk(&top, true, true);
    for (; *position != nullptr; ++position) {
        keywords.push_back(*position);
        if (keywords.size() > MostSteps) return;
    }
    for (auto keyword = keywords.rbegin(); keyword != keywords.rend(); ++keyword) {
        --position;
        Require(*position == *keyword);
    }
}

void Load(const Scratch& scratch)
{
    KeywordFileManager manager("");
    const std::shared_ptr<KeywordFile> top = manager.GetKeywordFile(Service::FileName(scratch.Path("TOP.DATA")), true);
    const DeckKeywords view(top, true);
    try {
        CheckWalk(*top);
        for (const std::shared_ptr<KeywordFile>& file : manager.Files()) {
            CheckFile(*file);
            CheckComments(view, *file);
        }
        top->Reload();
        CheckWalk(*top);
        manager.ClearUnreferencedFiles();
    } catch (const DeckManagerException&) {
        // A keyword that is refused.
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const Scratch scratch;
    if (size == 0) return 0;
    const unsigned settings = data[0];
    DeserializeState::DefaultLimits() = {1000, 1000, 100000, 10};
    Environment& environment = Environment::Instance();
    environment.EnableKeywordSuppression((settings & 1) == 0);
    environment.SetPATHSSupport((settings & 2) == 0);
    environment.LogWarningForPossibleIndentedKeywords((settings & 4) != 0);
    environment.EnableSKIPENDSKIP((settings & 8) != 0, static_cast<Keywords::SimulatorType>(settings >> 6));
    environment.DeckTerminatedByENDKeyword((settings & 16) == 0);
    environment.EnableOrdaleLegacySkipHandling((settings & 32) != 0);

    scratch.Empty();
    WriteFiles(scratch, std::string_view(reinterpret_cast<const char*>(data) + 1, size - 1));
    Load(scratch);
    return 0;
}
