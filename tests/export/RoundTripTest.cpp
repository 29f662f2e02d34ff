#include <algorithm>
#include <random>

#include "tests/support/DeckTest.h"
#include <deckmanager/Exporter.h>

/// Exports of decks that are made by chance, against what they must be: the source with other names in the INCLUDE
/// keywords, or with the files in their place.

namespace {

using namespace DeckTests;

const std::string mark = "\xEF\xBB\xBF";

/// A file as it is made: stretches of text, and INCLUDE keywords, whose texts are told apart at the name.
struct Piece
{
    std::string before; ///< plain text, or an INCLUDE up to the name
    std::string after;  ///< of an INCLUDE, through its own last line
    int file = -1;      ///< of an INCLUDE
};

struct MadeFile
{
    std::string path;
    std::vector<Piece> pieces;
    bool marked = false;

    std::string Text(const std::function<std::string(int)>& nameOf) const
    {
        std::string text = marked ? mark : std::string();
        for (const Piece& piece : pieces)
            text += piece.before + (piece.file < 0 ? std::string() : "'" + nameOf(piece.file) + "'" + piece.after);
        return text;
    }
};

std::string Leaf(const std::string& path)
{
    return path.substr(path.rfind('/') + 1);
}

class DeckMaker
{
public:
    explicit DeckMaker(unsigned seed) : m_chance(seed) {}

    std::vector<MadeFile> Make()
    {
        m_files.clear();
        m_files.push_back({"TOP.DATA", {}, OneIn(4)});
        Fill(0, 0);
        return m_files;
    }

private:
    bool OneIn(int n) { return Below(n) == 0; }
    int Below(int n) { return static_cast<int>(m_chance() % static_cast<unsigned>(n)); }

    std::string End(int file)
    {
        const int kind = m_lineEnds[static_cast<std::size_t>(file)];
        return kind == 2 ? (OneIn(2) ? "\r\n" : "\n") : kind == 1 ? "\r\n" : "\n";
    }

    std::string Comments(int file)
    {
        std::string text;
        for (int i = Below(4); i > 0; --i) {
            if (OneIn(3)) text += (OneIn(2) ? "  " : "") + End(file);
            text += (OneIn(5) ? " \t--" : "-- ") + std::string("comment ") + std::to_string(m_next++) +
                    (OneIn(9) ? std::string(" \0 nul", 6) : std::string()) + End(file);
        }
        return text;
    }

    std::string KeywordText(int file)
    {
        const std::string end = End(file);
        switch (Below(6)) {
        case 0:
            return "ECHO" + std::string(OneIn(3) ? " -- mine" : "") + end;
        case 1:
            return "PORO\t" + end + Comments(file) + " 1 2*3\t4" + End(file) + Comments(file) + "5 /  rest" + End(file);
        case 2:
            return "MULTX                                -- Generated" + end + " 1 /" + End(file);
        case 3:
            return "SKIP" + end + "PORO" + End(file) + Comments(file) + "ENDSKIP" + End(file);
        case 4:
            return "PERMX" + end + " 7 " + std::string(OneIn(2) ? "" : std::string("\0", 1)) + "/" + End(file) +
                   "0.5 /" + End(file);
        default:
            return "NOECHO  " + end;
        }
    }

    void Fill(int index, int depth)
    {
        m_lineEnds.resize(std::max(m_lineEnds.size(), static_cast<std::size_t>(index) + 1));
        m_lineEnds[static_cast<std::size_t>(index)] = Below(3);
        std::vector<Piece> pieces;
        pieces.push_back({Comments(index), {}, -1});
        if (index == 0) pieces.push_back({"RUNSPEC" + End(index) + "GRID" + End(index), {}, -1});
        for (int i = Below(index == 0 ? 9 : 6); i > 0; --i) {
            if (depth < 3 && OneIn(3)) {
                const int included = static_cast<int>(m_files.size());
                const char* const folders[] = {"", "sub/", "sub/deep/", "b/"};
                m_files.push_back({folders[Below(4)] + ("f" + std::to_string(included) + ".inc"), {}, OneIn(4)});
                const std::string line = "INCLUDE" + std::string(OneIn(3) ? "  " : "") + End(index);
                pieces.push_back({line + std::string(static_cast<std::size_t>(Below(3)), ' '),
                                  (OneIn(3) ? End(index) : " ") + "/" + End(index), included});
                Fill(included, depth + 1);
            } else {
                pieces.push_back({KeywordText(index), {}, -1});
            }
            pieces.push_back({Comments(index), {}, -1});
        }
        if (index == 0 && OneIn(3)) pieces.push_back({"END" + End(index) + "what is left" + End(index), {}, -1});
        // A file without its last line end.
        Piece& last = pieces.back();
        std::string& text = last.file < 0 ? last.before : last.after;
        if (OneIn(3) && text.ends_with('\n')) {
            text.pop_back();
            if (text.ends_with('\r')) text.pop_back();
        }
        m_files[static_cast<std::size_t>(index)].pieces = std::move(pieces);
    }

