#include <tarn/service/Exception.h>
#include <tarn/service/Serializer.h>

#include <charconv>

namespace Tarn::Fjel::Core::Service {

ISerializable::~ISerializable() = default;
ISerializerImpl::~ISerializerImpl() = default;

void ISerializerImpl::DecimalText(long long& value, std::string_view name, int index)
{
    std::string text;
    if (IsWriting()) text = std::to_string(value);
    Scalar(text, name, index);
    if (IsWriting()) return;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, value);
    if (error != std::errc() || stop != end) throw Exception("No number: " + text);
}

void Serializer::SerializeImpl(ISerializable& value, std::string_view name, int index)
{
    std::string typeName;
    int version = -1;
    m_impl.StartObject(typeName, version, name, index);
    value.Serialize(*this);
    m_impl.EndObject();
}

} // namespace Tarn::Fjel::Core::Service
