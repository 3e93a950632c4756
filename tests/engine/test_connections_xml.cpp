// Connections and mappers on disk: the older attribute names, the version attribute,
// and attributes this build does not read coming back unchanged.
#include "element/ElementParamEnvelope.h"
#include "engine/ControlSignalMapper.h"
#include "engine/SignalConnection.h"

#include <gtest/gtest.h>
#include <tinyxml2.h>

#include <string>

using namespace oxa;

namespace
{
/** Writes the element's attributes to a fresh node and prints it. */
std::string savedText(Element& element, int* versionOut = nullptr)
{
    tinyxml2::XMLDocument doc;
    tinyxml2::XMLElement* node = doc.NewElement(element.typeName().text().c_str());
    doc.InsertEndChild(node);
    int version = 0;
    element.saveXmlAttributes(node, version);
    if (versionOut != nullptr)
        *versionOut = version;
    tinyxml2::XMLPrinter printer(nullptr, true);
    doc.Print(&printer);
    return printer.CStr();
}

const tinyxml2::XMLElement* parse(tinyxml2::XMLDocument& doc, const char* text)
{
    EXPECT_EQ(doc.Parse(text), tinyxml2::XML_SUCCESS);
    return doc.RootElement();
}
} // namespace

TEST(ConnectionXml, SavesWithTheOlderNames)
{
    SignalConnection c(String("SignalConnection 0"));
    const auto& ids = SignalConnection::ids();
    c.setStringParameter(ids.source, String(SignalConnection::velocitySource));
    c.setStringParameter(ids.destination, String("Mix"));
    c.setFloatParameter(ids.ratio, 0.01f);
    c.setIntParameter(ids.connectionMode, 1);
    c.setBoolParameter(ids.inverted, true);

    int version = 0;
    const std::string text = savedText(c, &version);
    EXPECT_EQ(version, 1);
    EXPECT_EQ(text, "<SignalConnection Name=\"SignalConnection 0\" ModulationSource=\"@VoiceParam OriginalVelocity\""
                    " ModulationDestination=\"Mix\" ModulationRatio=\"0.0099999998\" Mode=\"Edition\" Bypass=\"0\""
                    " Inverted=\"1\"/>");

    c.setIntParameter(ids.connectionMode, 0);
    EXPECT_NE(savedText(c).find("Mode=\"Modulation\""), std::string::npos);
}

TEST(ConnectionXml, LoadsTheOlderNamesAndGivesBackWhatItDoesNotRead)
{
    const char* saved = "<SignalConnection Name=\"AmpEnvMod\" ModulationSource=\"@VoiceParam OriginalVelocity\""
                        " ModulationDestination=\"&gt;Volume\" ModulationRatio=\"-0.5\" Mode=\"Edition\" Bypass=\"1\""
                        " Inverted=\"0\" CurveShape=\"0.25\" Smooth=\"a &amp; b\" SignalConnectionVersion=\"1\"/>";
    tinyxml2::XMLDocument doc;
    SignalConnection c;
    ASSERT_TRUE(c.loadXmlAttributes(parse(doc, saved), 1));
    EXPECT_EQ(c.name().text(), String("AmpEnvMod"));
    EXPECT_EQ(c.source(), String("@VoiceParam Velocity"));
    EXPECT_EQ(c.destination(), String(">Volume"));
    EXPECT_FLOAT_EQ(c.ratio(), -0.5f);
    EXPECT_TRUE(c.isEdition());
    EXPECT_TRUE(c.isBypassed());
    EXPECT_FALSE(c.isInverted());

    // the version attribute is the writer's business; the rest comes back as it was
    const std::string again = savedText(c);
    EXPECT_EQ(again, "<SignalConnection Name=\"AmpEnvMod\" ModulationSource=\"@VoiceParam OriginalVelocity\""
                     " ModulationDestination=\"&gt;Volume\" ModulationRatio=\"-0.5\" Mode=\"Edition\" Bypass=\"1\""
                     " Inverted=\"0\" CurveShape=\"0.25\" Smooth=\"a &amp; b\"/>");

    tinyxml2::XMLDocument second;
    SignalConnection d;
    ASSERT_TRUE(d.loadXmlAttributes(parse(second, again.c_str()), 1));
    EXPECT_EQ(savedText(d), again);
}

TEST(ConnectionXml, MissingOrBadValuesTakeTheDefaults)
{
    tinyxml2::XMLDocument doc;
    SignalConnection c;
    c.setFloatParameter(SignalConnection::ids().ratio, 3.0f);
    c.setBoolParameter(SignalConnection::ids().bypass, true);
    ASSERT_TRUE(c.loadXmlAttributes(parse(doc, "<SignalConnection ModulationRatio=\"abc\" Mode=\"Sideways\"/>"), 0));
    EXPECT_FLOAT_EQ(c.ratio(), 1.0f);
    EXPECT_FALSE(c.isEdition());
    EXPECT_FALSE(c.isBypassed());
    EXPECT_TRUE(c.source().isEmpty());
    EXPECT_TRUE(c.name().text().isEmpty());
}

TEST(ConnectionXml, MapperRoundTripAndShape)
{
    const char* saved = "<ControlSignalMapper Name=\"Mapper\" PosRatio=\"2\" NegRatio=\"0.5\" Discreet=\"3\""
                        " Integer=\"0\" Shape=\"7\"/>";
    tinyxml2::XMLDocument doc;
    ControlSignalMapper m;
    ASSERT_TRUE(m.loadXmlAttributes(parse(doc, saved), 0));
    EXPECT_EQ(savedText(m), saved);

    EXPECT_FLOAT_EQ(m.shape(0.2f), 0.5f);   // 0.4 on three steps
    EXPECT_FLOAT_EQ(m.shape(-0.8f), -0.5f); // -0.4 on three steps
    m.setIntParameter(ControlSignalMapper::ids().discreet, 0);
    m.setBoolParameter(ControlSignalMapper::ids().integer, true);
    EXPECT_FLOAT_EQ(m.shape(0.8f), 2.0f);
    EXPECT_FLOAT_EQ(m.shape(-0.8f), 0.0f);
}

TEST(ConnectionXml, DestinationOfASavedConnection)
{
    tinyxml2::XMLDocument doc;
    EXPECT_EQ(ElementParamEnvelope::destinationOf(parse(doc, "<X Destination=\"Mix\" ModulationDestination=\"Y\"/>")),
              String("Mix"));
    EXPECT_EQ(ElementParamEnvelope::destinationOf(parse(doc, "<X ModulationDestination=\"&gt;Volume\"/>")),
              String("Volume"));
    EXPECT_TRUE(ElementParamEnvelope::destinationOf(parse(doc, "<X/>")).isEmpty());
    EXPECT_TRUE(ElementParamEnvelope::destinationOf(nullptr).isEmpty());
}
