#pragma once

// Trees of any keyword, filled at random.

#include <array>
#include <cstdint>
#include <limits>
#include <random>

#include "keywords/KeywordDataSerializer.h"
#include "tests/keywords/DataReading.h"
#include "tests/support/TestDeck.h"
#include "text/LineStringWriter.h"
#include <tarn/keywords/IKeywordStringMD.h>
#include <tarn/keywords/KeywordUtils.h>
#include <tarn/service/Strings.h>

namespace TreeMaking {

using namespace Tarn::Fjel::Core;
using Keywords::IKeywordData;
using Keywords::IKeywordListData;
using Keywords::IKeywordMD;
using Keywords::IKeywordRecordData;
using Keywords::MDType;
using Keywords::Termination;

inline std::string WriteTree(const IKeywordData& data)
{
    DeckManager::LineStringWriter writer;
    DeckManager::KeywordDataSerializer::Serialize(data, writer, false, Keywords::SimulatorType::Any);
    return writer.GetText();
}

/// Fills trees with values such as a read can give: what no text can tell apart isn't made.
class TreeMaker
{
public:
    TreeMaker(std::uint64_t seed, const DeckManager::Context& context) : m_random(seed), m_context(context) {}

    void Fill(const Keywords::IKeywordSyntax& syntax, IKeywordData& root)
    {
        m_name = syntax.GetName();
        m_root = &root;
        m_longWords = m_name != "UDQ";
        if (m_name == "UDT")
            FillUDT(Record(root));
        else if (m_name == "OILVISCC")
            FillOILVISCC(List(root));
        else
            FillContainer(root, true);
    }

private:
    static IKeywordListData& List(IKeywordData& data) { return static_cast<IKeywordListData&>(data); }
    static IKeywordRecordData& Record(IKeywordData& data) { return static_cast<IKeywordRecordData&>(data); }
    static IKeywordData& Add(IKeywordListData& list)
    {
        list.AddElement();
        return list.GetContainer(list.GetElementCount() - 1);
    }

    int UpTo(int most) { return std::uniform_int_distribution<int>(0, most)(m_random); }
    bool OneIn(int n) { return UpTo(n - 1) == 0; }

    std::string Word()
    {
        static const std::string common = "ABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_";
        static const std::string special = " -+.*,/\\$#:=()\t\"&%@!\xE4";
        if (OneIn(20)) return "";
        std::string word;
        const int length = 1 + (OneIn(20) && m_longWords ? UpTo(120) : UpTo(8));
        while (static_cast<int>(word.size()) < length) {
            const std::string& from = OneIn(5) ? special : common;
            word += from[static_cast<std::size_t>(UpTo(static_cast<int>(from.size()) - 1))];
        }
        const std::string_view trimmed = Service::Trimmed(word);
        // A "/" ends a container and, in a list, "1*" is a default, with quotes too.
        return trimmed == "/" || trimmed == "1*" ? "X" : std::string(trimmed);
    }

    double Real()
    {
        switch (UpTo(5)) {
        case 0:
            return 0.0;
        case 1:
            return UpTo(100000);
        case 2:
            return -UpTo(1000000) / 1000.0;
        case 3:
            return OneIn(2) ? std::numeric_limits<double>::infinity() : -0.0;
        default: {
            // Fifteen digits and any exponent.
            const long long digits =
                std::uniform_int_distribution<long long>(-999999999999999, 999999999999999)(m_random);
            return std::stod(fmt::format("{}e{}", digits, UpTo(400) - 250));
        }
        }
    }

    void SetItem(Keywords::Slot slot, const Keywords::IKeywordItemMD& md)
    {
        switch (md.GetType()) {
        case MDType::YesNo:
            slot.SetYesNo(OneIn(2) ? 1 : 0);
            break;
        case MDType::Option:
            slot.SetOption(UpTo(static_cast<const Keywords::IKeywordOptionMD&>(md).GetOptionCount() - 1));
            break;
        case MDType::Integer:
            slot.SetInteger(OneIn(4) ? 2147483647 - UpTo(5) : UpTo(100) - 50);
            break;
        case MDType::Real:
            slot.SetReal(Real());
            break;
        case MDType::RestOfLine:
            slot.SetString("A title, with  'words' / and -- marks");
            break;
        default:
            slot.SetString(Word());
        }
    }

