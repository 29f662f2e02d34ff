// Lists: arrays of items against a simple model, lists of containers and what they share.
#include <optional>
#include <random>
#include <vector>

#include <gtest/gtest.h>

#include <tarn/keywords/KeywordException.h>
#include <tarn/keywords/UnsetValue.h>

#include "tests/keywords_component/SmallTree.h"

namespace Tarn::Fjel::Core::Keywords {
namespace {

std::string ListOf(const std::string& element)
{
    return R"({"type": "list", "element": )" + element + "}";
}

const std::string reals = ListOf(R"({"type": "real"})");
const std::string integers = ListOf(R"({"type": "integer"})");
const std::string strings = ListOf(R"({"type": "string"})");
const std::string tables =
    ListOf(ListOf(R"({"type": "record", "items": [{"name": "X", "type": "real"}, )" + strings + "]}"));

// One element of the model: its text, nothing for unset, and the default mark.
struct ModelElement
{
    std::optional<std::string> value;
    bool defaulted = false;

    bool operator==(const ModelElement&) const = default;
};

std::vector<ModelElement> Elements(const IKeywordListData& list)
{
    std::vector<ModelElement> elements;
    for (int i = 0; i < list.GetElementCount(); ++i) {
        const CompactString& value = list.Strings()[static_cast<std::size_t>(i)];
        ModelElement& element = elements.emplace_back();
        if (value.HasValue()) element.value = value.View();
        element.defaulted = list.IsElementDefaulted(i);
        EXPECT_EQ(list.GetElement(i).HasValue(), element.value.has_value() && !element.defaulted);
    }
    return elements;
}

TEST(ItemList, FollowsAModelThroughRandomChangesAndCopies)
{
    std::mt19937 random(42);
    SmallTree tree(strings);
    std::vector<std::unique_ptr<IKeywordData>> lists;
    std::vector<std::vector<ModelElement>> models(1);
    lists.push_back(tree.Make());
    for (int step = 0; step < 4000; ++step) {
        const std::size_t which = random() % lists.size();
        auto& list = AsList(*lists[which]);
        std::vector<ModelElement>& model = models[which];
        const auto size = static_cast<unsigned>(model.size());
        const auto at = static_cast<int>(size ? random() % size : 0);
        const std::string text(random() % 20, static_cast<char>('a' + random() % 26));
        const auto count = static_cast<std::int64_t>(random() % 4);
        switch (random() % 9) {
        case 0:
            list.AddElement();
            model.push_back({});
            break;
        case 1:
            list.AppendStringRun(text, count);
            model.insert(model.end(), static_cast<std::size_t>(count), {text, false});
            break;
        case 2:
            list.AppendDefaults(count);
            model.insert(model.end(), static_cast<std::size_t>(count), {std::nullopt, true});
            break;
        case 3:
            if (!size) break;
            list.GetElement(at).SetString(text);
            model[static_cast<std::size_t>(at)] = {text, false};
            break;
        case 4:
            if (!size) break;
            list.SetElementDefaulted(at, count % 2 != 0);
            model[static_cast<std::size_t>(at)].defaulted = count % 2 != 0;
            break;
        case 5:
        case 6:
            if (!size) break;
            list.RemoveElement(at);
            model.erase(model.begin() + at);
            break;
        case 7: {
            if (!size) break;
            const ConstSlot value = std::as_const(list).GetElement(at); // of the list that grows
            ModelElement copy = model[static_cast<std::size_t>(at)];
            list.AppendRun(value, 1);
            if (copy.defaulted) copy.value.reset();
            copy.defaulted = false;
            model.push_back(copy);
            break;
        }
        default:
            if (lists.size() < 6) {
                lists.push_back(list.CloneSafely());
                models.push_back(std::vector<ModelElement>(model));
            } else {
                lists.erase(lists.begin() + static_cast<std::ptrdiff_t>(which));
                models.erase(models.begin() + static_cast<std::ptrdiff_t>(which));
            }
        }
        if (step % 10 == 0) {
            for (std::size_t i = 0; i < lists.size(); ++i)
                ASSERT_EQ(Elements(AsList(*lists[i])), models[i]) << step;
        }
    }
}

TEST(ItemList, BulkRoadsAndSlotsSeeTheSameValues)
{
    SmallTree tree(reals);
    IKeywordListData& list = tree.List();
    const std::vector<double> block = {1.5, UnsetValue::Real, -2};
    EXPECT_EQ(list.AppendReals(block), 3);
    EXPECT_EQ(list.AppendRealRun(7, 100000), 100000);
    const Slot last = list.GetElement(2);
    list.AppendDefaults(2);
    EXPECT_EQ(last.GetReal(), -2); // the handle follows the list through its growth
    EXPECT_EQ(list.GetElementCount(), 100005);
    EXPECT_EQ(list.Reals()[100002], 7);
    EXPECT_FALSE(list.GetElement(1).HasValue() || list.GetElement(100004).HasValue());
    EXPECT_TRUE(list.HasDefaultedElements());
    list.MutableReals()[0] = 9;
    EXPECT_EQ(list.GetElement(0).GetReal(), 9);
    list.GetElement(100003).SetReal(1);
    EXPECT_FALSE(list.IsElementDefaulted(100003));
    list.GetElement(100004).SetUnset();
    EXPECT_TRUE(list.IsElementDefaulted(100004));
    list.Clear();
    EXPECT_EQ(list.GetElementCount(), 0);
    EXPECT_TRUE(list.Reals().empty());
}

TEST(ItemList, RefusesValuesOfOtherKinds)
{
    SmallTree ofReals(reals);
    SmallTree ofIntegers(integers);
    ofReals.List().AddElement();
    ofIntegers.List().AddElement();
    EXPECT_THROW(ofReals.List().Integers(), KeywordException);
    EXPECT_THROW(ofReals.List().AppendIntegerRun(1, 1), KeywordException);
    EXPECT_THROW(ofIntegers.List().Options(), KeywordException);
    EXPECT_THROW(ofIntegers.List().AppendOptionRun(1, 1), KeywordException);
    EXPECT_THROW(ofIntegers.List().GetElement(0).GetReal(), KeywordException);
    const ConstSlot real = ofReals.List().GetElement(0);
    EXPECT_THROW(ofIntegers.List().AddElement(&real), KeywordException);
    EXPECT_THROW(ofReals.List().GetElement(1), KeywordException);
    EXPECT_THROW(ofReals.List().RemoveElement(-1), KeywordException);
    EXPECT_THROW(ofReals.List().GetContainer(0), KeywordException);
    EXPECT_EQ(ofIntegers.List().GetElementCount(), 1);
}

TEST(ItemList, HoldsFourGibibytesAndNoMore)
{
    SmallTree tree(reals);
    EXPECT_EQ(tree.List().GetRoom(), std::int64_t(1) << 29);
    EXPECT_EQ(SmallTree(ListOf(R"({"type": "yesNo"})")).List().GetRoom(), 2147483647);
    EXPECT_EQ(tree.List().AppendRealRun(1, -5), 0);

    // The blocks of long strings count with the slots that they hang on.
    SmallTree texts(strings);
    EXPECT_EQ(texts.List().GetRoom(), std::int64_t(1) << 28);
    texts.List().AppendStringRun("FIFTEEN LETTERS", 2);
    EXPECT_EQ(texts.List().GetRoom(), (std::int64_t(1) << 28) - 2);
    texts.List().AppendStringRun(std::string(1 << 20, 'x'), 3);
    EXPECT_LT(texts.List().GetRoom(), (std::int64_t(1) << 28) - 3 * (1 << 16));
    for (int i = 0; i < 3; ++i)
        texts.List().RemoveElement(2);
    EXPECT_EQ(texts.List().GetRoom(), (std::int64_t(1) << 28) - 2);
    EXPECT_EQ(texts.List().Strings()[1].View(), "FIFTEEN LETTERS");
}

TEST(ContainerList, ElementsKeepTheirAddress)
{
    SmallTree tree(tables);
    std::vector<IKeywordData*> addresses;
    for (int i = 0; i < 100; ++i) {
        tree.List().AddElement();
        addresses.push_back(&tree.List().GetContainer(i));
    }
    tree.List().RemoveElement(50);
    addresses.erase(addresses.begin() + 50);
    for (int i = 0; i < 99; ++i)
        EXPECT_EQ(&tree.List().GetContainer(i), addresses[static_cast<std::size_t>(i)]);
    EXPECT_THROW(tree.List().SetElementDefaulted(0, true), KeywordException);
    EXPECT_FALSE(tree.List().IsElementDefaulted(0));
    EXPECT_THROW(tree.List().AppendDefaults(1), KeywordException);
}

IKeywordListData& AddTable(IKeywordListData& list, int rows)
{
    list.AddElement();
    auto& table = AsList(list.GetContainer(list.GetElementCount() - 1));
    for (int row = 0; row < rows; ++row) {
        table.AddElement();
        auto& record = AsRecord(table.GetContainer(row));
        record.GetItem(0).SetReal(row);
        AsList(record.GetContainer(1)).AppendStringRun("word", 2);
    }
    return table;
}

double FirstValue(const IKeywordListData& list, int table)
{
    return AsRecord(AsList(list.GetContainer(table)).GetContainer(0)).GetItem(0).GetReal();
}

TEST(ContainerList, FilledInElementsPartWhenOneIsChanged)
{
    SmallTree tree(tables);
    IKeywordListData& list = tree.List();
    AddTable(list, 3);
    list.AddElement();
    list.AddElement();
    list.SetElement(1, list.GetContainer(0));
    list.SetElement(2, list.GetContainer(1));
    const IKeywordListData& seen = list;
    const IKeywordData* row = &AsList(seen.GetContainer(0)).GetContainer(1);
    EXPECT_EQ(&AsList(seen.GetContainer(2)).GetContainer(1), row); // not copied

    const auto copy = list.CloneSafely(); // keeps the sharing within itself
    const auto& copied = AsList(std::as_const(*copy));
    EXPECT_EQ(&AsList(copied.GetContainer(0)).GetContainer(1), &AsList(copied.GetContainer(2)).GetContainer(1));
    EXPECT_NE(&AsList(copied.GetContainer(0)).GetContainer(1), row);

    // Whoever changes first parts; the first table's own rows stay where they are.
    AsRecord(AsList(list.GetContainer(0)).GetContainer(0)).GetItem(0).SetReal(10);
    EXPECT_EQ(&AsList(seen.GetContainer(0)).GetContainer(1), row);
    EXPECT_EQ(FirstValue(list, 0), 10);
    EXPECT_EQ(FirstValue(list, 1), 0);
    AsRecord(AsList(list.GetContainer(2)).GetContainer(0)).GetItem(0).SetReal(30);
    EXPECT_EQ(FirstValue(list, 1), 0);
    EXPECT_EQ(FirstValue(list, 2), 30);
    EXPECT_EQ(FirstValue(copied, 0), 0);

    AsList(list.GetContainer(1)).RemoveElement(0);
    EXPECT_EQ(AsList(seen.GetContainer(1)).GetElementCount(), 2);
    EXPECT_EQ(AsList(seen.GetContainer(2)).GetElementCount(), 3);
}

TEST(ContainerList, FilledInElementsCostAHandleEach)
{
    SmallTree tree(tables);
    IKeywordListData& list = tree.List();
    AddTable(list, 1000);
    for (int i = 1; i < 200000; ++i) {
        list.AddElement();
        list.SetElement(i, list.GetContainer(i - 1));
    }
    const auto copy = list.CloneSafely(); // would hold 200 million records if each table were copied
    EXPECT_EQ(AsList(AsList(std::as_const(*copy)).GetContainer(199999)).GetElementCount(), 1000);
    while (list.GetElementCount() > 199000)
        list.RemoveElement(list.GetElementCount() - 1);
    EXPECT_EQ(FirstValue(list, 0), 0);
}

TEST(ContainerList, ElementsFromElsewhereAreCopied)
{
    SmallTree tree(tables);
    AddTable(tree.List(), 2);
    const auto other = tree.Make();
    AsList(*other).AddElement(tree.List().GetContainer(0));
    AsList(*other).AddElement();
    AsList(*other).SetElement(1, tree.List().GetContainer(0));
    AsRecord(AsList(tree.List().GetContainer(0)).GetContainer(0)).GetItem(0).SetReal(5);
    EXPECT_EQ(FirstValue(AsList(*other), 0), 0);
    EXPECT_EQ(FirstValue(AsList(*other), 1), 0);
    EXPECT_THROW(AsList(*other).AddElement(*other), KeywordException);
    EXPECT_EQ(AsList(*other).GetElementCount(), 2);
}

} // namespace
} // namespace Tarn::Fjel::Core::Keywords
