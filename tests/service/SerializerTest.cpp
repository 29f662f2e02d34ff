#include <tarn/service/BinaryInputSerializer.h>
#include <tarn/service/BinaryOutputSerializer.h>
#include <tarn/service/Exception.h>
#include <tarn/service/Serializer.h>
#include <tarn/service/Time.h>
#include <tarn/service/XMLInputSerializer.h>
#include <tarn/service/XMLOutputSerializer.h>

#include <cstdint>
#include <limits>
#include <random>
#include <tuple>

namespace Tarn::Fjel::Core::Service {
namespace {

/// One value of each kind, at an end of its range.
struct Scalars : ISerializable
{
    bool b = false;
    char c = 0;
    unsigned char uc = 0;
    short s = 0;
    unsigned short us = 0;
    int i = 0;
    unsigned int ui = 0;
    long long ll = 0;
    unsigned long long ull = 0;
    float f = 0;
    double d = 0;
    std::string text;

    auto Values() const { return std::tie(b, c, uc, s, us, i, ui, ll, ull, f, d, text); }

    void Serialize(Serializer& serializer) override
    {
        ISerializerImpl& impl = serializer.Impl();
        impl.Scalar(b, "b", 0);
        impl.Scalar(c, "c", 0);
        impl.Scalar(uc, "uc", 0);
        impl.Scalar(s, "s", 0);
        impl.Scalar(us, "us", 0);
        impl.Scalar(i, "i", 0);
        impl.Scalar(ui, "ui", 0);
        impl.Scalar(ll, "ll", 0);
        impl.Scalar(ull, "ull", 0);
        impl.Scalar(f, "f", 0);
        impl.Scalar(d, "d", 0);
        impl.Scalar(text, "text", 0);
    }
};

/// A shape like that of a table of entries.
struct Table : ISerializable
{
    struct Entry : ISerializable
    {
        std::string name;
        Time stamp;
        std::vector<int> numbers;

        void Serialize(Serializer& serializer) override
        {
            serializer.SerializeImpl(name, "name");
            serializer.SerializeImpl(stamp, "stamp");
            int count = static_cast<int>(numbers.size());
            serializer.StartArray(count, "numbers");
            numbers.resize(static_cast<std::size_t>(count));
            for (int k = 0; k < count; ++k)
                serializer.SerializeImpl(numbers[static_cast<std::size_t>(k)], "a", k);
            serializer.EndArray();
        }
    };

    int version = 1;
    std::vector<Entry> entries;