    std::mt19937 m_chance;
    std::vector<MadeFile> m_files;
    std::vector<int> m_lineEnds;
    int m_next = 0;
};

/// 0: there is no line end; 1: LF; 2: CR LF.
int KindOf(const std::string& text)
{
    const std::size_t feed = text.find('\n');
    if (feed == std::string::npos) return 0;
    return feed > 0 && text[feed - 1] == '\r' ? 2 : 1;
}

std::string WithEnds(const std::string& text, const std::string& end)
{
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '\r' && (i + 1 == text.size() || text[i + 1] == '\n')) continue;
        text[i] == '\n' ? result += end : result += text[i];
    }
    return result;
}

/// Text goes behind text: an open line is ended.
void Append(std::string& flat, const std::string& text, const std::string& end)
{
    if (text.empty()) return;
    if (!flat.empty() && flat != mark && !flat.ends_with('\n')) flat += end;
    flat += text;
}

void Flatten(const std::vector<MadeFile>& files, int index, int topKind, std::string& flat)
{
    const MadeFile& file = files[static_cast<std::size_t>(index)];
    const std::string end = topKind == 2 ? "\r\n" : "\n";
    const int kind = KindOf(file.Text([&](int i) { return files[static_cast<std::size_t>(i)].path; }));
    const auto converted = [&](const std::string& text) {
        return kind == 0 || kind == (topKind == 2 ? 2 : 1) ? text : WithEnds(text, end);
    };
    // What stands between two INCLUDE keywords is one text.
    std::string text;
    for (const Piece& piece : file.pieces) {
        if (piece.file < 0) {
            text += piece.before;
            continue;
        }
        Append(flat, converted(text), end);
        text.clear();
        Flatten(files, piece.file, topKind, flat);
    }
    Append(flat, converted(text), end);
}

TestDeck::Texts TextsOf(const std::vector<MadeFile>& files)
{
    TestDeck::Texts texts;
    for (const MadeFile& file : files) {
        texts.emplace_back(file.path, file.Text([&](int i) { return files[static_cast<std::size_t>(i)].path; }));
    }
    return texts;
}

class RoundTripTest : public testing::TestWithParam<bool>
{
protected:
    TestSupport::CleanEnvironment m_environment;
    TestSupport::LogRecorder m_log;
};

TEST_P(RoundTripTest, ExportsDifferFromTheSourceInTheIncludesAlone)
{
    const bool keep = GetParam();
    for (unsigned seed = 1; seed <= 100; ++seed) {
        SCOPED_TRACE(seed);
        LineEnds::SetPolicy(keep ? LineEnds::Policy::Keep : LineEnds::Policy::CrLf);
        if (seed % 4 == 0)
            Environment::Instance().EnableSKIPENDSKIP(true, Keywords::SimulatorType::S100);
        else
            Environment::Instance().EnableSKIPENDSKIP(false, Keywords::SimulatorType::S100);
        const std::vector<MadeFile> files = DeckMaker(seed).Make();
        const TestDeck deck(TextsOf(files));
        const auto asWritten = [keep](const std::string& text) { return keep ? text : WithEnds(text, "\r\n"); };

        ASSERT_TRUE(deck.Keywords().ExportToDirectory(deck.Dir().Path("copy"), Keywords::SimulatorType::Any, false));
        for (const MadeFile& file : files) {
            const std::string expected =
                asWritten(file.Text([&](int i) { return Leaf(files[static_cast<std::size_t>(i)].path); }));
            ASSERT_EQ(deck.Dir().Read("copy/" + Leaf(file.path)), expected);
        }

        const KeywordIterator begin = deck.Keywords().Begin();
        ASSERT_TRUE(Exporter::ExportToSingleFile(deck.Keywords(), begin, deck.Keywords().PhysicalEnd(),
                                                 deck.Dir().Path("flat.DATA"), ExportOptions(), nullptr));
        const std::string flat = deck.Dir().Read("flat.DATA");
        std::string expected = files[0].marked ? mark : std::string();
        Flatten(files, 0, KindOf(TextsOf(files)[0].second), expected);
        ASSERT_EQ(flat, asWritten(expected));

        for (const auto& [name, text] : TextsOf(files)) {
            ASSERT_EQ(deck.Dir().Read(name), text);
            std::istringstream lines(text);
            for (std::string line; std::getline(lines, line);) {
                const std::size_t comment = line.find("-- comment");
                if (line.ends_with('\r')) line.pop_back();
                if (comment != std::string::npos) {
                    ASSERT_NE(flat.find(line.substr(comment)), std::string::npos) << line;
                }
            }
        }
    }
    EXPECT_EQ(m_log.Count(3), 0) << m_log.Texts(3).front();
}

INSTANTIATE_TEST_SUITE_P(LineEnds, RoundTripTest, testing::Values(true, false));

} // namespace
