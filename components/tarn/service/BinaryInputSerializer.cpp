#include <tarn/service/BinaryForm.h>
#include <tarn/service/BinaryInputSerializer.h>
#include <tarn/service/Exception.h>

#include <bit>
#include <charconv>
#include <cstdint>
#include <istream>
#include <limits>
#include <vector>

namespace Tarn::Fjel::Core::Service {

using BinaryForm::Tag;

namespace {

[[noreturn]] void ThrowDamaged()
{
    throw Exception("Serialized data are damaged.");
}

std::string ReadRest(std::istream& stream)
{
    std::string bytes;
    constexpr std::size_t chunkSize = 1 << 16;
    while (stream.good()) {
        const std::size_t size = bytes.size();
        bytes.resize(size + chunkSize);
        stream.read(bytes.data() + size, chunkSize);
        bytes.resize(size + static_cast<std::size_t>(stream.gcount()));
    }
    if (stream.bad() || !stream.eof()) throw Exception("Reading serialized data failed.");
    return bytes;
}

} // namespace

class BinaryInputSerializer::State
{
public:
    explicit State(std::istream& stream) : m_bytes(ReadRest(stream))
    {
        using namespace BinaryForm;
        const std::string_view all = m_bytes;
        if (!all.starts_with(head) || all.size() < head.size() + checksumSize) ThrowDamaged();
        const std::string_view values = all.substr(head.size(), all.size() - head.size() - checksumSize);
        m_rest = all.substr(all.size() - checksumSize);
        if (GetBytes(static_cast<int>(checksumSize)) != Checksum(values)) ThrowDamaged();
        m_rest = values;
    }

    Tag GetTag() { return static_cast<Tag>(GetByte()); }

    void GetTag(Tag tag)
    {
        if (GetTag() != tag) ThrowDamaged();
    }

    std::uint64_t GetUnsigned()
    {
        std::uint64_t value = 0;
        for (int shift = 0; shift < 64; shift += 7) {
            const std::uint64_t byte = GetByte();
            const std::uint64_t group = byte & 0x7f;
            if (shift == 63 && group > 1) ThrowDamaged();
            value |= group << shift;
            if (byte < 0x80) return value;
        }
        ThrowDamaged();
    }

    template <class Integer>
    void GetInteger(Tag tag, Integer& value)
    {
        GetTag(tag);
        if constexpr (std::numeric_limits<Integer>::is_signed) {
            const std::int64_t stored = BinaryForm::ToSigned(GetUnsigned());
            if (stored < std::numeric_limits<Integer>::min() || stored > std::numeric_limits<Integer>::max()) {
                ThrowDamaged();
            }
            value = static_cast<Integer>(stored);
        } else {
            const std::uint64_t stored = GetUnsigned();
            if (stored > std::numeric_limits<Integer>::max()) ThrowDamaged();
            value = static_cast<Integer>(stored);
        }
    }

    std::uint64_t GetBytes(int count)
    {
        std::uint64_t value = 0;
        for (int i = 0; i < count; ++i)
            value |= std::uint64_t{GetByte()} << (8 * i);
        return value;
    }

    void GetTextValue(std::string& value)
    {
        switch (GetTag()) {
        case Tag::Text:
            value.assign(m_texts.emplace_back(GetText()));
            break;
        case Tag::KnownText: {
            const std::uint64_t number = GetUnsigned();
            if (number >= m_texts.size()) ThrowDamaged();
            value.assign(m_texts[static_cast<std::size_t>(number)]);
            break;
        }
        case Tag::Decimal: {
            char digits[20];
            const std::int64_t number = BinaryForm::ToSigned(GetUnsigned());
            value.assign(digits, std::to_chars(digits, digits + sizeof digits, number).ptr);
            break;
        }
        default:
            ThrowDamaged();
        }
    }

    std::string_view GetText()
    {
        const std::uint64_t size = GetUnsigned();
        if (size > m_rest.size()) ThrowDamaged();
        const std::string_view text = m_rest.substr(0, static_cast<std::size_t>(size));
        m_rest.remove_prefix(text.size());
        return text;
    }

