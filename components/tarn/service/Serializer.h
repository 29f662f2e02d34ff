#pragma once

#include <tarn/service/ISerializable.h>
#include <tarn/service/ISerializerImpl.h>

#include <string>
#include <string_view>

namespace Tarn::Fjel::Core::Service {

/// What an ISerializable sees: a wrapper of the form in use, which it doesn't own. Reading throws Exception at damaged
/// input; the values read so far are then filled, the rest untouched.
class Serializer
{
public:
    /// REQUIRES: impl outlives this object.
    explicit Serializer(ISerializerImpl& impl) : m_impl(impl) {}

    bool IsReading() const { return m_impl.IsReading(); }
    bool IsWriting() const { return m_impl.IsWriting(); }

    void SerializeImpl(int& value, std::string_view name, int index = 0) { m_impl.Scalar(value, name, index); }
    void SerializeImpl(std::string& value, std::string_view name, int index = 0) { m_impl.Scalar(value, name, index); }
    /// A number as its decimal text, so that the form doesn't depend on the integers that it knows.
    void SerializeDecimal(long long& value, std::string_view name, int index = 0)
    {
        m_impl.DecimalText(value, name, index);
    }
    /// An object without type name and version around the value's own parts.
    void SerializeImpl(ISerializable& value, std::string_view name, int index = 0);

    /// See ISerializerImpl. Each start is matched by its end.
    void StartArray(int& count, std::string_view name, int index = 0) { m_impl.StartArray(count, name, index); }
    void EndArray() { m_impl.EndArray(); }
    void StartObject(std::string& typeName, int& version, std::string_view name, int index = 0)
    {
        m_impl.StartObject(typeName, version, name, index);
    }
    void EndObject() { m_impl.EndObject(); }

    /// The form in use, for scalars of other types.
    ISerializerImpl& Impl() { return m_impl; }

private:
    ISerializerImpl& m_impl;
};

} // namespace Tarn::Fjel::Core::Service