    /// The number of elements that the list's size tells; -1 if nothing does.
    int SizeOf(const Keywords::IKeywordListMD& md)
    {
        const std::string* const expression = md.GetSizeExpression();
        if (!expression || md.GetTermination() != Termination::None || &md == m_root->GetMetaData()) return -1;
        const auto count = [&](int item) { return List(Record(*m_root).GetContainer(item)).GetElementCount(); };
        if (*expression == "self:SIZEPRSVALUES") return count(2);
        if (*expression == "self:SIZEFLOVALUES") return count(1);
        if (*expression == "self:SIZEVALUESLIST") return count(2) * count(3) * count(4) * count(5);
        int size = 0;
        return m_context.EvaluateIntegerExpr(*expression, size) ? size : -1;
    }

    void FillItems(IKeywordListData& list, int size, bool mayBeEmpty)
    {
        const Keywords::IKeywordListMD& md = *list.GetListMD();
        // A definition of UDQ stands on one line.
        int count = size >= 0 ? size : OneIn(6) && m_longWords ? UpTo(40) : UpTo(m_longWords ? 6 : 4);
        if (count == 0 && size < 0 && !mayBeEmpty) count = 1;
        while (list.GetElementCount() < count) {
            const int run = std::min(count - list.GetElementCount(), OneIn(3) ? 1 + UpTo(12) : 1);
            if (md.AllowsDefaultElements() && OneIn(4)) {
                list.AppendDefaults(run);
                continue;
            }
            list.AddElement();
            const int last = list.GetElementCount() - 1;
            SetItem(list.GetElement(last), static_cast<const Keywords::IKeywordItemMD&>(*md.GetElementMD()));
            for (int copy = 1; copy < run; ++copy) {
                const Keywords::ConstSlot value = list.GetElement(last);
                list.AddElement(&value);
            }
        }
    }

    void FillContainer(IKeywordData& data, bool isRoot, bool mayBeEmpty = true)
    {
        switch (data.GetType()) {
        case MDType::Record:
            FillRecord(Record(data));
            break;
        case MDType::List: {
            IKeywordListData& list = List(data);
            const int size = SizeOf(*list.GetListMD());
            const IKeywordMD& element = *list.GetListMD()->GetElementMD();
            if (Keywords::KeywordUtils::IsItemMDType(&element)) {
                FillItems(list, size, mayBeEmpty && list.GetListMD()->GetTermination() == Termination::Slash);
                break;
            }
            // An element given as its terminator alone repeats the one before, and an inner table without rows would
            // end the list around it: tables have rows.
            const int count = size >= 0 ? size
                              : isRoot && list.GetListMD()->GetTermination() == Termination::Slash && OneIn(8)
                                  ? 0
                                  : 1 + UpTo(3);
            while (list.GetElementCount() < count)
                FillContainer(Add(list), false, list.GetListMD()->GetTermination() != Termination::Slash);
            break;
        }
        case MDType::Map: {
            auto& map = static_cast<Keywords::IKeywordMapData&>(data);
            for (int index = 0; index < map.GetEntryCount(); ++index) {
                if (OneIn(4)) map.SetEntry(index, OneIn(2) ? 1 : OneIn(2) ? 2 + UpTo(8) : -1 - UpTo(8));
            }
            break;
        }
        default: {
            std::string text;
            for (int line = 1 + UpTo(4); line > 0; --line)
                text += "  def f(x): # '" + std::to_string(UpTo(1000)) + " / -- \n";
            static_cast<Keywords::IKeywordRawTextData&>(data).SetText(text);
        }
        }
    }

    void FillRecord(IKeywordRecordData& record)
    {
        const Keywords::IKeywordRecordMD& md = *record.GetRecordMD();
        const bool wholeLine = md.GetItemCount() > 0 && md.GetItemMD(0)->GetType() == MDType::RestOfLine;
        for (int index = 0; index < md.GetItemCount(); ++index) {
            const IKeywordMD* const itemMD = md.GetItemMD(index);
            if (!Keywords::KeywordUtils::IsItemMDType(itemMD))
                FillContainer(record.GetContainer(index), false);
            else if (wholeLine || m_name == "UDQ" || !OneIn(3))
                SetItem(record.GetItem(index), static_cast<const Keywords::IKeywordItemMD&>(*itemMD));
        }
    }