    /// Each element takes a byte at least, so a larger count is no count.
    int GetCount()
    {
        const std::uint64_t count = GetUnsigned();
        if (count > m_rest.size() || count > static_cast<std::uint64_t>(std::numeric_limits<int>::max())) {
            ThrowDamaged();
        }
        return static_cast<int>(count);
    }

    int GetVersion()
    {
        const std::int64_t version = BinaryForm::ToSigned(GetUnsigned());
        if (version < std::numeric_limits<int>::min() || version > std::numeric_limits<int>::max()) ThrowDamaged();
        return static_cast<int>(version);
    }

private:
    unsigned char GetByte()
    {
        if (m_rest.empty()) ThrowDamaged();
        const auto byte = static_cast<unsigned char>(m_rest.front());
        m_rest.remove_prefix(1);
        return byte;
    }

    std::string m_bytes;
    std::string_view m_rest;
    std::vector<std::string_view> m_texts; ///< those met so far
};

BinaryInputSerializer::BinaryInputSerializer(std::istream& stream) : m_state(std::make_unique<State>(stream)) {}

BinaryInputSerializer::~BinaryInputSerializer() = default;

void BinaryInputSerializer::Scalar(bool& value, std::string_view, int)
{
    unsigned char stored = 0;
    m_state->GetInteger(Tag::Bool, stored);
    if (stored > 1) ThrowDamaged();
    value = stored == 1;
}

void BinaryInputSerializer::Scalar(char& value, std::string_view, int)
{
    unsigned char stored = 0;
    m_state->GetInteger(Tag::Char, stored);
    value = static_cast<char>(stored);
}

void BinaryInputSerializer::Scalar(unsigned char& value, std::string_view, int)
{
    m_state->GetInteger(Tag::UnsignedChar, value);
}

void BinaryInputSerializer::Scalar(short& value, std::string_view, int)
{
    m_state->GetInteger(Tag::Short, value);
}

void BinaryInputSerializer::Scalar(unsigned short& value, std::string_view, int)
{
    m_state->GetInteger(Tag::UnsignedShort, value);
}

void BinaryInputSerializer::Scalar(int& value, std::string_view, int)
{
    m_state->GetInteger(Tag::Int, value);
}

void BinaryInputSerializer::Scalar(unsigned int& value, std::string_view, int)
{
    m_state->GetInteger(Tag::UnsignedInt, value);
}

void BinaryInputSerializer::Scalar(long long& value, std::string_view, int)
{
    m_state->GetInteger(Tag::LongLong, value);
}

void BinaryInputSerializer::Scalar(unsigned long long& value, std::string_view, int)
{
    m_state->GetInteger(Tag::UnsignedLongLong, value);
}

void BinaryInputSerializer::Scalar(float& value, std::string_view, int)
{
    m_state->GetTag(Tag::Float);
    value = std::bit_cast<float>(static_cast<std::uint32_t>(m_state->GetBytes(4)));
}

void BinaryInputSerializer::Scalar(double& value, std::string_view, int)
{
    m_state->GetTag(Tag::Double);
    value = std::bit_cast<double>(m_state->GetBytes(8));
}

void BinaryInputSerializer::Scalar(std::string& value, std::string_view, int)
{
    m_state->GetTextValue(value);
}

/// A text that is written otherwise than the shortest form of its number comes from no writer.
void BinaryInputSerializer::DecimalText(long long& value, std::string_view, int)
{
    m_state->GetTag(Tag::Decimal);
    value = BinaryForm::ToSigned(m_state->GetUnsigned());
}

void BinaryInputSerializer::StartArray(int& count, std::string_view, int)
{
    m_state->GetTag(Tag::ArrayBegin);
    count = m_state->GetCount();
}

void BinaryInputSerializer::EndArray()
{
    m_state->GetTag(Tag::ArrayEnd);
}

void BinaryInputSerializer::StartObject(std::string& typeName, int& version, std::string_view, int)
{
    const Tag tag = m_state->GetTag();
    typeName.clear();
    version = -1;
    if (tag == Tag::PlainObjectBegin) return;
    if (tag != Tag::ObjectBegin) ThrowDamaged();
    typeName.assign(m_state->GetText());
    version = m_state->GetVersion();
}

void BinaryInputSerializer::EndObject()
{
    m_state->GetTag(Tag::ObjectEnd);
}

} // namespace Tarn::Fjel::Core::Service
