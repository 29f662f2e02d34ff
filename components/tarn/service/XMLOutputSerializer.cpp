#include <tarn/service/Exception.h>
#include <tarn/service/XMLForm.h>
#include <tarn/service/XMLOutputSerializer.h>

#include <fmt/format.h>
#include <pugixml.hpp>

#include <ostream>

namespace Tarn::Fjel::Core::Service {

class XMLOutputSerializer::State
{
public:
    State(std::ostream& stream, std::string_view rootName) : m_stream(stream)
    {
        m_node = m_document.append_child(std::string(rootName).c_str());
    }

    pugi::xml_node Add(std::string_view name, int index)
    {
        m_name.assign(name);
        pugi::xml_node node = m_node.append_child(m_name.c_str());
        if (index != 0) node.append_attribute(XMLForm::indexName).set_value(index);
        return node;
    }

    void AddValue(std::string_view name, int index, const std::string& value)
    {
        Add(name, index).append_attribute(XMLForm::valueName).set_value(value.c_str());
    }

    pugi::xml_node Enter(std::string_view name, int index) { return m_node = Add(name, index); }
    void Leave() { m_node = m_node.parent(); }

    void Finish()
    {
        if (m_finished) return;
        m_finished = true;
        m_document.save(m_stream, "", pugi::format_indent, pugi::encoding_utf8);
        m_stream.flush();
        if (!m_stream) throw Exception("Writing serialized data failed.");
    }

private:
    std::ostream& m_stream;
    pugi::xml_document m_document;
    pugi::xml_node m_node;
    std::string m_name;
    bool m_finished = false;
};

XMLOutputSerializer::XMLOutputSerializer(std::ostream& stream, std::string_view rootName)
    : m_state(std::make_unique<State>(stream, rootName))
{
}

XMLOutputSerializer::~XMLOutputSerializer()
{
    try {
        m_state->Finish();
    } catch (...) { // the stream's state tells
    }
}

void XMLOutputSerializer::Finish()
{
    m_state->Finish();
}

void XMLOutputSerializer::Scalar(bool& value, std::string_view name, int index)
{
    m_state->AddValue(name, index, value ? "1" : "0");
}

void XMLOutputSerializer::Scalar(char& value, std::string_view name, int index)
{
    m_state->AddValue(name, index, fmt::format("{}", int{static_cast<unsigned char>(value)}));
}

void XMLOutputSerializer::Scalar(unsigned char& value, std::string_view name, int index)
{
    m_state->AddValue(name, index, fmt::format("{}", int{value}));
}

void XMLOutputSerializer::Scalar(short& value, std::string_view name, int index)
{
    m_state->AddValue(name, index, fmt::format("{}", value));
}

void XMLOutputSerializer::Scalar(unsigned short& value, std::string_view name, int index)
{
    m_state->AddValue(name, index, fmt::format("{}", value));
}

void XMLOutputSerializer::Scalar(int& value, std::string_view name, int index)
{
    m_state->AddValue(name, index, fmt::format("{}", value));
}

void XMLOutputSerializer::Scalar(unsigned int& value, std::string_view name, int index)
{
    m_state->AddValue(name, index, fmt::format("{}", value));
}

void XMLOutputSerializer::Scalar(long long& value, std::string_view name, int index)
{
    m_state->AddValue(name, index, fmt::format("{}", value));
}

void XMLOutputSerializer::Scalar(unsigned long long& value, std::string_view name, int index)
{
    m_state->AddValue(name, index, fmt::format("{}", value));
}

void XMLOutputSerializer::Scalar(float& value, std::string_view name, int index)
{
    m_state->AddValue(name, index, fmt::format("{}", value));
}

void XMLOutputSerializer::Scalar(double& value, std::string_view name, int index)
{
    m_state->AddValue(name, index, fmt::format("{}", value));
}

void XMLOutputSerializer::Scalar(std::string& value, std::string_view name, int index)
{
    m_state->AddValue(name, index, XMLForm::Escape(value));
}

void XMLOutputSerializer::StartArray(int& count, std::string_view name, int index)
{
    if (count < 0) throw Exception("An array cannot have fewer than no elements.");
    m_state->Enter(name, index).append_attribute(XMLForm::countName).set_value(count);
}

void XMLOutputSerializer::EndArray()
{
    m_state->Leave();
}

void XMLOutputSerializer::StartObject(std::string& typeName, int& version, std::string_view name, int index)
{
    pugi::xml_node node = m_state->Enter(name, index);
    if (!typeName.empty()) node.append_attribute(XMLForm::typeName).set_value(XMLForm::Escape(typeName).c_str());
    if (version != -1) node.append_attribute(XMLForm::versionName).set_value(version);
}

void XMLOutputSerializer::EndObject()
{
    m_state->Leave();
}

} // namespace Tarn::Fjel::Core::Service
