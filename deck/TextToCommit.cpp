#include <deckmanager/TextToCommit.h>

#include <algorithm>
#include <iterator>
#include <unordered_map>

#include <boost/filesystem/operations.hpp>

#include "files/FileWriteResult.h"
#include "files/KeywordFile.h"
#include "files/KeywordFileWriter.h"
#include "keywords/Keyword.h"
#include "text/LineFileWriter.h"
#include <deckmanager/DeckManagerException.h>
#include <tarn/service/FileStream.h>
#include <tarn/service/FileUtils.h>

namespace Tarn::Fjel::Core::DeckManager {

namespace {

/// A file for a text that is only looked at. Goes with the object.
class PassingFile
{
public:
    PassingFile()
    {
        boost::system::error_code error;
        const std::string folder = boost::filesystem::temp_directory_path(error).string();
        if (error) throw DeckManagerException("There is no folder for temporary files: " + error.message() + ".");
        m_name = Service::FileName(folder + "/" + boost::filesystem::unique_path("deck-%%%%-%%%%-%%%%.tmp").string());
    }
    ~PassingFile()
    {
        try {
            Service::FileUtils::Remove(m_name);
        } catch (...) {
            // A destructor has nobody to tell.
        }
    }
    PassingFile(const PassingFile&) = delete;
    PassingFile& operator=(const PassingFile&) = delete;

    const std::string& Path() const { return m_name.GetFullName(); }

private:
    Service::FileName m_name;
};

/// The 1-based lines of ascending byte offsets.
std::unordered_map<const IKeyword*, int> LinesOf(const std::string& text, const std::vector<WrittenExtent>& extents)
{
    std::unordered_map<const IKeyword*, int> lines;
    int line = 1;
    std::size_t counted = 0;
    for (const WrittenExtent& extent : extents) {
        const std::size_t begin = std::min(static_cast<std::size_t>(extent.begin), text.size());
        if (begin > counted) {
            const auto from = text.begin() + static_cast<std::ptrdiff_t>(counted);
            line += static_cast<int>(std::count(from, text.begin() + static_cast<std::ptrdiff_t>(begin), '\n'));
            counted = begin;
        }
        lines.emplace(extent.keyword, line);
    }
    return lines;
}

} // namespace

TextToCommit TextToCommit::Of(const IKeywordFile& file)
{
    auto& keywordFile = const_cast<KeywordFile&>(static_cast<const KeywordFile&>(file));
    const auto fail = [&file](const std::string& reason) {
        throw DeckManagerException("The new text of the file " + file.GetFileName().GetFullName() +
                                   " cannot be made: " + reason + ".");
    };
    const PassingFile passing;
    LineFileWriter writer;
    if (!writer.Open(passing.Path(), false)) fail(writer.FailureReason());
    const Service::ReadWatch reading;
    FileWriteResult result =
        KeywordFileWriter::WriteForCommit(keywordFile, writer, keywordFile.RootContext(), false, false);
    if (reading.SawFailure()) fail("a file of the deck cannot be read");
    if (!writer.Close() || !result.ok) fail(writer.FailureReason());

    TextToCommit made;
    Service::FileInputStream stream(passing.Path());
    made.text.assign(std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>());
    if (reading.SawFailure()) fail("its temporary file cannot be read");
    const std::unordered_map<const IKeyword*, int> lines = LinesOf(made.text, result.extents);
    for (KeywordFileIterator place = file.Begin(); place != file.End(); ++place) {
        const auto found = lines.find(*place);
        made.lines.push_back(found != lines.end() ? found->second : -1);
    }
    return made;
}

} // namespace Tarn::Fjel::Core::DeckManager
