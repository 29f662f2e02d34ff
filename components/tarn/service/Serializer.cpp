#include <tarn/service/Serializer.h>

namespace Tarn::Fjel::Core::Service {

ISerializable::~ISerializable() = default;
ISerializerImpl::~ISerializerImpl() = default;

void Serializer::SerializeImpl(ISerializable& value, std::string_view name, int index)
{
    std::string typeName;
    int version = -1;
    m_impl.StartObject(typeName, version, name, index);
    value.Serialize(*this);
    m_impl.EndObject();
}

} // namespace Tarn::Fjel::Core::Service
