// Writes the large decks that the benchmarks read: grid arrays, a long schedule, a schedule cut into thousands of
// included files beside one file of the same text, one keyword of many reals or records, and decks to be merged. The
// same program gives the same bytes each time.

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <iterator>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <fmt/format.h>

namespace {

/// A buffered file that throws when a byte could not be written.
class Output
{
public:
    explicit Output(const std::filesystem::path& path) : m_path(path), m_file(std::fopen(path.c_str(), "wb"))
    {
        if (!m_file) throw std::runtime_error(m_path.string() + ": " + std::strerror(errno));
    }
    Output(const Output&) = delete;
    Output& operator=(const Output&) = delete;
    ~Output()
    {
        if (m_file) std::fclose(m_file);
    }

    void Write(const std::string& text)
    {
        m_buffer += text;
        if (m_buffer.size() > s_chunk) Flush();
    }

    template <typename... Args>
    void Print(fmt::format_string<Args...> format, Args&&... args)
    {
        fmt::format_to(std::back_inserter(m_buffer), format, std::forward<Args>(args)...);
        if (m_buffer.size() > s_chunk) Flush();
    }

    void Close()
    {
        Flush();
        const bool closed = std::fclose(m_file) == 0;
        m_file = nullptr;
        if (!closed) throw std::runtime_error(m_path.string() + ": " + std::strerror(errno));
    }

private:
    void Flush()
    {
        if (std::fwrite(m_buffer.data(), 1, m_buffer.size(), m_file) != m_buffer.size())
            throw std::runtime_error(m_path.string() + ": " + std::strerror(errno));
        m_buffer.clear();
    }

    static constexpr std::size_t s_chunk = 1 << 20;
    std::filesystem::path m_path;
    std::FILE* m_file;
    std::string m_buffer;
};

/// A small generator of our own: the distributions of the standard library differ between implementations.
class Random
{
public:
    explicit Random(std::uint64_t seed) : m_state(seed * 2 + 1) {}
    std::uint32_t Next()
    {
        m_state = m_state * 6364136223846793005ULL + 1442695040888963407ULL;
        return static_cast<std::uint32_t>(m_state >> 33);
    }
    double Between(double low, double high) { return low + (high - low) * Next() / 2147483648.0; }

private:
    std::uint64_t m_state;
};

void WriteRunspec(Output& out, const std::string& title, int nx, int ny, int nz)
{
    out.Print("RUNSPEC\n\nTITLE\n{}\n\nDIMENS\n   {} {} {} /\n\nOIL\nWATER\nGAS\nDISGAS\nMETRIC\n\n", title, nx, ny,
              nz);
    out.Write("START\n   1 'JAN' 1990 /\n\nTABDIMS\n/\n\nWELLDIMS\n   200 50 20 100 /\n\nGRID\n\nINIT\n\n");
}

/// One array of `count` reals, each taken from a table of ready texts: realistic digits at the speed of a copy.
void WriteArray(Output& out, const std::string& name, std::int64_t count, double low, double high, int decimals)
{
    Random random(name.size() * 31 + static_cast<unsigned char>(name.back()));
    std::vector<std::string> texts(4096);
    for (std::string& text : texts)
        text = fmt::format(" {:.{}f}", random.Between(low, high), decimals);

    out.Print("{}\n", name);
    for (std::int64_t i = 0; i < count; i += 8) {
        std::string line = "  ";
        for (std::int64_t k = i; k < std::min(count, i + 8); ++k)
            line += texts[random.Next() % texts.size()];
        line += '\n';
        out.Write(line);
    }
    out.Write("/\n\n");
}

/// About 500 MB of grid arrays, nearly half of it in one keyword.
void WriteArraysDeck(const std::filesystem::path& folder, double scale)
{
    const int nx = 200;
    const int ny = 150;
    const int nz = std::max(1, static_cast<int>(std::lround(100 * scale)));
    const std::int64_t cells = std::int64_t{nx} * ny * nz;

    Output out(folder / "ARRAYS.DATA");
    WriteRunspec(out, "Grid arrays", nx, ny, nz);
    out.Print("SPECGRID\n   {} {} {} 1 'F' /\n\n", nx, ny, nz);
    WriteArray(out, "COORD", std::int64_t{6} * (nx + 1) * (ny + 1), 1000.0, 9999.0, 2);
    WriteArray(out, "ZCORN", 8 * cells, 2000.0, 3000.0, 3);
    for (const char* name : {"PORO", "NTG"})
        WriteArray(out, name, cells, 0.05, 0.35, 6);
    for (const char* name : {"PERMX", "PERMY", "PERMZ"})
        WriteArray(out, name, cells, 10.0, 999.0, 4);
    out.Write("EDIT\n\n");
    for (const char* name : {"MULTX", "MULTY", "MULTZ"})
        WriteArray(out, name, cells, 0.1, 1.9, 6);
    out.Write("SOLUTION\n\n");
    WriteArray(out, "PRESSURE", cells, 200.0, 300.0, 4);
    WriteArray(out, "SWAT", cells, 0.15, 0.95, 6);
    out.Write("SCHEDULE\n\nTSTEP\n   365 /\n\nEND\n");
    out.Close();
}

const char* const monthNames[] = {"JAN", "FEB", "MAR", "APR", "MAY", "JUN", "JLY", "AUG", "SEP", "OCT", "NOV", "DEC"};

/// The keywords of a schedule, one after the other: a date, then what wells and groups do from then on.
class Schedule
{
public:
    /// `wells`: how many records a keyword of rates has; the other keywords follow it.
    explicit Schedule(int wells) : m_wells(wells) {}