    void Serialize(Serializer& serializer) override
    {
        serializer.SerializeImpl(version, "version");
        int count = static_cast<int>(entries.size());
        serializer.StartArray(count, "cache");
        entries.resize(static_cast<std::size_t>(count));
        for (int k = 0; k < count; ++k) {
            std::string typeName;
            int entryVersion = -1;
            serializer.StartObject(typeName, entryVersion, "a", k);
            EXPECT_EQ(typeName, "");
            EXPECT_EQ(entryVersion, -1);
            serializer.SerializeImpl(entries[static_cast<std::size_t>(k)], "y");
            serializer.EndObject();
        }
        serializer.EndArray();
    }
};

std::string Write(ISerializable& value, bool xml)
{
    std::ostringstream stream;
    if (xml) {
        XMLOutputSerializer impl(stream, "deck");
        Serializer serializer(impl);
        EXPECT_TRUE(serializer.IsWriting() && !serializer.IsReading());
        value.Serialize(serializer);
        impl.Finish();
    } else {
        BinaryOutputSerializer impl(stream);
        Serializer serializer(impl);
        value.Serialize(serializer);
        // the destructor finishes as well
    }
    return stream.str();
}

void Read(ISerializable& value, const std::string& bytes, bool xml)
{
    std::istringstream stream(bytes);
    if (xml) {
        XMLInputSerializer impl(stream, "deck");
        Serializer serializer(impl);
        EXPECT_TRUE(serializer.IsReading() && !serializer.IsWriting());
        value.Serialize(serializer);
    } else {
        BinaryInputSerializer impl(stream);
        Serializer serializer(impl);
        value.Serialize(serializer);
    }
}

class SerializerTest : public ::testing::TestWithParam<bool>
{
};

TEST_P(SerializerTest, EveryScalarComesBack)
{
    Scalars low;
    low.s = std::numeric_limits<short>::min();
    low.i = std::numeric_limits<int>::min();
    low.ll = std::numeric_limits<long long>::min();
    low.f = -std::numeric_limits<float>::denorm_min();
    low.d = std::numeric_limits<double>::lowest();
    low.text = " \t<&>\"'\\x41\\\r\n ";
    Scalars high;
    high.b = true;
    high.c = static_cast<char>(0xe9);
    high.uc = 255;
    high.s = std::numeric_limits<short>::max();
    high.us = std::numeric_limits<unsigned short>::max();
    high.i = std::numeric_limits<int>::max();
    high.ui = std::numeric_limits<unsigned int>::max();
    high.ll = std::numeric_limits<long long>::max();
    high.ull = std::numeric_limits<unsigned long long>::max();
    high.f = std::numeric_limits<float>::infinity();
    high.d = 0.1;
    for (int c = 0; c < 256; ++c)
        high.text += static_cast<char>(c);
    for (Scalars value : {Scalars(), low, high}) {
        Scalars back;
        Read(back, Write(value, GetParam()), GetParam());
        EXPECT_EQ(back.text, value.text);
        EXPECT_TRUE(back.Values() == value.Values());
    }
}

TEST_P(SerializerTest, TextsOfAnyBytesComeBack)
{
    const std::string texts[] = {"",
                                 "sub/\xc3\xa9t\xc3\xa9.inc",
                                 "caf\xe9.inc",
                                 "\xc0\x80",
                                 "\xed\xa0\x80",
                                 "\xef\xbf\xbf",
                                 "\xf0\x9f\x9b\xa2",
                                 "\xf5\x80\x80\x80",
                                 "\xc3",
                                 "\\",
                                 "\x7f",
                                 std::string(100000, '\\'),
                                 std::string("a\0b", 3),
                                 "0",
                                 "-0",
                                 "-17",
                                 "007",
                                 "+1",
                                 "1 ",
                                 "9223372036854775807",
                                 "-9223372036854775808",
                                 "9223372036854775808"};
    for (const std::string& text : texts) {
        Table table;
        table.entries.resize(1);
        table.entries[0].name = text;
        Table back;
        Read(back, Write(table, GetParam()), GetParam());
        ASSERT_EQ(back.entries.size(), 1u);
        EXPECT_EQ(back.entries[0].name, text);
    }
}

TEST(BinarySerializer, TextsAndNumbersThatAreTextsTakeLittle)
{
    Table table;
    table.entries.resize(1000);
    for (std::size_t i = 0; i < table.entries.size(); ++i)
        table.entries[i].name = i % 2 == 0 ? "a long name that comes again" : std::to_string(1'000'000'000 + i);
    const std::string bytes = Write(table, false);
    EXPECT_LE(bytes.size(), table.entries.size() * 25);
    Table back;
    Read(back, bytes, false);
    for (std::size_t i = 0; i < table.entries.size(); ++i)
        ASSERT_EQ(back.entries[i].name, table.entries[i].name);
}

/// A number and a text, each of which reads what the other has written.
struct Decimal : ISerializable
{
    explicit Decimal(bool asText) : isText(asText) {}
    bool isText;
    long long number = 0;
    std::string text;

    void Serialize(Serializer& serializer) override
    {
        if (isText) {
            serializer.SerializeImpl(text, "d");
        } else {
            serializer.SerializeDecimal(number, "d");
        }
    }
};

TEST_P(SerializerTest, ANumberAsTextIsThatText)
{
    for (const long long number :
         {0LL, -1LL, 5'000'000'000LL, std::numeric_limits<long long>::max(), std::numeric_limits<long long>::min()})
    {
        Decimal written(false);
        written.number = number;
        Decimal text(true);
        text.text = std::to_string(number);
        const std::string bytes = Write(written, GetParam());
        EXPECT_EQ(Write(text, GetParam()), bytes);
        Decimal back(false);
        Read(back, bytes, GetParam());
        EXPECT_EQ(back.number, number);
        Read(text, bytes, GetParam());
        EXPECT_EQ(text.text, std::to_string(number));
    }
    for (const char* none : {"", "x", "1x", " 1", "9223372036854775808"}) {
        Decimal text(true);
        text.text = none;
        Decimal back(false);
        EXPECT_THROW(Read(back, Write(text, GetParam()), GetParam()), Exception) << none;
    }
}

TEST_P(SerializerTest, TablesComeBackWithTimesAndEmptyArrays)
{
    Table table;
    table.entries.resize(3);
    table.entries[0].stamp = Time(2024, 5, 6, 7, 8, 9, 123);
    table.entries[2].numbers = {0, -1, 2147483647};
    Table back;
    back.entries.resize(7);
    Read(back, Write(table, GetParam()), GetParam());
    ASSERT_EQ(back.entries.size(), 3u);
    EXPECT_EQ(back.entries[0].stamp, table.entries[0].stamp);
    EXPECT_FALSE(back.entries[1].stamp.IsDef());
    EXPECT_TRUE(back.entries[0].numbers.empty());
    EXPECT_EQ(back.entries[2].numbers, table.entries[2].numbers);
}

TEST_P(SerializerTest, DamagedInputThrowsOrReadsButNeverMore)
{
    Table table;
    table.entries.resize(5);
    for (Table::Entry& entry : table.entries) {
        entry.name = "a/b.inc";
        entry.numbers = {1, 200, 30000};
    }
    const std::string good = Write(table, GetParam());

    // The binary form notices every change of a byte; XML may read another number.
    std::mt19937 random(7);
    for (int round = 0; round < 3000; ++round) {
        std::string bad = good;
        const std::size_t at = random() % bad.size();
        switch (random() % 3) {
        case 0:
            bad[at] = static_cast<char>(bad[at] ^ (1 << (random() % 8)));
            break;
        case 1:
            bad.erase(at, 1 + random() % 9);
            break;
        default:
            bad.insert(at, bad, random() % bad.size(), 1 + random() % 9);
            break;
        }
        Table back;
        if (GetParam()) {
            try {
                Read(back, bad, true);
            } catch (const Exception&) {
            }
        } else if (bad != good) {
            EXPECT_THROW(Read(back, bad, false), Exception);
        }
    }
    for (const std::string& text :
         {std::string(), std::string("x"), good.substr(0, good.size() / 2), Write(table, !GetParam())})
    {
        Table back;
        EXPECT_THROW(Read(back, text, GetParam()), Exception);
    }
}

TEST_P(SerializerTest, ValuesOfAnotherKindOrOrderThrow)
{
    Scalars scalars;
    const std::string bytes = Write(scalars, GetParam());
    Table table;
    EXPECT_THROW(Read(table, bytes, GetParam()), Exception);
}

TEST_P(SerializerTest, AStreamThatFailsShows)
{
    std::ostringstream stream;
    stream.setstate(std::ios::badbit);
    Table table;
    if (GetParam()) {
        XMLOutputSerializer impl(stream, "deck");
        EXPECT_THROW(impl.Finish(), Exception);
    } else {
        BinaryOutputSerializer impl(stream);
        EXPECT_THROW(impl.Finish(), Exception);
    }
}

INSTANTIATE_TEST_SUITE_P(Forms, SerializerTest, ::testing::Bool(),
                         [](const auto& form) { return form.param ? "XML" : "Binary"; });

TEST(XMLSerializer, CountsAreBoundByTheElementsThatAreThere)
{
    for (const char* count : {"2000000000", "-1", "2", "x", ""}) {
        Table back;
        EXPECT_THROW(
            Read(back, std::string("<deck><version v='1'/><cache n='") + count + "'><a><y/></a></cache></deck>", true),
            Exception)
            << count;
    }
}

TEST(XMLSerializer, TheRootHasToBearTheName)
{
    Table back;
    EXPECT_THROW(Read(back, "<other><version v='1'/><cache n='0'/></other>", true), Exception);
    EXPECT_NO_THROW(Read(back, "<?xml version='1.0'?>\r\n<deck><version v='1'/><cache n='0'/></deck>", true));
    EXPECT_THROW(Read(back, std::string(200000, '<'), true), Exception);
}

} // namespace
} // namespace Tarn::Fjel::Core::Service
