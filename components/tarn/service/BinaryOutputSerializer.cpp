#include <tarn/service/BinaryForm.h>
#include <tarn/service/BinaryOutputSerializer.h>
#include <tarn/service/Exception.h>

#include <bit>
#include <charconv>
#include <cstdint>
#include <ostream>
#include <unordered_map>

namespace Tarn::Fjel::Core::Service {

using BinaryForm::Tag;

namespace {

/// The integer whose shortest decimal form the text is.
bool IsDecimal(std::string_view text, std::int64_t& value)
{
    constexpr std::size_t longest = 20;
    if (text.empty() || text.size() > longest) return false;
    const auto [stop, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || stop != text.data() + text.size()) return false;
    char digits[longest];
    const char* const end = std::to_chars(digits, digits + longest, value).ptr;
    return std::string_view(digits, static_cast<std::size_t>(end - digits)) == text;
}

} // namespace

/// The whole is held until Finish, so that a value that throws leaves no half of it in the stream.
class BinaryOutputSerializer::State
{
public:
    explicit State(std::ostream& stream) : m_stream(stream) {}

    void PutTag(Tag tag) { m_bytes += static_cast<char>(tag); }

    void PutUnsigned(std::uint64_t value)
    {
        for (; value >= 0x80; value >>= 7)
            m_bytes += static_cast<char>(value | 0x80);
        m_bytes += static_cast<char>(value);
    }

    void PutSigned(std::int64_t value) { PutUnsigned(BinaryForm::ToUnsigned(value)); }

    void PutBytes(std::uint64_t value, int count)
    {
        for (int i = 0; i < count; ++i)
            m_bytes += static_cast<char>(value >> (8 * i));
    }

    void PutTextValue(const std::string& text)
    {
        std::int64_t decimal = 0;
        if (IsDecimal(text, decimal)) {
            PutTag(Tag::Decimal);
            PutSigned(decimal);
            return;
        }
        const auto [known, isNew] = m_texts.emplace(text, m_texts.size());
        PutTag(isNew ? Tag::Text : Tag::KnownText);
        if (isNew) {
            PutText(text);
        } else {
            PutUnsigned(known->second);
        }
    }

    void PutText(std::string_view text)
    {
        PutUnsigned(text.size());
        m_bytes.append(text);
    }

    void Finish()
    {
        if (m_finished) return;
        m_finished = true;
        const std::uint64_t checksum = BinaryForm::Checksum(m_bytes);
        PutBytes(checksum, static_cast<int>(BinaryForm::checksumSize));
        m_stream.write(BinaryForm::head.data(), static_cast<std::streamsize>(BinaryForm::head.size()));
        m_stream.write(m_bytes.data(), static_cast<std::streamsize>(m_bytes.size()));
        m_stream.flush();
        if (!m_stream) throw Exception("Writing serialized data failed.");
    }

private:
    std::ostream& m_stream;
    std::string m_bytes;
    std::unordered_map<std::string, std::uint64_t> m_texts; ///< their numbers
    bool m_finished = false;
};

BinaryOutputSerializer::BinaryOutputSerializer(std::ostream& stream) : m_state(std::make_unique<State>(stream)) {}

BinaryOutputSerializer::~BinaryOutputSerializer()
{
    try {
        m_state->Finish();
    } catch (...) { // the stream's state tells
    }
}

void BinaryOutputSerializer::Finish()
{
    m_state->Finish();
}

void BinaryOutputSerializer::Scalar(bool& value, std::string_view, int)
{
    m_state->PutTag(Tag::Bool);
    m_state->PutUnsigned(value ? 1 : 0);
}

void BinaryOutputSerializer::Scalar(char& value, std::string_view, int)
{
    m_state->PutTag(Tag::Char);
    m_state->PutUnsigned(static_cast<unsigned char>(value));
}

void BinaryOutputSerializer::Scalar(unsigned char& value, std::string_view, int)
{
    m_state->PutTag(Tag::UnsignedChar);
    m_state->PutUnsigned(value);
}

void BinaryOutputSerializer::Scalar(short& value, std::string_view, int)
{
    m_state->PutTag(Tag::Short);
    m_state->PutSigned(value);
}

void BinaryOutputSerializer::Scalar(unsigned short& value, std::string_view, int)
{
    m_state->PutTag(Tag::UnsignedShort);
    m_state->PutUnsigned(value);
}

void BinaryOutputSerializer::Scalar(int& value, std::string_view, int)
{
    m_state->PutTag(Tag::Int);
    m_state->PutSigned(value);
}

void BinaryOutputSerializer::Scalar(unsigned int& value, std::string_view, int)
{
    m_state->PutTag(Tag::UnsignedInt);
    m_state->PutUnsigned(value);
}

void BinaryOutputSerializer::Scalar(long long& value, std::string_view, int)
{
    m_state->PutTag(Tag::LongLong);
    m_state->PutSigned(value);
}

void BinaryOutputSerializer::Scalar(unsigned long long& value, std::string_view, int)
{
    m_state->PutTag(Tag::UnsignedLongLong);
    m_state->PutUnsigned(value);
}

void BinaryOutputSerializer::Scalar(float& value, std::string_view, int)
{
    m_state->PutTag(Tag::Float);
    m_state->PutBytes(std::bit_cast<std::uint32_t>(value), 4);
}

void BinaryOutputSerializer::Scalar(double& value, std::string_view, int)
{
    m_state->PutTag(Tag::Double);
    m_state->PutBytes(std::bit_cast<std::uint64_t>(value), 8);
}

void BinaryOutputSerializer::Scalar(std::string& value, std::string_view, int)
{
    m_state->PutTextValue(value);
}

void BinaryOutputSerializer::DecimalText(long long& value, std::string_view, int)
{
    m_state->PutTag(Tag::Decimal);
    m_state->PutSigned(value);
}

void BinaryOutputSerializer::StartArray(int& count, std::string_view, int)
{
    if (count < 0) throw Exception("An array cannot have fewer than no elements.");
    m_state->PutTag(Tag::ArrayBegin);
    m_state->PutUnsigned(static_cast<unsigned int>(count));
}

void BinaryOutputSerializer::EndArray()
{
    m_state->PutTag(Tag::ArrayEnd);
}

void BinaryOutputSerializer::StartObject(std::string& typeName, int& version, std::string_view, int)
{
    if (typeName.empty() && version == -1) {
        m_state->PutTag(Tag::PlainObjectBegin);
        return;
    }
    m_state->PutTag(Tag::ObjectBegin);
    m_state->PutText(typeName);
    m_state->PutSigned(version);
}

void BinaryOutputSerializer::EndObject()
{
    m_state->PutTag(Tag::ObjectEnd);
}

} // namespace Tarn::Fjel::Core::Service