    void WriteNext(Output& out)
    {
        switch (m_step++ % 6) {
        case 0:
            return WriteDates(out);
        case 1:
            return WriteRates(out);
        case 2:
            return m_step % 12 < 6 ? WriteSpecs(out) : WriteTargets(out);
        case 3:
            return WriteConnections(out);
        case 4:
            return WriteProducers(out);
        default:
            return WriteInjectors(out);
        }
    }

private:
    void WriteDates(Output& out)
    {
        out.Print("DATES\n   {} '{}' {} /\n/\n\n", m_day + 1, monthNames[m_month], m_year);
        if (++m_day == 28) {
            m_day = 0;
            if (++m_month == 12) {
                m_month = 0;
                ++m_year;
            }
        }
    }

    void WriteRates(Output& out)
    {
        out.Write("WCONHIST\n-- well     state  mode     oil    water       gas            THP    BHP\n");
        for (int i = 0; i < m_wells; ++i)
            out.Print("   'PROD{:03}' 'OPEN' 'RESV' {:8.2f} {:7.2f} {:9.1f} 2* {:6.2f} {:6.2f} /\n", i + 1,
                      Rate(100, 2500), Rate(0, 900), Rate(9000, 400000), Rate(15, 90), Rate(90, 290));
        out.Write("/\n\n");
    }

    void WriteSpecs(Output& out)
    {
        out.Write("WELSPECS\n");
        for (int i = 0; i < m_wells / 5 + 1; ++i)
            out.Print("   'PROD{:03}' 'GROUP{}' {} {} {:.1f} 'OIL' 2* 'SHUT' 'YES' /\n", i + 1, i % 7 + 1,
                      m_random.Next() % 200 + 1, m_random.Next() % 150 + 1, Rate(2200, 2500));
        out.Write("/\n\n");
    }

    void WriteTargets(Output& out)
    {
        out.Write("-- Revised after the monthly test\nWELTARG\n");
        for (int i = 0; i < m_wells / 5 + 1; ++i)
            out.Print("   'PROD{:03}' 'ORAT' {:.1f} /\n", i + 1, Rate(100, 2500));
        out.Write("/\n\n");
    }

    void WriteConnections(Output& out)
    {
        out.Write("COMPDAT\n");
        for (int i = 0; i < m_wells * 4 / 5 + 1; ++i)
            out.Print("   'PROD{:03}' 2* {} {} 'OPEN' 2* 0.216 1* {:.2f} 1* 'Z' /\n", i + 1, i % 30 + 1, i % 30 + 3,
                      Rate(-2, 8));
        out.Write("/\n\n");
    }