    /// Rows for each value of the dimensions beyond the first, and an empty one behind the last of each.
    void FillUDT(IKeywordRecordData& root)
    {
        const int dimensions = 1 + UpTo(3);
        std::array<int, 4> counts{};
        auto& header = Record(root.GetContainer(0));
        header.GetItem(0).SetString(Word());
        header.GetItem(1).SetInteger(dimensions);
        for (int index = 0; index < dimensions; ++index) {
            auto& dimension = Record(Add(List(root.GetContainer(1))));
            SetItem(dimension.GetItem(0),
                    static_cast<const Keywords::IKeywordItemMD&>(*dimension.GetRecordMD()->GetItemMD(0)));
            auto& points = List(dimension.GetContainer(1));
            counts[static_cast<std::size_t>(index)] = 1 + UpTo(3);
            while (points.GetElementCount() < counts[static_cast<std::size_t>(index)])
                points.AppendStringRun(fmt::format("{}.5", UpTo(100)), 1);
        }
        auto& rows = List(root.GetContainer(2));
        const auto addRow = [&](int count) {
            auto& row = List(Record(Add(rows)).GetContainer(0));
            while (row.GetElementCount() < count)
                row.AppendRealRun(Real(), 1);
        };
        for (int outer = 0; outer <= counts[3]; ++outer) {
            if (outer > 0 && outer == counts[3]) {
                addRow(0);
                continue;
            }
            for (int middle = 0; middle <= counts[2]; ++middle) {
                if (middle > 0 && middle == counts[2]) {
                    addRow(0);
                    continue;
                }
                for (int inner = 0; inner <= counts[1]; ++inner)
                    addRow(inner > 0 && inner == counts[1] ? 0 : counts[0]);
            }
        }
    }

    /// As many values in each group as the names of formula and source tell.
    void FillOILVISCC(IKeywordListData& root)
    {
        for (int tables = 1 + UpTo(2); tables > 0; --tables) {
            auto& table = List(Add(root));
            for (int records = 1 + UpTo(2); records > 0; --records) {
                auto& record = Record(Add(table));
                const auto& md = *record.GetRecordMD();
                record.GetItem(0).SetOption(
                    static_cast<const Keywords::IKeywordOptionMD&>(*md.GetItemMD(0)).GetOptionIndex("ASTM"));
                record.GetItem(1).SetOption(
                    static_cast<const Keywords::IKeywordOptionMD&>(*md.GetItemMD(1)).GetOptionIndex("CORRELATION"));
                const int k = 1 + UpTo(8);
                for (const int size : {k + 1, k + 1, k}) {
                    auto& group = List(Add(List(record.GetContainer(2))));
                    while (group.GetElementCount() < size)
                        OneIn(4) ? group.AppendDefaults(1) : group.AppendRealRun(Real(), 1);
                }
            }
        }
    }

    std::mt19937_64 m_random;
    const DeckManager::Context& m_context;
    std::string m_name;
    IKeywordData* m_root = nullptr;
    bool m_longWords = true;
};

/// A deck that tells the sizes of tables.
class SizedDeck
{
public:
    SizedDeck() : m_deck(TestSupport::TestDeck::Texts{{"A.DATA", text}}) { m_context.Bind(&m_deck.Keywords()); }
    const DeckManager::Context& GetContext() const { return m_context; }

private:
    static constexpr const char* text = "RUNSPEC\nDIMENS\n 2 3 4 /\nTABDIMS\n 2 2 20 20 2 20 /\nREGDIMS\n 2 2 2 2 /\n"
                                        "EQLDIMS\n 2 /\nWELLDIMS\n 9 9 9 9 /\nCOMPS\n 3 /\nENDSCALE\n/\nGRID\n";
    TestSupport::CleanEnvironment m_clean;
    TestSupport::TestDeck m_deck;
    DeckManager::Context m_context;
};

} // namespace TreeMaking
