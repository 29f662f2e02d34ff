#pragma once

namespace Tarn::Fjel::Core::Service {

class Serializer;

/// Something whose value can be carried by a Serializer.
class ISerializable
{
public:
    virtual ~ISerializable();

    /// Hands every part of the value to serializer, in a fixed order: the one routine that both reads and writes.
    virtual void Serialize(Serializer& serializer) = 0;

protected:
    ISerializable() = default;
    ISerializable(const ISerializable&) = default;
    ISerializable(ISerializable&&) = default;
    ISerializable& operator=(const ISerializable&) = default;
    ISerializable& operator=(ISerializable&&) = default;
};

} // namespace Tarn::Fjel::Core::Service
