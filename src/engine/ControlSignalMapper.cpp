#include "engine/ControlSignalMapper.h"

#include "element/ElementFactory.h"
#include "element/ParameterRegistry.h"

#include <tinyxml2.h>

#include <cmath>
#include <cstdio>
#include <cstring>

namespace oxa
{
void KeptAttributes::keepUnknown(const tinyxml2::XMLElement* node, std::initializer_list<const char*> known)
{
    attributes_.clear();
    for (const tinyxml2::XMLAttribute* a = node->FirstAttribute(); a != nullptr; a = a->Next())
    {
        bool isKnown = false;
        for (const char* name : known)
            isKnown = isKnown || std::strcmp(name, a->Name()) == 0;
        if (!isKnown)
            attributes_.emplace_back(a->Name(), a->Value());
    }
}

void KeptAttributes::writeBack(tinyxml2::XMLElement* node) const
{
    for (const auto& [name, value] : attributes_)
        node->SetAttribute(name.c_str(), value.c_str());
}

void setFloatAttribute(tinyxml2::XMLElement* node, const char* name, float value)
{
    char text[32];
    std::snprintf(text, sizeof text, "%.8g", static_cast<double>(value));
    node->SetAttribute(name, text);
}

namespace
{
float floatAttribute(const tinyxml2::XMLElement* node, const char* name, float fallback)
{
    float v = fallback;
    if (node->QueryFloatAttribute(name, &v) != tinyxml2::XML_SUCCESS || !std::isfinite(v))
        return fallback;
    return v;
}

int intAttribute(const tinyxml2::XMLElement* node, const char* name, int fallback)
{
    int v = fallback;
    return node->QueryIntAttribute(name, &v) == tinyxml2::XML_SUCCESS ? v : fallback;
}
} // namespace

const ControlSignalMapper::Ids& ControlSignalMapper::ids()
{
    static const Ids table = [] {
        (void) Element::commonIds();
        auto& registry = ParameterRegistry::instance();
        Ids t {};
        t.posRatio = registry.registerFloat(ParameterDescription<float>("PosRatio", 1.0f, 1.0f, 0.0f, 0, 0, nullptr,
                                                                        false, true));
        t.negRatio = registry.registerFloat(ParameterDescription<float>("NegRatio", 1.0f, 1.0f, 0.0f, 0, 0, nullptr,
                                                                        false, true));
        t.discreet = registry.registerInt(ParameterDescription<int>("Discreet", 0, 0, 1024, 0, false, true));
        t.integer = registry.registerBool(ParameterDescription<bool>("Integer", false, false, true));
        return t;
    }();
    return table;
}

void ControlSignalMapper::registerType()
{
    ElementFactory::instance().registerType("Control Signal Mapper", "ControlSignalMapper",
                                            [] { return std::make_shared<ControlSignalMapper>(); });
}

namespace
{
// Loading a document asks the factory by tag, so the type must be known from the start.
[[maybe_unused]] const bool mapperTypeRegistered = (ControlSignalMapper::registerType(), true);
} // namespace

ControlSignalMapper::ControlSignalMapper(const String& name) : Element(String("ControlSignalMapper"), name)
{
    const Ids& i = ids();
    addParameters({new ParameterInfo<float>(i.posRatio, this, &ControlSignalMapper::posRatio,
                                            &ControlSignalMapper::setPosRatio),
                   new ParameterInfo<float>(i.negRatio, this, &ControlSignalMapper::negRatio,
                                            &ControlSignalMapper::setNegRatio)},
                  {new ParameterInfo<int>(i.discreet, this, &ControlSignalMapper::discreet,
                                          &ControlSignalMapper::setDiscreet)},
                  {new ParameterInfo<bool>(i.integer, this, &ControlSignalMapper::integer,
                                           &ControlSignalMapper::setInteger)});
}

void ControlSignalMapper::setPosRatio(float v) { posRatio_ = std::isfinite(v) ? v : posRatio_; }
void ControlSignalMapper::setNegRatio(float v) { negRatio_ = std::isfinite(v) ? v : negRatio_; }
void ControlSignalMapper::setDiscreet(int v) { discreet_ = v < 0 ? 0 : v; }
void ControlSignalMapper::setInteger(bool v) { integer_ = v; }

float ControlSignalMapper::shape(float value) const
{
    float v = value >= 0.0f ? value * posRatio_ : value * negRatio_;
    if (discreet_ >= 2)
    {
        const float steps = static_cast<float>(discreet_ - 1);
        v = std::floor(v * steps + 0.5f) / steps;
    }
    if (integer_)
        v = std::floor(v + 0.5f);
    return v;
}

void ControlSignalMapper::saveXmlAttributes(tinyxml2::XMLElement* node, int& version)
{
    node->SetAttribute("Name", name().text().c_str());
    setFloatAttribute(node, "PosRatio", posRatio_);
    setFloatAttribute(node, "NegRatio", negRatio_);
    node->SetAttribute("Discreet", discreet_);
    node->SetAttribute("Integer", integer_ ? 1 : 0);
    kept_.writeBack(node);
    version = 0;
}

bool ControlSignalMapper::loadXmlAttributes(const tinyxml2::XMLElement* node, int)
{
    const char* n = node->Attribute("Name");
    setName(String(n != nullptr ? n : ""));
    setFloatParameter(ids().posRatio, floatAttribute(node, "PosRatio", 1.0f));
    setFloatParameter(ids().negRatio, floatAttribute(node, "NegRatio", 1.0f));
    setIntParameter(ids().discreet, intAttribute(node, "Discreet", 0));
    setBoolParameter(ids().integer, intAttribute(node, "Integer", 0) > 0);
    kept_.keepUnknown(node, {"Name", "PosRatio", "NegRatio", "Discreet", "Integer", "ControlSignalMapperVersion"});
    return true;
}
} // namespace oxa