    void WriteProducers(Output& out)
    {
        out.Write("WCONPROD\n");
        for (int i = 0; i < m_wells / 2 + 1; ++i)
            out.Print("   'PROD{:03}' 'OPEN' 'ORAT' {:.1f} 2* {:.1f} 1* {:.1f} {:.1f} {} /\n", i + 1, Rate(100, 2500),
                      Rate(900, 3500), Rate(60, 120), Rate(15, 30), i % 3 + 1);
        out.Write("/\n\n");
    }

    void WriteInjectors(Output& out)
    {
        out.Write("WCONINJE\n");
        for (int i = 0; i < m_wells / 3 + 1; ++i)
            out.Print("   'INJ{:03}' 'WATER' 'OPEN' 'RATE' {:.1f} 1* {:.1f} /\n", i + 1, Rate(500, 4500),
                      Rate(280, 390));
        out.Write("/\n\n");
    }

    double Rate(double low, double high) { return m_random.Between(low, high); }

    int m_wells;
    Random m_random{7};
    std::int64_t m_step = 0;
    int m_day = 0;
    int m_month = 0;
    int m_year = 1990;
};

/// Ten million reals in one keyword, and 200 000 records in one.
void WriteDataDecks(const std::filesystem::path& folder, double scale)
{
    const auto reals = static_cast<std::int64_t>(10000000 * scale);
    Output numbers(folder / "REALS.DATA");
    WriteRunspec(numbers, "Ten million reals", 1000, 1000,
                 static_cast<int>(std::max<std::int64_t>(1, reals / 1000000)));
    WriteArray(numbers, "PORO", reals, 0.05, 0.35, 6);
    numbers.Write("END\n");
    numbers.Close();

    Output records(folder / "RECORDS.DATA");
    WriteRunspec(records, "200 000 records", 200, 150, 30);
    records.Write("SCHEDULE\n\nCOMPDAT\n");
    Random random(11);
    for (auto i = static_cast<std::int64_t>(200000 * scale); i > 0; --i) {
        const std::uint32_t well = random.Next() % 200 + 1;
        const std::uint32_t layer = random.Next() % 28 + 1;
        records.Print("   'PROD{:03}' {} {} {} {} 'OPEN' 1* {:.2f} 0.216 {:.2f} {:.2f} 1* 'Z' /\n", well, well % 97 + 1,
                      well % 83 + 1, layer, layer + 2, random.Between(1, 90), random.Between(100, 9000),
                      random.Between(-2, 8));
    }
    records.Write("/\n\nEND\n");
    records.Close();
}

/// 60 000 keywords in a million lines, 50 MB.
void WriteScheduleDeck(const std::filesystem::path& folder, double scale)
{
    Output out(folder / "SCHEDULE.DATA");
    WriteRunspec(out, "A long schedule", 200, 150, 30);
    out.Write("SCHEDULE\n\n");
    Schedule schedule(29);
    const auto count = static_cast<std::int64_t>(60000 * scale);
    for (std::int64_t i = 0; i < count; ++i)
        schedule.WriteNext(out);
    out.Write("END\n");
    out.Close();
}

/// 200 000 keywords: once in 3 000 included files, once in one file.
void WriteIncludeDecks(const std::filesystem::path& folder, double scale)
{
    const int files = std::max(1, static_cast<int>(3000 * scale));
    const auto keywords = static_cast<std::int64_t>(200000 * scale);
    std::filesystem::create_directories(folder / "parts");

    Output top(folder / "INCLUDES.DATA");
    WriteRunspec(top, "A schedule in many files", 200, 150, 30);
    top.Write("SCHEDULE\n\n");
    Schedule cut(7);
    for (int i = 0; i < files; ++i) {
        const std::string name = fmt::format("parts/part{:04}.inc", i + 1);
        top.Print("INCLUDE\n   '{}' /\n\n", name);
        Output part(folder / name);
        for (std::int64_t k = keywords * i / files; k < keywords * (i + 1) / files; ++k)
            cut.WriteNext(part);
        part.Close();
    }
    top.Write("END\n");
    top.Close();

    Output whole(folder / "ONEFILE.DATA");
    WriteRunspec(whole, "The same schedule in one file", 200, 150, 30);
    whole.Write("SCHEDULE\n\n");
    Schedule same(7);
    for (std::int64_t k = 0; k < keywords; ++k)
        same.WriteNext(whole);
    whole.Write("END\n");
    whole.Close();
}

/// A generated schedule with a user's work in it, and the same made anew. Every second keyword of the user's replaces
/// one.
void WriteMergeDecks(const std::filesystem::path& folder, std::int64_t keywords, std::int64_t users)
{
    const std::string name = fmt::format("merge_{}_{}", keywords, users);
    std::filesystem::create_directories(folder / name);
    Output last(folder / name / "last.DATA");
    Output made(folder / name / "made.DATA");
    const std::string tag = fmt::format("{:29}-- Generated\n", "");
    const auto writeBoth = [&](const std::string& text) {
        last.Write(text);
        made.Write(text);
    };
    writeBoth("RUNSPEC\nSTART   " + tag + "   1 'JAN' 1990 /\n\nSCHEDULE\n\n");
    const std::int64_t step = std::max<std::int64_t>(1, keywords / std::max<std::int64_t>(1, users));
    for (std::int64_t i = 0; i < keywords; ++i) {
        if (i % 10 == 0) {
            const std::int64_t day = i / 10;
            writeBoth(fmt::format("DATES   {}   {} '{}' {} /\n/\n\n", tag, day % 28 + 1, monthNames[day / 28 % 12],
                                  1990 + day / 336));
            continue;
        }
        const std::string data = fmt::format("   'PROD{:03}' 'OPEN' 'ORAT' {}", i % 50, i);
        const std::string generated = "WCONHIST" + tag + data + " 1 1 /\n/\n\n";
        const bool isEdited = i % step == 1 || step == 1;
        made.Write(generated);
        last.Write(isEdited && i / step % 2 == 0 ? "WCONHIST\n" + data + " 2 2 /\n/\n\n" : generated);
        if (isEdited && i / step % 2 != 0) last.Print("WELOPEN\n   'USER{}' 'SHUT' /\n/\n\n", i);
    }
    writeBoth("END\n");
    last.Close();
    made.Close();
}

/// In twos, of which the second is twice the work of the first.
void WriteMergeDecks(const std::filesystem::path& folder, double scale)
{
    const auto keywords = static_cast<std::int64_t>(100000 * scale);
    for (const std::int64_t share : {100, 10}) {
        WriteMergeDecks(folder, keywords, keywords / share);
        WriteMergeDecks(folder, 2 * keywords, 2 * keywords / share);
    }
}

int Usage()
{
    fmt::print(stderr, "usage: generate_decks DIR [--scale FACTOR] [arrays] [schedule] [includes] [data] [merge]\n"
                       "Writes the benchmark decks into DIR; without names, all of them. FACTOR 1 is full size.\n");
    return 2;
}

} // namespace

