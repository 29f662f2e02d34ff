#pragma once

#include <tarn/service/ISerializerImpl.h>

#include <iosfwd>
#include <memory>
#include <string>
#include <string_view>

namespace Tarn::Fjel::Core::Service {

/// Reads what BinaryOutputSerializer wrote. The whole rest of the stream is taken in by the constructor.
class BinaryInputSerializer : public ISerializerImpl
{
public:
    /// Throws Exception when the stream can't be read or doesn't begin like this form.
    explicit BinaryInputSerializer(std::istream& stream);
    ~BinaryInputSerializer() override;

    BinaryInputSerializer(const BinaryInputSerializer&) = delete;
    BinaryInputSerializer& operator=(const BinaryInputSerializer&) = delete;

    bool IsReading() const override { return true; }
    bool IsWriting() const override { return false; }

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
