#include "resources/presets/ABCompare.h"

#include "element/Element.h"
#include "element/ElementPersistence.h"

#include <tinyxml2.h>

#include <cstring>
#include <mutex>

namespace oxa
{
namespace
{
const char* const rootTag = "Preset";
// The names of the two preset bars travel with the values they describe.
const char* const swappedProperties[] = {"PresetPath", "TapePresetPath"};
// Written by this program's states: anything from any version of it is read.
constexpr int anyVersion = 0x7FFFFFFF;

// The element's values and preset names, printed without formatting. Connections,
// mappers and the other properties (locks, the memory itself) are not part of a
// compare: swapping them would nest every memory inside the next.
std::string captureState(Element& element)
{
    auto document = makeXmlDocument();
    tinyxml2::XMLElement* root = document->NewElement(rootTag);
    document->InsertEndChild(root);
    SaveOptions options;
    tinyxml2::XMLElement* node = element.saveXml(root, options);
    if (node == nullptr)
        return {};
    for (const char* group : {"Connections", "Mappers", "Properties"})
        while (tinyxml2::XMLElement* child = node->FirstChildElement(group))
            node->DeleteChild(child);
    tinyxml2::XMLElement* properties = nullptr;
    for (const char* key : swappedProperties)
        if (element.hasProperty(String(key)))
        {
            if (properties == nullptr)
                properties = node->InsertNewChildElement("Properties");
            properties->SetAttribute(key, element.property(String(key)).value.c_str());
        }
    tinyxml2::XMLPrinter printer(nullptr, true);
    document->Print(&printer);
    return std::string(printer.CStr(), static_cast<std::size_t>(printer.CStrSize() > 0 ? printer.CStrSize() - 1 : 0));
}

// The element node of a stored state, or null when the text is not one of ours.
const tinyxml2::XMLElement* storedNode(tinyxml2::XMLDocument& document, const String& text, const Element& element)
{
    if (text.isEmpty() || document.Parse(text.c_str(), text.length()) != tinyxml2::XML_SUCCESS)
        return nullptr;
    const tinyxml2::XMLElement* root = document.RootElement();
    if (root == nullptr || std::strcmp(root->Name(), rootTag) != 0)
        return nullptr;
    const tinyxml2::XMLElement* node = root->FirstChildElement();
    if (node == nullptr || !(element.typeName() == node->Name()))
        return nullptr;
    return node;
}

void restore(Element& element, const tinyxml2::XMLElement& node)
{
    element.loadXmlAttributes(&node, anyVersion);
    element.valuesReplaced();
    const tinyxml2::XMLElement* properties = node.FirstChildElement("Properties");
    for (const char* key : swappedProperties)
    {
        const char* value = properties != nullptr ? properties->Attribute(key) : nullptr;
        if (value != nullptr)
            element.setProperty(String(key), ElementProperty(String(value), true));
        else
            element.removeProperty(String(key));
    }
}
} // namespace

CompareResult swapWithStoredState(Element& element)
{
    const std::lock_guard<std::recursive_mutex> tree(element.lock());
    const std::string present = captureState(element);
    if (present.empty())
        return CompareResult::stored;

    auto document = makeXmlDocument();
    const tinyxml2::XMLElement* stored =
        storedNode(*document, element.property(String(abStateProperty)).valueOr(String()), element);
    if (stored != nullptr)
        restore(element, *stored);
    element.setProperty(String(abStateProperty), ElementProperty(String(present), true));
    return stored != nullptr ? CompareResult::swapped : CompareResult::stored;
}

} // namespace oxa