int main(int argc, char** argv)
{
    try {
        if (argc < 2 || argv[1][0] == '-') return Usage();
        const std::filesystem::path folder = argv[1];
        double scale = 1.0;
        std::vector<std::string> names;
        for (int i = 2; i < argc; ++i) {
            const std::string word = argv[i];
            if (word == "--scale" && i + 1 < argc)
                scale = std::strtod(argv[++i], nullptr);
            else if (word == "arrays" || word == "schedule" || word == "includes" || word == "data" || word == "merge")
                names.push_back(word);
            else
                return Usage();
        }
        if (!(scale > 0.0)) return Usage();
        if (names.empty()) names = {"arrays", "schedule", "includes", "data", "merge"};

        std::filesystem::create_directories(folder);
        for (const std::string& name : names) {
            if (name == "arrays")
                WriteArraysDeck(folder, scale);
            else if (name == "schedule")
                WriteScheduleDeck(folder, scale);
            else if (name == "data")
                WriteDataDecks(folder, scale);
            else if (name == "merge")
                WriteMergeDecks(folder, scale);
            else
                WriteIncludeDecks(folder, scale);
        }
        return 0;
    } catch (const std::exception& failure) {
        fmt::print(stderr, "generate_decks: {}\n", failure.what());
        return 1;
    }
}
