#include <tarn/keywords/loader/CatalogueImage.h>

#include <bit>
#include <unordered_map>

namespace Tarn::Fjel::Core::Keywords::Loader {

namespace {

// The layout: the number of keywords, the place of the string table, three places for each keyword (its head, its
// texts, its data or 0), what lies there, and the string table with the ends of the strings within the characters.
constexpr std::size_t CountAt = 0;
constexpr std::size_t StringsAt = 1;
constexpr std::size_t IndexAt = 2;

std::size_t HeadAt(std::size_t keyword)
{
    return IndexAt + 3 * keyword;
}

std::size_t TextsAt(std::size_t keyword)
{
    return HeadAt(keyword) + 1;
}

std::size_t DataAt(std::size_t keyword)
{
    return HeadAt(keyword) + 2;
}

// Writing and reading go through one description of each structure, so that the two can't drift apart.
class Output
{
public:
    std::vector<std::uint32_t> words;
    std::vector<std::uint32_t> stringEnds;
    std::string characters;

    void operator()(std::uint32_t& value) { words.push_back(value); }
    void operator()(int& value) { words.push_back(static_cast<std::uint32_t>(value)); }
    void operator()(bool& value) { words.push_back(value ? 1 : 0); }
    void operator()(MDType& value) { words.push_back(static_cast<std::uint32_t>(value)); }
    void operator()(std::optional<double>& value)
    {
        words.push_back(value ? 1 : 0);
        if (!value) return;
        const auto bits = std::bit_cast<std::uint64_t>(*value);
        words.push_back(static_cast<std::uint32_t>(bits));
        words.push_back(static_cast<std::uint32_t>(bits >> 32));
    }
    void operator()(std::string& value)
    {
        const auto [place, isNew] = m_known.try_emplace(value, static_cast<std::uint32_t>(stringEnds.size()));
        if (isNew) {
            characters += value;
            stringEnds.push_back(static_cast<std::uint32_t>(characters.size()));
        }
        words.push_back(place->second);
    }
    template <class T>
    void operator()(std::vector<T>& values);

private:
    std::unordered_map<std::string, std::uint32_t> m_known;
};

class Input
{
public:
    Input(const CatalogueImage& image, std::size_t at) : m_image(image), m_at(at) {}

    void operator()(std::uint32_t& value) { value = Next(); }
    void operator()(int& value) { value = static_cast<int>(Next()); }
    void operator()(bool& value) { value = Next() != 0; }
    void operator()(MDType& value) { value = static_cast<MDType>(Next()); }
    void operator()(std::optional<double>& value)
    {
        value.reset();
        if (Next() == 0) return;
        const std::uint64_t low = Next();
        value = std::bit_cast<double>(low | std::uint64_t(Next()) << 32);
    }
    void operator()(std::string& value)
    {
        const std::size_t at = m_image.words[StringsAt] + Next();
        const std::size_t begin = m_image.words[at];
        value.assign(m_image.characters.substr(begin, m_image.words[at + 1] - begin));
    }
    template <class T>
    void operator()(std::vector<T>& values);

private:
    std::uint32_t Next() { return m_image.words[m_at++]; }

