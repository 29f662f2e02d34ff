#pragma once

#include <tarn/service/ISerializerImpl.h>

#include <iosfwd>
#include <memory>
#include <string>
#include <string_view>

namespace Tarn::Fjel::Core::Service {

/// Writes a compact form: a mark at its head, then for each value a tag of its kind and its bytes.
class BinaryOutputSerializer : public ISerializerImpl
{
public:
    /// REQUIRES: stream outlives this object.
    explicit BinaryOutputSerializer(std::ostream& stream);
    ~BinaryOutputSerializer() override;

    BinaryOutputSerializer(const BinaryOutputSerializer&) = delete;
    BinaryOutputSerializer& operator=(const BinaryOutputSerializer&) = delete;

    /// Writes what is still held back to the stream. Throws Exception when the stream has failed. The destructor does
    /// the same for those who did not call it, but drops the exception; the state of the stream tells.
    void Finish();

    bool IsReading() const override { return false; }
    bool IsWriting() const override { return true; }

    void Scalar(bool& value, std::string_view name, int index) override;
    void Scalar(char& value, std::string_view name, int index) override;
    void Scalar(unsigned char& value, std::string_view name, int index) override;
    void Scalar(short& value, std::string_view name, int index) override;
    void Scalar(unsigned short& value, std::string_view name, int index) override;
    void Scalar(int& value, std::string_view name, int index) override;
    void Scalar(unsigned int& value, std::string_view name, int index) override;
    void Scalar(long long& value, std::string_view name, int index) override;
    void Scalar(unsigned long long& value, std::string_view name, int index) override;
    void Scalar(float& value, std::string_view name, int index) override;
    void Scalar(double& value, std::string_view name, int index) override;
    void Scalar(std::string& value, std::string_view name, int index) override;
    void DecimalText(long long& value, std::string_view name, int index) override;

    void StartArray(int& count, std::string_view name, int index) override;
    void EndArray() override;
    void StartObject(std::string& typeName, int& version, std::string_view name, int index) override;
    void EndObject() override;

private:
    class State;
    std::unique_ptr<State> m_state;
};

} // namespace Tarn::Fjel::Core::Service
