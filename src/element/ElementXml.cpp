// Placeholder bodies for the XML slots of Element, so that the tree links before
// the persistence code lands. Saving writes nothing and loading refuses.
#include "element/Element.h"

namespace oxa
{
tinyxml2::XMLElement* Element::saveXml(tinyxml2::XMLElement*, SaveOptions&) { return nullptr; }

bool Element::loadXml(const tinyxml2::XMLElement*, SaveOptions&, int) { return false; }

void Element::finishLoading()
{
    for (auto& child : children())
        child->finishLoading();
    flushErrors();
}

void Element::saveXmlAttributes(tinyxml2::XMLElement*, int&) {}

bool Element::loadXmlAttributes(const tinyxml2::XMLElement*, int) { return false; }
} // namespace oxa
