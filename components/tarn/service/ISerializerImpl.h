#pragma once

#include <string>
#include <string_view>

namespace Tarn::Fjel::Core::Service {

/// One form in which values are read or written. Each call carries one value with its name and, in an array, its
/// index; a reader fills the reference and throws Exception where the input doesn't hold that value next.
class ISerializerImpl
{
public:
    virtual ~ISerializerImpl();

    virtual bool IsReading() const = 0;
    virtual bool IsWriting() const = 0;

    virtual void Scalar(bool& value, std::string_view name, int index) = 0;
    virtual void Scalar(char& value, std::string_view name, int index) = 0;
    virtual void Scalar(unsigned char& value, std::string_view name, int index) = 0;
    virtual void Scalar(short& value, std::string_view name, int index) = 0;
    virtual void Scalar(unsigned short& value, std::string_view name, int index) = 0;
    virtual void Scalar(int& value, std::string_view name, int index) = 0;
    virtual void Scalar(unsigned int& value, std::string_view name, int index) = 0;
    virtual void Scalar(long long& value, std::string_view name, int index) = 0;
    virtual void Scalar(unsigned long long& value, std::string_view name, int index) = 0;
    virtual void Scalar(float& value, std::string_view name, int index) = 0;
    virtual void Scalar(double& value, std::string_view name, int index) = 0;
    virtual void Scalar(std::string& value, std::string_view name, int index) = 0;

    /// A number as its decimal text: the same in the form as that text. A form may do it without making the text.
    virtual void DecimalText(long long& value, std::string_view name, int index);

    /// An array of count elements follows, each with its index from 0. A reader never gives a count that the rest of
    /// its input can't hold.
    virtual void StartArray(int& count, std::string_view name, int index) = 0;
    virtual void EndArray() = 0;
    /// The parts of one object follow. typeName may be empty, version -1 where there is none.
    virtual void StartObject(std::string& typeName, int& version, std::string_view name, int index) = 0;
    virtual void EndObject() = 0;
};

} // namespace Tarn::Fjel::Core::Service
