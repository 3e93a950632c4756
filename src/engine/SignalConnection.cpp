#include "engine/SignalConnection.h"
#include "element/ElementPersistence.h"
#include "engine/ControlSignalMapper.h"

#include "element/ElementFactory.h"
#include "element/ElementParamEnvelope.h"
#include "element/ParameterRegistry.h"
#include "engine/ControlSignalSource.h"
#include "engine/Engine.h"
#include "engine/MidiControllers.h"

#include <tinyxml2.h>

#include <cmath>

namespace oxa
{
namespace
{
// Names on disk; the parameters kept newer names since.
constexpr const char* sourceAttribute = "ModulationSource";
constexpr const char* destinationAttribute = "ModulationDestination";
constexpr const char* ratioAttribute = "ModulationRatio";
constexpr const char* modeAttribute = "Mode";
constexpr const char* editionText = "Edition";
constexpr const char* modulationText = "Modulation";

String textAttribute(const tinyxml2::XMLElement* node, const char* name, const char* fallbackName = nullptr)
{
    const char* text = node->Attribute(name);
    if (text == nullptr && fallbackName != nullptr)
        text = node->Attribute(fallbackName);
    return String(text != nullptr ? text : "");
}

bool boolAttribute(const tinyxml2::XMLElement* node, const char* name)
{
    int v = 0;
    return node->QueryIntAttribute(name, &v) == tinyxml2::XML_SUCCESS && v > 0;
}

[[maybe_unused]] const bool connectionTypeRegistered = (SignalConnection::registerType(), true);
} // namespace

const SignalConnection::Ids& SignalConnection::ids()
{
    static const Ids table = [] {
        (void) Element::commonIds();
        auto& registry = ParameterRegistry::instance();
        Ids t {};
        // All global: a connection's settings are not per voice, and they take no modulation.
        t.ratio = registry.registerFloat(
            ParameterDescription<float>("Ratio", 1.0f, 1.0f, 0.0f, 0, 0, nullptr, false, true));
        t.connectionMode = registry.registerInt(ParameterDescription<int>("ConnectionMode", 0, 0, 1, 0, false, true));
        t.bypass = registry.registerBool(ParameterDescription<bool>("Bypass", false, false, true));
        t.inverted = registry.registerBool(ParameterDescription<bool>("Inverted", false, false, true));
        t.source = registry.registerString(ParameterDescription<String>("Source", String(), false, true));
        t.name = registry.registerString(ParameterDescription<String>("Name", String(), false, true));
        t.destination = registry.registerString(ParameterDescription<String>("Destination", String(), false, true));
        return t;
    }();
    return table;
}

void SignalConnection::registerType()
{
    ElementFactory::instance().registerType("Signal Connection", "SignalConnection",
                                            [] { return std::make_shared<SignalConnection>(); });
    ControlSignalMapper::registerType();

    // The element layer reads and writes modulation without knowing these classes.
    auto& modulation = ModulationPersistence::instance();
    modulation.asMapper = [](const std::shared_ptr<Element>& made) {
        return std::dynamic_pointer_cast<ControlSignalMapper>(made);
    };
    modulation.isUnresolvedConnection = [](const Element& e) {
        const auto* connection = dynamic_cast<const SignalConnection*>(&e);
        return connection != nullptr && !connection->hasSource();
    };
}

SignalConnection::SignalConnection(const String& name) : Element(String("SignalConnection"), name)
{
    const Ids& i = ids();
    addParameters(
        {new ParameterInfo<float>(i.ratio, this, &SignalConnection::ratio, &SignalConnection::setRatio)},
        {new ParameterInfo<int>(i.connectionMode, this, &SignalConnection::connectionMode,
                                &SignalConnection::setConnectionMode)},
        {new ParameterInfo<bool>(i.bypass, this, &SignalConnection::isBypassed, &SignalConnection::setBypass),
         new ParameterInfo<bool>(i.inverted, this, &SignalConnection::isInverted, &SignalConnection::setInverted)},
        {new ParameterInfo<String>(i.source, this, &SignalConnection::source, &SignalConnection::setSource),
         new ParameterInfo<String>(i.name, this, &SignalConnection::nameText, &SignalConnection::setNameText),
         new ParameterInfo<String>(i.destination, this, &SignalConnection::destination,
                                   &SignalConnection::setDestination)});
}

ElementParamEnvelope* SignalConnection::envelope() const
{
    return dynamic_cast<ElementParamEnvelope*>(parent());
}

ControlSignalMapper* SignalConnection::mapper() const
{
    if (mapperCount() == 0)
        return nullptr;
    return const_cast<SignalConnection*>(this)->extras().mappers.front().mapper.get();
}

void SignalConnection::setMapper(const std::shared_ptr<ControlSignalMapper>& mapper)
{
    clearMappers();
    if (mapper)
    {
        mapper->setName(String("Mapper"));
        addMapper(mapper);
    }
    touchEnvelope();
}

void SignalConnection::touchEnvelope()
{
    if (ElementParamEnvelope* e = envelope())
        e->connectionsChanged();
}

void SignalConnection::setRatio(float v)
{
    if (!std::isfinite(v))
        return;
    ratio_ = v;
    touchEnvelope();
}

void SignalConnection::setConnectionMode(int v)
{
    mode_ = v > 0 ? 1 : 0;
    touchEnvelope();
}

void SignalConnection::setBypass(bool v)
{
    bypass_ = v;
    touchEnvelope();
}

void SignalConnection::setInverted(bool v)
{
    inverted_ = v;
    touchEnvelope();
}

void SignalConnection::setSource(String v)
{
    source_ = v == legacyVelocitySource ? String(velocitySource) : v;
    midiController_ = MidiControllers::controllerOfSource(source_);
    resolveSource();
    touchEnvelope();
}

void SignalConnection::setDestination(String v) { destination_ = v; }

void SignalConnection::setParent(Element* parent)
{
    Element::setParent(parent);
    resolveSource();
}

void SignalConnection::finishLoading()
{
    Element::finishLoading();
    // the sources of the target element are read after its connections
    resolveSource();
}

void SignalConnection::resolveSource()
{
    sourceElement_.reset();
    sourceRaw_ = nullptr;
    ElementParamEnvelope* e = envelope();
    if (e == nullptr || source_.isEmpty() || source_.startsWith(String("@")))
        return;
    // From the target element outwards, so that a name close by wins.
    for (Element* from = e->owner(); from != nullptr; from = from->parent())
    {
        Element* found = from->findElement(source_);
        if (auto* s = dynamic_cast<ControlSignalSource*>(found))
        {
            sourceElement_ = s->weak_from_this();
            sourceRaw_ = s;
            return;
        }
    }
}

ControlSignalSource* SignalConnection::resolvedSource() const
{
    return sourceElement_.expired() ? nullptr : sourceRaw_;
}

bool SignalConnection::valueAt(RenderContext& context, uint32_t index, float& value) const
{
    float v = 0.0f;
    if (midiController_ >= 0)
    {
        const ElementParamEnvelope* e = envelope();
        Engine* root = e != nullptr && e->owner() != nullptr ? e->owner()->engine() : nullptr;
        const int cc = root != nullptr ? root->midiState().controllerAt((uint32_t) midiController_, index) : -1;
        if (cc < 0)
            return false;
        v = (float) cc / 127.0f;
    }
    else
    {
        ControlSignalSource* s = resolvedSource();
        if (s == nullptr)
            return false;
        const ControlSignalSourceState* state = s->valuesFor(context);
        v = state != nullptr ? state->valueAt(index) : 0.0f;
    }
    if (const ControlSignalMapper* m = mapper())
        v = m->shape(v);
    v *= ratio_;
    if (inverted_)
        v = -v;
    value = std::isfinite(v) ? v : 0.0f;
    return true;
}

float SignalConnection::contribution(RenderContext& context, uint32_t index) const
{
    float v = 0.0f;
    return valueAt(context, index, v) ? v : 0.0f;
}

void SignalConnection::saveXmlAttributes(tinyxml2::XMLElement* node, int& version)
{
    node->SetAttribute("Name", name().text().c_str());
    const String src = source_ == velocitySource ? String(legacyVelocitySource) : source_;
    node->SetAttribute(sourceAttribute, src.c_str());
    node->SetAttribute(destinationAttribute, destination_.c_str());
    setFloatAttribute(node, ratioAttribute, ratio_);
    node->SetAttribute(modeAttribute, mode_ > 0 ? editionText : modulationText);
    node->SetAttribute("Bypass", bypass_ ? 1 : 0);
    node->SetAttribute("Inverted", inverted_ ? 1 : 0);
    kept_.writeBack(node);
    version = 1;
}

bool SignalConnection::loadXmlAttributes(const tinyxml2::XMLElement* node, int)
{
    setName(textAttribute(node, "Name"));
    setStringParameter(ids().source, textAttribute(node, sourceAttribute, "Source"));
    setStringParameter(ids().destination, textAttribute(node, destinationAttribute, "Destination"));

    float ratio = 1.0f;
    if (node->QueryFloatAttribute(ratioAttribute, &ratio) != tinyxml2::XML_SUCCESS
        && node->QueryFloatAttribute("Ratio", &ratio) != tinyxml2::XML_SUCCESS)
        ratio = 1.0f;
    setFloatParameter(ids().ratio, std::isfinite(ratio) ? ratio : 1.0f);

    setIntParameter(ids().connectionMode, textAttribute(node, modeAttribute) == editionText ? 1 : 0);
    setBoolParameter(ids().bypass, boolAttribute(node, "Bypass"));
    setBoolParameter(ids().inverted, boolAttribute(node, "Inverted"));
    kept_.keepUnknown(node, {"Name", sourceAttribute, destinationAttribute, ratioAttribute, modeAttribute, "Bypass",
                             "Inverted", "Source", "Destination", "Ratio", "SignalConnectionVersion"});
    return true;
}
} // namespace oxa
