#include <tarn/service/Exception.h>
#include <tarn/service/XMLForm.h>
#include <tarn/service/XMLInputSerializer.h>

#include <pugixml.hpp>

#include <charconv>
#include <istream>

namespace Tarn::Fjel::Core::Service {

namespace {

[[noreturn]] void ThrowDamaged()
{
    throw Exception("Serialized data are damaged.");
}

template <class Number>
Number ParseNumber(std::string_view text)
{
    Number value{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size()) ThrowDamaged();
    return value;
}

} // namespace

/// A cursor that goes through the document in its order, one element for each value.
class XMLInputSerializer::State
{
public:
    State(std::istream& stream, std::string_view rootName)
    {
        if (!m_document.load(stream, pugi::parse_minimal | pugi::parse_escapes, pugi::encoding_utf8)) ThrowDamaged();
        const pugi::xml_node root = m_document.first_child();
        if (root.name() != rootName) ThrowDamaged();
        m_parent = root;
        m_next = root.first_child();
    }

    pugi::xml_node Take(std::string_view name, int index)
    {
        const pugi::xml_node node = m_next;
        if (!node || node.name() != name) ThrowDamaged();
        const pugi::xml_attribute stored = node.attribute(XMLForm::indexName);
        if ((stored ? ParseNumber<int>(stored.value()) : 0) != index) ThrowDamaged();
        m_next = node.next_sibling();
        return node;
    }

    std::string_view TakeText(std::string_view name, int index)
    {
        const pugi::xml_attribute value = Take(name, index).attribute(XMLForm::valueName);
        if (!value) ThrowDamaged();
        return value.value();
    }

    template <class Number>
    void TakeNumber(Number& value, std::string_view name, int index)
    {
        value = ParseNumber<Number>(TakeText(name, index));
    }

    pugi::xml_node Enter(std::string_view name, int index)
    {
        m_parent = Take(name, index);
        m_next = m_parent.first_child();
        return m_parent;
    }

    void Leave()
    {
        if (m_next || m_parent == m_document.first_child()) ThrowDamaged();
        m_next = m_parent.next_sibling();
        m_parent = m_parent.parent();
    }

private:
    pugi::xml_document m_document;
    pugi::xml_node m_parent;
    pugi::xml_node m_next;
};

XMLInputSerializer::XMLInputSerializer(std::istream& stream, std::string_view rootName)
    : m_state(std::make_unique<State>(stream, rootName))
{
}

XMLInputSerializer::~XMLInputSerializer() = default;

void XMLInputSerializer::Scalar(bool& value, std::string_view name, int index)
{
    const std::string_view text = m_state->TakeText(name, index);
    if (text != "0" && text != "1") ThrowDamaged();
    value = text == "1";
}

void XMLInputSerializer::Scalar(char& value, std::string_view name, int index)
{
    value = static_cast<char>(ParseNumber<unsigned char>(m_state->TakeText(name, index)));
}

void XMLInputSerializer::Scalar(unsigned char& value, std::string_view name, int index)
{
    m_state->TakeNumber(value, name, index);
}

void XMLInputSerializer::Scalar(short& value, std::string_view name, int index)
{
    m_state->TakeNumber(value, name, index);
}

void XMLInputSerializer::Scalar(unsigned short& value, std::string_view name, int index)
{
    m_state->TakeNumber(value, name, index);
}

void XMLInputSerializer::Scalar(int& value, std::string_view name, int index)
{
    m_state->TakeNumber(value, name, index);
}

void XMLInputSerializer::Scalar(unsigned int& value, std::string_view name, int index)
{
    m_state->TakeNumber(value, name, index);
}

void XMLInputSerializer::Scalar(long long& value, std::string_view name, int index)
{
    m_state->TakeNumber(value, name, index);
}

void XMLInputSerializer::Scalar(unsigned long long& value, std::string_view name, int index)
{
    m_state->TakeNumber(value, name, index);
}

void XMLInputSerializer::Scalar(float& value, std::string_view name, int index)
{
    m_state->TakeNumber(value, name, index);
}

void XMLInputSerializer::Scalar(double& value, std::string_view name, int index)
{
    m_state->TakeNumber(value, name, index);
}

void XMLInputSerializer::Scalar(std::string& value, std::string_view name, int index)
{
    if (!XMLForm::Unescape(m_state->TakeText(name, index), value)) ThrowDamaged();
}

void XMLInputSerializer::StartArray(int& count, std::string_view name, int index)
{
    const pugi::xml_node node = m_state->Enter(name, index);
    const int stored = ParseNumber<int>(node.attribute(XMLForm::countName).value());
    // The elements are there already, so their number bounds the count.
    int elements = 0;
    for (pugi::xml_node child = node.first_child(); child && elements < stored; child = child.next_sibling()) {
        ++elements;
    }
    if (stored < 0 || elements < stored) ThrowDamaged();
    count = stored;
}

void XMLInputSerializer::EndArray()
{
    m_state->Leave();
}

void XMLInputSerializer::StartObject(std::string& typeName, int& version, std::string_view name, int index)
{
    const pugi::xml_node node = m_state->Enter(name, index);
    if (!XMLForm::Unescape(node.attribute(XMLForm::typeName).value(), typeName)) ThrowDamaged();
    const pugi::xml_attribute stored = node.attribute(XMLForm::versionName);
    version = stored ? ParseNumber<int>(stored.value()) : -1;
}

void XMLInputSerializer::EndObject()
{
    m_state->Leave();
}

} // namespace Tarn::Fjel::Core::Service