    const CatalogueImage& m_image;
    std::size_t m_at;
};

template <class Archive>
void Describe(Archive& archive, int& value)
{
    archive(value);
}

template <class Archive>
void Describe(Archive& archive, std::string& value)
{
    archive(value);
}

template <class Archive>
void Describe(Archive& archive, std::pair<int, std::vector<std::string>>& value)
{
    archive(value.first);
    archive(value.second);
}

template <class Archive>
void Describe(Archive& archive, DefaultDefinition& value)
{
    archive(value.simulators);
    archive(value.text);
}

template <class Archive>
void Describe(Archive& archive, OptionDefinition& value)
{
    archive(value.name);
    archive(value.aliases);
}

template <class Archive>
void Describe(Archive& archive, MapEntryDefinition& value)
{
    archive(value.simulators);
    archive(value.names);
    archive(value.valueNames);
}

template <class Archive>
void Describe(Archive& archive, NameDefinition& value)
{
    archive(value.name);
    archive(value.simulators);
}

template <class Archive>
void Describe(Archive& archive, ShapeDefinition& value)
{
    archive(value.type);
    archive(value.name);
    archive(value.defaultable);
    archive(value.optionalOnRead);
    archive(value.optionalOnWrite);
    switch (value.type) {
    case MDType::Record:
        archive(value.termination);
        archive(value.children);
        archive(value.identity);
        break;
    case MDType::List:
        archive(value.termination);
        archive(value.children);
        archive(value.size);
        archive(value.elementsDefaultable);
        archive(value.autoFill);
        archive(value.startsOnNewLine);
        archive(value.terminatorOnNewLine);
        archive(value.endTokens);
        archive(value.endAt);
        archive(value.endConsumes);
        break;
    case MDType::Map:
        archive(value.termination);
        archive(value.entries);
        break;
    case MDType::RawText:
        archive(value.terminator);
        break;
    default:
        archive(value.defaults);
        archive(value.unit);
        archive(value.min);
        archive(value.max);
        archive(value.format);
        archive(value.preservesCase);
        archive(value.allowsCommas);
        archive(value.maxLength);
        archive(value.options);
        break;
    }
}

template <class Archive>
void Describe(Archive& archive, KeywordHead& value)
{
    archive(value.names);
    archive(value.confidence);
    archive(value.kind);
    archive(value.sections);
    archive(value.simulators);
    archive(value.acceptsAnyName);
    archive(value.keepsLongName);
    archive(value.hasIdentity);
    archive(value.isScope);
    archive(value.closedBy);
    archive(value.closingKeyword);
    archive(value.predecessors);
}

template <class Archive>
void Describe(Archive& archive, KeywordTexts& value)
{
    archive(value.summary);
    archive(value.example);
}

template <class T>
void Output::operator()(std::vector<T>& values)
{
    words.push_back(static_cast<std::uint32_t>(values.size()));
    for (T& value : values)
        Describe(*this, value);
}

template <class T>
void Input::operator()(std::vector<T>& values)
{
    values.resize(Next());
    for (T& value : values)
        Describe(*this, value);
}

} // namespace

OwnedImage WriteImage(const std::vector<KeywordDefinition>& keywords)
{
    Output output;
    output.words.assign(HeadAt(keywords.size()), 0);
    output.words[CountAt] = static_cast<std::uint32_t>(keywords.size());
    for (std::size_t i = 0; i < keywords.size(); ++i) {
        KeywordDefinition keyword = keywords[i];
        output.words[HeadAt(i)] = static_cast<std::uint32_t>(output.words.size());
        Describe(output, keyword.head);
        output.words[TextsAt(i)] = static_cast<std::uint32_t>(output.words.size());
        Describe(output, keyword.texts);
        if (keyword.data) {
            output.words[DataAt(i)] = static_cast<std::uint32_t>(output.words.size());
            Describe(output, *keyword.data);
        }
    }
    output.words[StringsAt] = static_cast<std::uint32_t>(output.words.size());
    output.words.push_back(0);
    output.words.insert(output.words.end(), output.stringEnds.begin(), output.stringEnds.end());
    return {std::move(output.words), std::move(output.characters)};
}

std::size_t ImageReader::KeywordCount() const
{
    return m_image.words[CountAt];
}

KeywordHead ImageReader::ReadHead(std::size_t keyword) const
{
    KeywordHead head;
    Input input(m_image, m_image.words[HeadAt(keyword)]);
    Describe(input, head);
    return head;
}

KeywordTexts ImageReader::ReadTexts(std::size_t keyword) const
{
    KeywordTexts texts;
    Input input(m_image, m_image.words[TextsAt(keyword)]);
    Describe(input, texts);
    return texts;
}

bool ImageReader::HasData(std::size_t keyword) const
{
    return m_image.words[DataAt(keyword)] != 0;
}

ShapeDefinition ImageReader::ReadData(std::size_t keyword) const
{
    ShapeDefinition data;
    Input input(m_image, m_image.words[DataAt(keyword)]);
    Describe(input, data);
    return data;
}

} // namespace Tarn::Fjel::Core::Keywords::Loader
